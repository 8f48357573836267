#pragma once

#include "foundation/geometry/Vector3.h"
#include "toolkit/Framing.h"

#include <optional>

namespace vellum::viewport {

enum class Projection { PERSPECTIVE, PARALLEL };

/// From where a scene is seen, as it is asked for. What is not given is chosen so that the scene is seen
/// whole. Places and directions are those of the files.
struct CameraSpec {
    static constexpr double FIELD_OF_VIEW = 32;

    /// One of the six views along an axis, which are parallel; only `focus` and `zoom` go with them.
    toolkit::ViewKind view = toolkit::ViewKind::PERSPECTIVE;

    Projection projection = Projection::PERSPECTIVE;
    std::optional<Vector3<double>> position = {};  ///< of the eye; another point than the focus
    std::optional<Vector3<double>> focus = {};     ///< what is in the middle of the picture
    std::optional<Vector3<double>> up = {};        ///< what is vertical in the picture; of any length above 0
    std::optional<double> azimuth = {};      ///< degrees: 0 in front, 90 from the right; not with a position
    std::optional<double> elevation = {};    ///< degrees above the horizon, -90 to 90; not with a position
    std::optional<double> fieldOfView = {};  ///< vertical, degrees, above 0 and below 180; perspective only
    std::optional<double> height = {};       ///< that is seen, in units of the files, above 0; parallel only
    double zoom = 1;                         ///< enlarges the picture about its middle; above 0

    bool isAlongAxis() const { return view != toolkit::ViewKind::PERSPECTIVE; }
};

}  // namespace vellum::viewport
