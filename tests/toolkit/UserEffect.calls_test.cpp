#include "toolkit/UserEffect.h"

#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Replacement = StageReport::Replacement;

std::function<bool(std::string const&)> has(std::string const& word) {
    return [word](std::string const& text) { return text.find(word) != std::string::npos; };
}

/// The driver has geometry stages; texts with "BROKEN" do not compile.
class UserEffect_calls_test : public testing::Test {
protected:
    UserEffect_calls_test() { driver.shaderStatus(false, "0:3(1): error: broken\n", has("BROKEN")); }

    /// The texts of all stages that were loaded, in order.
    std::vector<std::string> loaded() const {
        std::vector<std::string> texts;
        for (gl_spy::Call const& call : recording.named("glShaderSource")) {
            texts.push_back(call.strings.at(0));
        }
        return texts;
    }

    TemporaryFolder folder;
    std::string const vertex = folder.write("v.vert", "void v() { gl_FrontColor = gl_Color; }\n");
    std::string const fragment = folder.write("f.frag", "void f() {}\n");
    std::string const geometry = folder.write("g.geom", "void g() {}\n");
    std::string const broken = folder.write("b.glsl", "BROKEN\n");
    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    Layer layer;
    gl_spy::Recording recording;
};

}  // namespace

TEST_F(UserEffect_calls_test, goodFilesAreUsedAsTheyAre) {
    UserEffect effect(layer);
    EXPECT_FALSE(effect.isLinked());
    EXPECT_THAT(effect.load({vertex, fragment, geometry}), IsEmpty());
    EXPECT_TRUE(effect.isLinked());
    EXPECT_TRUE(effect.created);
    EXPECT_EQ(effect.files().vertex, vertex);
    EXPECT_EQ(effect.files().geometry, geometry);
    EXPECT_THAT(loaded(), Contains(HasSubstr("void v()")));
    EXPECT_THAT(loaded(), Contains(HasSubstr("void f()")));
    EXPECT_THAT(loaded(), Contains(HasSubstr("void g()")));
}

TEST_F(UserEffect_calls_test, noFilesGiveStagesThatPassEverythingOn) {
    UserEffect effect(layer);
    EXPECT_THAT(effect.load({}), IsEmpty());
    EXPECT_TRUE(effect.isLinked());
    EXPECT_EQ(recording.count("glCreateShader"), 2U);
}

TEST_F(UserEffect_calls_test, loadingLeavesNoProgramInUseAndNoError) {
    UserEffect effect(layer);
    effect.load({vertex, fragment, ""});
    GLint program = -1;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    EXPECT_EQ(program, 0);
    driver.errors({GL_INVALID_OPERATION, GL_INVALID_VALUE});
    effect.load({vertex, fragment, ""});
    EXPECT_EQ(driver.errorsLeft(), 0U);
}

TEST_F(UserEffect_calls_test, changedFilesCountUnderTheSameNames) {
    UserEffect effect(layer);
    effect.load({vertex, fragment, ""});
    recording.clear();
    folder.write("f.frag", "void other() {}\n");
    EXPECT_THAT(effect.load({vertex, fragment, ""}), IsEmpty());
    EXPECT_THAT(loaded(), Contains(HasSubstr("void other()")));
    EXPECT_THAT(loaded(), Not(Contains(HasSubstr("void f()"))));

    // Also what was broken before.
    folder.write("f.frag", "BROKEN\n");
    EXPECT_EQ(effect.load({vertex, fragment, ""}).size(), 1U);
    folder.write("f.frag", "void f() {}\n");
    EXPECT_THAT(effect.load({vertex, fragment, ""}), IsEmpty());
}

TEST_F(UserEffect_calls_test, aStageThatDoesNotCompileIsReportedWithItsLine) {
    struct Row {
        StageFiles files;
        Stage stage;
    };
    for (Row const& row :
         {Row{{broken, fragment, ""}, Stage::VERTEX}, Row{{vertex, broken, ""}, Stage::FRAGMENT},
          Row{{vertex, fragment, broken}, Stage::GEOMETRY}}) {
        UserEffect effect(layer);
        std::vector<StageReport> const reports = effect.load(row.files);
        ASSERT_EQ(reports.size(), 1U);
        EXPECT_EQ(reports[0].stage, row.stage);
        EXPECT_EQ(reports[0].file, broken);
        EXPECT_EQ(reports[0].log, "0:3(1): error: broken\n");
        EXPECT_EQ(reports[0].replacement, Replacement::PASS_THROUGH);
        ASSERT_EQ(reports[0].messages.size(), 1U);
        EXPECT_EQ(reports[0].messages[0].line, 3);
        EXPECT_EQ(reports[0].messages[0].text, "error: broken");
        EXPECT_TRUE(effect.isLinked());
    }
}

TEST_F(UserEffect_calls_test, reportsAreInTheOrderOfTheStages) {
    UserEffect effect(layer);
    std::vector<StageReport> const reports = effect.load({broken, broken, broken});
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(reports[0].stage, Stage::VERTEX);
    EXPECT_EQ(reports[1].stage, Stage::FRAGMENT);
    EXPECT_EQ(reports[2].stage, Stage::GEOMETRY);
}

TEST_F(UserEffect_calls_test, anEmptyLogStillGivesAMessage) {
    driver.shaderStatus(false, "", has("void f()"));
    UserEffect effect(layer);
    std::vector<StageReport> const reports = effect.load({vertex, fragment, ""});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(toText(reports[0]),
              fragment + ": does not compile; a stage that passes everything on takes its place\n");
}

