#include "viewport/text/shortest_number.h"

#include <charconv>
#include <cstdio>

namespace vellum::viewport {

std::string exactNumber(double number) {
    char text[32];
    // A zero with a sign is none that a user would write.
    std::to_chars_result const result = std::to_chars(text, text + sizeof text, number == 0 ? 0.0 : number);
    return {text, result.ptr};
}

std::string shortNumber(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

}  // namespace vellum::viewport
