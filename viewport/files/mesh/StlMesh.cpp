#include "viewport/files/mesh/StlMesh.h"

#include "foundation/basic/threads.h"
#include "viewport/files/common/LineSlices.h"
#include "viewport/files/common/binary_numbers.h"
#include "viewport/files/common/read_pieces.h"
#include "viewport/files/mesh/PolygonCutter.h"
#include "viewport/files/mesh/StlFacets.h"
#include "viewport/files/mesh/default_color.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

constexpr std::size_t HEADER_SIZE = 80;
constexpr std::size_t COUNT_SIZE = 4;
constexpr std::size_t START_SIZE = HEADER_SIZE + COUNT_SIZE;
constexpr std::size_t NORMAL_SIZE = 12;
constexpr std::size_t ATTRIBUTE_PLACE = 48;
constexpr std::size_t FACET_SIZE = 50;

Fault tooLarge() {
    return {{}, "the mesh has too many vertices or triangles"};
}

// == Binary ==

unsigned int attributeAt(char const* const& bytes) {
    return static_cast<unsigned char>(bytes[0]) |
           static_cast<unsigned int>(static_cast<unsigned char>(bytes[1])) << 8;
}

std::uint64_t declaredFacets(std::string_view file) {
    return binaryNumber<std::uint32_t>(file.data() + HEADER_SIZE, false);
}

bool isBinary(std::string_view file) {
    return file.size() >= START_SIZE && file.size() == START_SIZE + declaredFacets(file) * FACET_SIZE;
}

/// The color of the whole that a header with "COLOR=" holds.
std::optional<Color4<float>> colorOfHeader(std::string_view header) {
    constexpr std::string_view KEY = "COLOR=";
    std::size_t const place = header.find(KEY);
    if (place == std::string_view::npos || place + KEY.size() + 4 > header.size()) {
        return std::nullopt;
    }
    auto const part = [&](std::size_t index) {
        return static_cast<float>(static_cast<unsigned char>(header[place + KEY.size() + index])) / 255.0F;
    };
    // Writers that do not know of opacity leave the byte 0; nobody writes a model that is not to be seen.
    float const opacity = part(3) > 0 ? part(3) : 1.0F;
    return Color4<float>{part(0), part(1), part(2), opacity};
}

class BinaryReader {
public:
    BinaryReader(std::string_view file, Progress const& progress)
        : pace(progress, file.size())
        , facets(file.data() + START_SIZE)
        , count(declaredFacets(file))
        , whole(colorOfHeader(file.substr(0, HEADER_SIZE))) {}

    Result<MeshData> read() {
        if (3 * count > MeshData::LARGEST_COUNT) {
            return tooLarge();
        }
        if (std::optional<Fault> const fault = _readPositions()) {
            return *fault;
        }
        _readColors();
        mesh.partCount = count > 0 ? 1 : 0;
        return std::move(mesh);
    }

private:
    std::optional<Fault> _readPositions() {
        mesh.positions.resize(3 * count);
        mesh.triangles.resize(count);
        // The progress is told between ranges of facets, each of which all cores read.
        constexpr std::uint64_t RANGE = 1 << 13;
        constexpr std::uint64_t TOGETHER = RANGE * 16;
        for (std::uint64_t first = 0; first < count; first += TOGETHER) {
            pace.at(START_SIZE + first * FACET_SIZE);
            std::uint64_t const all = std::min(TOGETHER, count - first);
            std::atomic<std::uint64_t> firstDamaged{count};
            forRanges(all, RANGE, [&](std::size_t begin, std::size_t end) {
                std::uint64_t const damaged = _readFacets(first + begin, first + end);
                // Of several ranges the fault of the first facet is told.
                std::uint64_t least = firstDamaged.load();
                while (damaged < least && !firstDamaged.compare_exchange_weak(least, damaged)) {
                }
            });
            if (firstDamaged < count) {
                std::uint64_t const i = firstDamaged;
                return Fault{{},
                             "facet " + std::to_string(i) + " at byte " +
                                 std::to_string(START_SIZE + i * FACET_SIZE) +
                                 " has a coordinate that is not a number or infinite"};
            }
        }
        return std::nullopt;
    }

