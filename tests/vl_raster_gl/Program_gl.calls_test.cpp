#include "Program_gl.h"

#include "Core_RL_GL.h"
#include "Shader_gl.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using gl_spy::Recording;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// A stage with the GL shaders 1 (plain), 2 (A), 3 (B) and 4 (both), and a program that is GL's 5.
class Program_gl_calls_test : public testing::Test {
protected:
    Program_gl_calls_test() {
        VL_Raster = &layer;
        vertex.addDefinition("#define A");
        vertex.addDefinition("#define B");
        vertex.loadShaderSource(GL_VERTEX_SHADER, "text", false);
    }
    ~Program_gl_calls_test() override { VL_Raster = nullptr; }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL layer;
    Shader_gl vertex;
    Program_gl program;
};

// == Stages ==

TEST_F(Program_gl_calls_test, newProgramIsEmptyAndMakesNoCall) {
    Recording const recording;
    {
        Program_gl empty;
        EXPECT_EQ(empty.getId(), 0U);
        EXPECT_FALSE(empty.isEnabled());
        EXPECT_EQ(empty.getInfoLog(), "");
        EXPECT_EQ(empty.getCompilationLog(), "");
    }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Program_gl_calls_test, attachTakesTheStagesInOrder) {
    Shader_gl geometry;
    Shader_gl fragment;
    geometry.loadShaderSource(GL_GEOMETRY_SHADER_EXT, "text", false);  // 5
    fragment.loadShaderSource(GL_FRAGMENT_SHADER, "text", false);      // 6
    Recording const recording;
    program.attach(&vertex, &geometry, &fragment);
    EXPECT_THAT(recording.texts(), ElementsAre("glCreateProgram()", "glAttachShader(7, 1)",
                                               "glAttachShader(7, 5)", "glAttachShader(7, 6)"));
    EXPECT_EQ(program.getId(), 7U);
}

TEST_F(Program_gl_calls_test, attachSkipsMissingAndFailedStages) {
    Shader_gl unloaded;
    Recording const recording;
    program.attach(nullptr, &unloaded, nullptr);
    EXPECT_THAT(recording.texts(), ElementsAre("glCreateProgram()"));
    EXPECT_NE(program.getId(), 0U);
}

TEST_F(Program_gl_calls_test, attachMakesTheProgramOnlyOnce) {
    program.attach(nullptr, nullptr, nullptr);
    Recording const recording;
    program.attach(&vertex, nullptr, nullptr);
    EXPECT_THAT(recording.texts(), ElementsAre("glAttachShader(5, 1)"));
}

TEST_F(Program_gl_calls_test, setMaskExchangesTheVariant) {
    program.attach(&vertex, nullptr, nullptr);
    Recording recording;
    program.setMask(&vertex, 3);
    EXPECT_THAT(recording.texts(), ElementsAre("glDetachShader(5, 1)", "glAttachShader(5, 4)"));
    recording.clear();
    program.setMask(&vertex, 1);
    EXPECT_THAT(recording.texts(), ElementsAre("glDetachShader(5, 4)", "glAttachShader(5, 2)"));
}

TEST_F(Program_gl_calls_test, setMaskExchangesEveryEntryOfAStageThatIsAttachedTwice) {
    program.attach(&vertex, nullptr, &vertex);
    Recording const recording;
    program.setMask(&vertex, 2);
    EXPECT_THAT(recording.texts(), ElementsAre("glDetachShader(5, 1)", "glAttachShader(5, 3)",
                                               "glDetachShader(5, 1)", "glAttachShader(5, 3)"));
}

TEST_F(Program_gl_calls_test, setMaskOfAMissingVariantLeavesEverythingAsItWas) {
    driver.shaderStatus(false, "",
                        [](std::string const& source) { return source.find("C") != std::string::npos; });
    Shader_gl partial;
    partial.addDefinition("#define C");
    partial.loadShaderSource(GL_FRAGMENT_SHADER, "text", false);
    program.attach(&vertex, nullptr, &partial);
    program.enable(true);
    Recording const recording;
    program.setMask(&partial, 1);
    program.setMask(&vertex, 4);
    program.setMask(nullptr, 0);
    EXPECT_THAT(recording.texts(), IsEmpty());
    program.enable(true);
    EXPECT_EQ(recording.count("glLinkProgram"), 0U);
}

// == Linking and use ==

