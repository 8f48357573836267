#include "viewport/files/mesh/utf16.h"

#include <cstddef>

namespace vellum::viewport {

namespace {

void append(std::string& text, char32_t character) {
    auto const put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

bool isIn(char32_t unit, char32_t first) {
    constexpr char32_t SURROGATES = 0x400;
    return unit >= first && unit < first + SURROGATES;
}

}  // namespace

std::optional<std::string> utf8OfUtf16(std::string_view bytes) {
    bool const isBig = bytes.substr(0, 2) == "\xFE\xFF";
    if (!isBig && bytes.substr(0, 2) != "\xFF\xFE") {
        return std::nullopt;
    }
    constexpr char32_t HIGH = 0xD800;
    constexpr char32_t LOW = 0xDC00;
    constexpr char32_t REPLACEMENT = 0xFFFD;
    auto const unitAt = [&](std::size_t place) -> char32_t {
        auto const first = static_cast<unsigned char>(bytes[place]);
        auto const second = static_cast<unsigned char>(bytes[place + 1]);
        return isBig ? first << 8U | second : second << 8U | first;
    };
    std::string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t place = 2; place + 1 < bytes.size(); place += 2) {
        char32_t const unit = unitAt(place);
        bool const isPair = isIn(unit, HIGH) && place + 3 < bytes.size() && isIn(unitAt(place + 2), LOW);
        if (isPair) {
            append(text, 0x10000 + ((unit - HIGH) << 10) + (unitAt(place + 2) - LOW));
            place += 2;
        } else {
            append(text, isIn(unit, HIGH) || isIn(unit, LOW) ? REPLACEMENT : unit);
        }
    }
    return text;
}

}  // namespace vellum::viewport
