#include "Core_RL_GL.h"

#include "foundation/raster/Camera_RL.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "internal/gl_api.h"

#include <sys/time.h>
#include <unistd.h>

namespace vellum {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;
using Triangle = Tuple3<unsigned int>;

constexpr unsigned int NO_TEXTURE = 0xFFFFFFFFU;

/// The render layer with the base's protected state in view.
class ProbedLayer : public Core_RL_GL {
public:
    using Core_RL::colorStack;
    using Core_RL::textureQueueLock;
    using Core_RL::textureUnloadQueue;
};

/// A driver of OpenGL 2.1 that needs no context, a render layer, and the calls it makes.
class Core_RL_GL_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
    ProbedLayer layer;
    gl_spy::Recording recording;
};

// == Lifecycle ==

TEST_F(Core_RL_GL_calls_test, theConstructorMakesNoGlCall) {
    auto* const other = new Core_RL_GL;
    EXPECT_THAT(recording.texts(), IsEmpty());
    delete other;
}

TEST_F(Core_RL_GL_calls_test, theDestructorDeletesNoGlObject) {
    auto* const other = new Core_RL_GL;
    unsigned int queued = other->createTexture();
    other->queueUnloadTextureColor(queued);
    other->isExtensionSupported("");
    recording.clear();
    std::size_t const objects = driver.liveObjects();

    delete other;
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_EQ(driver.liveObjects(), objects);
}

