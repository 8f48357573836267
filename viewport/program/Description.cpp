#include "viewport/program/Description.h"

#include "viewport/text/single_line.h"

#include <algorithm>
#include <cstdio>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

std::string line(std::string const& label, std::string const& value) {
    std::string padded = "  " + label + ":";
    padded.resize(std::max<std::size_t>(34, padded.size() + 1), ' ');
    return padded + value + "\n";
}

std::string shortest(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string point(Vector3<double> const& p) {
    return shortest(p.x) + ", " + shortest(p.y) + ", " + shortest(p.z);
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

std::string describeMesh(std::string const& path, MeshData const& mesh) {
    Box3<double> const box = mesh.box();
    return singleLine(path) + "\n" + line("triangles", std::to_string(mesh.triangles.size())) +
           line("vertices", std::to_string(mesh.positions.size())) +
           line("parts", std::to_string(mesh.partCount)) + line("normals", normals(mesh)) +
           line("colors", mesh.hasVertexColors ? "per vertex" : "of the materials") +
           line("texture coordinates", yesOrNo(!mesh.textureCoordinates.empty())) +
           line("from", point(box.min)) + line("to", point(box.max)) + line("size", point(box.max - box.min));
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
        time += ", time " + shortest(*frame.time);
    }
    std::string text = singleLine(frame.file) + "\n" + line("frames", std::to_string(loaded.count)) +
                       line("frame shown", std::to_string(loaded.number) + " (" + time + ")") +
                       line("particles", std::to_string(count)) +
                       line("velocities", yesOrNo(velocity != nullptr)) +
                       line("channels", channels.empty() ? "none" : channels);
    if (frame.box) {
        ParticleBox const& box = *frame.box;
        text += line("box from", point(box.origin)) +
                line("box to", point(box.origin + box.edges[0] + box.edges[1] + box.edges[2]));
    }
    // Place, color vector and entry in the container.
    constexpr std::size_t BYTES_PER_PARTICLE = 28;
    constexpr double MEGABYTE = 1 << 20;
    return text + line("particle memory",
                       shortest(static_cast<double>(count * BYTES_PER_PARTICLE) / MEGABYTE) + " MB");
}

std::string describeDriver(Core_RL_GL& layer) {
    std::string text =
        "OpenGL\n" + line("version", driverString(GL_VERSION)) +
        line("shading language", driverString(GL_SHADING_LANGUAGE_VERSION)) +
        line("renderer", driverString(GL_RENDERER)) + line("vendor", driverString(GL_VENDOR)) +
        line("programs", yesOrNo(layer.checkShaderSupport())) +
        line("largest texture", std::to_string(driverInteger(GL_MAX_TEXTURE_SIZE)) + " pixels") +
        line("samples per pixel", std::to_string(driverInteger(GL_SAMPLES))) +
        line("memory", memory(layer.getTotalGpuMemory())) +
        line("free memory", memory(layer.Core_RL_GL::getFreeGpuMemory())) +
        line("taken to be free", memory(layer.getFreeGpuMemory()));
    for (char const* const extension : {"GL_ARB_vertex_buffer_object", "GL_EXT_geometry_shader4",
                                        "GL_NVX_gpu_memory_info", "GL_ATI_meminfo", "GL_KHR_debug"}) {
        text += line(std::string(extension), yesOrNo(layer.isExtensionSupported(extension)));
    }
    return text;
}

}  // namespace vellum::viewport
