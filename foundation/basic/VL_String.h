#pragma once

#include "foundation/basic/Array.h"
#include "foundation/export.h"

namespace vellum {

/// A byte string: an array of characters that ends with a zero byte.
///
/// size() counts the terminating zero: the empty string has size 1, "GL_INVALID_ENUM" has size 16. It knows
/// no encoding; comparisons are byte by byte.
///
/// Use:
///
///     VL_String names("GL_ARB_multitexture GL_EXT_fog_coord");
///     Array<VL_String> pieces;
///     names.tokenize(' ', pieces);
class VL_FOUNDATION_EXPORT VL_String : public ArrayCore<char> {
public:
    VL_String();  ///< The empty string, size 1.

    /// A copy of a terminated text; null gives the empty string.
    VL_String(char const* text);  // NOLINT(google-explicit-constructor): texts are passed as literals.

    VL_String(VL_String const& other) = default;
    VL_String(VL_String&& other) noexcept = default;  ///< The other string may be assigned to afterwards.
    VL_String& operator=(VL_String const& other) = default;
    VL_String& operator=(VL_String&& other) noexcept = default;  ///< Exchanges the texts.
    VL_String& operator=(char const* text);                      ///< Null gives the empty string.
    ~VL_String() = default;

    /// Takes a copy of `length` characters; the terminating zero is added. The capacity becomes exactly
    /// length + 1. `text` may point into this string.
    void assign(char const* text, unsigned int const& length);

    /// The characters with their terminating zero; never null.
    char const* c_str() const { return data() != nullptr ? data() : ""; }

    /// Splits the string at each `separator` and appends the pieces, without the separators, to `pieces`,
    /// which is not cleared first. Empty pieces count: two adjacent separators enclose one, a separator at
    /// either end adds one there, and the empty string has one.
    /// \return the new size of `pieces`.
    unsigned int tokenize(char const& separator, Array<VL_String>& pieces) const;

    bool operator==(VL_String const& other) const;
    bool operator!=(VL_String const& other) const { return !(*this == other); }
};

static_assert(sizeof(VL_String) == sizeof(ArrayCore<char>), "a string is its characters and nothing more");

}  // namespace vellum
