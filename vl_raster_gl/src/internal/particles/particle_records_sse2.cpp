#include "internal/particles/record_writers.h"

#include <cstdint>

#if defined(__SSE2__)

#include <emmintrin.h>

namespace vellum {
namespace {

struct Lanes {
    using Register = __m128;
    static constexpr std::size_t COUNT = 4;

    static Register all(float value) { return _mm_set1_ps(value); }
    static Register load(float const* values) { return _mm_loadu_ps(values); }
    // Prefetches; an invalid address is ignored.
    static void fetch(std::uintptr_t address) {
        _mm_prefetch(reinterpret_cast<char const*>(address), _MM_HINT_T0);
    }
    // Reads the vector of each particle and one more float.
    static Register loadVectors(float const* vectors, unsigned int const* offsets) {
        return _mm_loadu_ps(vectors + VECTOR_FLOATS * *offsets);
    }
    static Register loadFloats(float const* values, unsigned int const* offsets) {
        return _mm_setr_ps(values[offsets[0]], values[offsets[1]], values[offsets[2]], values[offsets[3]]);
    }
    template <class Row>
    static Row loadRow(float const* vectors) {
        return {_mm_loadu_ps(vectors), _mm_loadu_ps(vectors + 4), _mm_loadu_ps(vectors + 8)};
    }

    template <int choice>
    static Register shuffle(Register a, Register b) {
        return _mm_shuffle_ps(a, b, choice);
    }
    static Register unpackLow(Register a, Register b) { return _mm_unpacklo_ps(a, b); }
    static Register unpackHigh(Register a, Register b) { return _mm_unpackhi_ps(a, b); }

    static Register add(Register a, Register b) { return _mm_add_ps(a, b); }
    static Register subtract(Register a, Register b) { return _mm_sub_ps(a, b); }
    static Register multiply(Register a, Register b) { return _mm_mul_ps(a, b); }
    static Register divide(Register a, Register b) { return _mm_div_ps(a, b); }
    static Register squareRoot(Register a) { return _mm_sqrt_ps(a); }
    // Both return b if a number is NaN.
    static Register greatest(Register a, Register b) { return _mm_max_ps(a, b); }
    static Register least(Register a, Register b) { return _mm_min_ps(a, b); }
    static Register isAbove(Register a, Register b) { return _mm_cmpgt_ps(a, b); }
    static Register choose(Register mask, Register yes, Register no) {
        return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
    }
    static Register truncatedMagnitude(Register a) {
        return _mm_andnot_ps(_mm_set1_ps(-0.0F), _mm_cvtepi32_ps(_mm_cvttps_epi32(a)));
    }

    template <bool streams>
    static void store(float* out, Register a, Register b, Register c, Register d, Register e, Register f) {
        storeOne<streams>(out, a);
        storeOne<streams>(out + 4, b);
        storeOne<streams>(out + 8, c);
        storeOne<streams>(out + 12, d);
        storeOne<streams>(out + 16, e);
        storeOne<streams>(out + 20, f);
    }

    template <bool streams>
    static void storeOne(float* out, Register a) {
        if constexpr (streams) {
            _mm_stream_ps(out, a);
        } else {
            _mm_storeu_ps(out, a);
        }
    }
};

}  // namespace
}  // namespace vellum

#include "internal/particles/particle_kernel.h"

namespace vellum {

RecordWriter sse2RecordWriter() {
    return writeRecordsByLanes;
}

void finishRecords() {
    _mm_sfence();
}

}  // namespace vellum

#else

namespace vellum {

RecordWriter sse2RecordWriter() {
    return nullptr;
}

void finishRecords() {}

}  // namespace vellum

#endif
