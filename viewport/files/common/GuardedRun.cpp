#include "viewport/files/common/GuardedRun.h"

#include "viewport/files/common/FileDescriptor.h"

#include "foundation/basic/threads.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define VL_SANITIZED 1
#endif
#endif

namespace vellum::viewport {

#if defined(VL_SANITIZED)
bool const IMPORT_MEMORY_IS_LIMITED = false;
#else
bool const IMPORT_MEMORY_IS_LIMITED = true;
#endif

namespace {

using Clock = std::chrono::steady_clock;

std::string inSeconds(std::chrono::milliseconds const& time) {
    char text[32];
    std::snprintf(text, sizeof text, "%g s", static_cast<double>(time.count()) / 1000.0);
    return text;
}

std::string inMegabytes(std::uint64_t bytes) {
    return std::to_string(bytes >> 20) + " MB";
}

// == In the child ==

/// What the child sends when memory runs out. Prepared beforehand, since nothing can be allocated then.
struct OutOfMemoryReport {
    int descriptor = -1;
    std::vector<unsigned char> bytes;
};
OutOfMemoryReport outOfMemoryReport;

bool writeAll(int descriptor, unsigned char const* bytes, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        ssize_t const count = ::write(descriptor, bytes + done, size - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

/// Takes back the part of an outcome that has been written.
bool takeBack(int descriptor) {
    return ftruncate(descriptor, 0) == 0 && lseek(descriptor, 0, SEEK_SET) == 0;
}

[[noreturn]] void reportOutOfMemory() {
    std::vector<unsigned char> const& report = outOfMemoryReport.bytes;
    bool const sent = takeBack(outOfMemoryReport.descriptor) &&
                      writeAll(outOfMemoryReport.descriptor, report.data(), report.size());
    _exit(sent ? EXIT_SUCCESS : EXIT_FAILURE);
}

void setLimit(int resource, std::uint64_t value) {
    rlimit limit{};
    if (getrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0) {
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, value);
        limit.rlim_max = limit.rlim_cur;
        setrlimit(static_cast<__rlimit_resource>(resource), &limit);
    }
}

/// The memory of a process, in bytes; 0 where the system does not tell.
struct MemoryUse {
    std::uint64_t addresses;
    std::uint64_t data;  // what of them can be written
};

MemoryUse usedMemory() {
    unsigned long long addresses = 0;
    unsigned long long data = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%llu %*u %*u %*u %*u %llu", &addresses, &data) != 2) {
            addresses = 0;
            data = 0;
        }
        std::fclose(file);
    }
    auto const pageBytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return {addresses * pageBytes, data * pageBytes};
}

void silenceStandardStreams() {
    int const nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (nothing >= 0) {
            dup2(nothing, stream);
        } else {
            ::close(stream);
        }
    }
}

void restrictProcess(ImportLimits const& limits) {
    prctl(PR_SET_DUMPABLE, 0);
    setLimit(RLIMIT_CORE, 0);
    // The parent's clock is the real deadline. This one holds should the parent be stopped.
    setLimit(RLIMIT_CPU, static_cast<std::uint64_t>(limits.deadline.count()) / 1000 + 2);
    // The result is a file to the kernel, in memory that the limit of address space does not count.
    std::signal(SIGXFSZ, SIG_IGN);
    setLimit(RLIMIT_FSIZE, limits.memoryBytes);
    if (IMPORT_MEMORY_IS_LIMITED) {
        MemoryUse const used = usedMemory();
        setLimit(RLIMIT_AS, used.addresses + limits.memoryBytes);
        // The heap of a thread is set aside as addresses long before it is filled.
        setLimit(RLIMIT_DATA, used.data + limits.memoryBytes);
    }
}

[[noreturn]] void runChild(GuardedRun const& run, ImportLimits const& limits, pid_t const& parent,
                           int result) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(EXIT_FAILURE);  // The parent died before the line above.
    }
    // The threads that help did not come along.
    setThreadLimit(1);
    silenceStandardStreams();
    outOfMemoryReport.descriptor = result;
    outOfMemoryReport.bytes =
        run.encodeFault("the import needs more memory than the limit of " + inMegabytes(limits.memoryBytes));
    std::set_new_handler(reportOutOfMemory);
    restrictProcess(limits);

    bool isWhole = true;
    std::string failure;
    try {
        run.work([result, &isWhole](void const* data, std::size_t size) {
            isWhole = isWhole && writeAll(result, static_cast<unsigned char const*>(data), size);
        });
    } catch (std::exception const& exception) {
        failure = std::string("the import failed: ") + exception.what();
    } catch (...) {
        failure = "the import failed";
    }
    // Neither destructors nor exit handlers: they belong to the parent.
    if (failure.empty() && isWhole) {
        _exit(EXIT_SUCCESS);
    }
    if (failure.empty()) {
        // The outcome itself is beyond the limit. The report takes its place.
        reportOutOfMemory();
    }
    bool const isEmpty = takeBack(result);
    std::vector<unsigned char> const fault = run.encodeFault(failure);
    _exit(isEmpty && writeAll(result, fault.data(), fault.size()) ? EXIT_SUCCESS : EXIT_FAILURE);
}

