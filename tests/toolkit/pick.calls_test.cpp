#include "toolkit/pick.h"

#include "Camera_RL_GL.h"
#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/build_facts.h"
#include "toolkit/View.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <GL/gl.h>
#include <GL/glu.h>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

using Texts = std::vector<std::string>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

class pick_calls_test : public testing::Test {
protected:
    pick_calls_test() {
        camera.lookAt({0, 0, 5}, {0, 0, 0}, {0, 1, 0});
        glViewport(10, 20, 200, 100);
        camera.updateProjectionMatrix();
        camera.updateModelMatrix();
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    std::unique_ptr<Core_RL> layer{new Core_RL_GL};
    Camera_RL_GL camera;
};

void draw() {
    VL_Raster->loadName(7);
}

std::vector<double> projection() {
    std::vector<double> matrix(16);
    glGetDoublev(GL_PROJECTION_MATRIX, matrix.data());
    return matrix;
}

std::vector<double> elementsOf(Matrix4<double> const& matrix) {
    return std::vector<double>(std::begin(matrix.e), std::end(matrix.e));
}

/// The matrices as they are, multiplied from the left with a crop.
Matrix4<double> cropped(double scaleX, double scaleY, double x, double y) {
    return Matrix4<double>{{scaleX, 0, 0, 0, 0, scaleY, 0, 0, 0, 0, 1, 0, x, y, 0, 1}} *
           View::current().projection;
}

Texts namesOf(gl_spy::Recording const& recording) {
    Texts names;
    for (gl_spy::Call const& call : recording.calls()) {
        names.push_back(call.name);
    }
    return names;
}

}  // namespace

TEST_F(pick_calls_test, callsAreThoseOfTheHeader) {
    View const before = View::current();
    std::vector<double> const crop =
        elementsOf(cropped(20, 10, -20 * (2 * 60.0 / 200 - 1), -10 * (1 - 2 * 30.0 / 100)));
    gl_spy::Recording recording;
    EXPECT_TRUE(pick(60, 30, 5, draw).empty());
    Texts texts = recording.texts();
    for (std::string& text : texts) {
        if (text.rfind("glLoadMatrixd", 0) == 0) {
            text = "glLoadMatrixd";
        }
    }
    EXPECT_EQ(texts, (Texts{"glGetIntegerv(GL_RENDER_MODE, pointer)", "glGetIntegerv(GL_VIEWPORT, pointer)",
                            "glGetDoublev(GL_PROJECTION_MATRIX, pointer)",
                            "glGetDoublev(GL_MODELVIEW_MATRIX, pointer)", "glSelectBuffer(4096, pointer)",
                            "glRenderMode(GL_SELECT)", "glGetIntegerv(GL_RENDER_MODE, pointer)",
                            "glInitNames()", "glPushName(4294967295)", "glMatrixMode(GL_PROJECTION)",
                            "glLoadMatrixd", "glMatrixMode(GL_MODELVIEW)", "glLoadName(7)",
                            "glRenderMode(GL_RENDER)", "glMatrixMode(GL_PROJECTION)", "glLoadMatrixd",
                            "glMatrixMode(GL_MODELVIEW)", "glLoadMatrixd"}));
    std::vector<gl_spy::Call> const loads = recording.named("glLoadMatrixd");
    ASSERT_EQ(loads.size(), 3U);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(loads[0].numbers[i], crop[i], 1e-12) << i;
    }
    EXPECT_EQ(loads[1].numbers, elementsOf(before.projection));
    EXPECT_EQ(loads[2].numbers, elementsOf(before.modelView));
}

TEST_F(pick_calls_test, cropIsThatOfGlu) {
    GLint viewport[4] = {10, 20, 200, 100};
    std::vector<double> const before = projection();
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // GLU counts from below, and from the framebuffer's corner.
    gluPickMatrix(10 + 61.5, 20 + 100 - 33.5, 8, 8, viewport);
    glMultMatrixd(before.data());
    std::vector<double> const expected = projection();
    glLoadMatrixd(before.data());
    glMatrixMode(GL_MODELVIEW);
    std::vector<double> actual;
    pick(61.5, 33.5, 4, [&actual] { actual = projection(); });
    ASSERT_EQ(actual.size(), 16U);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-12) << i;
    }
}

// == The camera of the layer ==

TEST_F(pick_calls_test, zBiasKeepsTheCrop) {
    layer->setCamera(&camera);
    std::vector<double> const crop = elementsOf(cropped(20, 10, 0, 0));
    camera.updateProjectionMatrixZBias();
    std::vector<double> const biasedCrop = elementsOf(cropped(20, 10, 0, 0));
    camera.updateProjectionMatrix();
    std::vector<double> biased;
    std::vector<double> unbiased;
    pick(100, 50, 5, [&] {
        VL_Raster->setZBias(true);
        biased = projection();
        VL_Raster->setZBias(false);
        unbiased = projection();
    });
    EXPECT_EQ(unbiased, crop);
    EXPECT_EQ(biased, biasedCrop);
    EXPECT_NE(biased, unbiased);
}

