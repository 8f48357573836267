#include "viewport/playback/FrameRange.h"

#include "viewport/text/numbers.h"

#include <string_view>

namespace vellum::viewport {

namespace {

/// Takes what stands before the next colon.
std::string_view takePart(std::string_view& text, bool& isLast) {
    std::size_t const end = text.find(':');
    std::string_view const part = text.substr(0, end);
    isLast = end == std::string_view::npos;
    text.remove_prefix(isLast ? text.size() : end + 1);
    return part;
}

/// \return false where the word is neither empty nor a number
bool readEnd(std::string_view word, std::optional<std::size_t>& end) {
    std::optional<int> const number = toInteger(word);
    if (number) {
        end = static_cast<std::size_t>(*number);
    }
    return number || word.empty();
}

std::string noFrame(std::size_t number, std::size_t count) {
    return "has no frame " + std::to_string(number) + "; its last one is " + std::to_string(count - 1);
}

}  // namespace

std::optional<FrameRange> FrameRange::parse(std::string const& text) {
    constexpr std::int64_t LARGEST_STEP = 1'000'000'000;
    FrameRange range;
    std::string_view rest = text;
    bool isLast = false;
    if (!readEnd(takePart(rest, isLast), range.first)) {
        return std::nullopt;
    }
    if (isLast) {
        range.last = range.first;
        return range.first ? std::optional<FrameRange>(range) : std::nullopt;
    }
    if (!readEnd(takePart(rest, isLast), range.last)) {
        return std::nullopt;
    }
    if (!isLast && !rest.empty()) {
        std::optional<std::int64_t> const step = toSignedInteger(rest);
        if (!step || *step == 0 || *step > LARGEST_STEP || *step < -LARGEST_STEP) {
            return std::nullopt;
        }
        range.step = *step;
    }
    bool const isAway = range.first && range.last &&
                        (range.step > 0 ? *range.first > *range.last : *range.first < *range.last);
    return isAway ? std::nullopt : std::optional<FrameRange>(range);
}

Result<std::vector<std::size_t>> FrameRange::of(std::size_t count) const {
    std::size_t const start = first.value_or(step > 0 ? 0 : count - 1);
    std::size_t const end = last.value_or(step > 0 ? count - 1 : 0);
    for (std::size_t const one : {start, end}) {
        if (one >= count) {
            return Fault{{}, noFrame(one, count)};
        }
    }
    auto const size = static_cast<std::size_t>(step > 0 ? step : -step);
    std::size_t const steps = (step > 0 ? end - start : start - end) / size;
    std::vector<std::size_t> frames;
    frames.reserve(steps + 1);
    for (std::size_t i = 0; i <= steps; ++i) {
        frames.push_back(step > 0 ? start + i * size : start - i * size);
    }
    return frames;
}

}  // namespace vellum::viewport
