#pragma once

#include "viewport/files/particles/ParticleFrames.h"
#include "viewport/text/Fault.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vellum::viewport {

enum class ParticleFormat { LAMMPS_DUMP, XYZ, CSV, PLY };

/// What the bytes of a file begin as; nothing where no reader of particles understands them, as of a PLY file with
/// faces. The first 64 KiB are enough.
std::optional<ParticleFormat> particleFormatOf(std::string_view bytes);

/// A particle file that a user named: the way from its path to frames that can be drawn.
///
///     Result<ParticleFrames> const particles = ParticleFile("melt.lammpstrj").load({});
///     if (!particles.isOk())
///         std::cerr << particles.fault().line() << '\n';
///
/// Reads LAMMPS dumps, XYZ and extended XYZ, CSV with a line of names and the vertices of PLY files, also compressed
/// by gzip; the content tells which, not the name. Any file may be named; none makes it throw or crash, or take
/// more memory than the bytes there are call for.
class ParticleFile {
public:
    /// The most bytes that a compressed file may hold.
    static constexpr std::uint64_t LARGEST_UNCOMPRESSED = std::uint64_t(1) << 33;

    explicit ParticleFile(std::string const& path);

    /// Looks at the file's beginning only. A file that cannot be read or is none of particles is a fault.
    Result<ParticleFormat> format() const;

    /// Reads the whole file. Damage is a fault with file, line and reason.
    /// \param progress may be empty; a compressed file counts twice, once uncompressed and once read.
    Result<ParticleFrames> load(ParticleProgress const& progress) const;

private:
    std::string path;
};

}  // namespace vellum::viewport
