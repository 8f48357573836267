#include "toolkit/EffectLights.h"

#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>

#include <cmath>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {
namespace {

using testing::ElementsAre;

Matrix4<double> const PERSPECTIVE{{1.5, 0, 0, 0, 0, 2, 0, 0, 0, 0, -1.02, -1, 0, 0, -2.02, 0}};

/// Looks along -z from (0, 0, distance).
View viewFrom(double distance) {
    Matrix4<double> modelView = Matrix4<double>::identity();
    modelView.e[14] = -distance;
    return {PERSPECTIVE, modelView, {0, 0, 100, 100}};
}

class EffectLights_calls_test : public testing::Test {
protected:
    /// The numbers of the glLightfv calls for a light and a parameter.
    std::vector<double> sent(unsigned int light, unsigned int parameter) const {
        for (gl_spy::Call const& call : recording.named("glLightfv")) {
            if (call.enums.at(0) == light && call.enums.at(1) == parameter) {
                return call.numbers;
            }
        }
        return {};
    }

    void expectPlace(unsigned int light, Vector3<double> const& place) const {
        std::vector<double> const position = sent(light, GL_POSITION);
        ASSERT_EQ(position.size(), 4U);
        EXPECT_NEAR(position[0], place.x, 1e-4);
        EXPECT_NEAR(position[1], place.y, 1e-4);
        EXPECT_NEAR(position[2], place.z, 1e-4 + std::abs(place.z) * 1e-6);
        EXPECT_EQ(position[3], 1);
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    gl_spy::Recording recording;
};

}  // namespace

TEST_F(EffectLights_calls_test, theCallsAreThoseOfTheHeader) {
    setEffectLights(Mesh_RL_Shader(), EffectLights(), viewFrom(10));
    std::vector<std::string> names;
    for (gl_spy::Call const& call : recording.calls()) {
        names.push_back(call.name);
    }
    EXPECT_THAT(names, ElementsAre("glMatrixMode", "glPushMatrix", "glLoadIdentity", "glLightfv", "glLightfv",
                                   "glLightfv", "glLightfv", "glLightf", "glLightf", "glLightf", "glLightfv",
                                   "glLightfv", "glLightfv", "glLightfv", "glLightf", "glLightf", "glLightf",
                                   "glPopMatrix"));
    EXPECT_EQ(recording.calls().front().text(), "glMatrixMode(GL_MODELVIEW)");
}

TEST_F(EffectLights_calls_test, lightsStandAboutTheSubjectInItsRadii) {
    EffectLights const lights{1, {{-2, 3, 2.5F}}, {{3, 0.6F, -1.5F}}};
    setEffectLights(Mesh_RL_Shader(), lights, viewFrom(10), {{1, 2, 3}, 4});
    expectPlace(GL_LIGHT0, {1 - 8, 2 + 12, 3 - 10 + 10});
    expectPlace(GL_LIGHT1, {1 + 12, 2 + 2.4, 3 - 10 - 6});
}

TEST_F(EffectLights_calls_test, theRadiusIsMeasuredInTheUnitsOfTheSubject) {
    View view = viewFrom(10);
    for (int i : {0, 5, 10}) {
        view.modelView.e[i] = 2;
    }
    setEffectLights(Mesh_RL_Shader(), {1, {{1, 0, 0}}, {{0, 1, 0}}}, view, {{1, 0, 0}, 4});
    expectPlace(GL_LIGHT0, {2 + 8, 0, -10});
    expectPlace(GL_LIGHT1, {2, 8, -10});
}

TEST_F(EffectLights_calls_test, theScreenTurnsTheLightsWhereTheProjectionTurnsTheScreen) {
    // A view from above whose projection does the turning: the screen's up is -z, and its viewer stands at
    // +y.
    View view{
        {{1, 0, 0, 0, 0, 0, -1, 0, 0, -1, 0, 0, 0, 0, 0, 1}}, Matrix4<double>::identity(), {0, 0, 9, 9}};
    setEffectLights(Mesh_RL_Shader(), {1, {{0, 1, 0}}, {{0, 0, 1}}}, view);
    expectPlace(GL_LIGHT0, {0, 0, -1});
    expectPlace(GL_LIGHT1, {0, 1, 0});
    // One whose model-view matrix does: the lights stay on the screen.
    recording.clear();
    view = viewFrom(10);
    view.modelView = {{0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -10, 1}};
    setEffectLights(Mesh_RL_Shader(), {1, {{0, 1, 0}}, {{0, 0, 1}}}, view);
    expectPlace(GL_LIGHT0, {0, 1, -10});
    expectPlace(GL_LIGHT1, {0, 0, -9});
}

TEST_F(EffectLights_calls_test, colorsAreFullAndOpaque) {
    EffectLights lights;
    lights.first.color = {0.5F, 0.25F, 2, 0};
    setEffectLights(Glass_shader(), lights, viewFrom(10));
    for (unsigned int const parameter : {GL_AMBIENT, GL_DIFFUSE, GL_SPECULAR}) {
        EXPECT_THAT(sent(GL_LIGHT0, parameter), ElementsAre(0.5, 0.25, 2, 1));
        EXPECT_THAT(sent(GL_LIGHT1, parameter), ElementsAre(1, 1, 1, 1));
    }
}

TEST_F(EffectLights_calls_test, scatteringHasStrongLightsFarAwayInClipSpace) {
    EffectLights lights;
    lights.first = {{0, 0, 1}, {0.5F, 0.25F, 0.125F, 1}};
    for (double const radius : {0.01, 1.0, 1000.0}) {
        SCOPED_TRACE(radius);
        recording.clear();
        SSScattering_shader const scattering;
        setEffectLights(scattering, lights, viewFrom(10), {{0, 0, 0}, radius});
        EXPECT_THAT(sent(GL_LIGHT0, GL_DIFFUSE), ElementsAre(5, 2.5, 1.25, 1));
        EXPECT_THAT(sent(GL_LIGHT0, GL_SPECULAR), ElementsAre(0.5, 0.25, 0.125, 1));
        // The middle of the subject is there in clip space.
        double const middle = -1.02 * -10 - 2.02;
        double const distance = 12 * std::max(radius, 250.0);
        expectPlace(GL_LIGHT0, {0, 0, middle + distance});
        // Nearer than this the light would not have faded to a tenth everywhere.
        EXPECT_GT(distance - 4 * radius, 100);
    }
}

TEST_F(EffectLights_calls_test, theMaterialIsSentForBothSides) {
    setEffectMaterial(0.25F, 24);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, {0.22, 0.23, 0.26, 1})",
                            "glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, {1, 1, 1, 1})",
                            "glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, {0.25, 0.25, 0.25, 1})",
                            "glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 24)"));
}

}  // namespace vellum::toolkit
