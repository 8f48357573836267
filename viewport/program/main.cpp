#include "offscreen/OffscreenContext.h"
#include "toolkit/Layer.h"
#include "viewport/drawing/TiledPicture.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/effects/EffectRenderer.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/files/FileKind.h"
#include "viewport/files/images/Picture.h"
#include "viewport/files/images/TextureFile.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/program/CommandLine.h"
#include "viewport/program/Description.h"
#include "viewport/program/ProgressBar.h"
#include "viewport/program/input_files.h"
#include "viewport/program/standard_streams.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/single_line.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

/// The program vl_viewport: opens mesh and particle files, draws them into a picture, prints what is at a pixel.

namespace vellum::viewport {

namespace {

enum ExitStatus { DONE = 0, FILE_FAULT = 1, USAGE_FAULT = CommandLine::USAGE_ERROR, NO_OPENGL = 3 };

int fail(ExitStatus status, std::string const& message) {
    std::cerr << "vl_viewport: " << message << std::endl;
    return status;
}

void note(Options const& options, Fault const& what) {
    if (!options.isQuiet) {
        std::cerr << "vl_viewport: " << what.line() << std::endl;
    }
}

/// What the files hold.
struct Content {
    std::vector<MeshData> meshes;
    std::vector<ParticleFrame> particles;
    std::vector<std::string> textures;  // files that the meshes name
    std::optional<UpAxis> up;           // of the first file
    std::string texts;                  // its description, for --info
};

std::optional<Fault> loadMesh(std::string const& file, Options const& options, Content& content) {
    Result<MeshData> mesh = MeshFile(file).load(options.limits);
    if (!mesh.isOk()) {
        return mesh.fault();
    }
    for (std::string const& loss : mesh.value().notes) {
        note(options, {file, loss});
    }
    std::vector<std::string> const textures = textureFiles(file, mesh.value());
    content.textures.insert(content.textures.end(), textures.begin(), textures.end());
    // An effect has colors of its own.
    if (options.texture.empty() && !options.hasEffect(content.meshes.size())) {
        for (Fault const& missing : loadTextures(file, mesh.value())) {
            note(options, missing);
        }
    }
    content.up = content.up.value_or(mesh.value().up);
    content.texts += describeMesh(file, mesh.value());
    content.meshes.push_back(std::move(mesh.value()));
    return std::nullopt;
}

std::optional<Fault> loadParticles(std::string const& file, Options const& options, Content& content) {
    std::optional<ProgressBar> bar;
    bar.emplace(std::cerr, isatty(STDERR_FILENO) != 0 && !options.isQuiet, file);
    Result<LoadedFrame> particles = ParticleFile(file).load(
        options.particles.frame, [&bar](std::uint64_t done, std::uint64_t all) { bar->show(done, all); });
    bar.reset();
    if (!particles.isOk()) {
        return particles.fault();
    }
    LoadedFrame& loaded = particles.value();
    if (!loaded.warning.empty()) {
        note(options, {file, loaded.warning});
    }
    content.up = content.up.value_or(UpAxis::Z);
    content.texts += describeParticles(loaded);
    content.particles.push_back(std::move(loaded.frame));
    return std::nullopt;
}

/// What is drawn.
struct Subject {
    Scene scene;
    ParticleLook look;
    EffectSubject effect;  // only with an effect
};

std::string lineOf(std::optional<Picked> const& picked) {
    return picked ? singleLine(std::to_string(picked->name) + " " + picked->owner) : "nothing";
}

TiledPicture tiledPicture(Options const& options) {
    return {options.size, options.effect ? Tiling::ofOneTile(options.size) : Tiling::of(options.size)};
}

/// Draws and prints what is asked for, on the current context.
/// \param texts describe the files
int show(Options const& options, std::string const& texts, Subject& subject, OffscreenContext& context) {
    auto const layer = std::make_unique<toolkit::Layer>();
    layer->assumeFreeGpuMemory(options.gpuMemory);
    if (options.effect) {
        std::optional<Fault> const lack = EffectRenderer::firstLack(*layer, options.effect->values);
        if (lack) {
            return fail(NO_OPENGL, lack->message);
        }
    }
    if (!subject.scene.clouds().empty() && subject.look.mode != ParticleMode::POINTS &&
        !toolkit::hasGeometryStages(*layer)) {
        note(options, {"", "OpenGL here has no geometry stages for spheres and arrows; drawn as points"});
        subject.look.mode = ParticleMode::POINTS;
    }
    std::unique_ptr<EffectRenderer> effect;
    if (options.effect) {
        effect = std::make_unique<EffectRenderer>(*layer, *options.effect, options.mesh,
                                                  std::move(subject.effect));
        std::vector<Fault> const faults = effect->stageFaults();
        if (!faults.empty()) {
            // The driver's words belong to the fault.
            std::for_each(faults.begin(), std::prev(faults.end()), [](Fault const& line) {
                std::cerr << "vl_viewport: " << line.line() << std::endl;
            });
            return fail(FILE_FAULT, faults.back().line());
        }
        for (Fault const& what : effect->notes()) {
            note(options, what);
        }
    }
    if (options.info) {
        std::cout << texts << describeDriver(*layer);
    }
    ViewStyle const style{options.mesh, ParticleStyle::of(subject.look, options.particles), options.camera,
                          options.gizmo};
    Viewer viewer(*layer, subject.scene, style, effect.get());
    if (options.pick) {
        std::cout << lineOf(viewer.pick(options.size, *options.pick)) << '\n';
    }
    if (!std::cout.flush()) {
        return fail(FILE_FAULT, "standard output: cannot be written");
    }
    if (options.out.empty()) {
        return DONE;
    }
    Result<Picture> const picture = tiledPicture(options).draw(viewer, *layer, context);
    if (!picture.isOk()) {
        return fail(FILE_FAULT, Fault{options.out, picture.fault().message}.line());
    }
    std::optional<Fault> const fault = picture.value().savePng(options.out);
    return fault ? fail(FILE_FAULT, fault->line()) : DONE;
}

std::optional<Fault> load(Options const& options, Content& content) {
    for (std::string const& file : options.files) {
        std::optional<Fault> fault =
            isParticleFile(file) ? loadParticles(file, options, content) : loadMesh(file, options, content);
        if (fault) {
            return fault;
        }
    }
    return std::nullopt;
}

/// Prepares what is drawn. The content is used up.
Result<Subject> prepare(Options const& options, Content& content) {
    std::shared_ptr<VL_Image const> texture;
    if (!options.texture.empty()) {
        Result<std::shared_ptr<VL_Image const>> const picture = readTexture(options.texture);
        if (!picture.isOk()) {
            return picture.fault();
        }
        texture = picture.value();
    }
    Result<ParticleLook> look = lookOf(content.particles, options.particles);
    if (!look.isOk()) {
        return look.fault();
    }
    for (Fault const& loss : look.value().notes) {
        note(options, loss);
    }
    Subject subject{Scene(content.meshes, texture, std::move(content.particles), look.value(),
                          options.mesh.importPreview ? Scene::Imports::KEPT : Scene::Imports::DROPPED,
                          content.up),
                    std::move(look.value()),
                    {}};
    if (options.effect) {
        Result<EffectSubject> effect =
            EffectSubject::prepare(*options.effect, content.meshes, subject.scene, options.size.aspect());
        if (!effect.isOk()) {
            return effect.fault();
        }
        subject.effect = std::move(effect.value());
    }
    content.meshes = {};
    return subject;
}

int refuseToReplaceInput(Options const& options) {
    return fail(USAGE_FAULT, singleLine("--out: " + options.out + " is one of the files that are read"));
}

int run(Options const& options) {
    if (isOneOf(options.out, inputFiles(options))) {
        return refuseToReplaceInput(options);
    }
    // Before there is a context: an import copies the process.
    Content content;
    if (std::optional<Fault> const fault = load(options, content)) {
        return fail(FILE_FAULT, fault->line());
    }
    if (isOneOf(options.out, content.textures)) {
        return refuseToReplaceInput(options);
    }
    Result<Subject> subject = prepare(options, content);
    if (!subject.isOk()) {
        return fail(FILE_FAULT, subject.fault().line());
    }
    OffscreenContext context(tiledPicture(options).contextSettings());
    if (!context.isValid()) {
        return fail(NO_OPENGL, context.error());
    }
    if (std::optional<Fault> const fault = startGlew()) {
        return fail(NO_OPENGL, fault->message);
    }
    return show(options, content.texts, subject.value(), context);
}

}  // namespace

}  // namespace vellum::viewport

int main(int argumentCount, char** arguments) {
    using namespace vellum::viewport;
    openStandardStreams();
    try {
        CommandLine const line = parseCommandLine(argumentCount, arguments);
        if (line.options) {
            return run(*line.options);
        }
        std::cout << line.output << std::flush;
        if (!std::cout) {
            return fail(FILE_FAULT, "standard output: cannot be written");
        }
        if (!line.error.empty()) {
            std::cerr << line.error << std::endl;
        }
        return line.exitStatus;
    } catch (std::bad_alloc const&) {
        return fail(FILE_FAULT, "there is not enough memory");
    }
}