TEST_F(Program_gl_calls_test, linksOnTheFirstEnableOnly) {
    program.attach(&vertex, nullptr, nullptr);
    Recording recording;
    program.enable(true);
    EXPECT_TRUE(program.isEnabled());
    EXPECT_THAT(recording.texts(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
    recording.clear();
    program.enable(true);
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, attachAndSetMaskLinkAgain) {
    program.attach(&vertex, nullptr, nullptr);
    program.enable(true);
    Recording const recording;
    program.setMask(&vertex, 0);
    program.enable(true);
    EXPECT_EQ(recording.count("glLinkProgram"), 1U);
    program.attach(nullptr, nullptr, nullptr);
    program.enable(true);
    EXPECT_EQ(recording.count("glLinkProgram"), 1U) << "nothing was attached";
    Shader_gl fragment;
    fragment.loadShaderSource(GL_FRAGMENT_SHADER, "text", false);
    program.attach(nullptr, nullptr, &fragment);
    program.enable(true);
    EXPECT_EQ(recording.count("glLinkProgram"), 2U);
}

TEST_F(Program_gl_calls_test, deliberatelyStageThatGoesAwayLeavesTheLink) {
    auto fragment = std::make_unique<Shader_gl>();
    fragment->loadShaderSource(GL_FRAGMENT_SHADER, "text", false);
    program.attach(&vertex, nullptr, fragment.get());
    program.enable(true);
    fragment.reset();
    Recording const recording;
    program.enable(true);
    EXPECT_EQ(recording.count("glLinkProgram"), 0U);
}

TEST_F(Program_gl_calls_test, disableUsesProgramZero) {
    program.attach(&vertex, nullptr, nullptr);
    program.enable(true);
    Recording const recording;
    program.disable();
    EXPECT_FALSE(program.isEnabled());
    program.enable(true);
    program.enable(false);
    EXPECT_FALSE(program.isEnabled());
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(0)", "glUseProgram(5)", "glUseProgram(0)"));
}

TEST_F(Program_gl_calls_test, withoutStagesProgramZeroIsEnabled) {
    Recording const recording;
    program.enable(true);
    EXPECT_TRUE(program.isEnabled());
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(0)"));
}

TEST_F(Program_gl_calls_test, linkIsNotCheckedAndItsLogIsKeptByTheDriver) {
    driver.programStatus(false, "no main");
    program.attach(&vertex, nullptr, nullptr);
    StreamCapture const output(std::cout);
    Recording const recording;
    program.enable(true);
    EXPECT_TRUE(program.isEnabled());
    EXPECT_EQ(recording.count("glGetProgramiv"), 0U);
    EXPECT_EQ(program.getInfoLog(), "no main");
    EXPECT_EQ(output.text(), "");
}

TEST_F(Program_gl_calls_test, destructorDeletesTheProgramAndNoStage) {
    auto owned = std::make_unique<Program_gl>();
    owned->attach(&vertex, nullptr, nullptr);
    owned->setUniform("a", 1);
    Recording const recording;
    owned.reset();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteProgram(5)"));
}

// == Kept uniforms ==

class Program_gl_uniform_calls_test : public Program_gl_calls_test {
protected:
    Program_gl_uniform_calls_test() {
        program.attach(&vertex, nullptr, nullptr);
        program.enable(true);
    }

    // The calls of a setting that is sent at once, location 0.
    template <class Setting>
    std::vector<std::string> callsOf(Setting const& setting) {
        Recording const recording;
        setting();
        return recording.texts();
    }
};

TEST_F(Program_gl_uniform_calls_test, everySetterSendsItsTypeAndSize) {
    driver.uniformLocation("u", 7);
    int const integers[] = {1, 2, 3, 4, 5, 6};
    float const numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    std::string const look = "glGetUniformLocation(5, \"u\")";
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1); }), ElementsAre(look, "glUniform1iv(7, 1, {1})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 2); }),
                ElementsAre(look, "glUniform2iv(7, 1, {1, 2})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 2, 3); }),
                ElementsAre(look, "glUniform3iv(7, 1, {1, 2, 3})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 2, 3, 4); }),
                ElementsAre(look, "glUniform4iv(7, 1, {1, 2, 3, 4})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 3, 2, integers); }),
                ElementsAre(look, "glUniform2iv(7, 3, {1, 2, 3, 4, 5, 6})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1.5F); }),
                ElementsAre(look, "glUniform1fv(7, 1, {1.5})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1.5F, 2.0F); }),
                ElementsAre(look, "glUniform2fv(7, 1, {1.5, 2})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1.5F, 2.0F, 3.0F); }),
                ElementsAre(look, "glUniform3fv(7, 1, {1.5, 2, 3})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1.5F, 2.0F, 3.0F, 4.0F); }),
                ElementsAre(look, "glUniform4fv(7, 1, {1.5, 2, 3, 4})"));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 2, 3, numbers); }),
                ElementsAre(look, "glUniform3fv(7, 2, {1, 2, 3, 4, 5, 6})"));
    EXPECT_THAT(callsOf([&] { program.setUniformMatrix("u", 2, numbers); }),
                ElementsAre(look, "glUniformMatrix2fv(7, 1, GL_FALSE, {1, 2, 3, 4})"));
    EXPECT_THAT(callsOf([&] { program.setUniformMatrix("u", 3, numbers); }),
                ElementsAre(look, "glUniformMatrix3fv(7, 1, GL_FALSE, {1, 2, 3, 4, 5, 6, 7, 8, 9})"));
    EXPECT_THAT(callsOf([&] { program.setUniformMatrix("u", 4, numbers); }),
                ElementsAre(look, "glUniformMatrix4fv(7, 1, GL_FALSE, "
                                  "{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})"));
}

TEST_F(Program_gl_uniform_calls_test, otherSizesSendNothing) {
    int const integers[6] = {};
    float const numbers[36] = {};
    std::string const look = "glGetUniformLocation(5, \"u\")";
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 5, integers); }), ElementsAre(look));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 0, integers); }), ElementsAre(look));
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1, 6, numbers); }), ElementsAre(look));
    EXPECT_THAT(callsOf([&] { program.setUniformMatrix("u", 1, numbers); }), ElementsAre(look));
    EXPECT_THAT(callsOf([&] { program.setUniformMatrix("u", 5, numbers); }), ElementsAre(look));
}

