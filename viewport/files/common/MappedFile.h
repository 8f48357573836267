#pragma once

#include "viewport/text/Fault.h"

#include <string>
#include <string_view>

namespace vellum::viewport {

/// A whole file as bytes in memory, read by the system as they are looked at.
///
/// The file must not be made shorter while it is mapped: the system ends programs that look at bytes which are gone.
class MappedFile {
public:
    /// Maps a regular file that is not empty; everything else is a fault.
    static Result<MappedFile> open(std::string const& path);

    ~MappedFile();
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(MappedFile const&) = delete;
    MappedFile& operator=(MappedFile const&) = delete;

    /// Valid as long as this object lives.
    std::string_view bytes() const { return content; }

private:
    explicit MappedFile(std::string_view bytes) : content(bytes) {}

    std::string_view content;  // the mapping, or empty after a move
};

}  // namespace vellum::viewport
