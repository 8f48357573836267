#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/ViewKind.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// A light of fixed-function OpenGL that does not fade with the distance.
struct VL_TOOLKIT_EXPORT LightSource {
    Vector3<double> position;  ///< in the frame of the current model-view matrix; a direction if isFarAway
    bool isFarAway;            ///< its light comes from the same direction everywhere
    Color4<float> ambient;
    Color4<float> diffuse;
    Color4<float> specular;

    /// GL: glLightfv x 4 (position, ambient, diffuse, specular), glLightf x 3 (no attenuation).
    /// State: the light's parameters; whether it shines is not changed.
    /// \param index 0 for GL_LIGHT0, 1 for GL_LIGHT1.
    void set(unsigned int index) const;
};

/// Sets two lights that stand with the viewer: the main one from the upper left, a fainter one from the
/// right. Both sides of a face are lit, because the order of corners in files is unreliable. \param screen
/// the screen's axes in the frame of the current model-view matrix. \param specular strength of the main
/// light's highlights, 0 to 1. GL: the calls of LightSource::set() x 2, glLightModeli. State: parameters of
/// lights 0 and 1, lighting of both sides of a face.
VL_TOOLKIT_EXPORT void setHeadLights(ScreenAxes const& screen, float specular);

}  // namespace vellum::toolkit
