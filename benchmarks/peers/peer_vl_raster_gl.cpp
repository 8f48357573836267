// This library, as its user writes it: Particles_RL_GL_v2 with its effect and buffers, Mesh_RL_GL with
// buffers.

#include "Peer.h"

#include "benchmarks/vl_raster_gl/frames_by_hand.h"

#include "Mesh_RL_GL.h"
#include "Particles_RL_GL_v2.h"

#include <GL/glu.h>

namespace vellum::benchmarks {
namespace {

void beginFrame() {
    glViewport(0, 0, PEER_SIDE, PEER_SIDE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(FIELD_DEGREES, 1, NEAR_PLANE, FAR_PLANE);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    gluLookAt(double{EYE[0]}, double{EYE[1]}, double{EYE[2]}, 0, 0, 0, 0, 0, 1);
}

class Points : public Peer {
public:
    explicit Points(PlainPoints const& points) {
        system.addChannel("position", ParticleChannel_v2::VECTOR);
        system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        system.addParticles(static_cast<unsigned int>(points.count()));
        std::size_t next = 0;
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            std::size_t const bytes = chunk->count() * sizeof(Vector3<float>);
            std::memcpy(chunk->channelData(0)->asVectors(), &points.positions[next], bytes);
            std::memcpy(chunk->channelData(1)->asVectors(), &points.velocities[next], bytes);
            next += std::size_t{chunk->count()} * 3;
        }
        particles.init();
    }
    ~Points() override {
        particles.clear();
        particles.releaseEffects();
    }
    void move(float time) override {
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            Vector3<float>* const positions = chunk->channelData(0)->asVectors();
            for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
                positions[slot].z += 0.01F * time;
            }
        }
    }
    void markMoved() override { isMoved = true; }
    void draw() override {
        beginFrame();
        particles.render(system, false, isMoved, 1, 0, 1.7F, {0, 0, 1, 1}, {1, 0.6F, 0.2F, 1}, {1, 1, 1, 1},
                         1, 1, 100, true, true, Particles_RL_GL_v2::RenderMagnitude::LENGTH);
        isMoved = false;
    }

private:
    FrameLayer layer;
    ParticleSystem_v2 system;
    Particles_RL_GL_v2 particles;
    bool isMoved = false;
};

class Surface : public Peer {
public:
    explicit Surface(PlainSurface const& surface) {
        Array<Vector3<double>> positions;
        Array<Vector3<float>> normals;
        Array<Tuple3<unsigned int>> triangles;
        positions.reserve(static_cast<unsigned int>(surface.vertexCount()), false);
        normals.reserve(static_cast<unsigned int>(surface.vertexCount()), false);
        triangles.reserve(static_cast<unsigned int>(surface.triangleCount()), false);
        for (std::size_t i = 0; i < surface.positions.size(); i += 3) {
            float const* const p = &surface.positions[i];
            float const* const n = &surface.normals[i];
            positions.pushBack({double{p[0]}, double{p[1]}, double{p[2]}});
            normals.pushBack({n[0], n[1], n[2]});
        }
        for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
            triangles.pushBack({surface.corners[i], surface.corners[i + 1], surface.corners[i + 2]});
        }
        mesh.setPositions(positions);
        mesh.setTriangles(triangles);
        mesh.setVertexNormals(normals);
        mesh.setNormalTriangles(triangles);
        renderer.useBufferObjects = true;
    }
    void move(float time) override {
        auto* const array = VL_ArrayServer.resolve(mesh.positions());
        auto* const positions = array->as<Vector3<double>>();
        for (std::size_t i = 0; i < array->size; ++i) {
            Vector3<double>& p = positions[i];
            p.z = double{waveHeight(static_cast<float>(p.x), static_cast<float>(p.y), time)};
        }
    }
    void markMoved() override {
        mesh.markModified(mesh.positions());
        mesh.markModified(mesh.vertexNormals());
    }
    void draw() override {
        beginFrame();
        glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
        glEnable(GL_LIGHTING);
        glEnable(GL_LIGHT0);
        renderer.render();
        glDisable(GL_LIGHTING);
    }

private:
    FrameLayer layer;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
};

}  // namespace

std::unique_ptr<Peer> makePeer(PlainPoints const& points) {
    return std::make_unique<Points>(points);
}
std::unique_ptr<Peer> makePeer(PlainSurface const& surface) {
    return std::make_unique<Surface>(surface);
}

}  // namespace vellum::benchmarks
