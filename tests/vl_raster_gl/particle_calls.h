#pragma once

#include "Particles_RL_GL_v2.h"

#include "NotingLayer.h"
#include "foundation/geometry/ParticleSystemConstIterator_v2.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vellum {

/// The expectations of the particle renderer's tests: the contents of its buffers, computed one particle at a
/// time in single precision, and the calls of each drawing path.
namespace particle_calls {

using Mode = Particles_RL_GL_v2_ns::RenderMode;
using Magnitude = Particles_RL_GL_v2_ns::RenderMagnitude;

inline constexpr unsigned int NONE = 0xFFFFFFFFU;
inline constexpr unsigned int EXTENSIONS = 0x1F03;
inline constexpr unsigned int VERSION = 0x1F02;
inline constexpr unsigned int FREE_MEMORY = 0x9049;
inline constexpr int PLENTY = 1 << 20;  // kilobytes
inline constexpr unsigned int CHUNK = 16384;
inline constexpr unsigned int BATCH = 524288;
inline constexpr char UNKNOWN_TYPE[] = "channel.getType() not found. Default value will be used.";

inline constexpr float INF = std::numeric_limits<float>::infinity();
inline constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// The arguments of a drawing path.
struct Arguments {
    bool keepFlag = false;
    bool rebuild = true;
    float scale = 1.5F;
    float minMagnitude = 0.25F;
    float maxMagnitude = 1.75F;
    Color4<float> minColor{0.9F, 0.1F, 0.3F, 1};
    Color4<float> maxColor{0.2F, 0.8F, 0.7F, 1};
    Color4<float> maxClampColor{1, 0.5F, 0.25F, 1};
    float pointSize = 4;
    unsigned int channel = NONE;
    float percent = 100;
    bool useVbo = true;
    bool useShaders = false;
    unsigned int magnitude = 0;
};

/// The renderer with its protected members.
class Probe : public Particles_RL_GL_v2 {
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

    /// Runs one of the four drawing paths and returns its result.
    template <class Way>
    auto along(Way way, ParticleSystem_v2 const& system, Arguments const& a) {
        return (this->*way)(system, a.keepFlag, a.rebuild, a.scale, a.minMagnitude, a.maxMagnitude,
                            a.minColor, a.maxColor, a.maxClampColor, a.pointSize, a.channel, a.percent,
                            Magnitude::type(a.magnitude));
    }
    bool vbo(ParticleSystem_v2 const& s, Arguments const& a) {
        return along(&Probe::renderFromVboNoShaders, s, a);
    }
    bool vboEffect(ParticleSystem_v2 const& s, Arguments const& a) {
        return along(&Probe::renderFromVboWithShaders, s, a);
    }
    void memory(ParticleSystem_v2 const& s, Arguments const& a) {
        along(&Probe::renderFromMemoryNoShaders, s, a);
    }
    void chunks(ParticleSystem_v2 const& s, Arguments const& a) {
        along(&Probe::renderFromChunksWithShaders, s, a);
    }
    void dispatch(ParticleSystem_v2 const& s, Arguments const& a) {
        render(s, a.keepFlag, a.rebuild, a.scale, a.minMagnitude, a.maxMagnitude, a.minColor, a.maxColor,
               a.maxClampColor, a.pointSize, a.channel, a.percent, a.useVbo, a.useShaders,
               Magnitude::type(a.magnitude));
    }
    void configure(Arguments const& a) {
        configureShaders(false, a.pointSize, a.scale, a.minMagnitude, a.maxMagnitude, a.minColor, a.maxColor,
                         a.maxClampColor, Magnitude::type(a.magnitude));
    }
};

/// A driver, a render layer whose faces are drawn as lines, and a renderer.
struct Rig {
    explicit Rig(int freeKilobytes = PLENTY, std::string const& version = "2.1.0",
                 std::string const& buffers = "GL_ARB_vertex_buffer_object") {
        driver.string(VERSION, version)
            .string(EXTENSIONS, buffers + " GL_NVX_gpu_memory_info GL_EXT_geometry_shader4")
            .integer(FREE_MEMORY, {freeKilobytes});
        layer.pushFillingFront(FILLING_LINES);
        layer.pushFillingBack(FILLING_LINES);
        renderer.init();
    }
    ~Rig() { renderer.releaseEffects(); }

