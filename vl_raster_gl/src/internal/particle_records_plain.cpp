#include "internal/color_ramp.h"
#include "internal/particle_records.h"

#include <cmath>
#include <cstring>

namespace vellum {

namespace {

class PlainColors {
public:
    explicit PlainColors(RecordFormula const& formula) : f(formula) {}

    Vector3<float> of(float const* v) const {
        switch (f.source) {
        case RecordColor::VECTOR:
            return {v[0], v[1], v[2]};
        case RecordColor::SPREAD_SCALAR: {
            float const component = std::sqrt(v[0] * v[0] / 3.0F);
            return {component, component, component};
        }
        case RecordColor::LENGTH:
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
    Vector3<float> _ramp(float const& magnitude) const {
        float const t = (magnitude - f.minMagnitude) / f.range;
        if (t > 1.0F) {
            return limitedToColor({f.above[0], f.above[1], f.above[2]});
        }
        return limitedToColor({f.lowest[0] + f.difference[0] * t, f.lowest[1] + f.difference[1] * t,
                               f.lowest[2] + f.difference[2] * t});
    }

    RecordFormula const& f;
};

void writePlainly(RecordFormula const& formula, float const* positions, float const* values,
                  unsigned int const* offsets, float* out, std::size_t const& count,
                  bool const& /*streams*/) {
    PlainColors const colors(formula);
    unsigned int const valueCount = valuesPerParticle(formula.source);
    for (std::size_t k = 0; k < count; ++k) {
        std::size_t const particle = offsets != nullptr ? offsets[k] : k;
        Vector3<float> const color = colors.of(values + valueCount * particle);
        std::memcpy(out, positions + 3 * particle, 3 * sizeof(float));
        out[3] = color.x;
        out[4] = color.y;
        out[5] = color.z;
        out += 6;
    }
}

}  // namespace

RecordWriter plainRecordWriter() {
    return writePlainly;
}

}  // namespace vellum
