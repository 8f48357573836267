#pragma once

#include "Camera_RL_GL.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"

#include <memory>

namespace vellum::viewport {

/// An open sea up to the horizon, seen from a boat along -z: the grid of the water, the camera, and the sky.
/// Lengths are meters; the origin is on the still water below the viewer.
class OceanScene {
public:
    struct View {
        double eyeHeight;     ///< above the still water
        double tiltDegrees;   ///< below the horizon
        double sunElevation;  ///< degrees
        double sunAzimuth;    ///< degrees, to the right of the middle
        double aspect;        ///< width of the picture by its height
    };

    explicit OceanScene(View view) : view(view) {}

    /// The direction of the sun, unit length.
    Vector3<double> sunDirection() const;

    void placeCamera(Camera_RL_GL& camera) const;

    /// The water: as wide as it is seen, from behind the viewer to the horizon, with triangles that grow with
    /// the distance. Normals are +y. \param unit the length that 1 stands for in the mesh, meters \param
    /// patch side of the square that the texture covers, meters: a point has the coordinates (z, -x) / patch
    std::unique_ptr<Mesh> water(double unit, double patch) const;

    // == Drawing, with the camera's matrices loaded and lighting off ==

    void drawSky(Core_RL& layer) const;   ///< Touches no depth. Before the water.
    void drawHaze(Core_RL& layer) const;  ///< The haze before distant water. After the water.

private:
    double _halfAngle() const;

    View view;
};

}  // namespace vellum::viewport
