#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"

#include <memory>
#include <vector>

/// What all open seas are made of: the mesh of the water, the colors of the sky, and the sun. Up is +y.
namespace vellum::viewport {

double radians(double degrees);

/// A direction by its angles, degrees: the elevation above the horizon, the azimuth from -z toward +x. Unit
/// length.
Vector3<double> seaDirection(double elevation, double azimuth);

/// \param elevation, fromSun angles above the horizon and from the sun, degrees
Vector3<double> skyColor(double elevation, double fromSun);

/// The color for the layer; what exceeds 1 is cut.
Color4<float> skyTone(Vector3<double> const& color, double alpha);

/// Draws the sun as a disc with a soft rim, with the layer's matrices.
/// \param sun direction from the eye, unit length; not vertical
/// \param distance of the disc from the eye
void drawSunDisc(Core_RL& layer, Vector3<double> const& eye, Vector3<double> const& sun, double distance);

/// Water as a mesh for an ocean effect: with normals +y, and the texture coordinates (z, -x) / patch.
/// \param points rows of places one after the other, meters; seen from above, the next row lies to the left
/// of a row's direction \param columns points of a row \param unit the length that 1 stands for in the mesh,
/// meters
std::unique_ptr<Mesh> waterMesh(std::vector<Vector3<double>> const& points, unsigned int columns, double unit,
                                double patch);

}  // namespace vellum::viewport
