#pragma once

#include "internal/particles/ramp_arithmetic.h"
#include "internal/particles/record_formula.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

/// \file
/// The vectorized writer of particle records, for the sources that define `Lanes`: a register of 4 particles,
/// or of twice 4, with the instructions of a processor. All names are local to the including source, because
/// sources are compiled for different processors.
///
/// Every result has the bits of the plain writer: each operation is rounded as there, in the same order.
///
/// Registers hold 4 particles in each half of 8 floats, or in their only 4 floats:
///
///     three vectors in a row  x0 y0 z0 x1 | y1 z1 x2 y2 | z2 x3 y3 z3
///     their components        x0 x1 x2 x3 | y0 y1 y2 y3 | z0 z1 z2 z3
///     four records in a row   x0 y0 z0 r0 | g0 b0 x1 y1 | z1 r1 g1 b1 | x2 y2 z2 r2 | g2 b2 x3 y3 | z3 r3 g3
///     b3

namespace vellum {
namespace {

using Register = Lanes::Register;

constexpr int pick(int a, int b, int c, int d) {
    return a | b << 2 | c << 4 | d << 6;
}

struct Three {
    Register x;
    Register y;
    Register z;
};

inline Three componentsOf(Three const& row) {
    Register const x = Lanes::shuffle<pick(2, 2, 1, 1)>(row.y, row.z);
    Register const y0 = Lanes::shuffle<pick(1, 1, 0, 0)>(row.x, row.y);
    Register const y1 = Lanes::shuffle<pick(3, 3, 2, 2)>(row.y, row.z);
    Register const z = Lanes::shuffle<pick(2, 2, 1, 1)>(row.x, row.y);
    return {Lanes::shuffle<pick(0, 3, 0, 2)>(row.x, x), Lanes::shuffle<pick(0, 2, 0, 2)>(y0, y1),
            Lanes::shuffle<pick(0, 2, 0, 3)>(z, row.z)};
}

/// Consecutive particles.
struct Neighbors {
    static Three vectors(float const* first, std::size_t k) {
        return Lanes::loadRow<Three>(first + VECTOR_FLOATS * k);
    }
    static Register floats(float const* first, std::size_t k) { return Lanes::load(first + k); }
    static std::size_t at(std::size_t k) { return k; }
};

/// Particles at offsets, ascending.
struct Chosen {
    static constexpr std::uintptr_t BYTES_AHEAD = 2048;

    unsigned int const* offsets;

    Three vectors(float const* first, std::size_t k) const {
        // Without gaps they are read as consecutive particles, which is faster.
        if (offsets[k + Lanes::COUNT - 1] - offsets[k] == Lanes::COUNT - 1) {
            return Lanes::loadRow<Three>(first + VECTOR_FLOATS * offsets[k]);
        }
        // With gaps, the hardware prefetcher does not read far enough ahead.
        std::uintptr_t const here = reinterpret_cast<std::uintptr_t>(first + VECTOR_FLOATS * offsets[k]);
        Lanes::fetch(here + BYTES_AHEAD);
        Lanes::fetch(here + BYTES_AHEAD + 6 * Lanes::COUNT);
        Register const a = Lanes::loadVectors(first, offsets + k);
        Register const b = Lanes::loadVectors(first, offsets + k + 1);
        Register const c = Lanes::loadVectors(first, offsets + k + 2);
        Register const d = Lanes::loadVectors(first, offsets + k + 3);
        Register const zx0 = Lanes::shuffle<pick(2, 2, 0, 0)>(a, b);
        Register const zx2 = Lanes::shuffle<pick(2, 2, 0, 0)>(c, d);
        return {Lanes::shuffle<pick(0, 1, 0, 2)>(a, zx0), Lanes::shuffle<pick(1, 2, 0, 1)>(b, c),
                Lanes::shuffle<pick(0, 2, 1, 2)>(zx2, d)};
    }
    Register floats(float const* first, std::size_t k) const { return Lanes::loadFloats(first, offsets + k); }
    std::size_t at(std::size_t k) const { return offsets[k]; }
};

template <bool streams>
inline void storeRecords(Three const& p, Three const& color, float* out) {
    Register const greenBlueLow = Lanes::unpackLow(color.y, color.z);
    Register const greenBlueHigh = Lanes::unpackHigh(color.y, color.z);
    Register const zr0 = Lanes::shuffle<pick(2, 2, 0, 0)>(p.x, color.x);
    Register const xy1 = Lanes::shuffle<pick(3, 3, 0, 0)>(p.x, p.y);
    Register const zr1 = Lanes::shuffle<pick(1, 1, 1, 1)>(p.y, color.x);
    Register const zr2 = Lanes::shuffle<pick(0, 0, 2, 2)>(p.z, color.x);
    Register const zr3 = Lanes::shuffle<pick(3, 3, 3, 3)>(p.z, color.x);
    Lanes::template store<streams>(
        out, Lanes::shuffle<pick(0, 1, 0, 2)>(p.x, zr0), Lanes::shuffle<pick(0, 1, 0, 2)>(greenBlueLow, xy1),
        Lanes::shuffle<pick(0, 2, 2, 3)>(zr1, greenBlueLow), Lanes::shuffle<pick(2, 3, 0, 2)>(p.y, zr2),
        Lanes::shuffle<pick(0, 1, 1, 2)>(greenBlueHigh, p.z),
        Lanes::shuffle<pick(0, 2, 2, 3)>(zr3, greenBlueHigh));
}

/// The colors of one register of particles.
template <RecordColor source>
class Colors {
public:
    static constexpr std::size_t VALUES = VALUE_FLOATS[static_cast<std::size_t>(source)];

