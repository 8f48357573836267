#include "viewport/files/particles/ParticleFile.h"

#include "viewport/files/common/Gunzip.h"
#include "viewport/files/common/MappedFile.h"
#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/particles/CsvFile.h"
#include "viewport/files/particles/LammpsDump.h"
#include "viewport/files/particles/PlyPoints.h"
#include "viewport/files/particles/XyzFile.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"

#include <new>
#include <stdexcept>

namespace vellum::viewport {

namespace {

constexpr std::size_t beginningSize = std::size_t(1) << 16;
constexpr char const* notUnderstood = "is not a particle file that is understood: a LAMMPS dump, XYZ, CSV "
                                      "with x, y and z, or PLY without faces";
constexpr char const* noMemory = "there is not enough memory for its particles";

bool isPly(std::string_view const& bytes) {
    return bytes.substr(0, 4) == "ply\n" || bytes.substr(0, 4) == "ply\r";
}

bool hasFaces(std::string_view const& ply) {
    std::optional<PlyHeader> const header = readPlyHeader(ply);
    if (header) {
        for (PlyElement const& element : header->elements) {
            if (element.name == "face" && element.count > 0) {
                return true;
            }
        }
    }
    return false;
}

bool isXyz(std::string_view const& bytes) {
    std::string_view line = TextLines(bytes).take();
    return toCount(takeWord(line)).has_value() && takeWord(line).empty();
}

Result<ParticleFrames> readBytes(std::string_view const& bytes, ParticleProgress const& progress) {
    if (isPly(bytes)) {
        return readPlyPoints(bytes, progress);  // Its faults say more than that a format is not understood.
    }
    std::optional<ParticleFormat> const format = particleFormatOf(bytes.substr(0, beginningSize));
    if (!format) {
        return Fault{{}, notUnderstood};
    }
    switch (*format) {
    case ParticleFormat::lammpsDump:
        return readLammpsDump(bytes, progress);
    case ParticleFormat::xyz:
        return readXyz(bytes, progress);
    default:
        return readCsv(bytes, progress);
    }
}

/// Uncompresses and reads; of data that are cut off, what there is.
Result<ParticleFrames> readCompressed(std::string_view const& compressed, ParticleProgress const& progress) {
    std::uint64_t const size = compressed.size();
    ParticleProgress uncompressing;
    ParticleProgress reading;
    if (progress) {
        uncompressing = [&](std::uint64_t const& done, std::uint64_t const&) { progress(done, 2 * size); };
        reading = [&](std::uint64_t const& done, std::uint64_t const& all) {
            double const part = all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1.0;
            progress(size + static_cast<std::uint64_t>(part * static_cast<double>(size)), 2 * size);
        };
    }
    Result<GunzippedText> const text = gunzip(compressed, ParticleFile::largestUncompressed, uncompressing);
    if (!text.isOk()) {
        return text.fault();
    }
    Result<ParticleFrames> result = readBytes(text.value().bytes(), reading);
    if (!text.value().isCutOff()) {
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

std::optional<ParticleFormat> particleFormatOf(std::string_view const& bytes) {
    if (isPly(bytes)) {
        return hasFaces(bytes) ? std::nullopt : std::optional<ParticleFormat>(ParticleFormat::ply);
    }
    if (bytes.substr(0, 5) == "ITEM:") {
        return ParticleFormat::lammpsDump;
    }
    if (isXyz(bytes)) {
        return ParticleFormat::xyz;
    }
    return isCsvOfParticles(bytes) ? std::optional<ParticleFormat>(ParticleFormat::csv) : std::nullopt;
}

ParticleFile::ParticleFile(std::string const& path) : _path(path) {}

Result<ParticleFormat> ParticleFile::format() const {
    Result<MappedFile> const file = MappedFile::open(_path);
    if (!file.isOk()) {
        return file.fault();
    }
    std::string_view bytes = file.value().bytes().substr(0, beginningSize);
    std::string uncompressed;
    if (isGzip(bytes)) {
        uncompressed = gunzipStart(file.value().bytes(), beginningSize);
        bytes = uncompressed;
    }
    std::optional<ParticleFormat> const format = particleFormatOf(bytes);
    return format ? Result<ParticleFormat>(*format) : Fault{_path, notUnderstood};
}

Result<ParticleFrames> ParticleFile::load(ParticleProgress const& progress) const {
    Result<MappedFile> const file = MappedFile::open(_path);
    if (!file.isOk()) {
        return file.fault();
    }
    std::string_view const bytes = file.value().bytes();
    try {
        Result<ParticleFrames> result =
            isGzip(bytes) ? readCompressed(bytes, progress) : readBytes(bytes, progress);
        if (!result.isOk()) {
            return Fault{_path, result.fault().message};
        }
        return result;
    } catch (std::bad_alloc const&) {
        return Fault{_path, noMemory};
    } catch (std::length_error const&) {
        return Fault{_path, noMemory};
    }
}

}  // namespace vellum::viewport
