#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/ParticleSystem_v2.h"

/// What the tests of ParticleRenderer draw.
namespace vellum::toolkit {

constexpr unsigned int EXTENSIONS = 0x1F03;
constexpr unsigned int VERSION = 0x1F02;

// The channels behind the positions.
constexpr unsigned int VELOCITY = 1;
constexpr unsigned int ENERGY = 2;
constexpr unsigned int COLOR = 3;
constexpr unsigned int SIZE = 4;

constexpr Color4<float> blue{0, 0, 1, 1};
constexpr Color4<float> red{1, 0, 0, 1};
constexpr Color4<float> green{0, 1, 0, 1};
constexpr Color4<float> white{1, 1, 1, 1};

inline void addChannels(ParticleSystem_v2& system) {
    system.addChannel("position", ParticleChannel_v2::VECTOR);
    system.addChannel("velocity", ParticleChannel_v2::VECTOR);
    system.addChannel("energy", ParticleChannel_v2::SCALAR);
    system.addChannel("color", ParticleChannel_v2::VECTOR);
    system.addChannel("size", ParticleChannel_v2::SCALAR);
}

}  // namespace vellum::toolkit
