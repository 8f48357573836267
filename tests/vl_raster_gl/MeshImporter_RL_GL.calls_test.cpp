#include "MeshImporter_RL_GL.h"

#include "tests/gl_spy/gl_spy.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vellum {
namespace {

using Texts = std::vector<std::string>;

class MeshImporter_RL_GL_calls_test : public testing::Test {
protected:
    void SetUp() override {
        importer.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 2}};
        importer.triangles = {{0, 1, 2}, {3, 2, 1}};
        importer.cornerNormals = {{{0, 0, 1}, {0, 0, 2}, {0, 0.5, 1}, {9, 9, 9}},
                                  {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {9, 9, 9}}};
    }

    Texts normals(unsigned int triangle) {
        gl_spy::Recording recording;
        preview.renderNormals(triangle);
        return recording.texts();
    }

    gl_spy::Script driver = gl_spy::drivers::gl15();
    MeshImporter importer;
    MeshImporter_RL_GL preview{&importer};
};

Texts const SECOND_TRIANGLES_NORMALS{"glVertex3dv({0, 0, 2})", "glVertex3dv({1, 0, 2})",
                                     "glVertex3dv({0, 1, 0})", "glVertex3dv({0, 2, 0})",
                                     "glVertex3dv({1, 0, 0})", "glVertex3dv({0, 0, 0})"};

TEST_F(MeshImporter_RL_GL_calls_test, theSurfaceIsRedWithItsCornerNormals) {
    gl_spy::Recording recording;
    preview.render();
    EXPECT_EQ(recording.texts(), (Texts{"glColor3f(1, 0, 0)", "glBegin(GL_TRIANGLES)",         //
                                        "glNormal3dv({0, 0, 1})", "glVertex3dv({0, 0, 0})",    //
                                        "glNormal3dv({0, 0, 2})", "glVertex3dv({1, 0, 0})",    //
                                        "glNormal3dv({0, 0.5, 1})", "glVertex3dv({0, 1, 0})",  //
                                        "glNormal3dv({1, 0, 0})", "glVertex3dv({0, 0, 2})",    //
                                        "glNormal3dv({0, 1, 0})", "glVertex3dv({0, 1, 0})",    //
                                        "glNormal3dv({-1, 0, 0})", "glVertex3dv({1, 0, 0})", "glEnd()"}));
}

TEST_F(MeshImporter_RL_GL_calls_test, theNormalsOfOneTriangleAreWhiteAndOfTheirOwnLength) {
    Texts expected{"glColor3f(1, 1, 1)", "glBegin(GL_LINES)"};
    expected.insert(expected.end(), SECOND_TRIANGLES_NORMALS.begin(), SECOND_TRIANGLES_NORMALS.end());
    expected.push_back("glEnd()");
    EXPECT_EQ(normals(1), expected);
}

TEST_F(MeshImporter_RL_GL_calls_test, allOnesDrawsThreeSegmentsForEveryTriangle) {
    Texts const all = normals(MeshImporter_RL::EVERY_TRIANGLE);
    ASSERT_EQ(all.size(), 2U + 12U + 1U);
    EXPECT_EQ(all[2], "glVertex3dv({0, 0, 0})");
    EXPECT_EQ(all[3], "glVertex3dv({0, 0, 1})");
    EXPECT_EQ(Texts(all.begin() + 8, all.end() - 1), SECOND_TRIANGLES_NORMALS);
}

TEST_F(MeshImporter_RL_GL_calls_test, anIndexBeyondTheLastTriangleDrawsAnEmptyBlock) {
    EXPECT_EQ(normals(2), (Texts{"glColor3f(1, 1, 1)", "glBegin(GL_LINES)", "glEnd()"}));
}

TEST_F(MeshImporter_RL_GL_calls_test, withoutCornerNormalsNothingIsDrawn) {
    importer.cornerNormals.clear();
    EXPECT_EQ(normals(MeshImporter_RL::EVERY_TRIANGLE).size(), 3U);
    gl_spy::Recording recording;
    preview.render();
    EXPECT_EQ(recording.texts(), (Texts{"glColor3f(1, 0, 0)", "glBegin(GL_TRIANGLES)", "glEnd()"}));
}

TEST_F(MeshImporter_RL_GL_calls_test, asManyTrianglesAreDrawnAsThereAreCornerNormals) {
    importer.cornerNormals.setSize(1);
    gl_spy::Recording recording;
    preview.render();
    EXPECT_EQ(recording.count("glVertex3dv"), 3U);
}

TEST_F(MeshImporter_RL_GL_calls_test, whatAnImportNamesBeyondItsEndsIsLeftOut) {
    importer.triangles[0].e2 = 4;
    EXPECT_EQ(normals(0).size(), 3U);
    importer.triangles.setSize(1);
    EXPECT_EQ(normals(MeshImporter_RL::EVERY_TRIANGLE).size(), 3U);
}

}  // namespace
}  // namespace vellum
