#include "viewport/files/images/TextureFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

using Image = std::shared_ptr<VL_Image const>;

}  // namespace

Result<Image> readTexture(std::string const& path) {
    // Opened first, since VL_Image does not say why it failed. Without O_NONBLOCK a named pipe would block.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return Fault{path, std::string("cannot be opened: ") + std::strerror(errno)};
    }
    ::close(descriptor);
    Image image = readImage(path);
    if (image == nullptr) {
        return Fault{path, "is not a readable picture (PNG, JPEG, EXR or HDR)"};
    }
    return image;
}

Image readImage(std::string const& path) {
    auto const image = std::make_shared<VL_Image>();
    return image->read(path.c_str()) ? image : nullptr;
}

Image readImage(std::vector<unsigned char> const& bytes) {
    // VL_Image reads from paths: a file in memory has one, under /proc.
    int const descriptor = memfd_create("vl_viewport texture", MFD_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t const count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count <= 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    Image image =
        written == bytes.size() ? readImage("/proc/self/fd/" + std::to_string(descriptor)) : nullptr;
    ::close(descriptor);
    return image;
}

}  // namespace vellum::viewport
