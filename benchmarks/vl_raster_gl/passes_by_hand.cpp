#include "passes_by_hand.h"

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::benchmarks {

namespace {

// Every call queries the location by name, as the interface requires of the library: the benchmark measures
// the library's additional work, not that query.
struct Frame {
    float width;
    float height;
    float textureWidth;
    float textureHeight;
};

inline float powerOfTwo(int size) {
    int power = 1;
    while (power < size) {
        power *= 2;
    }
    return static_cast<float>(power);
}

inline Frame readFrame() {
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    return {static_cast<float>(viewport[2]), static_cast<float>(viewport[3]), powerOfTwo(viewport[2]),
            powerOfTwo(viewport[3])};
}

// The fixed-function state of every effect. Inline, as a program that knows its effect would write it.
inline void setState(int lights) {
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_3D);
    glEnable(GL_LIGHTING);
    for (int i = 0; i < lights; ++i) {
        glEnable(static_cast<GLenum>(GL_LIGHT0 + i));
    }
    glColor4f(1, 1, 1, 1);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

inline void sendFrame(GLuint program, Frame const& frame) {
    glUniform1fv(glGetUniformLocation(program, "FrameWidth"), 1, &frame.width);
    glUniform1fv(glGetUniformLocation(program, "FrameHeight"), 1, &frame.height);
    glUniform1fv(glGetUniformLocation(program, "textureWidth"), 1, &frame.textureWidth);
    glUniform1fv(glGetUniformLocation(program, "textureHeight"), 1, &frame.textureHeight);
}

// The program is taken into use again, as setUniformSampler() does for each sampler.
inline void bindSampler(GLuint program, char const* name, GLuint texture, int unit) {
    glUseProgram(program);
    GLint const location = glGetUniformLocation(program, name);
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture);
    glUniform1i(location, unit);
}

// Effects store the program's log after every pass. The buffer is as long as the library's.
inline void readLog(GLuint program) {
    static char log[4096];
    glGetProgramInfoLog(program, sizeof(log), nullptr, log);
}

inline void sendParameters(DisplacementByHand const& pass) {
    GLuint const program = pass.program;
    glUniform1iv(glGetUniformLocation(program, "depth"), 1, &pass.depth);
    glUniform4fv(glGetUniformLocation(program, "basecolor"), 1, pass.baseColor);
    glUniform3fv(glGetUniformLocation(program, "scale"), 1, pass.scale);
    glUniform2fv(glGetUniformLocation(program, "uvTileFactor"), 1, pass.tileFactor);
}

inline void sendParameters(OceanByHand const& pass) {
    GLuint const program = pass.program;
    glUniform1fv(glGetUniformLocation(program, "scale"), 1, &pass.scale);
    glUniform1fv(glGetUniformLocation(program, "repeat_u"), 1, &pass.repeatU);
    glUniform1fv(glGetUniformLocation(program, "repeat_v"), 1, &pass.repeatV);
    glUniform1fv(glGetUniformLocation(program, "foamThreshold"), 1, &pass.foamThreshold);
    glUniform1fv(glGetUniformLocation(program, "dim_X"), 1, &pass.dimX);
    glUniform1fv(glGetUniformLocation(program, "dim_Z"), 1, &pass.dimZ);
    glUniform1iv(glGetUniformLocation(program, "resolution"), 1, &pass.resolution);
    glUniform4fv(glGetUniformLocation(program, "lightpos"), 1, pass.lightPosition);
    glUniform4fv(glGetUniformLocation(program, "basecolor"), 1, pass.baseColor);
}

inline void sendParameters(GlassByHand const& pass) {
    GLuint const program = pass.program;
    glUniform3fv(glGetUniformLocation(program, "BaseColor"), 1, pass.baseColor);
    glUniform3fv(glGetUniformLocation(program, "LightPos"), 1, pass.lightPosition);
    glUniform1fv(glGetUniformLocation(program, "Depth"), 1, &pass.depth);
    glUniform1fv(glGetUniformLocation(program, "MixRatio"), 1, &pass.mixRatio);
}

inline void sendParameters(ScatteringByHand const& pass) {
    GLuint const program = pass.program;
    glUniform1fv(glGetUniformLocation(program, "MaterialThickness"), 1, &pass.materialThickness);
    glUniform1fv(glGetUniformLocation(program, "RimScalar"), 1, &pass.rimScalar);
    glUniform3fv(glGetUniformLocation(program, "ExtinctionCoefficient"), 1, pass.extinctionCoefficient);
    glUniform4fv(glGetUniformLocation(program, "BaseColor"), 1, pass.baseColor);
    glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
}

// Tables, as in the library: formatting 30 names per pass would dominate the time.
constexpr char const* FLOAT_NAMES[10] = {"FloatVar0", "FloatVar1", "FloatVar2", "FloatVar3", "FloatVar4",
                                         "FloatVar5", "FloatVar6", "FloatVar7", "FloatVar8", "FloatVar9"};
constexpr char const* VEC3_NAMES[10] = {"Vec3Var0", "Vec3Var1", "Vec3Var2", "Vec3Var3", "Vec3Var4",
                                        "Vec3Var5", "Vec3Var6", "Vec3Var7", "Vec3Var8", "Vec3Var9"};
constexpr char const* VEC4_NAMES[10] = {"Vec4Var0", "Vec4Var1", "Vec4Var2", "Vec4Var3", "Vec4Var4",
                                        "Vec4Var5", "Vec4Var6", "Vec4Var7", "Vec4Var8", "Vec4Var9"};

inline void sendParameters(CustomByHand const& pass) {
    GLuint const program = pass.program;
    for (int i = 0; i < 10; ++i) {
        glUniform1fv(glGetUniformLocation(program, FLOAT_NAMES[i]), 1, &pass.floats[i]);
        glUniform3fv(glGetUniformLocation(program, VEC3_NAMES[i]), 1, pass.vec3s[i]);
        glUniform4fv(glGetUniformLocation(program, VEC4_NAMES[i]), 1, pass.vec4s[i]);
    }
    glUniform4fv(glGetUniformLocation(program, "BaseColor"), 1, pass.baseColor);
    glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
}

}  // namespace