TEST_F(Core_RL_GL_calls_test, theCameraIsKeptWithoutAGlCall) {
    class StillCamera : public Camera_RL {
    public:
        void updateModelMatrix() override {}
        void updateProjectionMatrix() override {}
        void updateProjectionMatrixZBias() override {}
    } camera;

    EXPECT_EQ(layer.getCamera(), nullptr) << "until one is set";
    layer.setCamera(&camera);
    EXPECT_EQ(layer.getCamera(), &camera);
    layer.setCamera(nullptr);
    EXPECT_EQ(layer.getCamera(), nullptr);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

// == Extensions ==

// The list is private, and its order does not show in any answer. An explicit instantiation may name private
// members, so this one hands out a pointer to it.
template <std::vector<std::string> Core_RL_GL::*list>
struct OpenList {
    friend std::vector<std::string> const& extensionList(Core_RL_GL const& layer) { return layer.*list; }
};
std::vector<std::string> const& extensionList(Core_RL_GL const& layer);
template struct OpenList<&Core_RL_GL::extensions>;

TEST_F(Core_RL_GL_calls_test, theExtensionListIsEmptyUntilTheFirstQuery) {
    EXPECT_THAT(extensionList(layer), IsEmpty());
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Core_RL_GL_calls_test, theExtensionListHoldsEveryNameSortedByByte) {
    driver.string(GL_EXTENSIONS, "GL_b GL_ARB_b GL_a GL_ARB_a_long GL_ARB_a GL_B");
    layer.fillOpenGLExtensions();
    EXPECT_THAT(extensionList(layer),
                ElementsAre("GL_ARB_a", "GL_ARB_a_long", "GL_ARB_b", "GL_B", "GL_a", "GL_b"));
    EXPECT_THAT(recording.texts(), ElementsAre("glGetString(GL_EXTENSIONS)"));
}

TEST_F(Core_RL_GL_calls_test, aListedExtensionIsSupportedAndAPrefixOfItIsNot) {
    driver.string(GL_EXTENSIONS, "GL_ARB_multitexture GL_ARB_vertex_buffer_object GL_EXT_fog_coord");
    EXPECT_TRUE(layer.isExtensionSupported("GL_ARB_vertex_buffer_object"));
    EXPECT_TRUE(layer.isExtensionSupported("GL_ARB_multitexture"));
    EXPECT_TRUE(layer.isExtensionSupported("GL_EXT_fog_coord"));
    EXPECT_FALSE(layer.isExtensionSupported("GL_ARB_vertex_buffer"));
    EXPECT_FALSE(layer.isExtensionSupported("GL_ARB_vertex_buffer_object2"));
    EXPECT_FALSE(layer.isExtensionSupported("gl_arb_vertex_buffer_object"));
    EXPECT_FALSE(layer.isExtensionSupported("GL_ARB_multitexture GL_ARB_vertex_buffer_object"));
    EXPECT_FALSE(layer.isExtensionSupported(""));
    EXPECT_FALSE(layer.isExtensionSupported(nullptr));
}

TEST_F(Core_RL_GL_calls_test, theExtensionStringIsReadOnceForAllQueries) {
    driver.string(GL_EXTENSIONS, "GL_first");
    EXPECT_TRUE(layer.isExtensionSupported("GL_first"));
    driver.string(GL_EXTENSIONS, "GL_second");
    EXPECT_TRUE(layer.isExtensionSupported("GL_first"));
    EXPECT_FALSE(layer.isExtensionSupported("GL_second"));
    layer.fillOpenGLExtensions();
    EXPECT_THAT(recording.texts(), ElementsAre("glGetString(GL_EXTENSIONS)"));

    Core_RL_GL other;
    EXPECT_TRUE(other.isExtensionSupported("GL_second")) << "a new instance reads anew";
}

TEST_F(Core_RL_GL_calls_test, aTrailingBlankLeavesAnEmptyEntryThatSortsFirst) {
    driver.string(GL_EXTENSIONS, "GL_b GL_a ");
    EXPECT_TRUE(layer.isExtensionSupported("")) << "matched by the empty name alone";
    EXPECT_FALSE(layer.isExtensionSupported(" "));
    EXPECT_FALSE(layer.isExtensionSupported("G"));
    EXPECT_TRUE(layer.isExtensionSupported("GL_a"));
    EXPECT_TRUE(layer.isExtensionSupported("GL_b"));
    EXPECT_THAT(extensionList(layer), ElementsAre("", "GL_a", "GL_b"));
}

TEST_F(Core_RL_GL_calls_test, blanksBetweenNamesLeaveEmptyEntriesToo) {
    driver.string(GL_EXTENSIONS, " GL_b  GL_a");
    layer.fillOpenGLExtensions();
    EXPECT_THAT(extensionList(layer), ElementsAre("", "", "GL_a", "GL_b"));
}

TEST_F(Core_RL_GL_calls_test, anEmptyExtensionStringIsReadAgainAtEveryQuery) {
    driver.string(GL_EXTENSIONS, "");
    EXPECT_FALSE(layer.isExtensionSupported("GL_a"));
    EXPECT_FALSE(layer.isExtensionSupported(""));
    EXPECT_FALSE(layer.isExtensionSupported("GL_a"));
    EXPECT_EQ(recording.count("glGetString"), 3U);
    EXPECT_THAT(extensionList(layer), IsEmpty());

    driver.string(GL_EXTENSIONS, "GL_a");
    EXPECT_TRUE(layer.isExtensionSupported("GL_a")) << "once there is a list, it is taken";
    EXPECT_TRUE(layer.isExtensionSupported("GL_a"));
    EXPECT_EQ(recording.count("glGetString"), 4U);
}

TEST_F(Core_RL_GL_calls_test, aMissingExtensionStringCountsAsAnEmptyOne) {
    driver.nullString(GL_EXTENSIONS);
    EXPECT_FALSE(layer.isExtensionSupported("GL_a"));
    EXPECT_FALSE(layer.isExtensionSupported(""));
    EXPECT_EQ(recording.count("glGetString"), 2U);
}

// == Version ==

struct Version {
    std::string name;
    std::string text;
    bool supportsShaders;
};

void PrintTo(Version const& version, std::ostream* out) {
    *out << '"' << version.text << '"';
}

class Core_RL_GL_version_calls_test : public Core_RL_GL_calls_test,
                                      public testing::WithParamInterface<Version> {};

INSTANTIATE_TEST_SUITE_P(
    , Core_RL_GL_version_calls_test,
    testing::Values(Version{"v1_5", "1.5", false}, Version{"v1_5_withVendor", "1.5.0 NVIDIA 96.43", false},
                    Version{"v2_0", "2.0", true}, Version{"v2_1", "2.1 Mesa 7.11.2", true},
                    Version{"v4_6", "4.6 (Compatibility Profile)", true}, Version{"v10_0", "10.0.0", true},
                    Version{"v1_10", "1.10", false}, Version{"v0_9", "0.9", false},
                    Version{"empty", "", false}, Version{"pointAlone", ".", false},
                    Version{"words", "OpenGL ES 2.0", false}, Version{"newWithoutPoint", "3", true},
                    Version{"oldWithoutPoint", "1", false}),
    [](testing::TestParamInfo<Version> const& row) { return row.param.name; });

TEST_P(Core_RL_GL_version_calls_test, theNumberBeforeTheFirstPointDecidesOnShaders) {
    driver.string(GL_VERSION, GetParam().text);
    EXPECT_EQ(layer.checkShaderSupport(), GetParam().supportsShaders);
    EXPECT_THAT(recording.texts(), ElementsAre("glGetString(GL_VERSION)"));
}

TEST_F(Core_RL_GL_calls_test, withoutAVersionThereAreNoShaders) {
    driver.nullString(GL_VERSION);
    EXPECT_FALSE(layer.checkShaderSupport());
}

TEST_F(Core_RL_GL_calls_test, scriptedDriversAnswerForShaders) {
    auto const supported = [](gl_spy::Script const& /*alive meanwhile*/) {
        return Core_RL_GL().checkShaderSupport();
    };
    EXPECT_FALSE(supported(gl_spy::drivers::gl15()));
    EXPECT_TRUE(supported(gl_spy::drivers::gl21()));
    EXPECT_TRUE(supported(gl_spy::drivers::gl10_0()));
}

// == Operations that are a few calls each ==

/// An operation and the calls it makes, in order.
struct Operation {
    std::string name;
    std::function<void(Core_RL_GL&)> run;
    Texts calls;
};

void PrintTo(Operation const& operation, std::ostream* out) {
    *out << operation.name;
}

std::string nameOf(testing::TestParamInfo<Operation> const& row) {
    return row.param.name;
}

class Core_RL_GL_operation_calls_test : public Core_RL_GL_calls_test,
                                        public testing::WithParamInterface<Operation> {};

TEST_P(Core_RL_GL_operation_calls_test, makesExactlyTheseCalls) {
    GetParam().run(layer);
    EXPECT_EQ(recording.texts(), GetParam().calls);
}

template <class Argument>
Operation with(std::string const& name, void (Core_RL_GL::*setter)(Argument const&), Argument const& value,
               Texts const& calls) {
    return {name, [setter, value](Core_RL_GL& layer) { (layer.*setter)(value); }, calls};
}

Operation plain(std::string const& name, void (Core_RL_GL::*operation)(), Texts const& calls) {
    return {name, [operation](Core_RL_GL& layer) { (layer.*operation)(); }, calls};
}

using L = Core_RL_GL;

INSTANTIATE_TEST_SUITE_P(
    Switches, Core_RL_GL_operation_calls_test,
    testing::Values(plain("enableLighting", &L::enableLighting, {"glEnable(GL_LIGHTING)"}),
                    plain("disableLighting", &L::disableLighting, {"glDisable(GL_LIGHTING)"}),
                    plain("enableLight_0", &L::enableLight_0, {"glEnable(GL_LIGHT0)"}),
                    plain("disableLight_0", &L::disableLight_0, {"glDisable(GL_LIGHT0)"}),
                    plain("enableLight_1", &L::enableLight_1, {"glEnable(GL_LIGHT1)"}),
                    plain("disableLight_1", &L::disableLight_1, {"glDisable(GL_LIGHT1)"}),
                    plain("enableColorMaterial", &L::enableColorMaterial, {"glEnable(GL_COLOR_MATERIAL)"}),
                    plain("disableColorMaterial", &L::disableColorMaterial,
                          {"glDisable(GL_COLOR_MATERIAL)"})),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Filling, Core_RL_GL_operation_calls_test,
    testing::Values(with("front0", &L::setFillingFront, FillingMode(0), {"glPolygonMode(GL_FRONT, GL_FILL)"}),
                    with("front1", &L::setFillingFront, FillingMode(1), {"glPolygonMode(GL_FRONT, GL_LINE)"}),
                    with("front2", &L::setFillingFront, FillingMode(2), {"glPolygonMode(GL_FRONT, GL_LINE)"}),
                    with("frontAllOnes", &L::setFillingFront, FillingMode(0xFFFFFFFFU),
                         {"glPolygonMode(GL_FRONT, GL_LINE)"}),
                    with("back0", &L::setFillingBack, FillingMode(0), {"glPolygonMode(GL_BACK, GL_FILL)"}),
                    with("back1", &L::setFillingBack, FillingMode(1), {"glPolygonMode(GL_BACK, GL_LINE)"}),
                    with("back2", &L::setFillingBack, FillingMode(2), {"glPolygonMode(GL_BACK, GL_LINE)"}),
                    with("backAllOnes", &L::setFillingBack, FillingMode(0xFFFFFFFFU),
                         {"glPolygonMode(GL_BACK, GL_LINE)"})),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Lines, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"stippleOn",
                  [](L& layer) { layer.setLineStipple(true); },
                  {"glLineStipple(3, " + std::to_string(0xAAAA) + ")", "glEnable(GL_LINE_STIPPLE)"}},
        Operation{
            "stippleOff", [](L& layer) { layer.setLineStipple(false); }, {"glDisable(GL_LINE_STIPPLE)"}},
        Operation{"width", [](L& layer) { layer.setLineWidth(2.5F); }, {"glLineWidth(2.5)"}},
        Operation{"pointSize", [](L& layer) { layer.setPointSize(4.5F); }, {"glPointSize(4.5)"}},
        Operation{"name", [](L& layer) { layer.loadName(7); }, {"glLoadName(7)"}},
        Operation{"nameAllOnes", [](L& layer) { layer.loadName(0xFFFFFFFFU); }, {"glLoadName(4294967295)"}},
        Operation{"color",
                  [](L& layer) {
                      layer.setColor({0.25F, 0.5F, 0.75F, 0.125F});
                  },
                  {"glColor4f(0.25, 0.5, 0.75, 0.125)"}},
        Operation{"colorOutOfRange",
                  [](L& layer) {
                      layer.setColor({-1, 2, 0, 1});
                  },
                  {"glColor4f(-1, 2, 0, 1)"}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Blending, Core_RL_GL_operation_calls_test,
    testing::Values(with("off", &L::setBlending, BlendingMode(0), {"glDisable(GL_BLEND)"}),
                    with("alpha", &L::setBlending, BlendingMode(1),
                         {"glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"}),
                    with("mode2LeavesTheBlendStateUntouched", &L::setBlending, BlendingMode(2), {}),
                    with("mode3LeavesTheBlendStateUntouched", &L::setBlending, BlendingMode(3), {}),
                    with("allOnesLeavesTheBlendStateUntouched", &L::setBlending, BlendingMode(0xFFFFFFFFU),
                         {})),
    nameOf);

std::vector<Operation> depthTests() {
    std::vector<Texts> const calls{{"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_ALWAYS)"},
                                   {"glDisable(GL_DEPTH_TEST)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LESS)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_EQUAL)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_GREATER)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_NOTEQUAL)"},
                                   {"glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_GEQUAL)"}};
    std::vector<Operation> rows;
    for (bool const write : {true, false}) {
        std::string const mask = write ? "glDepthMask(GL_TRUE)" : "glDepthMask(GL_FALSE)";
        std::string const suffix = write ? "_writing" : "_notWriting";
        for (unsigned int mode = 0; mode < calls.size(); ++mode) {
            Texts expected{mask};
            expected.insert(expected.end(), calls[mode].begin(), calls[mode].end());
            rows.push_back(with("mode" + std::to_string(mode) + suffix, &L::setDepthTest,
                                DepthtTestMode{mode, write}, expected));
        }
        for (unsigned int const mode : {8U, 9U, 0xFFFFFFFFU}) {
            rows.push_back(with("mode" + std::to_string(mode) + suffix + "_stillSetsTheMask",
                                &L::setDepthTest, DepthtTestMode{mode, write}, {mask}));
        }
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(DepthTest, Core_RL_GL_operation_calls_test, testing::ValuesIn(depthTests()), nameOf);

INSTANTIATE_TEST_SUITE_P(
    Culling, Core_RL_GL_operation_calls_test,
    testing::Values(with("backFaces", &L::setCulling, CullingMode{true, true},
                         {"glEnable(GL_CULL_FACE)", "glCullFace(GL_BACK)"}),
                    with("frontFaces", &L::setCulling, CullingMode{true, false},
                         {"glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)"}),
                    with("disabledStillSetsBackFaces", &L::setCulling, CullingMode{false, true},
                         {"glDisable(GL_CULL_FACE)", "glCullFace(GL_BACK)"}),
                    with("disabledStillSetsFrontFaces", &L::setCulling, CullingMode{false, false},
                         {"glDisable(GL_CULL_FACE)", "glCullFace(GL_FRONT)"})),
    nameOf);

TEST_F(Core_RL_GL_calls_test, theColorTakesTheTopOfTheStack) {
    layer.pushColor({1, 0, 0, 1});
    ASSERT_EQ(layer.colorStack.size(), 2U);
    Color4<float> const bottom = layer.colorStack[0];

    layer.setColor({0.1F, 0.2F, 0.3F, 0.4F});
    ASSERT_EQ(layer.colorStack.size(), 2U);
    EXPECT_TRUE(layer.colorStack[1] == (Color4<float>{0.1F, 0.2F, 0.3F, 0.4F}));
    EXPECT_TRUE(layer.colorStack[0] == bottom);
}

TEST_F(Core_RL_GL_calls_test, theColorMayBeTheTopOfTheStackItself) {
    layer.pushColor({0.5F, 0.25F, 0.125F, 1});
    recording.clear();
    layer.setColor(layer.colorStack.back());
    EXPECT_THAT(recording.texts(), ElementsAre("glColor4f(0.5, 0.25, 0.125, 1)"));
}

TEST_F(Core_RL_GL_calls_test, thePointSizeGivesTheResultOfTheBase) {
    class Base : public Core_RL_GL {
    public:
        float ofBase(float const& size) { return Core_RL::setPointSize(size); }
    } other;
    float const first = other.ofBase(3);
    float const second = other.ofBase(5);
    EXPECT_THAT(recording.texts(), IsEmpty());

    EXPECT_EQ(layer.setPointSize(3), first);
    EXPECT_EQ(layer.setPointSize(5), second);
    EXPECT_EQ(layer.currentPointSize(), 5) << "the base was told";
    EXPECT_THAT(recording.texts(), ElementsAre("glPointSize(3)", "glPointSize(5)"));
}

// == Values that a setter made current ==

// A setter in three calls: it is called alone, then another value is pushed and popped.
struct KeptValue {
    char const* name;
    std::function<void(Core_RL_GL&)> set;
    std::function<void(Core_RL_GL&)> pushAnother;
    std::function<void(Core_RL_GL&)> pop;
};

void PrintTo(KeptValue const& value, std::ostream* out) {
    *out << value.name;
}

class Core_RL_GL_kept_calls_test : public Core_RL_GL_calls_test,
                                   public testing::WithParamInterface<KeptValue> {};

TEST_P(Core_RL_GL_kept_calls_test, aPopAppliesTheValueThatWasSet) {
    GetParam().set(layer);
    Texts const ofTheSetter = recording.texts();
    ASSERT_FALSE(ofTheSetter.empty());

    GetParam().pushAnother(layer);
    recording.clear();
    GetParam().pop(layer);
    EXPECT_EQ(recording.texts(), ofTheSetter) << "at the bottom of the stack";

    GetParam().pushAnother(layer);
    GetParam().set(layer);
    GetParam().pushAnother(layer);
    recording.clear();
    GetParam().pop(layer);
    EXPECT_EQ(recording.texts(), ofTheSetter) << "above a push";
}

TEST_P(Core_RL_GL_kept_calls_test, aPopWithoutAPushAppliesTheValueThatWasSet) {
    GetParam().set(layer);
    Texts const ofTheSetter = recording.texts();
    for (int i = 0; i < 3; ++i) {
        recording.clear();
        GetParam().pop(layer);
        EXPECT_EQ(recording.texts(), ofTheSetter);
    }
}

TEST_P(Core_RL_GL_kept_calls_test, aPopTakesAValueAwayThatWasSetAboveAPush) {
    GetParam().pushAnother(layer);
    recording.clear();
    GetParam().pop(layer);
    Texts const ofTheBottom = recording.texts();

    GetParam().pushAnother(layer);
    GetParam().set(layer);
    recording.clear();
    GetParam().pop(layer);
    EXPECT_EQ(recording.texts(), ofTheBottom);
}

INSTANTIATE_TEST_SUITE_P(
    Stacks, Core_RL_GL_kept_calls_test,
    testing::Values(KeptValue{"color",
                              [](L& l) {
                                  l.setColor({1, 0, 0.5F, 0.25F});
                              },
                              [](L& l) {
                                  l.pushColor({0, 1, 0, 1});
                              },
                              [](L& l) { l.popColor(1); }},
                    KeptValue{"blending", [](L& l) { l.setBlending(BLENDING_ALPHA); },
                              [](L& l) { l.pushBlending(BLENDING_OFF); }, [](L& l) { l.popBlending(); }},
                    KeptValue{"culling",
                              [](L& l) {
                                  l.setCulling({true, false});
                              },
                              [](L& l) {
                                  l.pushCulling({false, false});
                              },
                              [](L& l) { l.popCulling(); }},
                    KeptValue{"depthTest",
                              [](L& l) {
                                  l.setDepthTest({DEPTH_LESS, true});
                              },
                              [](L& l) {
                                  l.pushDepthTest({DEPTH_EQUAL, false});
                              },
                              [](L& l) { l.popDepthTest(); }},
                    KeptValue{"fillingFront", [](L& l) { l.setFillingFront(FILLING_LINES); },
                              [](L& l) { l.pushFillingFront(FILLING_SOLID); },
                              [](L& l) { l.popFillingFront(); }},
                    KeptValue{"fillingBack", [](L& l) { l.setFillingBack(FILLING_LINES); },
                              [](L& l) { l.pushFillingBack(FILLING_SOLID); },
                              [](L& l) { l.popFillingBack(); }},
                    KeptValue{"lineWidth", [](L& l) { l.setLineWidth(5); }, [](L& l) { l.pushLineWidth(2); },
                              [](L& l) { l.popLineWidth(); }}),
    [](auto const& info) { return std::string(info.param.name); });

TEST_F(Core_RL_GL_calls_test, aBlendingWithoutMeaningKeepsTheOneOnTheStack) {
    layer.setBlending(BLENDING_ALPHA);
    layer.setBlending(BlendingMode(5));
    EXPECT_EQ(layer.currentBlending(), BLENDING_ALPHA);
    layer.pushBlending(BlendingMode(5));
    EXPECT_EQ(layer.currentBlending(), BlendingMode(5)) << "a push keeps what it is given";
    recording.clear();
    layer.popBlending();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"));
}

TEST_F(Core_RL_GL_calls_test, aDepthModeWithoutMeaningKeepsTheOneOnTheStack) {
    layer.setDepthTest({DEPTH_LESS, true});
    layer.setDepthTest({9, false});
    EXPECT_EQ(layer.currentDepthTest().mode, DEPTH_LESS);
    EXPECT_FALSE(layer.currentDepthTest().write);
}

TEST_F(Core_RL_GL_calls_test, aGizmoKeepsTheLineWidthOfTheApplication) {
    layer.setLineWidth(5);
    layer.renderCircleCulledStipple3({0, 0, 1}, Matrix4<float>::identity(), 1);
    auto const widths = recording.named("glLineWidth");
    ASSERT_FALSE(widths.empty());
    EXPECT_EQ(widths.back().text(), "glLineWidth(5)");
}

TEST_F(Core_RL_GL_calls_test, aLayerThatScalesWidthsDoesNotScaleThemAgain) {
    class Scaling : public Core_RL_GL {
    public:
        void setLineWidth(float const& width) override { Core_RL_GL::setLineWidth(3 * width); }
    } scaling;
    for (int i = 0; i < 3; ++i) {
        scaling.pushLineWidth(2);
        scaling.popLineWidth();
        EXPECT_THAT(recording.texts(), ElementsAre("glLineWidth(6)", "glLineWidth(3)"));
        recording.clear();
    }
}

// Pushing and popping, with the calls through which each value is applied. What comes back is the state of a
// new context, unless something else was pushed before.
INSTANTIATE_TEST_SUITE_P(
    Stacks, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"color",
                  [](L& layer) {
                      layer.pushColor({0, 0.5F, 1, 1});
                      layer.pushColor({1, 0, 0, 0.5F});
                      layer.pushColor({0, 1, 0, 0.5F});
                      layer.popColor(2);
                      layer.popColor(1);
                  },
                  {"glColor4f(0, 0.5, 1, 1)", "glColor4f(1, 0, 0, 0.5)", "glColor4f(0, 1, 0, 0.5)",
                   "glColor4f(0, 0.5, 1, 1)", "glColor4f(1, 1, 1, 1)"}},
        Operation{"blending",
                  [](L& layer) {
                      layer.pushBlending(BLENDING_ALPHA);
                      layer.popBlending();
                  },
                  {"glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)",
                   "glDisable(GL_BLEND)"}},
        Operation{"culling",
                  [](L& layer) {
                      layer.pushCulling({true, false});
                      layer.popCulling();
                  },
                  {"glEnable(GL_CULL_FACE)", "glCullFace(GL_FRONT)", "glDisable(GL_CULL_FACE)",
                   "glCullFace(GL_BACK)"}},
        Operation{"depthTest",
                  [](L& layer) {
                      layer.pushDepthTest({4, true});
                      layer.pushDepthTest({0, false});
                      layer.popDepthTest();
                  },
                  {"glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)",
                   "glDepthMask(GL_FALSE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_ALWAYS)",
                   "glDepthMask(GL_TRUE)", "glEnable(GL_DEPTH_TEST)", "glDepthFunc(GL_LEQUAL)"}},
        Operation{"fillings",
                  [](L& layer) {
                      layer.pushFillingFront(FILLING_LINES);
                      layer.pushFillingBack(FILLING_LINES);
                      layer.popFillingBack();
                      layer.popFillingFront();
                  },
                  {"glPolygonMode(GL_FRONT, GL_LINE)", "glPolygonMode(GL_BACK, GL_LINE)",
                   "glPolygonMode(GL_BACK, GL_FILL)", "glPolygonMode(GL_FRONT, GL_FILL)"}},
        Operation{"lineWidth",
                  [](L& layer) {
                      layer.pushLineWidth(2);
                      layer.pushLineWidth(3);
                      layer.popLineWidth();
                      layer.popLineWidth();
                  },
                  {"glLineWidth(2)", "glLineWidth(3)", "glLineWidth(2)", "glLineWidth(1)"}},
        Operation{"popWithoutAPush",
                  [](L& layer) {
                      layer.popLineWidth();
                      layer.popFillingFront();
                      layer.popColor(5);
                  },
                  {"glLineWidth(1)", "glPolygonMode(GL_FRONT, GL_FILL)", "glColor4f(1, 1, 1, 1)"}}),
    nameOf);

// == Pass-through wrappers ==

constexpr unsigned long BEYOND_32_BITS = 0x100000000UL;

std::array<float, 3> attenuation{{1, 0.5F, 0.25F}};
std::array<float, 1> smallestPoint{{1.5F}};
char attributeName[] = "color";
char uniformName[] = "light";
std::array<unsigned int, 3> bufferNames{{11, 12, 13}};

void* somewhere() {
    return attenuation.data();
}

INSTANTIATE_TEST_SUITE_P(
    Drawing, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"begin", [](L& layer) { layer.begin(Primitive::type(0x0004)); }, {"glBegin(GL_TRIANGLES)"}},
        Operation{"beginPolygon", [](L& layer) { layer.begin(Primitive::POLYGON); }, {"glBegin(GL_POLYGON)"}},
        Operation{"beginWithAnyNumber",
                  [](L& layer) { layer.begin(Primitive::type(0x1234)); },
                  {"glBegin(0x1234)"}},
        Operation{"end", [](L& layer) { layer.end(); }, {"glEnd()"}},
        Operation{"enableClientState",
                  [](L& layer) { layer.enableClientState(ClientCapability::type(0x8074)); },
                  {"glEnableClientState(GL_VERTEX_ARRAY)"}},
        Operation{"disableClientState",
                  [](L& layer) { layer.disableClientState(ClientCapability::type(0x8076)); },
                  {"glDisableClientState(GL_COLOR_ARRAY)"}},
        Operation{"enableIsDeliberatelyAServerSideEnable",
                  [](L& layer) { layer.enable(ClientCapability::VERTEX_ARRAY); },
                  {"glEnable(GL_VERTEX_ARRAY)"}},
        Operation{"enableOfACapability",
                  [](L& layer) { layer.enable(ClientCapability::type(0x8642)); },
                  {"glEnable(GL_VERTEX_PROGRAM_POINT_SIZE)"}},
        Operation{"vertexPointer",
                  [](L& layer) { layer.vertexPointer(3, DataType::FLOAT, 24, somewhere()); },
                  {"glVertexPointer(3, GL_FLOAT, 24, pointer)"}},
        Operation{"colorPointer",
                  [](L& layer) { layer.colorPointer(4, DataType::UNSIGNED_BYTE, 16, nullptr); },
                  {"glColorPointer(4, GL_UNSIGNED_BYTE, 16, null)"}},
        Operation{"drawElements",
                  [](L& layer) { layer.drawElements(Primitive::QUADS, 0, DataType::UNSIGNED_INT, nullptr); },
                  {"glDrawElements(GL_QUADS, 0, GL_UNSIGNED_INT, null)"}},
        Operation{"drawArrays",
                  [](L& layer) { layer.drawArrays(Primitive::POINTS, 2, 9); },
                  {"glDrawArrays(GL_POINTS, 2, 9)"}},
        Operation{"hint",
                  [](L& layer) { layer.hint(HintTarget::type(0x0C51), HintMode::type(0x1102)); },
                  {"glHint(GL_POINT_SMOOTH_HINT, GL_NICEST)"}},
        Operation{"pointParameterfvUsesTheCoreEntryPoint",
                  [](L& layer) {
                      layer.pointParameterfvEXT(PointParameterName::POINT_DISTANCE_ATTENUATION,
                                                attenuation.data());
                  },
                  {"glPointParameterfv(GL_POINT_DISTANCE_ATTENUATION, {1, 0.5, 0.25})"}},
        Operation{"pointParameterfvOfOneValue",
                  [](L& layer) {
                      layer.pointParameterfvEXT(PointParameterName::POINT_SIZE_MIN, smallestPoint.data());
                  },
                  {"glPointParameterfv(GL_POINT_SIZE_MIN, {1.5})"}},
        Operation{"pointParameterfUsesTheCoreEntryPoint",
                  [](L& layer) { layer.pointParameterfEXT(PointParameterName::POINT_SIZE_MAX, 64); },
                  {"glPointParameterf(GL_POINT_SIZE_MAX, 64)"}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Buffers, Core_RL_GL_operation_calls_test,
    testing::Values(Operation{"deleteBuffers",
                              [](L& layer) { layer.deleteBuffers(3, bufferNames.data()); },
                              {"glDeleteBuffers(3, {11, 12, 13})"}},
                    Operation{"bindBuffer",
                              [](L& layer) { layer.bindBuffer(BufferTarget::ELEMENT_ARRAY_BUFFER, 12); },
                              {"glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 12)"}},
                    Operation{"bufferData",
                              [](L& layer) {
                                  layer.bufferData(BufferTarget::type(0x8892), 8, somewhere(),
                                                   BufferUsage::type(0x88E0));
                              },
                              {"glBufferData(GL_ARRAY_BUFFER, 8, pointer, GL_STREAM_DRAW)"}},
                    Operation{"bufferDataWithoutData",
                              [](L& layer) {
                                  layer.bufferData(BufferTarget::ARRAY_BUFFER, 24, nullptr,
                                                   BufferUsage::DYNAMIC_DRAW);
                              },
                              {"glBufferData(GL_ARRAY_BUFFER, 24, null, GL_DYNAMIC_DRAW)"}},
                    Operation{"bufferDataBeyond32Bits",
                              [](L& layer) {
                                  layer.bufferData(BufferTarget::ARRAY_BUFFER, BEYOND_32_BITS + 8, nullptr,
                                                   BufferUsage::STATIC_DRAW);
                              },
                              {"glBufferData(GL_ARRAY_BUFFER, 4294967304, null, GL_STATIC_DRAW)"}},
                    Operation{"bufferSubData",
                              [](L& layer) {
                                  layer.bufferSubData(BufferTarget::ARRAY_BUFFER,
                                                      reinterpret_cast<void*>(16UL), 4, somewhere());
                              },
                              {"glBufferSubData(GL_ARRAY_BUFFER, 16, 4, pointer)"}},
                    Operation{"bufferSubDataBeyond32Bits",
                              [](L& layer) {
                                  layer.bufferSubData(BufferTarget::ARRAY_BUFFER,
                                                      reinterpret_cast<void*>(BEYOND_32_BITS + 16),
                                                      BEYOND_32_BITS + 4, somewhere());
                              },
                              {"glBufferSubData(GL_ARRAY_BUFFER, 4294967312, 4294967300, pointer)"}},
                    Operation{"unmapBuffer",
                              [](L& layer) { layer.unmapBuffer(BufferTarget::ARRAY_BUFFER); },
                              {"glUnmapBuffer(GL_ARRAY_BUFFER)"}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    NarrowedTo32Bits, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{
            "drawArrays",
            [](L& layer) { layer.drawArrays(Primitive::LINES, BEYOND_32_BITS + 2, BEYOND_32_BITS + 9); },
            {"glDrawArrays(GL_LINES, 2, 9)"}},
        Operation{"drawElements",
                  [](L& layer) {
                      layer.drawElements(Primitive::LINES, BEYOND_32_BITS + 6, DataType::UNSIGNED_INT,
                                         nullptr);
                  },
                  {"glDrawElements(GL_LINES, 6, GL_UNSIGNED_INT, null)"}},
        Operation{"vertexPointer",
                  [](L& layer) { layer.vertexPointer(2, DataType::DOUBLE, BEYOND_32_BITS + 48, nullptr); },
                  {"glVertexPointer(2, GL_DOUBLE, 48, null)"}},
        Operation{"colorPointer",
                  [](L& layer) { layer.colorPointer(3, DataType::FLOAT, BEYOND_32_BITS + 12, nullptr); },
                  {"glColorPointer(3, GL_FLOAT, 12, null)"}},
        Operation{"deleteBuffers",
                  [](L& layer) { layer.deleteBuffers(BEYOND_32_BITS + 2, bufferNames.data()); },
                  {"glDeleteBuffers(2, {11, 12})"}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Programs, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"compileShader", [](L& layer) { layer.compileShader(5); }, {"glCompileShader(5)"}},
        Operation{"attachShader", [](L& layer) { layer.attachShader(6, 5); }, {"glAttachShader(6, 5)"}},
        Operation{"detachShader", [](L& layer) { layer.detachShader(6, 5); }, {"glDetachShader(6, 5)"}},
        Operation{"deleteShader", [](L& layer) { layer.deleteShader(5); }, {"glDeleteShader(5)"}},
        Operation{"linkProgram", [](L& layer) { layer.linkProgram(6); }, {"glLinkProgram(6)"}},
        Operation{"useProgram", [](L& layer) { layer.useProgram(6); }, {"glUseProgram(6)"}},
        Operation{"useNoProgram", [](L& layer) { layer.useProgram(0); }, {"glUseProgram(0)"}},
        Operation{"deleteProgram", [](L& layer) { layer.deleteProgram(6); }, {"glDeleteProgram(6)"}},
        Operation{"getAttribLocation",
                  [](L& layer) { layer.getAttribLocation(6, attributeName); },
                  {"glGetAttribLocation(6, \"color\")"}},
        Operation{"getUniformLocation",
                  [](L& layer) { layer.getUniformLocation(6, uniformName); },
                  {"glGetUniformLocation(6, \"light\")"}},
        Operation{
            "geometryInput",
            [](L& layer) { layer.programParameterI(6, ShaderParameterName::GEOMETRY_INPUT_TYPE_EXT, 0); },
            {"glProgramParameteriEXT(6, GL_GEOMETRY_INPUT_TYPE_EXT, GL_POINTS)"}},
        Operation{
            "geometryOutput",
            [](L& layer) { layer.programParameterI(6, ShaderParameterName::GEOMETRY_OUTPUT_TYPE_EXT, 5); },
            {"glProgramParameteriEXT(6, GL_GEOMETRY_OUTPUT_TYPE_EXT, GL_TRIANGLE_STRIP)"}},
        Operation{
            "geometryVertices",
            [](L& layer) { layer.programParameterI(6, ShaderParameterName::GEOMETRY_VERTICES_OUT_EXT, 24); },
            {"glProgramParameteriEXT(6, GL_GEOMETRY_VERTICES_OUT_EXT, 24)"}},
        Operation{"uniform1f", [](L& layer) { layer.uniform1f(3, 0.5F); }, {"glUniform1f(3, 0.5)"}},
        Operation{"uniform3f",
                  [](L& layer) { layer.uniform3f(-1, 0.5F, -1, 2); },
                  {"glUniform3f(-1, 0.5, -1, 2)"}}),
    nameOf);

TEST_F(Core_RL_GL_calls_test, pointersArePassedAsTheyAre) {
    std::array<float, 6> data{};
    std::array<unsigned int, 3> indices{};
    layer.vertexPointer(3, DataType::FLOAT, 0, data.data());
    layer.colorPointer(3, DataType::FLOAT, 0, data.data() + 1);
    layer.drawElements(Primitive::TRIANGLES, 3, DataType::UNSIGNED_INT, indices.data());
    layer.bufferData(BufferTarget::ARRAY_BUFFER, 4, data.data() + 2, BufferUsage::STREAM_DRAW);
    layer.bufferSubData(BufferTarget::ARRAY_BUFFER, nullptr, 4, data.data() + 3);

    auto const address = [](void const* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); };
    ASSERT_EQ(recording.calls().size(), 5U);
    EXPECT_THAT(recording.calls()[0].addresses, ElementsAre(address(data.data())));
    EXPECT_THAT(recording.calls()[1].addresses, ElementsAre(address(data.data() + 1)));
    EXPECT_THAT(recording.calls()[2].addresses, ElementsAre(address(indices.data())));
    EXPECT_THAT(recording.calls()[3].addresses, ElementsAre(address(data.data() + 2)));
    EXPECT_THAT(recording.calls()[4].addresses, ElementsAre(address(data.data() + 3)));
}

TEST_F(Core_RL_GL_calls_test, buffersAreMadeMappedAndDeleted) {
    unsigned int ids[2] = {};
    layer.genBuffers(2, ids);
    EXPECT_NE(ids[0], 0U);
    EXPECT_NE(ids[1], 0U);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_THAT(recording.texts(), ElementsAre("glGenBuffers(2, pointer)"));
    EXPECT_THAT(recording.calls()[0].addresses, ElementsAre(reinterpret_cast<std::uintptr_t>(ids)));

    unsigned char const bytes[] = {1, 2, 3, 4};
    unsigned char upload[] = {1, 2, 3, 4};
    layer.bindBuffer(BufferTarget::ARRAY_BUFFER, ids[1]);
    layer.bufferData(BufferTarget::ARRAY_BUFFER, sizeof(upload), upload, BufferUsage::STREAM_DRAW);
    recording.clear();
    void* const memory = layer.mapBuffer(BufferTarget::ARRAY_BUFFER, BufferAccess::READ_WRITE);
    EXPECT_THAT(recording.texts(), ElementsAre("glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)"));
    ASSERT_NE(memory, nullptr);
    EXPECT_TRUE(std::equal(std::begin(bytes), std::end(bytes), static_cast<unsigned char*>(memory)));
    layer.unmapBuffer(BufferTarget::ARRAY_BUFFER);

    layer.deleteBuffers(2, ids);
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Core_RL_GL_calls_test, aBufferThatCannotBeMappedGivesNull) {
    driver.nullMap();
    EXPECT_EQ(layer.mapBuffer(BufferTarget::ARRAY_BUFFER, BufferAccess::WRITE_ONLY), nullptr);
    EXPECT_THAT(recording.texts(), ElementsAre("glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY)"));
}

TEST_F(Core_RL_GL_calls_test, shadersAndProgramsGiveTheirNames) {
    unsigned int const vertex = layer.createShader(ShaderType::type(0x8B31));
    unsigned int const geometry = layer.createShader(ShaderType::type(0x8DD9));
    unsigned int const program = layer.createProgram();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glCreateShader(GL_VERTEX_SHADER)", "glCreateShader(GL_GEOMETRY_SHADER_EXT)",
                            "glCreateProgram()"));
    // The driver counts its names from 1.
    EXPECT_EQ(vertex, 1U);
    EXPECT_EQ(geometry, 2U);
    EXPECT_EQ(program, 3U);
}

