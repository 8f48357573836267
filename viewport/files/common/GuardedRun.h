#pragma once

#include "viewport/text/Fault.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// How much an import may use before it is stopped.
struct ImportLimits {
    std::chrono::milliseconds deadline{20'000};  ///< wall-clock time, also taken as a limit of processor time
    std::uint64_t memoryBytes = 4ULL << 30;      ///< address space beyond what the program has already
};

/// False where a sanitizer, which reserves most of the address space for itself, rules out a limit of memory.
extern bool const IMPORT_MEMORY_IS_LIMITED;

/// Work on a file that must not harm this process, and the way of its outcome as bytes.
struct GuardedRun {
    std::string file;  ///< only named in faults

    /// In the child: does the work and gives its outcome. An exception becomes a fault.
    std::function<std::vector<unsigned char>()> work;

    /// In the child: a fault as an outcome.
    std::function<std::vector<unsigned char>(std::string const& message)> encodeFault;

    /// In this process: takes an outcome over, which it checks like any foreign data, and gives the fault
    /// that the outcome is or has. The bytes are valid until it returns.
    std::function<std::optional<Fault>(unsigned char const* bytes, std::size_t size)> take;
};

/// Does the work in a child process.
///
/// Importers read whatever a file says, and some of them crash, never end or ask for all memory on a damaged
/// one. In a process of its own that costs no more than an error message: the child has limits on time and
/// memory, none of the standard streams, leaves no core dump, and dies with its parent. Its outcome comes
/// back through anonymous memory.
///
/// Call it before a GL context or a thread exists: the child is a plain copy of the process.
/// \return the fault of the run or of its outcome, or nothing.
std::optional<Fault> runGuarded(GuardedRun const& run, ImportLimits const& limits);

}  // namespace vellum::viewport
