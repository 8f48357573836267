#pragma once

#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// A camera with all its choices made, in axes and units of the files; not for the views along an axis.
struct CameraPlacement {
    Projection projection;
    Vector3<double> position;
    Vector3<double> focus;
    Vector3<double> up;  ///< not along the direction of view
    double fieldOfView;  ///< vertical, degrees; perspective only
    double zoom;
    std::optional<double> height =
        {};  ///< that is seen with a zoom of 1; nothing: the scene whole; parallel only

    /// Chooses what is not given. A placement that is given whole comes back as it is. A fault where what is
    /// given and what is chosen make no camera.
    /// \param points what is to be seen, in the frame of the scene
    static Result<CameraPlacement> of(CameraSpec const& spec, Scene const& scene,
                                      std::vector<Vector3<double>> const& points, double aspect);

    /// The options of the command line that give this camera, with all digits.
    std::string toOptions() const;
};

/// The options that give a view along an axis.
std::string axisViewToOptions(CameraSpec const& spec);

/// The ground that is to be seen around the models too, in the frame of the scene.
Box3<double> surroundingsOf(Scene const& scene);

/// A direction by its angles in the frame of the scene, from the middle to the place: 0 is +z, an azimuth of
/// 90 is +x, an elevation of 90 is +y. Degrees; unit length.
Vector3<double> directionByAngles(double azimuth, double elevation);

}  // namespace vellum::viewport
