#pragma once

/// \file
/// The position of a magnitude between two others, and the color component there: the single source of the
/// colors that the CPU computes. `Lanes` is the arithmetic, of one number (color_ramp.h) or of a register
/// (the record writers).
///
/// Templates only, over a type that is local to its source: the writers are compiled for particular
/// processors, and the linker could select one of their functions for all sources.

namespace vellum {

/// 0 at the lowest color, 1 at the highest.
template <class Lanes>
inline typename Lanes::Register placeOnRamp(typename Lanes::Register magnitude,
                                            typename Lanes::Register minMagnitude,
                                            typename Lanes::Register range) {
    return Lanes::divide(Lanes::subtract(magnitude, minMagnitude), range);
}

/// A component of the color at a place; `above` where the place is above 1, else on the line that begins at
/// `lowest`. Below 0 the line goes on.
template <class Lanes>
inline typename Lanes::Register rampComponent(typename Lanes::Register place, typename Lanes::Register lowest,
                                              typename Lanes::Register difference,
                                              typename Lanes::Register above) {
    return Lanes::choose(Lanes::isAbove(place, Lanes::all(1.0F)), above,
                         Lanes::add(lowest, Lanes::multiply(difference, place)));
}

/// A component limited to 0 to 1; 0 for NaN.
template <class Lanes>
inline typename Lanes::Register limitedComponent(typename Lanes::Register component) {
    return Lanes::least(Lanes::greatest(component, Lanes::all(0.0F)), Lanes::all(1.0F));
}

}  // namespace vellum
