#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace vellum::viewport {

/// Reads a number of a data file (see toDataNumber()) at the front of a text, of which any other text may
/// follow.
/// \return the end of the number, or null where the text does not begin with one; `value` is then undefined.
///
/// Millions of these make up a file. They are in a header so that the loop over a row contains them: as a
/// call of another source file the reading of a dump takes 8 percent longer.
inline char const* takeDataNumber(char const* here, char const* end, double& value);

/// The part that is rarely needed: signs, names, many digits, numbers beyond all doubles.
char const* takeUnusualDataNumber(char const* here, char const* end, double& value);

inline bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Fortran writes a D for numbers in double precision.
inline bool isExponentMark(char character) {
    return character == 'e' || character == 'E' || character == 'd' || character == 'D';
}

/// Takes up to eight digits at once, since their number varies and a loop would be mispredicted.
/// \param here eight bytes can be read there
inline char const* takeEightDigits(char const* here, std::uint64_t& digits) {
    constexpr std::uint64_t POWERS_OF_TEN[] = {1,       10,        100,        1'000,      10'000,
                                               100'000, 1'000'000, 10'000'000, 100'000'000};
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, here, sizeof bytes);
    bytes ^= 0x3030303030303030U;  // digits become 0 to 9
    std::uint64_t const others = ((bytes + 0x7676767676767676U) | bytes) & 0x8080808080808080U;
    unsigned int const count = others == 0 ? 8 : static_cast<unsigned int>(__builtin_ctzll(others)) / 8;
    if (count == 0) {
        return here;
    }
    // The digits become the last ones of eight; then pairs, fours and all of them are joined.
    bytes <<= 8 * (8 - count);
    bytes = bytes * 2561 >> 8;
    bytes = (bytes & 0x00FF00FF00FF00FFU) * 6553601 >> 16;
    bytes = (bytes & 0x0000FFFF0000FFFFU) * 42949672960001U >> 32;
    digits = digits * POWERS_OF_TEN[count] + bytes;
    return here + count;
}

inline char const* takeDigits(char const* here, char const* end, std::uint64_t& digits) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    while (end - here >= 8) {
        char const* const next = takeEightDigits(here, digits);
        if (next - here < 8) {
            return next;
        }
        here = next;
    }
#endif
    for (; here != end && isDigit(*here); ++here) {
        digits = 10 * digits + static_cast<std::uint64_t>(*here - '0');
    }
    return here;
}

/// Reads a number as simulations write them: a few digits, perhaps with a point among them and an exponent.
/// \return its end, or null where it is of another kind.
///
/// The digits form an integer that a double holds exactly, and so are the powers of ten up to the 22nd: one
/// product or quotient of the two is the nearest double, which std::from_chars takes longer to find.
inline char const* takeShortNumber(char const* here, char const* end, double& value) {
    constexpr double POWERS_OF_TEN[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int LARGEST_POWER = 22;
    constexpr std::ptrdiff_t MOST_DIGITS = 15;  // every number of so many digits is below 2^53
    constexpr std::ptrdiff_t MOST_EXPONENT_DIGITS = 4;

    bool const isNegative = here != end && *here == '-';
    here += isNegative ? 1 : 0;
    std::uint64_t digits = 0;
    char const* const whole = here;
    here = takeDigits(whole, end, digits);
    std::ptrdiff_t count = here - whole;
    if (count == 0) {
        return nullptr;
    }
    int exponent = 0;
    if (here != end && *here == '.') {
        char const* const fraction = here + 1;
        here = takeDigits(fraction, end, digits);
        std::ptrdiff_t const behindPoint = here - fraction;
        count += behindPoint;
        exponent = behindPoint <= MOST_DIGITS ? -static_cast<int>(behindPoint) : 0;
    }
    if (count > MOST_DIGITS) {
        return nullptr;
    }
    if (here != end && isExponentMark(*here)) {
        ++here;
        bool const isSmall = here != end && *here == '-';
        here += isSmall || (here != end && *here == '+') ? 1 : 0;
        std::uint64_t power = 0;
        char const* const start = here;
        here = takeDigits(start, end, power);
        if (here == start || here - start > MOST_EXPONENT_DIGITS) {
            return nullptr;
        }
        exponent += isSmall ? -static_cast<int>(power) : static_cast<int>(power);
    }
    if (exponent < -LARGEST_POWER || exponent > LARGEST_POWER) {
        return nullptr;
    }
    auto const integer = static_cast<double>(digits);
    double const size = exponent < 0 ? integer / POWERS_OF_TEN[-exponent] : integer * POWERS_OF_TEN[exponent];
    value = isNegative ? -size : size;
    return here;
}

#ifdef __SSE2__

/// The number that the first digits of eight bytes make up.
/// \param count of the digits, 0 to 8
inline std::uint64_t digitsOf(char const* here, unsigned int count) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, here, sizeof bytes);
    // In two steps: none has 64 bits, by which nothing can be shifted.
    bytes = (bytes ^ 0x3030303030303030U) << 4 * (8 - count) << 4 * (8 - count);
    bytes = bytes * 2561 >> 8;
    bytes = (bytes & 0x00FF00FF00FF00FFU) * 6553601 >> 16;
    return (bytes & 0x0000FFFF0000FFFFU) * 42949672960001U >> 32;
}

