#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// The environment that glass mirrors where no picture is given: a clear sky over a dark ground, and a window
/// behind the viewer. In the layout of Glass_shader's environment, as the bytes of a Radiance HDR file.
std::vector<unsigned char> skyPicture();

/// A file in memory that other code can open by its path while this object lives.
class MemoryFile {
public:
    /// Where memory is short the file is cut off, and its readers find it damaged.
    explicit MemoryFile(std::vector<unsigned char> const& bytes);
    ~MemoryFile();
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    std::string path() const;

private:
    int descriptor;
};

}  // namespace vellum::viewport
