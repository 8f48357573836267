#include "viewport/files/particles/ParticleSeries.h"

#include "viewport/text/data_numbers.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vellum::viewport {

namespace {

/// A path as texts and numbers in turns, the first one a text, which may be empty.
std::vector<std::string_view> partsOf(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (start < path.size() || parts.empty()) {
        bool const isNumber = parts.size() % 2 == 1;
        std::size_t end = start;
        while (end < path.size() && isDigit(path[end]) == isNumber) {
            ++end;
        }
        parts.push_back(path.substr(start, end - start));
        start = end;
    }
    return parts;
}

std::string_view withoutZeros(std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

/// Numbers of any length.
bool isBelow(std::string_view a, std::string_view b) {
    std::string_view const left = withoutZeros(a);
    std::string_view const right = withoutZeros(b);
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

struct Member {
    std::string path;
    std::string number;
};

/// The part in which the paths differ; nothing where they differ in more, or in a text.
std::optional<std::size_t> differingPart(std::string const& first, std::string const& other) {
    std::vector<std::string_view> const a = partsOf(first);
    std::vector<std::string_view> const b = partsOf(other);
    std::optional<std::size_t> place;
    for (std::size_t i = 0; i < a.size() && a.size() == b.size(); ++i) {
        if (a[i] == b[i]) {
            continue;
        }
        if (place || i % 2 == 0) {
            return std::nullopt;
        }
        place = i;
    }
    return place;
}

}  // namespace

std::optional<ParticleSeries> ParticleSeries::of(std::vector<std::string> const& paths) {
    if (paths.size() < 2) {
        return std::nullopt;
    }
    std::optional<std::size_t> const place = differingPart(paths[0], paths[1]);
    if (!place) {
        return std::nullopt;
    }
    std::vector<Member> members;
    members.reserve(paths.size());
    for (std::string const& path : paths) {
        if (!members.empty() && differingPart(paths[0], path) != place) {
            return std::nullopt;
        }
        members.push_back(Member{path, std::string(partsOf(path)[*place])});
    }
    std::sort(members.begin(), members.end(),
              [](Member const& a, Member const& b) { return isBelow(a.number, b.number); });
    auto const twice =
        std::adjacent_find(members.begin(), members.end(),
                           [](Member const& a, Member const& b) { return !isBelow(a.number, b.number); });
    if (twice != members.end()) {
        return std::nullopt;
    }
    std::vector<std::string> ordered;
    ordered.reserve(members.size());
    for (Member& member : members) {
        ordered.push_back(std::move(member.path));
    }
    return ParticleSeries(std::move(ordered));
}

Result<LoadedFrame> ParticleSeries::load(std::optional<std::size_t> frame, Progress const& progress,
                                         std::optional<ParticleFormat> format) const {
    std::size_t const number = frame.value_or(paths.size() - 1);
    if (number >= paths.size()) {
        return Fault{paths.back(), "the series has no frame " + std::to_string(number) +
                                       "; its last one is " + std::to_string(paths.size() - 1) +
                                       ", this file"};
    }
    Result<LoadedFrame> result = ParticleFile(paths[number], format).load(std::nullopt, progress);
    if (!result.isOk()) {
        return result;
    }
    LoadedFrame& loaded = result.value();
    if (loaded.count > 1) {
        std::string const more =
            "holds " + std::to_string(loaded.count) + " frames, of which the series has the last one";
        loaded.warning = loaded.warning.empty() ? more : more + " (" + loaded.warning + ")";
    }
    loaded.number = number;
    loaded.count = paths.size();
    loaded.timesteps.clear();
    loaded.times.clear();
    return result;
}

bool isSeries(std::vector<std::string> const& paths) {
    return ParticleSeries::of(paths).has_value();
}

}  // namespace vellum::viewport
