#pragma once

#include "viewport/files/particles/ParticleFrame.h"

#include <functional>
#include <vector>

namespace vellum::viewport {

/// Which values of a frame somebody will ask for. The others are read, since a file has to be right in all
/// columns, and not kept: this halves the memory that many particles take.
struct NeededValues {
    std::vector<bool> channels;  ///< of each channel of the frame, whether its values are kept
    std::vector<bool>
        lengths;  ///< of each vector, whether its lengths are; then its channels may be left out
};

/// Decides by a frame without particles, with the names and units of its columns and what these mean (see
/// findMeanings()). Columns whose names are those of colors are taken for such: only their values tell. An
/// empty function keeps all values.
using ChooseValues = std::function<NeededValues(ParticleFrame const& names)>;

}  // namespace vellum::viewport
