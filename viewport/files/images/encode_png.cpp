#include "viewport/files/images/encode_picture.h"

#include "foundation/basic/MemoryGuard.h"
#include "foundation/basic/threads.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <vector>

#include <zlib.h>

// Written without libpng, which compresses on one core alone. Ranges of rows are compressed each by itself,
// as if one stream did it: each knows the bytes before it and ends at a whole byte. The file does not depend
// on the number of threads.

namespace vellum::viewport {

namespace {

using Bytes = std::vector<unsigned char>;

/// Higher levels take three times as long and save a tenth.
constexpr int LEVEL = 3;
constexpr std::size_t WINDOW = 32768;  // bytes that a stream looks back
constexpr std::size_t RANGE_BYTES = std::size_t(1) << 18;
constexpr std::size_t BATCH = 64;  // ranges that are in memory together

/// What differs from the pixel before is mostly 0 in pictures of surfaces.
constexpr unsigned char SUB_FILTER = 1;

void put32(Bytes& bytes, std::uint32_t value) {
    for (int const shift : {24, 16, 8, 0}) {
        bytes.push_back(static_cast<unsigned char>(value >> shift & 0xFFU));
    }
}

bool writeChunk(char const (&type)[5], Bytes const& content, std::FILE* file) {
    Bytes front;
    put32(front, static_cast<std::uint32_t>(content.size()));
    front.insert(front.end(), type, type + 4);
    uLong check = crc32(0, front.data() + 4, 4);
    check = content.empty() ? check : crc32(check, content.data(), static_cast<uInt>(content.size()));
    Bytes back;
    put32(back, static_cast<std::uint32_t>(check));
    return std::fwrite(front.data(), 1, front.size(), file) == front.size() &&
           std::fwrite(content.data(), 1, content.size(), file) == content.size() &&
           std::fwrite(back.data(), 1, back.size(), file) == back.size();
}

/// The bytes that are compressed: for each row its filter and what the filter leaves.
class FilteredRows {
public:
    explicit FilteredRows(Picture const& picture)
        : pixels(picture.pixels.data()), rowBytes(4 * static_cast<std::size_t>(picture.width)) {}

    std::size_t sizeOfRow() const { return rowBytes + 1; }

    Bytes take(std::size_t begin, std::size_t end) const {
        Bytes bytes((end - begin) * sizeOfRow());
        unsigned char* out = bytes.data();
        for (std::size_t row = begin; row < end; ++row, out += sizeOfRow()) {
            unsigned char const* const in = pixels + row * rowBytes;
            out[0] = SUB_FILTER;
            std::memcpy(out + 1, in, 4);
            for (std::size_t i = 4; i < rowBytes; ++i) {
                out[1 + i] = static_cast<unsigned char>(in[i] - in[i - 4]);
            }
        }
        return bytes;
    }

private:
    unsigned char const* pixels;
    std::size_t rowBytes;
};

/// Some rows, compressed.
struct Part {
    Bytes bytes;
    uLong sum = 0;  // Adler's, of the bytes before compression
    std::size_t size = 0;
    bool isMade = false;
};

Part compress(FilteredRows const& rows, std::size_t begin, std::size_t end, bool isLast) {
    Part part;
    Bytes content = rows.take(begin, end);
    z_stream stream{};
    if (deflateInit2(&stream, LEVEL, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) != Z_OK) {
        return part;
    }
    if (begin > 0) {
        std::size_t const known = std::min(begin, WINDOW / rows.sizeOfRow() + 1);
        Bytes const before = rows.take(begin - known, begin);
        std::size_t const size = std::min(before.size(), WINDOW);
        deflateSetDictionary(&stream, before.data() + (before.size() - size), static_cast<uInt>(size));
    }
    part.size = content.size();
    part.sum = adler32(1, content.data(), static_cast<uInt>(content.size()));
    // The bound is that of one call that ends the stream; a flush needs a few bytes more.
    constexpr uLong FLUSH = 64;
    part.bytes.resize(deflateBound(&stream, static_cast<uLong>(content.size())) + FLUSH);
    stream.next_in = content.data();
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = part.bytes.data();
    stream.avail_out = static_cast<uInt>(part.bytes.size());
    int const result = deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
    part.isMade = result == (isLast ? Z_STREAM_END : Z_OK) && stream.avail_in == 0;
    part.bytes.resize(part.bytes.size() - stream.avail_out);
    deflateEnd(&stream);
    return part;
}

/// False where there is no memory, or the file cannot be written.
bool writeRows(Picture const& picture, std::FILE* file) {
    FilteredRows const rows(picture);
    auto const height = static_cast<std::size_t>(picture.height);
    std::size_t const rangeSize = std::max<std::size_t>(1, RANGE_BYTES / rows.sizeOfRow());
    std::size_t const rangeCount = (height + rangeSize - 1) / rangeSize;
    uLong sum = adler32(0, nullptr, 0);
    for (std::size_t first = 0; first < rangeCount; first += BATCH) {
        std::vector<Part> parts(std::min(BATCH, rangeCount - first));
        MemoryGuard guard;
        forRanges(parts.size(), 1, [&](std::size_t i, std::size_t) {
            std::size_t const begin = (first + i) * rangeSize;
            std::size_t const end = std::min(begin + rangeSize, height);
            guard.run([&] { parts[i] = compress(rows, begin, end, end == height); });
        });
        guard.check();
        for (std::size_t i = 0; i < parts.size(); ++i) {
            Part& part = parts[i];
            sum = adler32_combine(sum, part.sum, static_cast<z_off_t>(part.size));
            if (first + i == 0) {
                // Deflate with the largest window; the fast levels.
                constexpr unsigned char HEADER[] = {0x78, 0x5E};
                part.bytes.insert(part.bytes.begin(), std::begin(HEADER), std::end(HEADER));
            }
            if (first + i + 1 == rangeCount) {
                put32(part.bytes, static_cast<std::uint32_t>(sum));
            }
            if (!part.isMade || !writeChunk("IDAT", part.bytes, file)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

std::string encodePng(Picture const& picture, std::FILE* file) {
    constexpr unsigned char SIGNATURE[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (picture.width <= 0 || picture.height <= 0) {
        return "the picture has no pixels";
    }
    Bytes header;
    put32(header, static_cast<std::uint32_t>(picture.width));
    put32(header, static_cast<std::uint32_t>(picture.height));
    // Eight bits, RGBA, and the only compression, filter method and order of rows that is in use.
    header.insert(header.end(), {8, 6, 0, 0, 0});
    errno = 0;
    bool const isWritten = std::fwrite(SIGNATURE, 1, sizeof SIGNATURE, file) == sizeof SIGNATURE &&
                           writeChunk("IHDR", header, file) && writeChunk("sRGB", {0}, file) &&
                           writeRows(picture, file) && writeChunk("IEND", {}, file);
    return isWritten ? std::string() : errno != 0 ? std::strerror(errno) : "there is not enough memory";
}

}  // namespace vellum::viewport
