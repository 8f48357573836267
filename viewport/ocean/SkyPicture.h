#pragma once

#include <string>
#include <vector>

namespace vellum::viewport {

/// What glass mirrors where no picture is given: a clear sky over a dark ground, and a window behind the viewer. In
/// the layout of Glass_shader's environment, as a Radiance HDR file.
std::vector<unsigned char> skyPicture();

/// A file in memory that other code reads by its path, while it lives.
class MemoryFile {
public:
    /// Without memory for it the file stays short, and whoever reads it finds it damaged.
    explicit MemoryFile(std::vector<unsigned char> const& bytes);
    ~MemoryFile();
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    std::string path() const;

private:
    int descriptor;
};

}  // namespace vellum::viewport
