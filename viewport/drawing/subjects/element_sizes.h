#pragma once

#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/view/PictureSize.h"

/// Widths of the lines of meshes, and sizes of their points, in samples.
namespace vellum::viewport {

/// A width that is asked for is one of the picture, whatever its size.
/// \param standard where none is asked for, pixels
inline float lineWidthOf(MeshStyle const& style, Sampling const& sampling, double standard) {
    return style.lineWidth ? static_cast<float>(*style.lineWidth * sampling.perSide)
                           : sampling.lineWidth(standard);
}

/// Of the lines of a file.
inline float fileLineWidth(MeshStyle const& style, Sampling const& sampling) {
    constexpr double STANDARD = 1.5;
    return lineWidthOf(style, sampling, STANDARD);
}

/// Of the points of a file, which are as wide as its lines where a width is asked for.
inline float filePointSize(MeshStyle const& style, Sampling const& sampling) {
    constexpr double STANDARD = 4;
    return lineWidthOf(style, sampling, STANDARD);
}

}  // namespace vellum::viewport