TEST_F(Program_gl_uniform_calls_test, negativeLengthsAndMissingValuesAreIgnored) {
    float const numbers[1] = {};
    EXPECT_THAT(callsOf([&] {
                    program.setUniform("u", -1, 1, numbers);
                    program.setUniform("u", 1, -1, numbers);
                    program.setUniformMatrix("u", -4, numbers);
                    program.setUniform("u", 1, 1, static_cast<float const*>(nullptr));
                    program.setUniform("u", 1, 1, static_cast<int const*>(nullptr));
                    program.setUniformMatrix("u", 4, nullptr);
                }),
                IsEmpty());
    EXPECT_THAT(callsOf([&] { program.enable(true); }), ElementsAre("glUseProgram(5)")) << "nothing is kept";
}

TEST_F(Program_gl_uniform_calls_test, nullNameIsTheEmptyOne) {
    EXPECT_THAT(callsOf([&] { program.setUniform(nullptr, 1); })[0], "glGetUniformLocation(5, \"\")");
}

TEST_F(Program_gl_uniform_calls_test, unknownNameIsKeptAndSentToLocationMinusOne) {
    driver.uniformLocation("u", -1);
    EXPECT_THAT(callsOf([&] { program.setUniform("u", 1); }),
                ElementsAre("glGetUniformLocation(5, \"u\")", "glUniform1iv(-1, 1, {1})"));
}

TEST_F(Program_gl_uniform_calls_test, valuesAreCopied) {
    float values[] = {1, 2};
    program.setUniform("u", 1, 2, values);
    values[0] = 9;
    Recording const recording;
    program.enable(true);
    EXPECT_THAT(recording.named("glUniform2fv")[0].numbers, testing::Contains(1));
    EXPECT_THAT(recording.named("glUniform2fv")[0].numbers, testing::Not(testing::Contains(9)));
}

TEST_F(Program_gl_uniform_calls_test, everyEnableSendsAllInTheOrderOfTheirFirstSetting) {
    driver.uniformLocation("a", 1).uniformLocation("b", 2).uniformLocation("c", 3);
    program.disable();
    Recording recording;
    program.setUniform("b", 1.0F);
    program.setUniform("a", 2.0F);
    program.setUniform("c", 3.0F);
    program.setUniform("b", 4.0F);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "out of use they are only kept";
    program.enable(true);
    std::vector<std::string> const expected{"glUseProgram(5)",         "glGetUniformLocation(5, \"b\")",
                                            "glUniform1fv(2, 1, {4})", "glGetUniformLocation(5, \"a\")",
                                            "glUniform1fv(1, 1, {2})", "glGetUniformLocation(5, \"c\")",
                                            "glUniform1fv(3, 1, {3})"};
    EXPECT_EQ(recording.texts(), expected);
    recording.clear();
    program.enable(true);
    EXPECT_EQ(recording.texts(), expected) << "locations are looked up anew";
}

TEST_F(Program_gl_uniform_calls_test, enableSendsAUniformOnceAndALaterSettingAtOnce) {
    program.disable();
    program.setUniform("u", 1);
    Recording recording;
    program.enable(true);
    EXPECT_EQ(recording.count("glUniform1iv"), 1U);
    recording.clear();
    program.setUniform("u", 2);
    EXPECT_EQ(recording.count("glUniform1iv"), 1U);
}

