#include "glsl_fixtures.h"
#include "tests/support/StreamCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <string>

// Programs call by call: attaching, linking, masks and lifetimes. The recording GL counts the names of
// shaders and programs together, from 1.

namespace vellum {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int VERSION_STRING = 0x1F02;

class Program_gl_calls_test : public Program_fixture {};

// == Stages ==

TEST_F(Program_gl_calls_test, newProgramIsEmpty) {
    EXPECT_EQ(program->getId(), 0U);
    EXPECT_FALSE(program->isEnabled());
    EXPECT_EQ(program->getInfoLog(), "");
    EXPECT_EQ(program->getCompilationLog(), "");
    program.reset();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Program_gl_calls_test, stagesAreAttachedInOrderOfSlots) {
    program->attach(vertex.get(), geometry.get(), fragment.get());
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", paired("glAttachShader", 5, 1),
                                     paired("glAttachShader", 5, 3), paired("glAttachShader", 5, 4)));
    EXPECT_EQ(program->getId(), PROGRAM);
    EXPECT_FALSE(program->isEnabled());
}

TEST_F(Program_gl_calls_test, anyStageGoesIntoAnySlot) {
    program->attach(fragment.get(), vertex.get(), geometry.get());
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", paired("glAttachShader", 5, 4),
                                     paired("glAttachShader", 5, 1), paired("glAttachShader", 5, 3)));
}

TEST_F(Program_gl_calls_test, programIsMadeOnce) {
    program->attach(vertex.get(), nullptr, nullptr);
    recording.clear();
    program->attach(nullptr, nullptr, fragment.get());
    EXPECT_THAT(calls(), ElementsAre(paired("glAttachShader", 5, 4)));
}

TEST_F(Program_gl_calls_test, missingAndUnloadedStagesAreSkipped) {
    Shader_gl empty;
    program->attach(nullptr, &empty, nullptr);
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()"));
    EXPECT_EQ(program->getId(), PROGRAM);
}

TEST_F(Program_gl_calls_test, enablingLinksOnceAndOnlyNewStagesLinkAgain) {
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

TEST_F(Program_gl_calls_test, disablingUsesNoProgram) {
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

TEST_F(Program_gl_calls_test, withoutStagesProgram0IsEnabled) {
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(0)"));
    EXPECT_TRUE(program->isEnabled());
}

TEST_F(Program_gl_calls_test, programWithoutStagesIsLinked) {
    program->attach(nullptr, nullptr, nullptr);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glCreateProgram()", "glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, maskExchangesVariant) {
    attachAndEnable();
    program->setMask(vertex.get(), 1);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 2)));
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
    program->setMask(vertex.get(), 0);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 2), paired("glAttachShader", 5, 1)));
}

TEST_F(Program_gl_calls_test, sameMaskIsExchangedAgain) {
    attachAndEnable();
    program->setMask(vertex.get(), 0);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 1), paired("glAttachShader", 5, 1),
                                     "glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, maskOfUnattachedStageOnlyLinksAgain) {
    attachAndEnable();
    program->setMask(geometry.get(), 0);
    EXPECT_THAT(calls(), IsEmpty());
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, maskWithoutVariantChangesNothing) {
    attachAndEnable();
    program->setMask(vertex.get(), 2);
    program->setMask(vertex.get(), 0xFFFFFFFFU);
    program->setMask(nullptr, 0);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, maskWhoseVariantFailedChangesNothing) {
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

TEST_F(Program_gl_calls_test, stageThatIsAttachedTwiceHasTwoEntries) {
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

TEST_F(Program_gl_calls_test, deletedStageIsDetachedFromAllPrograms) {
    Program_gl other;
    program->attach(vertex.get(), nullptr, fragment.get());
    other.attach(nullptr, nullptr, vertex.get());
    program->setMask(vertex.get(), 1);
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 5, 2), paired("glDetachShader", 6, 1),
                                     numbered("glDeleteShader", 1), numbered("glDeleteShader", 2)));
}

TEST_F(Program_gl_calls_test, deletedStageLeavesProgramLinked) {
    attachAndEnable();
    fragment.reset();
    recording.clear();
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glUseProgram(5)"));
}

TEST_F(Program_gl_calls_test, deletedProgramDetachesNoStage) {
    program->attach(vertex.get(), geometry.get(), fragment.get());
    recording.clear();
    program.reset();
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(5)"));
    vertex.reset();
    fragment.reset();
    EXPECT_THAT(calls(), ElementsAre(numbered("glDeleteShader", 1), numbered("glDeleteShader", 2),
                                     numbered("glDeleteShader", 4)));
}

