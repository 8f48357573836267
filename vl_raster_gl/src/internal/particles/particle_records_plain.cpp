#include "internal/particles/color_ramp.h"
#include "internal/particles/particle_records.h"

#include <cmath>
#include <cstring>

namespace vellum {

namespace {

// The reference of the vectorized writers: one particle at a time, with the same operations in the same
// order.
class PlainColors {
public:
    explicit PlainColors(RecordFormula const& formula) : f(formula) {}

    Vector3<float> of(float const* v) const {
        switch (f.source) {
        case RecordColor::VECTOR:
            return {v[0], v[1], v[2]};
        case RecordColor::SPREAD_SCALAR: {
            // Three equal components c have the length |s| for c = sqrt(s * s / 3).
            float const component = std::sqrt(v[0] * v[0] / 3.0F);
            return {component, component, component};
        }
        case RecordColor::LENGTH:
            // std::sqrt of a float is correctly rounded, like the instructions of the other writers.
            return _ramp(std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) / f.scale);
        case RecordColor::X:
        case RecordColor::TRUNCATED_SCALAR:
            return _ramp(truncatedMagnitude(v[0]) / f.scale);
        case RecordColor::Y:
            return _ramp(truncatedMagnitude(v[1]) / f.scale);
        case RecordColor::Z:
            return _ramp(truncatedMagnitude(v[2]) / f.scale);
        case RecordColor::SCALAR:
            return _ramp(v[0]);
        case RecordColor::CONSTANT:
            break;
        }
        return {f.constant[0], f.constant[1], f.constant[2]};
    }

private:
    Vector3<float> _ramp(float magnitude) const {
        float const place = placeOnRamp<OneLane>(magnitude, f.minMagnitude, f.range);
        return {_component(place, 0), _component(place, 1), _component(place, 2)};
    }

    float _component(float place, std::size_t i) const {
        return limitedToColor(rampComponent<OneLane>(place, f.lowest[i], f.difference[i], f.above[i]));
    }

    RecordFormula const& f;
};

void writePlainly(RecordFormula const& formula, float const* positions, float const* values,
                  unsigned int const* offsets, float* out, std::size_t count, bool /*streams*/) {
    PlainColors const colors(formula);
    std::size_t const valueFloats = VALUE_FLOATS[static_cast<std::size_t>(formula.source)];
    for (std::size_t k = 0; k < count; ++k) {
        std::size_t const particle = offsets != nullptr ? offsets[k] : k;
        ParticleRecord record;
        std::memcpy(&record.position, positions + VECTOR_FLOATS * particle, sizeof(record.position));
        record.color = colors.of(values + valueFloats * particle);
        // Copied, because a float array must not be accessed as records (strict aliasing).
        std::memcpy(out + RECORD_FLOATS * k, &record, sizeof(record));
    }
}

}  // namespace

RecordWriter plainRecordWriter() {
    return writePlainly;
}

}  // namespace vellum
