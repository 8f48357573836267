#include "viewport/files/common/MappedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::viewport {

Result<MappedFile> MappedFile::open(std::string const& path) {
    // Without O_NONBLOCK opening a named pipe would block until somebody writes to it.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return Fault{path, std::string("cannot be opened: ") + std::strerror(errno)};
    }
    struct stat facts {};
    std::string reason;
    void* start = MAP_FAILED;
    if (::fstat(descriptor, &facts) != 0) {
        reason = std::string("cannot be read: ") + std::strerror(errno);
    } else if (S_ISDIR(facts.st_mode)) {
        reason = "is a folder, not a file";
    } else if (!S_ISREG(facts.st_mode)) {
        reason = "is not a regular file";
    } else if (facts.st_size == 0) {
        reason = "the file is empty";
    } else {
        start =
            ::mmap(nullptr, static_cast<std::size_t>(facts.st_size), PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (start == MAP_FAILED) {
            reason = std::string("cannot be read: ") + std::strerror(errno);
        }
    }
    // The mapping keeps the file open.
    ::close(descriptor);
    if (!reason.empty()) {
        return Fault{path, reason};
    }
    std::size_t const size = static_cast<std::size_t>(facts.st_size);
    ::madvise(start, size, MADV_SEQUENTIAL);
    return MappedFile(std::string_view(static_cast<char const*>(start), size));
}

void MappedFile::release(std::size_t bytes) const {
    auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::size_t const whole = std::min(bytes, content.size()) / page * page;
    if (whole > 0) {
        // Nothing was written there that could be lost.
        static_cast<void>(::madvise(const_cast<char*>(content.data()), whole, MADV_DONTNEED));
    }
}

MappedFile::~MappedFile() {
    if (!content.empty()) {
        ::munmap(const_cast<char*>(content.data()), content.size());
    }
}

MappedFile::MappedFile(MappedFile&& other) noexcept : content(std::exchange(other.content, {})) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    std::swap(content, other.content);
    return *this;
}

}  // namespace vellum::viewport
