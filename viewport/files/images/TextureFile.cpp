#include "viewport/files/images/TextureFile.h"

#include "viewport/files/common/MappedFile.h"
#include "viewport/files/images/GuardedPicture.h"
#include "viewport/files/images/picture_decoders.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace vellum::viewport {

namespace {

using Image = std::shared_ptr<VL_Image const>;

bool startsWith(std::string_view bytes, std::string_view signature) {
    return bytes.substr(0, signature.size()) == signature;
}

/// TGA files have no signature: whether the header's fields are among those that such files have.
bool isTga(std::string_view bytes) {
    constexpr std::size_t HEADER_SIZE = 18;
    if (bytes.size() < HEADER_SIZE) {
        return false;
    }
    auto const field = [&bytes](std::size_t place) { return static_cast<unsigned char>(bytes[place]); };
    int const kind = field(2);
    bool const isKind = (kind >= 1 && kind <= 3) || (kind >= 9 && kind <= 11);
    int const bits = field(16);
    return isKind && field(1) <= 1 && (bits == 8 || bits == 15 || bits == 16 || bits == 24 || bits == 32);
}

Image decode(std::string const& path, Progress const& progress) {
    using namespace std::string_view_literals;
    if (progress) {
        progress(0, 0);
    }
    auto const image = std::make_shared<VL_Image>();
    if (image->read(path.c_str())) {
        return image;
    }
    Result<MappedFile> const file = MappedFile::open(path);
    std::string_view const bytes = file.isOk() ? file.value().bytes() : std::string_view();
    for (std::string_view const signature : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv}) {
        if (startsWith(bytes, signature)) {
            return decodeTiff(path, *image) ? image : nullptr;
        }
    }
    if (startsWith(bytes, "RIFF") &&
        startsWith(bytes.substr(std::min<std::size_t>(8, bytes.size())), "WEBP")) {
        return decodeWebp(bytes, *image) ? image : nullptr;
    }
    if (startsWith(bytes, "DDS ")) {
        return decodeGuarded([bytes](VL_Image& decoded) { return decodeDds(bytes, decoded); }, progress);
    }
    if (startsWith(bytes, "GIF8") || startsWith(bytes, "BM") || isTga(bytes)) {
        return decodeGuarded([bytes](VL_Image& decoded) { return decodeWithStb(bytes, decoded); }, progress);
    }
    return nullptr;
}

std::string reasonOf(std::string_view bytes) {
    std::string const format = startsWith(bytes, "DDS ") ? unknownDdsFormat(bytes) : std::string();
    return format.empty() ? std::string("is not a readable picture (") + PICTURE_FORMATS + ")"
                          : "is a DDS file of " + format + ", which is not read";
}

}  // namespace

Result<Image> readTexture(std::string const& path, Progress const& progress) {
    // Opened first, since VL_Image does not say why it failed. Without O_NONBLOCK a named pipe would block.
    int const descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        return Fault{path, std::string("cannot be opened: ") + std::strerror(errno)};
    }
    ::close(descriptor);
    Image image = readImage(path, progress);
    if (image == nullptr) {
        return Fault{path, unreadableReason(path)};
    }
    return image;
}

Image readImage(std::string const& path, Progress const& progress) {
    try {
        return decode(path, progress);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

Image readImage(std::vector<unsigned char> const& bytes, Progress const& progress) {
    // VL_Image reads from paths: a file in memory has one, under /proc.
    int const descriptor = memfd_create("vl_viewport texture", MFD_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    struct Close {
        int descriptor;
        ~Close() { ::close(descriptor); }
    } const close{descriptor};
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t const count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count <= 0 && errno != EINTR) {
            break;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return written == bytes.size() ? readImage("/proc/self/fd/" + std::to_string(descriptor), progress)
                                   : nullptr;
}

std::string unreadableReason(std::string const& path) {
    Result<MappedFile> const file = MappedFile::open(path);
    return reasonOf(file.isOk() ? file.value().bytes() : std::string_view());
}

std::string unreadableReason(std::vector<unsigned char> const& bytes) {
    return reasonOf({reinterpret_cast<char const*>(bytes.data()), bytes.size()});
}

}  // namespace vellum::viewport