// == In the parent ==

/// Between two looks at the deadline and the progress.
constexpr std::chrono::milliseconds PATIENCE{20};

/// The child as its parent has it: it does not outlive this.
class Child {
public:
    explicit Child(pid_t number) : number(number), end(_open(number)) {}

    /// Where it has not ended, it is not needed any more.
    ~Child() {
        if (!isReaped) {
            kill(number, SIGKILL);
            reap();
        }
    }
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    /// Whether it ended, after waiting for that for some time.
    bool hasEnded(std::chrono::milliseconds const& time) const {
        if (!end.isOpen()) {
            // The status stays to be reaped.
            siginfo_t facts{};
            timespec const moment{0, 1'000'000};
            nanosleep(&moment, nullptr);
            return waitid(P_PID, static_cast<id_t>(number), &facts, WEXITED | WNOHANG | WNOWAIT) != 0
                       ? errno != EINTR
                       : facts.si_pid == number;
        }
        pollfd ready{end.get(), POLLIN, 0};
        return ::poll(&ready, 1, static_cast<int>(time.count())) > 0;
    }

    int reap() {
        int status = 0;
        while (waitpid(number, &status, 0) < 0 && errno == EINTR) {
        }
        isReaped = true;
        return status;
    }

private:
    /// Not a pipe whose end the child holds: the children that other threads start meanwhile would hold it as
    /// well.
    static int _open(pid_t number) {
        // Not there on kernels before 5.3.
        return static_cast<int>(syscall(SYS_pidfd_open, number, 0));
    }

    pid_t number;
    FileDescriptor const end;
    bool isReaped = false;
};

/// Waits until the child ends. False when the deadline came first.
bool waitForEnd(Child const& child, Clock::time_point const& deadline, Progress const& progress) {
    for (;;) {
        if (progress) {
            progress(0, 0);
        }
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (child.hasEnded(std::clamp(left, std::chrono::milliseconds(0), PATIENCE))) {
            return true;
        }
        if (Clock::now() >= deadline) {
            return false;
        }
    }
}

/// Why a child that ended with this status gave no result; empty when it gave one.
std::string describeEnd(int status, ImportLimits const& limits) {
    if (WIFSIGNALED(status)) {
        int const number = WTERMSIG(status);
        if (number == SIGXCPU || number == SIGKILL) {
            return "the import was stopped: it used more time or memory than allowed (" +
                   inSeconds(limits.deadline) + ", " + inMegabytes(limits.memoryBytes) + ")";
        }
        return std::string("the importer crashed (") + strsignal(number) + "); the file is probably damaged";
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS) {
        return "the import ended without a result; the file is probably damaged or its mesh too large";
    }
    return {};
}

std::optional<Fault> readResult(int descriptor, GuardedRun const& run) {
    struct stat facts {};
    if (fstat(descriptor, &facts) != 0 || facts.st_size <= 0) {
        return Fault{run.file, "the importer gave no result"};
    }
    std::size_t const size = static_cast<std::size_t>(facts.st_size);
    void* const memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (memory == MAP_FAILED) {
        return Fault{run.file, std::string("cannot take over what was imported: ") + std::strerror(errno)};
    }
    struct Unmap {
        void* memory;
        std::size_t size;
        ~Unmap() { munmap(memory, size); }
    } const unmap{memory, size};
    try {
        return run.take(static_cast<unsigned char const*>(memory), size);
    } catch (std::bad_alloc const&) {
        return Fault{run.file, "not enough memory for what was imported"};
    }
}

/// Held alone while a child is made, shared by what must not be copied meanwhile.
std::shared_mutex& makingOfChildren() {
    static std::shared_mutex mutex;
    return mutex;
}

pid_t makeChild() {
    std::lock_guard<std::shared_mutex> const lock(makingOfChildren());
    return fork();
}

}  // namespace

NoChildren::NoChildren() {
    makingOfChildren().lock_shared();
}

NoChildren::~NoChildren() {
    makingOfChildren().unlock_shared();
}

std::optional<Fault> runGuarded(GuardedRun const& run, ImportLimits const& limits, Progress const& progress) {
    auto const cannotStart = [&run] {
        return Fault{run.file, std::string("cannot start the import: ") + std::strerror(errno)};
    };
    FileDescriptor const result(memfd_create("vl_viewport import", MFD_CLOEXEC));
    if (!result.isOpen()) {
        return cannotStart();
    }
    Clock::time_point const deadline = Clock::now() + limits.deadline;
    pid_t const parent = getpid();
    pid_t const number = makeChild();
    if (number < 0) {
        return cannotStart();
    }
    if (number == 0) {
        runChild(run, limits, parent, result.get());
    }
    Child child(number);
    if (!waitForEnd(child, deadline, progress)) {
        return Fault{run.file,
                     "the import did not end within " + inSeconds(limits.deadline) + " and was stopped"};
    }
    std::string const end = describeEnd(child.reap(), limits);
    return end.empty() ? readResult(result.get(), run) : Fault{run.file, end};
}

}  // namespace vellum::viewport
