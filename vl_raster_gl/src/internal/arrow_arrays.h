#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "internal/arrow_geometry.h"

#include <algorithm>

namespace vellum {

// The share of one arrow in the arrays that draw many at once.
inline constexpr unsigned int VERTICES_PER_ARROW = 10;
inline constexpr unsigned int TRIANGLE_INDICES_PER_ARROW = 12;
inline constexpr unsigned int LINE_INDICES_PER_ARROW = 2;
inline constexpr unsigned int QUAD_INDICES_PER_ARROW = 4;

/// The points of some arrows, component by component, so that the compiler vectorizes across arrows.
struct ArrowPoints {
    static constexpr unsigned int POINTS = 5;   // the tip, then the four corners of the head's base
    static constexpr unsigned int ARROWS = 32;  // few enough for the first-level cache

    float x[POINTS][ARROWS];
    float y[POINTS][ARROWS];
    float z[POINTS][ARROWS];

    /// \param count of the arrows, at most ARROWS.
    void compute(Vector3<float> const* tails, Vector3<float> const* directions, float scale,
                 unsigned int count) {
        // The sides are selected in a separate loop: together with the divisions the selection would be a
        // branch, and loops with branches are not vectorized.
        float vx[ARROWS];  // from tail to tip
        float vy[ARROWS];
        float vz[ARROWS];
        float sideX[ARROWS];
        float sideZ[ARROWS];
        float sideLength[ARROWS];
        unsigned int const n = count;
        float const s = scale;
        for (unsigned int i = 0; i < n; ++i) {
            Vector3<float> const tip = tails[i] + directions[i] * s;
            Vector3<float> const v = tip - tails[i];
            _set(0, i, tip);
            vx[i] = v.x;
            vy[i] = v.y;
            vz[i] = v.z;
        }
        for (unsigned int i = 0; i < n; ++i) {
            HeadSide const side(Vector3<float>{vx[i], vy[i], vz[i]});
            sideX[i] = side.x;
            sideZ[i] = side.z;
            sideLength[i] = side.length;
        }
        for (unsigned int i = 0; i < n; ++i) {
            Vector3<float> const v{vx[i], vy[i], vz[i]};
            float const arrowLength = length(v);
            float const headLength = arrowLength * HEAD_PER_LENGTH;
            Vector3<float> const base = at(0, i) - (v / arrowLength) * headLength;
            ArrowHead const head(v, HeadSide(sideX[i], sideZ[i], sideLength[i]), base,
                                 headLength * HEAD_WIDTH_PER_LENGTH);
            _set(1, i, head.corners[0]);
            _set(2, i, head.corners[1]);
            _set(3, i, head.corners[2]);
            _set(4, i, head.corners[3]);
        }
    }

    Vector3<float> at(unsigned int point, unsigned int arrow) const {
        return {x[point][arrow], y[point][arrow], z[point][arrow]};
    }

private:
    void _set(unsigned int point, unsigned int arrow, Vector3<float> const& value) {
        x[point][arrow] = value.x;
        y[point][arrow] = value.y;
        z[point][arrow] = value.z;
    }
};

/// Tip, base corners, tail, and the corners once more: the base has another color.
///
///     0 tip     1 2 3 4 base corners of the sides     5 tail     6 7 8 9 corners of the base
inline void writeArrowVertices(ArrowPoints const& points, unsigned int arrow, Vector3<float> const& tail,
                               Vector3<float>* out) {
    out[0] = points.at(0, arrow);
    out[5] = tail;
    for (unsigned int corner = 1; corner <= 4; ++corner) {
        Vector3<float> const p = points.at(corner, arrow);
        out[corner] = p;
        out[5 + corner] = p;
    }
}

inline void writeArrowColors(Color4<float> const& color, Color4<float>* out) {
    Color4<float> const baseColor = headBaseColor(color, BUFFERED_HEAD_BASE_SHADE);
    std::fill(out, out + 6, color);
    std::fill(out + 6, out + VERTICES_PER_ARROW, baseColor);
}

inline constexpr unsigned int TRIANGLE_INDICES[TRIANGLE_INDICES_PER_ARROW] = {0, 1, 2, 0, 2, 3,
                                                                              0, 3, 4, 0, 4, 1};
inline constexpr unsigned int LINE_INDICES[LINE_INDICES_PER_ARROW] = {5, 0};
inline constexpr unsigned int QUAD_INDICES[QUAD_INDICES_PER_ARROW] = {6, 7, 8, 9};

/// The indices of one arrow: `pattern` relative to its first vertex.
template <unsigned int N>
void writeArrowIndices(unsigned int const (&pattern)[N], unsigned int firstVertex, unsigned int* out) {
    unsigned int const k = firstVertex;
    for (unsigned int i = 0; i < N; ++i) {
        out[i] = k + pattern[i];
    }
}

}  // namespace vellum
