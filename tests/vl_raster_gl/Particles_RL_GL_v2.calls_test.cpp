#include "Particles_RL_GL_v2.h"

#include "Core_RL_GL.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
#include "member_slots.h"
#include "particle_reference.h"
#include "tests/gl_spy/gl_spy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using particle_reference::Look;
using particle_reference::Path;
using particle_reference::Record;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Mode = Particles_RL_GL_v2_ns::RenderMode;
using Magnitude = Particles_RL_GL_v2_ns::RenderMagnitude;
using Texts = std::vector<std::string>;

constexpr unsigned int NONE = ParticleChannel_v2::NONE;
constexpr unsigned int CHUNK = ParticleSystemChunk_v2::CAPACITY;
constexpr unsigned int MUCH = 1U << 20;  // kilobytes: a gigabyte
constexpr char const* UNKNOWN_TYPE = "channel.getType() not found. Default value will be used.";

std::string repeated(char const* text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// The renderer with its fields in view.
class ProbedParticles : public Particles_RL_GL_v2 {
public:
    using Particles_RL_GL_v2::arrowShader;
    using Particles_RL_GL_v2::hostBuffer;
    using Particles_RL_GL_v2::hostCapacity;
    using Particles_RL_GL_v2::lastPath;
    using Particles_RL_GL_v2::ownedBlock;
    using Particles_RL_GL_v2::pointShader;
    using Particles_RL_GL_v2::programId;
    using Particles_RL_GL_v2::renderMode;
    using Particles_RL_GL_v2::reservedMode;
    using Particles_RL_GL_v2::shaderIds;
    using Particles_RL_GL_v2::shuffledCount;
    using Particles_RL_GL_v2::shuffledIndices;
    using Particles_RL_GL_v2::sphereShader;
    using Particles_RL_GL_v2::vboCapacity;
    using Particles_RL_GL_v2::vboId;
    using Particles_RL_GL_v2::vboParticleCount;
    using Particles_RL_GL_v2::vboSizeKB;
    using Particles_RL_GL_v2::vboSupported;
};

/// A render layer whose free memory and shader support the tests set.
class Layer : public Core_RL_GL {
public:
    unsigned int getFreeGpuMemory() override {
        ++memoryQueries;
        return freeKilobytes;
    }
    bool checkShaderSupport() const override { return hasShaders; }
    bool getError(char const* where, int line) override {
        errorTags.push_back(std::string(where) + ":" + std::to_string(line));
        return Core_RL_GL::getError(where, line);
    }
    using Core_RL_GL::getError;

    unsigned int freeKilobytes = MUCH;
    bool hasShaders = true;
    unsigned int memoryQueries = 0;
    Texts errorTags;
};

class Particles_RL_GL_v2_calls_test : public testing::Test {
protected:
    void SetUp() override {
        particles.init();
        particle_reference::fill(system, 40);
        recording.clear();
    }

    void TearDown() override { particles.releaseEffects(); }

    void draw(bool const& rebuild, bool const& useVbo, bool const& useShaders) {
        particles.render(system, false, rebuild, look.scale, look.minMagnitude, look.maxMagnitude,
                         look.minColor, look.maxColor, look.maxClampColor, 3, look.channel, look.percent,
                         useVbo, useShaders, Magnitude::type(look.magnitude));
    }

    bool draw(bool (Particles_RL_GL_v2::*way)(ParticleSystem_v2 const&, bool, bool, float const&,
                                              float const&, float const&, Color4<float> const&,
                                              Color4<float> const&, Color4<float> const&, float const&,
                                              unsigned int const&, float const&, Magnitude::type),
              bool const& rebuild) {
        return (particles.*way)(system, false, rebuild, look.scale, look.minMagnitude, look.maxMagnitude,
                                look.minColor, look.maxColor, look.maxClampColor, 3, look.channel,
                                look.percent, Magnitude::type(look.magnitude));
    }

    void drawFromMemory(bool const& rebuild) {
        particles.renderFromMemoryNoShaders(system, false, rebuild, look.scale, look.minMagnitude,
                                            look.maxMagnitude, look.minColor, look.maxColor,
                                            look.maxClampColor, 3, look.channel, look.percent,
                                            Magnitude::type(look.magnitude));
    }

    void drawChunks() {
        particles.renderFromChunksWithShaders(system, false, false, look.scale, look.minMagnitude,
                                              look.maxMagnitude, look.minColor, look.maxColor,
                                              look.maxClampColor, 3, look.channel, look.percent,
                                              Magnitude::type(look.magnitude));
    }

    /// The calls since the last look, from the first to the last that has to do with buffers and arrays, without
    /// those of the effect.
    Texts bufferCalls() {
        Texts result;
        for (gl_spy::Call const& call : recording.calls()) {
            for (char const* const part : {"Buffer", "ClientState", "VertexPointer", "ColorPointer", "glDraw",
                                           "PointSize", "glGetError"}) {
                if (call.name.find(part) != std::string::npos) {
                    result.push_back(call.text());
                    break;
                }
            }
        }
        recording.clear();
        return result;
    }

    static std::vector<Record> asRecords(void const* data, std::size_t const& bytes) {
        std::vector<Record> result(bytes / sizeof(Record));
        if (!result.empty()) {
            std::memcpy(result.data(), data, result.size() * sizeof(Record));
        }
        return result;
    }

    std::vector<Record> vboRecords() const {
        std::vector<unsigned char> const bytes = driver.bufferContents(particles.vboId);
        return asRecords(bytes.data(), bytes.size());
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Layer layer;
    ProbedParticles particles;
    ParticleSystem_v2 system;
    Look look;
    gl_spy::Recording recording;
};

/// Whether two lists of records have the same bytes; says where they first differ.
testing::AssertionResult sameBytes(std::vector<Record> const& actual, std::vector<Record> const& expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " records in place of " << expected.size();
    }
    for (std::size_t k = 0; k < actual.size(); ++k) {
        if (std::memcmp(&actual[k], &expected[k], sizeof(Record)) != 0) {
            return testing::AssertionFailure()
                   << "record " << k << " is " << testing::PrintToString(actual[k]) << " in place of "
                   << testing::PrintToString(expected[k]);
        }
    }
    return testing::AssertionSuccess();
}

// == Lifecycle ==

TEST_F(Particles_RL_GL_v2_calls_test, theFirstValuesAreThoseOfTheInterface) {
    EXPECT_EQ(particles.vboId, 0U);
    EXPECT_TRUE(particles.vboSupported);
    EXPECT_EQ(particles.hostBuffer, nullptr);
    EXPECT_EQ(particles.vboSizeKB, 0U);
    EXPECT_EQ(particles.vboParticleCount, 0U);
    EXPECT_EQ(particles.hostCapacity, 0U);
    EXPECT_EQ(particles.vboCapacity, 0U);
    EXPECT_EQ(particles.reservedMode, 2U);
    EXPECT_EQ(particles.programId, 0U);
    EXPECT_THAT(particles.shaderIds, ElementsAre(0, 0, 0));
    EXPECT_EQ(particles.renderMode, Mode::POINTS);
    EXPECT_EQ(particles.lastPath, 0U);
    EXPECT_EQ(particles.pointShader, nullptr);
    EXPECT_EQ(particles.sphereShader, nullptr);
    EXPECT_EQ(particles.arrowShader, nullptr);
    EXPECT_NE(particles.shuffledIndices, nullptr);
    EXPECT_EQ(particles.shuffledCount, 0U);
}

TEST_F(Particles_RL_GL_v2_calls_test, theConstructorAndTheUnusedDestructorMakeNoCall) {
    { Particles_RL_GL_v2 const unused; }
    EXPECT_THAT(recording.texts(), IsEmpty());
}

TEST_F(Particles_RL_GL_v2_calls_test, bufferObjectsGoByTwoNames) {
    class Names : public Layer {
    public:
        bool isExtensionSupported(char const* name) override {
            asked.emplace_back(name);
            return name == listed;
        }
        std::string listed;
        Texts asked;
    } names;
    ProbedParticles other;
    other.init();
    EXPECT_THAT(names.asked, ElementsAre("GL_ARB_vertex_buffer_object", "ARB_vertex_buffer_object"));
    EXPECT_FALSE(other.vboSupported);

    names.asked.clear();
    names.listed = "ARB_vertex_buffer_object";
    ProbedParticles old;
    old.init();
    EXPECT_TRUE(old.vboSupported);

    names.asked.clear();
    names.listed = "GL_ARB_vertex_buffer_object";
    ProbedParticles usual;
    usual.init();
    EXPECT_TRUE(usual.vboSupported);
    EXPECT_THAT(names.asked, ElementsAre("GL_ARB_vertex_buffer_object"));
    VL_Raster = &layer;
}

TEST_F(Particles_RL_GL_v2_calls_test, virtualOperationsStandInTheirOrder) {
    EXPECT_EQ((member_slots::slotOf<Particles_RL_GL_v2, void()>(&Particles_RL_GL_v2::clear)), 2U);
    Particles_RL_v2& base = particles;
    base.render(system, false, true, 1, 0, 1, look.minColor, look.maxColor);
    EXPECT_THAT(recording.texts(), IsEmpty()) << "the base's operation draws nothing";
}

TEST_F(Particles_RL_GL_v2_calls_test, clearDropsTheBuffersAndKeepsTheirSizes) {
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
    drawFromMemory(true);
    recording.clear();
    particles.clear();
    EXPECT_THAT(recording.texts(), ElementsAre("glDeleteBuffers(1, {1})"));
    EXPECT_EQ(particles.vboId, 0U);
    EXPECT_EQ(particles.hostBuffer, nullptr);
    EXPECT_EQ(particles.hostCapacity, 0U);
    EXPECT_EQ(particles.vboCapacity, 40U);
}

TEST_F(Particles_RL_GL_v2_calls_test, aClearedBufferIsFilledAgain) {
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
    particles.clear();
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboWithShaders, false));
    EXPECT_EQ(vboRecords().size(), 40U);
}

