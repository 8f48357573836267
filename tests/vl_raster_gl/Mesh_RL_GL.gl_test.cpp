#include "Mesh_RL_GL.h"
#include "Core_RL_GL.h"
#include "MeshImporter_RL_GL.h"
#include "foundation/geometry/MeshImporter.h"
#include "foundation/geometry/Vector2.h"

#include "tests/foundation/geometry/mesh_shapes.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using namespace mesh_shapes;

struct Subject {
    char const* name;
    Shape (*shape)();
    float crease;
};

Subject const SUBJECTS[] = {
    {"grid", [] { return grid(6, 0.3); }, 0.7F},
    {"cubeWithHardEdges", [] { return cube(); }, 0.7F},
    {"sphereWithOneSmoothingGroup", [] { return sphere(12); }, Mesh::NO_CREASE},
    {"moebiusBand", [] { return moebiusBand(24); }, 1.5F},
    {"meshAbove65536Triangles", [] { return grid(190, 0.3); }, 0.7F},
};

std::ostream& operator<<(std::ostream& out, Subject const& subject) {
    return out << subject.name;
}

/// The fixture: a subject seen from above at an angle, lit from the viewer, with a striped texture.
class Mesh_RL_GL_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        gl_spy::GlTest::SetUp();
        glClearColor(0.1F, 0.15F, 0.2F, 1);
        glEnable(GL_DEPTH_TEST);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        gluPerspective(40, 1, 1, 20);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        gluLookAt(2.2, -2.6, 2.4, 0, 0, 0, 0, 0, 1);
        float const light[4] = {0, 0, 1, 0};
        glPushMatrix();
        glLoadIdentity();
        glLightfv(GL_LIGHT0, GL_POSITION, light);
        glPopMatrix();
        glEnable(GL_LIGHT0);
        glEnable(GL_LIGHTING);
        glEnable(GL_COLOR_MATERIAL);
        glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
        // Pushed: the composites restore the top of the stack.
        core.pushDepthTest({DEPTH_LESS, true});
    }

    void TearDown() override {
        if (texture != 0) {
            glDeleteTextures(1, &texture);
        }
        gl_spy::GlTest::TearDown();
    }

    void make(Subject const& subject) {
        subject.shape().fill(mesh);
        ASSERT_TRUE(mesh.workNormals(subject.crease));
        ASSERT_TRUE(mesh.workAdjacency());
        Array<Vector2<float>> coordinates;
        for (Vector3<double> const& p : copyOf<Vector3<double>>(mesh.positions())) {
            coordinates.pushBack({static_cast<float>(p.x + p.z), static_cast<float>(p.y)});
        }
        mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, "uv", coordinates);
    }

    void bindStripes() {
        unsigned char const pixels[2 * 2 * 3] = {255, 80, 0, 0, 80, 255, 0, 200, 0, 255, 255, 255};
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glEnable(GL_TEXTURE_2D);
    }

    std::vector<unsigned char> picture(std::function<void()> const& draw) {
        core.setColor({0.9F, 0.7F, 0.4F, 1});
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        return readPixels();
    }

    /// How many pixels differ by more than 2 of 255 in a channel.
    static std::size_t differences(std::vector<unsigned char> const& a, std::vector<unsigned char> const& b) {
        std::size_t count = 0;
        for (std::size_t pixel = 0; pixel < a.size(); pixel += 4) {
            bool differs = false;
            for (std::size_t c = 0; c < 4; ++c) {
                differs = differs || std::abs(int(a[pixel + c]) - int(b[pixel + c])) > 2;
            }
            count += differs ? 1 : 0;
        }
        return count;
    }

    std::size_t covered(std::vector<unsigned char> const& pixels) {
        return differences(pixels, picture([] {}));
    }

    Core_RL_GL core;
    Mesh mesh;
    Mesh_RL_GL renderer{&mesh, false};
    unsigned int texture = 0;
};

class Mesh_RL_GL_paths_drawn_test : public Mesh_RL_GL_drawn_test,
                                    public testing::WithParamInterface<Subject> {
protected:
    /// Both paths. Positions narrowed to floats move an edge across the middle of a pixel here and there, so
    /// a few pixels along the outlines may differ: at most `tolerated`.
    void expectSamePicture(std::string const& what, std::size_t tolerated,
                           std::function<void()> const& draw) {
        renderer.useBufferObjects = false;
        std::vector<unsigned char> const immediate = picture(draw);
        renderer.useBufferObjects = true;
        std::vector<unsigned char> const buffered = picture(draw);
        EXPECT_LE(differences(immediate, buffered), tolerated)
            << what << ": " << savePicture(std::string("mesh_") + GetParam().name + "_" + what + "_buffers");
    }
};

