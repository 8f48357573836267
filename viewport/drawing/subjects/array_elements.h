#pragma once

#include "foundation/basic/ArrayServer.h"

namespace vellum::viewport {

/// The elements of an array of a mesh; null where there is none, or one of another type.
template <class T>
T const* elementsOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

/// Their number; 0 where there is no array.
inline unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

}  // namespace vellum::viewport
