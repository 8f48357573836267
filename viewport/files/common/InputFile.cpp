#include "viewport/files/common/InputFile.h"

#include "viewport/files/common/FileDescriptor.h"

#include "viewport/files/common/ByteBuffer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

std::string systemReason(char const* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

/// Whether reading comes to an end by itself: not that of devices such as /dev/zero.
bool isStream(int descriptor, mode_t kind) {
    return S_ISFIFO(kind) || S_ISSOCK(kind) || (S_ISCHR(kind) && ::isatty(descriptor) != 0);
}

/// Waits for bytes or the end, as long as somebody wants them. A pipe that nobody has opened for writing yet
/// has neither.
void waitForBytes(int descriptor, std::uint64_t done, Progress const& progress) {
    constexpr int PATIENCE = 20;  // milliseconds
    pollfd ready{descriptor, POLLIN, 0};
    do {
        if (progress) {
            progress(done, 0);
        }
    } while (::poll(&ready, 1, PATIENCE) == 0 || (ready.revents == 0 && errno == EINTR));
}

Result<std::shared_ptr<ByteBuffer const>> readAll(int descriptor, std::string const& path,
                                                  Progress const& progress) {
    constexpr std::size_t LARGEST_STEP = std::size_t(1) << 22;
    auto buffer = std::make_shared<ByteBuffer>();
    while (true) {
        if (!buffer->makeRoom()) {
            return Fault{path, "there is not enough memory for what it holds"};
        }
        waitForBytes(descriptor, buffer->size(), progress);
        ssize_t const count = ::read(descriptor, buffer->end(), std::min(buffer->room(), LARGEST_STEP));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count < 0) {
            return Fault{path, systemReason("cannot be read")};
        }
        if (count == 0) {
            break;
        }
        buffer->append(static_cast<std::size_t>(count));
        if (buffer->size() > InputFile::LARGEST_PIPE) {
            return Fault{path, "holds more than " + std::to_string(InputFile::LARGEST_PIPE) + " bytes"};
        }
    }
    if (buffer->size() == 0) {
        return Fault{path, "the file is empty"};
    }
    return std::shared_ptr<ByteBuffer const>(buffer);
}

}  // namespace

Result<InputFile> InputFile::open(std::string const& path, Progress const& progress) {
    struct stat facts {};
    bool const isStandard = isStandardInput(path);
    // Asked by name first: a device may block when it is opened.
    int const known = isStandard ? ::fstat(STDIN_FILENO, &facts) : ::stat(path.c_str(), &facts);
    bool const isPipe =
        known == 0 && (isStandard ? isStream(STDIN_FILENO, facts.st_mode) : S_ISFIFO(facts.st_mode));
    if (!isPipe) {
        Result<MappedFile> mapped = MappedFile::open(isStandard ? "/dev/stdin" : path);
        if (!mapped.isOk()) {
            return Fault{path, mapped.fault().message};
        }
        auto const file = std::make_shared<MappedFile const>(std::move(mapped.value()));
        return InputFile(path, file, isStandard);
    }
    // A named pipe would block until it has a writer. The standard input stays open.
    FileDescriptor const pipe(isStandard ? -1 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!isStandard && !pipe.isOpen()) {
        return Fault{path, systemReason("cannot be opened")};
    }
    Result<std::shared_ptr<ByteBuffer const>> const buffer =
        readAll(isStandard ? STDIN_FILENO : pipe.get(), path, progress);
    if (!buffer.isOk()) {
        return buffer.fault();
    }
    return InputFile(path, buffer.value(), buffer.value()->bytes(), true);
}

}  // namespace vellum::viewport
