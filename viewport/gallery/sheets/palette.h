#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Tuple4.h"

#include <algorithm>

/// The colors that all pictures share.
namespace vellum::gallery {

inline constexpr Color4<float> RED{0.93F, 0.33F, 0.31F, 1.0F};
inline constexpr Color4<float> GREEN{0.45F, 0.80F, 0.36F, 1.0F};
inline constexpr Color4<float> BLUE{0.35F, 0.58F, 0.97F, 1.0F};
inline constexpr Color4<float> YELLOW{0.98F, 0.80F, 0.32F, 1.0F};
inline constexpr Color4<float> ORANGE{0.96F, 0.58F, 0.27F, 1.0F};
inline constexpr Color4<float> TEAL{0.27F, 0.77F, 0.75F, 1.0F};
inline constexpr Color4<float> VIOLET{0.68F, 0.52F, 0.94F, 1.0F};
inline constexpr Color4<float> WHITE{0.93F, 0.94F, 0.96F, 1.0F};
inline constexpr Color4<float> GRAY{0.53F, 0.57F, 0.63F, 1.0F};
inline constexpr Color4<float> FAINT{0.36F, 0.40F, 0.46F, 1.0F};

inline constexpr Tuple3<Color4<float>> AXES{RED, GREEN, BLUE};
inline constexpr Tuple4<Color4<float>> AXES_AND_CENTER{RED, GREEN, BLUE, YELLOW};

/// A smooth scale from 0 (blue) through teal and yellow to 1 (red).
inline Color4<float> scaleColor(float value) {
    constexpr Color4<float> STOPS[] = {BLUE, TEAL, YELLOW, RED};
    float const position = 3.0F * std::min(std::max(value, 0.0F), 1.0F);
    int const index = std::min(static_cast<int>(position), 2);
    float const part = position - static_cast<float>(index);
    Color4<float> const& a = STOPS[index];
    Color4<float> const& b = STOPS[index + 1];
    return {a.r + (b.r - a.r) * part, a.g + (b.g - a.g) * part, a.b + (b.b - a.b) * part, 1.0F};
}

}  // namespace vellum::gallery
