#pragma once

#include "foundation/geometry/Box3.h"
#include "toolkit/View.h"
#include "viewport/drawing/Picked.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/scene/Scene.h"

#include <functional>
#include <optional>

namespace vellum::viewport {

/// Where a place of a file is drawn, in units and axes of the file; empty: there.
using ShownAt = std::function<Vector3<double>(Vector3<double> const&)>;

/// What a point of the screen shows of a mesh, among its triangles, lines and points, as the file has them.
///
/// Triangles count from both sides. Lines and points are within reach of two and a half pixels; over a
/// surface that the point shows, only where they cover it. Where no triangle covers the point itself, it is
/// the one that covers the nearest pixel's middle in the view's viewport.
///
/// Plain arithmetic in double precision, one pass over the mesh; allocates nothing but names and values.
/// \param model the model of this mesh, in the scene
/// \param view of a small part of the screen, as wide and high in pixels as its viewport, with the point in
/// its middle \param clip only what is inside is drawn; in axes and units of the file \param most what lies
/// deeper is hidden by other things: it is found only where nothing else is \param shownAt of objects that
/// are moved; the view is then that of what was not moved \return nothing where none covers the middle of a
/// pixel.
std::optional<PickedElement> findElement(Model const& model, MeshData const& mesh, toolkit::View const& view,
                                         std::optional<Box3<double>> const& clip, double most,
                                         ShownAt const& shownAt = {});

/// Where a line from an origin goes through a triangle, seen from either side.
struct Crossing {
    double distance;  ///< from the origin, in lengths of the direction
    double u;         ///< the share of the second corner
    double v;         ///< the share of the third corner

    /// Nothing where it passes the triangle, or where the triangle has no area as seen along the line.
    static std::optional<Crossing> of(Vector3<double> const& origin, Vector3<double> const& direction,
                                      Vector3<double> const& a, Vector3<double> const& b,
                                      Vector3<double> const& c);
};

}  // namespace vellum::viewport
