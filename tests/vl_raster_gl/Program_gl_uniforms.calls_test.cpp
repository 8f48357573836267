#include "glsl_fixtures.h"
#include "glsl_shader/effect_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

// The uniforms of programs call by call. The recording GL counts the uniform locations of a program from 0.

namespace vellum {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// == Kept uniforms ==

class Program_gl_uniforms_calls_test : public Program_fixture {
protected:
    void SetUp() override {
        Program_fixture::SetUp();
        attachAndEnable();
    }

    static Texts sent(std::string const& name, unsigned int location, std::string const& call,
                      std::string const& values) {
        return uniformSent(PROGRAM, name, location, call, values);
    }

    std::array<int, 8> const integers{1, -2, 3, -4, 5, -6, 7, -8};
    std::array<float, 16> const floats{0.5F, 1.5F, 2.5F,  3.5F,  4.5F,  5.5F,  6.5F,  7.5F,
                                       8.5F, 9.5F, 10.5F, 11.5F, 12.5F, 13.5F, 14.5F, 15.5F};
};

TEST_F(Program_gl_uniforms_calls_test, integersAreSentAsOneVector) {
    program->setUniform("u", 1);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform1iv", "1, {1}"));
    program->setUniform("u", 1, 2);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform2iv", "1, {1, 2}"));
    program->setUniform("u", 1, 2, 3);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform3iv", "1, {1, 2, 3}"));
    program->setUniform("u", 1, 2, 3, std::numeric_limits<int>::min());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform4iv", "1, {1, 2, 3, -2147483648}"));
}

TEST_F(Program_gl_uniforms_calls_test, integerArraysAreSentByCountAndSize) {
    program->setUniform("u", 3, 1, integers.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform1iv", "3, {1, -2, 3}"));
    program->setUniform("u", 2, 2, integers.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform2iv", "2, {1, -2, 3, -4}"));
    program->setUniform("u", 2, 3, integers.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform3iv", "2, {1, -2, 3, -4, 5, -6}"));
    program->setUniform("u", 2, 4, integers.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform4iv", "2, {1, -2, 3, -4, 5, -6, 7, -8}"));
}

TEST_F(Program_gl_uniforms_calls_test, floatsAreSentAsOneVector) {
    program->setUniform("u", 1.5F);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform1fv", "1, {1.5}"));
    program->setUniform("u", 1.5F, 2.0F);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform2fv", "1, {1.5, 2}"));
    program->setUniform("u", 1.5F, 2.0F, 3.0F);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform3fv", "1, {1.5, 2, 3}"));
    program->setUniform("u", 1.5F, 2.0F, 3.0F, 0.1F);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform4fv", "1, {1.5, 2, 3, 0.1}"));
}

TEST_F(Program_gl_uniforms_calls_test, floatArraysAreSentByCountAndSize) {
    program->setUniform("u", 3, 1, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform1fv", "3, {0.5, 1.5, 2.5}"));
    program->setUniform("u", 2, 2, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform2fv", "2, {0.5, 1.5, 2.5, 3.5}"));
    program->setUniform("u", 2, 3, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform3fv", "2, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5}"));
    program->setUniform("u", 1, 4, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniform4fv", "1, {0.5, 1.5, 2.5, 3.5}"));
}

TEST_F(Program_gl_uniforms_calls_test, matricesAreSentUntransposed) {
    program->setUniformMatrix("u", 2, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniformMatrix2fv", "1, GL_FALSE, {0.5, 1.5, 2.5, 3.5}"));
    program->setUniformMatrix("u", 3, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniformMatrix3fv",
                            "1, GL_FALSE, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5}"));
    program->setUniformMatrix("u", 4, floats.data());
    EXPECT_EQ(calls(), sent("u", 0, "glUniformMatrix4fv",
                            "1, GL_FALSE, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5, 10.5, 11.5, "
                            "12.5, 13.5, 14.5, 15.5}"));
}

TEST_F(Program_gl_uniforms_calls_test, sizesThatGlDoesNotHaveSendNothing) {
    program->setUniform("i5", 1, 5, integers.data());
    program->setUniform("f5", 1, 5, floats.data());
    program->setUniform("i0", 1, 0, integers.data());
    program->setUniform("f0", 1, 0, floats.data());
    program->setUniformMatrix("m0", 0, floats.data());
    program->setUniformMatrix("m1", 1, floats.data());
    std::array<float, 25> const five{};
    program->setUniformMatrix("m5", 5, five.data());
    program->enable(true);
    for (std::string const& text : calls()) {
        EXPECT_THAT(text, Not(StartsWith("glUniform")));
    }
}

TEST_F(Program_gl_uniforms_calls_test, uniformsAreSentOnEnablingAndAfterwardsAtOnce) {
    program->disable();
    recording.clear();
    program->setUniform("u", 2.0F);
    EXPECT_THAT(calls(), IsEmpty());
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform1fv", "1, {2}")}));
    program->setUniform("u", 3.0F);
    EXPECT_EQ(calls(), sent("u", 0, "glUniform1fv", "1, {3}"));
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform1fv", "1, {3}")}));
}

TEST_F(Program_gl_uniforms_calls_test, uniformsAreSentInOrderOfFirstSetting) {
    program->disable();
    program->setUniform("b", 1);
    program->setUniform("a", 2.0F);
    program->setUniformMatrix("c", 2, floats.data());
    program->setUniform("b", 4);
    program->setUniform("a", 5.0F);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"},
                               sent("b", 0, "glUniform1iv", "1, {4}"),
                               sent("a", 1, "glUniform1fv", "1, {5}"),
                               sent("c", 2, "glUniformMatrix2fv", "1, GL_FALSE, {0.5, 1.5, 2.5, 3.5}")}));
}

TEST_F(Program_gl_uniforms_calls_test, settingNameAgainChangesTypeInPlace) {
    program->disable();
    program->setUniform("u", 1.5F);
    program->setUniform("last", 1);
    program->setUniform("u", 7);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"},
                               sent("u", 0, "glUniform1iv", "1, {7}"),
                               sent("last", 1, "glUniform1iv", "1, {1}")}));
    program->setUniformMatrix("u", 4, floats.data());
    program->setUniform("u", 2, 2, floats.data());
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"},
                               sent("u", 0, "glUniform2fv", "2, {0.5, 1.5, 2.5, 3.5}"),
                               sent("last", 1, "glUniform1iv", "1, {1}")}));
}

