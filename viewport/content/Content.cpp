#include "viewport/content/Content.h"

#include "viewport/content/frame_at_time.h"
#include "viewport/content/input_files.h"
#include "viewport/files/FileKind.h"
#include "viewport/files/common/InputFile.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/images/TextureFile.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/files/particles/ParticleSeries.h"
#include "viewport/scene/needed_values.h"
#include "viewport/scene/scalar_colors.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>

namespace vellum::viewport {

namespace {

/// Two numbered files may just be two things to be compared.
constexpr std::size_t FEWEST_OF_A_SERIES = 3;

/// Seconds from the start of an animation; particles may be shown at times before 0.
MeshOptions meshOptions(Options const& options) {
    return {options.time ? std::optional<double>(std::max(0.0, *options.time)) : std::nullopt};
}

/// Whether somebody may ask for other frames than the first one.
bool needsSequences(Options const& options) {
    return options.film.frames || options.opensWindow();
}

/// Whether nothing but one picture of one frame is asked for, which needs some of its values alone. What
/// several files show depends on all of them.
ChooseValues chosenValues(Options const& options) {
    bool const isPictureAlone = options.files.size() == 1 && options.info == InfoForm::NONE &&
                                !options.needsValues() && !options.film.isAsked();
    return isPictureAlone ? neededValues(options.particles) : ChooseValues();
}

/// Ends the loading where nobody wants it any more.
void passOn(LoadObserver& observer) {
    if (observer.isCancelled()) {
        throw Cancelled();
    }
}

/// What readers report about a file, passed on. Begins with nothing done.
Progress progressOf(std::string const& file, LoadObserver& observer) {
    Progress progress = [&observer, file](std::uint64_t done, std::uint64_t all) {
        passOn(observer);
        observer.progress(file, done, all);
    };
    progress(0, 0);
    return progress;
}

std::optional<Fault> loadMesh(MeshFile const& source, std::string const& file, Options const& options,
                              Content& content, LoadObserver& observer) {
    Progress const progress = progressOf(file, observer);
    Result<MeshData> mesh = source.load(options.limits, meshOptions(options), progress);
    if (!mesh.isOk()) {
        return mesh.fault();
    }
    for (std::string const& loss : mesh.value().notes) {
        observer.note({file, loss});
    }
    std::vector<std::string> const textures = textureFiles(source.place(), mesh.value());
    content.textures.insert(content.textures.end(), textures.begin(), textures.end());
    // An effect has colors of its own.
    if (options.texture.empty() && !options.hasEffect(content.meshes.size())) {
        // Their bytes are not those of the file.
        auto const watch = [&observer](std::uint64_t, std::uint64_t) { passOn(observer); };
        for (Fault const& missing : loadTextures(source.place(), mesh.value(), watch)) {
            observer.note(missing);
        }
    }
    content.addUp({file, mesh.value().up});
    content.hasAnimations = content.hasAnimations || !mesh.value().animations.empty();
    observer.meshRead(file, mesh.value());
    if (needsSequences(options) && !mesh.value().animations.empty()) {
        double const perSecond = options.film.framesPerSecond;
        FrameSequence const sequence = FrameSequence::ofAnimation(
            source, options.limits, mesh.value().animations.front().duration, perSecond);
        double const pose = std::round(std::max(0.0, options.time.value_or(0)) * perSecond);
        auto const last = static_cast<double>(sequence.count() - 1);
        content.moving.push_back({file, sequence, true, content.meshes.size(), perSecond,
                                  static_cast<std::size_t>(std::min(pose, last))});
    }
    content.meshes.push_back(std::move(mesh.value()));
    return std::nullopt;
}

/// \param name what is being read
/// \param load (Progress) reads it
template <class Load>
std::optional<Fault> loadParticles(std::string const& name, Content& content, LoadObserver& observer,
                                   Load const& load) {
    Result<LoadedFrame> particles = load(progressOf(name, observer));
    if (!particles.isOk()) {
        return particles.fault();
    }
    LoadedFrame& loaded = particles.value();
    if (!loaded.warning.empty()) {
        observer.note({loaded.frame.file, loaded.warning});
    }
    content.hasTimes = content.hasTimes || hasTimes(loaded);
    content.addUp({loaded.frame.file, UpAxis::Z});
    observer.particlesRead(loaded);
    content.frameCounts.push_back(loaded.count);
    content.particles.push_back(std::move(loaded.frame));
    return std::nullopt;
}

/// Keeps a place for the frames of a film.
void addMoving(std::string const& name, FrameSequence const& sequence, Content& content,
               LoadObserver& observer) {
    if (!sequence.warning().empty()) {
        observer.note({name, sequence.warning()});
    }
    content.addUp({name, UpAxis::Z});
    content.moving.push_back({name, sequence, false, content.particles.size()});
    content.particles.emplace_back();
}

/// Keeps what was found out about the file whose frame has been loaded last, so that others can be shown.
void keepSequence(std::string const& name, FrameSequence const& sequence, std::size_t shown,
                  Content& content) {
    if (sequence.count() > 1) {
        content.moving.push_back({name, sequence, false, content.particles.size() - 1, 0, shown});
    }
}

/// The frame that is asked for. Of several files those with a single one stand still.
Result<LoadedFrame> loadChosen(ParticleFile const& particles, Options const& options,
                               Progress const& progress) {
    if (options.time) {
        return loadAtTime(particles, *options.time, progress);
    }
    Result<LoadedFrame> loaded = particles.load(options.particles.frame, progress);
    bool const isStill = !loaded.isOk() && options.particles.frame && options.files.size() > 1;
    if (isStill && !loaded.fault().isCancelled) {
        Result<FrameList> const list = particles.frames(progress);
        if (list.isOk() && list.value().count == 1) {
            return particles.load(std::nullopt, progress);
        }
    }
    return loaded;
}

std::optional<Fault> loadParticles(InputFile const& file, Options const& options, Content& content,
                                   LoadObserver& observer) {
    ParticleFile const particles(file, particleFormatNamed(options.format), chosenValues(options));
    if (options.film.frames) {
        Result<FrameSequence> const sequence =
            FrameSequence::ofFile(particles, progressOf(file.name(), observer));
        if (!sequence.isOk()) {
            return sequence.fault();
        }
        if (sequence.value().count() > 1) {
            addMoving(file.name(), sequence.value(), content, observer);
            return std::nullopt;
        }
    }
    std::size_t shown = 0;
    if (std::optional<Fault> fault =
            loadParticles(file.name(), content, observer, [&](Progress const& progress) {
                Result<LoadedFrame> loaded = loadChosen(particles, options, progress);
                shown = loaded.isOk() ? loaded.value().number : 0;
                return loaded;
            })) {
        return fault;
    }
    if (needsSequences(options) && content.frameCounts.back() > 1) {
        Result<FrameSequence> const sequence =
            FrameSequence::ofFile(particles, progressOf(file.name(), observer));
        if (sequence.isOk()) {
            keepSequence(file.name(), sequence.value(), shown, content);
        }
    }
    return std::nullopt;
}

std::optional<Fault> loadSeries(std::vector<std::string> const& files, Options const& options,
                                Content& content, LoadObserver& observer) {
    std::optional<ParticleSeries> const series = ParticleSeries::of(files);
    if (!series) {
        return Fault{files.empty() ? std::string() : files.front(),
                     files.size() < 2 ? "--series needs several particle files or meshes"
                                      : "is of no series: --series needs names that differ in one number"};
    }
    std::optional<ParticleFormat> const format = particleFormatNamed(options.format);
    FrameSequence const sequence = FrameSequence::ofSeries(*series, format);
    if (options.film.frames) {
        addMoving(files.front(), sequence, content, observer);
        return std::nullopt;
    }
    std::size_t shown = 0;
    if (std::optional<Fault> fault =
            loadParticles(files.front(), content, observer, [&](Progress const& progress) {
                Result<LoadedFrame> loaded = options.time
                                                 ? loadAtTime(*series, *options.time, progress, format)
                                                 : series->load(options.particles.frame, progress, format);
                shown = loaded.isOk() ? loaded.value().number : 0;
                return loaded;
            })) {
        return fault;
    }
    if (needsSequences(options)) {
        keepSequence(files.front(), sequence, shown, content);
    }
    return std::nullopt;
}

std::optional<std::string> meshFormat(Options const& options) {
    return options.format.empty() ? std::nullopt : std::optional<std::string>(options.format);
}

/// Reads meshes that are the frames of a series.
/// \param files in the order of their numbers
std::optional<Fault> loadMeshSeries(std::vector<std::string> const& files, Options const& options,
                                    Content& content, LoadObserver& observer) {
    std::size_t const last = files.size() - 1;
    std::size_t const shown = options.film.frames ? 0 : options.particles.frame.value_or(last);
    if (shown > last) {
        return Fault{files.back(), "the series has no frame " + std::to_string(shown) + "; its last one is " +
                                       std::to_string(last) + ", this file"};
    }
    std::size_t const place = content.meshes.size();
    Result<InputFile> const file = InputFile::open(files[shown], progressOf(files[shown], observer));
    if (!file.isOk()) {
        return file.fault();
    }
    if (std::optional<Fault> fault =
            loadMesh(MeshFile(file.value(), meshFormat(options)), files[shown], options, content, observer)) {
        return fault;
    }
    if (needsSequences(options)) {
        // Files, not poses of one of them.
        auto const isOfMesh = [&](MovingFile const& moving) {
            return moving.isMesh && moving.place == place;
        };
        content.moving.erase(std::remove_if(content.moving.begin(), content.moving.end(), isOfMesh),
                             content.moving.end());
        bool const isTextured = options.texture.empty() && !options.hasEffect(place);
        FrameSequence const sequence =
            FrameSequence::ofMeshes(files, meshFormat(options), options.limits, isTextured);
        content.moving.push_back({files.front(), sequence, true, place, 0, shown});
    }
    return std::nullopt;
}

bool isPipe(std::string const& file) {
    std::error_code ignored;
    return InputFile::isStandardInput(file) || std::filesystem::is_fifo(file, ignored);
}

/// Whether a file is read as particles: its format says so, or else its content, which also tells the formats
/// apart that hold either.
bool hasParticles(std::string const& path, Result<InputFile> const& file, Options const& options) {
    std::vector<std::string> const meshFormats = meshFormatNames();
    bool const isOfMeshes =
        std::find(meshFormats.begin(), meshFormats.end(), options.format) != meshFormats.end();
    bool const isOfParticles = particleFormatNamed(options.format).has_value();
    if (isOfMeshes != isOfParticles) {
        return isOfParticles;
    }
    return file.isOk() ? isParticleFile(file.value()) : isParticleFile(path);
}

/// The files that --series collects.
struct SeriesFiles {
    std::vector<std::string> particles;  // also without --series
    std::vector<std::string> meshes;
};

/// Reads a mesh or particles; with --series the files are only collected.
std::optional<Fault> loadFile(std::string const& path, Options const& options, Content& content,
                              SeriesFiles& series, LoadObserver& observer) {
    // A pipe can be opened only once.
    Result<InputFile> const file = InputFile::open(path, progressOf(path, observer));
    bool const areParticles = hasParticles(path, file, options);
    if (!file.isOk() && (areParticles || isPipe(path))) {
        return file.fault();
    }
    if (!areParticles) {
        if (options.isSeries && file.isOk() && !file.value().isFromPipe()) {
            series.meshes.push_back(path);
            return std::nullopt;
        }
        return loadMesh(file.isOk() ? MeshFile(file.value(), meshFormat(options)) : MeshFile(path), path,
                        options, content, observer);
    }
    if (options.isSeries && file.value().isFromPipe()) {
        return Fault{path, "is a pipe, which is no file of a series"};
    }
    if (!file.value().isFromPipe()) {
        series.particles.push_back(path);
    }
    return options.isSeries ? std::nullopt : loadParticles(file.value(), options, content, observer);
}

/// Reads what has been collected: meshes whose names are of a series as that, others as several things.
std::optional<Fault> loadSeries(SeriesFiles const& files, Options const& options, Content& content,
                                LoadObserver& observer) {
    std::optional<ParticleSeries> const meshes = ParticleSeries::of(files.meshes);
    if (meshes) {
        if (std::optional<Fault> fault = loadMeshSeries(meshes->files(), options, content, observer)) {
            return fault;
        }
    }
    for (std::size_t i = 0; !meshes && i < files.meshes.size(); ++i) {
        std::string const& path = files.meshes[i];
        Result<InputFile> const file = InputFile::open(path, progressOf(path, observer));
        if (!file.isOk()) {
            return file.fault();
        }
        if (std::optional<Fault> fault =
                loadMesh(MeshFile(file.value(), meshFormat(options)), path, options, content, observer)) {
            return fault;
        }
    }
    return meshes && files.particles.empty() ? std::nullopt
                                             : loadSeries(files.particles, options, content, observer);
}

/// What hides the colors of each mesh; empty: nothing.
std::vector<std::string> coversOf(Options const& options, std::size_t meshCount) {
    std::vector<std::string> covers;
    for (std::size_t i = 0; i < meshCount; ++i) {
        covers.emplace_back(options.hasEffect(i)       ? "the effect"
                            : !options.texture.empty() ? "the texture"
                            : options.mesh.color       ? "the one color of all meshes"
                                                       : "");
    }
    return covers;
}

/// Says once where files disagree on what is up, unless it is given.
void noteUp(Options const& options, Content const& content, LoadObserver& observer) {
    if (!options.up && content.otherUp) {
        observer.note({content.otherUp->file, wordOf(content.otherUp->up) + " is up in it, but " +
                                                  wordOf(content.up->up) + " in " + content.up->file +
                                                  ", which decides unless --up is given"});
    }
}

/// Which frames the film shows: files with several frames advance together, as far as the shortest one goes.
std::optional<Fault> chooseFrames(Options const& options, Content& content, LoadObserver& observer) {
    auto const isShorter = [](MovingFile const& a, MovingFile const& b) {
        return a.sequence.count() < b.sequence.count();
    };
    auto const shortest = std::min_element(content.moving.begin(), content.moving.end(), isShorter);
    bool const isMoving = shortest != content.moving.end();
    std::size_t const count = isMoving ? shortest->sequence.count() : 1;
    std::string const name = isMoving ? shortest->name : options.files.front();
    Result<std::vector<std::size_t>> frames = options.film.frames->of(count);
    if (!frames.isOk()) {
        return Fault{name, frames.fault().message};
    }
    content.frames = std::move(frames.value());
    bool const areUneven = std::any_of(content.moving.begin(), content.moving.end(),
                                       [&](MovingFile const& file) { return isShorter(*shortest, file); });
    if (areUneven) {
        observer.note({name, "has " + std::to_string(count) +
                                 " frames, fewer than others: the film has no more than these"});
    }
    return std::nullopt;
}

/// The frame that a film begins with.
std::optional<Fault> loadFirst(MovingFile const& file, Content& content, LoadObserver& observer) {
    Result<SequenceFrame> frame = file.sequence.load(content.frames.front(), progressOf(file.name, observer));
    if (!frame.isOk()) {
        Fault const& fault = frame.fault();
        return Fault{fault.file.empty() ? file.name : fault.file, fault.message, fault.isCancelled};
    }
    if (auto* const loaded = std::get_if<LoadedFrame>(&frame.value())) {
        if (!loaded->warning.empty() && loaded->warning != file.sequence.warning()) {
            observer.note({loaded->frame.file, loaded->warning});
        }
        loaded->timesteps = file.sequence.timesteps();
        loaded->times = file.sequence.times();
        content.hasTimes = content.hasTimes || hasTimes(*loaded);
        observer.particlesRead(*loaded);
    }
    content.take(file, std::move(frame.value()));
    return std::nullopt;
}

std::optional<Fault> beginFilm(Options const& options, Content& content, LoadObserver& observer) {
    if (std::optional<Fault> fault = chooseFrames(options, content, observer)) {
        return fault;
    }
    content.still = content.particles;
    for (MovingFile const& file : content.moving) {
        if (std::optional<Fault> fault = loadFirst(file, content, observer)) {
            return fault;
        }
    }
    return std::nullopt;
}

/// A frame that is asked for and that no file has, although each one may stand still beside others.
std::optional<Fault> missingFrame(Options const& options, Content const& content) {
    std::optional<std::size_t> const& frame = options.particles.frame;
    bool const isAsked = frame && *frame > 0 && !options.isSeries && !content.particles.empty();
    bool const areStill = std::all_of(content.frameCounts.begin(), content.frameCounts.end(),
                                      [](std::size_t count) { return count == 1; });
    if (!isAsked || !areStill) {
        return std::nullopt;
    }
    return Fault{content.particles.front().file,
                 "has no frame " + std::to_string(*frame) + "; its last one is 0"};
}

Result<Content> loadAll(Options const& options, LoadObserver& observer) {
    Content content;
    SeriesFiles series;
    for (std::string const& file : options.files) {
        if (std::optional<Fault> fault = loadFile(file, options, content, series, observer)) {
            return *fault;
        }
    }
    if (options.isSeries) {
        if (std::optional<Fault> fault = loadSeries(series, options, content, observer)) {
            return *fault;
        }
    } else if (series.particles.size() >= FEWEST_OF_A_SERIES && isSeries(series.particles)) {
        observer.note(
            {"", "the files look like a series and are shown together; --series shows one frame of it"});
    }
    if (std::optional<Fault> fault = missingFrame(options, content)) {
        return *fault;
    }
    if (options.film.frames) {
        if (std::optional<Fault> fault = beginFilm(options, content, observer)) {
            return *fault;
        }
    }
    noteUp(options, content, observer);
    return content;
}

Result<Subject> prepareAll(Options const& options, Content& content, LoadObserver& observer, HeldLook* held) {
    std::shared_ptr<VL_Image const> texture;
    if (!options.texture.empty()) {
        Result<std::shared_ptr<VL_Image const>> const picture =
            readTexture(options.texture, progressOf(options.texture, observer));
        if (!picture.isOk()) {
            return picture.fault();
        }
        texture = picture.value();
    }
    passOn(observer);
    std::vector<std::string> const covers = coversOf(options, content.meshes.size());
    Result<ParticleLook> look = viewport::lookOf(
        content.particles,
        held != nullptr ? held->options(options.particles, content.meshes) : options.particles,
        content.meshes, covers);
    if (!look.isOk()) {
        return look.fault();
    }
    if (held != nullptr) {
        held->hold(look.value());
    }
    for (Fault const& loss : look.value().notes) {
        observer.note(loss);
    }
    passOn(observer);
    colorMeshes(content.meshes, look.value(), covers);
    passOn(observer);
    Scene scene(content.meshes, texture, std::move(content.particles), look.value(),
                options.mesh.importPreview ? Scene::Imports::KEPT : Scene::Imports::DROPPED,
                options.up   ? options.up
                : content.up ? std::optional<UpAxis>(content.up->up)
                             : std::nullopt,
                options.needsValues() ? Scene::Frames::KEPT : Scene::Frames::DROPPED,
                held != nullptr ? held->extent() : std::nullopt);
    passOn(observer);
    Subject subject{std::move(scene), std::move(look.value()), std::nullopt};
    if (options.effect) {
        Result<EffectSubject> effect = EffectSubject::prepare(*options.effect, content.meshes, subject.scene,
                                                              options.pictures.front().size.aspect());
        if (!effect.isOk()) {
            return effect.fault();
        }
        subject.effect = std::move(effect.value());
    }
    passOn(observer);
    if (options.needsValues()) {
        // The next frames of a film need them again.
        subject.scene.keep(options.film.frames ? content.meshes : std::move(content.meshes));
    }
    return subject;
}

Fault cancelled() {
    return {"", "the loading was cancelled", true};
}

}  // namespace

void Content::addUp(UpOfFile const& file) {
    if (!up) {
        up = file;
    } else if (!otherUp && file.up != up->up) {
        otherUp = file;
    }
}

void Content::take(MovingFile const& file, SequenceFrame frame) {
    if (auto* const loaded = std::get_if<LoadedFrame>(&frame)) {
        particles[file.place] = std::move(loaded->frame);
        return;
    }
    auto& mesh = std::get<MeshData>(frame);
    // A pose changes no material, and the textures are read already.
    MeshData& former = meshes[file.place];
    if (file.isAnimation() && mesh.materials.size() == former.materials.size()) {
        mesh.materials = std::move(former.materials);
    }
    former = std::move(mesh);
}

Result<Content> Content::load(Options const& options, LoadObserver& observer) {
    try {
        return loadAll(options, observer);
    } catch (Cancelled const&) {
        return cancelled();
    }
}

Result<Subject> Subject::prepare(Options const& options, Content& content, LoadObserver& observer,
                                 HeldLook* held) {
    try {
        return prepareAll(options, content, observer, held);
    } catch (Cancelled const&) {
        return cancelled();
    }
}

}  // namespace vellum::viewport
