#include "viewport/files/particles/ParticleFile.h"

#include "viewport/files/common/Decompress.h"
#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/particles/CsvFile.h"
#include "viewport/files/particles/LammpsBinary.h"
#include "viewport/files/particles/LammpsData.h"
#include "viewport/files/particles/LammpsDump.h"
#include "viewport/files/particles/LasFile.h"
#include "viewport/files/particles/ObjPoints.h"
#include "viewport/files/particles/PlyPoints.h"
#include "viewport/files/particles/XyzFile.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <new>
#include <stdexcept>

namespace vellum::viewport {

namespace {

constexpr std::size_t BEGINNING_SIZE = std::size_t(1) << 16;
constexpr char const* NOT_UNDERSTOOD =
    "is not a particle file that is understood: a LAMMPS dump or data file, "
    "XYZ, CSV with x, y and z, LAS, or PLY or OBJ without faces";
constexpr char const* NO_MEMORY = "there is not enough memory for its particles";

bool isPly(std::string_view bytes) {
    return bytes.substr(0, 4) == "ply\n" || bytes.substr(0, 4) == "ply\r";
}

bool isMesh(std::string_view ply) {
    std::optional<PlyHeader> const header = readPlyHeader(ply);
    return header && isPlyMesh(*header);
}

/// A count alone on the first line. Any list of numbers begins like this, so the other formats are tried
/// first.
bool isXyz(std::string_view bytes) {
    std::string_view line = TextLines(bytes).take();
    return toCount(takeWord(line)).has_value() && takeWord(line).empty();
}

struct NamedFormat {
    char const* name;
    ParticleFormat format;
};

constexpr NamedFormat FORMATS[] = {
    {"lammps-dump", ParticleFormat::LAMMPS_DUMP},
    {"lammps-dump-binary", ParticleFormat::LAMMPS_BINARY},
    {"lammps-data", ParticleFormat::LAMMPS_DATA},
    {"xyz", ParticleFormat::XYZ},
    {"csv", ParticleFormat::CSV},
    {"ply", ParticleFormat::PLY},
    {"las", ParticleFormat::LAS},
    {"obj-points", ParticleFormat::OBJ},
};

/// What a load asks for.
struct Request {
    std::optional<ParticleFormat> format;  // nothing: what the content shows
    std::optional<std::size_t> frame;
};

Result<LoadedFrame> readBytes(std::string_view bytes, Request const& request, Progress const& progress) {
    if (!request.format && isPly(bytes)) {
        // Not asked for its format first: the faults of the reader say more, as that the file is a mesh.
        return readPlyPoints(bytes, progress);
    }
    std::optional<ParticleFormat> const format = request.format ? request.format : particleFormatOf(bytes);
    if (!format) {
        return Fault{{}, NOT_UNDERSTOOD};
    }
    switch (*format) {
    case ParticleFormat::LAMMPS_DUMP:
        return readLammpsDump(bytes, request.frame, progress);
    case ParticleFormat::LAMMPS_BINARY:
        return readLammpsBinary(bytes, request.frame, progress);
    case ParticleFormat::LAMMPS_DATA:
        return readLammpsData(bytes, progress);
    case ParticleFormat::XYZ:
        return readXyz(bytes, request.frame, progress);
    case ParticleFormat::PLY:
        return readPlyPoints(bytes, progress);
    case ParticleFormat::LAS:
        return readLas(bytes, progress);
    case ParticleFormat::OBJ:
        return readObjPoints(bytes, progress);
    default:
        return readCsv(bytes, progress);
    }
}

/// The whole text is held in memory: the frames of a compressed file cannot be found again without
/// uncompressing it from the start.
Result<LoadedFrame> readCompressed(std::string_view compressed, Request const& request,
                                   Progress const& progress) {
    std::uint64_t const size = compressed.size();
    Progress uncompressing;
    Progress reading;
    if (progress) {
        // Both halves count as much as the compressed bytes; the size of the text is known only at the end.
        uncompressing = [&](std::uint64_t done, std::uint64_t) { progress(done, 2 * size); };
        reading = [&](std::uint64_t done, std::uint64_t all) {
            double const part = all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1.0;
            progress(size + static_cast<std::uint64_t>(part * static_cast<double>(size)), 2 * size);
        };
    }
    Result<DecompressedText> const text =
        decompress(compressed, ParticleFile::LARGEST_UNCOMPRESSED, uncompressing);
    if (!text.isOk()) {
        return text.fault();
    }
    Result<LoadedFrame> result = readBytes(text.value().buffer.bytes(), request, reading);
    if (!text.value().isCutOff) {
        return result;
    }
    std::string const warning = "the compressed data are cut off";
    if (!result.isOk()) {
        return Fault{{}, warning + ": " + result.fault().message};
    }
    std::string& inner = result.value().warning;
    inner = inner.empty() ? warning : warning + ": " + inner;
    return result;
}

}  // namespace

std::optional<ParticleFormat> particleFormatOf(std::string_view bytes) {
    std::string_view const beginning = bytes.substr(0, BEGINNING_SIZE);
    if (isPly(beginning)) {
        return isMesh(beginning) ? std::nullopt : std::optional<ParticleFormat>(ParticleFormat::PLY);
    }
    if (beginning.substr(0, 5) == "ITEM:") {
        return ParticleFormat::LAMMPS_DUMP;
    }
    if (isLas(beginning)) {
        return ParticleFormat::LAS;
    }
    if (isLammpsBinary(beginning)) {
        return ParticleFormat::LAMMPS_BINARY;
    }
    if (isLammpsData(beginning)) {
        return ParticleFormat::LAMMPS_DATA;
    }
    if (isXyz(beginning)) {
        return ParticleFormat::XYZ;
    }
    if (isObjOfPoints(bytes)) {
        return ParticleFormat::OBJ;
    }
    return isCsvOfParticles(beginning) ? std::optional<ParticleFormat>(ParticleFormat::CSV) : std::nullopt;
}

std::optional<ParticleFormat> particleFormatNamed(std::string_view name) {
    for (NamedFormat const& each : FORMATS) {
        if (name == each.name) {
            return each.format;
        }
    }
    return std::nullopt;
}

std::vector<std::string> particleFormatNames() {
    std::vector<std::string> names;
    for (NamedFormat const& each : FORMATS) {
        names.emplace_back(each.name);
    }
    return names;
}

ParticleFile::ParticleFile(std::string const& path, std::optional<ParticleFormat> format)
    : file(InputFile::open(path)), known(format) {}

ParticleFile::ParticleFile(InputFile const& file, std::optional<ParticleFormat> format)
    : file(file), known(format) {}

Result<ParticleFormat> ParticleFile::format() const {
    if (!file.isOk()) {
        return file.fault();
    }
    if (known) {
        return *known;
    }
    std::string_view bytes = file.value().bytes();
    std::string uncompressed;
    if (isCompressed(bytes)) {
        uncompressed = decompressStart(file.value().bytes(), BEGINNING_SIZE);
        bytes = uncompressed;
    }
    std::optional<ParticleFormat> const format = particleFormatOf(bytes);
    return format ? Result<ParticleFormat>(*format) : Fault{file.value().name(), NOT_UNDERSTOOD};
}

Result<LoadedFrame> ParticleFile::load(std::optional<std::size_t> frame, Progress const& progress) const {
    if (!file.isOk()) {
        return file.fault();
    }
    std::string const& path = file.value().name();
    std::string_view const bytes = file.value().bytes();
    Request const request{known, frame};
    try {
        Result<LoadedFrame> result = isCompressed(bytes) ? readCompressed(bytes, request, progress)
                                                         : readBytes(bytes, request, progress);
        if (!result.isOk()) {
            return Fault{path, result.fault().message};
        }
        LoadedFrame& loaded = result.value();
        if (frame.value_or(0) >= loaded.count) {
            std::string const reason = "has no frame " + std::to_string(*frame) + "; its last one is " +
                                       std::to_string(loaded.count - 1);
            return Fault{path, loaded.warning.empty() ? reason : reason + " (" + loaded.warning + ")"};
        }
        if (loaded.frame.positions.empty()) {
            std::string const reason = loaded.count > 1
                                           ? "frame " + std::to_string(loaded.number) + " has no particles"
                                           : "has no particles";
            return Fault{path, loaded.warning.empty() ? reason : reason + " (" + loaded.warning + ")"};
        }
        loaded.frame.file = path;
        return result;
    } catch (std::bad_alloc const&) {
        return Fault{path, NO_MEMORY};
        // Thrown by vectors that are asked for more than they could ever hold.
    } catch (std::length_error const&) {
        return Fault{path, NO_MEMORY};
    }
}

}  // namespace vellum::viewport
