#pragma once

#include "viewport/files/common/Progress.h"
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
    /// Of memory beyond what the program has already, some of which may be free, and of the outcome.
    std::uint64_t memoryBytes = 4ULL << 30;
};

/// False where a sanitizer, which reserves most of the address space for itself, rules out a limit of memory.
extern bool const IMPORT_MEMORY_IS_LIMITED;

/// While one exists, runGuarded() on another thread waits before it makes its child. For work that the copy
/// must not find half done, as the start of a driver, which loads libraries and starts threads.
class NoChildren {
public:
    NoChildren();
    ~NoChildren();
    NoChildren(NoChildren const&) = delete;
    NoChildren& operator=(NoChildren const&) = delete;
};

/// Takes the next bytes of an outcome, which need not outlive the call.
using PutBytes = std::function<void(void const* data, std::size_t size)>;

/// Work on a file that must not harm this process, and the way of its outcome as bytes.
struct GuardedRun {
    std::string file;  ///< only named in faults

    /// In the child: does the work and puts its outcome, each byte once, into memory that both processes
    /// have. An exception becomes a fault, whatever has been put before.
    std::function<void(PutBytes const& put)> work;

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
/// May be called on any thread, on several at once, and while another thread draws. The child is a plain copy
/// of the process in which only the calling thread goes on, so the work must not wait for what another thread
/// holds:
///
/// - It may allocate, throw, open files and use the loader of shared libraries: glibc makes these usable in the
///   copy. It must not call OpenGL, start threads, or take a lock that other threads of the process take too.
/// - It must not write to anything that it shares with this process, such as descriptors opened before.
/// - The kernel ends the child with the *thread* that called, not only with the process: the call returns after
///   the child's end, so that only makes a difference where the thread is ended by force.
///
/// \param progress is called about every 20 ms on this thread with 0 bytes of 0, since what the child has read is
///     not known. Where it throws the child is killed and gone before the call ends.
/// \return the fault of the run or of its outcome, or nothing.
std::optional<Fault> runGuarded(GuardedRun const& run, ImportLimits const& limits,
                                Progress const& progress = {});

}  // namespace vellum::viewport