TEST_F(Program_gl_uniform_calls_test, anotherTypeTakesTheRecordOverInItsPlace) {
    driver.uniformLocation("a", 1).uniformLocation("b", 2);
    float const matrix[] = {1, 0, 0, 1};
    program.setUniform("a", 1.0F, 2.0F, 3.0F);
    program.setUniform("b", 1);
    program.setUniform("a", 5);
    Recording recording;
    program.enable(true);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(5)", "glGetUniformLocation(5, \"a\")", "glUniform1iv(1, 1, {5})",
                            "glGetUniformLocation(5, \"b\")", "glUniform1iv(2, 1, {1})"));
    program.setUniformMatrix("a", 2, matrix);
    program.setUniform("b", 2.5F);  // as long as the integer before it
    recording.clear();
    program.enable(true);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glUseProgram(5)", "glGetUniformLocation(5, \"a\")",
                            "glUniformMatrix2fv(1, 1, GL_FALSE, {1, 0, 0, 1})",
                            "glGetUniformLocation(5, \"b\")", "glUniform1fv(2, 1, {2.5})"));
}

TEST_F(Program_gl_uniform_calls_test, uniformsAreFoundInAnyOrder) {
    for (char const* const name : {"a", "b", "c", "d"}) {
        program.setUniform(name, 1);
    }
    for (char const* const name : {"d", "b", "a", "c", "c", "a", "d"}) {
        program.setUniform(name, 2);
    }
    program.setUniform("b", 3);
    Recording const recording;
    program.enable(true);
    std::vector<std::string> sent;
    for (gl_spy::Call const& call : recording.calls()) {
        if (call.name == "glGetUniformLocation") {
            sent.push_back(call.strings.at(0));
        } else if (call.name == "glUniform1iv") {
            sent.back() += call.arguments.back();
        }
    }
    EXPECT_THAT(sent, ElementsAre("a{2}", "b{3}", "c{2}", "d{2}"));
}

TEST_F(Program_gl_uniform_calls_test, aKeySetsWhatItsNameSets) {
    driver.uniformLocation("value", 7);
    Program_gl::UniformKey key("value");
    program.setUniform(key, 1.0F);
    program.setUniform("other", 1);
    Recording recording;
    program.enable(true);
    EXPECT_EQ(recording.texts().at(2), "glUniform1fv(7, 1, {1})")
        << "kept, in the place of its first setting";
    recording.clear();
    program.setUniform(key, 2.0F);
    EXPECT_EQ(recording.texts().back(), "glUniform1fv(7, 1, {2})") << "sent at once";
    program.setUniform("value", 3.0F);
    EXPECT_EQ(recording.texts().back(), "glUniform1fv(7, 1, {3})");
    program.setUniform(key, 4.0F, 5.0F, 6.0F);
    EXPECT_EQ(recording.texts().back(), "glUniform3fv(7, 1, {4, 5, 6})");
    program.setUniform(key, 4.0F, 5.0F, 6.0F, 7.0F);
    EXPECT_EQ(recording.texts().back(), "glUniform4fv(7, 1, {4, 5, 6, 7})");
    program.disable();
    recording.clear();
    program.setUniform(key, 8);
    EXPECT_THAT(recording.texts(), IsEmpty());
    program.enable(true);
    EXPECT_EQ(recording.texts().at(2), "glUniform1iv(7, 1, {8})");
    EXPECT_EQ(recording.count("glUniform1iv"), 2U) << "one record, not one for each type";
}

TEST_F(Program_gl_uniform_calls_test, aKeyFollowsItsNameToAnotherTypeAndLength) {
    driver.uniformLocation("value", 7);
    Program_gl::UniformKey key("value");
    program.setUniform(key, 1.0F, 2.0F, 3.0F);
    int const numbers[] = {1, 2, 3, 4, 5, 6};
    program.setUniform("value", 2, 3, numbers);
    program.setUniform(key, 4.0F, 5.0F, 6.0F);
    float const matrix[16] = {};
    program.setUniformMatrix("value", 4, matrix);
    program.setUniform(key, 7.0F, 8.0F, 9.0F);
    Recording const recording;
    program.enable(true);
    EXPECT_EQ(recording.texts().back(), "glUniform3fv(7, 1, {7, 8, 9})");
}

