#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "toolkit/Framing.h"

namespace vellum::viewport {

/// A light of fixed-function OpenGL that does not fade with the distance.
struct LightSource {
    Vector3<double> position;  ///< in the frame of the current model-view matrix; a direction if isFarAway
    bool isFarAway;            ///< its light comes from the same direction everywhere
    Color4<float> ambient;
    Color4<float> diffuse;
    Color4<float> specular;

    /// GL: glLight.  State: the light's parameters; whether it shines is not changed.
    /// \param index 0 for GL_LIGHT0, 1 for GL_LIGHT1.
    void set(unsigned int index) const;
};

/// Sets two lights that stand with the viewer: the main one from the upper left, a fainter one from the right.
/// \param screen the screen's axes in the frame of the current model-view matrix.
/// \param specular strength of the main light's highlights, 0 to 1.
/// State: parameters of lights 0 and 1, lighting of both sides of a face.
void setHeadLights(toolkit::ScreenAxes const& screen, float specular);

}  // namespace vellum::viewport