TEST_F(Particles_RL_GL_v2_calls_test, resetShrinksTheBufferAndDeletesTheProgram) {
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
    drawFromMemory(true);
    unsigned int const buffer = particles.vboId;
    particles.programId = 91;
    particles.shaderIds[0] = 92;
    particles.shaderIds[2] = 93;
    recording.clear();
    particles.resetBuffers();
    std::string const name = std::to_string(buffer);
    EXPECT_THAT(recording.texts(), ElementsAre("glBindBuffer(GL_ARRAY_BUFFER, " + name + ")",
                                               "glBufferData(GL_ARRAY_BUFFER, 1, null, GL_STREAM_DRAW)",
                                               "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)",
                                               "glDeleteBuffers(1, {" + name + "})", "glDetachShader(91, 92)",
                                               "glDetachShader(91, 93)", "glDeleteShader(92)",
                                               "glDeleteShader(93)", "glDeleteProgram(91)"));
    EXPECT_EQ(particles.vboId, 0U);
    EXPECT_EQ(particles.programId, 0U);
    EXPECT_THAT(particles.shaderIds, ElementsAre(0, 0, 0));
    EXPECT_EQ(particles.hostBuffer, nullptr);
    EXPECT_EQ(particles.hostCapacity, 40U) << "the capacities are not reset";
    EXPECT_EQ(particles.vboCapacity, 40U);
    drawFromMemory(false);
    EXPECT_NE(particles.hostBuffer, nullptr) << "and yet there is a buffer to draw from";
}

