#include "shaders_contract.h"
#include "tests/support/StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

// Stages and programs call by call: which texts the variants have, what is asked of OpenGL in which order, what
// is printed, and who signs off from whom. The recording OpenGL counts names up from 1 in one count for stages
// and programs.

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

/// An empty folder with an empty folder "inner" in it, which is the working directory as long as this lives.
class InnerFolder {
public:
    InnerFolder() : former(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "shaders_contract_XXXXXX").string();
        folder = mkdtemp(name.data());
        std::filesystem::create_directory(folder / "inner");
        std::filesystem::current_path(folder / "inner");
    }
    ~InnerFolder() {
        std::filesystem::current_path(former);
        std::filesystem::remove_all(folder);
    }
    InnerFolder(InnerFolder const&) = delete;
    InnerFolder& operator=(InnerFolder const&) = delete;

    static void write(std::string const& path, std::string const& text) {
        std::ofstream(path, std::ios::binary) << text;
    }

    std::filesystem::path folder;

private:
    std::filesystem::path former;
};

/// A layer that notes for what logs were asked.
class NotingLayer : public Core_RL_GL {
public:
    using Core_RL_GL::checkShaderCompilationErrors;

    void checkShaderCompilationErrors(unsigned int shader, char const* name) override {
        checks.emplace_back(shader, name);
    }

    std::vector<std::pair<unsigned int, std::string>> checks;
};

// == Stages: definitions and variants ==

class Shader_gl_contract_calls_test : public Shaders_contract_calls_test {
protected:
    Shader_gl stage;
};

TEST_F(Shader_gl_contract_calls_test, aNewStageIsEmpty) {
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_EQ(stage.getInfoLog(), "");
    EXPECT_EQ(stage.getCompilationLog(), "");
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_contract_calls_test, definitionsGiveTheBitsOfMasksAndCompileNothing) {
    for (unsigned int bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(stage.addDefinition("#define A"), 1U << bit);
    }
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_contract_calls_test, withoutDefinitionsThereIsOneVariant) {
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "void main() {}", false));
    EXPECT_EQ(callsOf(recording), variantMade(1, VERTEX, "void main() {}"));
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_EQ(stage.getID(1), 0U);
    EXPECT_EQ(stage.getID(0xFFFFFFFFU), 0U);
}

TEST_F(Shader_gl_contract_calls_test, twoDefinitionsMakeFourVariants) {
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

TEST_F(Shader_gl_contract_calls_test, linesOfAVariantStandInTheOrderOfTheirBits) {
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

TEST_F(Shader_gl_contract_calls_test, definitionsThatComeLateWaitForTheNextLoad) {
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.addDefinition("#define A"), 1U);
    EXPECT_EQ(stage.getID(1), 0U);
    recording.clear();
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "other", false));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(2, VERTEX, "other"), variantMade(3, VERTEX, "#define A\nother")}));
    EXPECT_EQ(stage.getID(1), 3U);
}

TEST_F(Shader_gl_contract_calls_test, deliberateASecondLoadLeavesTheFormerObjects) {
    stage.loadShaderSource(VERTEX_STAGE, "first", false);
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "second", false));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(1, VERTEX, "first"), variantMade(2, FRAGMENT, "second")}));
    EXPECT_EQ(stage.getID(0), 2U);
    EXPECT_EQ(driver.liveObjects(), 2U);
}

TEST_F(Shader_gl_contract_calls_test, millionsOfVariantsAreRefused) {
    for (unsigned int i = 0; i < 40; ++i) {
        stage.addDefinition("#define A");
    }
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(stage.getID(0), 0U);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_contract_calls_test, missingTextsAreEmpty) {
    stage.addDefinition(nullptr);
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, nullptr, false));
    EXPECT_EQ(callsOf(recording), joined({variantMade(1, VERTEX, ""), variantMade(2, VERTEX, "\n")}));
}

// == Stages: failures and logs ==

