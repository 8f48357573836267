#pragma once

#include <vector>

namespace vellum::viewport {

/// A vertex, a face or another item of an element of a PLY file.
struct PlyItem {
    std::vector<double> numbers;             ///< one per property; those of lists are their lengths
    std::vector<std::vector<double>> lists;  ///< one per property; empty for those that are no list
};

}  // namespace vellum::viewport