TEST_F(Particles_RL_GL_v2_calls_test, theDestructorResetsTheBuffers) {
    auto* const other = new ProbedParticles;
    other->init();
    other->ownedBlock = ::operator new(100);
    other->renderFromVboNoShaders(system, false, true, 1, 0, 1, look.minColor, look.maxColor,
                                  look.maxClampColor, 1, NONE, 100, Magnitude::LENGTH);
    std::size_t const objects = driver.liveObjects();
    delete other;
    EXPECT_EQ(driver.liveObjects(), objects - 1);
}

TEST_F(Particles_RL_GL_v2_calls_test, shaderFilesGiveTheirLengthOnly) {
    std::filesystem::path const path = std::filesystem::path(testing::TempDir()) / "particles_length.glsl";
    std::ofstream(path, std::ios::binary) << std::string(1234, 'x');
    Array<char> const text = particles.getShader(path.string().c_str());
    std::filesystem::remove(path);
    ASSERT_EQ(text.size(), 1235U);
    EXPECT_EQ(text[1234], '\0');
    EXPECT_EQ(particles.getShader("/does/not/exist").size(), 0U);
    EXPECT_EQ(particles.getShader("/").size(), 0U);
    EXPECT_EQ(particles.getShader(nullptr).size(), 0U);
}

// == The memory rule ==

TEST_F(Particles_RL_GL_v2_calls_test, unknownFreeMemoryIsEnough) {
    layer.freeKilobytes = 0;
    EXPECT_TRUE(particles.checkEnoughMemoryinGPU(system, 100));
    layer.freeKilobytes = 25 * 1024;
    EXPECT_FALSE(particles.checkEnoughMemoryinGPU(system, 100)) << "25 megabytes are kept in reserve";
    layer.freeKilobytes = 26 * 1024;
    EXPECT_TRUE(particles.checkEnoughMemoryinGPU(system, 100));
    EXPECT_FALSE(particles.checkEnoughMemoryinGPU(system, NOT_A_NUMBER));
}

TEST_F(Particles_RL_GL_v2_calls_test, theOwnBufferCountsAsFree) {
    ParticleSystem_v2 many;
    particle_reference::fill(many, 100000);  // 2.29 megabytes
    layer.freeKilobytes = 27 * 1024;
    EXPECT_FALSE(particles.checkEnoughMemoryinGPU(many, 100));
    EXPECT_TRUE(particles.checkEnoughMemoryinGPU(many, 80));
    particles.vboSizeKB = 1024;
    EXPECT_TRUE(particles.checkEnoughMemoryinGPU(many, 100));
}

// == The index table ==

TEST_F(Particles_RL_GL_v2_calls_test, theIndexTableIsAPermutationThatDependsOnTheCount) {
    std::vector<std::vector<unsigned short>> tables;
    for (int const count : {16384, 100, 100, 99, 16384}) {
        particles.initIndices(count);
        EXPECT_EQ(particles.shuffledCount, static_cast<unsigned int>(count));
        std::vector<unsigned short> table(particles.shuffledIndices, particles.shuffledIndices + count);
        tables.push_back(table);
        std::sort(table.begin(), table.end());
        for (int k = 0; k < count; ++k) {
            ASSERT_EQ(table[k], k);
        }
    }
    EXPECT_EQ(tables[0], tables[4]);
    EXPECT_EQ(tables[1], tables[2]);
    EXPECT_FALSE(std::is_sorted(tables[1].begin(), tables[1].end()));
}

TEST_F(Particles_RL_GL_v2_calls_test, theIndexTableFollowsTheSeededGenerator) {
    particles.initIndices(5);
    unsigned short expected[5] = {0, 1, 2, 3, 4};
    std::srand(5);
    for (int i = 0; i <= 3; ++i) {
        std::swap(expected[i], expected[i + std::rand() / (2147483647 / (5 - i) + 1)]);
    }
    EXPECT_THAT(std::vector<unsigned short>(particles.shuffledIndices, particles.shuffledIndices + 5),
                testing::ElementsAreArray(expected));
}

TEST_F(Particles_RL_GL_v2_calls_test, smallAndImpossibleCountsAreHarmless) {
    for (int const count : {1, 0, -1, 16385, std::numeric_limits<int>::max()}) {
        particles.initIndices(count);
    }
    EXPECT_EQ(particles.shuffledCount, 0U);
    EXPECT_EQ(particles.shuffledIndices[0], 0);
}

// == Buffers without an effect ==