TEST_F(Program_gl_uniforms_calls_test, namesAreComparedExactly) {
    program->setUniform("name", 1);
    program->setUniform("Name", 2);
    program->setUniform("name ", 3);
    program->setUniform("nam", 4);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(recording.count("glUniform1iv"), 4U);
}

TEST_F(Program_gl_uniforms_calls_test, valuesAndNamesAreCopied) {
    program->disable();
    std::array<float, 2> values{1, 2};
    std::string name = "u";
    program->setUniform(name.c_str(), 1, 2, values.data());
    values = {8, 9};
    name = "x";
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform2fv", "1, {1, 2}")}));
}

TEST_F(Program_gl_uniforms_calls_test, valueMayBeSetToItself) {
    program->setUniform("u", 2, 2, floats.data());
    program->setUniform("u", 2, 2, floats.data());
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(),
              joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform2fv", "2, {0.5, 1.5, 2.5, 3.5}")}));
}

TEST_F(Program_gl_uniforms_calls_test, unknownUniformIsSentToMinusOneAndKept) {
    driver.uniformLocation("u", -1);
    recording.clear();
    program->setUniform("u", 1);
    EXPECT_THAT(calls(), ElementsAre("glGetUniformLocation(5, \"u\")", "glUniform1iv(-1, 1, {1})"));
    program->disable();
    driver.uniformLocation("u", 6);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 6, "glUniform1iv", "1, {1}")}));
}

TEST_F(Program_gl_uniforms_calls_test, keysSendWhatNamesSend) {
    Program_gl::UniformKey key("u");
    program->setUniform("first", 1);
    program->setUniform("u", 1, 2);
    recording.clear();
    program->setUniform(key, 2.5F);
    EXPECT_EQ(calls(), sent("u", 1, "glUniform1fv", "1, {2.5}"));
    program->setUniform("u", 1, 2, 3);
    program->setUniform("last", 9);
    recording.clear();
    program->setUniform(key, 3.5F);
    EXPECT_EQ(calls(), sent("u", 1, "glUniform1fv", "1, {3.5}"));
    program->setUniform(key, 4);
    EXPECT_EQ(calls(), sent("u", 1, "glUniform1iv", "1, {4}"));
    program->setUniform(key, 4.5F, 5.0F, 6.0F);
    EXPECT_EQ(calls(), sent("u", 1, "glUniform3fv", "1, {4.5, 5, 6}"));
    program->disable();
    program->setUniform(key, 1, 2, 3, 4);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"},
                               sent("first", 0, "glUniform1iv", "1, {1}"),
                               sent("u", 1, "glUniform4fv", "1, {1, 2, 3, 4}"),
                               sent("last", 2, "glUniform1iv", "1, {9}")}));
}

TEST_F(Program_gl_uniforms_calls_test, keyFollowsItsNameToAnotherTypeAndLength) {
    Program_gl::UniformKey key("u");
    program->setUniform(key, 1.0F, 2.0F, 3.0F);
    program->setUniform("u", 2, 3, integers.data());
    program->setUniform(key, 4.0F, 5.0F, 6.0F);
    program->setUniformMatrix("u", 4, floats.data());
    program->setUniform(key, 7.0F, 8.0F, 9.0F);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform3fv", "1, {7, 8, 9}")}));
}

