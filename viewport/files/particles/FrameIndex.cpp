#include "viewport/files/particles/FrameIndex.h"

#include "viewport/files/particles/TableRows.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace vellum::viewport {

namespace {

using Damage = std::optional<TextDamage>;

TableRows rowsOf(FrameHead const& head, ChooseValues const& choose, Progress const& progress) {
    TableRows rows(head.columns, ' ');
    rows.report(progress);
    rows.keep(choose);
    rows.endAt(head.nextFrameMark);
    if (head.isScaled) {
        rows.placeInto(*head.frame.box);
    }
    return rows;
}

/// Whether too little text follows for another frame of the same size, judged by the first row. The half is
/// for rows of unlike lengths.
bool isProbablyLast(TextLines const& rows, std::uint64_t count) {
    TextLines ahead = rows;
    double const bytesPerRow = static_cast<double>(ahead.take().size() + 1);
    return static_cast<double>(rows.left()) < 1.5 * bytesPerRow * static_cast<double>(count);
}

FrameHead newHead(std::size_t number) {
    FrameHead head;
    head.frame.timestep = static_cast<std::int64_t>(number);
    return head;
}

/// Reads the frame that begins there.
Damage readAt(TextLines from, std::size_t number, ReadFrameHead const& readHead, ChooseValues const& choose,
              Progress const& progress, ParticleFrame& frame) {
    FrameHead head = newHead(number);
    Damage damage = readHead(from, head);
    if (!damage) {
        damage = rowsOf(head, choose, progress).read(from, head.count, head.frame);
        frame = std::move(head.frame);
    }
    return damage;
}

/// Everything but the frame itself.
void fillIn(FrameIndex::Places const& places, std::optional<std::size_t> const& wanted, LoadedFrame& result) {
    result.count = places.starts.size();
    result.number = wanted.value_or(result.count - 1);
    result.timesteps = places.timesteps;
    result.times = places.times;
    result.warning = places.warning;
}

class FrameSearch {
public:
    FrameSearch(std::string_view text, std::optional<std::size_t> wanted, ReadFrameHead const& readHead,
                ChooseValues const& choose, std::optional<FrameIndex::Ahead> ahead, Progress const& progress)
        : text(text)
        , lines(text)
        , wanted(wanted)
        , readHead(readHead)
        , choose(choose)
        , ahead(std::move(ahead)) {
        if (progress) {
            // Frames may be read again, and progress must not go back.
            onward = [this, &progress](std::uint64_t done, std::uint64_t all) {
                furthest = std::max(furthest, done);
                progress(furthest, all);
            };
        }
    }

    FrameSearch(FrameSearch const&) = delete;
    FrameSearch& operator=(FrameSearch const&) = delete;

    Result<LoadedFrame> run() {
        for (lines.skipEmpty(); !lines.isAtEnd(); lines.skipEmpty()) {
            TextLines const start = lines;
            if (Damage const damage = _passFrame()) {
                return _stop(*damage);
            }
            places.starts.push_back(start);
            places.timesteps.push_back(timestep);
            places.times.push_back(time);
        }
        return places.starts.empty() ? Fault{{}, "holds no frame"} : _load(lastLineWarning(lines));
    }

    /// All frames, after a run without a fault.
    FrameIndex::Places& found() { return places; }

private:
    /// Leaves the lines behind the next frame, which may be read on the way.
    Damage _passFrame() {
        std::size_t const number = places.starts.size();
        FrameHead head = newHead(number);
        if (Damage damage = readHead(lines, head)) {
            return damage;
        }
        timestep = head.frame.timestep;
        time = head.frame.time;
        if (ahead && lines.done() == ahead->rowsStart) {
            lines.passTo(text.data() + ahead->rowsEnd, head.count, true);
            parsed = Parsed{number, std::move(ahead->frame)};
            ahead.reset();
            if (onward) {
                onward(lines.done(), lines.done() + lines.left());
            }
            return std::nullopt;
        }
        TableRows rows = rowsOf(head, choose, onward);
        TextLines const rowsStart = lines;
        // A frame that is probably shown is read at once, which spares single frames the counting of their
        // rows.
        bool const isProbablyShown = wanted ? *wanted == number : isProbablyLast(lines, head.count);
        if (!isProbablyShown && rows.skip(lines, head.count)) {
            return std::nullopt;
        }
        parsed.reset();  // Before the next one takes its memory.
        Damage damage = rows.read(lines, head.count, head.frame);
        if (!damage) {
            parsed = Parsed{number, std::move(head.frame)};
        } else if (number != wanted) {
            // It was read on suspicion: whether its values matter is known at the end of the text.
            lines = rowsStart;
            if (rowsOf(head, choose, onward).skip(lines, head.count)) {
                return std::nullopt;
            }
        }
        return damage;
    }

    /// The frames end with damage.
    Result<LoadedFrame> _stop(TextDamage const& damage) {
        // A wrong count of rows shows in the next head only: the frame before may be the damaged one.
        if (!places.starts.empty()) {
            if (Damage const earlier = _parse(places.starts.size() - 1)) {
                return Fault{{}, earlier->message()};
            }
        }
        if (!damage.isAtEnd) {
            return Fault{{}, damage.message()};
        }
        std::string const message =
            damage.message() + "; the file is cut off in frame " + std::to_string(places.starts.size());
        return places.starts.empty() ? Fault{{}, message} : _load(message + ", which is left out");
    }

