#include "glsl_fixtures.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <sys/stat.h>

// Shaders call by call: the texts of the variants, the order of calls, and the printed messages. The
// recording GL counts the names of shaders and programs together, from 1.

namespace vellum {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char VERTEX[] = "GL_VERTEX_SHADER";
constexpr char FRAGMENT[] = "GL_FRAGMENT_SHADER";
constexpr char GEOMETRY[] = "GL_GEOMETRY_SHADER_EXT";

// == Definitions and variants ==

class Shader_gl_calls_test : public Stages_fixture {
protected:
    Shader_gl stage;
};

TEST_F(Shader_gl_calls_test, newStageIsEmpty) {
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_EQ(stage.getInfoLog(), "");
    EXPECT_EQ(stage.getCompilationLog(), "");
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, definitionsGiveBitsOfMasksAndCompileNothing) {
    for (unsigned int bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(stage.addDefinition("#define A"), 1U << bit);
    }
    EXPECT_EQ(stage.addDefinition("#define A"), 0U) << "no mask names the 33rd";
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, withoutDefinitionsThereIsOneVariant) {
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "void main() {}", false));
    EXPECT_EQ(callsOf(recording), variantMade(1, VERTEX, "void main() {}"));
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_EQ(stage.getID(1), 0U);
    EXPECT_EQ(stage.getID(0xFFFFFFFFU), 0U);
}

TEST_F(Shader_gl_calls_test, twoDefinitionsMakeFourVariants) {
    EXPECT_EQ(stage.addDefinition("#define A"), 1U);
    EXPECT_EQ(stage.addDefinition("#define B 2"), 2U);
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(1, FRAGMENT, "text"), variantMade(2, FRAGMENT, "#define A\ntext"),
                      variantMade(3, FRAGMENT, "#define B 2\ntext"),
                      variantMade(4, FRAGMENT, "#define A\n#define B 2\ntext")}));
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_EQ(stage.getID(1), 2U);
    EXPECT_EQ(stage.getID(2), 3U);
    EXPECT_EQ(stage.getID(3), 4U);
    EXPECT_EQ(stage.getID(4), 0U);
}

TEST_F(Shader_gl_calls_test, linesOfVariantStandInOrderOfTheirBits) {
    for (char const* line : {"C", "", "a\nb", "#define D"}) {
        stage.addDefinition(line);
    }
    EXPECT_TRUE(stage.loadShaderSource(GEOMETRY_STAGE, "", false));
    std::vector<gl_spy::Call> const sources = recording.named("glShaderSource");
    ASSERT_EQ(sources.size(), 16U);
    EXPECT_EQ(sources[0].strings.at(0), "");
    EXPECT_EQ(sources[2].strings.at(0), "\n");
    EXPECT_EQ(sources[5].strings.at(0), "C\na\nb\n");
    EXPECT_EQ(sources[9].strings.at(0), "C\n#define D\n");
    EXPECT_EQ(sources[15].strings.at(0), "C\n\na\nb\n#define D\n");
    EXPECT_EQ(recording.named("glCreateShader")[0].arguments[0], GEOMETRY);
}

TEST_F(Shader_gl_calls_test, definitionsThatComeLateWaitForNextLoad) {
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.addDefinition("#define A"), 1U);
    EXPECT_EQ(stage.getID(1), 0U);
    recording.clear();
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "other", false));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(2, VERTEX, "other"), variantMade(3, VERTEX, "#define A\nother")}));
    EXPECT_EQ(stage.getID(1), 3U);
}

TEST_F(Shader_gl_calls_test, deliberatelySecondLoadLeavesFormerObjects) {
    stage.loadShaderSource(VERTEX_STAGE, "first", false);
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "second", false));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(1, VERTEX, "first"), variantMade(2, FRAGMENT, "second")}));
    EXPECT_EQ(stage.getID(0), 2U);
    EXPECT_EQ(driver.liveObjects(), 2U);
}

