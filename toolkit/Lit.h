#pragma once

#include "foundation/raster/Core_RL.h"
#include "toolkit/View.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Lighting by lights 0 and 1 while it lives, with the current color as the material's color.
///
///     {
///         Lit const lit(view);
///         drawMesh(renderer, {});
///     }   // unlit again
///
/// Lights count in paths without shaders only: particles drawn as points on the CPU path are lit like
/// everything else and have no normals, so they are drawn outside of the scope. Effects light what they draw
/// themselves.
///
/// It goes through VL_Raster as that is at the beginning, which must exist as long as the scope. Scopes do
/// not nest: the end of the inner one is dark. GL: NORMALIZE and color material, lights 0 and 1 and lighting
/// on, in this order; then for a finish glLightModelfv, glMaterialfv, glMaterialf and glColorMaterial; then
/// for a view glMatrixMode, glPushMatrix, glLoadMatrixd, the calls of setHeadLights() and glPopMatrix. At its
/// end lighting, light 1, light 0 and color material off. State: normals are made unit length from now on; a
/// finish changes ambient light and material for good, and a view the lights and the matrix mode, which is
/// GL_MODELVIEW.
class VL_TOOLKIT_EXPORT Lit {
public:
    enum class Finish {
        GLOSSY,
        DULL,   ///< for facets, which a highlight would fill whole
        BRIGHT  ///< for handles, whose colors must be recognizable on all sides
    };

    /// With head lights for the view (setHeadLights()), whatever the model-view matrix is at this moment; the
    /// highlights of orthographic views are left out, because their lighting is computed as seen from +z.
    explicit Lit(View const& view, Finish finish = Finish::GLOSSY);

    explicit Lit(Finish finish);  ///< With the lights that are set.

    /// With the lights, the ambient light and the highlights that are set.
    static Lit asSet() { return {}; }

    ~Lit();
    Lit(Lit const&) = delete;
    Lit& operator=(Lit const&) = delete;

private:
    Lit();

    Core_RL& layer;
};

}  // namespace vellum::toolkit