TEST_F(Core_RL_GL_calls_test, theSourceIsPassedWithItsLengths) {
    char const* texts[] = {"void main", "() {} // cut off here"};
    int lengths[] = {-1, 5};
    layer.shaderSource(4, 2, texts, lengths);
    layer.shaderSource(4, BEYOND_32_BITS + 1, texts, nullptr);
    EXPECT_THAT(recording.texts(), ElementsAre("glShaderSource(4, 2, {\"void main\", \"() {}\"}, {-1, 5})",
                                               "glShaderSource(4, 1, {\"void main\"}, null)"));
}

TEST_F(Core_RL_GL_calls_test, locationsAreTheDrivers) {
    driver.attributeLocation("color", 6).uniformLocation("light", 9);
    char missing[] = "missing";
    driver.uniformLocation("missing", -1);
    EXPECT_EQ(layer.getAttribLocation(1, attributeName), 6);
    EXPECT_EQ(layer.getUniformLocation(1, uniformName), 9);
    EXPECT_EQ(layer.getUniformLocation(1, missing), -1);
}

// == Errors ==

TEST_F(Core_RL_GL_calls_test, withoutAnErrorBothVariantsReturnFalseAtOnce) {
    VL_String message("as before");
    int code = 99;
    EXPECT_FALSE(layer.getError(message, code));
    EXPECT_EQ(code, 0);
    EXPECT_STREQ(message.c_str(), "as before");
    EXPECT_THAT(recording.texts(), ElementsAre("glGetError()"));

    recording.clear();
    EXPECT_FALSE(layer.getError("paint", 12));
    EXPECT_THAT(recording.texts(), ElementsAre("glGetError()"));
}

