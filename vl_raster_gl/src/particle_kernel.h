#pragma once

#include "record_formula.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

/// \file
/// The writing of particle records with vector instructions, for the sources that define `Lanes`: a register
/// of 4 particles, or of twice 4, for which the instructions of that source's processor stand. Everything is
/// local to the source that includes it, as sources may be compiled for different processors.
///
/// Every result has the same bits as that of the plain writer: each operation is rounded as there, in the
/// same order.
///
/// Registers hold 4 particles in each half of 8 floats, or in their only 4 floats:
///
///     three vectors in a row      x0 y0 z0 x1 | y1 z1 x2 y2 | z2 x3 y3 z3
///     their components            x0 x1 x2 x3 | y0 y1 y2 y3 | z0 z1 z2 z3
///     four records in a row       x0 y0 z0 r0 | g0 b0 x1 y1 | z1 r1 g1 b1 | x2 y2 z2 r2 | g2 b2 x3 y3 | z3 r3 g3 b3

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

template <bool streams>
inline void storeRecords(Three const& p, Three const& colour, float* out) {
    Register const greenBlueLow = Lanes::unpackLow(colour.y, colour.z);
    Register const greenBlueHigh = Lanes::unpackHigh(colour.y, colour.z);
    Register const zr0 = Lanes::shuffle<pick(2, 2, 0, 0)>(p.x, colour.x);
    Register const xy1 = Lanes::shuffle<pick(3, 3, 0, 0)>(p.x, p.y);
    Register const zr1 = Lanes::shuffle<pick(1, 1, 1, 1)>(p.y, colour.x);
    Register const zr2 = Lanes::shuffle<pick(0, 0, 2, 2)>(p.z, colour.x);
    Register const zr3 = Lanes::shuffle<pick(3, 3, 3, 3)>(p.z, colour.x);
    Lanes::template store<streams>(
        out, Lanes::shuffle<pick(0, 1, 0, 2)>(p.x, zr0), Lanes::shuffle<pick(0, 1, 0, 2)>(greenBlueLow, xy1),
        Lanes::shuffle<pick(0, 2, 2, 3)>(zr1, greenBlueLow), Lanes::shuffle<pick(2, 3, 0, 2)>(p.y, zr2),
        Lanes::shuffle<pick(0, 1, 1, 2)>(greenBlueHigh, p.z),
        Lanes::shuffle<pick(0, 2, 2, 3)>(zr3, greenBlueHigh));
}

/// The colours of as many particles as a register holds.
template <RecordColour source>
class Colours {
public:
    static constexpr unsigned int VALUES = source == RecordColour::CONSTANT ? 0
                                           : source == RecordColour::SPREAD_SCALAR ||
                                                   source == RecordColour::SCALAR ||
                                                   source == RecordColour::TRUNCATED_SCALAR
                                               ? 1
                                               : 3;

    explicit Colours(RecordFormula const& formula)
        : constant(_all(formula.constant))
        , lowest(_all(formula.lowest))
        , difference(_all(formula.difference))
        , above(_all(formula.above))
        , minMagnitude(Lanes::all(formula.minMagnitude))
        , range(Lanes::all(formula.range))
        , scale(Lanes::all(formula.scale)) {}

    Three operator()(float const* values) const {
        if constexpr (source == RecordColour::CONSTANT) {
            return constant;
        } else if constexpr (VALUES == 1) {
            Register const s = Lanes::load(values);
            if constexpr (source == RecordColour::SPREAD_SCALAR) {
                Register const v = Lanes::squareRoot(Lanes::divide(Lanes::multiply(s, s), Lanes::all(3.0F)));
                return {v, v, v};
            } else if constexpr (source == RecordColour::SCALAR) {
                return _ramp(s);
            } else {
                return _ramp(Lanes::divide(Lanes::truncatedMagnitude(s), scale));
            }
        } else {
            Three const v = componentsOf(Lanes::loadRow<Three>(values));
            if constexpr (source == RecordColour::VECTOR) {
                return v;
            } else if constexpr (source == RecordColour::LENGTH) {
                Register const squares =
                    Lanes::add(Lanes::add(Lanes::multiply(v.x, v.x), Lanes::multiply(v.y, v.y)),
                               Lanes::multiply(v.z, v.z));
                return _ramp(Lanes::divide(Lanes::squareRoot(squares), scale));
            } else {
                Register const& component = source == RecordColour::X   ? v.x
                                            : source == RecordColour::Y ? v.y
                                                                        : v.z;
                return _ramp(Lanes::divide(Lanes::truncatedMagnitude(component), scale));
            }
        }
    }

private:
    static Three _all(float const (&v)[3]) { return {Lanes::all(v[0]), Lanes::all(v[1]), Lanes::all(v[2])}; }