TEST_F(Shader_gl_contract_calls_test, theFirstVariantThatFailsIsTheLast) {
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
    EXPECT_EQ(driver.liveObjects(), 2U);
}

TEST_F(Shader_gl_contract_calls_test, aStageThatFailsHasNoVariant) {
    driver.shaderStatus(false, "bad");
    StreamCapture const output(std::cout);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(output.text(), "bad\n\nwhen compiling:\nasdf\n");
    EXPECT_EQ(stage.getID(0), 0U);
}

TEST_F(Shader_gl_contract_calls_test, failuresWithoutLogAndWarningsPrintNothing) {
    StreamCapture const output(std::cout);
    driver.shaderStatus(false, "");
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    driver.shaderStatus(true, "a warning");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "text", false));
    EXPECT_EQ(output.text(), "");
}

TEST_F(Shader_gl_contract_calls_test, deliberateTheLabelOfEveryStageIsAsdf) {
    NotingLayer noting;
    stage.addDefinition("#define A");
    stage.loadShaderSource(FRAGMENT_STAGE, "text", false);
    EXPECT_THAT(noting.checks, ElementsAre(std::make_pair(1U, "asdf"), std::make_pair(2U, "asdf")));
}

TEST_F(Shader_gl_contract_calls_test, theLayerIsAskedAboutTheObjectThatFailed) {
    NotingLayer noting;
    driver.shaderStatus(false, "bad");
    EXPECT_FALSE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    EXPECT_THAT(noting.checks, ElementsAre(std::make_pair(1U, "asdf")));
}

TEST_F(Shader_gl_contract_calls_test, withoutALayerStagesCompileAllTheSame) {
    Core_RL* const former = VL_Raster;
    VL_Raster = nullptr;
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    driver.shaderStatus(false, "bad");
    EXPECT_FALSE(stage.loadShaderSource(FRAGMENT_STAGE, "text", false));
    VL_Raster = former;
}

TEST_F(Shader_gl_contract_calls_test, aLoadThatFailsKeepsFormerVariantsThatItDidNotReach) {
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

TEST_F(Shader_gl_contract_calls_test, theInfoLogHasThoseOfAllVariantsInTheirOrder) {
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

TEST_F(Shader_gl_contract_calls_test, eachLogIsCutAt4095Characters) {
    stage.addDefinition("#define A");
    driver.shaderStatus(true, std::string(5000, 'x'));
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.getInfoLog(), std::string(std::size_t{2} * 4095, 'x'));
    driver.shaderStatus(true, "");
    EXPECT_EQ(stage.getInfoLog(), "");
}

TEST_F(Shader_gl_contract_calls_test, deliberateTheCompilationLogIsEmptyAfterAFailureToo) {
    driver.shaderStatus(false, "bad");
    StreamCapture const output(std::cout);
    stage.loadShaderSource(VERTEX_STAGE, "text", false);
    EXPECT_EQ(stage.getCompilationLog(), "");
}

// == Stages: files ==

class Shader_gl_file_contract_calls_test : public Shader_gl_contract_calls_test {
protected:
    /// The text that a stage has of a file with these contents.
    std::string textOf(std::string const& contents) {
        InnerFolder::write("text.glsl", contents);
        Shader_gl other;
        EXPECT_TRUE(other.loadShaderSource(VERTEX_STAGE, "text.glsl", true));
        return textOfLast();
    }

    InnerFolder folder;
};

TEST_F(Shader_gl_file_contract_calls_test, everyLineEndsWithALineFeed) {
    EXPECT_EQ(textOf("a\nb"), "a\nb\n");
    EXPECT_EQ(textOf("a\r\nb\r"), "a\r\nb\r\n");
    EXPECT_EQ(textOf("\n\na"), "\n\na\n");
}

TEST_F(Shader_gl_file_contract_calls_test, deliberateALineFeedAtTheEndGivesAnEmptyLine) {
    EXPECT_EQ(textOf("a\n"), "a\n\n");
    EXPECT_EQ(textOf("a\nb\n"), "a\nb\n\n");
    EXPECT_EQ(textOf("\n"), "\n\n");
    EXPECT_EQ(textOf(""), "\n");
}

TEST_F(Shader_gl_file_contract_calls_test, linesMayHaveAnyLength) {
    for (std::size_t const length : {1022U, 1023U, 1024U, 1025U, 100000U}) {
        std::string const line(length, 'x');
        EXPECT_EQ(textOf(line + "\nb"), line + "\nb\n") << length;
    }
}

TEST_F(Shader_gl_file_contract_calls_test, aFileIsCompiledInAllVariants) {
    InnerFolder::write("a", "text");
    stage.addDefinition("#define A");
    EXPECT_TRUE(stage.loadShaderSource(FRAGMENT_STAGE, "a", true));
    EXPECT_EQ(callsOf(recording),
              joined({variantMade(1, FRAGMENT, "text\n"), variantMade(2, FRAGMENT, "#define A\ntext\n")}));
}

TEST_F(Shader_gl_file_contract_calls_test, deliberateFilesAreAppended) {
    InnerFolder::write("a", "one\n");
    InnerFolder::write("b", "two");
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

TEST_F(Shader_gl_file_contract_calls_test, aFileIsLookedForOneFolderUp) {
    InnerFolder::write("../above", "from above");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "above", true));
    EXPECT_EQ(textOfLast(), "from above\n");
}

