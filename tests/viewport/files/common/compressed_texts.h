#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <lzma.h>
#define ZLIB_CONST
#include <zlib.h>
#include <zstd.h>

/// Texts as files of gzip, zstd and xz, with checksums.
namespace compressed_texts {

inline std::string gzip(std::string const& text) {
    z_stream stream{};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    std::string bytes(deflateBound(&stream, text.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef const*>(text.data());
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    bytes.resize(stream.total_out);
    deflateEnd(&stream);
    return bytes;
}

inline std::string zstd(std::string const& text) {
    ZSTD_CCtx* const context = ZSTD_createCCtx();
    ZSTD_CCtx_setParameter(context, ZSTD_c_checksumFlag, 1);
    std::string bytes(ZSTD_compressBound(text.size()), '\0');
    std::size_t const size = ZSTD_compress2(context, bytes.data(), bytes.size(), text.data(), text.size());
    EXPECT_EQ(ZSTD_isError(size), 0U);
    ZSTD_freeCCtx(context);
    bytes.resize(size);
    return bytes;
}

inline std::string xz(std::string const& text) {
    std::string bytes(lzma_stream_buffer_bound(text.size()), '\0');
    std::size_t size = 0;
    EXPECT_EQ(lzma_easy_buffer_encode(0, LZMA_CHECK_CRC64, nullptr,
                                      reinterpret_cast<std::uint8_t const*>(text.data()), text.size(),
                                      reinterpret_cast<std::uint8_t*>(bytes.data()), &size, bytes.size()),
              LZMA_OK);
    bytes.resize(size);
    return bytes;
}

struct Codec {
    char const* name;
    std::string (*compress)(std::string const& text);
};

inline constexpr Codec CODECS[] = {{"gzip", gzip}, {"zstd", zstd}, {"xz", xz}};

}  // namespace compressed_texts
