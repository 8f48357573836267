#pragma once

#include <string>

namespace vellum::viewport {

/// The shortest text that reads back as the same finite number, whatever the locale.
std::string exactNumber(double number);

/// The number with six digits, for people.
std::string shortNumber(double number);

}  // namespace vellum::viewport
