#pragma once

#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace vellum::viewport {

/// How much an import may use before it is stopped.
struct ImportLimits {
    std::chrono::milliseconds deadline{20'000};  ///< wall-clock time, also taken as a limit of processor time
    std::uint64_t memoryBytes = 4ULL << 30;      ///< address space beyond what the program has already
};

/// False where a sanitizer, which reserves most of the address space for itself, rules out a limit of memory.
extern bool const IMPORT_MEMORY_IS_LIMITED;

/// Runs `import` in a child process and returns its result.
///
/// Importers read whatever a file says, and some of them crash, never end or ask for all memory on a damaged
/// one. In a process of its own that costs no more than an error message: the child has limits on time and
/// memory, none of the standard streams, leaves no core dump, and dies with its parent. Its outcome comes
/// back through anonymous memory and is checked like any foreign data (see MeshTransfer.h).
///
/// Call it before a GL context or a thread exists: the child is a plain copy of the process.
/// `file` only names the file in faults. An exception that leaves `import` becomes a fault as well.
Result<MeshData> importGuarded(std::string const& file, std::function<Result<MeshData>()> const& import,
                               ImportLimits const& limits);

}  // namespace vellum::viewport
