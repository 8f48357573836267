#include "viewport/program/Film.h"

#include "viewport/content/input_files.h"
#include "viewport/live/Presentation.h"
#include "viewport/program/describe_pick.h"
#include "viewport/text/single_line.h"

#include <algorithm>
#include <iostream>
#include <unordered_set>
#include <utility>
#include <variant>

#include <unistd.h>

namespace vellum::viewport {

namespace {

/// Frames are read ahead as far as memory goes, and not farther than this.
constexpr std::size_t MOST_AHEAD = 16;

Failure notWritable(std::string const& reason) {
    return {USAGE_FAULT, {"", singleLine("--out: " + reason)}};
}

}  // namespace

Film::Film(Options const& options, Content& content, Subject& subject, PictureMaker& maker)
    : options(options)
    , content(content)
    , subject(subject)
    , maker(maker)
    , held(options.film.isRangeOfEach ? HeldLook::Ranges::EACH : HeldLook::Ranges::HELD) {
    for (Fault const& note : subject.look.notes) {
        said.insert(note.line());
    }
    bool const hasMeshes = std::any_of(content.moving.begin(), content.moving.end(),
                                       [](MovingFile const& file) { return file.isMesh; });
    std::uint64_t const budget =
        FrameReader::STANDARD_BUDGET / std::max<std::size_t>(content.moving.size(), 1);
    for (MovingFile const& file : content.moving) {
        readers.push_back(std::make_unique<FrameReader>(file.sequence, budget,
                                                        hasMeshes ? FrameReader::Reading::WHEN_TAKEN
                                                                  : FrameReader::Reading::AHEAD));
    }
}

// == Before drawing ==

Result<std::size_t> Film::length(Options const& options, Content const& content) {
    std::size_t const turn = options.film.turn;
    if (!options.film.frames) {
        return turn;
    }
    std::size_t const frames = content.frames.size();
    if (turn > 0 && turn != frames) {
        return Fault{"", "--turntable: " + std::to_string(turn) + " pictures of a turn do not suit " +
                             std::to_string(frames) + " frames; with --frames both must be as many"};
    }
    return frames;
}

std::optional<Failure> Film::nameFailure(Options const& options, Content const& content, std::size_t length) {
    std::vector<std::string> inputs = inputFiles(options);
    inputs.insert(inputs.end(), content.textures.begin(), content.textures.end());
    FileSet const read(inputs);
    std::optional<FileSet> materials;  // found out only where some file would be replaced
    std::unordered_set<std::string> names;
    bool const areSeveral = options.pictures.size() > 1;
    for (PictureOptions const& picture : options.pictures) {
        for (std::size_t i = 0; i < length; ++i) {
            std::string const name = picture.names->of(i);
            if (areSeveral && !names.insert(name).second) {
                return notWritable(name + " is the name of two pictures");
            }
            if (!FileSet::isFile(name)) {
                continue;
            }
            if (!materials) {
                materials.emplace(materialFiles(options.files));
            }
            if (read.contains(name) || materials->contains(name)) {
                return notWritable(name + " is one of the files that are read");
            }
        }
    }
    return std::nullopt;
}

Result<std::vector<FilmCamera>> Film::cameras(Options const& options, Subject const& subject) {
    std::vector<FilmCamera> cameras;
    for (PictureOptions const& picture : options.pictures) {
        Result<FilmCamera> camera = FilmCamera::of(
            subject.scene, Presentation::styleOf(options, picture, subject), picture.size, options.film.turn);
        if (!camera.isOk()) {
            return camera.fault();
        }
        cameras.push_back(camera.value());
    }
    return cameras;
}

// == Drawing ==

std::optional<Failure> Film::make() {
    Result<std::size_t> const length = Film::length(options, content);
    Result<std::vector<FilmCamera>> cameras = Film::cameras(options, subject);
    if (!length.isOk() || !cameras.isOk()) {
        return Failure{USAGE_FAULT, !length.isOk() ? length.fault() : cameras.fault()};
    }
    views = std::move(cameras.value());
    held.hold(subject.look);
    held.hold(subject.scene, subject.look);
    _showBar();
    for (std::size_t i = 0; i < length.value(); ++i) {
        if (i > 0 && !readers.empty()) {
            if (std::optional<Failure> failure = _load(i)) {
                bar.reset();
                return failure;
            }
        }
        // The next frame is read while this one is drawn.
        _readAhead(i + 1);
        if (std::optional<Failure> failure = _draw(i)) {
            bar.reset();
            return failure;
        }
        bar->show(i + 1, length.value());
    }
    bar.reset();
    return std::nullopt;
}

void Film::_showBar() {
    bar = std::make_unique<ProgressBar>(std::cerr, isatty(STDERR_FILENO) != 0 && !options.isQuiet,
                                        options.pictures.front().out);
}

void Film::_readAhead(std::size_t number) {
    if (number >= content.frames.size()) {
        return;
    }
    auto const next = content.frames.begin() + static_cast<std::ptrdiff_t>(number);
    std::size_t const count = std::min(content.frames.size() - number, MOST_AHEAD);
    for (auto const& reader : readers) {
        reader->want({next, next + static_cast<std::ptrdiff_t>(count)});
    }
}

/// Makes the subject that of another frame.
std::optional<Failure> Film::_load(std::size_t number) {
    std::vector<Fault> notes;
    maker.show(subject);  // It frees what it has drawn, before the next one takes its memory.
    content.particles = content.still;
    for (std::size_t i = 0; i < readers.size(); ++i) {
        MovingFile const& file = content.moving[i];
        std::optional<Result<SequenceFrame>> frame = readers[i]->wait();
        if (!frame || !frame->isOk()) {
            Fault fault = frame ? frame->fault() : Fault{{}, "cannot be read"};
            fault.file = fault.file.empty() ? file.name : fault.file;
            return Failure{FILE_FAULT, fault};
        }
        if (auto const* const loaded = std::get_if<LoadedFrame>(&frame->value())) {
            if (!loaded->warning.empty() && loaded->warning != file.sequence.warning()) {
                notes.push_back({loaded->frame.file, loaded->warning});
            }
        }
        content.take(file, std::move(frame->value()));
    }
    LoadObserver silent;  // Its notes are said with the number of the frame.
    Result<Subject> next = Subject::prepare(options, content, silent, &held);
    if (!next.isOk()) {
        return Failure{FILE_FAULT, next.fault()};
    }
    subject = std::move(next.value());
    notes.insert(notes.end(), subject.look.notes.begin(), subject.look.notes.end());
    _say(content.frames[number], notes);
    return std::nullopt;
}

void Film::_say(std::size_t number, std::vector<Fault> const& notes) {
    for (Fault const& one : notes) {
        if (said.insert(one.line()).second) {
            bar.reset();
            note(options, {one.file, "frame " + std::to_string(number) + ": " + one.message});
        }
    }
    if (bar == nullptr) {
        _showBar();
    }
}

std::optional<Failure> Film::_draw(std::size_t number) {
    auto const tell = [](std::optional<Picked> const& picked) { std::cout << describePick(picked); };
    for (std::size_t i = 0; i < options.pictures.size(); ++i) {
        PictureOptions picture = options.pictures[i];
        picture.out = picture.names->of(number);
        ViewStyle style = Presentation::styleOf(options, picture, subject);
        views[i].place(number, style);
        // A scene that stays is drawn from its buffers.
        bool const isSame = number > 0 && readers.empty() && options.pictures.size() == 1;
        if (std::optional<Failure> failure =
                isSame ? maker.makeAgain(picture, style.camera, tell) : maker.make(picture, style, tell)) {
            return failure;
        }
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
