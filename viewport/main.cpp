#include "Core_RL_GL.h"
#include "viewport/Description.h"
#include "viewport/GlewStart.h"
#include "viewport/MeshFile.h"
#include "viewport/OffscreenContext.h"
#include "viewport/Options.h"
#include "viewport/Picture.h"
#include "viewport/Scene.h"
#include "viewport/Textures.h"
#include "viewport/Viewer.h"

#include <iostream>
#include <memory>
#include <new>

/// The program vl_viewport: opens mesh files, draws them into a picture, tells what is at a pixel.

namespace vellum::viewport {

namespace {

enum ExitStatus { DONE = 0, FILE_FAULT = 1, NO_OPENGL = 3 };

int fail(ExitStatus const& status, std::string const& message) {
    std::cerr << "vl_viewport: " << message << std::endl;
    return status;
}

/// Everything that is asked for, on the current context.
int show(Options const& options, std::string const& meshTexts, Scene const& scene,
         OffscreenContext& context) {
    std::unique_ptr<Core_RL> const layer(new Core_RL_GL);
    if (options.info) {
        std::cout << meshTexts << describeDriver(*layer);
    }
    Viewer viewer(*layer, scene, options);
    if (options.pick) {
        std::cout << Fault{"", viewer.pick(*options.pick)}.line() << '\n';
    }
    if (!std::cout.flush()) {
        return fail(FILE_FAULT, "standard output: cannot be written");
    }
    if (options.out.empty()) {
        return DONE;
    }
    Result<Picture> const picture = viewer.draw(context, Tiling::of(options.width, options.height));
    if (!picture.isOk()) {
        return fail(FILE_FAULT, picture.fault().line());
    }
    std::optional<Fault> const fault = picture.value().savePng(options.out);
    return fault ? fail(FILE_FAULT, fault->line()) : DONE;
}

int run(Options const& options) {
    // Before there is a context: an import copies the process.
    std::vector<MeshData> meshes;
    std::string meshTexts;
    for (std::string const& file : options.files) {
        Result<MeshData> mesh = MeshFile(file).load(options.limits);
        if (!mesh.isOk()) {
            return fail(FILE_FAULT, mesh.fault().line());
        }
        if (options.texture.empty()) {
            for (Fault const& note : loadTextures(file, mesh.value())) {
                std::cerr << "vl_viewport: " << note.line() << std::endl;
            }
        }
        meshTexts += describeMesh(file, mesh.value());
        meshes.push_back(std::move(mesh.value()));
    }
    std::shared_ptr<VL_Image const> texture;
    if (!options.texture.empty()) {
        Result<std::shared_ptr<VL_Image const>> const picture = readTexture(options.texture);
        if (!picture.isOk()) {
            return fail(FILE_FAULT, picture.fault().line());
        }
        texture = picture.value();
    }
    Scene const scene(meshes, texture);
    meshes = {};

    OffscreenContext context(Viewer::contextSettings(options));
    if (!context.isValid()) {
        return fail(NO_OPENGL, context.error());
    }
    if (std::optional<std::string> const reason = startGlew()) {
        return fail(NO_OPENGL, *reason);
    }
    return show(options, meshTexts, scene, context);
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