    Result<LoadedFrame> _load(std::string const& warning) {
        LoadedFrame result;
        places.warning = warning;
        fillIn(places, wanted, result);
        if (result.number < result.count) {
            if (Damage const damage = _parse(result.number)) {
                return Fault{{}, damage->message()};
            }
            result.frame = std::move(parsed->frame);
        }
        return result;
    }

    /// Reads a frame that was passed, unless it is the one in memory.
    Damage _parse(std::size_t number) {
        if (parsed && parsed->number == number) {
            return std::nullopt;
        }
        parsed.reset();
        ParticleFrame frame;
        Damage damage = readAt(places.starts[number], number, readHead, choose, onward, frame);
        if (!damage) {
            parsed = Parsed{number, std::move(frame)};
        }
        return damage;
    }

    struct Parsed {
        std::size_t number;
        ParticleFrame frame;
    };

    std::string_view text;
    TextLines lines;
    std::optional<std::size_t> wanted;
    ReadFrameHead const& readHead;
    ChooseValues const& choose;
    std::optional<FrameIndex::Ahead> ahead;
    Progress onward;
    std::uint64_t furthest = 0;  // that was reported
    FrameIndex::Places places;
    std::int64_t timestep = 0;     // of the frame passed last
    std::optional<double> time;    // of the frame passed last
    std::optional<Parsed> parsed;  // the frame read last: at most one is in memory
};

}  // namespace

/// Reads the first frame of a text that grows, unless something is unusual: then nothing is lost but time
/// that would have been spent waiting.
void FrameIndex::_readAhead() {
    std::string_view there;
    // Whole lines alone can be read.
    auto const extend = [&] {
        there = growing->beyond(there.size());
        return there.substr(0, there.rfind('\n') + 1);
    };
    std::string_view const start = extend();
    TextLines lines(start);
    FrameHead head = newHead(0);
    lines.skipEmpty();
    bool const isReadable = !lines.isAtEnd() && !readHead(lines, head) && !lines.isAtEnd() && head.count > 0;
    if (!isReadable) {
        return;
    }
    Ahead found;
    found.rowsStart = static_cast<std::size_t>(lines.done());
    TableRows rows = rowsOf(head, choose, {});
    bool isFirst = true;
    rows.follow([&](TextLines& lines) {
        // What is there is read before more is waited for, a megabyte at once.
        constexpr std::uint64_t ENOUGH = std::uint64_t(1) << 20;
        while (!std::exchange(isFirst, false) && lines.left() < ENOUGH) {
            std::size_t const before = there.size();
            lines.extendTo(start.data() + extend().size());
            if (there.size() == before) {
                break;
            }
        }
        return std::max(growing->expectedSize(), lines.done() + lines.left()) - lines.done();
    });
    if (!rows.read(lines, head.count, head.frame)) {
        found.frame = std::move(head.frame);
        found.rowsEnd = static_cast<std::size_t>(lines.done());
        ahead = std::move(found);
    }
}

Result<LoadedFrame> FrameIndex::load(std::optional<std::size_t> const& wanted, Progress const& progress) {
    if (growing) {
        _readAhead();
        Result<std::string_view> const whole = growing->whole();
        if (!whole.isOk()) {
            return whole.fault();
        }
        text = whole.value();
        growing.reset();
    }
    if (!places) {
        FrameSearch search(text, wanted, readHead, choose, std::exchange(ahead, std::nullopt), progress);
        Result<LoadedFrame> result = search.run();
        if (result.isOk()) {
            places = std::move(search.found());
        }
        return result;
    }
    std::size_t const number = wanted.value_or(places->starts.size() - 1);
    if (number < places->starts.size()) {
        return _loadAt(number, progress);
    }
    LoadedFrame behind;
    fillIn(*places, wanted, behind);
    return behind;
}

Result<LoadedFrame> FrameIndex::_loadAt(std::size_t number, Progress const& progress) const {
    LoadedFrame result;
    fillIn(*places, number, result);
    TextLines const& start = places->starts[number];
    Progress ofFrame;
    if (progress) {
        bool const isLast = number + 1 == places->starts.size();
        std::uint64_t const first = start.done();
        std::uint64_t const size = isLast ? start.left() : places->starts[number + 1].done() - first;
        ofFrame = [&progress, first, size](std::uint64_t done, std::uint64_t) {
            progress(std::min(done - first, size), size);
        };
    }
    if (Damage const damage = readAt(start, number, readHead, choose, ofFrame, result.frame)) {
        return Fault{{}, damage->message()};
    }
    return result;
}

LoadFrame loaderOf(std::shared_ptr<FrameIndex> index) {
    return [index = std::move(index)](std::optional<std::size_t> const& frame, Progress const& progress) {
        return index->load(frame, progress);
    };
}

Result<LoadedFrame> readFrame(std::string_view text, std::optional<std::size_t> wanted,
                              ReadFrameHead const& readHead, Progress const& progress) {
    return FrameSearch(text, wanted, readHead, {}, std::nullopt, progress).run();
}

std::string lastLineWarning(TextLines const& lines) {
    return lines.isEnded() ? std::string()
                           : "line " + std::to_string(lines.number()) +
                                 ": the last line has no end, its last value may be cut off";
}

}  // namespace vellum::viewport