    std::vector<std::uint32_t> vboBits() const {
        return gl_spy::as<std::uint32_t>(driver.bufferContents(renderer.vboId));
    }
    std::vector<std::uint32_t> hostBits(std::size_t particles) const {
        std::vector<std::uint32_t> bits(particles * 6);
        if (particles != 0) {
            std::memcpy(bits.data(), renderer.hostBuffer, particles * 24);
        }
        return bits;
    }

    gl_spy::Script driver = gl_spy::drivers::geometryShader4();
    NotingLayer layer;
    Probe renderer;
};

/// Particles whose values are all different in sign and size, some beyond either end of the magnitudes.
struct Particles {
    explicit Particles(unsigned int count, char const* positionName = "position") {
        position = system.addChannel(positionName, ParticleChannel_v2::VECTOR);
        velocity = system.addChannel("velocity", ParticleChannel_v2::VECTOR);
        energy = system.addChannel("energy", ParticleChannel_v2::SCALAR);
        odd = system.addChannel("odd", 5);
        system.addParticles(count);
        float k = 0;
        for (ParticleSystemChunk_v2* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
            for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++k) {
                chunk->channelData(position)->asVectors()[slot] = {k * 0.5F, -k, k + 0.25F};
                chunk->channelData(velocity)->asVectors()[slot] = {(std::fmod(k, 7.0F) - 3) * 0.83F,
                                                                   (std::fmod(k, 11.0F) - 5) * 0.61F,
                                                                   (std::fmod(k, 5.0F) - 2) * 1.27F};
                chunk->channelData(energy)->asFloats()[slot] = (std::fmod(k, 9.0F) - 3) * 0.47F;
            }
        }
    }
    ParticleSystem_v2 system;
    unsigned int position;
    unsigned int velocity;
    unsigned int energy;
    unsigned int odd;
};

// == Contents of the buffers ==

using Rgb = std::array<float, 3>;

/// The value of the color channel for one particle.
struct Value {
    unsigned int type;  ///< 0 without a channel
    float s;
    Vector3<float> v;
};

inline Rgb rgb(Color4<float> const& c) {
    return {c.r, c.g, c.b};
}

inline Rgb clamped(Rgb color) {
    for (float& component : color) {
        component = component > 0 ? (component < 1 ? component : 1) : 0;  // NaN is 0
    }
    return color;
}

inline float lengthOf(float x, float y, float z) {
    return std::sqrt(x * x + y * y + z * z);
}

/// The magnitude of the integer part; values outside the range of int, and NaN, give 2^31.
inline float cut(float component) {
    bool const fits = component > -2147483648.0F && component < 2147483648.0F;
    return fits ? static_cast<float>(std::abs(static_cast<int>(component))) : 2147483648.0F;
}

inline bool isRange(Arguments const& a) {
    return std::fabs(a.maxMagnitude - a.minMagnitude) > 1e-14;
}

inline Rgb ramp(Arguments const& a, float m) {
    float const t = (m - a.minMagnitude) / (a.maxMagnitude - a.minMagnitude);
    if (t > 1) {
        return clamped(rgb(a.maxClampColor));
    }
    return clamped({a.minColor.r + (a.maxColor.r - a.minColor.r) * t,
                    a.minColor.g + (a.maxColor.g - a.minColor.g) * t,
                    a.minColor.b + (a.maxColor.b - a.minColor.b) * t});
}

inline Rgb vboColor(Arguments const& a, Value const& value) {
    if (value.type == 0) {
        return clamped(rgb(a.minColor));
    }
    float m = lengthOf(a.minColor.r, a.minColor.g, a.minColor.b) / a.scale;
    if (value.type == 9) {
        m = value.s;
    } else if (value.type == 1 && a.magnitude >= 1 && a.magnitude <= 3) {
        m = cut(a.magnitude == 3 ? value.v.z : a.magnitude == 2 ? value.v.y : value.v.x) / a.scale;
    } else if (value.type == 1) {
        m = lengthOf(value.v.x, value.v.y, value.v.z) / a.scale;
    }
    return isRange(a) ? ramp(a, m) : clamped(rgb(a.minColor));
}

inline Rgb memoryColor(Arguments const& a, Value const& value) {
    if (value.type == 0) {
        return rgb(a.maxColor);
    }
    bool const isComponent = a.magnitude >= 1 && a.magnitude <= 3;
    if (!isComponent && value.type != 9) {
        if (a.magnitude == 5) {
            return rgb(a.maxColor);
        }
        if (a.magnitude == 4) {
            return rgb(a.minColor);
        }
        return isRange(a) ? ramp(a, lengthOf(value.v.x, value.v.y, value.v.z) / a.scale) : Rgb{0, 0, 0};
    }
    float const component = a.magnitude == 3   ? value.v.z
                            : a.magnitude == 2 ? value.v.y
                            : a.magnitude == 1 ? value.v.x
                                               : value.s;
    return isRange(a) ? ramp(a, cut(component) / a.scale) : clamped(rgb(a.minColor));
}

