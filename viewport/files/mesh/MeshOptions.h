#pragma once

#include <optional>

namespace vellum::viewport {

/// What of a mesh file is read.
struct MeshOptions {
    /// Seconds from the start of the file's first animation, finite and 0 or more; later than its end: its
    /// end. Nothing: the pose in which the file has its parts, at rest.
    std::optional<double> time;
};

}  // namespace vellum::viewport
