#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector2.h"
#include "viewport/ocean/OceanSpectrum.h"

namespace vellum::viewport {

/// Parameters of a sea: up to the horizon, without files or around what files hold, or on one model.
struct OceanEffect {
    /// A sea with wind enough for foam.
    static SeaState defaultSea() {
        SeaState sea;
        sea.size = 512;
        sea.windSpeed = 14;
        sea.windDirection = 200;
        return sea;
    }

    double time = 0;                              ///< seconds, at most OceanSpectrum::LONGEST_TIME from 0
    SeaState sea = defaultSea();                  ///< without faults
    double foamThreshold = 1;                     ///< 0 shows the densest foam only, 1 all of it
    Color4<float> color{0.10F, 0.30F, 0.38F, 1};  ///< of lit water, 0 to 1
    Vector2<float> sun{7, 14};                    ///< degrees above the horizon and to the right; -90 to 360

    // Only around things.
    double level = 0.3;  ///< the part of their height that is below the water, -10 to 1
    double length =
        20;  ///< what their longest side counts as, meters, 0 to 1e6; 0: units of the files are meters

    // Only without files.
    double eyeHeight = 5;    ///< of the viewer above the water, meters, 0.5 to 1000
    double tiltDegrees = 4;  ///< of the view below the horizon, -30 to 60
};

}  // namespace vellum::viewport
