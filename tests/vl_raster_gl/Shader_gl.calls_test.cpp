#include "Shader_gl.h"

#include "Core_RL_GL.h"
#include "Program_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using gl_spy::Recording;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

class Shader_gl_calls_test : public testing::Test {
protected:
    Shader_gl_calls_test() { VL_Raster = &layer; }
    ~Shader_gl_calls_test() override { VL_Raster = nullptr; }

    // The texts that were given to GL, one for each variant.
    static Texts sources(Recording const& recording) {
        Texts texts;
        for (gl_spy::Call const& call : recording.named("glShaderSource")) {
            texts.insert(texts.end(), call.strings.begin(), call.strings.end());
        }
        return texts;
    }

    // The text that a stage makes of a file.
    Texts sourcesOfFile(std::string const& content) {
        Shader_gl shader;
        Recording const recording;
        EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, folder.write("stage", content).c_str(), true));
        return sources(recording);
    }

    void expectNoFile(std::string const& path) {
        Shader_gl shader;
        Recording const recording;
        StreamCapture const errors(std::cerr);
        EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, path.c_str(), true));
        EXPECT_EQ(errors.text(), "can not open shader source file " + path + "\n");
        EXPECT_THAT(recording.texts(), IsEmpty());
        EXPECT_EQ(shader.getID(0), 0U);
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    TemporaryFolder folder;
};

// == Variants ==

TEST_F(Shader_gl_calls_test, newStageIsEmptyAndMakesNoCall) {
    Recording const recording;
    {
        Shader_gl shader;
        EXPECT_EQ(shader.getID(0), 0U);
        EXPECT_EQ(shader.getID(0xFFFFFFFF), 0U);
        EXPECT_EQ(shader.getInfoLog(), "");
        EXPECT_EQ(shader.getCompilationLog(), "");
    }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, withoutDefinitionsThereIsOneVariant) {
    Shader_gl shader;
    Recording const recording;
    EXPECT_TRUE(shader.loadShaderSource(GL_FRAGMENT_SHADER, "void main() {}", false));
    EXPECT_THAT(recording.texts(),
                ElementsAre("glCreateShader(GL_FRAGMENT_SHADER)",
                            "glShaderSource(1, 1, {\"void main() {}\"}, null)", "glCompileShader(1)",
                            "glGetShaderiv(1, GL_COMPILE_STATUS, pointer)",
                            // the check of the render layer
                            "glGetShaderiv(1, GL_COMPILE_STATUS, pointer)",
                            "glGetShaderiv(1, GL_INFO_LOG_LENGTH, pointer)"));
    EXPECT_EQ(shader.getID(0), 1U);
    EXPECT_EQ(shader.getID(1), 0U);
}

TEST_F(Shader_gl_calls_test, everyStageTypeIsPassedOn) {
    for (unsigned int const type : {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER, GL_GEOMETRY_SHADER_EXT}) {
        Shader_gl shader;
        Recording const recording;
        EXPECT_TRUE(shader.loadShaderSource(type, "", false));
        EXPECT_THAT(recording.named("glCreateShader")[0].enums, ElementsAre(type));
    }
}

TEST_F(Shader_gl_calls_test, definitionsAnswerTheirMaskBits) {
    Shader_gl shader;
    Recording const recording;
    EXPECT_EQ(shader.addDefinition("#define A"), 1U);
    EXPECT_EQ(shader.addDefinition("#define B"), 2U);
    EXPECT_EQ(shader.addDefinition("#define C"), 4U);
    EXPECT_EQ(shader.addDefinition("#define A"), 8U) << "a line may come twice";
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, twoDefinitionsMakeFourVariants) {
    Shader_gl shader;
    shader.addDefinition("#define A");
    shader.addDefinition("#define B");
    Recording const recording;
    EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_THAT(sources(recording),
                ElementsAre("text", "#define A\ntext", "#define B\ntext", "#define A\n#define B\ntext"));
    for (unsigned int mask = 0; mask < 4; ++mask) {
        EXPECT_EQ(shader.getID(mask), mask + 1);
    }
    EXPECT_EQ(shader.getID(4), 0U);
}

TEST_F(Shader_gl_calls_test, definitionsAreWholeLinesAsGiven) {
    Shader_gl shader;
    shader.addDefinition("anything at all");
    shader.addDefinition(nullptr);
    Recording const recording;
    EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_THAT(sources(recording),
                ElementsAre("text", "anything at all\ntext", "\ntext", "anything at all\n\ntext"));
}

