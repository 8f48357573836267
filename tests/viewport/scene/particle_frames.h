#pragma once

#include "viewport/scene/ParticleCloud.h"
#include "viewport/scene/ParticleLook.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

/// Small frames and how they are shown.
namespace vellum::viewport::particle_frames {

/// Particles at 0, 1, 2, ... on the x axis.
inline ParticleFrame row(std::size_t count) {
    ParticleFrame frame;
    frame.file = "folder/row.xyz";
    for (std::size_t i = 0; i < count; ++i) {
        frame.positions.push_back({static_cast<double>(i), 0, 0});
    }
    return frame;
}

inline ParticleFrame withChannel(std::string const& name, std::vector<double> const& values) {
    ParticleFrame frame = row(values.size());
    frame.channels.push_back({name, {values.begin(), values.end()}, {}});
    return frame;
}

/// Adds velocities to a frame that has none: three channels and their vector.
inline void addVelocities(ParticleFrame& frame, std::vector<Vector3<double>> const& velocities) {
    std::size_t const first = frame.channels.size();
    for (char const* const name : {"vx", "vy", "vz"}) {
        frame.channels.push_back({name, {}, {}});
    }
    frame.vectors.push_back({ParticleVector::VELOCITY, {first, first + 1, first + 2}});
    for (Vector3<double> const& velocity : velocities) {
        frame.channels[first].values.push_back(velocity.x);
        frame.channels[first + 1].values.push_back(velocity.y);
        frame.channels[first + 2].values.push_back(velocity.z);
    }
}

inline ParticleFrame withVelocities(std::vector<Vector3<double>> const& velocities) {
    ParticleFrame frame = row(velocities.size());
    addVelocities(frame, velocities);
    return frame;
}

inline ParticleLook look(std::vector<ParticleFrame> const& frames, ParticleOptions const& options = {}) {
    Result<ParticleLook> result = lookOf(frames, options);
    EXPECT_TRUE(result.isOk()) << result.fault().line();
    return result.isOk() ? result.value() : ParticleLook{};
}

inline ParticleOptions channel(std::string const& name) {
    ParticleOptions options;
    options.channel = name;
    return options;
}

inline ParticleOptions mode(ParticleMode value) {
    ParticleOptions options;
    options.mode = value;
    return options;
}

/// What tests compare.
using Parts = std::array<float, 3>;

inline Parts parts(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}

inline Parts parts(Color4<float> const& color) {
    return {color.r, color.g, color.b};
}

/// A frame with its look and its cloud, which stays in units of the file.
struct Shown {
    ParticleLook look;
    ParticleCloud cloud;

    std::size_t count() const { return cloud.system->size(); }
    Vector3<float> position(std::size_t i) const { return _vector(ParticleCloud::POSITIONS, i); }
    Vector3<float> vector(std::size_t i) const { return _vector(ParticleCloud::SHOWN, i); }

    Parts color(std::size_t i) const { return parts(_vector(*cloud.colors, i)); }
    double size(std::size_t i) const {
        return static_cast<double>(cloud.system->firstChunk()->channelData(*cloud.sizes)->asFloats()[i]);
    }

    /// Where in the range the renderer sees the particle: 0 at its low end, 1 at its high end.
    double rate(std::size_t i) const {
        Vector3<float> const v = vector(i);
        return (std::hypot(v.x, v.y, v.z) - look.scale->lowMagnitude()) /
               (look.scale->highMagnitude() - look.scale->lowMagnitude());
    }

private:
    Vector3<float> _vector(unsigned int channelId, std::size_t i) const {
        return cloud.system->firstChunk()->channelData(channelId)->asVectors()[i];
    }
};

inline Shown shown(ParticleFrame const& frame, ParticleOptions const& options = {}) {
    ParticleLook const appearance = look({frame}, options);
    return {appearance, CloudMaker(frame, appearance).make({})};
}

}  // namespace vellum::viewport::particle_frames
