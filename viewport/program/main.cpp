#include "offscreen/OffscreenContext.h"
#include "viewport/drawing/EffectRenderer.h"
#include "viewport/drawing/GlewStart.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/ViewportLayer.h"
#include "viewport/files/FileKind.h"
#include "viewport/files/images/Picture.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/program/Description.h"
#include "viewport/program/Options.h"
#include "viewport/program/ProgressBar.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Scene.h"

#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

/// The program vl_viewport: opens mesh and particle files, draws them into a picture, tells what is at a pixel.

namespace vellum::viewport {

namespace {

enum ExitStatus { DONE = 0, FILE_FAULT = 1, NO_OPENGL = 3 };

int fail(ExitStatus status, std::string const& message) {
    std::cerr << "vl_viewport: " << message << std::endl;
    return status;
}

void note(Fault const& what) {
    std::cerr << "vl_viewport: " << what.line() << std::endl;
}

/// What the files hold.
struct Content {
    std::vector<MeshData> meshes;
    std::vector<ParticleFrame> particles;
    std::string texts;  // that describe it
};

std::optional<Fault> loadMesh(std::string const& file, Options const& options, Content& content) {
    Result<MeshData> mesh = MeshFile(file).load(options.limits);
    if (!mesh.isOk()) {
        return mesh.fault();
    }
    // An effect has colors of its own.
    if (options.texture.empty() && !options.effect.covers(content.meshes.size())) {
        for (Fault const& missing : loadTextures(file, mesh.value())) {
            note(missing);
        }
    }
    content.texts += describeMesh(file, mesh.value());
    content.meshes.push_back(std::move(mesh.value()));
    return std::nullopt;
}

std::optional<Fault> loadParticles(std::string const& file, Options const& options, Content& content) {
    std::optional<ProgressBar> bar;
    bar.emplace(std::cerr, isatty(STDERR_FILENO) != 0, file);
    Result<LoadedFrame> particles = ParticleFile(file).load(
        options.particles.frame, [&bar](std::uint64_t done, std::uint64_t all) { bar->show(done, all); });
    bar.reset();
    if (!particles.isOk()) {
        return particles.fault();
    }
    LoadedFrame& loaded = particles.value();
    if (!loaded.warning.empty()) {
        note({file, loaded.warning});
    }
    content.texts += describeParticles(loaded);
    content.particles.push_back(std::move(loaded.frame));
    return std::nullopt;
}

/// Everything that is asked for, on the current context.
int show(Options const& options, std::string const& texts, Scene const& scene, ParticleLook look,
         EffectSubject subject, OffscreenContext& context) {
    auto const layer = std::make_unique<ReportingLayer>(options.gpuMemory);
    if (options.info) {
        std::cout << texts << describeDriver(*layer);
    }
    if (!scene.clouds().empty() && !ParticleRenderer::isModeSupported(*layer, look.mode)) {
        note({"", "OpenGL here has no geometry stages for spheres and arrows; drawn as points"});
        look.mode = ParticleMode::POINTS;
    }
    std::unique_ptr<EffectRenderer> effect;
    if (options.effect.isOn()) {
        effect = std::make_unique<EffectRenderer>(*layer, options, std::move(subject));
        for (Fault const& what : effect->notes()) {
            note(what);
        }
    }
    Viewer viewer(*layer, scene, options, look, effect.get());
    if (options.pick) {
        std::cout << Fault{"", viewer.pick(*options.pick)}.line() << '\n';
    }
    if (!std::cout.flush()) {
        return fail(FILE_FAULT, "standard output: cannot be written");
    }
    if (options.out.empty()) {
        return DONE;
    }
    Result<Picture> const picture = viewer.draw(context, Tiling::of(options));
    if (!picture.isOk()) {
        return fail(FILE_FAULT, picture.fault().line());
    }
    std::optional<Fault> const fault = picture.value().savePng(options.out);
    return fault ? fail(FILE_FAULT, fault->line()) : DONE;
}

int run(Options const& options) {
    // Before there is a context: an import copies the process.
    Content content;
    for (std::string const& file : options.files) {
        std::optional<Fault> const fault =
            isParticleFile(file) ? loadParticles(file, options, content) : loadMesh(file, options, content);
        if (fault) {
            return fail(FILE_FAULT, fault->line());
        }
    }
    std::shared_ptr<VL_Image const> texture;
    if (!options.texture.empty()) {
        Result<std::shared_ptr<VL_Image const>> const picture = readTexture(options.texture);
        if (!picture.isOk()) {
            return fail(FILE_FAULT, picture.fault().line());
        }
        texture = picture.value();
    }
    Result<ParticleLook> look = lookOf(content.particles, options.particles);
    if (!look.isOk()) {
        return fail(FILE_FAULT, look.fault().line());
    }
    for (Fault const& loss : look.value().notes) {
        note(loss);
    }
    Scene const scene(content.meshes, texture, std::move(content.particles), look.value());
    EffectSubject subject;
    if (options.effect.isOn()) {
        Result<EffectSubject> prepared = EffectSubject::prepare(options, content.meshes, scene);
        if (!prepared.isOk()) {
            return fail(FILE_FAULT, prepared.fault().line());
        }
        subject = std::move(prepared.value());
    }
    content.meshes = {};

    OffscreenContext context(Viewer::contextSettings(options));
    if (!context.isValid()) {
        return fail(NO_OPENGL, context.error());
    }
    if (std::optional<std::string> const reason = startGlew()) {
        return fail(NO_OPENGL, *reason);
    }
    return show(options, content.texts, scene, look.value(), std::move(subject), context);
}

}  // namespace

}  // namespace vellum::viewport

int main(int argumentCount, char** arguments) {
    using namespace vellum::viewport;
    try {
        CommandLine const line = parseCommandLine(argumentCount, arguments);
        if (line.options) {
            return run(*line.options);
        }
        std::cout << line.output << std::flush;
        if (!line.error.empty()) {
            std::cerr << line.error << std::endl;
        }
        return line.exitStatus;
    } catch (std::bad_alloc const&) {
        return fail(FILE_FAULT, "there is not enough memory");
    }
}
