#include "viewport/files/particles/ParticleFile.h"

#include "viewport/files/common/Decompress.h"
#include "viewport/files/common/DecompressAhead.h"
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

#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

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

/// A format of a single frame.
template <class Read>
LoadFrame openSingle(std::string_view bytes, Read const& read) {
    return [bytes, &read](std::optional<std::size_t> const&, Progress const& progress) {
        return read(bytes, progress);
    };
}

bool mayHoldSeveral(ParticleFormat format) {
    return format == ParticleFormat::LAMMPS_DUMP || format == ParticleFormat::LAMMPS_BINARY ||
           format == ParticleFormat::XYZ;
}

/// \param known nothing: what the content shows
Result<LoadFrame> openBytes(std::string_view bytes, std::optional<ParticleFormat> const& known,
                            ChooseValues const& choose) {
    if (!known && isPly(bytes)) {
        // Not asked for its format first: the faults of the reader say more, as that the file is a mesh.
        return openSingle(bytes, readPlyPoints);
    }
    std::optional<ParticleFormat> const format = known ? known : particleFormatOf(bytes);
    if (!format) {
        return Fault{{}, NOT_UNDERSTOOD};
    }
    switch (*format) {
    case ParticleFormat::LAMMPS_DUMP:
        return openLammpsDump(bytes, choose);
    case ParticleFormat::LAMMPS_BINARY:
        return openLammpsBinary(bytes, choose);
    case ParticleFormat::LAMMPS_DATA:
        return openSingle(bytes, readLammpsData);
    case ParticleFormat::XYZ:
        return openXyz(bytes, choose);
    case ParticleFormat::PLY:
        return openSingle(bytes, readPlyPoints);
    case ParticleFormat::LAS:
        return openSingle(bytes, readLas);
    case ParticleFormat::OBJ:
        return openSingle(bytes, readObjPoints);
    default:
        return openSingle(bytes, readCsv);
    }
}

/// Gives back the memory of what has been read of a file, now and then. The progress must outlive it.
Progress releasing(InputFile const& file, Progress const& progress) {
    constexpr std::uint64_t STEP = std::uint64_t(1) << 24;
    return [&file, &progress, released = std::uint64_t(0)](std::uint64_t done, std::uint64_t all) mutable {
        if (done >= released + STEP) {
            released = done;
            // Of a compressed file, the bytes uncompressed count as well.
            file.release(static_cast<std::size_t>(std::min<std::uint64_t>(done, file.bytes().size())));
        }
        if (progress) {
            progress(done, all);
        }
    };
}

std::string joined(std::string const& warning, std::string const& more) {
    return more.empty() ? warning : warning + ": " + more;
}

}  // namespace

/// What is known of a file's content, and what of it stays in memory.
struct ParticleFile::Opened {
    std::mutex mutex;
    ChooseValues choose;
    /// The whole text is held in memory: the frames of a compressed file cannot be found again without
    /// uncompressing it from the start.
    std::optional<DecompressedText> text;
    LoadFrame frames;  // of the text or of the file's bytes; empty: nothing is known yet

    Result<LoadedFrame> load(std::string_view bytes, std::optional<ParticleFormat> const& format,
                             std::optional<std::size_t> const& frame, Progress const& progress) {
        std::lock_guard<std::mutex> const lock(mutex);
        Progress reading = progress;
        if (!frames) {
            if (isCompressed(bytes)) {
                std::uint64_t const size = bytes.size();
                Progress uncompressing;
                if (progress) {
                    // Both halves count as much as the compressed bytes; the size of the text is known only
                    // at the end.
                    uncompressing = [&](std::uint64_t done, std::uint64_t) { progress(done, 2 * size); };
                    reading = [&progress, size](std::uint64_t done, std::uint64_t all) {
                        double const part =
                            all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 1.0;
                        progress(size + static_cast<std::uint64_t>(part * static_cast<double>(size)),
                                 2 * size);
                    };
                }
                auto ahead =
                    std::make_unique<DecompressAhead>(bytes, LARGEST_UNCOMPRESSED, text, uncompressing);
                std::optional<ParticleFormat> const known = _formatSoFar(*ahead, format);
                if (known == ParticleFormat::LAMMPS_DUMP || known == ParticleFormat::XYZ) {
                    frames = known == ParticleFormat::XYZ ? openXyz(std::move(ahead), choose)
                                                          : openLammpsDump(std::move(ahead), choose);
                    return _end(_loadFirst(frame, reading));
                }
                Result<std::string_view> const found = ahead->whole();
                if (!found.isOk()) {
                    return found.fault();
                }
            }
            Result<LoadFrame> source = openBytes(text ? text->buffer.bytes() : bytes, format, choose);
            if (source.isOk()) {
                frames = std::move(source.value());
            } else {
                return _end(source.fault());
            }
        }
        return _end(frames(frame, reading));
    }

private:
    /// The format that the beginning shows, if there is enough of it already.
    static std::optional<ParticleFormat> _formatSoFar(GrowingText& growing,
                                                      std::optional<ParticleFormat> const& known) {
        std::string_view beginning;
        std::size_t before = 0;
        do {
            before = beginning.size();
            beginning = growing.beyond(before);
        } while (beginning.size() > before && beginning.size() < BEGINNING_SIZE);
        bool const isEnough = beginning.size() >= BEGINNING_SIZE;
        return !isEnough ? std::nullopt
               : known   ? known
                         : particleFormatOf(beginning.substr(0, BEGINNING_SIZE));
    }