TEST_F(Particles_RL_GL_v2_calls_test, aBufferIsSizedFilledAndDrawn) {
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true));
    EXPECT_THAT(
        bufferCalls(),
        ElementsAre(
            "glGenBuffers(1, pointer)", "glBindBuffer(GL_ARRAY_BUFFER, 0)",
            "glBindBuffer(GL_ARRAY_BUFFER, 1)", "glBufferData(GL_ARRAY_BUFFER, 960, null, GL_STREAM_DRAW)",
            "glBindBuffer(GL_ARRAY_BUFFER, 1)", "glBufferData(GL_ARRAY_BUFFER, 960, null, GL_STREAM_DRAW)",
            "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)", "glGetError()", "glUnmapBuffer(GL_ARRAY_BUFFER)",
            "glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_COLOR_ARRAY)", "glPointSize(3)",
            "glBindBuffer(GL_ARRAY_BUFFER, 1)", "glVertexPointer(3, GL_FLOAT, 24, null)",
            "glColorPointer(3, GL_FLOAT, 24, pointer)", "glDrawArrays(GL_POINTS, 0, 40)",
            "glBindBuffer(GL_ARRAY_BUFFER, 0)", "glDisableClientState(GL_VERTEX_ARRAY)",
            "glDisableClientState(GL_COLOR_ARRAY)"));
    EXPECT_THAT(layer.errorTags, ElementsAre("renderFromVboNoShaders:1109"));
    EXPECT_EQ(layer.memoryQueries, 1U);
    EXPECT_EQ(particles.lastPath, 3U);
    EXPECT_EQ(particles.vboCapacity, 40U);
    EXPECT_EQ(particles.vboParticleCount, 40U);
    EXPECT_EQ(particles.vboSizeKB, 0U) << "960 bytes";
}

TEST_F(Particles_RL_GL_v2_calls_test, theColorsBeginTwelveBytesIntoTheRecord) {
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
    EXPECT_THAT(recording.named("glColorPointer").at(0).addresses, ElementsAre(12));
}

TEST_F(Particles_RL_GL_v2_calls_test, withoutAnEffectTheBufferIsFilledInEveryFrame) {
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
    bufferCalls();
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, false);
    Texts const calls = bufferCalls();
    EXPECT_EQ(calls.at(0), "glBindBuffer(GL_ARRAY_BUFFER, 1)");
    EXPECT_EQ(calls.at(1), "glBufferData(GL_ARRAY_BUFFER, 960, null, GL_STREAM_DRAW)");
    EXPECT_EQ(calls.at(2), "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)");
    EXPECT_EQ(calls.size(), 15U);
}

TEST_F(Particles_RL_GL_v2_calls_test, theContentsAfterAnEffectAreReusedAsColors) {
    look.channel = 1;
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
    std::vector<Record> const raw = vboRecords();
    bufferCalls();
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, false);
    EXPECT_EQ(bufferCalls().at(0), "glEnableClientState(GL_VERTEX_ARRAY)");
    EXPECT_TRUE(sameBytes(vboRecords(), raw));
}

TEST_F(Particles_RL_GL_v2_calls_test, moreThanTwentyOneParticlesNeedKnownMemory) {
    layer.freeKilobytes = 0;
    look.percent = 52.5F;  // 21 of 40
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true));
    EXPECT_EQ(particles.vboCapacity, 21U);
    look.percent = 55;  // 22
    bufferCalls();
    EXPECT_FALSE(draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true));
    EXPECT_THAT(bufferCalls(), ElementsAre("glDeleteBuffers(1, {1})"));
    EXPECT_EQ(particles.vboId, 1U) << "the name is kept";
    EXPECT_EQ(particles.lastPath, 3U) << "of the frame before";
}

TEST_F(Particles_RL_GL_v2_calls_test, aNullMappingIsARefusal) {
    driver.nullMap();
    EXPECT_FALSE(draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true));
    Texts const calls = bufferCalls();
    EXPECT_EQ(calls.back(), "glDeleteBuffers(1, {1})");
    EXPECT_THAT(calls, Not(Contains(testing::HasSubstr("glDraw"))));
    draw(true, true, false);
    EXPECT_EQ(particles.lastPath, 4U) << "the particles are drawn from memory in the same call";
}

TEST_F(Particles_RL_GL_v2_calls_test, noParticlesAreDrawnWithoutAMapping) {
    look.percent = 0;
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true));
    Texts const calls = bufferCalls();
    EXPECT_THAT(calls, Not(Contains(testing::HasSubstr("Map"))));
    EXPECT_THAT(calls, Contains("glDrawArrays(GL_POINTS, 0, 0)"));
}

TEST_F(Particles_RL_GL_v2_calls_test, aStoreOfFewerParticlesIsFilledAgain) {
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
    look.percent = 50;
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
    look.percent = 100;
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, false);
    EXPECT_EQ(vboRecords().size(), 40U) << "GL would read beyond the store's end";
}

// == Main memory ==

