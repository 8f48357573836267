#include "viewport/text/Fault.h"

#include "viewport/text/single_line.h"

namespace vellum::viewport {

std::string Fault::line() const {
    return singleLine(file.empty() ? message : file + ": " + message);
}

}  // namespace vellum::viewport
