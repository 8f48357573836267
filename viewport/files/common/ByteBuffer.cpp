#include "viewport/files/common/ByteBuffer.h"

#include <algorithm>

namespace vellum::viewport {

bool ByteBuffer::makeRoom() {
    if (room() > 0) {
        return true;
    }
    return reserve(std::max(std::size_t(1) << 16, 2 * reserved));
}

bool ByteBuffer::reserve(std::size_t bytes) {
    if (bytes <= reserved) {
        return true;
    }
    void* const larger = std::realloc(start.get(), bytes);
    if (larger == nullptr) {
        return false;
    }
    static_cast<void>(start.release());
    start.reset(static_cast<char*>(larger));
    reserved = bytes;
    return true;
}

}  // namespace vellum::viewport
