#include "toolkit/Lit.h"

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"
#include "toolkit/Lights.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace vellum;
using namespace vellum::toolkit;

namespace {

Texts const ON{"glEnable(GL_NORMALIZE)", "glEnable(GL_COLOR_MATERIAL)", "glEnable(GL_LIGHT0)",
               "glEnable(GL_LIGHT1)", "glEnable(GL_LIGHTING)"};
Texts const OFF{"glDisable(GL_LIGHTING)", "glDisable(GL_LIGHT1)", "glDisable(GL_LIGHT0)",
                "glDisable(GL_COLOR_MATERIAL)"};

Texts finish(std::string const& specular, std::string const& ambient) {
    return {"glLightModelfv(GL_LIGHT_MODEL_AMBIENT, {" + ambient + "})",
            "glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, {" + specular + "})",
            "glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 42)",
            "glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE)"};
}

/// A camera that looks along -z.
View view(bool isPerspective) {
    View view{};
    view.modelView = Matrix4<double>::identity();
    view.projection = Matrix4<double>::identity();
    view.projection.e[10] = -1;
    if (isPerspective) {
        view.projection.e[11] = -1;
        view.projection.e[14] = -1;
        view.projection.e[15] = 0;
    }
    return view;
}

class Lit_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
};

// == Lit ==

TEST_F(Lit_calls_test, lightsThatAreSetAreSwitchedOnAndOff) {
    gl_spy::Recording const recording;
    { Lit const lit = Lit::asSet(); }
    EXPECT_EQ(recording.texts(), joined({ON, OFF}));
}

TEST_F(Lit_calls_test, finishSetsAmbientLightAndHighlights) {
    struct Row {
        Lit::Finish finish;
        char const* specular;
        char const* ambient;
    };
    for (Row const& row : {Row{Lit::Finish::GLOSSY, "0.17, 0.17, 0.17, 1", "0.23, 0.23, 0.25300002, 1"},
                           Row{Lit::Finish::DULL, "0, 0, 0, 1", "0.23, 0.23, 0.25300002, 1"},
                           Row{Lit::Finish::BRIGHT, "0, 0, 0, 1", "0.62, 0.62, 0.68200004, 1"}}) {
        gl_spy::Recording const recording;
        { Lit const lit(row.finish); }
        EXPECT_EQ(recording.texts(), joined({ON, finish(row.specular, row.ambient), OFF}));
    }
}

TEST_F(Lit_calls_test, viewPlacesHeadLightsUnderItsOwnMatrix) {
    gl_spy::Recording const recording;
    Lit const lit(view(true));
    Texts const texts = recording.texts();
    Texts const begin = joined({ON, finish("0.17, 0.17, 0.17, 1", "0.23, 0.23, 0.25300002, 1")});
    ASSERT_EQ(texts.size(), begin.size() + 3 + 7 + 7 + 1 + 1);
    EXPECT_EQ(Texts(texts.begin(), texts.begin() + 9), begin);
    EXPECT_EQ(texts[9], "glMatrixMode(GL_MODELVIEW)");
    EXPECT_EQ(texts[10], "glPushMatrix()");
    EXPECT_EQ(texts[11], "glLoadMatrixd({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})");
    EXPECT_EQ(texts[12], "glLightfv(GL_LIGHT0, GL_POSITION, {-0.5, 0.72, 0.62, 0})");
    EXPECT_EQ(texts[15], "glLightfv(GL_LIGHT0, GL_SPECULAR, {1, 1, 1, 1})");
    EXPECT_EQ(texts.back(), "glPopMatrix()");
}

TEST_F(Lit_calls_test, orthographicViewHasNoHighlights) {
    gl_spy::Recording const recording;
    Lit const lit(view(false), Lit::Finish::DULL);
    EXPECT_EQ(recording.texts()[15], "glLightfv(GL_LIGHT0, GL_SPECULAR, {0, 0, 0, 1})");
}

TEST_F(Lit_calls_test, layerOfTheBeginningIsSwitchedOff) {
    struct Counting : Core_RL_GL {
        int ends = 0;
        void disableLighting() override { ++ends; }
    };
    Core_RL* const former = VL_Raster;
    Counting counting;
    VL_Raster = &counting;
    {
        Lit const lit = Lit::asSet();
        VL_Raster = former;
    }
    EXPECT_EQ(counting.ends, 1);
}

// == Lights ==

TEST_F(Lit_calls_test, lightIsSetWithAllItsParameters) {
    gl_spy::Recording const recording;
    LightSource{{1, 2, 3}, false, {0.1F, 0, 0, 1}, {0.2F, 0, 0, 1}, {0.3F, 0, 0, 1}}.set(1);
    EXPECT_EQ(recording.texts(), (Texts{"glLightfv(GL_LIGHT1, GL_POSITION, {1, 2, 3, 1})",
                                        "glLightfv(GL_LIGHT1, GL_AMBIENT, {0.1, 0, 0, 1})",
                                        "glLightfv(GL_LIGHT1, GL_DIFFUSE, {0.2, 0, 0, 1})",
                                        "glLightfv(GL_LIGHT1, GL_SPECULAR, {0.3, 0, 0, 1})",
                                        "glLightf(GL_LIGHT1, GL_CONSTANT_ATTENUATION, 1)",
                                        "glLightf(GL_LIGHT1, GL_LINEAR_ATTENUATION, 0)",
                                        "glLightf(GL_LIGHT1, GL_QUADRATIC_ATTENUATION, 0)"}));
}

TEST_F(Lit_calls_test, lightFarAwayIsADirection) {
    gl_spy::Recording const recording;
    LightSource{{1, 2, 3}, true, {}, {}, {}}.set(0);
    EXPECT_EQ(recording.texts().front(), "glLightfv(GL_LIGHT0, GL_POSITION, {1, 2, 3, 0})");
}

TEST_F(Lit_calls_test, headLightsStandWithTheViewerAndLightBothSides) {
    ScreenAxes const fromTheRight{{0, 0, -1}, {0, 1, 0}, {1, 0, 0}};
    gl_spy::Recording const recording;
    setHeadLights(fromTheRight, 0.5F);
    Texts const texts = recording.texts();
    ASSERT_EQ(texts.size(), 15U);
    EXPECT_EQ(texts[0], "glLightfv(GL_LIGHT0, GL_POSITION, {0.62, 0.72, 0.5, 0})");
    EXPECT_EQ(texts[3], "glLightfv(GL_LIGHT0, GL_SPECULAR, {0.5, 0.5, 0.5, 1})");
    EXPECT_EQ(texts[7], "glLightfv(GL_LIGHT1, GL_POSITION, {0.42, -0.05, -0.85, 0})");
    EXPECT_EQ(texts[10], "glLightfv(GL_LIGHT1, GL_SPECULAR, {0, 0, 0, 1})");
    EXPECT_EQ(texts[14], "glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1)");
}

}  // namespace
