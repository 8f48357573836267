#pragma once

/// \file
/// The passes of the effects as a program would write them without the effects: the calls before and after
/// the drawing, with the same values. A separate shared library with the compiler flags of the render layer,
/// so that its calls reach OpenGL through the same kind of indirection.

#define VL_BY_HAND_EXPORT __attribute__((visibility("default")))

namespace vellum::benchmarks {

struct DisplacementByHand {
    unsigned int program;
    unsigned int normalsTexture;
    unsigned int displacementTexture;
    float baseColor[4];
    float scale[3];
    float tileFactor[2];
    int depth;
    int lights;
};

struct OceanByHand {
    unsigned int program;
    unsigned int displacementTexture;
    float lightPosition[4];
    float baseColor[4];
    float scale;
    float repeatU;
    float repeatV;
    float dimX;
    float dimZ;
    float foamThreshold;
    int resolution;
};

struct GlassByHand {
    unsigned int program;
    unsigned int environmentTexture;
    unsigned int refractionTexture;
    float baseColor[3];
    float lightPosition[3];
    float depth;
    float mixRatio;
    int lights;
};

struct ScatteringByHand {
    unsigned int program;
    float materialThickness;
    float rimScalar;
    float extinctionCoefficient[3];
    float baseColor[4];
    int lights;
};

struct CustomByHand {
    unsigned int program;
    unsigned int textures[2];
    unsigned int frameTexture;
    float floats[10];
    float vec3s[10][3];
    float vec4s[10][4];
    float baseColor[4];
    int lights;
};

/// Opens a pass; with `isDirty` it sends every uniform, like an effect with changed parameters.
VL_BY_HAND_EXPORT void openByHand(DisplacementByHand const& pass, bool const& isDirty);
VL_BY_HAND_EXPORT void openByHand(OceanByHand const& pass);
VL_BY_HAND_EXPORT void openByHand(GlassByHand const& pass, bool const& isDirty);
VL_BY_HAND_EXPORT void openByHand(CustomByHand const& pass, bool const& isDirty);

/// With `isDirty` it first takes the program into use and sends the cached uniforms, like a setter.
VL_BY_HAND_EXPORT void openByHand(ScatteringByHand const& pass, bool const& isDirty);

/// Closes a pass of any effect.
VL_BY_HAND_EXPORT void closeByHand();

/// Deletes a texture, as a pass of glass does after it is closed.
VL_BY_HAND_EXPORT void deleteByHand(unsigned int const& texture);

}  // namespace vellum::benchmarks