TEST_F(Shader_gl_calls_test, millionsOfVariantsAreRefused) {
    for (unsigned int i = 0; i < 31; ++i) {
        stage.addDefinition("#define A");
    }
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, missingTextsAreEmpty) {
    stage.addDefinition(nullptr);
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, nullptr, false));
    EXPECT_EQ(callsOf(recording), joined({variantMade(1, VERTEX, ""), variantMade(2, VERTEX, "\n")}));
}

// == Failures and logs ==

TEST_F(Shader_gl_calls_test, loadStopsAtFirstVariantThatFails) {
    stage.addDefinition("#define A");
    stage.addDefinition("#define B");
    refuse("#define B", "0:1: no B");
    StreamCapture const output(std::cout);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(output.text(), "0:1: no B\n\nwhen compiling:\nasdf\n");
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_EQ(stage.getID(1), 2U);
    EXPECT_EQ(stage.getID(2), 0U);
    EXPECT_EQ(stage.getID(3), 0U);
    EXPECT_EQ(recording.count("glCreateShader"), 3U);
    EXPECT_EQ(recording.count("glCompileShader"), 3U);
    EXPECT_EQ(recording.texts().back(), "glDeleteShader(3)");
    EXPECT_EQ(driver.liveObjects(), 2U);
}

TEST_F(Shader_gl_calls_test, failedStageHasNoVariant) {
    driver.shaderStatus(false, "bad");
    StreamCapture const output(std::cout);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(output.text(), "bad\n\nwhen compiling:\nasdf\n");
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Shader_gl_calls_test, failuresWithoutLogAndWarningsPrintNothing) {
    StreamCapture const output(std::cout);
    driver.shaderStatus(false, "");
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    driver.shaderStatus(true, "a warning");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(output.text(), "");
}

TEST_F(Shader_gl_calls_test, deliberatelyLabelOfEveryStageIsAsdf) {
    stage.addDefinition("#define A");
    stage.loadShaderSource(FRAGMENT_STAGE, "text", false);
    EXPECT_THAT(layer.requests, ElementsAre("checkShaderCompilationErrors(1, asdf)",
                                            "checkShaderCompilationErrors(2, asdf)"));
}

TEST_F(Shader_gl_calls_test, layerChecksObjectThatFailed) {
    driver.shaderStatus(false, "");
    EXPECT_FALSE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    EXPECT_THAT(layer.requests, ElementsAre("checkShaderCompilationErrors(1, asdf)"));
}

TEST_F(Shader_gl_calls_test, stagesCompileWithoutLayer) {
    Core_RL* const former = VL_Raster;
    VL_Raster = nullptr;
    StreamCapture const output(std::cout);
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    driver.shaderStatus(false, "bad");
    EXPECT_FALSE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    EXPECT_EQ(output.text(), "");
    VL_Raster = former;
}

TEST_F(Shader_gl_calls_test, loadThatFailsKeepsFormerVariantsThatItDidNotReach) {
    stage.addDefinition("#define A");
    stage.addDefinition("#define B");
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    refuse("#define A\nother", "bad");
    StreamCapture const output(std::cout);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "other", false));
    EXPECT_EQ(stage.getID(0), 5U);
    EXPECT_EQ(stage.getID(1), 0U);
    EXPECT_EQ(stage.getID(2), 3U);
    EXPECT_EQ(stage.getID(3), 4U);
}

TEST_F(Shader_gl_calls_test, infoLogJoinsLogsOfAllVariantsInOrder) {
    stage.addDefinition("#define A");
    stage.addDefinition("#define B");
    driver.shaderStatus(true, "plain;")
        .shaderStatus(true, "with A;",
                      [](std::string const& source) { return source.find("#define A") == 0; })
        .shaderStatus(false, "with B;",
                      [](std::string const& source) { return source.find("#define B") == 0; });
    StreamCapture const output(std::cout);
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    recording.clear();
    EXPECT_EQ(stage.getInfoLog(), "plain;with A;");
    EXPECT_THAT(callsOf(recording),
                ElementsAre("glGetShaderInfoLog(1, 4096)", "glGetShaderInfoLog(2, 4096)"));
    EXPECT_EQ(driver.liveObjects(), 2U);
}