TEST_F(Particles_RL_GL_v2_calls_test, mainMemoryIsDrawnAsOneBatch) {
    drawFromMemory(true);
    std::vector<gl_spy::Call> const vertices = recording.named("glVertexPointer");
    std::vector<gl_spy::Call> const colors = recording.named("glColorPointer");
    EXPECT_THAT(bufferCalls(),
                ElementsAre("glPointSize(3)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            "glEnableClientState(GL_COLOR_ARRAY)",
                            "glVertexPointer(3, GL_FLOAT, 24, pointer)",
                            "glColorPointer(3, GL_FLOAT, 24, pointer)", "glDrawArrays(GL_POINTS, 0, 40)",
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"));
    auto const begin = reinterpret_cast<std::uintptr_t>(particles.hostBuffer);
    EXPECT_THAT(vertices.at(0).addresses, ElementsAre(begin));
    EXPECT_THAT(colors.at(0).addresses, ElementsAre(begin + 12));
    EXPECT_EQ(particles.lastPath, 4U);
    EXPECT_EQ(particles.hostCapacity, 40U);
}

TEST_F(Particles_RL_GL_v2_calls_test, largeSystemsAreDrawnInBatches) {
    ParticleSystem_v2 many;
    particle_reference::fill(many, 2 * 524288 + 3);
    particles.renderFromMemoryNoShaders(many, false, true, 1, 0, 1, look.minColor, look.maxColor,
                                        look.maxClampColor, 1, NONE, 100, Magnitude::LENGTH);
    std::vector<gl_spy::Call> const draws = recording.named("glDrawArrays");
    std::vector<gl_spy::Call> const vertices = recording.named("glVertexPointer");
    ASSERT_EQ(draws.size(), 3U);
    EXPECT_THAT(draws[0].numbers, ElementsAre(0, 524288));
    EXPECT_THAT(draws[1].numbers, ElementsAre(0, 524288));
    EXPECT_THAT(draws[2].numbers, ElementsAre(0, 3));
    EXPECT_EQ(vertices[2].addresses[0] - vertices[1].addresses[0], 524288U * 24);
    EXPECT_EQ(vertices[1].addresses[0] - vertices[0].addresses[0], 524288U * 24);
}

TEST_F(Particles_RL_GL_v2_calls_test, mainMemoryIsFilledOnlyWhenItMustBe) {
    drawFromMemory(true);
    particles.hostBuffer[0] = 1234;
    drawFromMemory(false);
    EXPECT_EQ(particles.hostBuffer[0], 1234);
    look.percent = 50;
    drawFromMemory(false);
    EXPECT_EQ(particles.hostBuffer[0], 1234) << "fewer particles are those that are there";
    drawFromMemory(true);
    EXPECT_EQ(particles.hostBuffer[0], 0);
    particles.hostBuffer[0] = 1234;
    draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
    drawFromMemory(false);
    EXPECT_EQ(particles.hostBuffer[0], 0) << "another way came between";
}

// == Records ==

struct RecordCase {
    char const* name;
    Path path;
};

class Particles_RL_GL_v2_records_calls_test : public Particles_RL_GL_v2_calls_test,
                                              public testing::WithParamInterface<RecordCase> {
protected:
    std::vector<Record> written() {
        testing::internal::CaptureStderr();
        switch (GetParam().path) {
        case Path::BUFFER:
            draw(&Particles_RL_GL_v2::renderFromVboNoShaders, true);
            break;
        case Path::EFFECT:
            draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
            break;
        case Path::MEMORY:
            drawFromMemory(true);
            break;
        }
        messages = testing::internal::GetCapturedStderr();
        std::size_t const count = particle_reference::chosen(system.size(), look.percent).size();
        std::vector<Record> const result = GetParam().path == Path::MEMORY
                                               ? asRecords(particles.hostBuffer, count * sizeof(Record))
                                               : vboRecords();
        EXPECT_EQ(recording.named("glDrawArrays").back().numbers.at(1), static_cast<double>(count));
        recording.clear();
        return result;
    }

    void expectRecords() {
        std::vector<Record> const actual = written();
        EXPECT_TRUE(sameBytes(actual, particle_reference::records(GetParam().path, system, look)))
            << "channel " << look.channel << ", magnitude " << look.magnitude << ", percent " << look.percent;
    }

    std::string messages;  // of the last drawing
};

TEST_P(Particles_RL_GL_v2_records_calls_test, everyRowOfTheMagnitudeTables) {
    for (unsigned int const channel : {NONE, 0U, 1U, 2U, 3U, 99U}) {
        for (unsigned int magnitude = 0; magnitude <= 7; ++magnitude) {
            look.channel = channel;
            look.magnitude = magnitude;
            expectRecords();
            bool const isUnknown = channel == 3 || channel == 99;
            std::size_t const count = particle_reference::chosen(system.size(), look.percent).size();
            EXPECT_EQ(messages, isUnknown ? repeated(UNKNOWN_TYPE, count) : "") << "channel " << channel;
        }
    }
}

TEST_P(Particles_RL_GL_v2_records_calls_test, aRangeWithoutExtent) {
    look.maxMagnitude = look.minMagnitude;
    for (unsigned int const channel : {NONE, 1U, 2U, 3U}) {
        for (unsigned int magnitude = 0; magnitude <= 6; ++magnitude) {
            look.channel = channel;
            look.magnitude = magnitude;
            expectRecords();
        }
    }
}

TEST_P(Particles_RL_GL_v2_records_calls_test, percentagesOverSeveralChunks) {
    ParticleSystem_v2& small = system;
    small.addParticles(CHUNK + 1234);
    for (unsigned int const channel : {1U, 2U, NONE}) {
        for (float const percent : {0.0F, 0.01F, 10.0F, 33.3F, 50.0F, 61.8F, 75.0F, 90.0F, 99.9F, 100.0F,
                                    150.0F, -5.0F, NOT_A_NUMBER}) {
            look.channel = channel;
            look.percent = percent;
            expectRecords();
        }
    }
}

TEST_P(Particles_RL_GL_v2_records_calls_test, recordsThatFillMoreThanACache) {
    system.addParticles(25 * CHUNK + 77);
    system.firstChunk()->release(5);
    for (float const percent : {100.0F, 99.9F, 87.3F}) {
        look.channel = 1;
        look.percent = percent;
        expectRecords();
    }
}

TEST_P(Particles_RL_GL_v2_records_calls_test, releasedParticlesAreLeftOut) {
    system.addParticles(2 * CHUNK);
    for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        for (unsigned int slot = 0; slot < chunk->count() + 100; slot += slot % 7 + 1) {
            chunk->release(slot);
        }
    }
    look.channel = 1;
    for (float const percent : {100.0F, 50.0F, 10.0F, 99.0F}) {
        look.percent = percent;
        expectRecords();
    }
    system.compact();
    look.channel = 2;
    expectRecords();
}

TEST_P(Particles_RL_GL_v2_records_calls_test, valuesThatAreNoNumbers) {
    constexpr float INFINITE = std::numeric_limits<float>::infinity();
    Vector3<float>* const velocities = system.firstChunk()->channelData(1)->asVectors();
    velocities[3] = {NOT_A_NUMBER, 1, 2};
    velocities[4] = {INFINITE, -INFINITE, NOT_A_NUMBER};
    velocities[5] = {3e9F, -3e38F, 2147483648.0F};
    system.firstChunk()->channelData(2)->asFloats()[7] = INFINITE;
    system.firstChunk()->channelData(2)->asFloats()[8] = -3e9F;
    system.firstChunk()->channelData(0)->asVectors()[9] = {INFINITE, -INFINITE, 0};
    for (unsigned int const channel : {1U, 2U}) {
        for (unsigned int magnitude = 0; magnitude <= 3; ++magnitude) {
            look.channel = channel;
            look.magnitude = magnitude;
            if (GetParam().path == Path::EFFECT) {
                written();  // raw values, among them those that equal nothing
            } else {
                expectRecords();
            }
        }
    }
}

TEST_P(Particles_RL_GL_v2_records_calls_test, aSystemWithoutParticles) {
    ParticleSystem_v2 const empty;
    particles.render(empty, false, true, 1, 0, 1, look.minColor, look.maxColor, look.maxClampColor, 1, NONE,
                     100, true, GetParam().path == Path::EFFECT, Magnitude::LENGTH);
    EXPECT_EQ(recording.named("glDrawArrays").at(0).numbers.at(1), 0);
}

INSTANTIATE_TEST_SUITE_P(Paths, Particles_RL_GL_v2_records_calls_test,
                         testing::Values(RecordCase{"buffer", Path::BUFFER},
                                         RecordCase{"memory", Path::MEMORY},
                                         RecordCase{"effect", Path::EFFECT}),
                         [](testing::TestParamInfo<RecordCase> const& info) { return info.param.name; });

// == Effects ==

TEST_F(Particles_RL_GL_v2_calls_test, anEffectDrawsFromTheBufferAndReusesIt) {
    look.channel = 1;
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true));
    EXPECT_THAT(layer.errorTags, ElementsAre("renderFromVboWithShaders:884"));
    EXPECT_EQ(particles.lastPath, 1U);
    recording.clear();
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboWithShaders, false));
    std::string const buffer = std::to_string(particles.vboId);
    EXPECT_THAT(
        bufferCalls(),
        ElementsAre("glPointSize(3)", "glEnableClientState(GL_VERTEX_ARRAY)",
                    "glEnableClientState(GL_COLOR_ARRAY)", "glBindBuffer(GL_ARRAY_BUFFER, " + buffer + ")",
                    "glVertexPointer(3, GL_FLOAT, 24, null)", "glColorPointer(3, GL_FLOAT, 24, pointer)",
                    "glDrawArrays(GL_POINTS, 0, 40)", "glBindBuffer(GL_ARRAY_BUFFER, 0)",
                    "glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"));
}

