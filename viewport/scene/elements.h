#pragma once

#include "foundation/geometry/Color4.h"

#include <string_view>

namespace vellum::viewport {

/// A chemical element as it is usually drawn.
struct Element {
    char const* symbol;     ///< "Fe"
    unsigned int rgb;       ///< 0xRRGGBB, as Jmol has them
    double covalentRadius;  ///< angstrom (Cordero et al., 2008); 0: none is known

    Color4<float> color() const;
};

/// The element of a symbol, in any case: "Fe", "FE" and "fe" are iron. Null where there is none. D and T are
/// heavy hydrogen.
Element const* findElement(std::string_view symbol);

/// From 1 on, in the order of the periodic system.
unsigned int atomicNumber(Element const& element);

}  // namespace vellum::viewport
