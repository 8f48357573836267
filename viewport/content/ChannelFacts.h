#pragma once

#include "foundation/geometry/Box3.h"
#include "viewport/content/Content.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The values of one quantity over all particles and meshes that have it.
struct ChannelFacts {
    static constexpr std::size_t BINS = 64;

    std::string name;
    std::string unit;                ///< of the first file that says one
    std::size_t count = 0;           ///< finite values
    std::size_t undefinedCount = 0;  ///< others
    double least = 0;                ///< of the finite values; 0 where there are none
    double most = 0;                 ///< alike
    std::array<std::size_t, BINS>
        bins{};  ///< how many finite values are in equal parts from the least to the most

    /// Looks at all values. Nothing where no file has such numbers, and where it is cancelled.
    static std::optional<ChannelFacts> of(Content const& content, std::string const& name,
                                          std::atomic<bool> const& isCancelled);

    std::size_t fullestBin() const;  ///< How many values it has.
};

/// What one file holds.
struct FileFacts {
    std::string name;
    std::string extension;  ///< without its dot; empty: the name has none
    bool isMesh = true;
    std::size_t triangleCount = 0;  ///< of a mesh, as the next three
    std::size_t vertexCount = 0;
    std::size_t lineCount = 0;
    std::size_t pointCount = 0;
    std::size_t particleCount = 0;  ///< of particles, as what follows
    std::size_t frameCount = 1;
    std::int64_t timestep = 0;
    std::optional<double> time;
    std::optional<Box3<double>> bounds;  ///< of all finite places; nothing where there are none
};

/// Of the meshes first, then of the particles. Looks at all places; stops where it is cancelled.
std::vector<FileFacts> factsOfFiles(Content const& content, std::atomic<bool> const& isCancelled);

/// The names of what colors can show of the content, each once: those that are likely to be of interest
/// first. With them the words, which have no values.
std::vector<std::string> channelNames(Content const& content);

}  // namespace vellum::viewport
