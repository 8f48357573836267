#pragma once

#include <cmath>

namespace vellum::viewport {

/// The length of a vector of three numbers of a file: right also where its square would overflow or lose
/// digits. NaN where one of them is undefined.
inline double vectorLength(double x, double y, double z) {
    double const square = x * x + y * y + z * z;
    // Most squares are neither infinite nor so small that digits are lost; the others take longer.
    if (square > 1e-290 && square < 1e300) {
        return std::sqrt(square);
    }
    // std::hypot of three numbers takes infinities for undefined.
    bool const isUndefined = std::isnan(x) || std::isnan(y) || std::isnan(z);
    return isUndefined ? std::nan("") : std::hypot(std::hypot(x, y), z);
}

}  // namespace vellum::viewport