    explicit Colors(RecordFormula const& formula)
        : constant(_all(formula.constant))
        , lowest(_all(formula.lowest))
        , difference(_all(formula.difference))
        , above(_all(formula.above))
        , minMagnitude(Lanes::all(formula.minMagnitude))
        , range(Lanes::all(formula.range))
        , scale(Lanes::all(formula.scale)) {}

    /// Whether the colors come from a ramp.
    static constexpr bool IS_RAMP = source != RecordColor::CONSTANT && source != RecordColor::VECTOR &&
                                    source != RecordColor::SPREAD_SCALAR;

    /// Without a ramp: the colors of the particles from index k.
    template <class Particles>
    Three of(Particles const& particles, float const* values, std::size_t k) const {
        if constexpr (source == RecordColor::CONSTANT) {
            return constant;
        } else if constexpr (source == RecordColor::VECTOR) {
            return componentsOf(particles.vectors(values, k));
        } else {
            Register const s = particles.floats(values, k);
            Register const v = Lanes::squareRoot(Lanes::divide(Lanes::multiply(s, s), Lanes::all(3.0F)));
            return {v, v, v};
        }
    }

    /// The positions on the ramp of the particles from index k: 0 at the minimum color, 1 at the maximum.
    template <class Particles>
    Register placeOf(Particles const& particles, float const* values, std::size_t k) const {
        return placeOnRamp<Lanes>(_magnitudeOf(particles, values, k), minMagnitude, range);
    }

    /// The colors of positions on the ramp.
    Three ofPlace(Register const& t) const {
        return {_component(t, lowest.x, difference.x, above.x),
                _component(t, lowest.y, difference.y, above.y),
                _component(t, lowest.z, difference.z, above.z)};
    }

private:
    static Three _all(float const (&v)[3]) { return {Lanes::all(v[0]), Lanes::all(v[1]), Lanes::all(v[2])}; }

    template <class Particles>
    Register _magnitudeOf(Particles const& particles, float const* values, std::size_t k) const {
        if constexpr (source == RecordColor::SCALAR) {
            return particles.floats(values, k);
        } else if constexpr (source == RecordColor::TRUNCATED_SCALAR) {
            return Lanes::divide(Lanes::truncatedMagnitude(particles.floats(values, k)), scale);
        } else {
            Three const v = componentsOf(particles.vectors(values, k));
            if constexpr (source == RecordColor::LENGTH) {
                Register const squares =
                    Lanes::add(Lanes::add(Lanes::multiply(v.x, v.x), Lanes::multiply(v.y, v.y)),
                               Lanes::multiply(v.z, v.z));
                return Lanes::divide(Lanes::squareRoot(squares), scale);
            } else {
                Register const& component = source == RecordColor::X   ? v.x
                                            : source == RecordColor::Y ? v.y
                                                                       : v.z;
                return Lanes::divide(Lanes::truncatedMagnitude(component), scale);
            }
        }
    }

    static Register _component(Register t, Register from, Register by, Register otherwise) {
        return limitedComponent<Lanes>(rampComponent<Lanes>(t, from, by, otherwise));
    }

