#include "viewport/files/common/Gunzip.h"

#include <algorithm>
#include <new>

#define ZLIB_CONST
#include <zlib.h>

namespace vellum::viewport {

namespace {

// Bytes per call of zlib, whose counts have 32 bits. Progress is reported between calls.
constexpr std::size_t LARGEST_STEP = std::size_t(1) << 22;

class Inflater {
public:
    explicit Inflater(std::string_view compressed) : remaining(compressed) {
        constexpr int GZIP_ONLY = 16 + MAX_WBITS;
        if (inflateInit2(&stream, GZIP_ONLY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflater() { inflateEnd(&stream); }
    Inflater(Inflater const&) = delete;
    Inflater& operator=(Inflater const&) = delete;

    /// Writes up to `room` bytes. \return the code of zlib: Z_OK, Z_STREAM_END at the end of a member,
    /// Z_BUF_ERROR where the input is used up, or another error.
    int step(char* const out, std::size_t room, std::size_t& written) {
        std::size_t const given = std::min(remaining.size(), LARGEST_STEP);
        stream.next_in = reinterpret_cast<Bytef const*>(remaining.data());
        stream.avail_in = static_cast<uInt>(given);
        stream.next_out = reinterpret_cast<Bytef*>(out);
        stream.avail_out = static_cast<uInt>(std::min(room, LARGEST_STEP));
        uInt const offered = stream.avail_out;
        int const outcome = inflate(&stream, Z_NO_FLUSH);
        written = offered - stream.avail_out;
        remaining.remove_prefix(given - stream.avail_in);
        return outcome;
    }

    /// \return false where no further member follows.
    bool startNextMember() { return isGzip(remaining) && inflateReset(&stream) == Z_OK; }

    std::string_view left() const { return remaining; }
    char const* message() const { return stream.msg != nullptr ? stream.msg : "no gzip data"; }

private:
    std::string_view remaining;
    z_stream stream{};
};

}  // namespace

bool GunzippedText::_grow(std::size_t capacity) {
    void* const larger = std::realloc(start.get(), capacity);
    if (larger == nullptr) {
        return false;
    }
    static_cast<void>(start.release());
    start.reset(static_cast<char*>(larger));
    reserved = capacity;
    return true;
}

bool isGzip(std::string_view bytes) {
    return bytes.size() >= 2 && bytes[0] == '\x1F' && bytes[1] == '\x8B';
}

Result<GunzippedText> gunzip(std::string_view compressed, std::uint64_t limit, Progress const& progress) {
    GunzippedText text;
    Inflater inflater(compressed);
    while (true) {
        if (text.size == text.reserved && !text._grow(std::max(std::size_t(1) << 16, 2 * text.reserved))) {
            return Fault{{}, "there is not enough memory for what it holds uncompressed"};
        }
        std::size_t written = 0;
        int const outcome = inflater.step(text.start.get() + text.size, text.reserved - text.size, written);
        text.size += written;
        if (text.size > limit) {
            return Fault{{}, "holds more than " + std::to_string(limit) + " bytes uncompressed"};
        }
        if (progress) {
            progress(compressed.size() - inflater.left().size(), compressed.size());
        }
        if (outcome == Z_STREAM_END) {
            if (!inflater.startNextMember()) {
                return text;
            }
        } else if (outcome == Z_BUF_ERROR || (outcome == Z_OK && inflater.left().empty() && written == 0)) {
            text.endedEarly = true;
            return text;
        } else if (outcome != Z_OK) {
            return Fault{{}, std::string("the compressed data are damaged: ") + inflater.message()};
        }
    }
}

std::string gunzipStart(std::string_view compressed, std::size_t size) {
    std::string start(size, '\0');
    std::size_t filled = 0;
    Inflater inflater(compressed);
    while (filled < size) {
        std::size_t written = 0;
        int const outcome = inflater.step(start.data() + filled, size - filled, written);
        filled += written;
        if (outcome != Z_OK || written == 0) {
            break;
        }
    }
    start.resize(filled);
    return start;
}

}  // namespace vellum::viewport
