#include "viewport/program/Console.h"

#include <iostream>

namespace vellum::viewport {

int fail(ExitStatus status, std::string const& message) {
    std::cerr << "vl_viewport: " << message << std::endl;
    return status;
}

int fail(Failure const& failure) {
    return fail(failure.status, failure.fault.line());
}

void note(Options const& options, Fault const& what) {
    if (!options.isQuiet) {
        std::cerr << "vl_viewport: " << what.line() << std::endl;
    }
}

std::optional<Failure> flushOutput() {
    return std::cout.flush() ? std::nullopt
                             : std::optional<Failure>({FILE_FAULT, {"standard output", "cannot be written"}});
}

}  // namespace vellum::viewport
