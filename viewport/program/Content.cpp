#include "viewport/program/Content.h"

#include "viewport/files/FileKind.h"
#include "viewport/files/images/TextureFile.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/program/Console.h"
#include "viewport/program/Description.h"
#include "viewport/program/ProgressBar.h"
#include "viewport/program/input_files.h"
#include "viewport/scene/scalar_colors.h"

#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include <unistd.h>

namespace vellum::viewport {

namespace {

std::optional<Fault> loadMesh(std::string const& file, Options const& options, Content& content) {
    Result<MeshData> mesh = MeshFile(file).load(options.limits, {options.time});
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
    if (options.info == InfoForm::TEXT) {
        content.texts += describeMesh(file, mesh.value());
    } else if (options.info == InfoForm::JSON) {
        content.document.addMesh(file, mesh.value());
    }
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
    if (options.info == InfoForm::TEXT) {
        content.texts += describeParticles(loaded);
    } else if (options.info == InfoForm::JSON) {
        content.document.addParticles(loaded);
    }
    content.particles.push_back(std::move(loaded.frame));
    return std::nullopt;
}

}  // namespace

Result<Content> Content::load(Options const& options) {
    Content content;
    for (std::string const& file : options.files) {
        std::optional<Fault> fault =
            isParticleFile(file) ? loadParticles(file, options, content) : loadMesh(file, options, content);
        if (fault) {
            return *fault;
        }
    }
    return content;
}

Result<Subject> Subject::prepare(Options const& options, Content& content) {
    std::shared_ptr<VL_Image const> texture;
    if (!options.texture.empty()) {
        Result<std::shared_ptr<VL_Image const>> const picture = readTexture(options.texture);
        if (!picture.isOk()) {
            return picture.fault();
        }
        texture = picture.value();
    }
    // Nothing is colored by values that something else covers.
    bool const areCovered = texture != nullptr || options.mesh.color || options.effect;
    Result<ParticleLook> look = areCovered
                                    ? viewport::lookOf(content.particles, options.particles)
                                    : viewport::lookOf(content.particles, options.particles, content.meshes);
    if (!look.isOk()) {
        return look.fault();
    }
    for (Fault const& loss : look.value().notes) {
        note(options, loss);
    }
    colorMeshes(content.meshes, look.value());
    Scene scene(content.meshes, texture, std::move(content.particles), look.value(),
                options.mesh.importPreview ? Scene::Imports::KEPT : Scene::Imports::DROPPED,
                options.up ? options.up : content.up);
    Subject subject{std::move(scene), std::move(look.value()), std::nullopt};
    if (options.effect) {
        Result<EffectSubject> effect = EffectSubject::prepare(*options.effect, content.meshes, subject.scene,
                                                              options.pictures.front().size.aspect());
        if (!effect.isOk()) {
            return effect.fault();
        }
        subject.effect = std::move(effect.value());
    }
    return subject;
}

}  // namespace vellum::viewport
