#pragma once

#include "foundation/geometry/Vector3.h"

#include <string>
#include <string_view>

namespace vellum::viewport {

/// The direction of a file's coordinates that points up.
enum class UpAxis { X, Y, Z, MINUS_X, MINUS_Y, MINUS_Z };

/// The direction that is up in files of a format, as its documents or else its programs say; y for formats
/// that are not known. Files of some formats say themselves what is up; this is for those that do not. \param
/// extension in lower case, with its dot
UpAxis upOfFormat(std::string_view extension);

/// "x", "-z" and so on, as users write it.
std::string wordOf(UpAxis up);

/// The direction as a vector of unit length.
inline Vector3<double> directionOf(UpAxis up) {
    switch (up) {
    case UpAxis::X:
        return {1, 0, 0};
    case UpAxis::Y:
        return {0, 1, 0};
    case UpAxis::Z:
        return {0, 0, 1};
    case UpAxis::MINUS_X:
        return {-1, 0, 0};
    case UpAxis::MINUS_Y:
        return {0, -1, 0};
    case UpAxis::MINUS_Z:
        break;
    }
    return {0, 0, -1};
}

}  // namespace vellum::viewport
