#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "toolkit/View.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// A light of an effect.
struct EffectLight {
    Vector3<float> place;  ///< right, up and toward the viewer from the subject's center, in its radii
    Color4<float> color{1, 1, 1, 1};  ///< 0 to 100; the opacity is ignored
};

/// The lights of an effect: the usual main light from the upper left, and one from behind that the effect may
/// use.
struct EffectLights {
    unsigned int count = 1;  ///< how many of them shine, 1 or 2; to be told to the effect by its setNLights()
    EffectLight first{{-2, 3, 2.5F}};
    EffectLight second{{3, 0.6F, -1.5F}};
};

/// What is lit.
struct EffectSubject {
    Vector3<double> center{0, 0, 0};  ///< in the frame of the current model-view matrix
    double radius = 1;                ///< in its units; above 0
};

/// Places lights 0 and 1 so that they suit an effect.
///
/// Most effects look for them in eye space, where they do not fade. SSScattering_shader looks for them in
/// clip space and lets them fade with the distance, so that lights at their true places either burn the
/// material to white or leave it black: it gets lights far away, ten times as strong.
///
/// To be called before drawWith(), with the matrices that the effect draws with. The lights stand still on
/// the screen, whatever the view: in eye space, so that a model-view matrix that is changed for each object
/// moves none of them. \param view with these matrices GL: glMatrixMode, glPushMatrix, glLoadIdentity, the
/// calls of LightSource::set() x 2, glPopMatrix. State: parameters of lights 0 and 1; GL_MODELVIEW selected.
VL_TOOLKIT_EXPORT void setEffectLights(Mesh_RL_Shader const& effect, EffectLights const& lights,
                                       View const& view, EffectSubject const& subject = {});

/// The material that effects read: ambient and diffuse as they expect them, and a highlight.
/// \param gloss strength of the highlight, 0 to 1
/// \param shininess exponent of the highlight, 0 to 128
/// GL: glMaterialfv x 3, glMaterialf.  State: the material of both sides.
VL_TOOLKIT_EXPORT void setEffectMaterial(float gloss, float shininess);

}  // namespace vellum::toolkit
