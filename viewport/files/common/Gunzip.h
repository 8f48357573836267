#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// The uncompressed content of a gzip file.
class GunzippedText {
public:
    std::string_view bytes() const { return {start.get(), size}; }

    bool isCutOff() const { return endedEarly; }  ///< the compressed data end too early

private:
    friend Result<GunzippedText> gunzip(std::string_view compressed, std::uint64_t limit,
                                        Progress const& progress);

    struct Free {
        void operator()(char* start) const { std::free(start); }
    };

    bool _grow(std::size_t capacity);

    std::unique_ptr<char, Free> start;  // from malloc: large blocks grow in place or without being copied
    std::size_t size = 0;
    std::size_t reserved = 0;
    bool endedEarly = false;
};

/// Whether the bytes begin like a gzip file.
bool isGzip(std::string_view bytes);

/// Uncompresses all members of a gzip file, one after the other. Damaged data and data of more than `limit`
/// bytes are a fault; data that are cut off give the part that is there. Bytes behind the last member are
/// ignored, as gzip does.
/// \param progress gets the compressed bytes done and all compressed bytes; may be empty.
Result<GunzippedText> gunzip(std::string_view compressed, std::uint64_t limit, Progress const& progress);

/// At most the first `size` uncompressed bytes of a gzip file; empty where it is damaged.
std::string gunzipStart(std::string_view compressed, std::size_t size);

}  // namespace vellum::viewport