TEST_F(UserEffect_calls_test, filesThatCannotBeReadAreReportedAndNotPrinted) {
    std::string const gone = folder.file("gone.glsl");
    std::string const empty = folder.write("empty.glsl", " \n");
    UserEffect effect(layer);
    StreamCapture const errors(std::cerr);
    std::vector<StageReport> const reports = effect.load({gone, empty, gone});
    EXPECT_EQ(errors.text(), "");
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_EQ(toText(reports[0]), gone + ": cannot be opened: No such file or directory; a stage that passes "
                                         "everything on takes its place\n");
    EXPECT_EQ(reports[1].messages[0].text, "is empty");
    EXPECT_EQ(reports[1].replacement, Replacement::PASS_THROUGH);
    EXPECT_EQ(reports[1].log, "");
    EXPECT_EQ(reports[2].replacement, Replacement::LEFT_OUT);
    EXPECT_EQ(recording.count("glCreateShader"), 2U);
    EXPECT_TRUE(effect.isLinked());
}

TEST_F(UserEffect_calls_test, aGeometryStageIsLeftOutWhereTheDriverHasNone) {
    driver.string(GL_EXTENSIONS, "");
    Layer plain;
    UserEffect effect(plain);
    std::vector<StageReport> const reports = effect.load({vertex, fragment, geometry});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(toText(reports[0]), geometry + ": OpenGL here has no geometry stages; it is left out\n");
    EXPECT_EQ(recording.count("glCreateShader"), 2U);
}

TEST_F(UserEffect_calls_test, withoutShadersNothingIsBuilt) {
    driver.string(GL_VERSION, "1.5.0");
    UserEffect effect(layer);
    recording.clear();
    std::vector<StageReport> const reports = effect.load({vertex, folder.file("gone"), ""});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(toText(reports[0]), "the program of the stages: OpenGL here has no shaders; it is left out\n");
    EXPECT_THAT(recording.texts(), testing::Each(testing::Eq("glGetString(GL_VERSION)")));
    EXPECT_FALSE(effect.isLinked());
}

TEST_F(UserEffect_calls_test, stagesThatDoNotLinkAreAllReplaced) {
    driver.programStatus(false, "error: no match\n.error: no match\n");
    UserEffect effect(layer);
    std::vector<StageReport> const reports = effect.load({vertex, fragment, ""});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].stage, Stage::PROGRAM);
    EXPECT_EQ(reports[0].file, "");
    EXPECT_EQ(reports[0].log, "error: no match\n.error: no match\n");
    EXPECT_EQ(reports[0].replacement, Replacement::ALL_STAGES);
    EXPECT_EQ(reports[0].messages.size(), 1U);
    EXPECT_EQ(recording.count("glCreateShader"), 4U);
    EXPECT_EQ(loaded().at(2), std::string(Shader_gl::fragmentPassThrough()));
    EXPECT_EQ(loaded().at(3), std::string(Shader_gl::vertexPassThrough()));
}

TEST_F(UserEffect_calls_test, aStageWithoutAColorIsReplacedWhereTheColorIsShown) {
    std::string const plain = folder.write("p.vert", "void p() {}\n");
    std::string const plainGeometry = folder.write("p.geom", "void pg() {}\n");
    struct Row {
        char const* name;
        StageFiles files;
        char const* culprit;  // empty: none
    };
    for (Row const& row :
         {Row{"vertex alone", {plain, "", ""}, "p.vert"}, Row{"vertex with a color", {vertex, "", ""}, ""},
          Row{"own fragment stage", {plain, fragment, ""}, ""},
          Row{"fragment stage that fails", {plain, broken, ""}, "p.vert"},
          Row{"geometry stage", {vertex, "", plainGeometry}, "p.geom"},
          Row{"geometry stage that fails", {vertex, "", broken}, ""},
          Row{"vertex stage that fails", {broken, "", ""}, ""}}) {
        SCOPED_TRACE(row.name);
        UserEffect effect(layer);
        std::vector<std::string> culprits;
        for (StageReport const& report : effect.load(row.files)) {
            if (report.file == broken) {
                EXPECT_EQ(report.replacement, Replacement::PASS_THROUGH);
                continue;
            }
            culprits.push_back(report.file);
            EXPECT_EQ(
                toText(report),
                report.file +
                    ": sets no gl_FrontColor, which the fragment stage that passes everything on shows; "
                    "such a stage takes its place, too\n");
        }
        EXPECT_EQ(culprits, row.culprit[0] == '\0' ? std::vector<std::string>()
                                                   : std::vector<std::string>{folder.file(row.culprit)});
    }
}

TEST_F(UserEffect_calls_test, warningsAreReportedOfStagesThatAreUsed) {
    driver.shaderStatus(true, "0:1(2): warning: odd\n0:2(2): fine\n", has("void f()"));
    driver.shaderStatus(true, "No errors.\n", has("void v()"));
    UserEffect effect(layer);
    std::vector<StageReport> const reports = effect.load({vertex, fragment, ""});
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].replacement, Replacement::NOTHING);
    EXPECT_EQ(toText(reports[0]), fragment + ":1: warning: odd\n");
}

TEST_F(UserEffect_calls_test, logsOfOtherEffectsStayInTheLayer) {
    Shader_gl other;
    other.loadShaderSource(GL_VERTEX_SHADER, "BROKEN", false);
    UserEffect effect(layer);
    EXPECT_EQ(effect.load({vertex, broken, ""}).size(), 1U);
    std::vector<CompileLog> const logs = layer.takeCompileLogs();
    ASSERT_EQ(logs.size(), 1U);
    EXPECT_EQ(logs[0].stage, static_cast<unsigned int>(GL_VERTEX_SHADER));
}

}  // namespace vellum::toolkit
