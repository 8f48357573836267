#include "Camera_RL_GL.h"
#include "Core_RL_GL.h"

#include "tests/gl_spy/GlTest.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ostream>
#include <string>

#include "internal/gl_api.h"

namespace vellum {
namespace {

/// A 4 x 4 matrix by row and column, computed in double and compared with the matrix in GL.
struct Expected {
    std::array<std::array<double, 4>, 4> at{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
};

Expected operator*(Expected const& a, Expected const& b) {
    Expected product;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = 0;
            for (std::size_t k = 0; k < 4; ++k) {
                sum += a.at[row][k] * b.at[k][column];
            }
            product.at[row][column] = sum;
        }
    }
    return product;
}

constexpr double RADIANS = 3.14159265358979323846 / 180;

Expected perspective(double const& degrees, double const& aspect, double const& zNear, double const& zFar) {
    double const f = 1 / std::tan(degrees * RADIANS / 2);
    Expected m;
    m.at = {{{f / aspect, 0, 0, 0},
             {0, f, 0, 0},
             {0, 0, (zFar + zNear) / (zNear - zFar), 2 * zFar * zNear / (zNear - zFar)},
             {0, 0, -1, 0}}};
    return m;
}

/// The box of half width h about the pan, 1000 deep to either side.
Expected orthographic(double const& h, double const& panX, double const& panY, double const& aspect) {
    Expected m;
    m.at = {{{1 / h, 0, 0, panX / h}, {0, aspect / h, 0, panY / h}, {0, 0, -0.001, 0}, {0, 0, 0, 1}}};
    return m;
}

Expected turned(double const& degrees, std::size_t const& axis) {
    double const c = std::cos(degrees * RADIANS);
    double const s = std::sin(degrees * RADIANS);
    std::size_t const u = (axis + 1) % 3;
    std::size_t const v = (axis + 2) % 3;
    Expected m;
    m.at[u][u] = c;
    m.at[u][v] = -s;
    m.at[v][u] = s;
    m.at[v][v] = c;
    return m;
}

class Camera_RL_GL_drawn_test : public gl_spy::GlTest {
protected:
    void expectMatrix(GLenum const& name, Expected const& expected) {
        std::array<double, 16> actual{};
        glGetDoublev(name, actual.data());
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t column = 0; column < 4; ++column) {
                // GL keeps its matrices in float.
                double const value = expected.at[row][column];
                EXPECT_NEAR(actual[4 * column + row], value, 1e-6 * (1 + std::abs(value)))
                    << "row " << row << ", column " << column;
            }
        }
    }

    void expectModelViewSelected() {
        GLint mode = 0;
        glGetIntegerv(GL_MATRIX_MODE, &mode);
        EXPECT_EQ(mode, GL_MODELVIEW);
    }

    /// Something else in both matrices and another matrix selected, so that a missing step shows.
    void disturb() {
        for (GLenum const mode : {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE}) {
            glMatrixMode(mode);
            glScalef(3, 5, 7);
        }
    }

    void TearDown() override {
        glMatrixMode(GL_TEXTURE);
        glLoadIdentity();
        GlTest::TearDown();
    }

    Camera_RL_GL camera;
};

TEST_F(Camera_RL_GL_drawn_test, perspectiveViewPlacesWorldBeforeEye) {
    // Direction (2, -1, 2) / 3 and an up vector that is not perpendicular to it.
    *camera.transform.matrix() = {{2 / 3.0F, -1 / 3.0F, 2 / 3.0F, 0, 0, 1, 0, 0, 9, 9, 9, 9, 4, 5, -6, 1}};
    disturb();
    camera.updateModelMatrix();

    double const forward[] = {2 / 3.0, -1 / 3.0, 2 / 3.0};
    // side = forward x up, upright = side x forward
    double const length = std::sqrt(forward[0] * forward[0] + forward[2] * forward[2]);
    double const side[] = {-forward[2] / length, 0, forward[0] / length};
    double const upright[] = {side[1] * forward[2] - side[2] * forward[1],
                              side[2] * forward[0] - side[0] * forward[2],
                              side[0] * forward[1] - side[1] * forward[0]};
    double const eye[] = {4, 5, -6};
    Expected expected;
    for (std::size_t k = 0; k < 3; ++k) {
        expected.at[0][k] = side[k];
        expected.at[1][k] = upright[k];
        expected.at[2][k] = -forward[k];
        expected.at[0][3] -= side[k] * eye[k];
        expected.at[1][3] -= upright[k] * eye[k];
        expected.at[2][3] += forward[k] * eye[k];
    }
    expectMatrix(GL_MODELVIEW_MATRIX, expected);
    expectModelViewSelected();
}