    Three _ramp(Register const& magnitude) const {
        Register const t = Lanes::divide(Lanes::subtract(magnitude, minMagnitude), range);
        Register const isAbove = Lanes::isAbove(t, Lanes::all(1.0F));
        return {_component(t, isAbove, lowest.x, difference.x, above.x),
                _component(t, isAbove, lowest.y, difference.y, above.y),
                _component(t, isAbove, lowest.z, difference.z, above.z)};
    }

    static Register _component(Register const& t, Register const& isAbove, Register const& from,
                               Register const& by, Register const& otherwise) {
        Register const colour = Lanes::choose(isAbove, otherwise, Lanes::add(from, Lanes::multiply(by, t)));
        return Lanes::least(Lanes::greatest(colour, Lanes::all(0.0F)), Lanes::all(1.0F));
    }

    Three constant;
    Three lowest;
    Three difference;
    Three above;
    Register minMagnitude;
    Register range;
    Register scale;
};

/// Fewer particles than a register holds: they are filled up with zeros on the way.
template <class Colour>
void writeFew(Colour const& colour, float const* positions, float const* values, float* out,
              std::size_t const& count) {
    float fewPositions[3 * Lanes::COUNT] = {};
    float fewValues[3 * Lanes::COUNT] = {};
    float fewRecords[6 * Lanes::COUNT];
    std::memcpy(fewPositions, positions, 3 * count * sizeof(float));
    if (Colour::VALUES != 0) {
        std::memcpy(fewValues, values, Colour::VALUES * count * sizeof(float));
    }
    storeRecords<false>(Lanes::loadRow<Three>(fewPositions), colour(fewValues), fewRecords);
    std::memcpy(out, fewRecords, 6 * count * sizeof(float));
}

template <bool streams, class Colour>
void writeMany(Colour const& colour, float const* positions, float const* values, float* out,
               std::size_t const& count) {
    std::size_t k = 0;
    for (; k + Lanes::COUNT <= count; k += Lanes::COUNT) {
        storeRecords<streams>(Lanes::loadRow<Three>(positions + 3 * k), colour(values + Colour::VALUES * k),
                              out + 6 * k);
    }
    if (k < count) {
        writeFew(colour, positions + 3 * k, values + Colour::VALUES * k, out + 6 * k, count - k);
    }
}

template <RecordColour source>
void write(RecordFormula const& formula, float const* positions, float const* values, float* out,
           std::size_t const& count, bool const& streams) {
    Colours<source> const colour(formula);
    if (!streams) {
        writeMany<false>(colour, positions, values, out, count);
        return;
    }
    // Stores past the cache go to whole, aligned registers. A record is 24 bytes, so one of the first four
    // records is aligned, if any is.
    std::size_t first = 0;
    while (first < 4 && reinterpret_cast<std::uintptr_t>(out + 6 * first) % sizeof(Register) != 0) {
        ++first;
    }
    if (first == 4 || first > count) {
        writeMany<false>(colour, positions, values, out, count);
        return;
    }
    if (first != 0) {
        for (std::size_t k = 0; k < first; ++k) {
            writeFew(colour, positions + 3 * k, values + Colours<source>::VALUES * k, out + 6 * k, 1);
        }
    }
    writeMany<true>(colour, positions + 3 * first, values + Colours<source>::VALUES * first, out + 6 * first,
                    count - first);
}

void writeRecordsByLanes(RecordFormula const& formula, float const* positions, float const* values,
                         float* out, std::size_t const& count, bool const& streams) {
    switch (formula.source) {
    case RecordColour::CONSTANT:
        return write<RecordColour::CONSTANT>(formula, positions, values, out, count, streams);
    case RecordColour::VECTOR:
        return write<RecordColour::VECTOR>(formula, positions, values, out, count, streams);
    case RecordColour::SPREAD_SCALAR:
        return write<RecordColour::SPREAD_SCALAR>(formula, positions, values, out, count, streams);
    case RecordColour::LENGTH:
        return write<RecordColour::LENGTH>(formula, positions, values, out, count, streams);
    case RecordColour::X:
        return write<RecordColour::X>(formula, positions, values, out, count, streams);
    case RecordColour::Y:
        return write<RecordColour::Y>(formula, positions, values, out, count, streams);
    case RecordColour::Z:
        return write<RecordColour::Z>(formula, positions, values, out, count, streams);
    case RecordColour::SCALAR:
        return write<RecordColour::SCALAR>(formula, positions, values, out, count, streams);
    case RecordColour::TRUNCATED_SCALAR:
        return write<RecordColour::TRUNCATED_SCALAR>(formula, positions, values, out, count, streams);
    }
}

}  // namespace
}  // namespace vellum