TEST_F(Shader_gl_calls_test, failedVariantStopsTheLoadAndIsDeleted) {
    driver.shaderStatus(false, "0:1: no B",
                        [](std::string const& source) { return source.find("B") != std::string::npos; });
    Shader_gl shader;
    shader.addDefinition("#define A");
    shader.addDefinition("#define B");
    Recording const recording;
    StreamCapture const output(std::cout);
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_NE(shader.getID(0), 0U);
    EXPECT_NE(shader.getID(1), 0U);
    EXPECT_EQ(shader.getID(2), 0U);
    EXPECT_EQ(shader.getID(3), 0U);
    EXPECT_EQ(recording.count("glCreateShader"), 3U) << "variant 3 is not tried";
    EXPECT_EQ(recording.texts().back(), "glDeleteShader(3)");
    EXPECT_EQ(driver.liveObjects(), 2U);
    EXPECT_EQ(output.text(), "0:1: no B\n\nwhen compiling:\nasdf\n");
}

TEST_F(Shader_gl_calls_test, failedPlainVariantLeavesNone) {
    driver.shaderStatus(false, "no");
    StreamCapture const output(std::cout);
    Shader_gl shader;
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_EQ(shader.getID(0), 0U);
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Shader_gl_calls_test, withoutRenderLayerLoadingWorksAndPrintsNothing) {
    VL_Raster = nullptr;
    StreamCapture const output(std::cout);
    Shader_gl shader;
    EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    driver.shaderStatus(false, "no");
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_EQ(output.text(), "");
}

TEST_F(Shader_gl_calls_test, nullTextIsEmpty) {
    Shader_gl shader;
    Recording const recording;
    EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, nullptr, false));
    EXPECT_THAT(sources(recording), ElementsAre(""));
}

TEST_F(Shader_gl_calls_test, textReplacesTheFormerText) {
    Shader_gl shader;
    shader.loadShaderSource(GL_VERTEX_SHADER, "first", false);
    Recording const recording;
    EXPECT_TRUE(shader.loadShaderSource(GL_FRAGMENT_SHADER, "second", false));
    EXPECT_THAT(sources(recording), ElementsAre("second"));
    EXPECT_THAT(recording.named("glCreateShader")[0].enums, ElementsAre(GL_FRAGMENT_SHADER));
}

TEST_F(Shader_gl_calls_test, deliberatelyLoadingAgainLeavesTheFormerObjectsToThemselves) {
    Recording const recording;
    {
        Shader_gl shader;
        shader.loadShaderSource(GL_VERTEX_SHADER, "first", false);
        shader.loadShaderSource(GL_VERTEX_SHADER, "second", false);
        EXPECT_EQ(shader.getID(0), 2U);
    }
    ASSERT_EQ(recording.count("glDeleteShader"), 1U);
    EXPECT_EQ(recording.texts().back(), "glDeleteShader(2)");
    EXPECT_EQ(driver.liveObjects(), 1U);
}

TEST_F(Shader_gl_calls_test, failureOfALaterLoadLeavesNoDeletedNameBehind) {
    Shader_gl shader;
    shader.loadShaderSource(GL_VERTEX_SHADER, "first", false);
    driver.shaderStatus(false, "");
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, "second", false));
    EXPECT_EQ(shader.getID(0), 0U);
}

TEST_F(Shader_gl_calls_test, tooManyDefinitionsAreRefusedWithoutAnyCall) {
    Shader_gl shader;
    for (int i = 0; i < 31; ++i) {
        EXPECT_EQ(shader.addDefinition("#define X"), 1U << i);
    }
    EXPECT_EQ(shader.addDefinition("#define X"), 0x80000000U);
    EXPECT_EQ(shader.addDefinition("#define X"), 0U) << "no mask names the 33rd";
    Recording const recording;
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, "text", false));
    EXPECT_THAT(recording.texts(), IsEmpty());
}

// == Files ==

TEST_F(Shader_gl_calls_test, fileIsReadLineByLine) {
    EXPECT_THAT(sourcesOfFile("one\ntwo"), ElementsAre("one\ntwo\n"));
}

TEST_F(Shader_gl_calls_test, deliberatelyLastLineFeedOfAFileGivesAnEmptyLine) {
    EXPECT_THAT(sourcesOfFile("one\ntwo\n"), ElementsAre("one\ntwo\n\n"));
    EXPECT_THAT(sourcesOfFile("\n"), ElementsAre("\n\n"));
    EXPECT_THAT(sourcesOfFile(""), ElementsAre("\n"));
}

TEST_F(Shader_gl_calls_test, carriageReturnsStay) {
    EXPECT_THAT(sourcesOfFile("one\r\ntwo"), ElementsAre("one\r\ntwo\n"));
}