TEST_F(Camera_RL_GL_drawn_test, perspectiveProjectionIsThatOfItsParameters) {
    camera.aspect = 1.6F;
    camera.fieldOfView = 50;
    camera.nearDistance = 0.5F;
    camera.farDistance = 200;
    disturb();
    camera.updateProjectionMatrix();
    expectMatrix(GL_PROJECTION_MATRIX, perspective(50, static_cast<double>(1.6F), 0.5, 200));
    expectModelViewSelected();
}

TEST_F(Camera_RL_GL_drawn_test, withZBiasNearPlaneMovesOut) {
    camera.aspect = 1.6F;
    camera.fieldOfView = 50;
    camera.nearDistance = 0.5F;
    camera.farDistance = 200;
    disturb();
    camera.updateProjectionMatrixZBias();
    expectMatrix(GL_PROJECTION_MATRIX, perspective(50, static_cast<double>(1.6F), 0.5005, 200));
    expectModelViewSelected();
}

/// An orthographic view: degrees about an axis (0 X, 1 Y).
struct View {
    unsigned int kind;
    double degrees;
    std::size_t axis;
};

void PrintTo(View const& view, std::ostream* out) {
    *out << "view kind " << view.kind;
}

class Camera_RL_GL_view_drawn_test : public Camera_RL_GL_drawn_test,
                                     public testing::WithParamInterface<View> {
protected:
    Camera_RL_GL_view_drawn_test() { camera.viewKind = GetParam().kind; }

    Expected rotation() const { return turned(GetParam().degrees, GetParam().axis); }
};

INSTANTIATE_TEST_SUITE_P(, Camera_RL_GL_view_drawn_test,
                         testing::Values(View{1, 0, 0}, View{2, 180, 1}, View{3, 90, 0}, View{4, -90, 0},
                                         View{5, 90, 1}, View{6, -90, 1}, View{7, 0, 0}, View{8, 0, 0}),
                         [](testing::TestParamInfo<View> const& row) {
                             return "kind" + std::to_string(row.param.kind);
                         });

TEST_P(Camera_RL_GL_view_drawn_test, modelViewMatrixIsIdentity) {
    *camera.transform.matrix() = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 7, 8, 9, 1}};
    disturb();
    camera.updateModelMatrix();
    expectMatrix(GL_MODELVIEW_MATRIX, Expected());
    expectModelViewSelected();
}

TEST_P(Camera_RL_GL_view_drawn_test, zoomZeroShowsTwoUnitsAcross) {
    camera.aspect = 2;
    disturb();
    camera.updateProjectionMatrix();
    expectMatrix(GL_PROJECTION_MATRIX, orthographic(1, 0, 0, 2) * rotation());
    expectModelViewSelected();
}

TEST_P(Camera_RL_GL_view_drawn_test, zoomAndPanMoveBoxBeforeItTurns) {
    camera.aspect = 0.75F;
    camera.zoom = 1.25F;
    camera.panX = 0.5F;
    camera.panY = -2;
    disturb();
    camera.updateProjectionMatrix();
    expectMatrix(GL_PROJECTION_MATRIX, orthographic(std::exp(1.25), 0.5, -2, 0.75) * rotation());
    expectModelViewSelected();
}

TEST_P(Camera_RL_GL_view_drawn_test, deliberatelyWithZBiasProjectionIsIdentity) {
    disturb();
    camera.updateProjectionMatrixZBias();
    expectMatrix(GL_PROJECTION_MATRIX, Expected());
    expectModelViewSelected();
}

// == On the picture ==

TEST_F(Camera_RL_GL_drawn_test, targetIsInMiddleAndUpIsUp) {
    camera.lookAt({5, 5, 5}, {1, 2, 3}, {0, 1, 0});
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
    glPointSize(9);
    glBegin(GL_POINTS);
    glColor3f(1, 0, 0);
    glVertex3f(1, 2, 3);
    glColor3f(0, 1, 0);
    glVertex3f(1, 3, 3);
    glEnd();
    EXPECT_EQ(readPixel(width / 2, height / 2), (Pixel{255, 0, 0, 255})) << savePicture("camera_target");

    bool isAbove = false;
    for (int y = 0; y < height / 2 - 10; ++y) {
        isAbove = isAbove || readPixel(width / 2, y) == Pixel{0, 255, 0, 255};
    }
    EXPECT_TRUE(isAbove) << savePicture("camera_target");
}

TEST_F(Camera_RL_GL_drawn_test, zBiasOfRenderLayerLoadsProjectionsOfCamera) {
    Core_RL_GL layer;
    camera.nearDistance = 0.5F;
    camera.farDistance = 200;
    layer.setCamera(&camera);
    layer.setZBias(true);
    expectMatrix(GL_PROJECTION_MATRIX, perspective(45, 1, 0.5005, 200));
    layer.setZBias(false);
    expectMatrix(GL_PROJECTION_MATRIX, perspective(45, 1, 0.5, 200));
}

}  // namespace
}  // namespace vellum