TEST_F(Shader_gl_calls_test, eachLogIsCutAt4095Characters) {
    stage.addDefinition("#define A");
    driver.shaderStatus(true, std::string(5000, 'x'));
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.getInfoLog(), std::string(std::size_t{2} * 4095, 'x'));
    driver.shaderStatus(true, "");
    EXPECT_EQ(stage.getInfoLog(), "");
}

TEST_F(Shader_gl_calls_test, deliberatelyCompilationLogStaysEmptyAfterFailure) {
    driver.shaderStatus(false, "bad");
    StreamCapture const output(std::cout);
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.getCompilationLog(), "");
}

TEST_F(Shader_gl_calls_test, deliberatelyMissingVariantsAreDeleted) {
    refuse("#define B", "bad");
    StreamCapture const output(std::cout);
    {
        Shader_gl other;
        other.addDefinition("#define A");
        other.addDefinition("#define B");
        other.loadShaderSource(VERTEX_STAGE, "text", false);
        recording.clear();
    }
    EXPECT_THAT(callsOf(recording), ElementsAre("glDeleteShader(1)", "glDeleteShader(2)", "glDeleteShader(0)",
                                                "glDeleteShader(0)"));
}

// == Files ==

/// Runs in the folder "inner" of a temporary folder.
class Shader_gl_files_calls_test : public Shader_gl_calls_test {
protected:
    Shader_gl_files_calls_test() {
        std::filesystem::create_directory(folder.file("inner"));
        std::filesystem::current_path(folder.file("inner"));
    }
    ~Shader_gl_files_calls_test() override { std::filesystem::current_path(former); }

    void expectNoFile(char const* path) {
        StreamCapture const errors(std::cerr);
        StreamCapture const output(std::cout);
        EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, path, true));
        EXPECT_EQ(errors.text(),
                  "can not open shader source file " + std::string(path == nullptr ? "" : path) + "\n");
        EXPECT_EQ(output.text(), "");
        EXPECT_THAT(recording.texts(), IsEmpty());
        EXPECT_EQ(stage.getID(0), 0U);
    }

    /// The text of a shader loaded from a file with these contents.
    std::string textOf(std::string const& contents) {
        folder.write("inner/text.glsl", contents);
        Shader_gl other;
        EXPECT_TRUE(other.loadShaderSource(VERTEX_STAGE, "text.glsl", true));
        return textOfLast();
    }

    TemporaryFolder folder;
    std::filesystem::path const former = std::filesystem::current_path();
};

TEST_F(Shader_gl_files_calls_test, everyLineEndsWithLineFeed) {
    EXPECT_EQ(textOf("a\nb"), "a\nb\n");
    EXPECT_EQ(textOf("a\r\nb\r"), "a\r\nb\r\n");
    EXPECT_EQ(textOf("\n\na"), "\n\na\n");
}

TEST_F(Shader_gl_files_calls_test, deliberatelyLineFeedAtEndGivesEmptyLine) {
    EXPECT_EQ(textOf("a\n"), "a\n\n");
    EXPECT_EQ(textOf("a\nb\n"), "a\nb\n\n");
    EXPECT_EQ(textOf("\n"), "\n\n");
    EXPECT_EQ(textOf(""), "\n");
}

TEST_F(Shader_gl_files_calls_test, linesMayHaveAnyLength) {
    for (std::size_t const length : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        std::string const line(length, 'x');
        EXPECT_EQ(textOf(line + "\nb"), line + "\nb\n") << length;
    }
}

TEST_F(Shader_gl_files_calls_test, fileIsCompiledInAllVariants) {
    folder.write("inner/a", "text");
    stage.addDefinition("#define A");
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "a", true));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(1, FRAGMENT, "text\n"), variantMade(2, FRAGMENT, "#define A\ntext\n")}));
}

TEST_F(Shader_gl_files_calls_test, deliberatelyFilesAreAppended) {
    folder.write("inner/a", "one\n");
    folder.write("inner/b", "two");
    stage.loadShaderSource(VERTEX_STAGE, "a", true);
    stage.loadShaderSource(VERTEX_STAGE, "b", true);
    EXPECT_EQ(textOfLast(), "one\n\ntwo\n");
    stage.loadShaderSource(VERTEX_STAGE, "b", true);
    EXPECT_EQ(textOfLast(), "one\n\ntwo\ntwo\n");
    stage.loadShaderSource(VERTEX_STAGE, "text;", false);
    EXPECT_EQ(textOfLast(), "text;");
    stage.loadShaderSource(VERTEX_STAGE, "b", true);
    EXPECT_EQ(textOfLast(), "text;two\n");
}

