#include "toolkit/internal/stage_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellum::toolkit {

namespace {

constexpr off_t LARGEST_FILE = 1 << 20;

/// The file's bytes, at most `size` of them; nothing where reading fails, and then errno says why.
std::optional<std::string> readAll(int descriptor, std::size_t size) {
    std::string text(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        ssize_t const count = ::read(descriptor, text.data() + filled, size - filled);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    text.resize(filled);
    return text;
}

}  // namespace

StageFile readStageFile(std::string const& path) {
    // Without O_NONBLOCK a named pipe would be waited for.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return {"", std::string("cannot be opened: ") + std::strerror(errno)};
    }
    struct stat status {};
    bool const isPlain = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    std::optional<std::string> text;
    if (isPlain && status.st_size <= LARGEST_FILE) {
        text = readAll(descriptor, static_cast<std::size_t>(status.st_size));
    }
    int const readError = errno;
    ::close(descriptor);
    if (!isPlain) {
        return {"", "is not a plain file"};
    }
    if (status.st_size > LARGEST_FILE) {
        return {"", "is too large for the text of a stage (1 MiB)"};
    }
    if (!text) {
        return {"", std::string("cannot be read: ") + std::strerror(readError)};
    }
    if (text->find_first_not_of(" \t\r\n\v\f") == std::string::npos) {
        return {"", "is empty"};
    }
    if (text->find('\0') != std::string::npos) {
        return {"", "is not a text"};
    }
    return {*text, ""};
}

}  // namespace vellum::toolkit