TEST_P(Mesh_RL_GL_paths_drawn_test, bothPathsGiveSamePicture) {
    make(GetParam());
    constexpr std::size_t FEW = 30;  // of 65536
    for (unsigned int mode = 0; mode < 4; ++mode) {
        for (unsigned int const flags : {0U, unsigned{MeshShadingFlags_ns::WIREFRAME_BACK_FACES}}) {
            expectSamePicture("mode" + std::to_string(mode) + (flags != 0 ? "_back" : ""), FEW, [&] {
                renderer.render(MeshShading{mode, flags, ""});
            });
        }
    }
    expectSamePicture("edges", FEW, [&] { renderer.renderEdges(); });
    expectSamePicture("withEdges", FEW, [&] { renderer.renderWithEdges({0.9F, 0.7F, 0.4F, 1}); });
    expectSamePicture("blending", FEW, [&] {
        renderer.renderWithEdgesBlending({0.9F, 0.7F, 0.4F, 0.5F}, true);
    });
    expectSamePicture("points", FEW, [&] { renderer.renderPoints(3); });
    bindStripes();
    for (unsigned int mode = 2; mode < 4; ++mode) {
        expectSamePicture("textured" + std::to_string(mode), FEW, [&] {
            renderer.render(MeshShading{mode, MeshShadingFlags_ns::TEXTURE, "uv"});
        });
    }
}

TEST_P(Mesh_RL_GL_paths_drawn_test, somethingIsSeenInEveryMode) {
    make(GetParam());
    renderer.useBufferObjects = true;
    for (unsigned int mode = 0; mode < 4; ++mode) {
        std::vector<unsigned char> const pixels = picture([&] { renderer.render(MeshShading{mode, 0, ""}); });
        EXPECT_GT(covered(pixels), mode < 2 ? 300U : 4000U) << "mode " << mode;
    }
}

