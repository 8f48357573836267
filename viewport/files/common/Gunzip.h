#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// What a gzip file holds.
class GunzippedText {
public:
    std::string_view bytes() const { return {start.get(), size}; }

    bool isCutOff() const { return endedEarly; }  ///< the compressed data end before they are whole

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

/// Do the bytes begin as gzip files do?
bool isGzip(std::string_view bytes);

/// Gives what all the members of a gzip file hold, one after the other. Data that are damaged are a fault, so are those
/// that hold more than `limit` bytes; of data that are cut off it gives what is there. Bytes behind the last
/// member are passed over, as gzip does.
/// \param progress told the compressed bytes done and all compressed bytes; may be empty.
Result<GunzippedText> gunzip(std::string_view compressed, std::uint64_t limit, Progress const& progress);

/// At most the first `size` bytes of what a gzip file holds; empty where it is damaged.
std::string gunzipStart(std::string_view compressed, std::size_t size);

}  // namespace vellum::viewport
