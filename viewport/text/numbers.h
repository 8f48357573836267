#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Text to number, the same on every machine: the decimal separator is a point whatever the locale says.
///
/// Each function takes a whole word and gives nothing unless all of it is a number of the stated form; no
/// function skips blanks. Two forms of reals exist on purpose: toReal() serves values typed by a user, where
/// an infinite size or a number that no double holds is a mistake; toDataNumber() serves data files, where
/// simulations do write `nan`, `+1.5` and numbers beyond all doubles.
namespace vellum::viewport {

/// A finite number: digits with an optional '-', point and exponent. Nothing for '+', `inf`, `nan`,
/// hexadecimal digits and numbers too large or too small for a double.
std::optional<double> toReal(std::string_view word);

/// A whole number from 0 to the largest int: decimal digits and nothing else, also no sign.
std::optional<int> toInteger(std::string_view word);

/// A whole number with an optional '-', within 64 bits: a time step.
std::optional<std::int64_t> toSignedInteger(std::string_view word);

/// A number of things: decimal digits and nothing else, below 2^64.
std::optional<std::uint64_t> toCount(std::string_view word);

/// A number of a data file: as toReal(), and also after a '+', `inf`, `infinity` and `nan` in any case, and
/// with the exponents of Fortran, as in `1.0D+03`.
/// Numbers beyond all doubles are infinite, numbers too small for a double are 0.
std::optional<double> toDataNumber(std::string_view word);

}  // namespace vellum::viewport
