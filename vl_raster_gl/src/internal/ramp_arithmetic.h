#pragma once

/// \file
/// Where a magnitude stands between two others, and which component of a color belongs there: the one source
/// of the colors that the processor computes. `Lanes` is the arithmetic, of one number (color_ramp.h) or of a
/// register of them (the sources of the record writers).
///
/// Templates only, over a type that is local to its source: those sources are compiled for particular
/// processors, and a function that several sources share could end up as the one of such a processor for all.

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
