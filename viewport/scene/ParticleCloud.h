#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/Quantity.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The particles of a file as they are drawn, in the frame of the scene.
struct ParticleCloud {
    // The first channels of `system`, both vectors.
    static constexpr unsigned int POSITIONS = 0;
    static constexpr unsigned int SHOWN = 1;  ///< their lengths are what colors show; arrows lie along them

    std::string name;                                 ///< the file's, without its folder
    std::shared_ptr<ParticleSystem_v2 const> system;  ///< finite positions only
    /// The vector channel of `system` with the colors of the particles: red, green and blue, 0 to 1. They take the place
    /// of those of the lengths.
    std::optional<unsigned int> colors;
    /// The scalar channel of `system` with the diameters of the spheres, in units of the scene.
    std::optional<unsigned int> sizes;
    std::vector<Vector3<float>> boxLines;  ///< two ends for each line of the box that the particles are in
    Box3<double> box;                      ///< around all of it
    double spacing;                        ///< the mean distance of neighbors; above 0
    double diameter;                       ///< of a sphere; above 0
};

/// Makes the cloud of a frame in two steps: Scene needs the boxes of all clouds before it can place any of
/// them.
///
///     CloudMaker const maker(frame, look);
///     ... maker.box() ...
///     ParticleCloud const cloud = maker.make(center, scale);
///
/// Particles that cannot be drawn (see isDrawable()) are left out. Frame and look must outlive it.
class CloudMaker {
public:
    CloudMaker(ParticleFrame const& frame, ParticleLook const& look);

    /// Around the particles with their size and the box that they are in, in units of the file.
    Box3<double> const& box() const { return bounds; }

    /// Moves `center` to the origin, then multiplies by `scale`.
    ParticleCloud make(Vector3<double> const& center, double scale) const;

private:
    void _choose();
    void _shuffle();
    void _measure();
    std::size_t _index(std::size_t place) const { return isSelection ? order[place] : place; }
    Vector3<float> _shown(std::size_t particle) const;

    ParticleFrame const& frame;
    ParticleLook const& look;
    std::optional<Quantity> quantity;  // that colors show
    std::size_t count = 0;             // of the particles that are drawn
    bool isSelection = false;          // the particles are those of `order`, else all of the frame
    std::vector<unsigned int> order;   // by the place in the cloud
    std::optional<ParticleBox> edges;  // of the box that the particles are in; finite
    Box3<double> bounds{{0, 0, 0}, {0, 0, 0}};
    double spacing = 1;
    double diameter = 1;
};

}  // namespace vellum::viewport