inline Rgb effectColor(Arguments const& a, Value const& value) {
    if (value.type == 1) {
        return {value.v.x, value.v.y, value.v.z};
    }
    if (value.type == 9) {
        float const v = std::sqrt(value.s * value.s / 3);
        return {v, v, v};
    }
    return rgb(a.minColor);
}

using ColorRule = Rgb (*)(Arguments const&, Value const&);

inline unsigned int targetOf(ParticleSystem_v2 const& system, float percent) {
    return static_cast<unsigned int>(static_cast<float>(system.size()) * percent / 100);
}

/// The bits of the records of the particles that even thinning selects.
inline std::vector<std::uint32_t> recordBits(ParticleSystem_v2 const& system, Arguments const& a,
                                             ColorRule color) {
    std::vector<float> records;
    unsigned int const target = targetOf(system, a.percent);
    unsigned int taken = 0;
    unsigned int visited = 0;
    ParticleSystemConstIterator_v2 particle;
    ParticleSystemConstIterator_v2 end;
    end.setEnd(&system);
    for (particle.setBegin(&system); particle != end && taken < target; ++particle, ++visited) {
        float const p = visited == 0 ? 0 : static_cast<float>(taken) / static_cast<float>(visited) * 100;
        if (!(p <= a.percent)) {
            continue;
        }
        ++taken;
        auto const [channels, slot] = *particle;
        Value value{0, 0, {0, 0, 0}};
        if (a.channel != NONE) {
            ParticleChannel_v2 const* const record = system.findChannel(a.channel);
            value.type = record != nullptr ? record->type : 77;
            if (value.type == 1) {
                value.v = channels[a.channel]->asVectors()[slot];
            }
            if (value.type == 9) {
                value.s = channels[a.channel]->asFloats()[slot];
            }
        }
        Vector3<float> const at = channels[0]->asVectors()[slot];
        Rgb const c = color(a, value);
        records.insert(records.end(), {at.x, at.y, at.z, c[0], c[1], c[2]});
    }
    std::vector<std::uint32_t> bits(records.size());
    if (!records.empty()) {
        std::memcpy(bits.data(), records.data(), records.size() * sizeof(float));
    }
    return bits;
}

/// The shuffled index table for `count` particles.
inline std::vector<unsigned short> shuffled(unsigned int count) {
    std::vector<unsigned short> table(count);
    std::iota(table.begin(), table.end(), static_cast<unsigned short>(0));
    srand(count);
    for (unsigned int i = 0; i + 1 < count; ++i) {
        std::swap(table[i], table[i + unsigned(rand()) / (unsigned(RAND_MAX) / (count - i) + 1)]);
    }
    return table;
}

// == Calls ==

inline std::string binding(unsigned int name) {
    return "glBindBuffer(GL_ARRAY_BUFFER, " + std::to_string(name) + ")";
}
inline std::string store(std::size_t bytes) {
    return "glBufferData(GL_ARRAY_BUFFER, " + std::to_string(bytes) + ", null, GL_STREAM_DRAW)";
}
inline std::string deleted(unsigned int name) {
    return "glDeleteBuffers(1, {" + std::to_string(name) + "})";
}
inline std::string arrays(std::size_t count) {
    return "glDrawArrays(GL_POINTS, 0, " + std::to_string(count) + ")";
}
inline std::string elements(std::size_t count) {
    return "glDrawElements(GL_POINTS, " + std::to_string(count) + ", GL_UNSIGNED_SHORT, pointer)";
}
inline std::string vertices(int stride, char const* at = "pointer") {
    return "glVertexPointer(3, GL_FLOAT, " + std::to_string(stride) + ", " + at + ")";
}
inline std::string colors(int stride) {
    return "glColorPointer(3, GL_FLOAT, " + std::to_string(stride) + ", pointer)";
}