TEST_F(Program_gl_uniform_calls_test, namesAreComparedExactly) {
    driver.uniformLocation("u", 1).uniformLocation("U", 2).uniformLocation("u ", 3);
    program.setUniform("u", 1);
    program.setUniform("U", 2);
    program.setUniform("u ", 3);
    Recording const recording;
    program.enable(true);
    EXPECT_EQ(recording.count("glUniform1iv"), 3U);
}

// == Uniforms that are not kept ==

TEST_F(Program_gl_calls_test, samplerIsBoundAndNotKept) {
    program.attach(&vertex, nullptr, nullptr);
    program.enable(true);
    program.disable();
    driver.uniformLocation("map", 4);
    Recording recording;
    program.setUniformSampler("map", 33, 2);
    EXPECT_THAT(recording.texts(), ElementsAre("glUseProgram(5)", "glGetUniformLocation(5, \"map\")",
                                               "glActiveTexture(GL_TEXTURE2)",
                                               "glBindTexture(GL_TEXTURE_2D, 33)", "glUniform1i(4, 2)"));
    EXPECT_FALSE(program.isEnabled()) << "deliberate: the program is in use and does not know";
    recording.clear();
    program.enable(true);
    EXPECT_EQ(recording.count("glUniform1i"), 0U);
}

TEST_F(Program_gl_calls_test, uniformsAreReadBackFromGl) {
    program.attach(&vertex, nullptr, nullptr);
    program.enable(true);
    program.setUniform("v", 1.0F, 2.0F, 3.0F);
    program.setUniform("i", 42);
    float vector[3] = {};
    int integer = 0;
    Recording const recording;
    program.getUniform("v", vector);
    program.getUniform("i", &integer);
    EXPECT_THAT(vector, ElementsAre(1, 2, 3));
    EXPECT_EQ(integer, 42);
    EXPECT_EQ(recording.texts().size(), 4U);
    EXPECT_EQ(recording.calls()[1].name, "glGetUniformfv");
    EXPECT_EQ(recording.calls()[3].name, "glGetUniformiv");
}

// == Logs and support ==

TEST_F(Program_gl_calls_test, infoLogIsCutAtTheBufferOf4096Characters) {
    driver.programStatus(true, std::string(10000, 'x'));
    program.attach(&vertex, nullptr, nullptr);
    Recording const recording;
    EXPECT_EQ(program.getInfoLog(), std::string(4095, 'x'));
    EXPECT_THAT(recording.texts(), ElementsAre("glGetProgramInfoLog(5, 4096, null, pointer)"));
    EXPECT_EQ(Program_gl().getInfoLog(), "") << "not what the buffer held before";
}

TEST_F(Program_gl_calls_test, compilationLogIsThatOfAllStages) {
    program.attach(&vertex, nullptr, nullptr);
    EXPECT_EQ(program.getCompilationLog(), "");
}

TEST_F(Program_gl_calls_test, deliberatelyShadersListPrintsNothing) {
    program.attach(&vertex, nullptr, nullptr);
    StreamCapture const output(std::cout);
    StreamCapture const errors(std::cerr);
    Recording const recording;
    program.printShadersList();
    EXPECT_EQ(output.text() + errors.text(), "");
    EXPECT_THAT(recording.texts(), IsEmpty());
}

struct Version {
    char const* text;
    bool isEnough;
};

class Program_gl_version_calls_test : public testing::TestWithParam<Version> {};

TEST_P(Program_gl_version_calls_test, versionsFrom21OnAreEnough) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.string(GL_VERSION, GetParam().text);
    Program_gl program;
    StreamCapture const output(std::cout);
    EXPECT_EQ(program.checkGeometryShaderSupport(), GetParam().isEnough);
    EXPECT_EQ(output.text(), GetParam().isEnough ? "" : "OpenGL 2.1 NOT ready");
}

INSTANTIATE_TEST_SUITE_P(Versions, Program_gl_version_calls_test,
                         testing::Values(Version{"2.1", true}, Version{"2.1.0 Mesa", true},
                                         Version{"2.0.9", false}, Version{"1.5.0", false},
                                         Version{"3.0", true}, Version{"4.5 (Compat)", true},
                                         Version{"10.0.0", true}, Version{"2", false}, Version{"3", true},
                                         Version{"", false}, Version{"OpenGL ES 3.2", false}));

TEST(Program_gl_version_calls_test_null, withoutAVersionTextTheAnswerIsYes) {
    gl_spy::Script driver = gl_spy::drivers::gl21();
    driver.nullString(GL_VERSION);
    StreamCapture const output(std::cout);
    EXPECT_TRUE(Program_gl().checkGeometryShaderSupport());
    EXPECT_EQ(output.text(), "");
}

}  // namespace
}  // namespace vellum