TEST_P(Mesh_RL_GL_paths_drawn_test, buffersHoldWhatDriverWasGiven) {
    make(GetParam());
    renderer.useBufferObjects = true;
    gl_spy::Recording recording;
    renderer.render();
    std::vector<double> stores;
    for (gl_spy::Call const& call : recording.named("glBufferData")) {
        stores.push_back(call.numbers.front());
    }
    EXPECT_EQ(stores, std::vector<double>(3, mesh.triangleCount() * 36.0));
    // The third buffer bound is that of the positions, which are drawn from last.
    auto const binds = recording.named("glBindBuffer");
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(binds[binds.size() - 2].numbers.back()));
    std::vector<float> const soup = gl_spy::as<float>(gl_spy::bufferContents(GL_ARRAY_BUFFER));
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    ASSERT_EQ(soup.size(), mesh.triangleCount() * 9);
    Shape const shape = GetParam().shape();
    for (unsigned int t = 0; t < shape.triangles.size(); ++t) {
        for (unsigned int k = 0; k < 3; ++k) {
            Vector3<double> const& p = shape.positions[at(shape.triangles[t], k)];
            ASSERT_EQ(soup[t * 9 + k * 3], static_cast<float>(p.x));
            ASSERT_EQ(soup[t * 9 + k * 3 + 2], static_cast<float>(p.z));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Mesh_RL_GL_paths_drawn_test, testing::ValuesIn(SUBJECTS),
                         [](auto const& info) { return std::string(info.param.name); });

TEST_F(Mesh_RL_GL_drawn_test, editIsSeenInBothPathsAlike) {
    make(SUBJECTS[2]);
    renderer.useBufferObjects = true;
    std::vector<unsigned char> const before = picture([&] { renderer.render(); });
    ArrayTypeable* const positions = VL_ArrayServer.resolve(mesh.positions());
    for (unsigned int i = 0; i < positions->size; ++i) {
        positions->as<Vector3<double>>()[i].x *= 0.5;
    }
    std::vector<unsigned char> const unmarked = picture([&] { renderer.render(); });
    EXPECT_EQ(differences(before, unmarked), 0U);
    mesh.markModified(mesh.positions());
    std::vector<unsigned char> const after = picture([&] { renderer.render(); });
    EXPECT_GT(differences(before, after), 3000U) << savePicture("mesh_edited");
    renderer.useBufferObjects = false;
    EXPECT_LE(differences(after, picture([&] { renderer.render(); })), 30U);
}

TEST_F(Mesh_RL_GL_drawn_test, emptyMeshRaisesNoErrorAndDrawsNothing) {
    VL_String const channel("uv");
    for (bool const useBuffers : {false, true}) {
        renderer.useBufferObjects = useBuffers;
        std::vector<unsigned char> const pixels = picture([&] {
            for (unsigned int mode = 1; mode < 4; ++mode) {
                renderer.render(MeshShading{mode, MeshShadingFlags_ns::TEXTURE, channel});
            }
            renderer.renderEdges();
            renderer.renderPoints(4);
        });
        EXPECT_EQ(covered(pixels), 0U);
    }
}

TEST_F(Mesh_RL_GL_drawn_test, meshThatShrinksAndGrowsIsDrawnWhole) {
    for (unsigned int const n : {8U, 1U, 0U, 20U}) {
        (n == 0 ? Shape() : grid(n)).fill(mesh);
        mesh.workNormals();
        mesh.workAdjacency();
        auto const draw = [&] {
            renderer.render();
            renderer.renderEdges();
            renderer.renderTextured("uv");
        };
        renderer.useBufferObjects = false;
        std::vector<unsigned char> const immediate = picture(draw);
        renderer.useBufferObjects = true;
        EXPECT_LE(differences(picture(draw), immediate), 30U) << n << ": " << savePicture("mesh_regrown");
        EXPECT_EQ(covered(immediate) == 0, n == 0);
    }
}

TEST_F(Mesh_RL_GL_drawn_test, wireframeBackFacesAreOutlinesAndFrontFacesFilled) {
    // The upper half of a sphere: its inside is seen from below.
    Shape half = sphere(12);
    Array<Triangle> upper;
    for (Triangle const& t : half.triangles) {
        if (half.positions[t.e0].z > 0.01 && half.positions[t.e1].z > 0.01 && half.positions[t.e2].z > 0.01) {
            upper.pushBack(t);
        }
    }
    half.triangles = upper;
    half.fill(mesh);
    mesh.workNormals();
    MeshShading const shading{MeshShadingMode_ns::SMOOTH, MeshShadingFlags_ns::WIREFRAME_BACK_FACES, ""};
    std::size_t const fromAbove = covered(picture([&] { renderer.render(shading); }));
    glLoadIdentity();
    gluLookAt(0, 0, -4.2, 0, 0, 0, 0, 1, 0);
    std::vector<unsigned char> const below = picture([&] { renderer.render(shading); });
    EXPECT_GT(fromAbove, 6000U);
    EXPECT_LT(covered(below), 12000U) << savePicture("mesh_back_faces");
    EXPECT_GT(covered(below), 1000U);
    std::size_t const filled = covered(picture([&] {
        renderer.render(MeshShading{MeshShadingMode_ns::SMOOTH, 0, ""});
    }));
    EXPECT_GT(filled, covered(below) + 3000);
}

TEST_F(Mesh_RL_GL_drawn_test, overlaysOfCubeAreSeen) {
    make(SUBJECTS[1]);
    glDisable(GL_LIGHTING);
    std::vector<unsigned char> const pixels = picture([&] {
        renderer.renderEdgesConnection();
        core.setColor({1, 0.5F, 0, 1});
        renderer.renderFaceNormals(0.5F);
        renderer.renderVertexNormals(0.5F);
        renderer.renderNormals(0, 1);
    });
    std::string const path = savePicture("mesh_overlays");
    EXPECT_GT(covered(pixels), 1000U) << path;
}

TEST_F(Mesh_RL_GL_drawn_test, importPreviewIsRedAndItsNormalsAreWhite) {
    MeshImporter importer;
    Shape const shape = sphere(8);
    importer.positions = shape.positions;
    importer.triangles = shape.triangles;
    for (Triangle const& t : shape.triangles) {
        importer.cornerNormals.pushBack(
            {shape.positions[t.e0], shape.positions[t.e1], shape.positions[t.e2], {0, 0, 0}});
    }
    MeshImporter_RL_GL preview(&importer);
    glDisable(GL_LIGHTING);
    picture([&] {
        preview.render();
        preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
    });
    std::string const path = savePicture("mesh_import_preview");
    std::size_t red = 0;
    std::size_t white = 0;
    std::vector<unsigned char> const pixels = readPixels();
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        red += pixels[i] == 255 && pixels[i + 1] == 0 ? 1 : 0;
        white += pixels[i] == 255 && pixels[i + 1] == 255 ? 1 : 0;
    }
    EXPECT_GT(red, 4000U) << path;
    EXPECT_GT(white, 1000U) << path;
}

}  // namespace
}  // namespace vellum