    /// \return the first facet that is damaged, or their number in all
    std::uint64_t _readFacets(std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t i = begin; i < end; ++i) {
            char const* const facet = facets + i * FACET_SIZE;
            float values[9];
            float nothing = 0;  // becomes NaN with a value that is not finite
            for (std::size_t k = 0; k < 9; ++k) {
                values[k] = binaryNumber<float>(facet + NORMAL_SIZE + 4 * k, false);
                nothing += values[k] * 0.0F;
            }
            if (nothing != 0) {
                return i;
            }
            for (std::size_t k = 0; k < 3; ++k) {
                mesh.positions[3 * i + k] = {values[3 * k], values[3 * k + 1], values[3 * k + 2]};
            }
            unsigned int const first = static_cast<unsigned int>(3 * i);
            mesh.triangles[i] = {first, first + 1, first + 2};
        }
        return count;
    }

    void _readColors() {
        constexpr unsigned int CHOICE = 1U << 15;
        unsigned int set = 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            set |= attributeAt(facets + i * FACET_SIZE + ATTRIBUTE_PLACE);
        }
        Color4<float> const common = whole.value_or(DEFAULT_COLOR);
        bool const isUsed = whole ? set != 0 : (set & CHOICE) != 0;
        if (!isUsed) {
            mesh.colors.assign(3 * count, common);
            return;
        }
        unsigned int const ownChoice = whole ? 0 : CHOICE;
        mesh.colors.reserve(3 * count);
        for (std::uint64_t i = 0; i < count; ++i) {
            unsigned int const attribute = attributeAt(facets + i * FACET_SIZE + ATTRIBUTE_PLACE);
            bool const isOwn = (attribute & CHOICE) == ownChoice;
            Color4<float> const color = isOwn ? _colorOf(attribute) : common;
            mesh.colors.insert(mesh.colors.end(), 3, color);
            mesh.hasVertexColors = mesh.hasVertexColors || isOwn;
        }
    }

    Color4<float> _colorOf(unsigned int attribute) const {
        auto const part = [attribute](unsigned int shift) {
            return static_cast<float>(attribute >> shift & 31U) / 31.0F;
        };
        return whole ? Color4<float>{part(0), part(5), part(10), 1}
                     : Color4<float>{part(10), part(5), part(0), 1};
    }

    ProgressPace pace;
    char const* facets;
    std::uint64_t count;
    std::optional<Color4<float>> whole;
    MeshData mesh;
};

// == Text ==

class TextReader {
public:
    TextReader(std::string_view file, Progress const& progress)
        : pace(progress, file.size()), file(file), words{file.data(), file.data() + file.size()} {}

    Result<MeshData> read() {
        while (words.takeKeyword("solid")) {
            words.skipLine();
            solidStart = mesh.triangles.size();
            _readPieces();
            if (std::optional<Fault> const fault = _readSolid()) {
                return *fault;
            }
            _endSolid();
        }
        words.skipBlanks();
        if (words.here != words.end) {
            return _fault("'solid' is expected and not " + inQuotes(words.word()));
        }
        mesh.colors.assign(mesh.positions.size(), DEFAULT_COLOR);
        cutter.cutFans(mesh);
        return std::move(mesh);
    }

private:
    struct Piece {
        std::string_view text;
        StlFacets facets;
    };

    /// Reads facets and further solids on all cores, up to the end of the last solid or to what is damaged.
    void _readPieces() {
        constexpr std::size_t WORTH_PIECES = std::size_t(1) << 16;
        BytesAtOnce atOnce;
        while (arePiecesSound && static_cast<std::size_t>(words.end - words.here) > WORTH_PIECES) {
            pace.at(static_cast<std::uint64_t>(words.here - file.data()));
            std::size_t const bytes = atOnce.next();
            std::string_view const text =
                wholeLines({words.here, static_cast<std::size_t>(words.end - words.here)}, bytes);
            arePiecesSound = text.size() <= 2 * bytes;
            if (arePiecesSound) {
                _readPieces(text);
            }
        }
        pieces = {};
    }

    void _readPieces(std::string_view text) {
        std::vector<LineSlice> const slices = sliceLines(text);
        pieces.resize(slices.size());
        for (std::size_t i = 0; i < slices.size(); ++i) {
            pieces[i].text = slices[i].text;
        }
        static_cast<void>(readPieces(pieces, [&](Piece& piece) {
            piece.facets.read(piece.text, words.end, &piece == pieces.data());
            return piece.facets.isWhole;
        }));
        for (Piece const& piece : pieces) {
            words.skipBlanks();
            bool const isSmall =
                mesh.positions.size() + piece.facets.positions.size() <= MeshData::LARGEST_COUNT;
            arePiecesSound = arePiecesSound && isSmall;
            // A piece looked for its first facet, which may not be one.
            if (!arePiecesSound || words.here != piece.facets.first) {
                return;
            }
            _take(piece.facets);
            arePiecesSound = piece.facets.isWhole;
        }
    }

    void _take(StlFacets const& facets) {
        std::size_t first = mesh.positions.size();
        std::size_t nextSolid = 0;
        auto const endSolids = [&](std::size_t facet) {
            for (; nextSolid < facets.solids.size() && facets.solids[nextSolid] == facet; ++nextSolid) {
                _endSolid();
            }
        };
        mesh.positions.insert(mesh.positions.end(), facets.positions.begin(), facets.positions.end());
        for (std::size_t i = 0; i < facets.cornerCounts.size(); ++i) {
            endSolids(i);
            _addFacet(first, facets.cornerCounts[i]);
            first += facets.cornerCounts[i];
        }
        endSolids(facets.cornerCounts.size());
        words.here = facets.stop;
    }