// Each pass repeats the order of its effect, in which a dirty effect first sends the cached values (those of
// the former pass, so the former size of the frame) and then the new ones.
void openByHand(DisplacementByHand const& pass, bool const& isDirty) {
    GLuint const program = pass.program;
    static Frame kept{};
    if (isDirty) {
        glUseProgram(program);
        sendFrame(program, kept);
        sendParameters(pass);
        glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
    }
    setState(pass.lights);
    kept = readFrame();
    if (isDirty) {
        sendFrame(program, kept);
        sendParameters(pass);
    }
    bindSampler(program, "normalsMap", pass.normalsTexture, 0);
    bindSampler(program, "displacementMap", pass.displacementTexture, 1);
    if (isDirty) {
        glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
    }
    readLog(program);
}

// The ocean is always dirty, so its pass has no shorter form.
void openByHand(OceanByHand const& pass) {
    GLuint const program = pass.program;
    static Frame kept{};
    glUseProgram(program);
    sendFrame(program, kept);
    sendParameters(pass);
    setState(2);
    kept = readFrame();
    sendFrame(program, kept);
    sendParameters(pass);
    bindSampler(program, "displacementMap", pass.displacementTexture, 1);
    readLog(program);
}

void openByHand(GlassByHand const& pass, bool const& isDirty) {
    GLuint const program = pass.program;
    static Frame kept{};
    if (isDirty) {
        glUseProgram(program);
        sendParameters(pass);
        sendFrame(program, kept);
        glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
    }
    setState(pass.lights);
    kept = readFrame();
    glUseProgram(program);
    if (isDirty) {
        sendParameters(pass);
        sendFrame(program, kept);
    }
    bindSampler(program, "EnvMap", pass.environmentTexture, 0);
    bindSampler(program, "RefractionMap", pass.refractionTexture, 1);
    if (isDirty) {
        glUniform1iv(glGetUniformLocation(program, "nLights"), 1, &pass.lights);
    }
}

void openByHand(ScatteringByHand const& pass, bool const& isDirty) {
    GLuint const program = pass.program;
    static Frame kept{};
    if (isDirty) {
        glUseProgram(program);
        sendFrame(program, kept);
        sendParameters(pass);
    }
    setState(pass.lights);
    kept = readFrame();
    if (isDirty) {
        sendFrame(program, kept);
        sendParameters(pass);
    }
    readLog(program);
}

void openByHand(CustomByHand const& pass, bool const& isDirty) {
    GLuint const program = pass.program;
    if (isDirty) {
        glUseProgram(program);
        sendParameters(pass);
    }
    setState(pass.lights);
    bindSampler(program, "Texture0", pass.textures[0], 0);
    bindSampler(program, "Texture1", pass.textures[1], 1);
    bindSampler(program, "TextureFB", pass.frameTexture, 7);
    if (isDirty) {
        sendParameters(pass);
    }
    readLog(program);
    // The user shader clears one error after each pass.
    glGetError();
}

void closeByHand() {
    glUseProgram(0);
    // Both calls, as effects are closed: the second is the name of the first in an older extension.
    glUseProgramObjectARB(0);
    glPopAttrib();
}

void deleteByHand(unsigned int const& texture) {
    glDeleteTextures(1, &texture);
}

}  // namespace vellum::benchmarks