TEST_F(Core_RL_GL_calls_test, theDrainingVariantTakesAllErrorsAndPrintsNothing) {
    driver.errors({GL_INVALID_ENUM, GL_INVALID_OPERATION, 0x9999});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    bool const found = layer.getError("renderFromVboNoShaders", 1109);
    bool const again = layer.getError("renderFromVboNoShaders", 1109);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(found);
    EXPECT_FALSE(again);
    EXPECT_EQ(recording.count("glGetError"), 5U) << "four for three errors, one for none";
}

TEST_F(Core_RL_GL_calls_test, theDrainingVariantNeedsNoPlace) {
    driver.errors({GL_OUT_OF_MEMORY});
    EXPECT_TRUE(layer.getError(static_cast<char const*>(nullptr), 0));
}

struct ErrorName {
    std::string name;
    unsigned int code;
    std::string text;
};

void PrintTo(ErrorName const& error, std::ostream* out) {
    *out << error.name;
}

/// The variant that does not return is run in a child process. A timer of the processor time that the child
/// uses, so that a busy machine makes no difference, looks after a while at what has been stored and ends it.
class Core_RL_GL_endlessErrorDeathTest : public testing::TestWithParam<ErrorName> {
protected:
    static constexpr int AS_EXPECTED = 0;
    static constexpr int RETURNED = 3;
    static constexpr int WRONG_CODE = 4;
    static constexpr int WRONG_TEXT = 5;
    static constexpr int WRONG_SIZE = 6;
    static constexpr int READ_AGAIN = 7;

