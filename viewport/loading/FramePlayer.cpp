#include "viewport/loading/FramePlayer.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>
#include <variant>

namespace vellum::viewport {

namespace {

/// A frame is kept as its file has it, and as it is drawn.
constexpr std::uint64_t COPIES = 3;

/// 0 where there is no such file.
std::uint64_t bytesOnDisk(std::string const& file) {
    std::error_code error;
    std::uintmax_t const size = std::filesystem::file_size(file, error);
    return error ? 0 : static_cast<std::uint64_t>(size);
}

/// Of files whose bytes are looked at again for each frame.
std::vector<std::uint64_t> sizesOf(Content const& content) {
    std::vector<std::uint64_t> sizes;
    for (MovingFile const& file : content.moving) {
        sizes.push_back(file.sequence.timesteps().empty() ? 0 : bytesOnDisk(file.name));
    }
    return sizes;
}

/// What does not move. Of meshes that do, the materials stay, which their poses take over.
Content withoutFrames(Content const& content, FrameLine const& line) {
    Content base = content;
    for (std::size_t const place : line.files()) {
        MovingFile const& file = content.moving[place];
        if (file.isMesh) {
            MeshData materials;
            materials.materials = std::move(base.meshes[file.place].materials);
            base.meshes[file.place] = std::move(materials);
        } else {
            base.particles[file.place] = {};
        }
    }
    return base;
}

}  // namespace

/// Collects notes, and ends what is made ready where the reader gives it up.
class FramePlayer::FrameObserver : public LoadObserver {
public:
    explicit FrameObserver(Progress const& report) : report(report) {}

    void note(Fault const& what) override { notes.push_back(what); }

    bool isCancelled() override {
        try {
            report(0, 0);
        } catch (...) {
            reason = std::current_exception();
        }
        return reason != nullptr;
    }

    /// Passes on why it was given up.
    void rethrow() const {
        if (reason) {
            std::rethrow_exception(reason);
        }
    }

    std::vector<Fault> notes;

private:
    Progress const& report;
    std::exception_ptr reason;
};

FramePlayer::FramePlayer(Options const& options, Content const& content, std::function<void()> wake,
                         std::uint64_t budget)
    : frames(content)
    , base(withoutFrames(content, frames))
    , sizes(sizesOf(content))
    , options(options)
    , reader({[this](std::size_t frame, Progress const& progress) { return _load(frame, progress); },
              [](Played const& played) { return played.bytes; }, std::move(wake), false},
             budget) {}

FramePlayer::~FramePlayer() = default;

void FramePlayer::setOptions(Options const& newOptions) {
    {
        std::lock_guard<std::mutex> const lock(mutex);
        options = newOptions;
        ++version;
    }
    reader.want({});
    if (current) {
        current = std::exchange(next, std::nullopt).value_or(*current);
        _want(*current);
    }
}

void FramePlayer::show(std::size_t frame) {
    if (former && frame != *former) {
        // The frame behind the last one is the first one.
        bool const isRound = frame == 0 || *former == 0;
        isBackward = isRound ? isBackward : frame < *former;
    }
    former = frame;
    if (current) {
        next = frame == *current ? std::nullopt : std::optional<std::size_t>(frame);
        return;
    }
    current = frame;
    _want(frame);
}

void FramePlayer::forget() {
    current.reset();
    next.reset();
    reader.want({});
}

std::optional<LoadOutcome> FramePlayer::poll() {
    if (!current) {
        return std::nullopt;
    }
    std::optional<Result<Played>> frame = reader.take();
    if (!frame) {
        return std::nullopt;
    }
    if (frame->isOk() && frame->value().version != version) {
        // It was begun with the options before.
        reader.want({});
        _want(*current);
        return std::nullopt;
    }
    current = std::exchange(next, std::nullopt);
    if (current) {
        _want(*current);
    }
    LoadOutcome outcome;
    if (frame->isOk()) {
        outcome.notes = std::move(frame->value().notes);
        outcome.loaded = std::move(frame->value().loaded);
    } else {
        outcome.fault = frame->fault();
    }
    return outcome;
}

/// Reads a frame, and those that are likely to follow.
void FramePlayer::_want(std::size_t frame) {
    std::size_t const count = frames.count();
    std::vector<std::size_t> list;
    for (std::size_t i = 0; i < std::min(MOST_AHEAD + 1, count); ++i) {
        list.push_back((frame + (isBackward ? count - i : i)) % count);
    }
    reader.want(std::move(list));
}

/// On the reader's thread.
Result<FramePlayer::Played> FramePlayer::_load(std::size_t frame, Progress const& progress) {
    Options asked;
    unsigned int askedVersion = 0;
    {
        std::lock_guard<std::mutex> const lock(mutex);
        asked = options;
        askedVersion = version;
    }
    try {
        Content content = base;
        FrameObserver observer(progress);
        std::uint64_t bytes = 0;
        for (std::size_t const place : frames.files()) {
            MovingFile& file = content.moving[place];
            // The bytes behind the end of a mapped file end the process.
            if (sizes[place] > 0 && bytesOnDisk(file.name) < sizes[place]) {
                return Fault{file.name, "has become shorter since it was opened"};
            }
            Result<SequenceFrame> read = file.sequence.load(frame, progress);
            if (!read.isOk()) {
                std::string const& name = read.fault().file;
                return Fault{name.empty() ? file.name : name, read.fault().message};
            }
            if (auto const* const particles = std::get_if<LoadedFrame>(&read.value())) {
                if (!particles->warning.empty()) {
                    observer.note({particles->frame.file, particles->warning});
                }
            }
            bytes += COPIES * bytesOf(read.value());
            file.shown = frame;
            content.take(file, std::move(read.value()));
        }
        frames.choose(asked, frame);
        auto const whole = std::make_shared<Content const>(std::move(content));
        // A subject uses up what it is made of.
        Content copy = *whole;
        Result<Subject> subject = Subject::prepare(asked, copy, observer);
        observer.rethrow();
        if (!subject.isOk()) {
            return subject.fault();
        }
        return Played{LoadedContent{std::move(asked), whole, std::move(subject.value())},
                      std::move(observer.notes), bytes, askedVersion};
    } catch (std::bad_alloc const&) {
        return Fault{"", "there is not enough memory for the frame"};
    }
}

}  // namespace vellum::viewport