TEST_F(Program_gl_uniforms_calls_test, uniformsAreFoundInAnyOrder) {
    for (char const* const name : {"a", "b", "c", "d", "d", "b", "a", "c", "c", "a", "d"}) {
        program->setUniform(name, 1);
    }
    program->setUniform("b", 3);
    recording.clear();
    program->enable(true);
    EXPECT_THAT(uniformsSent(recording), ElementsAre("a glUniform1iv {1}", "b glUniform1iv {3}",
                                                     "c glUniform1iv {1}", "d glUniform1iv {1}"));
}

TEST_F(Program_gl_uniforms_calls_test, uniformsOfProgram0AreAppliedToo) {
    Program_gl empty;
    empty.setUniform("u", 1);
    recording.clear();
    empty.enable(true);
    EXPECT_THAT(calls(),
                ElementsAre("glUseProgram(0)", "glGetUniformLocation(0, \"u\")", "glUniform1iv(0, 1, {1})"));
}

TEST_F(Program_gl_uniforms_calls_test, badLengthsAndMissingValuesLeaveWhatIsKept) {
    constexpr int HUGE_COUNT = std::numeric_limits<int>::max();
    program->setUniform("u", 1);
    recording.clear();
    program->setUniform("u", -1, 1, integers.data());
    program->setUniform("u", 1, -1, floats.data());
    program->setUniform("u", HUGE_COUNT, 4, static_cast<int const*>(nullptr));
    program->setUniform("u", HUGE_COUNT, HUGE_COUNT, static_cast<float const*>(nullptr));
    program->setUniformMatrix("u", -4, floats.data());
    program->setUniformMatrix("u", 4, nullptr);
    program->setUniformMatrix("u", HUGE_COUNT, nullptr);
    EXPECT_THAT(calls(), IsEmpty());
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("u", 0, "glUniform1iv", "1, {1}")}));
}

TEST_F(Program_gl_uniforms_calls_test, sizesThatGlDoesNotHaveReadNoValues) {
    constexpr int HUGE_SIZE = std::numeric_limits<int>::max();
    program->setUniform("i", 1, HUGE_SIZE, integers.data());
    program->setUniform("f", HUGE_SIZE, HUGE_SIZE, floats.data());
    program->setUniformMatrix("m", HUGE_SIZE, floats.data());
    program->enable(true);
    for (std::string const& text : calls()) {
        EXPECT_THAT(text, Not(StartsWith("glUniform")));
    }
}

TEST_F(Program_gl_uniforms_calls_test, nullNameIsEmptyName) {
    program->setUniform(nullptr, 1);
    program->setUniform("", 2.0F);
    recording.clear();
    program->enable(true);
    EXPECT_EQ(calls(), joined({{"glUseProgram(5)"}, sent("", 0, "glUniform1fv", "1, {2}")}));
    Program_gl::UniformKey key(nullptr);
    program->setUniform(key, 3.0F);
    EXPECT_EQ(calls(), sent("", 0, "glUniform1fv", "1, {3}"));
    program->setUniformSampler(nullptr, 1, 0);
    int value = 0;
    program->getUniform(nullptr, &value);
}

// == Uniforms that are not kept ==

TEST_F(Program_gl_uniforms_calls_test, samplerIsBoundAndNotKept) {
    program->disable();
    recording.clear();
    program->setUniformSampler("map", 77, 3);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)", "glGetUniformLocation(5, \"map\")",
                                     "glActiveTexture(GL_TEXTURE3)", "glBindTexture(GL_TEXTURE_2D, 77)",
                                     "glUniform1i(0, 3)"));
    EXPECT_FALSE(program->isEnabled());
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
    program->setUniformSampler("map", 78, 0);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)", "glGetUniformLocation(5, \"map\")",
                                     "glActiveTexture(GL_TEXTURE0)", "glBindTexture(GL_TEXTURE_2D, 78)",
                                     "glUniform1i(0, 0)"));
    EXPECT_TRUE(program->isEnabled());
}

TEST_F(Program_gl_uniforms_calls_test, uniformsAreReadBack) {
    program->setUniform("f", 1.5F, 2.5F);
    program->setUniform("i", 4, 5, 6);
    recording.clear();
    std::array<float, 2> readFloats{};
    program->getUniform("f", readFloats.data());
    EXPECT_THAT(calls(), ElementsAre("glGetUniformLocation(5, \"f\")", "glGetUniformfv(5, 0, pointer)"));
    EXPECT_THAT(readFloats, ElementsAre(1.5F, 2.5F));
    std::array<int, 3> readIntegers{};
    program->getUniform("i", readIntegers.data());
    EXPECT_THAT(calls(), ElementsAre("glGetUniformLocation(5, \"i\")", "glGetUniformiv(5, 1, pointer)"));
    EXPECT_THAT(readIntegers, ElementsAre(4, 5, 6));
}

}  // namespace

}  // namespace vellum