    static void runForAWhile(ErrorName const& error) {
        static gl_spy::Script driver = gl_spy::drivers::gl21();
        static VL_String message("a text of another length, longer than every name of an error");
        static int code = 0;
        static ErrorName const* expected = &error;
        driver.errors({error.code, GL_STACK_OVERFLOW});

        std::signal(SIGVTALRM, [](int) {
            unsigned int const size = static_cast<unsigned int>(expected->text.size()) + 1;
            _exit(static_cast<unsigned int>(code) != expected->code      ? WRONG_CODE
                  : expected->text != message.c_str()                    ? WRONG_TEXT
                  : message.size() != size || message.capacity() != size ? WRONG_SIZE
                  : driver.errorsLeft() != 1                             ? READ_AGAIN
                                                                         : AS_EXPECTED);
        });
        itimerval const shortWhile{{0, 0}, {0, 50000}};
        setitimer(ITIMER_VIRTUAL, &shortWhile, nullptr);

        Core_RL_GL().getError(message, code);
        _exit(RETURNED);
    }
};

INSTANTIATE_TEST_SUITE_P(
    , Core_RL_GL_endlessErrorDeathTest,
    testing::Values(ErrorName{"invalidEnum", 0x0500, "GL_INVALID_ENUM"},
                    ErrorName{"invalidValue_deliberatelyWithAColon", 0x0501, "GL_INVALID_VALUE:"},
                    ErrorName{"invalidOperation", 0x0502, "GL_INVALID_OPERATION"},
                    ErrorName{"stackOverflow", 0x0503, "GL_STACK_OVERFLOW"},
                    ErrorName{"stackUnderflow", 0x0504, "GL_STACK_UNDERFLOW"},
                    ErrorName{"outOfMemory", 0x0505, "GL_OUT_OF_MEMORY"},
                    ErrorName{"tableTooLarge", 0x8031, "GL_TABLE_TOO_LARGE"},
                    ErrorName{"invalidFramebuffer_deliberatelyWithALineFeed", 0x0506, "UNDEFINED ERROR\n"},
                    ErrorName{"one", 1, "UNDEFINED ERROR\n"},
                    ErrorName{"allOnes", 0xFFFFFFFFU, "UNDEFINED ERROR\n"}),
    [](testing::TestParamInfo<ErrorName> const& row) { return row.param.name; });

TEST_P(Core_RL_GL_endlessErrorDeathTest, theNamingVariantDeliberatelyDoesNotReturn) {
    EXPECT_EXIT(runForAWhile(GetParam()), testing::ExitedWithCode(AS_EXPECTED), "")
        << "3: it returned, 4: another code, 5: another text, 6: a string of another size, 7: it read the "
           "flag "
           "again";
}

// == Logs ==

/// What is written to std::cout while it lives. It leaves the stream in its good state.
class CoutCapture {
public:
    CoutCapture() : former(std::cout.rdbuf(&buffer)) {}
    ~CoutCapture() {
        std::cout.rdbuf(former);  // clears the state, too
    }
    CoutCapture(CoutCapture const&) = delete;
    CoutCapture& operator=(CoutCapture const&) = delete;

    std::string text() const { return buffer.str(); }
    int flushes() const { return buffer.flushes; }

private:
    struct CountingBuffer : std::stringbuf {
        int sync() override {
            ++flushes;
            return std::stringbuf::sync();
        }
        int flushes = 0;
    };

    CountingBuffer buffer;
    std::streambuf* former;
};

TEST_F(Core_RL_GL_calls_test, aFailedCompileIsPrinted) {
    driver.shaderStatus(false, "0:3: 'foo' undeclared");
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, "glass.frag");
    EXPECT_EQ(cout.text(), "0:3: 'foo' undeclared\n\nwhen compiling:\nglass.frag\n");
    EXPECT_EQ(cout.flushes(), 4) << "every line is flushed";
    EXPECT_THAT(recording.texts(), ElementsAre("glGetShaderiv(5, GL_COMPILE_STATUS, pointer)",
                                               "glGetShaderiv(5, GL_INFO_LOG_LENGTH, pointer)",
                                               "glGetShaderInfoLog(5, 22, pointer, pointer)"));
}

TEST_F(Core_RL_GL_calls_test, aFailedLinkIsPrinted) {
    driver.programStatus(false, "no main\nin the vertex stage");
    CoutCapture cout;
    layer.checkProgramLinkageErrors(7, "a.vert", "b.frag");
    EXPECT_EQ(cout.text(), "no main\nin the vertex stage\n\nwhen linking:\na.vert\nwidth:\nb.frag\n");
    EXPECT_EQ(cout.flushes(), 6) << "every line is flushed";
    EXPECT_THAT(recording.texts(), ElementsAre("glGetProgramiv(7, GL_LINK_STATUS, pointer)",
                                               "glGetProgramiv(7, GL_INFO_LOG_LENGTH, pointer)",
                                               "glGetProgramInfoLog(7, 28, pointer, pointer)"));
}

TEST_F(Core_RL_GL_calls_test, theLinkLogDeliberatelySaysWidth) {
    driver.programStatus(false, "log");
    CoutCapture cout;
    layer.checkProgramLinkageErrors(7, "a", "b");
    EXPECT_THAT(cout.text(), testing::HasSubstr("\nwidth:\n"));
}

TEST_F(Core_RL_GL_calls_test, aSuccessPrintsNothingWhateverItsLog) {
    driver.shaderStatus(true, "warning: unused").programStatus(true, "warning: unused");
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, "a");
    layer.checkProgramLinkageErrors(7, "a", "b");
    EXPECT_EQ(cout.text(), "");
    EXPECT_EQ(recording.count("glGetShaderInfoLog") + recording.count("glGetProgramInfoLog"), 0U);
}

TEST_F(Core_RL_GL_calls_test, aFailureWithoutALogPrintsNothing) {
    driver.shaderStatus(false, "").programStatus(false, "");
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, "a");
    layer.checkProgramLinkageErrors(7, "a", "b");
    EXPECT_EQ(cout.text(), "");
    EXPECT_EQ(recording.count("glGetShaderInfoLog") + recording.count("glGetProgramInfoLog"), 0U);
}

TEST_F(Core_RL_GL_calls_test, aLogOfItsTerminatingZeroAlonePrintsNothing) {
    driver.shaderStatus(false, "").programStatus(false, "").emptyLogLength(1);
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, "a");
    layer.checkProgramLinkageErrors(7, "a", "b");
    EXPECT_EQ(cout.text(), "");
    EXPECT_EQ(recording.count("glGetShaderInfoLog") + recording.count("glGetProgramInfoLog"), 0U);
}

TEST_F(Core_RL_GL_calls_test, aLogOfLengthTwoIsPrinted) {
    driver.shaderStatus(false, "x").programStatus(false, "y");
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, "a");
    layer.checkProgramLinkageErrors(7, "b", "c");
    EXPECT_EQ(cout.text(), "x\n\nwhen compiling:\na\ny\n\nwhen linking:\nb\nwidth:\nc\n");
}

TEST_F(Core_RL_GL_calls_test, anUnnamedShaderSetsTheBadBitOfTheStream) {
    driver.shaderStatus(false, "log");
    CoutCapture cout;
    layer.checkShaderCompilationErrors(5, nullptr);
    EXPECT_TRUE(std::cout.bad());
    EXPECT_EQ(cout.text(), "log\n\nwhen compiling:\n");
    layer.checkShaderCompilationErrors(5, "named");
    EXPECT_EQ(cout.text(), "log\n\nwhen compiling:\n") << "nothing more until the stream is cleared";
    std::cout.clear();
    layer.checkShaderCompilationErrors(5, "named");
    EXPECT_EQ(cout.text(), "log\n\nwhen compiling:\nlog\n\nwhen compiling:\nnamed\n");
}

