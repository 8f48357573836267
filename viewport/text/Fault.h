#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vellum::viewport {

/// Why a request failed: the file concerned and what is wrong with it.
///
/// Faults are values: functions return them, alone or in a Result, and the program prints one line on
/// standard error.
struct Fault {
    std::string file;     ///< as the user named it; may be empty
    std::string message;  ///< one clause, without the file's name and without a full stop

    /// The request was given up because nobody wants its answer any more: nothing is wrong with the file.
    bool isCancelled = false;

    /// "file: message" as a single line (see singleLine()).
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
