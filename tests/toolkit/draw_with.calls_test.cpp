#include "toolkit/draw_with.h"

#include "Core_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "glsl_shader/SSScattering_shader.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/build_facts.h"
#include "tests/support/recorded_calls.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// An effect that notes what is asked of it, and leaves state behind as effects do.
class NotingEffect : public Mesh_RL_Shader {
public:
    explicit NotingEffect(Texts& notes, std::string const& name = "") : notes(notes), name(name) {}

    void create() override {
        notes.push_back(name + "create");
        created = isCreatable;
    }
    void init() override { notes.push_back(name + "init"); }
    void preprocess() override {
        notes.push_back(name + "preprocess");
        glEnable(GL_LIGHT0);
        glColor4f(1, 1, 1, 1);
    }
    void postprocess() override { notes.push_back(name + "postprocess"); }
    void cleanup() override { notes.push_back(name + "cleanup"); }

    bool isCreatable = true;

private:
    Texts& notes;
    std::string name;
};

Texts const PASS{"init", "preprocess", "draw", "postprocess", "cleanup"};

class draw_with_calls_test : public testing::Test {
protected:
    draw_with_calls_test() { driver.integer(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, {48}); }
    ~draw_with_calls_test() override { VL_Raster = nullptr; }

    void draw() { notes.emplace_back("draw"); }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Texts notes;
    NotingEffect effect{notes};
};

}  // namespace

// == The pass ==

TEST_F(draw_with_calls_test, thePassIsThatOfTheRenderers) {
    drawWith(effect, [this] { draw(); });
    EXPECT_EQ(notes, joined({{"create"}, PASS}));
    notes.clear();
    drawWith(effect, [this] { draw(); });
    EXPECT_EQ(notes, PASS);

    // The same from a renderer, which notes no drawing.
    notes.clear();
    Mesh mesh;
    Mesh_RL_GL renderer(&mesh, false);
    renderer.shader = &effect;
    MeshShading shading;
    shading.flags = MeshShadingFlags_ns::GPU_SHADER;
    renderer.render(shading);
    EXPECT_THAT(notes, ElementsAre("init", "preprocess", "postprocess", "cleanup"));
}

TEST_F(draw_with_calls_test, theCallsAreThoseOfTheHeader) {
    driver.integer(GL_TEXTURE_BINDING_2D, {34})
        .integer(GL_CURRENT_PROGRAM, {7})
        .integer(GL_ACTIVE_TEXTURE, {GL_TEXTURE5});
    driver.integer(GL_CURRENT_COLOR, {0, 1, 0, 1});
    gl_spy::Recording recording;
    drawWith(effect, [] { glVertex2f(1, 2); });
    Texts saved{"glGetString(GL_VERSION)", "glGetIntegerv(GL_CURRENT_PROGRAM, pointer)",
                "glGetIntegerv(GL_ACTIVE_TEXTURE, pointer)",
                "glGetIntegerv(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, pointer)"};
    Texts restored;
    for (int unit = 7; unit >= 0; --unit) {
        std::string const active = "glActiveTexture(GL_TEXTURE" + std::to_string(unit) + ")";
        saved.insert(saved.end(), {active, "glGetIntegerv(GL_TEXTURE_BINDING_2D, pointer)"});
        restored.insert(restored.end(), {active, "glBindTexture(GL_TEXTURE_2D, 34)"});
    }
    saved.push_back("glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, pointer)");
    restored.insert(restored.end(), {"glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, 0)",
                                     "glActiveTexture(GL_TEXTURE5)", "glUseProgram(7)"});
    for (int light = 0; light < 8; ++light) {
        saved.push_back("glIsEnabled(GL_LIGHT" + std::to_string(light) + ")");
        restored.push_back("glDisable(GL_LIGHT" + std::to_string(light) + ")");
    }
    saved.insert(saved.end(), {"glGetFloatv(GL_CURRENT_COLOR, pointer)", "glUseProgram(0)"});
    restored.push_back("glColor4fv({0, 1, 0, 1})");
    Texts const pass{"glEnable(GL_LIGHT0)", "glColor4f(1, 1, 1, 1)", "glVertex2f(1, 2)"};
    EXPECT_THAT(recording.texts(), testing::ElementsAreArray(joined({saved, pass, restored})));
}