TEST_F(Core_RL_GL_calls_test, anUnnamedProgramSetsTheBadBitOfTheStream) {
    driver.programStatus(false, "log");
    {
        CoutCapture cout;
        layer.checkProgramLinkageErrors(7, nullptr, "b");
        EXPECT_TRUE(std::cout.bad());
        EXPECT_EQ(cout.text(), "log\n\nwhen linking:\n");
    }
    ASSERT_TRUE(std::cout.good());
    {
        CoutCapture cout;
        layer.checkProgramLinkageErrors(7, "a", nullptr);
        EXPECT_TRUE(std::cout.bad());
        EXPECT_EQ(cout.text(), "log\n\nwhen linking:\na\nwidth:\n");
    }
    EXPECT_TRUE(std::cout.good());
}

// == Video memory ==

/// Answers for the extensions itself and notes which were asked for.
class LayerWithExtensions : public Core_RL_GL {
public:
    explicit LayerWithExtensions(std::vector<std::string> listed) : supported(std::move(listed)) {}

    bool isExtensionSupported(char const* name) override {
        asked.emplace_back(name);
        return std::find(supported.begin(), supported.end(), name) != supported.end();
    }

    std::vector<std::string> asked;

private:
    std::vector<std::string> supported;
};

class Core_RL_GL_memory_calls_test : public testing::Test {
protected:
    gl_spy::Script driver = gl_spy::drivers::gl21();
    gl_spy::Recording recording;

    Core_RL_GL_memory_calls_test() { driver.integer(0x9048, {2097152}).integer(0x9049, {524288}); }
};

TEST_F(Core_RL_GL_memory_calls_test, theNvidiaExtensionTellsBothAmounts) {
    LayerWithExtensions layer({"GL_NVX_gpu_memory_info", "GL_ATI_meminfo"});
    EXPECT_EQ(layer.getTotalGpuMemory(), 2097152U);
    EXPECT_EQ(layer.getFreeGpuMemory(), 524288U);
    EXPECT_THAT(layer.asked, ElementsAre("GL_NVX_gpu_memory_info", "GL_NVX_gpu_memory_info"));
    EXPECT_THAT(recording.texts(), ElementsAre("glGetIntegerv(" + gl_spy::enumName(0x9048) + ", pointer)",
                                               "glGetIntegerv(" + gl_spy::enumName(0x9049) + ", pointer)"));
}

TEST_F(Core_RL_GL_memory_calls_test, theAtiExtensionIsAskedForAndDeliberatelyIgnored) {
    LayerWithExtensions layer({"GL_ATI_meminfo"});
    EXPECT_EQ(layer.getTotalGpuMemory(), 0U);
    EXPECT_EQ(layer.getFreeGpuMemory(), 0U);
    EXPECT_THAT(layer.asked, ElementsAre("GL_NVX_gpu_memory_info", "GL_ATI_meminfo", "GL_NVX_gpu_memory_info",
                                         "GL_ATI_meminfo"));
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Core_RL_GL_memory_calls_test, withoutAnExtensionBothAmountsAreZero) {
    LayerWithExtensions layer({});
    EXPECT_EQ(layer.getTotalGpuMemory(), 0U);
    EXPECT_EQ(layer.getFreeGpuMemory(), 0U);
    EXPECT_THAT(layer.asked, ElementsAre("GL_NVX_gpu_memory_info", "GL_ATI_meminfo", "GL_NVX_gpu_memory_info",
                                         "GL_ATI_meminfo"));
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Core_RL_GL_memory_calls_test, theDriversListIsAskedWhenNothingOverridesIt) {
    Core_RL_GL layer;
    {
        gl_spy::Script const nvidia = gl_spy::drivers::nvxMemory(4096, 1024);
        EXPECT_EQ(layer.getTotalGpuMemory(), 4096U);
        EXPECT_EQ(layer.getFreeGpuMemory(), 1024U);
    }
    Core_RL_GL other;
    EXPECT_EQ(other.getTotalGpuMemory(), 0U);
    EXPECT_EQ(other.getFreeGpuMemory(), 0U);
}

TEST_F(Core_RL_GL_memory_calls_test, anAmountThatTheDriverDoesNotWriteIsZero) {
    LayerWithExtensions layer({"GL_NVX_gpu_memory_info"});
    driver.integer(0x9048, {}).integer(0x9049, {});
    EXPECT_EQ(layer.getTotalGpuMemory(), 0U);
    EXPECT_EQ(layer.getFreeGpuMemory(), 0U);
}

// == Transforms ==

template <class T>
Matrix4<T> counting() {
    return {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, T(16.5)}};
}

std::string const COUNTING_TEXT = "({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16.5})";

INSTANTIATE_TEST_SUITE_P(
    Transforms, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"setDouble",
                  [](L& layer) { layer.setTransform(counting<double>()); },
                  {"glMatrixMode(GL_MODELVIEW)", "glLoadMatrixd" + COUNTING_TEXT}},
        Operation{"setFloat",
                  [](L& layer) { layer.setTransform(counting<float>()); },
                  {"glMatrixMode(GL_MODELVIEW)", "glLoadMatrixf" + COUNTING_TEXT}},
        Operation{"pushDouble",
                  [](L& layer) { layer.pushTransform(counting<double>()); },
                  {"glMatrixMode(GL_MODELVIEW)", "glPushMatrix()", "glMultMatrixd" + COUNTING_TEXT}},
        Operation{"pushFloat",
                  [](L& layer) { layer.pushTransform(counting<float>()); },
                  {"glMatrixMode(GL_MODELVIEW)", "glPushMatrix()", "glMultMatrixf" + COUNTING_TEXT}},
        Operation{
            "pop", [](L& layer) { layer.popTransform(); }, {"glMatrixMode(GL_MODELVIEW)", "glPopMatrix()"}}),
    nameOf);

TEST_F(Core_RL_GL_calls_test, theModelViewMatrixIsReadColumnByColumn) {
    layer.setTransform(Matrix4<float>{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}});
    recording.clear();
    Matrix4<float> const matrix = layer.getModelViewMatrix_asFloat();
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(matrix.e[i], static_cast<float>(i));
    }
    EXPECT_THAT(recording.texts(),
                ElementsAre("glMatrixMode(GL_MODELVIEW)", "glGetFloatv(GL_MODELVIEW_MATRIX, pointer)"));
}

TEST_F(Core_RL_GL_calls_test, theTransposedModelViewMatrixIsReadRowByRow) {
    layer.setTransform(Matrix4<float>{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}});
    recording.clear();
    Matrix4<float> const matrix = layer.getModelViewTransposedMatrix_asFloat();
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            EXPECT_EQ(matrix.e[4 * i + j], static_cast<float>(4 * j + i));
        }
    }
    EXPECT_THAT(recording.texts(),
                ElementsAre("glMatrixMode(GL_MODELVIEW)", "glGetFloatv(GL_MODELVIEW_MATRIX, pointer)"));
}

TEST_F(Core_RL_GL_calls_test, aModelViewMatrixThatTheDriverDoesNotWriteIsTheIdentity) {
    driver.integer(GL_MODELVIEW_MATRIX, {});
    Matrix4<float> const matrix = layer.getModelViewMatrix_asFloat();
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(matrix.e[i], i % 5 == 0 ? 1.0F : 0.0F);
    }
}

// == Viewports ==

TEST_F(Core_RL_GL_calls_test, theViewportIsReadFromTheDriver) {
    driver.integer(GL_VIEWPORT, {10, 20, 300, 400});
    Tuple4<unsigned int> const viewport = layer.getCurrentViewportCoords();
    EXPECT_EQ(viewport.e0, 10U);
    EXPECT_EQ(viewport.e1, 20U);
    EXPECT_EQ(viewport.e2, 300U);
    EXPECT_EQ(viewport.e3, 400U);
    EXPECT_THAT(recording.texts(), ElementsAre("glGetIntegerv(GL_VIEWPORT, pointer)"));
}

INSTANTIATE_TEST_SUITE_P(
    Viewports, Core_RL_GL_operation_calls_test,
    testing::Values(Operation{"pushOrtho",
                              [](L& layer) {
                                  layer.pushViewportOrtho({1, 2, 30, 40}, {-1.5F, 2.5F, -3, 4});
                              },
                              {"glPushAttrib(0xBA2)", "glViewport(1, 2, 30, 40)",
                               "glMatrixMode(GL_PROJECTION)", "glPushMatrix()", "glLoadIdentity()",
                               "glOrtho(-1.5, 2.5, -3, 4, -1, 1)", "glMatrixMode(GL_MODELVIEW)",
                               "glPushMatrix()", "glLoadIdentity()"}},
                    Operation{"popOrtho",
                              [](L& layer) { layer.popViewportOrtho(); },
                              {"glPopMatrix()", "glMatrixMode(GL_PROJECTION)", "glPopMatrix()",
                               "glPopAttrib()", "glMatrixMode(GL_MODELVIEW)"}}),
    nameOf);

TEST_F(Core_RL_GL_calls_test, theViewportsAttributesAreDeliberatelySavedUnderTheValueOfGlViewport) {
    layer.pushViewportOrtho({0, 0, 1, 1}, {0, 1, 0, 1});
    ASSERT_EQ(recording.count("glPushAttrib"), 1U);
    EXPECT_THAT(recording.named("glPushAttrib")[0].enums, ElementsAre(static_cast<unsigned>(GL_VIEWPORT)));
}

// == Texture names ==

TEST_F(Core_RL_GL_calls_test, aTextureIsMadeAndDestroyed) {
    unsigned int const texture = layer.createTexture();
    EXPECT_NE(texture, 0U);
    layer.destroyTexture(texture);
    EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(1, pointer)", "glDeleteTextures(1, {1})"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Core_RL_GL_calls_test, manyTexturesGrowTheArrayToTheirCount) {
    Array<unsigned int> names;
    layer.createTextures(3, names);
    EXPECT_EQ(names.size(), 3U);
    EXPECT_EQ(names.capacity(), 3U);
    EXPECT_THAT(std::vector<unsigned int>(names.begin(), names.end()), ElementsAre(1U, 2U, 3U));
    EXPECT_THAT(recording.texts(), ElementsAre("glGenTextures(3, pointer)"));
    EXPECT_THAT(recording.calls()[0].addresses, ElementsAre(reinterpret_cast<std::uintptr_t>(names.data())));

    recording.clear();
    layer.destroyTextures(names);
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(3, {1, 2, 3})"));
    EXPECT_EQ(names.size(), 3U) << "the array is the caller's";
}

TEST_F(Core_RL_GL_calls_test, manyTexturesKeepTheStorageWhereItIsLargeEnough) {
    Array<unsigned int> names;
    names.reserve(8, false);
    names.setSize(8);
    unsigned int const* const storage = names.data();
    layer.createTextures(2, names);
    EXPECT_EQ(names.size(), 2U);
    EXPECT_EQ(names.capacity(), 8U);
    EXPECT_EQ(names.data(), storage);
    layer.createTextures(8, names);
    EXPECT_EQ(names.size(), 8U);
    EXPECT_EQ(names.data(), storage);
}

