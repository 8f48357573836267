#pragma once

#include "viewport/files/common/ByteBuffer.h"
#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// The uncompressed content of a file.
struct DecompressedText {
    ByteBuffer buffer;
    bool isCutOff = false;  ///< the compressed data end too early; the buffer has the part that is there
};

/// Whether the bytes begin like a file of gzip, zstd or xz.
bool isCompressed(std::string_view bytes);

/// Uncompresses all members of a file of gzip, zstd or xz, one after the other. Damaged data and data of more
/// than `limit` bytes are a fault, as are those that take more than 1 GiB to uncompress; data that are cut
/// off give the part that is there. Bytes behind the last member are ignored.
/// \param progress gets the compressed bytes done and all compressed bytes; may be empty.
Result<DecompressedText> decompress(std::string_view compressed, std::uint64_t limit,
                                    Progress const& progress);

/// The same step by step.
class Decompression {
public:
    Decompression(std::string_view compressed, std::uint64_t limit);
    ~Decompression();
    Decompression(Decompression const&) = delete;
    Decompression& operator=(Decompression const&) = delete;

    /// Uncompresses up to a megabyte. \return false: that was all, or it is a fault. The buffer grows, and
    /// may move, only if it has no room.
    bool step();

    ByteBuffer& buffer() { return text.buffer; }
    std::size_t done() const;  ///< compressed bytes

    /// After the last step, once.
    Result<DecompressedText> take();

private:
    class Decoders;
    std::unique_ptr<Decoders> decoders;
    std::uint64_t limit;
    DecompressedText text;
    std::optional<Fault> fault;
};

/// At most the first `size` uncompressed bytes of a file; empty where it is damaged.
std::string decompressStart(std::string_view compressed, std::size_t size);

}  // namespace vellum::viewport