TEST_F(draw_with_calls_test, aDriverWithFewUnitsIsAskedForNoOthers) {
    driver.integer(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, {3});
    gl_spy::Recording recording;
    drawWith(effect, [this] { draw(); });
    EXPECT_THAT(recording.texts(), Contains("glActiveTexture(GL_TEXTURE2)").Times(2));
    EXPECT_EQ(recording.count("glBindTexture"), 3U);
}

TEST_F(draw_with_calls_test, everyPassSendsAllValuesToAProgramThatIsInUse) {
    SSScattering_shader scattering;
    drawWith(scattering, [] {});
    gl_spy::Recording recording;
    drawWith(scattering, [] {});
    bool isInUse = false;
    std::vector<std::string> names;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glUseProgram") {
            isInUse = call.numbers.at(0) != 0;
        } else if (call.name == "glGetUniformLocation") {
            names.push_back(call.strings.at(0));
        } else if (call.name.rfind("glUniform", 0) == 0) {
            EXPECT_TRUE(isInUse) << call.text();
        }
    }
    for (char const* const name : {"FrameWidth", "MaterialThickness", "BaseColor", "RimScalar", "nLights"}) {
        EXPECT_THAT(names, Contains(name));
    }
}

// == Exceptions, nesting, drivers ==

TEST_F(draw_with_calls_test, anExceptionOfTheDrawingEndsThePass) {
    glUseProgram(0);
    EXPECT_THROW(drawWith(effect,
                          [this] {
                              draw();
                              throw std::runtime_error("drawing");
                          }),
                 std::runtime_error);
    EXPECT_EQ(notes, joined({{"create"}, PASS}));
    // The next pass is a whole one.
    notes.clear();
    drawWith(effect, [this] { draw(); });
    EXPECT_EQ(notes, PASS);
}

TEST_F(draw_with_calls_test, scopesOfDifferentEffectsNest) {
    NotingEffect inner(notes, "inner ");
    drawWith(effect, [&] {
        draw();
        drawWith(inner, [&] { draw(); });
        draw();
    });
    EXPECT_THAT(notes, ElementsAre("create", "init", "preprocess", "draw", "inner create", "inner init",
                                   "inner preprocess", "draw", "inner postprocess", "inner cleanup", "draw",
                                   "postprocess", "cleanup"));
}

TEST_F(draw_with_calls_test, aScopeInsideOneOfTheSameEffectDoesNothing) {
    drawWith(effect, [&] {
        gl_spy::Recording const recording;
        drawWith(effect, [&] { draw(); });
        EXPECT_THAT(recording.texts(), IsEmpty());
    });
    EXPECT_EQ(notes, joined({{"create"}, PASS}));
    // Only as long as the outer one.
    notes.clear();
    drawWith(effect, [&] { draw(); });
    EXPECT_EQ(notes, PASS);
}

TEST_F(draw_with_calls_test, anEffectThatCannotBeCreatedHasItsPassAllTheSame) {
    effect.isCreatable = false;
    for (int pass = 0; pass < 2; ++pass) {
        notes.clear();
        drawWith(effect, [this] { draw(); });
        EXPECT_EQ(notes, joined({{"create"}, PASS}));
    }
}

TEST_F(draw_with_calls_test, withoutShadersOnlyTheDrawingIsDone) {
    driver.string(GL_VERSION, "1.5.0");
    gl_spy::Recording const recording;
    drawWith(effect, [this] { draw(); });
    EXPECT_THAT(notes, ElementsAre("draw"));
    EXPECT_THAT(recording.texts(), ElementsAre("glGetString(GL_VERSION)"));
}

TEST_F(draw_with_calls_test, withoutARenderLayerOnlyTheDrawingIsDone) {
    VL_Raster = nullptr;
    if (areLifetimesChecked()) {
        EXPECT_DEATH(drawWith(effect, [this] { draw(); }), "drawWith: there is no render layer");
        return;
    }
    gl_spy::Recording const recording;
    drawWith(effect, [this] { draw(); });
    EXPECT_THAT(notes, ElementsAre("draw"));
    EXPECT_THAT(recording.texts(), IsEmpty());
}

}  // namespace vellum::toolkit