inline std::string const FREE = "glGetIntegerv(" + gl_spy::enumName(FREE_MEMORY) + ", pointer)";
inline std::string const GENERATED = "glGenBuffers(1, pointer)";
inline std::string const SIZED = "glPointSize(4)";
inline Texts const ENABLED{"glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_COLOR_ARRAY)"};
inline Texts const DISABLED{"glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"};
inline Texts const SOLID{"glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"};
inline Texts const LINES{"glPolygonMode(GL_FRONT, GL_LINE)", "glPolygonMode(GL_BACK, GL_LINE)"};
inline Texts const CLOSED{"glUseProgram(0)", "glUseProgramObjectARB(0)", "glPopAttrib()"};

/// The store grows.
inline Texts grown(unsigned int name, std::size_t particles) {
    return {FREE, binding(0), binding(name), store(particles * 24)};
}
inline Texts uploaded(unsigned int name, std::size_t particles) {
    return {binding(name), store(particles * 24), "glMapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE)",
            "glGetError()", "glUnmapBuffer(GL_ARRAY_BUFFER)"};
}
inline Texts drawnFromVbo(unsigned int name, std::size_t particles, Texts const& pointSize) {
    return joined({ENABLED,
                   pointSize,
                   {binding(name), vertices(24, "null"), colors(24), arrays(particles), binding(0)},
                   DISABLED});
}
inline Texts drawnBatch(std::size_t particles) {
    return joined({ENABLED, {vertices(24), colors(24), arrays(particles)}, DISABLED});
}
/// A chunk with colors.
inline Texts drawnChunk(int colorStride, std::string const& draw) {
    return joined({ENABLED, {vertices(12), colors(colorStride), draw}, DISABLED});
}
/// A chunk without colors.
inline Texts drawnChunk(std::string const& draw) {
    return {ENABLED[0], vertices(12), draw, DISABLED[0]};
}

/// The calls of a clean effect before the drawing.
inline Texts openedPass(unsigned int mode, unsigned int program) {
    Texts const size = mode == Mode::POINTS ? Texts{SIZED} : Texts{};
    Texts const width = mode == Mode::ARROWS ? Texts{"glLineWidth(2)"} : Texts{};
    return joined({SOLID,
                   size,
                   {"glPushAttrib(0x6000)", "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_3D)",
                    "glEnable(GL_LIGHTING)", "glEnable(GL_LIGHT0)", "glColor4f(1, 1, 1, 1)",
                    "glEnable(GL_BLEND)", "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)"},
                   width,
                   {"glGetIntegerv(GL_VIEWPORT, pointer)", "glUseProgram(" + std::to_string(program) + ")"}});
}

/// The calls of the renderer itself, and the first and last calls of the effect's pass.
inline Texts ownCalls(gl_spy::Recording const& recording) {
    static std::set<std::string> const own{"glGenBuffers",          "glDeleteBuffers",      "glBindBuffer",
                                           "glBufferData",          "glMapBuffer",          "glUnmapBuffer",
                                           "glEnableClientState",   "glDisableClientState", "glVertexPointer",
                                           "glColorPointer",        "glDrawArrays",         "glDrawElements",
                                           "glPointSize",           "glPolygonMode",        "glPushAttrib",
                                           "glUseProgramObjectARB", "glPopAttrib",          "glGetError"};
    Texts calls;
    for (gl_spy::Call const& call : recording.calls()) {
        if (own.count(call.name) != 0 || call.text() == FREE) {
            calls.push_back(call.text());
        }
    }
    return calls;
}

inline Texts const OPENED_POINTS = joined({SOLID, {SIZED, "glPushAttrib(0x6000)"}});
inline Texts const OPENED = joined({SOLID, {"glPushAttrib(0x6000)"}});
inline Texts const ENDED = joined({LINES, {"glUseProgramObjectARB(0)", "glPopAttrib()"}});

inline unsigned int programOf(gl_spy::Recording const& recording) {
    for (std::size_t i = recording.calls().size(); i-- > 0;) {
        gl_spy::Call const& call = recording.calls()[i];
        if (call.name == "glUseProgram" && call.numbers.at(0) != 0) {
            return static_cast<unsigned int>(call.numbers[0]);
        }
    }
    return 0;
}

template <class Action>
inline Texts callsOf(Action const& action) {
    gl_spy::Recording const recording;
    action();
    return recording.texts();
}

template <class Action>
inline Texts ownCallsOf(Action const& action) {
    gl_spy::Recording const recording;
    action();
    return ownCalls(recording);
}

template <class Action>
inline std::string errorsOf(Action const& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

}  // namespace particle_calls

}  // namespace vellum
