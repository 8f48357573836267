#pragma once

#include "viewport/files/common/InputFile.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/NeededValues.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

enum class ParticleFormat { LAMMPS_DUMP, LAMMPS_BINARY, LAMMPS_DATA, XYZ, CSV, PLY, LAS, OBJ };

/// The format that the bytes of a file show; nothing where no reader of particles understands them, as with a
/// PLY or OBJ file that has faces. The first 64 KiB are enough except for OBJ, whose faces may come late.
std::optional<ParticleFormat> particleFormatOf(std::string_view bytes);

/// The format of that name, as in "lammps-dump"; nothing where there is none.
std::optional<ParticleFormat> particleFormatNamed(std::string_view name);

/// The names of all formats.
std::vector<std::string> particleFormatNames();

/// The frames of a file, as far as they are known without reading their particles.
struct FrameList {
    std::size_t count = 1;                ///< of the complete frames
    std::vector<std::int64_t> timesteps;  ///< of the complete frames; empty: not known
    /// Of the complete frames, nothing where the file does not say; empty: not known.
    std::vector<std::optional<double>> times;
    std::string warning;  ///< as in LoadedFrame
};

/// A particle file that a user named: the way from its path to a frame that can be drawn.
///
///     Result<LoadedFrame> const particles = ParticleFile("melt.lammpstrj").load(std::nullopt, {});
///     if (!particles.isOk())
///         std::cerr << particles.fault().line() << '\n';
///
/// Reads LAMMPS dumps, text and binary, and data files, XYZ and extended XYZ, CSV with a line of names, the
/// vertices of PLY and OBJ files without faces, and LAS, also compressed by gzip, zstd or xz. The format is
/// detected from the content, not from the name, unless it is given. Any file may be named; none makes it
/// throw or crash, or take more memory than its text and one frame call for.
///
/// The first load of a file with several frames looks for all of them; later ones read the rows of their
/// frame alone. The uncompressed text of such a file is kept as long as the object lives. Copies share all of
/// this, and may be used by several threads: one of them loads at a time.
class ParticleFile {
public:
    /// The most bytes that a compressed file may hold.
    static constexpr std::uint64_t LARGEST_UNCOMPRESSED = std::uint64_t(1) << 33;

    /// Opens the file (see InputFile).
    /// \param format nothing: what the content shows
    explicit ParticleFile(std::string const& path, std::optional<ParticleFormat> format = std::nullopt);

    /// A file that is open already, such as a pipe.
    /// \param choose which values its frames keep. Formats for few particles, those of a single frame, keep
    /// all.
    explicit ParticleFile(InputFile const& file, std::optional<ParticleFormat> format = std::nullopt,
                          ChooseValues const& choose = {});

    /// Looks at the file's beginning only. A file that cannot be read or is not a particle file is a fault.
    Result<ParticleFormat> format() const;

    /// Reads one frame. Damage is a fault with file, line and reason; inside the rows of other frames it is
    /// not looked for (see readFrame()). A frame that the file does not have is a fault, as is one without
    /// particles.
    /// \param frame counted from 0; nothing: the last complete one.
    /// \param progress may be empty; a compressed file counts twice, once uncompressed and once read.
    Result<LoadedFrame> load(std::optional<std::size_t> frame, Progress const& progress) const;

    /// Looks for the frames and reads the particles of none. Formats that hold a single one are looked at
    /// only at their beginning. \param progress as in load()
    Result<FrameList> frames(Progress const& progress) const;

private:
    struct Opened;

    Result<LoadedFrame> _load(std::optional<std::size_t> const& frame, Progress const& progress) const;

    Result<InputFile> file;
    std::shared_ptr<Opened> opened;       // never null
    std::optional<ParticleFormat> known;  // given by the user
};

}  // namespace vellum::viewport