TEST_F(Shader_gl_file_contract_calls_test, aFileInPlaceComesBeforeTheOneAbove) {
    InnerFolder::write("both", "here");
    InnerFolder::write("../both", "above");
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "both", true));
    EXPECT_EQ(textOfLast(), "here\n");
}

TEST_F(Shader_gl_file_contract_calls_test, aMissingFileIsReportedUnderItsPath) {
    StreamCapture const errors(std::cerr);
    StreamCapture const output(std::cout);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "shaders/none.glsl", true));
    EXPECT_EQ(errors.text(), "can not open shader source file shaders/none.glsl\n");
    EXPECT_EQ(output.text(), "");
    EXPECT_THAT(recording.texts(), IsEmpty());
    EXPECT_EQ(stage.getID(0), 0U);
}

TEST_F(Shader_gl_file_contract_calls_test, aMissingFileLeavesWhatThereIs) {
    InnerFolder::write("a", "one");
    stage.loadShaderSource(VERTEX_STAGE, "a", true);
    StreamCapture const errors(std::cerr);
    EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, "none", true));
    EXPECT_EQ(stage.getID(0), 1U);
    EXPECT_TRUE(stage.loadShaderSource(VERTEX_STAGE, "a", true));
    EXPECT_EQ(textOfLast(), "one\none\n");
}

