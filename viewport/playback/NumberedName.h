#pragma once

#include "viewport/text/Fault.h"

#include <cstddef>
#include <string>

namespace vellum::viewport {

/// The names of numbered files: a text with one number in it.
///
///     Result<NumberedName> const name = NumberedName::parse("f_%04d.png");
///     if (name.isOk())
///         ... name.value().of(7) ...   // "f_0007.png"
class NumberedName {
public:
    /// Reads a text with exactly one "%d", or "%0Nd" for a number of at least N digits, N from 1 to 20; "%%"
    /// stands for a percent sign. A fault for any other text, without a file.
    static Result<NumberedName> parse(std::string const& pattern);

    std::string of(std::size_t number) const;

private:
    std::string before;
    std::string after;
    std::size_t digits = 1;  // at least
};

}  // namespace vellum::viewport