    void _endSolid() {
        mesh.partCount += mesh.triangles.size() > solidStart ? 1 : 0;
        solidStart = mesh.triangles.size();
    }

    std::optional<Fault> _readSolid() {
        while (words.takeKeyword("facet")) {
            pace.at(static_cast<std::uint64_t>(words.here - file.data()));
            // The normal, which some writers leave out in part.
            while (!words.takeKeyword("outer")) {
                if (words.word().empty()) {
                    return _cutOff("'outer loop'");
                }
                if (words.isKeyword("vertex") || words.isKeyword("facet") || words.isKeyword("endfacet")) {
                    return _fault("'outer loop' is expected and not " + inQuotes(words.word()));
                }
                words.here += words.word().size();
            }
            if (!words.takeKeyword("loop")) {
                return _expected("loop");
            }
            if (std::optional<Fault> fault = _readLoop()) {
                return fault;
            }
            for (std::string_view const word : {"endloop", "endfacet"}) {
                if (!words.takeKeyword(word)) {
                    return _expected(word);
                }
            }
        }
        if (!words.takeKeyword("endsolid")) {
            return _expected("endsolid");
        }
        words.skipLine();
        return std::nullopt;
    }

    std::optional<Fault> _readLoop() {
        std::size_t const first = mesh.positions.size();
        while (words.takeKeyword("vertex")) {
            double values[3];
            for (double& value : values) {
                words.skipBlanks();
                char const* const start = words.here;
                if (!words.takeNumber(value)) {
                    return words.here == words.end ? _cutOff("a coordinate")
                                                   : _fault(inQuotes(words.word()) + " is not a number");
                }
                if (!std::isfinite(value)) {
                    words.here = start;
                    return _fault("the vertex has a coordinate that is not a number or infinite");
                }
            }
            mesh.positions.push_back({values[0], values[1], values[2]});
        }
        std::size_t const count = mesh.positions.size() - first;
        if (mesh.positions.size() > MeshData::LARGEST_COUNT) {
            return tooLarge();
        }
        if (count < 3) {
            return words.here == words.end
                       ? _cutOff("'vertex'")
                       : _fault("the facet has " + std::to_string(count) + " vertices, not 3");
        }
        _addFacet(first, count);
        return std::nullopt;
    }

    /// Adds the polygon of some positions that stand together.
    void _addFacet(std::size_t first, std::size_t count) {
        indices.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            indices[i] = static_cast<unsigned int>(first + i);
        }
        cutter.addFan(indices.data(), count, mesh.triangles);
    }

    Fault _fault(std::string const& reason) const {
        // Files of old systems end their lines with a carriage return alone.
        char const lineEnd = file.find('\n') == std::string_view::npos ? '\r' : '\n';
        auto const line = 1 + std::count(file.data(), words.here, lineEnd);
        return {{}, "line " + std::to_string(line) + ": " + reason};
    }

    Fault _cutOff(std::string const& missing) const {
        return _fault("the file is cut off before " + missing);
    }

    Fault _expected(std::string_view keyword) {
        std::string const expected = "'" + std::string(keyword) + "'";
        std::string_view const word = words.word();
        return word.empty() ? _cutOff(expected) : _fault(expected + " is expected and not " + inQuotes(word));
    }

    ProgressPace pace;
    std::string_view file;
    StlWords words;
    bool arePiecesSound = true;
    std::size_t solidStart = 0;  // its first triangle
    std::vector<Piece> pieces;
    std::vector<unsigned int> indices;
    PolygonCutter cutter;
    MeshData mesh;
};

/// No text has a byte 0, which the number of facets of nearly every binary file has.
bool isText(std::string_view file) {
    std::string_view start = file.substr(0, START_SIZE);
    return start.find('\0') == std::string_view::npos && lowerCase(takeWord(start)) == "solid";
}

}  // namespace

bool isStl(std::string_view bytes) {
    return isBinary(bytes) || isText(bytes);
}

Result<MeshData> readStlMesh(std::string_view bytes, Progress const& progress) {
    if (isBinary(bytes)) {
        return BinaryReader(bytes, progress).read();
    }
    if (isText(bytes)) {
        return TextReader(bytes, progress).read();
    }
    if (bytes.size() < START_SIZE) {
        return Fault{{}, "the STL file is cut off: it has neither a solid nor a number of facets"};
    }
    std::uint64_t const declared = declaredFacets(bytes);
    std::uint64_t const held = (bytes.size() - START_SIZE) / FACET_SIZE;
    std::string const counts =
        "it declares " + std::to_string(declared) + " facets and holds " + std::to_string(held);
    return Fault{{},
                 declared > held ? "the file is cut off: " + counts
                                 : "the file has bytes behind its last facet: " + counts};
}

}  // namespace vellum::viewport
