#include "viewport/files/images/output_file.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

namespace fs = std::filesystem;

std::string systemReason() {
    return std::strerror(errno);
}

/// The file to be replaced: the target of a symbolic link, or the path itself.
fs::path resolved(std::string const& path) {
    std::error_code error;
    fs::path const target = fs::is_symlink(path, error) ? fs::canonical(path, error) : fs::path(path);
    return error ? fs::path(path) : target;
}

/// Interrupts wait while it lives, so that none finds a file with its temporary name. Other threads of the
/// program take no signals: those of the driver block them.
class InterruptsWaiting {
public:
    InterruptsWaiting() {
        sigset_t interrupts;
        sigemptyset(&interrupts);
        for (int const signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            sigaddset(&interrupts, signal);
        }
        pthread_sigmask(SIG_BLOCK, &interrupts, &former);
    }
    ~InterruptsWaiting() { pthread_sigmask(SIG_SETMASK, &former, nullptr); }
    InterruptsWaiting(InterruptsWaiting const&) = delete;
    InterruptsWaiting& operator=(InterruptsWaiting const&) = delete;

private:
    sigset_t former{};
};

/// A file that has no lasting name yet: removed at the end of its scope unless renameTo() succeeded.
class TemporaryFile {
public:
    /// Creates it in the folder. On failure isOpen() is false and errno says why.
    explicit TemporaryFile(fs::path const& folder) {
        constexpr int MOST_ATTEMPTS = 100;
        for (int attempt = 0; attempt < MOST_ATTEMPTS && file == nullptr; ++attempt) {
            location = folder /
                       (".vl_viewport-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp");
            int const descriptor = ::open(location.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (descriptor >= 0) {
                file = ::fdopen(descriptor, "wb");
            } else if (errno != EEXIST) {
                break;
            }
        }
    }

    ~TemporaryFile() {
        if (file != nullptr) {
            std::fclose(file);
        }
        if (_wasOpened() && !isRenamed) {
            ::unlink(location.c_str());
        }
    }

    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    bool isOpen() const { return file != nullptr; }
    std::FILE* stream() const { return file; }

    /// False when something could not be written, with errno.
    bool close() {
        hasEnded = true;
        bool const isWritten = std::fflush(file) == 0 && std::ferror(file) == 0;
        int const reason = errno;
        bool const isClosed = std::fclose(file) == 0;
        file = nullptr;
        if (!isWritten) {
            errno = reason;
        }
        return isWritten && isClosed;
    }

    /// After close(). False with errno.
    bool renameTo(fs::path const& target) {
        isRenamed = std::rename(location.c_str(), target.c_str()) == 0;
        return isRenamed;
    }

private:
    bool _wasOpened() const { return file != nullptr || hasEnded; }

    fs::path location;
    std::FILE* file = nullptr;
    bool hasEnded = false;
    bool isRenamed = false;
};

/// The descriptor that a path means. Opening the path instead would begin a file anew that the shell has
/// redirected the stream to.
std::optional<int> descriptorNamed(std::string_view path) {
    if (path == "-" || path == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    if (path == "/dev/stderr") {
        return STDERR_FILENO;
    }
    for (std::string_view const folder : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.substr(0, folder.size()) == folder) {
            int number = -1;
            auto const [end, error] =
                std::from_chars(path.data() + folder.size(), path.data() + path.size(), number);
            bool const isNumber = error == std::errc() && end == path.data() + path.size() && number >= 0;
            return isNumber ? std::optional<int>(number) : std::nullopt;
        }
    }
    return std::nullopt;
}

bool isStream(mode_t mode) {
    return S_ISFIFO(mode) || S_ISCHR(mode);
}

Fault cannotBeWritten(std::string const& path, std::string const& reason) {
    return {path, "cannot be written: " + reason};
}

/// Interrupts do not wait here: a pipe whose reader sleeps blocks as long as it likes.
std::optional<Fault> writeStraight(std::string const& path, WriteContent const& write) {
    std::optional<int> const named = descriptorNamed(path);
    int const descriptor =
        named ? ::fcntl(*named, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    std::FILE* const file = descriptor >= 0 ? ::fdopen(descriptor, "wb") : nullptr;
    if (file == nullptr) {
        Fault const fault = cannotBeWritten(path, systemReason());
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return fault;
    }
    errno = 0;
    std::string reason = write(file);
    if (reason.empty() && std::fflush(file) != 0) {
        reason = systemReason();
    }
    if (std::fclose(file) != 0 && reason.empty()) {
        reason = systemReason();
    }
    return reason.empty() ? std::nullopt : std::optional<Fault>(cannotBeWritten(path, reason));
}

}  // namespace

bool isStandardOutput(std::string const& path) {
    return descriptorNamed(path) == STDOUT_FILENO;
}

bool isWrittenStraight(std::string const& path) {
    struct stat facts {};
    return descriptorNamed(path) || (::stat(path.c_str(), &facts) == 0 && isStream(facts.st_mode));
}

std::optional<Fault> writeOutput(std::string const& path, WriteContent const& write) {
    if (isWrittenStraight(path)) {
        return writeStraight(path, write);
    }
    fs::path const target = resolved(path);
    struct stat facts {};
    if (::stat(target.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode)) {
        return cannotBeWritten(path, S_ISDIR(facts.st_mode) ? "is a folder" : "is not a regular file");
    }
    // The folder decides whether a file can be replaced; its own permissions say whether it may be.
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) {
        return cannotBeWritten(path, systemReason());
    }

    InterruptsWaiting const waiting;
    TemporaryFile file(target.has_parent_path() ? target.parent_path() : fs::path("."));
    if (!file.isOpen()) {
        return cannotBeWritten(path, systemReason());
    }
    errno = 0;
    std::string const reason = write(file.stream());
    if (!reason.empty()) {
        return cannotBeWritten(path, reason);
    }
    if (!file.close() || !file.renameTo(target)) {
        return cannotBeWritten(path, systemReason());
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
