#pragma once

#include <cstddef>

namespace vellum {

/// How polygons are filled. Any number converts: 0 is filled, every other value means outlines.
enum FillingMode : unsigned int { FILLING_SOLID = 0, FILLING_LINES = 1 };

/// How fragments are combined with the framebuffer. Core_RL::setBlending ignores all other values.
enum BlendingMode : unsigned int {
    BLENDING_OFF = 0,
    BLENDING_ALPHA = 1  ///< source alpha, one minus source alpha
};

/// The contents of a texture outside 0 to 1. Any number converts; values above 3 set no wrap mode.
enum TextureClampingMode : unsigned int {
    TEXTURE_REPEAT = 0,
    TEXTURE_CLAMP_TO_BORDER = 1,
    TEXTURE_CLAMPING_WITHOUT_MEANING = 2,  ///< GL rejects it; the wrap mode stays as it is.
    TEXTURE_CLAMP = 3
};

/// The comparisons of DepthtTestMode::mode.
enum DepthTestFunction : unsigned int {
    DEPTH_ALWAYS = 0,
    DEPTH_TEST_OFF = 1,
    DEPTH_LESS = 2,
    DEPTH_EQUAL = 3,
    DEPTH_LESS_OR_EQUAL = 4,
    DEPTH_GREATER = 5,
    DEPTH_NOT_EQUAL = 6,
    DEPTH_GREATER_OR_EQUAL = 7
};

/// The depth test: a comparison (DepthTestFunction; above 7 the test stays as it is) and whether depth is
/// written.
/// Deliberate (interface-spelling): the name.
struct DepthtTestMode {
    unsigned int mode;
    bool write;
};

static_assert(sizeof(DepthtTestMode) == 8 && offsetof(DepthtTestMode, write) == 4,
              "32-bit mode, then a bool");

/// Culling: whether faces are culled, and which (true: back faces, false: front faces).
struct CullingMode {
    bool enabled;
    bool back;
};

static_assert(sizeof(CullingMode) == 2, "two bools");

}  // namespace vellum