TEST_F(Particles_RL_GL_v2_calls_test, thePassOfAnEffectSurroundsTheDrawing) {
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true);
    recording.clear();
    draw(&Particles_RL_GL_v2::renderFromVboWithShaders, false);
    Texts const calls = recording.texts();
    EXPECT_EQ(calls.at(0), "glPolygonMode(GL_FRONT, GL_FILL)");
    EXPECT_EQ(calls.at(1), "glPolygonMode(GL_BACK, GL_FILL)");
    auto const at = [&calls](std::string const& text) {
        return std::find(calls.begin(), calls.end(), text) - calls.begin();
    };
    EXPECT_LT(at("glPushAttrib(0x6000)"), at("glDrawArrays(GL_POINTS, 0, 40)"));
    EXPECT_LT(at("glDrawArrays(GL_POINTS, 0, 40)"), at("glUseProgram(0)"));
    EXPECT_EQ(calls.back(), "glPopAttrib()");
    EXPECT_EQ(layer.currentFillingFront(), FILLING_SOLID);
}

TEST_F(Particles_RL_GL_v2_calls_test, aRefusedBufferClosesThePass) {
    layer.freeKilobytes = 0;
    layer.pushFillingFront(FILLING_LINES);
    layer.pushFillingBack(FILLING_LINES);
    EXPECT_FALSE(draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true));
    EXPECT_EQ(recording.count("glPushAttrib"), 1U);
    EXPECT_EQ(recording.count("glPopAttrib"), 1U);
    EXPECT_EQ(layer.currentFillingFront(), FILLING_LINES);
    EXPECT_EQ(layer.currentFillingBack(), FILLING_LINES);
    EXPECT_EQ(particles.lastPath, 0U);
}

TEST_F(Particles_RL_GL_v2_calls_test, eachModeHasItsEffect) {
    for (Mode::type const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        particles.setRenderMode(mode);
        draw(true, true, true);
        EXPECT_EQ(particles.lastPath, 1U);
    }
    EXPECT_NE(particles.pointShader, nullptr);
    EXPECT_NE(particles.sphereShader, nullptr);
    EXPECT_NE(particles.arrowShader, nullptr);
    EXPECT_EQ(recording.count("glPointSize"), 1U) << "of points alone";
    EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib"));
}