TEST_F(Shader_gl_file_contract_calls_test, noPathAndAFolderAreMissingFiles) {
    for (char const* path : {static_cast<char const*>(nullptr), "", "."}) {
        StreamCapture const errors(std::cerr);
        EXPECT_FALSE(stage.loadShaderSource(VERTEX_STAGE, path, true));
        EXPECT_EQ(errors.text(),
                  "can not open shader source file " + std::string(path == nullptr ? "" : path) + "\n");
    }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

// == Stages: texts that pass everything on ==

TEST(PassThrough_contract_test, vertexStage) {
    std::string const text = Shader_gl::vertexPassThrough();
    EXPECT_THAT(text, Not(HasSubstr("#version")));
    for (char const* part :
         {"main", "gl_Position", "ftransform()", "gl_TexCoord[0]", "gl_MultiTexCoord0", "gl_TexCoord[1]",
          "gl_MultiTexCoord1", "gl_TexCoord[2]", "gl_MultiTexCoord2", "gl_FrontColor", "gl_Color",
          "gl_FrontSecondaryColor", "gl_SecondaryColor", "gl_FogFragCoord", "gl_FogCoord"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

TEST(PassThrough_contract_test, geometryStage) {
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

TEST(PassThrough_contract_test, fragmentStageEndsWithoutALineFeed) {
    std::string const text = Shader_gl::fragmentPassThrough();
    std::string const end = "gl_FragColor = gl_Color;}";
    ASSERT_GE(text.size(), end.size());
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

// == Programs: stages ==

TEST_F(Program_gl_contract_calls_test, aNewProgramIsEmpty) {
    EXPECT_EQ(program->getId(), 0U);
    EXPECT_FALSE(program->isEnabled());
    EXPECT_EQ(program->getInfoLog(), "");
    EXPECT_EQ(program->getCompilationLog(), "");
    program.reset();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Program_gl_contract_calls_test, stagesAreAttachedInTheOrderOfTheSlots) {
    program->attach(vertex.get(), geometry.get(), fragment.get());
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", paired("glAttachShader", 5, 1),
                                     paired("glAttachShader", 5, 3), paired("glAttachShader", 5, 4)));
    EXPECT_EQ(program->getId(), PROGRAM);
    EXPECT_FALSE(program->isEnabled());
}

TEST_F(Program_gl_contract_calls_test, anyStageGoesIntoAnySlot) {
    program->attach(fragment.get(), vertex.get(), geometry.get());
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", paired("glAttachShader", 5, 4),
                                     paired("glAttachShader", 5, 1), paired("glAttachShader", 5, 3)));
}

TEST_F(Program_gl_contract_calls_test, theProgramIsMadeOnce) {
    program->attach(vertex.get(), nullptr, nullptr);
    recording.clear();
    program->attach(nullptr, nullptr, fragment.get());
    EXPECT_THAT(calls(), ElementsAre(paired("glAttachShader", 5, 4)));
}

TEST_F(Program_gl_contract_calls_test, stagesThatAreMissingOrNotLoadedAreSkipped) {
    Shader_gl empty;
    program->attach(nullptr, &empty, nullptr);
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()"));
    EXPECT_EQ(program->getId(), PROGRAM);
}

TEST_F(Program_gl_contract_calls_test, enablingLinksOnceAndOnlyNewStagesLinkAgain) {
    Shader_gl empty;
    program->attach(vertex.get(), nullptr, nullptr);
    recording.clear();
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
    EXPECT_TRUE(program->isEnabled());
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
    program->attach(nullptr, &empty, nullptr);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
    program->attach(nullptr, nullptr, fragment.get());
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre(paired("glAttachShader", 5, 4), "glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, disablingUsesNoProgram) {
    attachAndEnable();
    program->enable(false);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(0)"));
    EXPECT_FALSE(program->isEnabled());
    program->enable(true);
    recording.clear();
    program->disable();
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(0)"));
    EXPECT_FALSE(program->isEnabled());
    program->disable();
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(0)"));
}

TEST_F(Program_gl_contract_calls_test, withoutStagesProgram0IsEnabled) {
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(0)"));
    EXPECT_TRUE(program->isEnabled());
}

TEST_F(Program_gl_contract_calls_test, aProgramWhoseStagesAreMissingIsLinkedAllTheSame) {
    program->attach(nullptr, nullptr, nullptr);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", "glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aMaskExchangesTheVariant) {
    attachAndEnable();
    program->setMask(vertex.get(), 1);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 2)));
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
    program->setMask(vertex.get(), 0);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 2), paired("glAttachShader", 5, 1)));
}

TEST_F(Program_gl_contract_calls_test, theSameMaskIsSetAgain) {
    attachAndEnable();
    program->setMask(vertex.get(), 0);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 1),
                                     "glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aMaskOfAStageThatIsNotAttachedOnlyLinksAgain) {
    attachAndEnable();
    program->setMask(geometry.get(), 0);
    EXPECT_THAT(calls(), IsEmpty());
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aMaskWithoutVariantChangesNothing) {
    attachAndEnable();
    program->setMask(vertex.get(), 2);
    program->setMask(vertex.get(), 0xFFFFFFFFU);
    program->setMask(nullptr, 0);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aMaskWhoseVariantFailedChangesNothing) {
    Shader_gl stage;
    stage.addDefinition("#define BAD");
    refuse("BAD", "bad");
    {
        StreamCapture const output(std::cout);
        stage.loadShaderSource(VERTEX_STAGE, "text", false);
    }
    program->attach(&stage, nullptr, nullptr);
    program->enable(true);
    recording.clear();
    program->setMask(&stage, 1);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(" + std::to_string(program->getId()) + ")"));
}

