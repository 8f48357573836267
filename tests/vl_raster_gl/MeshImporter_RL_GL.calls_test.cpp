#include "MeshImporter_RL_GL.h"

#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

// The import preview call by call.

namespace vellum {

namespace {

using testing::ElementsAre;

class MeshImporter_RL_GL_calls_test : public testing::Test {
protected:
    void SetUp() override {
        importer.positions = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {0.1, 0.2, 0.3}};
        importer.triangles = {{0, 1, 2}, {3, 1, 0}};
        importer.cornerNormals = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {50, 50, 50}},
                                  {{0.5, 0, 0}, {0, 0.5, 0}, {0, 0, 0.5}, {60, 60, 60}}};
    }

    Texts surface() {
        gl_spy::Recording const recording;
        preview.render();
        return recording.texts();
    }
    Texts normals(unsigned int triangle) {
        gl_spy::Recording const recording;
        preview.renderNormals(triangle);
        return recording.texts();
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    MeshImporter importer;
    MeshImporter_RL_GL preview{&importer};
};

Texts const firstNormals{"glVertex3dv({0, 1, 2})", "glVertex3dv({1, 1, 2})", "glVertex3dv({3, 4, 5})",
                         "glVertex3dv({3, 5, 5})", "glVertex3dv({6, 7, 8})", "glVertex3dv({6, 7, 9})"};
Texts const secondNormals{"glVertex3dv({0.1, 0.2, 0.3})", "glVertex3dv({0.6, 0.2, 0.3})",
                          "glVertex3dv({3, 4, 5})",       "glVertex3dv({3, 4.5, 5})",
                          "glVertex3dv({0, 1, 2})",       "glVertex3dv({0, 1, 2.5})"};

Texts lines(std::vector<Texts> const& parts) {
    Texts texts{"glColor3f(1, 1, 1)", "glBegin(GL_LINES)"};
    for (Texts const& part : parts) {
        texts.insert(texts.end(), part.begin(), part.end());
    }
    texts.emplace_back("glEnd()");
    return texts;
}

TEST_F(MeshImporter_RL_GL_calls_test, makingAndDestroyingPreviewMakesNoCall) {
    gl_spy::Recording const recording;
    { MeshImporter_RL_GL const other(&importer); }
    EXPECT_TRUE(recording.calls().empty());
}

TEST_F(MeshImporter_RL_GL_calls_test, surfaceIsRedWithNormalsOfItsCorners) {
    EXPECT_THAT(surface(), ElementsAre("glColor3f(1, 0, 0)", "glBegin(GL_TRIANGLES)",               //
                                       "glNormal3dv({1, 0, 0})", "glVertex3dv({0, 1, 2})",          //
                                       "glNormal3dv({0, 1, 0})", "glVertex3dv({3, 4, 5})",          //
                                       "glNormal3dv({0, 0, 1})", "glVertex3dv({6, 7, 8})",          //
                                       "glNormal3dv({0.5, 0, 0})", "glVertex3dv({0.1, 0.2, 0.3})",  //
                                       "glNormal3dv({0, 0.5, 0})", "glVertex3dv({3, 4, 5})",        //
                                       "glNormal3dv({0, 0, 0.5})", "glVertex3dv({0, 1, 2})", "glEnd()"));
}

TEST_F(MeshImporter_RL_GL_calls_test, normalsOfOneTriangleAreThreeWhiteSegments) {
    EXPECT_EQ(normals(0), lines({firstNormals}));
    EXPECT_EQ(normals(1), lines({secondNormals}));
}

TEST_F(MeshImporter_RL_GL_calls_test, allOnesAreNormalsOfEveryTriangle) {
    EXPECT_EQ(normals(0xFFFFFFFFU), lines({firstNormals, secondNormals}));
}

TEST_F(MeshImporter_RL_GL_calls_test, triangleBeyondLastIsEmptyBlock) {
    EXPECT_EQ(normals(2), lines({}));
    EXPECT_EQ(normals(0xFFFFFFFEU), lines({}));
}

TEST_F(MeshImporter_RL_GL_calls_test, withoutCornerNormalsNothingIsDrawn) {
    importer.cornerNormals = {};
    EXPECT_THAT(surface(), ElementsAre("glColor3f(1, 0, 0)", "glBegin(GL_TRIANGLES)", "glEnd()"));
    EXPECT_EQ(normals(0xFFFFFFFFU), lines({}));
    EXPECT_EQ(normals(0), lines({}));
}

TEST_F(MeshImporter_RL_GL_calls_test, cornerNormalsLimitTriangleCount) {
    importer.cornerNormals = {importer.cornerNormals[0]};
    EXPECT_EQ(surface().size(), 3U + 6U);
    EXPECT_EQ(normals(0xFFFFFFFFU), lines({firstNormals}));
    EXPECT_EQ(normals(1), lines({}));
}

TEST_F(MeshImporter_RL_GL_calls_test, trianglesBeyondArraysAreSkipped) {
    importer.triangles[0].e2 = 4;
    EXPECT_EQ(normals(0), lines({}));
    importer.triangles.setSize(1);
    EXPECT_EQ(normals(0xFFFFFFFFU), lines({}));
}

TEST_F(MeshImporter_RL_GL_calls_test, bothLeaveTheirColorSet) {
    gl_spy::Recording const recording;
    preview.render();
    EXPECT_EQ(recording.calls().front().text(), "glColor3f(1, 0, 0)");
    preview.renderNormals(0);
    EXPECT_EQ(recording.count("glColor3f"), 2U) << "nothing takes a color back";
    EXPECT_EQ(recording.count("glPushAttrib"), 0U);
    EXPECT_EQ(recording.count("glColor4f"), 0U);
}

}  // namespace

}  // namespace vellum
