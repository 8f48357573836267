#include "viewport/text/Fault.h"

namespace vellum::viewport {

std::string Fault::line() const {
    std::string text = file.empty() ? message : file + ": " + message;
    for (char& character : text) {
        unsigned char const code = static_cast<unsigned char>(character);
        if (code < 0x20 || code == 0x7F) {
            character = '?';
        }
    }
    return text;
}

}  // namespace vellum::viewport
