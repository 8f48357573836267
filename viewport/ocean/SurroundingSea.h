#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/ocean/OceanSpectrum.h"
#include "viewport/ocean/WaterSheet.h"
#include "viewport/text/Fault.h"

#include <memory>
#include <optional>

namespace vellum::viewport {

/// An open sea up to the horizon around the things of a scene, at one time, with the sky over it. It can be
/// seen by any camera above the water: the sea itself stays, and only the part of it that is drawn depends on
/// the camera.
///
/// The water carries the things: its mean height about them is at the level that is asked for. Views are
/// given in the frame of the scene, whose up is +y.
class SurroundingSea {
public:
    struct Setting {
        Box3<double> things;   ///< in the scene
        double unitsPerMeter;  ///< of the scene; above 0
        double level;          ///< the part of the height of the things that is below the water about them
        double patch;          ///< side of the surface, meters
        double sunElevation;   ///< degrees
        double sunAzimuth;     ///< degrees, to the right of the middle of the picture
    };

    /// \param waves the surface at the time of the sea.
    SurroundingSea(Setting const& setting, SeaSurface waves);

    /// The height of the still water in the scene.
    double stillLevel() const { return still; }

    /// The fault of a camera that is no camera above the sea: its eye is in the water, or it looks up at it
    /// from below.
    std::optional<Fault> fault(SeaView const& view) const;

    /// The depths along the direction of view that water and sky take, in units of the scene.
    struct Depths {
        double nearest;
        double farthest;
    };
    Depths depths(SeaView const& view) const;

    /// The direction of the sun in the scene, unit length.
    Vector3<double> sunDirection(SeaView const& view) const;

    /// The water that is seen, in the frame of toScene().
    /// \param unit the length that 1 stands for in the mesh, meters
    std::unique_ptr<Mesh> water(SeaView const& view, double unit) const;
    Matrix4<double> toScene(double unit) const;

    // == Drawing in the frame of the scene, with the camera's matrices loaded and lighting off ==

    /// GL: immediate mode.  State: none is left changed. Touches no depth; before everything else.
    void drawSky(Core_RL& layer, SeaView const& view) const;

    /// The haze before distant water, behind the things. After everything that has depth.
    /// GL: immediate mode.  State: none is left changed.
    void drawHaze(Core_RL& layer, SeaView const& view) const;

private:
    struct MistEdge {
        double distance;  // along the water, meters
        double height;    // above the eye, meters
        double opacity;
    };
    SeaView _inMeters(SeaView const& view) const;
    double _hazeScale(SeaView const& view) const;
    double _horizon(SeaView const& view) const;
    double _clearance(SeaView const& view) const;
    WaterSheet _sheet(SeaView const& view) const;
    void _drawDome(Core_RL& layer, SeaView const& view) const;
    void _drawWall(Core_RL& layer, SeaView const& view) const;
    void _drawMist(Core_RL& layer, SeaView const& view, MistEdge const& low, MistEdge const& high) const;
    void _drawMistWalls(Core_RL& layer, SeaView const& view) const;
    void _drawMistSheet(Core_RL& layer, SeaView const& view) const;

    Setting setting;
    SeaSurface surface;
    double crest = 0;     // meters, above 0
    double sideways = 0;  // meters
    double still;         // in the scene
};

}  // namespace vellum::viewport