TEST_F(Particles_RL_GL_v2_calls_test, anotherMagnitudeMakesTheEffectAnew) {
    draw(true, true, true);
    std::size_t const objects = driver.liveObjects();
    recording.clear();
    draw(false, true, true);
    EXPECT_EQ(recording.count("glCreateProgram"), 0U);
    look.magnitude = 3;
    draw(false, true, true);
    EXPECT_EQ(recording.count("glCreateProgram"), 1U);
    EXPECT_EQ(recording.count("glDeleteProgram"), 1U);
    EXPECT_EQ(driver.liveObjects(), objects);
    EXPECT_EQ(particles.pointShader->processType(), 3U);
}

TEST_F(Particles_RL_GL_v2_calls_test, arrowsWithMagnitudeSixArePoints) {
    particles.setRenderMode(Mode::ARROWS);
    look.magnitude = 6;
    draw(true, true, true);
    EXPECT_NE(particles.pointShader, nullptr);
    EXPECT_EQ(particles.arrowShader, nullptr) << "nothing that is null was closed";
    EXPECT_EQ(recording.count("glPushAttrib"), 1U);
    EXPECT_EQ(recording.count("glPopAttrib"), 1U);

    look.magnitude = 0;
    draw(true, true, true);
    look.magnitude = 6;
    recording.clear();
    draw(true, true, true);
    EXPECT_EQ(recording.count("glPushAttrib"), 1U);
    EXPECT_EQ(recording.count("glPopAttrib"), 1U);
}

TEST_F(Particles_RL_GL_v2_calls_test, aModeWithoutEffectDrawsWithoutOne) {
    particles.setRenderMode(Mode::type(9));
    EXPECT_TRUE(draw(&Particles_RL_GL_v2::renderFromVboWithShaders, true));
    EXPECT_EQ(recording.count("glPushAttrib"), 0U);
    EXPECT_EQ(recording.count("glUseProgram"), 0U);
    EXPECT_EQ(recording.count("glDrawArrays"), 1U);
}

TEST_F(Particles_RL_GL_v2_calls_test, aFailingEffectRestoresTheState) {
    driver.shaderStatus(false, "0:1: error");
    driver.programStatus(false, "nothing to link");
    testing::internal::CaptureStdout();
    for (Mode::type const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
        particles.setRenderMode(mode);
        draw(true, true, true);
        draw(false, false, true);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib"));
    EXPECT_EQ(layer.currentFillingFront(), FILLING_SOLID);
}

// == Chunks ==

TEST_F(Particles_RL_GL_v2_calls_test, chunksAreDrawnFromTheirOwnArrays) {
    look.channel = 1;
    drawChunks();
    Vector3<float>* const positions = system.firstChunk()->channelData(0)->asVectors();
    Vector3<float>* const velocities = system.firstChunk()->channelData(1)->asVectors();
    EXPECT_THAT(recording.named("glVertexPointer").at(0).addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(positions)));
    EXPECT_THAT(recording.named("glColorPointer").at(0).addresses,
                ElementsAre(reinterpret_cast<std::uintptr_t>(velocities)));
    EXPECT_THAT(bufferCalls(),
                ElementsAre("glPointSize(3)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            "glEnableClientState(GL_COLOR_ARRAY)",
                            "glVertexPointer(3, GL_FLOAT, 12, pointer)",
                            "glColorPointer(3, GL_FLOAT, 12, pointer)", "glDrawArrays(GL_POINTS, 0, 40)",
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"));
    EXPECT_EQ(particles.lastPath, 3U);
}

TEST_F(Particles_RL_GL_v2_calls_test, scalarsAreReadWithAStrideOfOne) {
    look.channel = 2;
    drawChunks();
    EXPECT_THAT(bufferCalls(), Contains("glColorPointer(3, GL_FLOAT, 4, pointer)"));
}

TEST_F(Particles_RL_GL_v2_calls_test, chunksWithoutColors) {
    for (unsigned int const magnitude : {4U, 5U}) {
        for (Mode::type const mode : {Mode::POINTS, Mode::SPHERES, Mode::ARROWS}) {
            look.channel = 1;
            look.magnitude = magnitude;
            particles.setRenderMode(mode);
            drawChunks();
            EXPECT_EQ(recording.count("glColorPointer"), mode == Mode::ARROWS ? 1U : 0U);
            recording.clear();
        }
    }
    look.magnitude = 0;
    look.channel = NONE;
    drawChunks();
    EXPECT_EQ(recording.count("glColorPointer"), 0U);
}

TEST_F(Particles_RL_GL_v2_calls_test, unknownTypesAreReportedForEachChunk) {
    system.addParticles(CHUNK);
    look.channel = 3;
    testing::internal::CaptureStderr();
    drawChunks();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(UNKNOWN_TYPE) + UNKNOWN_TYPE);
    EXPECT_EQ(recording.count("glColorPointer"), 0U);
}

TEST_F(Particles_RL_GL_v2_calls_test, aPercentageOfAChunkIsDrawnByIndices) {
    struct Row {
        float percent;
        double count;
    };
    for (Row const row : {Row{0, 0}, Row{10, 4}, Row{33.3F, 13}, Row{50, 20}, Row{99.9F, 39}, Row{150, 40},
                          Row{-1, 0}, Row{NOT_A_NUMBER, 0}}) {
        look.percent = row.percent;
        recording.clear();
        drawChunks();
        ASSERT_EQ(recording.count("glDrawElements"), 1U) << row.percent;
        gl_spy::Call const call = recording.named("glDrawElements").at(0);
        EXPECT_THAT(call.numbers, ElementsAre(row.count)) << row.percent;
        EXPECT_THAT(call.enums, ElementsAre(GL_POINTS, GL_UNSIGNED_SHORT));
        EXPECT_THAT(call.addresses, ElementsAre(reinterpret_cast<std::uintptr_t>(particles.shuffledIndices)));
    }
}

TEST_F(Particles_RL_GL_v2_calls_test, chunksAreCompactedFirst) {
    system.firstChunk()->release(0);
    drawChunks();
    EXPECT_TRUE(system.firstChunk()->isCompacted());
    EXPECT_THAT(recording.named("glDrawArrays").at(0).numbers, ElementsAre(0, 39));
}

TEST_F(Particles_RL_GL_v2_calls_test, withoutPositionsChunksDrawNothing) {
    ParticleSystem_v2 other;
    other.addChannel("place", ParticleChannel_v2::VECTOR);
    other.addParticles(10);
    particles.renderFromChunksWithShaders(other, false, false, 1, 0, 1, look.minColor, look.maxColor,
                                          look.maxClampColor, 1, 0, 100, Magnitude::LENGTH);
    particles.render(other, false, 0, 100);
    EXPECT_EQ(recording.count("glDrawArrays"), 0U);
    EXPECT_EQ(recording.count("glEnableClientState"), 0U);
    EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib"));
}

TEST_F(Particles_RL_GL_v2_calls_test, aSystemWithoutChannelsIsDrawnAtTheOrigin) {
    ParticleSystem_v2 bare;
    bare.addParticles(5);
    particles.renderFromVboNoShaders(bare, false, true, 1, 0, 1, look.minColor, look.maxColor,
                                     look.maxClampColor, 1, NONE, 100, Magnitude::LENGTH);
    ASSERT_EQ(vboRecords().size(), 5U);
    EXPECT_THAT(vboRecords()[4], ElementsAre(0, 0, 0, 0.1F, 0.9F, 0));
}

TEST_F(Particles_RL_GL_v2_calls_test, rawPositionsAreDrawnChunkByChunk) {
    system.addParticles(CHUNK);
    particles.render(system, true, 5, 100);
    EXPECT_THAT(recording.texts(),
                ElementsAre("glEnableClientState(GL_VERTEX_ARRAY)",
                            "glVertexPointer(3, GL_FLOAT, 12, pointer)", "glDrawArrays(GL_POINTS, 0, 16384)",
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_VERTEX_ARRAY)",
                            "glVertexPointer(3, GL_FLOAT, 12, pointer)", "glDrawArrays(GL_POINTS, 0, 40)",
                            "glDisableClientState(GL_VERTEX_ARRAY)"));
    EXPECT_EQ(particles.lastPath, 0U);
    recording.clear();
    particles.render(system, true, 5, 25);
    EXPECT_THAT(recording.named("glDrawElements").at(0).numbers, ElementsAre(4096));
    EXPECT_THAT(recording.named("glDrawElements").at(1).numbers, ElementsAre(10));
}