TEST_F(pick_calls_test, layersCameraLoadsCroppedMatrices) {
    layer->setCamera(&camera);
    camera.zoom = 3;
    std::vector<double> const crop = elementsOf(cropped(20, 10, 0, 0));
    View const before = View::current();
    std::vector<double> loaded;
    View within{};
    pick(100, 50, 5, [&] {
        Camera_RL* const own = VL_Raster->getCamera();
        ASSERT_NE(own, nullptr);
        EXPECT_NE(own, &camera);
        EXPECT_EQ(own->zoom, 3.0F) << "the parameters are those of the camera";
        EXPECT_EQ(own->transform.matrix()->e[14], 5.0F);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        own->updateProjectionMatrix();
        own->updateModelMatrix();
        within = View::current();
    });
    EXPECT_EQ(elementsOf(within.projection), crop);
    EXPECT_EQ(elementsOf(within.modelView), elementsOf(before.modelView));
}

TEST_F(pick_calls_test, layersCameraIsRestored) {
    layer->setCamera(&camera);
    pick(100, 50, 5, draw);
    EXPECT_EQ(layer->getCamera(), &camera);
}

TEST_F(pick_calls_test, cameraThatDrawingSetsStays) {
    layer->setCamera(&camera);
    Camera_RL_GL other;
    pick(100, 50, 5, [&other] { VL_Raster->setCamera(&other); });
    EXPECT_EQ(layer->getCamera(), &other);
}

TEST_F(pick_calls_test, layerWithoutCameraStaysWithout) {
    std::vector<double> const crop = elementsOf(cropped(20, 10, 0, 0));
    std::vector<double> within;
    pick(100, 50, 5, [&within] {
        EXPECT_EQ(VL_Raster->getCamera(), nullptr);
        VL_Raster->setZBias(true);
        within = projection();
    });
    EXPECT_EQ(within, crop);
    EXPECT_EQ(layer->getCamera(), nullptr);
}

// == State ==

TEST_F(pick_calls_test, matricesAreRestoredWhateverDrawingDoes) {
    View const before = View::current();
    pick(100, 50, 5, [] {
        glMatrixMode(GL_MODELVIEW);
        glTranslated(1, 2, 3);
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
    });
    View const after = View::current();
    EXPECT_EQ(elementsOf(after.projection), elementsOf(before.projection));
    EXPECT_EQ(elementsOf(after.modelView), elementsOf(before.modelView));
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
}

TEST_F(pick_calls_test, exceptionIsPassedOnAfterEverythingIsRestored) {
    layer->setCamera(&camera);
    View const before = View::current();
    gl_spy::Recording recording;
    EXPECT_THROW(pick(100, 50, 5, [] { throw std::runtime_error("no more"); }), std::runtime_error);
    EXPECT_EQ(recording.named("glRenderMode").at(1).text(), "glRenderMode(GL_RENDER)");
    EXPECT_EQ(recording.count("glRenderMode"), 2U);
    EXPECT_EQ(elementsOf(View::current().projection), elementsOf(before.projection));
    EXPECT_EQ(layer->getCamera(), &camera);
}

// == Nothing to find ==

TEST_F(pick_calls_test, withoutRenderLayerNothingHappens) {
    layer.reset();
    VL_Raster = nullptr;
    if (areLifetimesChecked()) {
        EXPECT_DEATH(pick(100, 50, 5, [] {}), "pick: there is no render layer");
        return;
    }
    gl_spy::Recording recording;
    EXPECT_TRUE(pick(100, 50, 5, [] { FAIL() << "drawn"; }).empty());
    EXPECT_TRUE(recording.calls().empty());
}

TEST_F(pick_calls_test, numbersWithoutMeaningFindNothing) {
    gl_spy::Recording recording;
    auto const fail = [] { FAIL() << "drawn"; };
    for (double const bad : {NOT_A_NUMBER, INFINITE, -INFINITE}) {
        pick(bad, 50, 5, fail);
        pick(100, bad, 5, fail);
        pick(100, 50, bad, fail);
    }
    pick(100, 50, 0, fail);
    pick(100, 50, -1, fail);
    pick(100, 50, 5, nullptr);
    EXPECT_TRUE(recording.calls().empty());
}

TEST_F(pick_calls_test, emptyViewportHoldsNothing) {
    glViewport(0, 0, 0, 100);
    gl_spy::Recording recording;
    EXPECT_TRUE(pick(0, 50, 5, [] { FAIL() << "drawn"; }).empty());
    EXPECT_EQ(recording.count("glRenderMode"), 0U);
}

TEST_F(pick_calls_test, whereGlSelectsAlreadyNothingIsTouched) {
    for (GLint const mode : {GL_SELECT, GL_FEEDBACK}) {
        gl_spy::Script busy;
        busy.integer(GL_RENDER_MODE, {mode});
        gl_spy::Recording recording;
        EXPECT_TRUE(pick(100, 50, 5, [] { FAIL() << "drawn"; }).empty());
        EXPECT_EQ(namesOf(recording), (Texts{"glGetIntegerv"}));
    }
}

TEST_F(pick_calls_test, driverThatDoesNotSelectIsNotDrawnWith) {
    layer->setCamera(&camera);
    gl_spy::Script refusing;
    refusing.integer(GL_RENDER_MODE, {GL_RENDER});
    gl_spy::Recording recording;
    EXPECT_TRUE(pick(100, 50, 5, [] { FAIL() << "drawn on the screen"; }).empty());
    EXPECT_EQ(recording.count("glRenderMode"), 1U);
    EXPECT_EQ(recording.count("glLoadMatrixd"), 0U);
    EXPECT_EQ(layer->getCamera(), &camera);
}
