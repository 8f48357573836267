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
    unsigned int const characters = length;
    if (capacity() != characters + 1) {
        // The old text is kept alive until the copy is made: the argument may point into it.
        ArrayCore<char> fresh;
        fresh.reserve(characters + 1, false);
        std::memcpy(fresh.data(), text, characters);
        swap(fresh);
    } else {
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
    return std::strcmp(c_str(), other.c_str()) == 0;
}

}  // namespace vellum
