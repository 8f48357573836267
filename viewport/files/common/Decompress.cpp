#include "viewport/files/common/Decompress.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include <lzma.h>
#define ZLIB_CONST
#include <zlib.h>
#include <zstd.h>

namespace vellum::viewport {

namespace {

// Bytes per step: the counts of zlib have 32 bits. Progress is reported between steps.
constexpr std::size_t LARGEST_STEP = std::size_t(1) << 20;
constexpr std::uint64_t MOST_MEMORY = std::uint64_t(1) << 30;  // for the state of a decoder

enum class Outcome {
    GOES_ON,
    ENDS,     ///< of a member
    STARVES,  ///< the input is used up
    DAMAGED
};

/// Uncompresses one member after the other.
class Decoder {
public:
    explicit Decoder(std::string_view compressed) : remaining(compressed) {}
    virtual ~Decoder() = default;
    Decoder(Decoder const&) = delete;
    Decoder& operator=(Decoder const&) = delete;

    /// Writes up to `room` bytes.
    virtual Outcome step(char* out, std::size_t room, std::size_t& written) = 0;

    /// \return false where no further member follows.
    virtual bool startNextMember() = 0;

    virtual std::string message() const = 0;  ///< after damage

    std::string_view left() const { return remaining; }

protected:
    std::string_view remaining;
};

bool beginsWith(std::string_view bytes, std::string_view magic) {
    return bytes.substr(0, magic.size()) == magic;
}

bool isGzip(std::string_view bytes) {
    return beginsWith(bytes, "\x1F\x8B");
}

bool isXz(std::string_view bytes) {
    return beginsWith(bytes, std::string_view("\xFD"
                                              "7zXZ\0",
                                              6));
}

bool isZstd(std::string_view bytes) {
    // A frame that holds data, or one of sixteen that are skipped.
    return beginsWith(bytes, "\x28\xB5\x2F\xFD") ||
           (bytes.size() >= 4 && (bytes[0] & '\xF0') == '\x50' && bytes.substr(1, 3) == "\x2A\x4D\x18");
}

class GzipDecoder : public Decoder {
public:
    explicit GzipDecoder(std::string_view compressed) : Decoder(compressed) {
        constexpr int GZIP_ONLY = 16 + MAX_WBITS;
        if (inflateInit2(&stream, GZIP_ONLY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GzipDecoder() override { inflateEnd(&stream); }

    Outcome step(char* out, std::size_t room, std::size_t& written) override {
        std::size_t const given = std::min(remaining.size(), LARGEST_STEP);
        stream.next_in = reinterpret_cast<Bytef const*>(remaining.data());
        stream.avail_in = static_cast<uInt>(given);
        stream.next_out = reinterpret_cast<Bytef*>(out);
        stream.avail_out = static_cast<uInt>(std::min(room, LARGEST_STEP));
        uInt const offered = stream.avail_out;
        int const code = inflate(&stream, Z_NO_FLUSH);
        written = offered - stream.avail_out;
        remaining.remove_prefix(given - stream.avail_in);
        if (code == Z_STREAM_END) {
            return Outcome::ENDS;
        }
        if (code == Z_BUF_ERROR || (code == Z_OK && remaining.empty() && written == 0)) {
            return Outcome::STARVES;
        }
        return code == Z_OK ? Outcome::GOES_ON : Outcome::DAMAGED;
    }

    bool startNextMember() override { return isGzip(remaining) && inflateReset(&stream) == Z_OK; }
    std::string message() const override { return stream.msg != nullptr ? stream.msg : "no gzip data"; }

private:
    z_stream stream{};
};

class ZstdDecoder : public Decoder {
public:
    explicit ZstdDecoder(std::string_view compressed) : Decoder(compressed), state(ZSTD_createDStream()) {
        if (!state) {
            throw std::bad_alloc();
        }
        // The window of a frame: the limit of the library, whatever a frame asks for, is 128 MiB.
    }

    Outcome step(char* out, std::size_t room, std::size_t& written) override {
        ZSTD_inBuffer input{remaining.data(), std::min(remaining.size(), LARGEST_STEP), 0};
        ZSTD_outBuffer output{out, std::min(room, LARGEST_STEP), 0};
        std::size_t const code = ZSTD_decompressStream(state.get(), &output, &input);
        written = output.pos;
        remaining.remove_prefix(input.pos);
        if (ZSTD_isError(code) != 0) {
            error = ZSTD_getErrorName(code);
            return Outcome::DAMAGED;
        }
        if (code == 0) {
            return Outcome::ENDS;
        }
        return remaining.empty() && written == 0 ? Outcome::STARVES : Outcome::GOES_ON;
    }

    bool startNextMember() override { return isZstd(remaining); }
    std::string message() const override { return error; }

private:
    struct Free {
        void operator()(ZSTD_DStream* state) const { ZSTD_freeDStream(state); }
    };
    std::unique_ptr<ZSTD_DStream, Free> state;
    std::string error;
};

class XzDecoder : public Decoder {
public:
    explicit XzDecoder(std::string_view compressed) : Decoder(compressed) { _start(); }
    ~XzDecoder() override { lzma_end(&stream); }

    Outcome step(char* out, std::size_t room, std::size_t& written) override {
        std::size_t const given = std::min(remaining.size(), LARGEST_STEP);
        stream.next_in = reinterpret_cast<std::uint8_t const*>(remaining.data());
        stream.avail_in = given;
        stream.next_out = reinterpret_cast<std::uint8_t*>(out);
        std::size_t const offered = std::min(room, LARGEST_STEP);
        stream.avail_out = offered;
        code = lzma_code(&stream, LZMA_RUN);
        written = offered - stream.avail_out;
        remaining.remove_prefix(given - stream.avail_in);
        if (code == LZMA_STREAM_END) {
            return Outcome::ENDS;
        }
        if (code == LZMA_BUF_ERROR || (code == LZMA_OK && remaining.empty() && written == 0)) {
            return Outcome::STARVES;
        }
        return code == LZMA_OK ? Outcome::GOES_ON : Outcome::DAMAGED;
    }

    bool startNextMember() override {
        // Zeros may lie between members.
        remaining.remove_prefix(std::min(remaining.find_first_not_of('\0'), remaining.size()));
        if (!isXz(remaining)) {
            return false;
        }
        _start();
        return true;
    }

    std::string message() const override {
        return code == LZMA_MEMLIMIT_ERROR ? "they take too much memory"
               : code == LZMA_DATA_ERROR   ? "incorrect xz data"
                                           : "no xz data that are understood";
    }

private:
    void _start() {
        if (lzma_stream_decoder(&stream, MOST_MEMORY, 0) != LZMA_OK) {
            throw std::bad_alloc();
        }
    }

    lzma_stream stream = LZMA_STREAM_INIT;
    lzma_ret code = LZMA_OK;
};

std::unique_ptr<Decoder> decoderOf(std::string_view compressed) {
    if (isZstd(compressed)) {
        return std::make_unique<ZstdDecoder>(compressed);
    }
    if (isXz(compressed)) {
        return std::make_unique<XzDecoder>(compressed);
    }
    return std::make_unique<GzipDecoder>(compressed);
}

}  // namespace

bool isCompressed(std::string_view bytes) {
    return isGzip(bytes) || isZstd(bytes) || isXz(bytes);
}

class Decompression::Decoders {
public:
    explicit Decoders(std::string_view compressed) : all(compressed.size()), decoder(decoderOf(compressed)) {}

    std::size_t all;
    std::unique_ptr<Decoder> decoder;
};

Decompression::Decompression(std::string_view compressed, std::uint64_t limit)
    : decoders(std::make_unique<Decoders>(compressed)), limit(limit) {}

Decompression::~Decompression() = default;

std::size_t Decompression::done() const {
    return decoders->all - decoders->decoder->left().size();
}

bool Decompression::step() {
    Decoder& decoder = *decoders->decoder;
    if (!text.buffer.makeRoom()) {
        fault = Fault{{}, "there is not enough memory for what it holds uncompressed"};
        return false;
    }
    std::size_t written = 0;
    Outcome const outcome = decoder.step(text.buffer.end(), text.buffer.room(), written);
    text.buffer.append(written);
    if (text.buffer.size() > limit) {
        fault = Fault{{}, "holds more than " + std::to_string(limit) + " bytes uncompressed"};
        return false;
    }
    switch (outcome) {
    case Outcome::GOES_ON:
        return true;
    case Outcome::ENDS:
        return decoder.startNextMember();
    case Outcome::STARVES:
        text.isCutOff = true;
        return false;
    case Outcome::DAMAGED:
        break;
    }
    fault = Fault{{}, "the compressed data are damaged: " + decoder.message()};
    return false;
}

Result<DecompressedText> Decompression::take() {
    return fault ? Result<DecompressedText>(*fault) : Result<DecompressedText>(std::move(text));
}

Result<DecompressedText> decompress(std::string_view compressed, std::uint64_t limit,
                                    Progress const& progress) {
    Decompression work(compressed, limit);
    bool goesOn = true;
    while (goesOn) {
        goesOn = work.step();
        if (progress) {
            progress(work.done(), compressed.size());
        }
    }
    return work.take();
}

std::string decompressStart(std::string_view compressed, std::size_t size) {
    std::string start(size, '\0');
    std::size_t filled = 0;
    std::unique_ptr<Decoder> const decoder = decoderOf(compressed);
    while (filled < size) {
        std::size_t written = 0;
        Outcome const outcome = decoder->step(start.data() + filled, size - filled, written);
        filled += written;
        if (outcome == Outcome::DAMAGED || outcome == Outcome::STARVES ||
            (outcome == Outcome::ENDS && !decoder->startNextMember())) {
            break;
        }
    }
    start.resize(filled);
    return start;
}

}  // namespace vellum::viewport
