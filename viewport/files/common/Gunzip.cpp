#include "viewport/files/common/Gunzip.h"

#include <algorithm>
#include <new>

#define ZLIB_CONST
#include <zlib.h>

namespace vellum::viewport {

namespace {

constexpr std::size_t largestStep = std::size_t(1) << 22;  // bytes into and out of one call of zlib

/// zlib's state, set up for gzip files.
class Inflater {
public:
    explicit Inflater(std::string_view const& compressed) : _left(compressed) {
        constexpr int gzipOnly = 16 + MAX_WBITS;
        if (inflateInit2(&_stream, gzipOnly) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflater() { inflateEnd(&_stream); }
    Inflater(Inflater const&) = delete;
    Inflater& operator=(Inflater const&) = delete;

    /// Writes up to `room` bytes. \return what zlib says: Z_OK, Z_STREAM_END at the end of a member, or an error;
    /// Z_BUF_ERROR where the input is used up.
    int step(char* const out, std::size_t const& room, std::size_t& written) {
        std::size_t const given = std::min(_left.size(), largestStep);
        _stream.next_in = reinterpret_cast<Bytef const*>(_left.data());
        _stream.avail_in = static_cast<uInt>(given);
        _stream.next_out = reinterpret_cast<Bytef*>(out);
        _stream.avail_out = static_cast<uInt>(std::min(room, largestStep));
        uInt const offered = _stream.avail_out;
        int const outcome = inflate(&_stream, Z_NO_FLUSH);
        written = offered - _stream.avail_out;
        _left.remove_prefix(given - _stream.avail_in);
        return outcome;
    }

    /// Goes on to the next member. \return is there one?
    bool startNextMember() { return isGzip(_left) && inflateReset(&_stream) == Z_OK; }

    std::string_view left() const { return _left; }
    char const* message() const { return _stream.msg != nullptr ? _stream.msg : "no gzip data"; }

private:
    std::string_view _left;
    z_stream _stream{};
};

}  // namespace

bool GunzippedText::_grow(std::size_t const& capacity) {
    void* const larger = std::realloc(_start.get(), capacity);
    if (larger == nullptr) {
        return false;
    }
    static_cast<void>(_start.release());
    _start.reset(static_cast<char*>(larger));
    _capacity = capacity;
    return true;
}

bool isGzip(std::string_view const& bytes) {
    return bytes.size() >= 2 && bytes[0] == '\x1F' && bytes[1] == '\x8B';
}

Result<GunzippedText> gunzip(std::string_view const& compressed, std::uint64_t const& limit,
                             ParticleProgress const& progress) {
    GunzippedText text;
    Inflater inflater(compressed);
    while (true) {
        if (text._size == text._capacity && !text._grow(std::max(std::size_t(1) << 16, 2 * text._capacity))) {
            return Fault{{}, "there is not enough memory for what it holds uncompressed"};
        }
        std::size_t written = 0;
        int const outcome =
            inflater.step(text._start.get() + text._size, text._capacity - text._size, written);
        text._size += written;
        if (text._size > limit) {
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
            text._isCutOff = true;
            return text;
        } else if (outcome != Z_OK) {
            return Fault{{}, std::string("the compressed data are damaged: ") + inflater.message()};
        }
    }
}

std::string gunzipStart(std::string_view const& compressed, std::size_t const& size) {
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