TEST_F(Program_gl_contract_calls_test, aStageThatIsAttachedTwiceHasTwoEntries) {
    program->attach(vertex.get(), vertex.get(), nullptr);
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", paired("glAttachShader", 5, 1),
                                     paired("glAttachShader", 5, 1)));
    program->setMask(vertex.get(), 1);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 2),
                                     paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 2)));
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 2), paired("glDetachShader", 5, 2),
                                     numbered("glDeleteShader", 1), numbered("glDeleteShader", 2)));
    program.reset();
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(5)"));
}

// == Lifetimes ==

TEST_F(Program_gl_contract_calls_test, aStageThatGoesFirstIsDetachedFromAllPrograms) {
    Program_gl other;
    program->attach(vertex.get(), nullptr, fragment.get());
    other.attach(nullptr, nullptr, vertex.get());
    program->setMask(vertex.get(), 1);
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 2), paired("glDetachShader", 6, 1),
                                     numbered("glDeleteShader", 1), numbered("glDeleteShader", 2)));
}

TEST_F(Program_gl_contract_calls_test, aStageThatGoesLeavesTheProgramLinked) {
    attachAndEnable();
    fragment.reset();
    recording.clear();
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aProgramThatGoesFirstSignsOffWithoutDetaching) {
    program->attach(vertex.get(), geometry.get(), fragment.get());
    recording.clear();
    program.reset();
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(5)"));
    vertex.reset();
    fragment.reset();
    EXPECT_THAT(calls(), ElementsAre(numbered("glDeleteShader", 1), numbered("glDeleteShader", 2),
                                     numbered("glDeleteShader", 4)));
}

TEST_F(Program_gl_contract_calls_test, aProgramSignsOffFromNoOther) {
    Program_gl other;
    program->attach(vertex.get(), vertex.get(), nullptr);
    other.attach(vertex.get(), nullptr, nullptr);
    program.reset();
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 6, 1), numbered("glDeleteShader", 1),
                                     numbered("glDeleteShader", 2)));
}

TEST_F(Program_gl_contract_calls_test, anEnabledProgramIsDeletedAsItIs) {
    attachAndEnable();
    program.reset();
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(5)"));
}

TEST_F(Program_gl_contract_calls_test, aStageThatIsDettachedKnowsTheProgramNoMore) {
    Program_gl other;
    program->attach(vertex.get(), nullptr, nullptr);
    other.attach(vertex.get(), nullptr, nullptr);
    recording.clear();
    vertex->dettach(program.get());
    vertex->dettach(nullptr);
    EXPECT_THAT(calls(), IsEmpty());
    program.reset();  // it still lists the stage
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 6, 1), numbered("glDeleteShader", 1),
                                     numbered("glDeleteShader", 2)));
}

TEST_F(Program_gl_contract_calls_test, deliberateVariantsThatAreMissingAreDeletedToo) {
    refuse("#define B", "bad");
    StreamCapture const output(std::cout);
    {
        Shader_gl stage;
        stage.addDefinition("#define A");
        stage.addDefinition("#define B");
        stage.loadShaderSource(VERTEX_STAGE, "text", false);
        recording.clear();
    }
    EXPECT_THAT(calls(), ElementsAre("glDeleteShader(5)", "glDeleteShader(6)", "glDeleteShader(0)",
                                     "glDeleteShader(0)"));
}

}  // namespace

}  // namespace vellum
