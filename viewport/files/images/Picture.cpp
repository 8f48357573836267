#include "viewport/files/images/Picture.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <png.h>
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

/// Interrupts wait while it lives, so that none finds a file with its temporary name. Other threads of the program take no
/// signals: those of the driver block them.
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

}  // namespace

std::optional<Fault> Picture::savePng(std::string const& path) const {
    fs::path const target = resolved(path);
    struct stat facts {};
    if (::stat(target.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode)) {
        return Fault{path, S_ISDIR(facts.st_mode) ? "cannot be written: is a folder"
                                                  : "cannot be written: is not a regular file"};
    }
    // The folder decides whether a file can be replaced; its own permissions say whether it may be.
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0 && errno != ENOENT) {
        return Fault{path, "cannot be written: " + systemReason()};
    }

    InterruptsWaiting const waiting;
    TemporaryFile file(target.has_parent_path() ? target.parent_path() : fs::path("."));
    if (!file.isOpen()) {
        return Fault{path, "cannot be written: " + systemReason()};
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    errno = 0;
    if (png_image_write_to_stdio(&image, file.stream(), 0, pixels.data(), 4 * width, nullptr) == 0) {
        std::string const reason = errno != 0 ? systemReason() : std::string(image.message);
        return Fault{path, "cannot be written: " + reason};
    }
    if (!file.close() || !file.renameTo(target)) {
        return Fault{path, "cannot be written: " + systemReason()};
    }
    return std::nullopt;
}

Result<Picture> Picture::loadPng(std::string const& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        return Fault{path, std::string("cannot be read: ") + image.message};
    }
    image.format = PNG_FORMAT_RGBA;
    Picture picture;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.pixels.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr) == 0) {
        png_image_free(&image);
        return Fault{path, std::string("cannot be read: ") + image.message};
    }
    return picture;
}

}  // namespace vellum::viewport
