#include "record_formula.h"

#if defined(__SSE2__)

#include <emmintrin.h>

namespace vellum {
namespace {

struct Lanes {
    using Register = __m128;
    static constexpr std::size_t COUNT = 4;

    static Register all(float value) { return _mm_set1_ps(value); }
    static Register load(float const* values) { return _mm_loadu_ps(values); }
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
    static Register greatest(Register a, Register b) { return _mm_max_ps(a, b); }  // b for what is no number
    static Register least(Register a, Register b) { return _mm_min_ps(a, b); }     // b for what is no number
    static Register isAbove(Register a, Register b) { return _mm_cmpgt_ps(a, b); }
    static Register choose(Register mask, Register yes, Register no) {
        return _mm_or_ps(_mm_and_ps(mask, yes), _mm_andnot_ps(mask, no));
    }
    static Register truncatedMagnitude(Register a) {
        return _mm_andnot_ps(_mm_set1_ps(-0.0F), _mm_cvtepi32_ps(_mm_cvttps_epi32(a)));
    }

    template <bool streams>
    static void store(float* out, Register a, Register b, Register c, Register d, Register e, Register f) {
        _store<streams>(out, a);
        _store<streams>(out + 4, b);
        _store<streams>(out + 8, c);
        _store<streams>(out + 12, d);
        _store<streams>(out + 16, e);
        _store<streams>(out + 20, f);
    }

private:
    template <bool streams>
    static void _store(float* out, Register a) {
        if constexpr (streams) {
            _mm_stream_ps(out, a);
        } else {
            _mm_storeu_ps(out, a);
        }
    }
};

}  // namespace
}  // namespace vellum

#include "particle_kernel.h"

namespace vellum {

RecordWriter sse2RecordWriter();
void finishRecords();

RecordWriter sse2RecordWriter() {
    return writeRecordsByLanes;
}

void finishRecords() {
    _mm_sfence();
}

}  // namespace vellum

#else

namespace vellum {

RecordWriter sse2RecordWriter();
void finishRecords();

RecordWriter sse2RecordWriter() {
    return nullptr;
}

void finishRecords() {}

}  // namespace vellum

#endif