TEST_F(Core_RL_GL_calls_test, noTexturesAreACallAllTheSame) {
    Array<unsigned int> names{4U, 5U};
    layer.createTextures(0, names);
    EXPECT_EQ(names.size(), 0U);
    layer.destroyTextures(names);
    ASSERT_EQ(recording.calls().size(), 2U);
    EXPECT_EQ(recording.calls()[0].text(), "glGenTextures(0, pointer)");
    EXPECT_EQ(recording.calls()[1].name, "glDeleteTextures");
    EXPECT_EQ(recording.calls()[1].arguments[0], "0");
}

// == Color textures ==

Texts textureSteps(unsigned int const& texture, Texts const& wrap, std::string const& upload) {
    Texts steps{"glEnable(GL_TEXTURE_2D)",
                "glGenTextures(1, pointer)",
                "glBindTexture(GL_TEXTURE_2D, " + std::to_string(texture) + ")",
                "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)",
                "glPixelStoref(GL_UNPACK_ALIGNMENT, 1)",
                "glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR)",
                "glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)"};
    steps.insert(steps.end(), wrap.begin(), wrap.end());
    if (!upload.empty()) {
        steps.push_back(upload);
    }
    steps.emplace_back("glDisable(GL_TEXTURE_2D)");
    return steps;
}

Texts wrapSteps(std::string const& value) {
    return {"glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, " + value + ")",
            "glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, " + value + ")"};
}

struct Clamping {
    std::string name;
    unsigned int mode;
    Texts steps;
};

void PrintTo(Clamping const& clamping, std::ostream* out) {
    *out << "clamping mode " << clamping.mode;
}

class Core_RL_GL_clamping_calls_test : public Core_RL_GL_calls_test,
                                       public testing::WithParamInterface<Clamping> {};

INSTANTIATE_TEST_SUITE_P(, Core_RL_GL_clamping_calls_test,
                         testing::Values(Clamping{"repeat", 0, wrapSteps("GL_REPEAT")},
                                         Clamping{"clampToBorder", 1, wrapSteps("GL_CLAMP_TO_BORDER")},
                                         Clamping{"deliberatelyTheNumberTwo", 2, wrapSteps("2")},
                                         Clamping{"clamp", 3, wrapSteps("GL_CLAMP")},
                                         Clamping{"mode4SetsNone", 4, {}},
                                         Clamping{"allOnesSetsNone", 0xFFFFFFFFU, {}}),
                         [](testing::TestParamInfo<Clamping> const& row) { return row.param.name; });

TEST_P(Core_RL_GL_clamping_calls_test, bytesAreUploadedWithMipmaps) {
    unsigned char const pixels[2 * 3 * 4] = {};
    unsigned int texture = 0;
    layer.loadTextureColor(2, 3, pixels, texture, TextureClampingMode(GetParam().mode));
    EXPECT_EQ(texture, 1U);
    EXPECT_EQ(recording.texts(),
              textureSteps(1, GetParam().steps,
                           "gluBuild2DMipmaps(GL_TEXTURE_2D, 4, 2, 3, GL_RGBA, GL_UNSIGNED_BYTE, pointer)"));
    ASSERT_EQ(recording.count("gluBuild2DMipmaps"), 1U);
    EXPECT_THAT(recording.named("gluBuild2DMipmaps")[0].addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(pixels)));
}

TEST_P(Core_RL_GL_clamping_calls_test, channelsAreUploadedWithMipmaps) {
    unsigned short const pixels[4 * 4 * 3] = {};
    unsigned int texture = 0;
    layer.loadTextureColor(4, 4, 16, 48, pixels, texture, TextureClampingMode(GetParam().mode));
    EXPECT_EQ(texture, 1U);
    EXPECT_EQ(recording.texts(),
              textureSteps(1, GetParam().steps,
                           "gluBuild2DMipmaps(GL_TEXTURE_2D, 3, 4, 4, GL_RGB, GL_UNSIGNED_SHORT, pointer)"));
    ASSERT_EQ(recording.count("gluBuild2DMipmaps"), 1U);
    EXPECT_THAT(recording.named("gluBuild2DMipmaps")[0].addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(pixels)));
}

/// A layout of pixels, and what of it is uploaded; empty for nothing.
struct PixelLayout {
    int bitsPerChannel;
    int bitsPerPixel;
    std::string upload;
};

void PrintTo(PixelLayout const& layout, std::ostream* out) {
    *out << layout.bitsPerChannel << " bits per channel, " << layout.bitsPerPixel << " bits per pixel";
}

std::vector<PixelLayout> pixelLayouts() {
    std::vector<PixelLayout> rows;
    std::pair<int, std::string> const types[] = {
        {8, "GL_UNSIGNED_BYTE"}, {16, "GL_UNSIGNED_SHORT"}, {32, "GL_FLOAT"}};
    for (auto const& [bits, type] : types) {
        for (int channels = 0; channels <= 5; ++channels) {
            std::string const format = channels == 4 ? "GL_RGBA" : channels == 3 ? "GL_RGB" : "";
            rows.push_back({bits, bits * channels,
                            format.empty() ? ""
                                           : "gluBuild2DMipmaps(GL_TEXTURE_2D, " + std::to_string(channels) +
                                                 ", 8, 2, " + format + ", " + type + ", pointer)"});
        }
        // Rounded down to three channels, and to four.
        rows.push_back(
            {bits, bits * 4 - 1, "gluBuild2DMipmaps(GL_TEXTURE_2D, 3, 8, 2, GL_RGB, " + type + ", pointer)"});
        rows.push_back({bits, bits * 5 - 1,
                        "gluBuild2DMipmaps(GL_TEXTURE_2D, 4, 8, 2, GL_RGBA, " + type + ", pointer)"});
        rows.push_back({bits, -bits * 3, ""});
    }
    for (int const bits : {1, 4, 12, 24, 64}) {
        rows.push_back({bits, bits * 3, ""});
        rows.push_back({bits, bits * 4, ""});
    }
    rows.push_back({0, 0, ""});
    rows.push_back({0, 32, ""});
    rows.push_back({-8, -32, ""});
    rows.push_back({-1, std::numeric_limits<int>::min(), ""});
    rows.push_back({std::numeric_limits<int>::min(), std::numeric_limits<int>::min(), ""});
    return rows;
}

class Core_RL_GL_pixelLayout_calls_test : public Core_RL_GL_calls_test,
                                          public testing::WithParamInterface<PixelLayout> {};

INSTANTIATE_TEST_SUITE_P(, Core_RL_GL_pixelLayout_calls_test, testing::ValuesIn(pixelLayouts()),
                         [](testing::TestParamInfo<PixelLayout> const& row) {
                             std::string name = "channel" + std::to_string(row.param.bitsPerChannel) +
                                                "pixel" + std::to_string(row.param.bitsPerPixel);
                             std::replace(name.begin(), name.end(), '-', 'm');
                             return name;
                         });

TEST_P(Core_RL_GL_pixelLayout_calls_test, onlyThreeAndFourChannelsOfKnownWidthAreUploaded) {
    std::vector<unsigned char> const pixels(256);
    unsigned int texture = 0;
    layer.loadTextureColor(8, 2, GetParam().bitsPerChannel, GetParam().bitsPerPixel, pixels.data(), texture,
                           TEXTURE_REPEAT);
    EXPECT_EQ(recording.texts(), textureSteps(1, wrapSteps("GL_REPEAT"), GetParam().upload));
    EXPECT_EQ(texture, 1U) << "the name stays, with or without an image";
}

TEST_F(Core_RL_GL_calls_test, twentyFourBitsPerPixelAreThreeBytes) {
    unsigned char const pixels[3] = {};
    unsigned int texture = 0;
    layer.loadTextureColor(1, 1, 8, 24, pixels, texture, TEXTURE_REPEAT);
    ASSERT_EQ(recording.count("gluBuild2DMipmaps"), 1U);
    EXPECT_EQ(recording.named("gluBuild2DMipmaps")[0].text(),
              "gluBuild2DMipmaps(GL_TEXTURE_2D, 3, 1, 1, GL_RGB, GL_UNSIGNED_BYTE, pointer)");
}

TEST_F(Core_RL_GL_calls_test, oneChannelOfThirtyTwoBitsIsNotUploaded) {
    float const pixels[1] = {};
    unsigned int texture = 0;
    layer.loadTextureColor(1, 1, 32, 32, pixels, texture, TEXTURE_REPEAT);
    EXPECT_EQ(recording.count("gluBuild2DMipmaps"), 0U);
    EXPECT_EQ(recording.calls().back().text(), "glDisable(GL_TEXTURE_2D)");
    EXPECT_EQ(driver.liveObjects(), 1U) << "the name is there, without an image";
}

INSTANTIATE_TEST_SUITE_P(
    Textures, Core_RL_GL_operation_calls_test,
    testing::Values(
        Operation{"unload",
                  [](L& layer) { layer.unLoadTextureColor(9); },
                  {"glEnable(GL_TEXTURE_2D)", "glDeleteTextures(1, {9})",
                   "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)",
                   "glDisable(GL_TEXTURE_2D)"}},
        Operation{"activate",
                  [](L& layer) { layer.activateTextureColor(9); },
                  {"glEnable(GL_TEXTURE_2D)", "glBindTexture(GL_TEXTURE_2D, 9)"}},
        Operation{"disable", [](L& layer) { layer.disableTextureColor(); }, {"glDisable(GL_TEXTURE_2D)"}}),
    nameOf);

// == Luminance textures ==

Texts luminanceSteps() {
    return {"glEnable(GL_TEXTURE_2D)",
            "glBindTexture(GL_TEXTURE_2D, 9)",
            "glPixelStoref(GL_UNPACK_ALIGNMENT, 1)",
            "glTexImage2D(GL_TEXTURE_2D, 0, 1, 3, 2, 0, GL_LUMINANCE, GL_FLOAT, pointer)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)"};
}

TEST_F(Core_RL_GL_calls_test, blendedLuminanceIsBlendedTowardWhite) {
    Array<float> const values{0, 0.25F, 0.5F, 0.75F, 1, 2};
    layer.pushTextureLuminance(9, 3, 2, true, values);
    Texts expected = luminanceSteps();
    expected.emplace_back("glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, {1, 1, 1, 1})");
    expected.emplace_back("glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_BLEND)");
    EXPECT_EQ(recording.texts(), expected);
    ASSERT_EQ(recording.count("glTexImage2D"), 1U);
    EXPECT_THAT(recording.named("glTexImage2D")[0].addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(values.data())));
}

