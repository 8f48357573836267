#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/export.h"

#include <cstddef>

namespace vellum {

/// The kinds of an ErrorItem.
enum ErrorItemCategoryFlags : unsigned int {
    EICF_TOO_OLD = 1,
    EICF_INFO = 2,
    EICF_WARNING = 4,
    EICF_RECOVERABLE_ERROR = 8,
    EICF_CRITICAL_ERROR = 16
};

/// The library of the family that an ErrorItem comes from; further bits are other libraries.
enum ErrorItemLibraryFlags : unsigned int { EILF_TOO_OLD = 1, EILF_BASICLIB = 2 };

/// An entry of the family's error lists. It owns its message and releases it when it is destroyed.
struct ErrorItem {
    unsigned int categoryFlags = 0;  ///< ErrorItemCategoryFlags
    unsigned int libraryFlags = 0;   ///< ErrorItemLibraryFlags
    int value = 0;                   ///< Detail whose meaning the library defines; 0 for none.
    VL_String message;               ///< Text for a person.
};

static_assert(offsetof(ErrorItem, libraryFlags) == 4 && offsetof(ErrorItem, value) == 8 &&
                  offsetof(ErrorItem, message) == 16,
              "members follow each other in declaration order");

/// Represents an error that has left its list because it is too old. Constructed when the library is loaded,
/// destroyed when it is unloaded.
extern VL_FOUNDATION_EXPORT ErrorItem const ERROR_TOO_OLD;

}  // namespace vellum