    /// Where it does not come to its end, nothing is known of the file: the text is not complete.
    Result<LoadedFrame> _loadFirst(std::optional<std::size_t> const& frame, Progress const& progress) {
        try {
            Result<LoadedFrame> result = frames(frame, progress);
            if (!text) {
                frames = {};
            }
            return result;
        } catch (...) {
            if (!text) {
                frames = {};
            }
            throw;
        }
    }

    Result<LoadedFrame> _end(Result<LoadedFrame> result) {
        if (text && text->isCutOff) {
            std::string const warning = "the compressed data are cut off";
            if (result.isOk()) {
                result.value().warning = joined(warning, result.value().warning);
            } else {
                result = Fault{{}, joined(warning, result.fault().message)};
            }
        }
        if (result.isOk() && result.value().count < 2) {
            // There is no other frame to be found again.
            frames = {};
            text.reset();
        }
        return result;
    }
};

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
    : file(InputFile::open(path)), opened(std::make_shared<Opened>()), known(format) {}

ParticleFile::ParticleFile(InputFile const& file, std::optional<ParticleFormat> format,
                           ChooseValues const& choose)
    : file(file), opened(std::make_shared<Opened>()), known(format) {
    opened->choose = choose;
}

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
    Result<LoadedFrame> result = _load(frame, progress);
    if (!result.isOk()) {
        return result;
    }
    LoadedFrame const& loaded = result.value();
    std::string reason;
    if (frame.value_or(0) >= loaded.count) {
        reason = "has no frame " + std::to_string(*frame) + "; its last one is " +
                 std::to_string(loaded.count - 1);
    } else if (loaded.frame.positions.empty()) {
        reason = loaded.count > 1 ? "frame " + std::to_string(loaded.number) + " has no particles"
                                  : "has no particles";
    } else {
        return result;
    }
    return Fault{file.value().name(), loaded.warning.empty() ? reason : reason + " (" + loaded.warning + ")"};
}

Result<FrameList> ParticleFile::frames(Progress const& progress) const {
    Result<ParticleFormat> const content = format();
    if (!content.isOk()) {
        return content.fault();
    }
    FrameList list;
    if (!mayHoldSeveral(content.value())) {
        return list;
    }
    // Behind the last one: no frame is read.
    Result<LoadedFrame> result = _load(std::numeric_limits<std::size_t>::max(), progress);
    if (!result.isOk()) {
        return result.fault();
    }
    LoadedFrame& loaded = result.value();
    list.count = loaded.count;
    list.timesteps = std::move(loaded.timesteps);
    list.times = std::move(loaded.times);
    list.warning = std::move(loaded.warning);
    return list;
}

Result<LoadedFrame> ParticleFile::_load(std::optional<std::size_t> const& frame,
                                        Progress const& progress) const {
    if (!file.isOk()) {
        return file.fault();
    }
    std::string const& path = file.value().name();
    try {
        Result<LoadedFrame> result =
            opened->load(file.value().bytes(), known, frame, releasing(file.value(), progress));
        if (!result.isOk()) {
            return Fault{path, result.fault().message};
        }
        result.value().frame.file = path;
        return result;
    } catch (std::bad_alloc const&) {
        return Fault{path, NO_MEMORY};
        // Thrown by vectors that are asked for more than they could ever hold.
    } catch (std::length_error const&) {
        return Fault{path, NO_MEMORY};
    }
}

}  // namespace vellum::viewport
