#include "viewport/program/Description.h"

#include "viewport/files/mesh/Textures.h"
#include "viewport/files/mesh/points.h"
#include "viewport/text/shortest_number.h"
#include "viewport/text/single_line.h"

#include <algorithm>
#include <cmath>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

std::string line(std::string const& label, std::string const& value) {
    std::string padded = "  " + label + ":";
    padded.resize(std::max<std::size_t>(34, padded.size() + 1), ' ');
    return padded + value + "\n";
}

std::string point(Vector3<double> const& p) {
    return shortNumber(p.x) + ", " + shortNumber(p.y) + ", " + shortNumber(p.z);
}

std::string yesOrNo(bool value) {
    return value ? "yes" : "no";
}

std::string normals(MeshData const& mesh) {
    std::size_t const missing = mesh.missingNormalCount();
    if (missing == 0) {
        return "of the file";
    }
    if (missing == mesh.positions.size()) {
        return "computed";
    }
    return "of the file, " + std::to_string(missing) + " computed";
}

std::string values(ValueFacts const& facts) {
    auto const count = [](std::size_t number, char const* what) {
        return number == 0 ? std::string() : ", " + std::to_string(number) + what;
    };
    std::string const range = facts.finiteCount == 0
                                  ? std::string("no values")
                                  : shortNumber(facts.minimum) + " to " + shortNumber(facts.maximum) +
                                        ", mean " + shortNumber(facts.mean);
    return range + count(facts.undefinedCount, " no number") + count(facts.infiniteCount, " infinite");
}

/// The textures that materials name, found or not.
std::string textures(std::string const& path, MeshData const& mesh) {
    std::string missing;
    std::size_t foundCount = 0;
    for (Material const& material : mesh.materials) {
        if (material.texture.empty() && material.textureBytes.empty()) {
            continue;
        }
        if (!material.textureBytes.empty() || findTexture(path, material.texture)) {
            ++foundCount;
        } else {
            missing += (missing.empty() ? "" : ", ") + singleLine(material.texture);
        }
    }
    return std::to_string(foundCount) + " found" + (missing.empty() ? "" : "; not found: " + missing);
}

std::string titleOf(std::string const& name, std::string const& unit) {
    return singleLine(unit.empty() ? name : name + " [" + unit + "]");
}

std::string animations(MeshData const& mesh) {
    std::string text;
    for (MeshAnimation const& animation : mesh.animations) {
        std::string const name = animation.name.empty() ? "unnamed" : singleLine(animation.name);
        text += (text.empty() ? "" : ", ") + name + " " + shortNumber(animation.duration) + " s";
    }
    return text;
}

/// The first of them: a column may have a word for each particle.
std::string words(ParticleLabels const& labels) {
    constexpr std::size_t MOST = 12;
    std::string text;
    for (std::size_t i = 0; i < std::min(MOST, labels.words.size()); ++i) {
        text += (text.empty() ? "" : ", ") + singleLine(labels.words[i]);
    }
    std::size_t const rest = labels.words.size() - std::min(MOST, labels.words.size());
    return rest > 0 ? text + " and " + std::to_string(rest) + " more" : text;
}

std::string driverString(GLenum name) {
    GLubyte const* const text = glGetString(name);
    return text != nullptr ? reinterpret_cast<char const*>(text) : "unknown";
}

int driverInteger(GLenum name) {
    GLint value[2] = {0, 0};
    glGetIntegerv(name, value);
    return value[0];
}

std::string memory(unsigned int kilobytes) {
    return kilobytes == 0 ? "not told by the driver" : std::to_string(kilobytes / 1024) + " MB";
}

}  // namespace

// == Facts ==

DriverFacts DriverFacts::of(Core_RL_GL& layer) {
    DriverFacts facts{driverString(GL_VERSION),
                      driverString(GL_SHADING_LANGUAGE_VERSION),
                      driverString(GL_RENDERER),
                      driverString(GL_VENDOR),
                      layer.checkShaderSupport(),
                      driverInteger(GL_MAX_TEXTURE_SIZE),
                      driverInteger(GL_SAMPLES),
                      layer.getTotalGpuMemory(),
                      layer.Core_RL_GL::getFreeGpuMemory(),
                      layer.getFreeGpuMemory(),
                      {}};
    for (char const* const extension : {"GL_ARB_vertex_buffer_object", "GL_EXT_geometry_shader4",
                                        "GL_NVX_gpu_memory_info", "GL_ATI_meminfo", "GL_KHR_debug"}) {
        facts.extensions.emplace_back(extension, layer.isExtensionSupported(extension));
    }
    return facts;
}

ValueFacts factsOf(double const* values, std::size_t count) {
    ValueFacts facts;
    for (std::size_t i = 0; i < count; ++i) {
        double const value = values[i];
        if (std::isnan(value)) {
            ++facts.undefinedCount;
            continue;
        }
        if (std::isinf(value)) {
            ++facts.infiniteCount;
            continue;
        }
        facts.minimum = facts.finiteCount == 0 ? value : std::min(facts.minimum, value);
        facts.maximum = facts.finiteCount == 0 ? value : std::max(facts.maximum, value);
        ++facts.finiteCount;
        // A sum could exceed all doubles.
        facts.mean += (value - facts.mean) / static_cast<double>(facts.finiteCount);
    }
    return facts;
}

