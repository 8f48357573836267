#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/EffectLights.h"

#include <array>
#include <cstddef>
#include <string>

namespace vellum::viewport {

/// Shaders written by a user, and the inputs that they may declare; see Custom_shader.
struct CustomEffect {
    static constexpr std::size_t TEXTURES = 7;
    static constexpr std::size_t VARIABLES = 10;

    std::string vertexShader;     ///< a file; empty: a stage that passes everything on
    std::string fragmentShader;   ///< alike
    std::string geometryShader;   ///< a file; empty: no such stage
    bool replacesStages = false;  ///< of what does not compile or link; else that is a fault

    Color4<float> baseColor{0.8F, 0.8F, 0.8F, 1};  ///< BaseColor, 0 to 1000
    bool grabsFrameBuffer = false;                 ///< what is drawn before goes into TextureFB
    double gloss = 0.3;                            ///< gl_FrontMaterial.specular, 0 to 1
    double shininess = 32;                         ///< gl_FrontMaterial.shininess, 0 to 128
    toolkit::EffectLights lights{1, {{-2, 3, 2.5F}}, {{3, 0.6F, -1.5F}}};
    std::array<std::string, TEXTURES> textures;     ///< Texture0 and so on, picture files; empty: none
    std::array<double, VARIABLES> floats{};         ///< FloatVar0 and so on, -1e9 to 1e9
    std::array<Vector3<float>, VARIABLES> vec3s{};  ///< Vec3Var0 and so on, -1e9 to 1e9
    std::array<Color4<float>, VARIABLES> vec4s{};   ///< Vec4Var0 and so on, -1e9 to 1e9
};

}  // namespace vellum::viewport