/// Reads a number of up to eight digits before the point and eight behind it, without an exponent.
/// \return its end, or null where it is of another kind. The value is that of takeShortNumber().
///
/// Where the number ends is known from one look at 16 bytes, whatever its parts: the next number can begin
/// while the digits of this one are joined.
inline char const* takePlainNumber(char const* here, char const* end, double& value) {
    constexpr double POWERS_OF_TEN[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    constexpr std::uint64_t WHOLE_POWERS[] = {1,       10,        100,        1'000,      10'000,
                                              100'000, 1'000'000, 10'000'000, 100'000'000};
    constexpr unsigned int MOST_DIGITS = 8;
    constexpr unsigned int LAST = 15;          // of the bytes looked at, without a sign
    constexpr std::ptrdiff_t BYTES_READ = 32;  // at most
    if (end - here < BYTES_READ) {
        return nullptr;
    }
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(here));
    __m128i const digits = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));
    __m128i const areDigits = _mm_cmpeq_epi8(_mm_min_epu8(digits, _mm_set1_epi8(9)), digits);
    auto const maskOf = [](__m128i const& matches) {
        return static_cast<unsigned int>(_mm_movemask_epi8(matches));
    };
    unsigned int const sign = maskOf(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('-'))) & 1U;
    unsigned int const points = maskOf(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.'))) >> sign;
    unsigned int const others = ~maskOf(areDigits) >> sign | 1U << LAST;
    auto const whole = static_cast<unsigned int>(__builtin_ctz(others));
    unsigned int const point = others & (0U - others) & points;
    auto const length = static_cast<unsigned int>(__builtin_ctz(others ^ point));
    unsigned int const behindPoint = length - whole - (point != 0 ? 1 : 0);
    if (whole - 1 >= MOST_DIGITS || behindPoint > MOST_DIGITS || length >= LAST) {
        return nullptr;
    }
    char const* const start = here + sign;
    char const* const numberEnd = start + length;
    if (isExponentMark(*numberEnd)) {
        return nullptr;
    }
    std::uint64_t const integer =
        digitsOf(start, whole) * WHOLE_POWERS[behindPoint] + digitsOf(start + whole + 1, behindPoint);
    double const size = static_cast<double>(static_cast<std::int64_t>(integer)) / POWERS_OF_TEN[behindPoint];
    value = sign != 0 ? -size : size;
    return numberEnd;
}

#endif

inline char const* takeDataNumber(char const* here, char const* end, double& value) {
#ifdef __SSE2__
    if (char const* const plainEnd = takePlainNumber(here, end, value)) {
        return plainEnd;
    }
#endif
    char const* const shortEnd = takeShortNumber(here, end, value);
    return shortEnd != nullptr ? shortEnd : takeUnusualDataNumber(here, end, value);
}

}  // namespace vellum::viewport