TEST_F(Shader_gl_calls_test, linesOfAnyLengthAreRead) {
    for (std::size_t const length : {1022U, 1023U, 1024U, 1025U, 65536U, 1000000U}) {
        std::string const line(length, 'x');
        EXPECT_THAT(sourcesOfFile(line + "\nlast"), ElementsAre(line + "\nlast\n")) << length;
    }
}

TEST_F(Shader_gl_calls_test, binaryFileIsHarmless) {
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes.push_back(static_cast<char>(i * 37));
    }
    EXPECT_EQ(sourcesOfFile(bytes).size(), 1U);
    // A zero byte ends its line, not the text.
    EXPECT_THAT(sourcesOfFile(std::string("one\0rest\ntwo", 12)), ElementsAre("one\ntwo\n"));
}

TEST_F(Shader_gl_calls_test, missingFileIsReportedAndMakesNoCall) {
    expectNoFile(folder.file("missing.vert"));
    expectNoFile("");
}

TEST_F(Shader_gl_calls_test, nullPathIsReportedAsAnEmptyOne) {
    Shader_gl shader;
    StreamCapture const errors(std::cerr);
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, nullptr, true));
    EXPECT_EQ(errors.text(), "can not open shader source file \n");
}

TEST_F(Shader_gl_calls_test, folderPipeAndDeviceAreNoFiles) {
    expectNoFile(folder.file("."));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    expectNoFile(folder.file("pipe"));
    expectNoFile("/dev/zero");
}

TEST_F(Shader_gl_calls_test, hugeFileIsRefused) {
    std::string const path = folder.write("huge", "void main() {}");
    std::filesystem::resize_file(path, std::uintmax_t{1} << 34);  // sparse: takes no room
    expectNoFile(path);
}

TEST_F(Shader_gl_calls_test, fileOneFolderUpIsFound) {
    folder.write("above.vert", "from above");
    std::filesystem::create_directory(folder.file("inner"));
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder.file("inner"));
    Shader_gl shader;
    Recording const recording;
    StreamCapture const errors(std::cerr);
    EXPECT_TRUE(shader.loadShaderSource(GL_VERTEX_SHADER, "above.vert", true));
    EXPECT_THAT(sources(recording), ElementsAre("from above\n"));
    EXPECT_EQ(errors.text(), "");

    folder.write("inner/above.vert", "from here");
    Shader_gl nearer;
    EXPECT_TRUE(nearer.loadShaderSource(GL_VERTEX_SHADER, "above.vert", true));
    EXPECT_EQ(sources(recording).back(), "from here\n") << "the nearer file comes first";
    std::filesystem::current_path(before);
}

TEST_F(Shader_gl_calls_test, deliberatelyFilesAreAppendedToTheText) {
    std::string const path = folder.write("stage", "one");
    Shader_gl shader;
    Recording const recording;
    shader.loadShaderSource(GL_VERTEX_SHADER, path.c_str(), true);
    shader.loadShaderSource(GL_VERTEX_SHADER, path.c_str(), true);
    EXPECT_THAT(sources(recording), ElementsAre("one\n", "one\none\n"));
    shader.loadShaderSource(GL_VERTEX_SHADER, "text;", false);
    shader.loadShaderSource(GL_VERTEX_SHADER, path.c_str(), true);
    EXPECT_EQ(sources(recording).back(), "text;one\n");
}

TEST_F(Shader_gl_calls_test, missingFileLeavesTheLoadedVariantsAlone) {
    Shader_gl shader;
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    StreamCapture const errors(std::cerr);
    EXPECT_FALSE(shader.loadShaderSource(GL_VERTEX_SHADER, folder.file("missing").c_str(), true));
    EXPECT_EQ(shader.getID(0), 1U);
}

// == Logs ==

TEST_F(Shader_gl_calls_test, infoLogIsThatOfAllVariants) {
    driver.shaderStatus(true, "plain;").shaderStatus(true, "with A;", [](std::string const& source) {
        return source.find("A") != std::string::npos;
    });
    Shader_gl shader;
    shader.addDefinition("#define A");
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    Recording const recording;
    EXPECT_EQ(shader.getInfoLog(), "plain;with A;");
    EXPECT_THAT(recording.texts(), ElementsAre("glGetShaderInfoLog(1, 4096, null, pointer)",
                                               "glGetShaderInfoLog(2, 4096, null, pointer)"));
}

TEST_F(Shader_gl_calls_test, infoLogsAreCutAtTheBufferOf4096Characters) {
    driver.shaderStatus(true, std::string(10000, 'x'));
    Shader_gl shader;
    shader.addDefinition("#define A");
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    EXPECT_EQ(shader.getInfoLog(), std::string(2 * 4095, 'x'));
}

