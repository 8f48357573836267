#include "toolkit/EffectLights.h"

#include "Camera_RL_GL.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "tests/gl_spy/GlTest.h"
#include "tests/support/attribute_state.h"
#include "tests/toolkit/effect_scene.h"
#include "toolkit/Layer.h"
#include "toolkit/draw_with.h"

#include <gmock/gmock.h>

#include <memory>

namespace vellum::toolkit {
namespace {

using namespace effect_scene;

class EffectLights_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<Layer>();
    }
    void TearDown() override {
        layer.reset();
        GlTest::TearDown();
    }

    static int brightness(Pixel const& pixel) { return pixel[0] + pixel[1] + pixel[2]; }

    std::unique_ptr<Layer> layer;
};

}  // namespace

TEST_F(EffectLights_gl_test, waxIsNeitherBurntNorBlackWhateverItsSize) {
    for (double const scale : {0.05, 1.0, 300.0}) {
        SCOPED_TRACE(scale);
        Ball ball(scale);
        View const view = lookAtOrigin(scale);
        SSScattering_shader wax;
        wax.setBaseColor(0.8F, 0.55F, 0.42F, 1);
        wax.setExtinctionCoefficient(0.8F, 0.2F, 0.12F);
        wax.setMaterialThickness(0.25F);
        wax.enable(false);
        setEffectLights(wax, EffectLights(), view, {{0, 0, 0}, scale});
        setEffectMaterial(1, 32);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawWith(wax, [&] { ball.draw(); });
        std::string const file = savePicture("wax_" + std::to_string(static_cast<int>(scale * 100)));
        // The light comes from the upper left.
        Pixel const lit = readPixel(100, 90);
        Pixel const dark = readPixel(165, 180);
        EXPECT_GT(brightness(lit), brightness(dark) + 60) << file;
        EXPECT_GT(lit[0], 90) << file;
        EXPECT_LT(lit[2], 240) << file;
        EXPECT_GT(brightness(dark), 30) << file;
        EXPECT_GT(lit[0], lit[2] + 20) << "the color of the wax, " << file;
    }
}

TEST_F(EffectLights_gl_test, lightsOfGlassStandOnTheScreenWhereverTheCameraStands) {
    // As the orthographic cameras turn the screen in the projection.
    for (unsigned int kind = 0; kind <= 6; ++kind) {
        SCOPED_TRACE(kind);
        Ball ball;
        lookAtOrigin();
        if (kind != 0) {
            Camera_RL_GL camera;
            camera.viewKind = kind;
            camera.updateProjectionMatrix();
            camera.updateModelMatrix();
            // As large as in the perspective view.
            double const factor = 170 / (2 * View::current().pixelsPerUnit({0, 0, 0}));
            glMatrixMode(GL_PROJECTION);
            glScaled(factor, factor, factor);
            glMatrixMode(GL_MODELVIEW);
        }
        Glass_shader glass;
        glass.setBaseColor(1, 1, 1, 1);
        EffectLights lights;
        lights.second = {{0, 0, -20}, {0, 0, 0, 1}};
        setEffectLights(glass, lights, View::current());
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        drawWith(glass, [&] { ball.draw(); });
        std::string const file = savePicture("glass_light_" + std::to_string(kind));
        EXPECT_GT(brightness(readPixel(110, 100)), brightness(readPixel(150, 160)) + 40) << file;
    }
}

TEST_F(EffectLights_gl_test, lightsAndMaterialAreAllThatChanges) {
    View const view = lookAtOrigin();
    AttributeState const before;
    setEffectLights(Glass_shader(), EffectLights(), view);
    setEffectMaterial(0.5F, 20);
    AttributeState const after;
    for (std::string const& name : before.namesThatDiffer(after)) {
        EXPECT_TRUE(name.find("GL_LIGHT0 ") == 0 || name.find("GL_LIGHT1 ") == 0 ||
                    name.find("GL_FRONT") == 0 || name.find("GL_BACK") == 0)
            << name;
    }
}

}  // namespace vellum::toolkit
