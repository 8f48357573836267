#pragma once

#include "viewport/files/common/MappedFile.h"
#include "viewport/files/common/Progress.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace vellum::viewport {

/// A file that a user named, opened once: the deciding what it holds and the reading share its bytes.
///
///     Result<InputFile> const file = InputFile::open("-");
///     if (file.isOk() && isParticleFile(file.value()))
///         ... ParticleFile(file.value(), std::nullopt).load(...)
///
/// Regular files are mapped. Pipes and standard input, which can be read only once, are read to their end
/// into memory. Copies share the bytes.
///
/// Importers of meshes open paths themselves. A pipe has none that could be opened again: where isFromPipe(),
/// an importer must be given bytes(), and the format by name or by the bytes.
class InputFile {
public:
    /// The most bytes that are read from a pipe.
    static constexpr std::uint64_t LARGEST_PIPE = std::uint64_t(1) << 33;

    /// Whether the path means standard input: "-" or "/dev/stdin".
    static bool isStandardInput(std::string const& path) { return path == "-" || path == "/dev/stdin"; }

    /// Opens a regular file, a named pipe (it waits for its writer), the pipe of a process substitution or
    /// standard input. A fault for all else, and for a file that is empty.
    /// \param progress may be empty; gets the bytes read from a pipe and 0 in all, also while its writer is
    /// silent
    static Result<InputFile> open(std::string const& path, Progress const& progress = {});

    std::string const& name() const { return path; }    ///< as the user named it
    std::string_view bytes() const { return content; }  ///< valid as long as some copy lives
    /// The first bytes have been read and are probably not looked at again: those of a mapped file need no
    /// memory then. They stay valid.
    void release(std::size_t bytes) const {
        if (mapped) {
            mapped->release(bytes);
        }
    }

    bool isFromPipe() const { return readFromPipe; }  ///< the path cannot be opened again

private:
    InputFile(std::string const& path, std::shared_ptr<void const> owner, std::string_view bytes,
              bool isFromPipe)
        : path(path), owner(std::move(owner)), content(bytes), readFromPipe(isFromPipe) {}
    InputFile(std::string const& path, std::shared_ptr<MappedFile const> const& mapped, bool isFromPipe)
        : path(path), owner(mapped), mapped(mapped), content(mapped->bytes()), readFromPipe(isFromPipe) {}

    std::string path;
    std::shared_ptr<void const> owner;         // of the bytes
    std::shared_ptr<MappedFile const> mapped;  // the same, where the file is mapped
    std::string_view content;
    bool readFromPipe;
};

}  // namespace vellum::viewport
