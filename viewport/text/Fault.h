#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vellum::viewport {

/// Why something asked for could not be done: the file concerned and what is wrong with it.
///
/// Faults are values: whoever cannot go on gives one back, and the program turns it into one line on standard error.
struct Fault {
    std::string file;     ///< as the user named it; may be empty
    std::string message;  ///< one clause, without the file's name and without a full stop

    /// "file: message" as a single line: control characters, also those of a file name, are shown as '?'.
    std::string line() const;
};

/// A value, or the fault that stands in its place.
template <class T>
class Result {
public:
    Result(T value) : held(std::move(value)) {}
    Result(Fault fault) : failure(std::move(fault)) {}

    bool isOk() const { return held.has_value(); }

    T& value() { return *held; }                    ///< Only when isOk().
    T const& value() const { return *held; }        ///< Only when isOk().
    Fault const& fault() const { return failure; }  ///< Only when not isOk().

private:
    std::optional<T> held;
    Fault failure;
};

}  // namespace vellum::viewport
