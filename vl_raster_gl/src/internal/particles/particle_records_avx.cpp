// Compiled for AVX if the compiler supports it. Runs only if the processor supports it.
#include "internal/particles/record_writers.h"

#include <cstdint>

#if defined(__AVX__)

#include <immintrin.h>

namespace vellum {
namespace {

struct Lanes {
    using Register = __m256;
    static constexpr std::size_t COUNT = 8;

    static Register all(float value) { return _mm256_set1_ps(value); }
    static Register load(float const* values) { return _mm256_loadu_ps(values); }
    // Prefetches; an invalid address is ignored.
    static void fetch(std::uintptr_t address) {
        _mm_prefetch(reinterpret_cast<char const*>(address), _MM_HINT_T0);
    }
    // Reads the vector of each particle and one more float; the other half has the particle four further.
    static Register loadVectors(float const* vectors, unsigned int const* offsets) {
        return _mm256_insertf128_ps(
            _mm256_castps128_ps256(_mm_loadu_ps(vectors + VECTOR_FLOATS * offsets[0])),
            _mm_loadu_ps(vectors + VECTOR_FLOATS * offsets[4]), 1);
    }
    static Register loadFloats(float const* values, unsigned int const* offsets) {
        return _mm256_setr_ps(values[offsets[0]], values[offsets[1]], values[offsets[2]], values[offsets[3]],
                              values[offsets[4]], values[offsets[5]], values[offsets[6]], values[offsets[7]]);
    }
    template <class Row>
    static Row loadRow(float const* vectors) {
        return {_halves(vectors), _halves(vectors + 4), _halves(vectors + 8)};
    }

    template <int choice>
    static Register shuffle(Register a, Register b) {
        return _mm256_shuffle_ps(a, b, choice);
    }
    static Register unpackLow(Register a, Register b) { return _mm256_unpacklo_ps(a, b); }
    static Register unpackHigh(Register a, Register b) { return _mm256_unpackhi_ps(a, b); }

    static Register add(Register a, Register b) { return _mm256_add_ps(a, b); }
    static Register subtract(Register a, Register b) { return _mm256_sub_ps(a, b); }
    static Register multiply(Register a, Register b) { return _mm256_mul_ps(a, b); }
    static Register divide(Register a, Register b) { return _mm256_div_ps(a, b); }
    static Register squareRoot(Register a) { return _mm256_sqrt_ps(a); }
    // Both return b if a number is NaN.
    static Register greatest(Register a, Register b) { return _mm256_max_ps(a, b); }
    static Register least(Register a, Register b) { return _mm256_min_ps(a, b); }
    static Register isAbove(Register a, Register b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
    // With bit operations: compilers may split a blend of a comparison if wide integer comparisons are
    // missing.
    static Register choose(Register mask, Register yes, Register no) {
        return _mm256_or_ps(_mm256_and_ps(mask, yes), _mm256_andnot_ps(mask, no));
    }
    static Register truncatedMagnitude(Register a) {
        return _mm256_andnot_ps(_mm256_set1_ps(-0.0F), _mm256_cvtepi32_ps(_mm256_cvttps_epi32(a)));
    }

    template <bool streams>
    static void store(float* out, Register a, Register b, Register c, Register d, Register e, Register f) {
        constexpr int LOW = 0x20;
        constexpr int HIGH = 0x31;
        storeOne<streams>(out, _mm256_permute2f128_ps(a, b, LOW));
        storeOne<streams>(out + 8, _mm256_permute2f128_ps(c, d, LOW));
        storeOne<streams>(out + 16, _mm256_permute2f128_ps(e, f, LOW));
        storeOne<streams>(out + 24, _mm256_permute2f128_ps(a, b, HIGH));
        storeOne<streams>(out + 32, _mm256_permute2f128_ps(c, d, HIGH));
        storeOne<streams>(out + 40, _mm256_permute2f128_ps(e, f, HIGH));
    }

    template <bool streams>
    static void storeOne(float* out, Register a) {
        if constexpr (streams) {
            _mm256_stream_ps(out, a);
        } else {
            _mm256_storeu_ps(out, a);
        }
    }

private:
    // Four floats of the first four vectors, and the same four of the next four.
    static Register _halves(float const* vectors) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(vectors)), _mm_loadu_ps(vectors + 12),
                                    1);
    }
};

}  // namespace
}  // namespace vellum

#include "internal/particles/particle_kernel.h"

namespace vellum {

RecordWriter avxRecordWriter() {
    return __builtin_cpu_supports("avx") != 0 ? writeRecordsByLanes : nullptr;
}

}  // namespace vellum

#else

namespace vellum {

RecordWriter avxRecordWriter() {
    return nullptr;
}

}  // namespace vellum

#endif
