#pragma once

/// \file
/// What a program would write that draws with the effects' GLSL programs without the effects: the calls of a pass,
/// before and after the drawing, with the same values. It is a shared library of its own with the compiler flags of the
/// render layer, so that its calls reach OpenGL in the same way.

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

/// Opens a pass; `isDirty` sends everything, as an effect does whose parameters have changed.
VL_BY_HAND_EXPORT void openByHand(DisplacementByHand const& pass, bool const& isDirty);
VL_BY_HAND_EXPORT void openByHand(OceanByHand const& pass);

/// Closes a pass of any effect.
VL_BY_HAND_EXPORT void closeByHand();

}  // namespace vellum::benchmarks
