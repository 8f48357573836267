#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// Small particle files, written out by the tests.
namespace particle_texts {

/// Two frames of three and two particles in different orders, the second in a tilted box.
inline std::string const dump = "ITEM: UNITS\nlj\nITEM: TIME\n0.5\nITEM: TIMESTEP\n100\n"
                                "ITEM: NUMBER OF ATOMS\n3\nITEM: BOX BOUNDS pp pp pp\n0 10\n0 20\n-5 5.0e0\n"
                                "ITEM: ATOMS id type x y z vx vy vz c_pe\n"
                                "3 1 3 0.5 -1 0 0 1 -7.25\n"
                                "1 2 1 1.5 -2 1 0 0 -8.5\n"
                                "2 1 10.25 2.5 -3 0 1 0 1e-3\n"
                                "ITEM: TIMESTEP\n200\nITEM: NUMBER OF ATOMS\n2\n"
                                "ITEM: BOX BOUNDS xy xz yz pp pp ff\n-1 12 2\n0 23 -1\n0 8 3\n"
                                "ITEM: ATOMS id xs ys zs\n"
                                "9 0.5 0.5 0.5\n"
                                "4 0 0 1\n";

inline vellum::viewport::Progress const nobody;

}  // namespace particle_texts

namespace vellum {

inline bool operator==(Vector3<double> const& a, Vector3<double> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline void PrintTo(Vector3<double> const& vector, std::ostream* const stream) {
    *stream << '(' << vector.x << ' ' << vector.y << ' ' << vector.z << ')';
}

namespace viewport {

/// The message of the fault, or an empty one.
inline std::string faultOf(Result<LoadedFrame> const& result) {
    return result.isOk() ? std::string() : result.fault().message;
}

/// The velocities; none where the frame has none.
inline std::vector<Vector3<double>> velocitiesOf(ParticleFrame const& frame) {
    std::vector<Vector3<double>> velocities;
    if (ParticleVector const* const velocity = frame.velocity()) {
        auto const& [x, y, z] = velocity->columns;
        for (std::size_t i = 0; i < frame.positions.size(); ++i) {
            velocities.push_back(
                {frame.channels[x].values[i], frame.channels[y].values[i], frame.channels[z].values[i]});
        }
    }
    return velocities;
}

/// All frames of a text, read one by one.
template <class Reader>
std::vector<ParticleFrame> framesOf(Reader const& read, std::string_view text) {
    std::vector<ParticleFrame> frames;
    Result<LoadedFrame> const last = read(text, std::nullopt, Progress());
    EXPECT_EQ(faultOf(last), "");
    for (std::size_t number = 0; last.isOk() && number < last.value().count; ++number) {
        Result<LoadedFrame> const loaded = read(text, number, Progress());
        EXPECT_EQ(faultOf(loaded), "") << number;
        EXPECT_EQ(loaded.value().number, number);
        EXPECT_EQ(loaded.value().count, last.value().count);
        frames.push_back(loaded.value().frame);
    }
    return frames;
}

}  // namespace viewport
}  // namespace vellum