TEST_F(Shader_gl_files_calls_test, missingFileIsSearchedOneFolderUp) {
    folder.write("above", "from above");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "above", true));
    EXPECT_EQ(textOfLast(), "from above\n");
}

TEST_F(Shader_gl_files_calls_test, fileInFolderComesBeforeFileAbove) {
    folder.write("inner/both", "here");
    folder.write("both", "above");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "both", true));
    EXPECT_EQ(textOfLast(), "here\n");
}

TEST_F(Shader_gl_files_calls_test, missingFileKeepsVariantsAndText) {
    folder.write("inner/a", "one");
    stage.loadShaderSource(VERTEX_STAGE, "a", true);
    StreamCapture const errors(std::cerr);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "none", true));
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "a", true));
    EXPECT_EQ(textOfLast(), "one\none\n");
}

TEST_F(Shader_gl_files_calls_test, missingAndSpecialFilesAreReportedByPath) {
    for (char const* path : {static_cast<char const*>(nullptr), "", ".", "shaders/none.glsl", "/dev/zero"}) {
        expectNoFile(path);
    }
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    expectNoFile("pipe");
}

TEST_F(Shader_gl_files_calls_test, hugeFileIsRefused) {
    std::filesystem::resize_file(folder.write("inner/huge", "text"), std::uintmax_t{1} << 34);  // sparse
    expectNoFile("huge");
}

TEST_F(Shader_gl_files_calls_test, zeroByteEndsLineButNotText) {
    EXPECT_EQ(textOf(std::string("one\0rest\ntwo", 12)), "one\ntwo\n");
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes.push_back(static_cast<char>(i * 37));
    }
    textOf(bytes);
}

// == Pass-through texts ==

TEST(Shader_gl_passThrough_calls_test, vertexTextPassesAllAttributesOn) {
    std::string const text = Shader_gl::vertexPassThrough();
    EXPECT_THAT(text, Not(HasSubstr("#version")));
    for (char const* part :
         {"main", "gl_Position", "ftransform()", "gl_TexCoord[0]", "gl_MultiTexCoord0", "gl_TexCoord[1]",
          "gl_MultiTexCoord1", "gl_TexCoord[2]", "gl_MultiTexCoord2", "gl_FrontColor", "gl_Color",
          "gl_FrontSecondaryColor", "gl_SecondaryColor", "gl_FogFragCoord", "gl_FogCoord"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

TEST(Shader_gl_passThrough_calls_test, geometryTextPassesAllAttributesOn) {
    std::string const text = Shader_gl::geometryPassThrough();
    EXPECT_THAT(text, StartsWith("#version 120\n#extension GL_EXT_geometry_shader4 : enable\n"));
    for (char const* part : {"gl_VerticesIn", "gl_PositionIn[i]", "gl_TexCoordIn[i][0]", "gl_TexCoord[0]",
                             "gl_FrontColorIn[i]", "gl_BackColorIn[i]", "gl_FrontSecondaryColorIn[i]",
                             "gl_BackSecondaryColorIn[i]", "gl_FogFragCoordIn[i]"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
    std::size_t const emit = text.find("EmitVertex()");
    std::size_t const end = text.find("EndPrimitive()");
    ASSERT_NE(emit, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    EXPECT_LT(emit, end);
    EXPECT_EQ(text.find("EmitVertex()", emit + 1), std::string::npos);
    EXPECT_EQ(text.find("EndPrimitive()", end + 1), std::string::npos);
}

TEST(Shader_gl_passThrough_calls_test, fragmentTextEndsWithoutLineFeed) {
    std::string const text = Shader_gl::fragmentPassThrough();
    std::string const end = "gl_FragColor = gl_Color;}";
    ASSERT_GE(text.size(), end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

}  // namespace

}  // namespace vellum
