#include "viewport/program/Content.h"

#include "viewport/files/FileKind.h"
#include "viewport/files/common/InputFile.h"
#include "viewport/files/images/TextureFile.h"
#include "viewport/files/mesh/MeshFile.h"
#include "viewport/files/mesh/Textures.h"
#include "viewport/files/particles/ParticleFile.h"
#include "viewport/files/particles/ParticleSeries.h"
#include "viewport/program/Console.h"
#include "viewport/program/Description.h"
#include "viewport/program/ProgressBar.h"
#include "viewport/program/frame_at_time.h"
#include "viewport/program/input_files.h"
#include "viewport/scene/scalar_colors.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace vellum::viewport {

namespace {

/// Two numbered files may just be two things to be compared.
constexpr std::size_t FEWEST_OF_A_SERIES = 3;

/// Seconds from the start of an animation; particles may be shown at times before 0.
MeshOptions meshOptions(Options const& options) {
    return {options.time ? std::optional<double>(std::max(0.0, *options.time)) : std::nullopt};
}

std::optional<Fault> loadMesh(MeshFile const& source, std::string const& file, Options const& options,
                              Content& content) {
    Result<MeshData> mesh = source.load(options.limits, meshOptions(options));
    if (!mesh.isOk()) {
        return mesh.fault();
    }
    for (std::string const& loss : mesh.value().notes) {
        note(options, {file, loss});
    }
    std::vector<std::string> const textures = textureFiles(source.place(), mesh.value());
    content.textures.insert(content.textures.end(), textures.begin(), textures.end());
    // An effect has colors of its own.
    if (options.texture.empty() && !options.hasEffect(content.meshes.size())) {
        for (Fault const& missing : loadTextures(source.place(), mesh.value())) {
            note(options, missing);
        }
    }
    content.up = content.up.value_or(mesh.value().up);
    content.hasAnimations = content.hasAnimations || !mesh.value().animations.empty();
    if (options.info == InfoForm::TEXT) {
        content.texts += describeMesh(file, mesh.value());
    } else if (options.info == InfoForm::JSON) {
        content.document.addMesh(file, mesh.value());
    }
    content.meshes.push_back(std::move(mesh.value()));
    return std::nullopt;
}

/// \param name what is being read
/// \param load (Progress) reads it
template <class Load>
std::optional<Fault> loadParticles(std::string const& name, Options const& options, Content& content,
                                   Load const& load) {
    std::optional<ProgressBar> bar;
    bar.emplace(std::cerr, isatty(STDERR_FILENO) != 0 && !options.isQuiet, name);
    Result<LoadedFrame> particles =
        load([&bar](std::uint64_t done, std::uint64_t all) { bar->show(done, all); });
    bar.reset();
    if (!particles.isOk()) {
        return particles.fault();
    }
    LoadedFrame& loaded = particles.value();
    if (!loaded.warning.empty()) {
        note(options, {loaded.frame.file, loaded.warning});
    }
    content.hasTimes = content.hasTimes || hasTimes(loaded);
    content.up = content.up.value_or(UpAxis::Z);
    if (options.info == InfoForm::TEXT) {
        content.texts += describeParticles(loaded);
    } else if (options.info == InfoForm::JSON) {
        content.document.addParticles(loaded);
    }
    content.particles.push_back(std::move(loaded.frame));
    return std::nullopt;
}

std::optional<Fault> loadParticles(InputFile const& file, Options const& options, Content& content) {
    ParticleFile const particles(file, particleFormatNamed(options.format));
    return loadParticles(file.name(), options, content, [&](Progress const& progress) {
        return options.time ? loadAtTime(particles, *options.time, progress)
                            : particles.load(options.particles.frame, progress);
    });
}

std::optional<Fault> loadSeries(std::vector<std::string> const& files, Options const& options,
                                Content& content) {
    std::optional<ParticleSeries> const series = ParticleSeries::of(files);
    if (!series) {
        return Fault{files.empty() ? std::string() : files.front(),
                     files.size() < 2 ? "--series needs several particle files"
                                      : "is of no series: --series needs names that differ in one number"};
    }
    return loadParticles(files.front(), options, content, [&](Progress const& progress) {
        return options.time
                   ? loadAtTime(*series, *options.time, progress, particleFormatNamed(options.format))
                   : series->load(options.particles.frame, progress, particleFormatNamed(options.format));
    });
}

bool isPipe(std::string const& file) {
    std::error_code ignored;
    return InputFile::isStandardInput(file) || std::filesystem::is_fifo(file, ignored);
}

/// Whether a file is read as particles: its format says so, or else its content, which also tells the formats apart that
/// hold either.
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

/// Reads a mesh or particles; with --series particle files are only collected.
std::optional<Fault> loadFile(std::string const& path, Options const& options, Content& content,
                              std::vector<std::string>& particleFiles) {
    // A pipe can be opened only once.
    Result<InputFile> const file = InputFile::open(path);
    bool const areParticles = hasParticles(path, file, options);
    if (!file.isOk() && (areParticles || isPipe(path))) {
        return file.fault();
    }
    if (!areParticles) {
        std::optional<std::string> const format =
            options.format.empty() ? std::nullopt : std::optional<std::string>(options.format);
        return loadMesh(file.isOk() ? MeshFile(file.value(), format) : MeshFile(path), path, options,
                        content);
    }
    if (options.isSeries && file.value().isFromPipe()) {
        return Fault{path, "is a pipe, which is no file of a series"};
    }
    if (!file.value().isFromPipe()) {
        particleFiles.push_back(path);
    }
    return options.isSeries ? std::nullopt : loadParticles(file.value(), options, content);
}

}  // namespace

Result<Content> Content::load(Options const& options) {
    Content content;
    std::vector<std::string> particleFiles;
    for (std::string const& file : options.files) {
        if (std::optional<Fault> fault = loadFile(file, options, content, particleFiles)) {
            return *fault;
        }
    }
    if (options.isSeries) {
        if (std::optional<Fault> fault = loadSeries(particleFiles, options, content)) {
            return *fault;
        }
    } else if (particleFiles.size() >= FEWEST_OF_A_SERIES && isSeries(particleFiles)) {
        note(options,
             {"", "the files look like a series and are shown together; --series shows one frame of it"});
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