// == The dispatcher ==

TEST_F(Particles_RL_GL_v2_calls_test, theDispatcherTakesTheBestWay) {
    struct Row {
        char const* name;
        unsigned int freeKilobytes;
        bool hasShaders;
        bool hasVbo;
        bool useVbo;
        bool useShaders;
        unsigned int path;
        bool usesBuffer;
    };
    for (Row const& row : {
             Row{"all there is", MUCH, true, true, true, true, 1, true},
             Row{"no buffer asked for", MUCH, true, true, false, true, 3, false},
             Row{"no buffer objects", MUCH, true, false, true, true, 3, false},
             Row{"little memory", 20 * 1024, true, true, true, true, 1, true},  // wraps: very much
             Row{"exactly the reserve", 25 * 1024, true, true, true, true, 3, false},
             Row{"memory unknown", 0, true, true, true, true, 3, false},  // refused where it is sized
             Row{"below GL 2", MUCH, false, true, true, true, 3, true},
             Row{"no effect asked for", MUCH, true, true, true, false, 3, true},
             Row{"no effect, no buffer objects", MUCH, true, false, true, false, 4, false},
             Row{"below GL 2, memory unknown", 0, false, true, true, true, 4, false},
             Row{"below GL 2, no buffer", MUCH, false, true, false, true, 4, false},
         }) {
        ProbedParticles fresh;
        fresh.init();
        fresh.vboSupported = row.hasVbo;
        layer.freeKilobytes = row.freeKilobytes;
        layer.hasShaders = row.hasShaders;
        recording.clear();
        fresh.render(system, false, true, 1, 0, 1, look.minColor, look.maxColor, look.maxClampColor, 1, 1,
                     100, row.useVbo, row.useShaders, Magnitude::LENGTH);
        EXPECT_EQ(fresh.lastPath, row.path) << row.name;
        EXPECT_EQ(recording.count("glMapBuffer"), row.usesBuffer ? 1U : 0U) << row.name;
        EXPECT_EQ(recording.count("glDrawArrays"), 1U) << row.name;
        EXPECT_EQ(recording.count("glPushAttrib"), recording.count("glPopAttrib")) << row.name;
        fresh.releaseEffects();
    }
}

}  // namespace
}  // namespace vellum
