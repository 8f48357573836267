#pragma once

#include "viewport/text/Fault.h"

#include <string>
#include <string_view>

namespace vellum::viewport {

/// A whole file mapped into memory. The system reads the pages that are looked at and may drop them again.
///
/// The file must not be truncated while it is mapped: reading a page that is gone ends the process (SIGBUS).
class MappedFile {
public:
    /// Maps a regular file that is not empty; anything else is a fault.
    static Result<MappedFile> open(std::string const& path);

    ~MappedFile();
    MappedFile(MappedFile&& other) noexcept;
    MappedFile& operator=(MappedFile&& other) noexcept;
    MappedFile(MappedFile const&) = delete;
    MappedFile& operator=(MappedFile const&) = delete;

    /// Valid as long as this object lives.
    std::string_view bytes() const { return content; }

    /// Takes the first bytes off the memory of this process, whose reader has passed them. Their pages stay
    /// in the memory that the system keeps of files, as far as there is room, and come back when they are
    /// looked at.
    void release(std::size_t bytes) const;

private:
    explicit MappedFile(std::string_view bytes) : content(bytes) {}

    std::string_view content;  // the mapping, or empty after a move
};

}  // namespace vellum::viewport
