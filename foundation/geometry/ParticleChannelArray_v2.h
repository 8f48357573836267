#pragma once

#include "foundation/geometry/ParticleChannelChunkData_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <algorithm>
#include <type_traits>

namespace vellum {

/// The values of a vector channel (T is Vector3<float>) or of a scalar channel (float) in one chunk.
template <class T>
class ParticleChannelArray_v2 final : public ParticleChannelChunkData_v2 {
public:
    Vector3<float>* asVectors() override {
        if constexpr (std::is_same_v<T, Vector3<float>>) {
            return values.data();
        } else {
            return nullptr;
        }
    }

    float* asFloats() override {
        if constexpr (std::is_same_v<T, float>) {
            return values.data();
        } else {
            return nullptr;
        }
    }

    void reorder(Array<unsigned int> const& remap) override {
        unsigned int const count = std::min(remap.size(), slots);
        if (count == 0) {
            return;
        }
        Array<T> moved;
        moved.reserve(count, false);
        for (unsigned int k = 0; k < count; ++k) {
            moved[k] = remap[k] < slots ? values[remap[k]] : T{};
        }
        std::copy_n(moved.data(), count, values.data());
    }

    void resize(unsigned int const& newSlots) override {
        if (newSlots + PADDING > values.capacity()) {
            // A chunk that fills up one by one moves its values seldom; a full chunk has no unused capacity.
            unsigned int const grown = std::max(newSlots, slots + slots / 8 + 4);
            values.setSize(slots);
            values.reserve(std::min(grown, ParticleSystemChunk_v2::CAPACITY) + PADDING, true);
        }
        values.setSize(newSlots + PADDING);
        std::fill(values.begin() + std::min(slots, newSlots), values.end(), T{});
        slots = newSlots;
    }

private:
    // Deliberate (scalar-stride): drawing systems read each particle's color from its own value and the next
    // two, so two more values follow the last one.
    static constexpr unsigned int PADDING = std::is_same_v<T, float> ? 2 : 0;

    Array<T> values;
    unsigned int slots = 0;  // values in use, without the padding
};

}  // namespace vellum
