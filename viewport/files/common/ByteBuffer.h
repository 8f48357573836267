#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>

namespace vellum::viewport {

/// Bytes that are appended to, of a size that is not known before.
class ByteBuffer {
public:
    std::string_view bytes() const { return {start.get(), filled}; }
    std::size_t size() const { return filled; }

    /// Makes the free memory at least one byte large. \return false where there is no memory.
    bool makeRoom();

    /// Makes the free memory so large that it is enough for so many bytes in all, without being touched.
    /// \return false where there is no memory.
    bool reserve(std::size_t bytes);

    char* end() { return start.get() + filled; }             ///< of the bytes: where free memory begins
    std::size_t room() const { return reserved - filled; }   ///< bytes of free memory
    void append(std::size_t written) { filled += written; }  ///< that many bytes of it have been written

private:
    struct Free {
        void operator()(char* memory) const { std::free(memory); }
    };

    std::unique_ptr<char, Free> start;  // from malloc: large blocks grow in place or without being copied
    std::size_t filled = 0;
    std::size_t reserved = 0;
};

}  // namespace vellum::viewport
