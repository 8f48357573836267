#pragma once

#include "viewport/program/CommandLine.h"
#include "viewport/text/Fault.h"

#include <string>

namespace vellum::viewport {

enum ExitStatus { DONE = 0, FILE_FAULT = 1, USAGE_FAULT = CommandLine::USAGE_ERROR, NO_OPENGL = 3 };

/// A fault, and the exit status that the program ends with.
struct Failure {
    ExitStatus status;
    Fault fault;
};

/// Prints a line on standard error, and gives the status.
int fail(ExitStatus status, std::string const& message);
int fail(Failure const& failure);

/// Prints what the user is to know, one line on standard error, unless the options silence it.
void note(Options const& options, Fault const& what);

/// Sends out what was printed on standard output. A failure where it cannot be written.
std::optional<Failure> flushOutput();

}  // namespace vellum::viewport