TEST_F(Core_RL_GL_calls_test, unblendedLuminanceIsADecal) {
    Array<float> const values{0, 0.25F, 0.5F, 0.75F, 1, 2};
    layer.pushTextureLuminance(9, 3, 2, false, values);
    Texts expected = luminanceSteps();
    expected.emplace_back("glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_DECAL)");
    EXPECT_EQ(recording.texts(), expected);
}

TEST_F(Core_RL_GL_calls_test, endedLuminanceIsDeleted) {
    layer.popTextureLuminance(9);
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteTextures(1, {9})",
                                               "glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)",
                                               "glDisable(GL_TEXTURE_2D)"));
}

// == Triangle lists ==

TEST_F(Core_RL_GL_calls_test, trianglesOfDoublesAreDrawnFromVertexArrays) {
    Array<Vector3<double>> const vertices{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}};
    Array<Triangle> const triangles{{0, 1, 2}, {1, 3, 2}};
    layer.render(vertices, triangles);
    EXPECT_THAT(recording.texts(), ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)",
                                               "glVertexPointer(3, GL_DOUBLE, 0, pointer)",
                                               "glDrawElements(GL_TRIANGLES, 6, GL_UNSIGNED_INT, pointer)",
                                               "glDisableClientState(GL_VERTEX_ARRAY)"));
    EXPECT_THAT(recording.calls()[1].addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(vertices.data())));
    EXPECT_THAT(recording.calls()[2].addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(triangles.data())));
}

TEST_F(Core_RL_GL_calls_test, noTrianglesAreDrawnAsNone) {
    layer.render(Array<Vector3<double>>(), Array<Triangle>());
    EXPECT_THAT(recording.texts(),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)", "glVertexPointer(3, GL_DOUBLE, 0, null)",
                            "glDrawElements(GL_TRIANGLES, 0, GL_UNSIGNED_INT, null)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
}

template <class T>
void expectForwardedToTheBase(Core_RL_GL& layer, gl_spy::Recording& recording) {
    Array<Vector3<T>> const vertices{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    Array<Triangle> const triangles{{0, 1, 2}};
    Array<Vector3<float>> const normals{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}};
    Array<Color4<float>> const colors{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};

    recording.clear();
    layer.Core_RL::render(vertices, triangles, normals, colors);
    Texts const ofTheBase = recording.texts();
    EXPECT_FALSE(ofTheBase.empty());

    recording.clear();
    layer.render(vertices, triangles, normals, colors);
    EXPECT_EQ(recording.texts(), ofTheBase);
}

TEST_F(Core_RL_GL_calls_test, shadedTrianglesOfFloatsAreTheBases) {
    expectForwardedToTheBase<float>(layer, recording);
}

TEST_F(Core_RL_GL_calls_test, shadedTrianglesOfDoublesAreTheBases) {
    expectForwardedToTheBase<double>(layer, recording);
}

// == The queue of textures to delete ==

TEST_F(Core_RL_GL_calls_test, queueingMakesNoGlCallAndForgetsTheName) {
    unsigned int texture = 7;
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(texture, NO_TEXTURE);
    ASSERT_EQ(layer.textureUnloadQueue.size(), 1U);
    EXPECT_EQ(layer.textureUnloadQueue[0], 7U);
    EXPECT_EQ(layer.textureQueueLock.load(), 0U) << "the lock is free again";
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Core_RL_GL_calls_test, queueingNoTextureChangesNothing) {
    unsigned int texture = NO_TEXTURE;
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(texture, NO_TEXTURE);
    EXPECT_EQ(layer.textureUnloadQueue.size(), 0U);
    EXPECT_EQ(layer.textureUnloadQueue.capacity(), 0U);
    EXPECT_EQ(layer.textureQueueLock.load(), 0U);
}

TEST_F(Core_RL_GL_calls_test, queueingTheSameVariableTwiceQueuesItsNameOnce) {
    unsigned int texture = 7;
    layer.queueUnloadTextureColor(texture);
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(layer.textureUnloadQueue.size(), 1U);
}

TEST_F(Core_RL_GL_calls_test, nameZeroIsAName) {
    unsigned int texture = 0;
    layer.queueUnloadTextureColor(texture);
    EXPECT_EQ(texture, NO_TEXTURE);
    EXPECT_EQ(layer.textureUnloadQueue.size(), 1U);
}

TEST_F(Core_RL_GL_calls_test, theQueueGrowsByAnEighth) {
    std::vector<unsigned int> capacities{layer.textureUnloadQueue.capacity()};
    for (unsigned int name = 1; name <= 25; ++name) {
        unsigned int texture = name;
        layer.queueUnloadTextureColor(texture);
        if (layer.textureUnloadQueue.capacity() != capacities.back()) {
            capacities.push_back(layer.textureUnloadQueue.capacity());
        }
    }
    EXPECT_THAT(capacities, ElementsAre(0U, 4U, 8U, 13U, 18U, 24U, 31U));
    for (unsigned int i = 0; i < 25; ++i) {
        EXPECT_EQ(layer.textureUnloadQueue[i], i + 1);
    }
}

TEST_F(Core_RL_GL_calls_test, aQueueThatCannotGrowLeavesTheLockFree) {
    // No storage and as many names as 32 bits can count: there is no larger capacity to ask for.
    layer.textureUnloadQueue.setSize(0xFFFFFFFFU);
    unsigned int texture = 7;
    EXPECT_ANY_THROW(layer.queueUnloadTextureColor(texture));
    layer.textureUnloadQueue.setSize(0);
    EXPECT_EQ(layer.textureQueueLock.load(), 0U);
    EXPECT_EQ(texture, 7U) << "a name that was not queued is still the caller's";
}

TEST_F(Core_RL_GL_calls_test, anEmptyQueueIsDrainedWithoutAGlCall) {
    layer.destroy_RL();
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_EQ(layer.textureQueueLock.load(), 0U);
}

TEST_F(Core_RL_GL_calls_test, anEmptyQueueNeedsNoRenderLayer) {
    Core_RL* const former = VL_Raster;
    VL_Raster = nullptr;
    layer.destroy_RL();
    VL_Raster = former;
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Core_RL_GL_calls_test, queuedTexturesAreDeletedInTheirOrder) {
    for (unsigned int const name : {12U, 5U, 9U, 5U}) {
        unsigned int texture = name;
        layer.queueUnloadTextureColor(texture);
    }
    unsigned int const capacity = layer.textureUnloadQueue.capacity();
    layer.destroy_RL();

    Texts expected;
    for (std::string const name : {"12", "5", "9", "5"}) {
        expected.emplace_back("glEnable(GL_TEXTURE_2D)");
        expected.emplace_back("glDeleteTextures(1, {" + name + "})");
        expected.emplace_back("glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)");
        expected.emplace_back("glDisable(GL_TEXTURE_2D)");
    }
    EXPECT_EQ(recording.texts(), expected);
    EXPECT_EQ(layer.textureUnloadQueue.size(), 0U);
    EXPECT_EQ(layer.textureUnloadQueue.capacity(), capacity) << "the storage is kept";
    EXPECT_EQ(layer.textureQueueLock.load(), 0U);

    recording.clear();
    layer.destroy_RL();
    EXPECT_THAT(recording.texts(), IsEmpty()) << "each is deleted once";
}

TEST_F(Core_RL_GL_calls_test, entriesWithoutATextureAreSkipped) {
    layer.textureUnloadQueue.pushBack(3);
    layer.textureUnloadQueue.pushBack(NO_TEXTURE);
    layer.textureUnloadQueue.pushBack(4);
    layer.destroy_RL();
    ASSERT_EQ(recording.count("glDeleteTextures"), 2U);
    EXPECT_EQ(recording.named("glDeleteTextures")[0].text(), "glDeleteTextures(1, {3})");
    EXPECT_EQ(recording.named("glDeleteTextures")[1].text(), "glDeleteTextures(1, {4})");
}

/// Notes what it is asked to delete, and whether the queue of `watched` was locked meanwhile.
class DeletingLayer : public ProbedLayer {
public:
    void unLoadTextureColor(unsigned int const& texture) override {
        deleted.push_back(texture);
        locks.push_back(watched != nullptr ? watched->textureQueueLock.load() : 0U);
        if (fails) {
            throw std::runtime_error("cannot delete");
        }
    }

    ProbedLayer* watched = nullptr;
    bool fails = false;
    std::vector<unsigned int> deleted;
    std::vector<std::uint32_t> locks;
};

TEST(Core_RL_GL_queue_calls_test, theQueueIsDeliberatelyDrainedThroughTheInstanceConstructedLast) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    DeletingLayer first;
    DeletingLayer last;
    last.watched = &first;
    unsigned int textures[] = {3, 8};
    first.queueUnloadTextureColor(textures[0]);
    first.queueUnloadTextureColor(textures[1]);

    gl_spy::Recording const recording;
    first.destroy_RL();
    EXPECT_THAT(last.deleted, ElementsAre(3U, 8U));
    EXPECT_THAT(first.deleted, IsEmpty());
    EXPECT_THAT(last.locks, ElementsAre(1U, 1U)) << "the lock of the drained queue is held";
    EXPECT_EQ(first.textureUnloadQueue.size(), 0U);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "the virtual operation is all that is called";

    last.destroy_RL();
    EXPECT_THAT(last.deleted, ElementsAre(3U, 8U)) << "each instance has a queue of its own";
}

TEST(Core_RL_GL_queue_calls_test, aDeletionThatThrowsLeavesTheLockFree) {
    gl_spy::Script const driver = gl_spy::drivers::gl21();
    DeletingLayer layer;
    layer.fails = true;
    unsigned int texture = 3;
    layer.queueUnloadTextureColor(texture);
    EXPECT_THROW(layer.destroy_RL(), std::runtime_error);
    EXPECT_EQ(layer.textureQueueLock.load(), 0U);
}

TEST(Core_RL_GL_queue_calls_test, theLockIsTheFirstDataMember) {
    ProbedLayer layer;
    auto const* const object = reinterpret_cast<unsigned char const*>(static_cast<Core_RL*>(&layer));
    auto const* const lock = reinterpret_cast<unsigned char const*>(&layer.textureQueueLock);
    EXPECT_EQ(lock - object, static_cast<std::ptrdiff_t>(sizeof(void*))) << "right behind the table pointer";
}

}  // namespace
}  // namespace vellum