std::optional<Box3<double>> boundsOf(ParticleFrame const& frame) {
    std::optional<Box3<double>> box;
    for (Vector3<double> const& position : frame.positions) {
        if (isFinite(position)) {
            box = box.value_or(Box3<double>{position, position});
            include(*box, position);
        }
    }
    return box;
}

// == Texts ==

std::string describeMesh(std::string const& path, MeshData const& mesh) {
    Box3<double> const box = mesh.box();
    std::string more;
    if (!mesh.lines.empty() || !mesh.points.empty()) {
        more += line("lines", std::to_string(mesh.lines.size())) +
                line("points", std::to_string(mesh.points.size()));
    }
    for (MeshScalar const& scalar : mesh.scalars) {
        more += line("scalar " + titleOf(scalar.name, scalar.unit),
                     values(factsOf(scalar.values.data(), scalar.values.size())));
    }
    if (!mesh.animations.empty()) {
        more += line("animations", animations(mesh));
    }
    return singleLine(path) + "\n" + line("triangles", std::to_string(mesh.triangles.size())) +
           line("vertices", std::to_string(mesh.positions.size())) +
           line("parts", std::to_string(mesh.partCount)) + line("normals", normals(mesh)) +
           line("colors", mesh.hasVertexColors ? "per vertex" : "of the materials") +
           line("texture coordinates", yesOrNo(!mesh.textureCoordinates.empty())) +
           line("materials", std::to_string(mesh.materials.size())) + line("textures", textures(path, mesh)) +
           line("from", point(box.min)) + line("to", point(box.max)) +
           line("size", point(box.max - box.min)) + line("up", wordOf(mesh.up)) + more;
}

std::string describeParticles(LoadedFrame const& loaded) {
    ParticleFrame const& frame = loaded.frame;
    std::size_t const count = frame.positions.size();
    std::string channels;
    ParticleVector const* const velocity = frame.velocity();
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        bool const isOfVelocity =
            velocity != nullptr &&
            std::find(velocity->columns.begin(), velocity->columns.end(), i) != velocity->columns.end();
        if (!isOfVelocity) {
            channels += (channels.empty() ? "" : ", ") + singleLine(frame.channels[i].name);
        }
    }
    std::string time = "timestep " + std::to_string(frame.timestep);
    if (frame.time) {
        time += ", time " + shortNumber(*frame.time);
    }
    std::string text = singleLine(frame.file) + "\n" + line("frames", std::to_string(loaded.count)) +
                       line("frame shown", std::to_string(loaded.number) + " (" + time + ")") +
                       line("particles", std::to_string(count)) +
                       line("velocities", yesOrNo(frame.velocity() != nullptr)) +
                       line("channels", channels.empty() ? "none" : channels);
    for (ParticleChannel const& channel : frame.channels) {
        text += line("channel " + titleOf(channel.name, channel.unit),
                     values(factsOf(channel.values.data(), channel.values.size())));
    }
    for (ParticleLabels const& labels : frame.labels) {
        text += line((labels.areElements ? "elements " : "words ") + singleLine(labels.name), words(labels));
    }
    if (frame.box) {
        ParticleBox const& box = *frame.box;
        text += line("box from", point(box.origin)) +
                line("box to", point(box.origin + box.edges[0] + box.edges[1] + box.edges[2]));
    }
    // Place, color vector and entry in the container.
    constexpr std::size_t BYTES_PER_PARTICLE = 28;
    constexpr double MEGABYTE = 1 << 20;
    return text + line("particle memory",
                       shortNumber(static_cast<double>(count * BYTES_PER_PARTICLE) / MEGABYTE) + " MB");
}

std::string describePicture(std::string const& out, std::string const& camera) {
    return (out.empty() ? std::string("Picture") : singleLine(out)) + "\n" +
           line("camera", camera.empty() ? "of the sea" : camera);
}

std::string describeDriver(DriverFacts const& driver) {
    std::string text = "OpenGL\n" + line("version", driver.version) +
                       line("shading language", driver.shadingLanguage) + line("renderer", driver.renderer) +
                       line("vendor", driver.vendor) + line("programs", yesOrNo(driver.hasPrograms)) +
                       line("largest texture", std::to_string(driver.largestTexture) + " pixels") +
                       line("samples per pixel", std::to_string(driver.samples)) +
                       line("memory", memory(driver.memory)) +
                       line("free memory", memory(driver.freeMemory)) +
                       line("taken to be free", memory(driver.takenToBeFree));
    for (auto const& [name, isSupported] : driver.extensions) {
        text += line(name, yesOrNo(isSupported));
    }
    return text;
}

std::string describeNoDriver(std::string const& reason) {
    return "OpenGL is not to be had: " + singleLine(reason) + "\n";
}

}  // namespace vellum::viewport
