#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/Framing.h"

namespace vellum::viewport {

/// A light of an effect.
struct EffectLight {
    Vector3<float> place;  ///< right, up and toward the viewer from the middle, in radii of the scene
    Color4<float> color{1, 1, 1, 1};  ///< 0 to 100; the opacity is ignored
};

/// The lights of an effect.
struct EffectLights {
    /// How the lights' places become positions of OpenGL.
    struct Frame {
        Vector3<double> center;  ///< of the scene, in eye space
        double radius;           ///< of the scene, in eye space
        double unit;             ///< what a length of 1 that OpenGL gets stands for, in eye space
        float strength;          ///< of diffuse light

        /// Of a scene about the origin of the current model-view matrix.
        /// \param unit what a length of 1 of the model is in the scene
        static Frame ofScene(double unit);
    };

    unsigned int count = 1;  ///< how many of them shine, 1 or 2
    EffectLight first;
    EffectLight second;

    /// Sets both lights; how many of them shine is up to the effect.
    /// \param screen the screen's axes in eye space
    /// State: parameters of lights 0 and 1.
    void set(toolkit::ScreenAxes const& screen, Frame const& frame) const;
};

}  // namespace vellum::viewport
