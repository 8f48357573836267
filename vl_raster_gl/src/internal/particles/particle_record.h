#pragma once

#include "internal/particles/record_formula.h"

#include "foundation/geometry/Vector3.h"

#include <cstddef>

namespace vellum {

/// A particle in a buffer: GL reads a vertex and its color, an effect a vertex and a vector.
struct ParticleRecord {
    Vector3<float> position;
    Vector3<float> color;  // 0 to 1, or for effects the raw values of the channel
};

static_assert(sizeof(ParticleRecord) == RECORD_FLOATS * sizeof(float) &&
                  offsetof(ParticleRecord, color) == VECTOR_FLOATS * sizeof(float),
              "the writers of records count in floats, and GL reads them by stride and offset");

}  // namespace vellum