TEST_F(Program_gl_calls_test, deletedProgramLeavesOtherProgramsAttached) {
    Program_gl other;
    program->attach(vertex.get(), vertex.get(), nullptr);
    other.attach(vertex.get(), nullptr, nullptr);
    program.reset();
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 6, 1), numbered("glDeleteShader", 1),
                                     numbered("glDeleteShader", 2)));
}

TEST_F(Program_gl_calls_test, enabledProgramIsDeletedWithoutDisabling) {
    attachAndEnable();
    program.reset();
    EXPECT_THAT(calls(), ElementsAre("glDeleteProgram(5)"));
}

TEST_F(Program_gl_calls_test, dettachMakesStageForgetProgram) {
    Program_gl other;
    program->attach(vertex.get(), nullptr, nullptr);
    other.attach(vertex.get(), nullptr, nullptr);
    recording.clear();
    vertex->dettach(program.get());
    vertex->dettach(program.get());
    vertex->dettach(nullptr);
    EXPECT_THAT(calls(), IsEmpty());
    program.reset();  // it still lists the stage
    recording.clear();
    vertex.reset();
    EXPECT_THAT(calls(), ElementsAre(paired("glDetachShader", 6, 1), numbered("glDeleteShader", 1),
                                     numbered("glDeleteShader", 2)));
}

// == Logs and support ==

TEST_F(Program_gl_calls_test, infoLogIsCutAt4095Characters) {
    attachAndEnable();
    driver.programStatus(true, "fine");
    EXPECT_EQ(program->getInfoLog(), "fine");
    EXPECT_THAT(calls(), ElementsAre("glGetProgramInfoLog(5, 4096)"));
    driver.programStatus(false, std::string(5000, 'x'));
    EXPECT_EQ(program->getInfoLog(), std::string(4095, 'x'));
    recording.clear();
    EXPECT_EQ(Program_gl().getInfoLog(), "");
    EXPECT_THAT(calls(), IsEmpty());
    driver.programStatus(true, "");
    EXPECT_EQ(program->getInfoLog(), "");
}

TEST_F(Program_gl_calls_test, failedLinkIsNotDetected) {
    attachAndEnable();
    driver.programStatus(false, "does not link");
    program->setMask(vertex.get(), 1);
    recording.clear();
    StreamCapture const output(std::cout);
    program->enable(true);
    program->enable(true);
    EXPECT_THAT(calls(), ElementsAre("glLinkProgram(5)", "glUseProgram(5)", "glUseProgram(5)"));
    EXPECT_TRUE(program->isEnabled());
    EXPECT_EQ(output.text(), "");
}

TEST_F(Program_gl_calls_test, deliberatelyShaderListIsNotPrinted) {
    attachAndEnable();
    StreamCapture const output(std::cout);
    StreamCapture const errors(std::cerr);
    program->printShadersList();
    EXPECT_EQ(program->getCompilationLog(), "");
    EXPECT_EQ(output.text() + errors.text(), "");
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Program_gl_calls_test, geometrySupportRequiresVersion21) {
    for (char const* version :
         {"2.1", "2.1.0", "2.1 Mesa", "2.10", "3.0", "4.5.0 (Compatibility)", "10.0.0", "2.9", "100", "3"}) {
        driver.string(VERSION_STRING, version);
        StreamCapture const output(std::cout);
        recording.clear();
        EXPECT_TRUE(program->checkGeometryShaderSupport()) << version;
        EXPECT_EQ(output.text(), "");
        EXPECT_THAT(recording.texts(), ElementsAre("glGetString(GL_VERSION)"));
    }
    for (char const* version :
         {"2.0", "2.0.9", "1.5.0", "1.99", "2", "2.", "", "x", "OpenGL ES 3.0", "-3.1"}) {
        driver.string(VERSION_STRING, version);
        StreamCapture const output(std::cout);
        EXPECT_FALSE(program->checkGeometryShaderSupport()) << version;
        EXPECT_EQ(output.text(), "OpenGL 2.1 NOT ready");
    }
}

TEST_F(Program_gl_calls_test, deliberatelyMissingVersionCountsAsSupport) {
    driver.nullString(VERSION_STRING);
    StreamCapture const output(std::cout);
    EXPECT_TRUE(program->checkGeometryShaderSupport());
    EXPECT_EQ(output.text(), "");
}

}  // namespace

}  // namespace vellum