TEST_F(Shader_gl_calls_test, infoLogSkipsVariantsThatAreMissing) {
    driver.shaderStatus(true, "fine").shaderStatus(false, "no", [](std::string const& source) {
        return source.find("A") != std::string::npos;
    });
    StreamCapture const output(std::cout);
    Shader_gl shader;
    shader.addDefinition("#define A");
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    EXPECT_EQ(shader.getInfoLog(), "fine");
}

TEST_F(Shader_gl_calls_test, deliberatelyCompilationLogStaysEmpty) {
    driver.shaderStatus(false, "0:1: no");
    StreamCapture const output(std::cout);
    Shader_gl shader;
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    EXPECT_EQ(shader.getCompilationLog(), "");
}

// == Texts ==

TEST_F(Shader_gl_calls_test, passThroughTextsBeginAndEndAsTheirCallersExpect) {
    std::string const vertex = Shader_gl::vertexPassThrough();
    EXPECT_EQ(vertex.find("#version"), std::string::npos) << "definition lines may be put before it";
    std::string const geometry = Shader_gl::geometryPassThrough();
    EXPECT_EQ(geometry.find("#version 120\n#extension GL_EXT_geometry_shader4 : enable\n"), 0U);
    std::string const fragment = Shader_gl::fragmentPassThrough();
    std::string const ending = "gl_FragColor = gl_Color;}";
    ASSERT_GE(fragment.size(), ending.size());
    EXPECT_EQ(fragment.substr(fragment.size() - ending.size()), ending);
}

// == Lifetime ==

TEST_F(Shader_gl_calls_test, destructorDeletesEveryVariantAlsoTheMissingOnes) {
    driver.shaderStatus(false, "",
                        [](std::string const& source) { return source.find("A") != std::string::npos; });
    auto shader = std::make_unique<Shader_gl>();
    shader->addDefinition("#define A");
    shader->loadShaderSource(GL_VERTEX_SHADER, "text", false);
    Recording const recording;
    shader.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteShader(1)", "glDeleteShader(0)"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Shader_gl_calls_test, shaderDeletedFirstDetachesItselfFromEveryProgram) {
    Program_gl first;
    Program_gl second;
    auto shader = std::make_unique<Shader_gl>();
    shader->addDefinition("#define A");
    shader->loadShaderSource(GL_VERTEX_SHADER, "text", false);  // 1, 2
    first.attach(shader.get(), nullptr, nullptr);               // program 3
    second.attach(nullptr, nullptr, shader.get());              // program 4
    second.setMask(shader.get(), 1);
    Recording recording;
    shader.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDetachShader(3, 1)", "glDetachShader(4, 2)",
                                               "glDeleteShader(1)", "glDeleteShader(2)"));
    recording.clear();
    EXPECT_EQ(first.getCompilationLog(), "") << "the entry is gone";
    first.setMask(nullptr, 0);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Shader_gl_calls_test, shaderAttachedTwiceIsDetachedTwiceAndOnlyOnceGone) {
    Program_gl program;
    auto shader = std::make_unique<Shader_gl>();
    shader->loadShaderSource(GL_VERTEX_SHADER, "text", false);  // 1
    program.attach(shader.get(), nullptr, nullptr);             // program 2
    program.attach(shader.get(), nullptr, nullptr);
    Recording const recording;
    shader.reset();
    EXPECT_THAT(recording.texts(),
                ElementsAre("glDetachShader(2, 1)", "glDetachShader(2, 1)", "glDeleteShader(1)"));
}

TEST_F(Shader_gl_calls_test, programDeletedFirstIsForgotten) {
    auto program = std::make_unique<Program_gl>();
    auto shader = std::make_unique<Shader_gl>();
    shader->loadShaderSource(GL_VERTEX_SHADER, "text", false);  // 1
    program->attach(shader.get(), shader.get(), shader.get());  // program 2
    Recording recording;
    program.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteProgram(2)"));
    recording.clear();
    shader.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteShader(1)"));
    EXPECT_EQ(driver.liveObjects(), 0U);
}

TEST_F(Shader_gl_calls_test, dettachForgetsEveryAttachmentWithoutACall) {
    Shader_gl shader;  // outlives the program, which still lists it
    Program_gl program;
    Program_gl other;
    shader.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    program.attach(&shader, &shader, nullptr);
    Recording const recording;
    shader.dettach(&program);
    shader.dettach(&program);
    shader.dettach(&other);
    shader.dettach(nullptr);
    EXPECT_THAT(recording.texts(), IsEmpty());
}

}  // namespace
}  // namespace vellum
