#pragma once

#include "Core_RL_GL.h"
#include "foundation/geometry/Box3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

// == Facts ==

/// What the driver of the current context offers.
struct DriverFacts {
    std::string version;
    std::string shadingLanguage;
    std::string renderer;
    std::string vendor;
    bool hasPrograms = false;
    int largestTexture = 0;          ///< pixels
    int samples = 0;                 ///< of a pixel
    unsigned int memory = 0;         ///< kilobytes; 0: the driver does not tell
    unsigned int freeMemory = 0;     ///< alike
    unsigned int takenToBeFree = 0;  ///< alike
    std::vector<std::pair<std::string, bool>> extensions;

    static DriverFacts of(Core_RL_GL& layer);
};

/// The values of a channel. Minimum, maximum and mean are those of the finite ones.
struct ValueFacts {
    std::size_t finiteCount = 0;
    std::size_t undefinedCount = 0;  ///< that are no number
    std::size_t infiniteCount = 0;
    double minimum = 0;
    double maximum = 0;
    double mean = 0;
};

ValueFacts factsOf(double const* values, std::size_t count);

/// The box around the particles with a finite position; nothing where there are none.
std::optional<Box3<double>> boundsOf(ParticleFrame const& frame);

// == Texts, in complete lines for --info ==

/// What a file holds.
std::string describeMesh(std::string const& path, MeshData const& mesh);

/// What a particle file holds, and which frame of it the picture shows.
std::string describeParticles(LoadedFrame const& loaded);

/// How a picture is seen.
/// \param out its file; empty: none
/// \param camera the options that give it; empty: it has one of its own
std::string describePicture(std::string const& out, std::string const& camera);

std::string describeDriver(DriverFacts const& driver);

/// In place of a driver.
std::string describeNoDriver(std::string const& reason);

}  // namespace vellum::viewport