    Three constant;
    Three lowest;
    Three difference;
    Three above;
    Register minMagnitude;
    Register range;
    Register scale;
};

/// Full registers of particles, from index `first` to `end`, exclusive.
template <bool streams, class Color, class Particles>
void writeWhole(Color const& color, Particles const& particles, float const* positions, float const* values,
                float* out, std::size_t first, std::size_t end) {
    if constexpr (!Color::IS_RAMP) {
        for (std::size_t k = first; k < end; k += Lanes::COUNT) {
            storeRecords<streams>(particles.vectors(positions, k), color.of(particles, values, k),
                                  out + RECORD_FLOATS * k);
        }
    } else {
        // In two steps, because the dependency chain from a value to its color is long: a square root and two
        // divisions. In one step, out-of-order execution would not reach the next particles meanwhile.
        constexpr std::size_t AHEAD =
            16 * Lanes::COUNT;  // particles of a step: their positions fit into the first-level cache
        float places[AHEAD];
        for (std::size_t start = first; start < end;) {
            std::size_t const stop = end - start < AHEAD ? end : start + AHEAD;
            for (std::size_t k = start; k < stop; k += Lanes::COUNT) {
                Lanes::template storeOne<false>(places + (k - start), color.placeOf(particles, values, k));
            }
            for (std::size_t k = start; k < stop; k += Lanes::COUNT) {
                storeRecords<streams>(particles.vectors(positions, k),
                                      color.ofPlace(Lanes::load(places + (k - start))),
                                      out + RECORD_FLOATS * k);
            }
            start = stop;
        }
    }
}

/// A partial register from index `first`, padded with zeros.
template <class Color, class Particles>
void writeFew(Color const& color, Particles const& particles, float const* positions, float const* values,
              float* out, std::size_t first, std::size_t end) {
    float fewPositions[VECTOR_FLOATS * Lanes::COUNT] = {};
    float fewValues[VECTOR_FLOATS * Lanes::COUNT] = {};
    float fewRecords[RECORD_FLOATS * Lanes::COUNT];
    for (std::size_t k = first; k < end; ++k) {
        std::memcpy(fewPositions + VECTOR_FLOATS * (k - first), positions + VECTOR_FLOATS * particles.at(k),
                    VECTOR_FLOATS * sizeof(float));
        if (Color::VALUES != 0) {
            std::memcpy(fewValues + Color::VALUES * (k - first), values + Color::VALUES * particles.at(k),
                        Color::VALUES * sizeof(float));
        }
    }
    writeWhole<false>(color, Neighbors(), fewPositions, fewValues, fewRecords, 0, Lanes::COUNT);
    std::memcpy(out + RECORD_FLOATS * first, fewRecords, RECORD_FLOATS * (end - first) * sizeof(float));
}

/// From index `first`.
template <bool streams, class Color, class Particles>
void writeMany(Color const& color, Particles const& particles, float const* positions, float const* values,
               float* out, std::size_t first, std::size_t count) {
    std::size_t const end = count - (count - first) % Lanes::COUNT;
    writeWhole<streams>(color, particles, positions, values, out, first, end);
    if (end < count) {
        writeFew(color, particles, positions, values, out, end, count);
    }
}

template <class Color, class Particles>
void writeAll(Color const& color, Particles const& particles, float const* positions, float const* values,
              float* out, std::size_t count, bool streams) {
    if (!streams) {
        writeMany<false>(color, particles, positions, values, out, 0, count);
        return;
    }
    // Stores that bypass the cache need aligned registers. A record has 24 bytes, so one of the first four
    // records is aligned, if any is.
    std::size_t first = 0;
    while (first < 4 &&
           reinterpret_cast<std::uintptr_t>(out + RECORD_FLOATS * first) % sizeof(Register) != 0) {
        ++first;
    }
    if (first == 4 || first > count) {
        writeMany<false>(color, particles, positions, values, out, 0, count);
        return;
    }
    if (first != 0) {
        writeFew(color, particles, positions, values, out, 0, first);
    }
    writeMany<true>(color, particles, positions, values, out, first, count);
}

template <RecordColor source>
void write(RecordFormula const& formula, float const* positions, float const* values,
           unsigned int const* offsets, float* out, std::size_t count, bool streams) {
    Colors<source> const color(formula);
    if (offsets == nullptr) {
        writeAll(color, Neighbors(), positions, values, out, count, streams);
    } else {
        writeAll(color, Chosen{offsets}, positions, values, out, count, streams);
    }
}

inline void writeRecordsByLanes(RecordFormula const& formula, float const* positions, float const* values,
                                unsigned int const* offsets, float* out, std::size_t count, bool streams) {
    switch (formula.source) {
    case RecordColor::CONSTANT:
        return write<RecordColor::CONSTANT>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::VECTOR:
        return write<RecordColor::VECTOR>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::SPREAD_SCALAR:
        return write<RecordColor::SPREAD_SCALAR>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::LENGTH:
        return write<RecordColor::LENGTH>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::X:
        return write<RecordColor::X>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::Y:
        return write<RecordColor::Y>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::Z:
        return write<RecordColor::Z>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::SCALAR:
        return write<RecordColor::SCALAR>(formula, positions, values, offsets, out, count, streams);
    case RecordColor::TRUNCATED_SCALAR:
        return write<RecordColor::TRUNCATED_SCALAR>(formula, positions, values, offsets, out, count, streams);
    }
}

}  // namespace
}  // namespace vellum
