#include "foundation/basic/VL_String.h"

#include <cstring>

namespace vellum {

VL_String::VL_String() {
    assign("", 0);
}

VL_String::VL_String(char const* text) {
    *this = text;
}

VL_String& VL_String::operator=(char const* text) {
    if (text == nullptr) {
        text = "";
    }
    assign(text, static_cast<unsigned int>(std::strlen(text)));
    return *this;
}

void VL_String::assign(char const* text, unsigned int const& length) {
    // The length may be a reference into the array that is replaced below.
    unsigned int const characters = length;
    // The capacity of a string is exactly its size.
    if (capacity() != characters + 1) {
        // The old text is kept alive until the copy is made: the argument may point into it.
        ArrayCore<char> fresh;
        fresh.reserve(characters + 1, false);
        std::memcpy(fresh.data(), text, characters);
        swap(fresh);
    } else {
        // Not memcpy: the text may overlap the string.
        std::memmove(data(), text, characters);
    }
    data()[characters] = '\0';
    setSize(characters + 1);
}

unsigned int VL_String::tokenize(char const& separator, Array<VL_String>& pieces) const {
    // Both may live inside `pieces`, whose growth would move them.
    VL_String const copy(*this);
    char const wanted = separator;

    char const* rest = copy.c_str();
    // strchr would find the terminating zero, for which the loop would not end.
    while (char const* found = wanted != '\0' ? std::strchr(rest, wanted) : nullptr) {
        VL_String piece;
        piece.assign(rest, static_cast<unsigned int>(found - rest));
        pieces.pushBack(piece);
        rest = found + 1;
    }
    pieces.pushBack(VL_String(rest));
    return pieces.size();
}

bool VL_String::operator==(VL_String const& other) const {
    // Not the sizes: the interface compares up to the first zero byte.
    return std::strcmp(c_str(), other.c_str()) == 0;
}

}  // namespace vellum
