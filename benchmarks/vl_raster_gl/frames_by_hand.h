#pragma once

#include "Core_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/ParticleSystem_v2.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {

constexpr int RECORD_BYTES = 24;  // of a particle: position and color
constexpr int COLOR_OFFSET = 12;

/// Reports the free memory that it is told to, and records the buffer and program of the library's draw.
class FrameLayer : public Core_RL_GL {
public:
    unsigned int getFreeGpuMemory() override { return freeKilobytes; }
    void genBuffers(unsigned long count, unsigned int* ids) override {
        Core_RL_GL::genBuffers(count, ids);
        buffer = ids[0];
    }
    void drawArrays(Primitive::type mode, unsigned long first, unsigned long count) override {
        if (program == 0) {
            glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        }
        Core_RL_GL::drawArrays(mode, first, count);
    }

    unsigned int freeKilobytes = 1U << 20;
    GLuint buffer = 0;
    GLint program = 0;
};

/// Fills the bound buffer, as a program does that has the contents ready.
inline void copyToBoundBuffer(void const* bytes, std::size_t count) {
    std::memcpy(glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY), bytes, count);
    glUnmapBuffer(GL_ARRAY_BUFFER);
}

/// Gives the bound buffer a new store, which is the driver's to provide.
inline void renewBoundBuffer(std::size_t count) {
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(count), nullptr, GL_STREAM_DRAW);
}

/// The draw of a program that has the particles in a buffer. It uses the library's buffer, so that both sides
/// read the same memory.
class ParticlesByHand {
public:
    ParticlesByHand(FrameLayer const& layer, unsigned int count)
        : program(static_cast<GLuint>(layer.program))
        , buffer(layer.buffer)
        , count(static_cast<GLsizei>(count)) {}

    void draw() const { draw(buffer); }

    void draw(GLuint from) const {
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glPointSize(1);
        glUseProgram(program);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, from);
        glVertexPointer(3, GL_FLOAT, RECORD_BYTES, nullptr);
        glColorPointer(3, GL_FLOAT, RECORD_BYTES, reinterpret_cast<void*>(COLOR_OFFSET));
        glDrawArrays(GL_POINTS, 0, count);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glUseProgram(0);
    }

    /// The draw of the arrays of the chunks, without a buffer.
    void drawChunks(ParticleSystem_v2& system) const {
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glPointSize(1);
        glUseProgram(program);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            glVertexPointer(3, GL_FLOAT, 0, chunk->channelData(0)->asVectors());
            glColorPointer(3, GL_FLOAT, 0, chunk->channelData(1)->asVectors());
            glDrawArrays(GL_POINTS, 0, static_cast<GLsizei>(chunk->count()));
        }
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
        glUseProgram(0);
    }

    /// The draw of records in main memory, without a program.
    void drawRecords(float const* records) const {
        constexpr GLsizei BATCH = 524288;
        constexpr std::size_t FLOATS = RECORD_BYTES / sizeof(float);
        glPointSize(1);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        for (GLsizei first = 0; first < count; first += BATCH) {
            float const* const batch = records + static_cast<std::size_t>(first) * FLOATS;
            glVertexPointer(3, GL_FLOAT, RECORD_BYTES, batch);
            glColorPointer(3, GL_FLOAT, RECORD_BYTES, batch + FLOATS / 2);
            glDrawArrays(GL_POINTS, 0, std::min(BATCH, count - first));
        }
        glDisableClientState(GL_VERTEX_ARRAY);
        glDisableClientState(GL_COLOR_ARRAY);
    }

private:
    GLuint program;
    GLuint buffer;
    GLsizei count;
};

/// The draw of a program that has the triangle soup in buffers.
class MeshByHand {
public:
    explicit MeshByHand(Mesh const& mesh) {
        auto const* const triangles = VL_ArrayServer.resolve(mesh.triangles());
        auto const* const positions = VL_ArrayServer.resolve(mesh.positions())->as<Vector3<double>>();
        auto const* const directions = VL_ArrayServer.resolve(mesh.vertexNormals())->as<Vector3<float>>();
        auto const* const corners = static_cast<unsigned int const*>(triangles->data);
        auto const* const ends =
            static_cast<unsigned int const*>(VL_ArrayServer.resolve(mesh.normalTriangles())->data);
        soup.resize(std::size_t{triangles->size} * 9);
        normals.resize(soup.size());
        for (std::size_t i = 0; i < soup.size() / 3; ++i) {
            Vector3<float> const p = convert<float>(positions[corners[i]]);
            std::memcpy(&soup[i * 3], &p, sizeof p);
            std::memcpy(&normals[i * 3], &directions[ends[i]], sizeof p);
        }
        create();
    }
    ~MeshByHand() { drop(); }
    MeshByHand(MeshByHand const&) = delete;
    MeshByHand& operator=(MeshByHand const&) = delete;

    /// Creates the buffers and fills them.
    void create() {
        glGenBuffers(2, names);
        for (GLuint const name : names) {
            glBindBuffer(GL_ARRAY_BUFFER, name);
            glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(soup.size() * sizeof(float)), nullptr,
                         GL_DYNAMIC_DRAW);
        }
        refill();
    }

    /// Fills the buffers with what is ready in main memory. They keep their stores, as those of the library.
    void refill() const {
        glBindBuffer(GL_ARRAY_BUFFER, names[0]);
        copyToBoundBuffer(soup.data(), soup.size() * sizeof(float));
        glBindBuffer(GL_ARRAY_BUFFER, names[1]);
        copyToBoundBuffer(normals.data(), normals.size() * sizeof(float));
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }

    void drop() const { glDeleteBuffers(2, names); }

    void draw() const {
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_NORMAL_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, names[1]);
        glNormalPointer(GL_FLOAT, 0, nullptr);
        glBindBuffer(GL_ARRAY_BUFFER, names[0]);
        glVertexPointer(3, GL_FLOAT, 0, nullptr);
        glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(soup.size() / 3));
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        glDisableClientState(GL_NORMAL_ARRAY);
        glDisableClientState(GL_VERTEX_ARRAY);
    }

private:
    std::vector<float> soup;  // positions of all corners
    std::vector<float> normals;
    GLuint names[2] = {0, 0};
};

}  // namespace vellum::benchmarks
