#include "viewport/files/mesh/ObjMesh.h"

#include "foundation/basic/large_pages.h"
#include "viewport/files/common/LineSlices.h"
#include "viewport/files/common/read_pieces.h"
#include "viewport/files/mesh/CornerTable.h"
#include "viewport/files/mesh/MtlFile.h"
#include "viewport/files/mesh/ObjPiece.h"
#include "viewport/files/mesh/PolygonCutter.h"
#include "viewport/files/mesh/default_color.h"
#include "viewport/files/mesh/points.h"
#include "viewport/files/mesh/utf16.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/data_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr float NO_COLOR = -1;  // red of a vertex without a color

/// What an index of a corner names.
enum Kind { POSITION, TEXTURE, NORMAL, KIND_COUNT };
constexpr char const* KIND_NAMES[KIND_COUNT] = {"vertex", "texture coordinate", "normal"};

/// What the file lists, in its order.
struct Lists {
    std::vector<Vector3<double>> positions;  // not a number where the file has none
    std::vector<Color4<float>> colors;       // by position; may be shorter
    std::vector<Vector2<float>> textures;
    std::vector<Vector3<float>> normals;  // of unit length or zero

    std::size_t size(Kind kind) const {
        return kind == POSITION ? positions.size() : kind == TEXTURE ? textures.size() : normals.size();
    }
};

/// The materials by their names, in the order in which the file and its libraries give them. The first one is
/// that of what has none.
class Materials {
public:
    Materials() { entries.emplace_back(); }

    std::uint32_t indexOf(std::string const& name) {
        auto const [place, isNew] = indices.emplace(name, static_cast<std::uint32_t>(entries.size()));
        if (isNew) {
            entries.emplace_back();
            entries.back().content.material.name = name;
        }
        return place->second;
    }

    void define(MtlMaterial const& material) {
        Entry& entry = entries[indexOf(material.material.name)];
        entry.content = material;
        entry.isDefined = true;
    }

    void use(std::uint32_t index) { entries[index].isUsed = true; }

    /// One for each material; those of surfaces.
    std::vector<Color4<float>> colors() const {
        std::vector<Color4<float>> all;
        all.reserve(entries.size());
        for (Entry const& entry : entries) {
            all.push_back(entry.content.color.value_or(DEFAULT_COLOR));
        }
        return all;
    }

    std::vector<Material> take() {
        std::vector<Material> all;
        all.reserve(entries.size());
        for (Entry& entry : entries) {
            all.push_back(std::move(entry.content.material));
        }
        return all;
    }

    /// What to say of those that are used and nowhere defined, or an empty text.
    std::string missing() const {
        auto const isMissing = [](Entry const& entry) { return entry.isUsed && !entry.isDefined; };
        // The first entry has no name and needs no definition.
        auto const first = std::find_if(std::next(entries.begin()), entries.end(), isMissing);
        if (first == entries.end()) {
            return {};
        }
        auto const others = std::count_if(std::next(first), entries.end(), isMissing);
        return "material " + inQuotes(first->content.material.name) +
               (others > 0 ? " and " + std::to_string(others) + " more are" : " is") +
               " in no material file; drawn in the default color";
    }

private:
    struct Entry {
        MtlMaterial content;
        bool isDefined = false;
        bool isUsed = false;
    };

    std::vector<Entry> entries;
    std::unordered_map<std::string, std::uint32_t> indices;
};

/// Counts the parts: an object, a group or a change of material begins one, and it counts once it has a face,
/// a line or a point.
class Parts {
public:
    void group(std::string const& name) {
        if (name != activeGroup) {
            activeGroup = name;
            known.insert(name);
            _begin();
        }
    }

    void object(std::string const& name) {
        // A name that comes again goes on with the part before it.
        if (!name.empty() && known.insert(name).second) {
            _begin();
        }
    }

    void material(std::uint32_t index) {
        if (isFilled && partMaterial && *partMaterial != index) {
            _begin();
        }
        current = index;
        partMaterial = index;
    }

    void fill() {
        count += isFilled ? 0 : 1;
        isFilled = true;
    }

    unsigned int counted() const { return count; }

private:
    void _begin() {
        isFilled = false;
        partMaterial = current;
    }

    std::string activeGroup;
    std::unordered_set<std::string> known;
    std::optional<std::uint32_t> current;
    std::optional<std::uint32_t> partMaterial;
    bool isFilled = false;
    unsigned int count = 0;
};

class ObjReader {
public:
    ObjReader(std::string const& path, std::string_view text, Progress const& progress)
        : path(path)
        , pace(progress, text.size())
        , start(text.data())
        , here(start)
        , end(start + text.size())
        // Files of old systems end their lines with a carriage return alone.
        , feed(text.find('\n') != std::string_view::npos ? '\n' : '\r') {
        constexpr std::string_view MARK = "\xEF\xBB\xBF";
        if (text.substr(0, MARK.size()) == MARK) {
            here += MARK.size();
        }
        // The shortest statement that gives any of them is "v 1" with its line end.
        mostOfAKind = std::min<std::uint64_t>(text.size() / 4 + 1, MeshData::LARGEST_COUNT);
    }

    Result<MeshData> read() {
        while (!fault && here != end) {
            // Pieces end at line feeds.
            feed == '\n' ? _readPieces() : _readNext();
        }
        pieces = {};
        if (!fault) {
            _checkForwardIndices();
        }
        if (!fault) {
            pace.atEnd();
            _build();
        }
        if (fault) {
            return *fault;
        }
        return std::move(mesh);
    }

private:
    // == Pieces ==

    /// Some text, of which all cores read the pieces first.
    void _readPieces() {
        std::vector<LineSlice> const slices =
            sliceLines(wholeLines({here, static_cast<std::size_t>(end - here)}, atOnce.next()));
        pieces.resize(slices.size());
        for (std::size_t i = 0; i < slices.size(); ++i) {
            pieces[i].text = slices[i].text;
        }
        static_cast<void>(readPieces(pieces, [this](TextPiece& each) {
            each.content.read(each.text, end);
            return true;
        }));
        for (TextPiece const& each : pieces) {
            // A line may go on from one piece into the next, which was not read as what it is then.
            if (fault || here != each.text.data()) {
                return;
            }
            _take(each.content);
            char const* const pieceEnd = each.text.data() + each.text.size();
            here = fault || each.content.stop == nullptr ? pieceEnd : each.content.stop;
            while (!fault && here < pieceEnd) {
                _readNext();
            }
            pace.at(static_cast<std::uint64_t>(here - start));
        }
    }

    void _take(ObjPiece const& piece) {
        Vector3<double> const* position = piece.positions.data();
        Color4<float> const* color = piece.colors.data();
        Vector2<float> const* texture = piece.textures.data();
        Vector3<float> const* normal = piece.normals.data();
        ObjPiece::Face const* face = piece.faces.data();
        ObjPiece::Corner const* corner = piece.corners.data();
        char const* const* other = piece.others.data();
        auto const append = [](auto& list, auto const*& next, std::size_t count) {
            list.insert(list.end(), next, next + count);
            next += count;
        };
        for (ObjPiece::Run const& run : piece.runs) {
            switch (run.kind) {
            case ObjPiece::Kind::COLORED_POSITIONS:
                lists.colors.resize(lists.positions.size(), {NO_COLOR, 0, 0, 0});
                append(lists.colors, color, run.count);
                append(lists.positions, position, run.count);
                break;
            case ObjPiece::Kind::POSITIONS:
                append(lists.positions, position, run.count);
                break;
            case ObjPiece::Kind::TEXTURES:
                append(lists.textures, texture, run.count);
                break;
            case ObjPiece::Kind::NORMALS:
                append(lists.normals, normal, run.count);
                break;
            case ObjPiece::Kind::FACES:
                for (std::size_t i = 0; i < run.count && !fault; ++i, ++face) {
                    _takeFace(*face, corner, run.hasPairs);
                    corner += face->corners;
                }
                break;
            case ObjPiece::Kind::OTHERS:
                for (std::size_t i = 0; i < run.count && !fault; ++i, ++other) {
                    here = *other;
                    _readNext();
                }
                break;
            }
            if (fault) {
                return;
            }
        }
    }

    void _takeFace(ObjPiece::Face const& face, ObjPiece::Corner const* from, bool hasPairs) {
        bool const mayBeNormals = hasPairs && lists.textures.empty() && !lists.normals.empty();
        bool const isSmall = table.size() + face.corners <= MeshData::LARGEST_COUNT &&
                             mesh.triangles.size() + face.corners <= MeshData::LARGEST_COUNT;
        placed.resize(face.corners);
        bool isPlain = isSmall && !mayBeNormals;
        for (std::size_t i = 0; i < face.corners && isPlain; ++i) {
            CornerTable::Corner& corner = placed[i];
            corner.material = material;
            isPlain = _place(from[i].indices[POSITION], POSITION, corner.vertex) &&
                      _place(from[i].indices[TEXTURE], TEXTURE, corner.texture) &&
                      _place(from[i].indices[NORMAL], NORMAL, corner.normal);
        }
        if (!isPlain) {
            here = face.statement;
            _readNext();
            return;
        }
        corners.resize(face.corners);
        for (std::size_t i = 0; i < face.corners; ++i) {
            corners[i] = table.indexOf(placed[i]);
        }
        _addFace();
    }

    /// The place in the list that an index of a piece means. \return false where the list does not have it so
    /// far.
    bool _place(std::int32_t index, Kind kind, std::uint32_t& place) const {
        if (index == 0) {
            place = CornerTable::NONE;
            return true;
        }
        auto const count = static_cast<std::int64_t>(lists.size(kind));
        std::int64_t const found = index > 0 ? std::int64_t{index} - 1 : count + index;
        place = static_cast<std::uint32_t>(found);
        return found >= 0 && found < count;
    }

    // == Statements ==

    /// Reads the statement here and goes on to the next one.
    void _readNext() {
        statement = here;
        _readStatement();
        _skipLine();
        pace.at(static_cast<std::uint64_t>(here - start));
    }

    void _readStatement() {
        _skipBlanks();
        if (_isAtLineEnd()) {
            return;
        }
        char const* const first = here;
        char const second = end - here > 1 ? here[1] : feed;
        bool const isOneLetter = _isBlank(second) || second == feed;
        switch (*first) {
        case 'v':
            if (isOneLetter) {
                here += 1;
                return _readPosition();
            }
            if (second == 'n' && _isWordEnd(first + 2)) {
                here += 2;
                return _readNormal();
            }
            if (second == 't' && _isWordEnd(first + 2)) {
                here += 2;
                return _readTexture();
            }
            break;
        case 'f':
            if (isOneLetter) {
                here += 1;
                return _readFace();
            }
            break;
        case 'l':
            if (isOneLetter) {
                here += 1;
                return _readLine();
            }
            break;
        case 'p':
            if (isOneLetter) {
                here += 1;
                return _readPoints();
            }
            break;
        default:
            break;
        }
        _readWords();
    }

    /// Statements that are no numbers, and those that are not taken.
    void _readWords() {
        std::string_view const word = _takeWord();
        if (word == "g") {
            parts.group(_rest());
        } else if (word == "o") {
            parts.object(_rest());
        } else if (word == "usemtl") {
            std::string const name = _rest();
            if (!name.empty()) {
                material = materials.indexOf(name);
                parts.material(material);
            }
        } else if (word == "mtllib") {
            std::string const names = _rest();
            if (statements.insert(names).second) {
                _readLibraries(names);
            }
        } else if (!_isSkippable(word)) {
            unknown = unknownCount == 0 ? statement : unknown;
            ++unknownCount;
        }
    }

    /// Statements of OBJ that no picture of the mesh needs. Those that begin a curve or surface are counted.
    bool _isSkippable(std::string_view word) {
        static std::unordered_set<std::string_view> const shapes{"curv", "curv2", "surf", "bzp",
                                                                 "bsp",  "cdc",   "cdp"};
        static std::unordered_set<std::string_view> const others{
            "s",     "mg",       "vp",       "cstype", "deg",        "bmat",      "step", "parm",   "trim",
            "hole",  "scrv",     "sp",       "end",    "con",        "bevel",     "lod",  "maplib", "usemap",
            "ctech", "c_interp", "d_interp", "stech",  "shadow_obj", "trace_obj", "res",  "call",   "csh"};
        shapeCount += shapes.count(word);
        return shapes.count(word) > 0 || others.count(word) > 0;
    }

    void _readLibraries(std::string const& names) {
        MtlFile file = loadMtl(path, names, libraries);
        for (MtlMaterial const& each : file.materials) {
            materials.define(each);
        }
        std::move(file.notes.begin(), file.notes.end(), std::back_inserter(mesh.notes));
    }

    // == Lists ==

    /// Takes up to `most` numbers to the end of the line. A word that is no number counts as NaN: it is a
    /// fault only where it is used.
    std::size_t _takeNumbers(double* const& numbers, std::size_t most) {
        std::size_t count = 0;
        for (_skipBlanks(); count < most && !_isAtLineEnd(); _skipBlanks()) {
            char const* const next = takeDataNumber(here, end, numbers[count]);
            if (next != nullptr && _isWordEnd(next)) {
                here = next;
            } else {
                numbers[count] = NOT_A_NUMBER;
                _takeWord();
            }
            ++count;
        }
        return count;
    }

    void _readPosition() {
        constexpr std::size_t MOST = 8;
        double n[MOST];
        std::size_t const count = _takeNumbers(n, MOST);
        Vector3<double> position{NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER};
        if (count >= 3) {
            position = {n[0], n[1], n[2]};
        }
        // A weight stands alone behind the position or before the four parts of a color.
        bool const hasWeight = count == 4 || count == 8;
        if (hasWeight && n[3] != 1) {
            position = n[3] == 0 ? Vector3<double>{NOT_A_NUMBER, 0, 0} : position / n[3];
        }
        if (count >= 6) {
            double const* const c = hasWeight ? n + 4 : n + 3;
            lists.colors.resize(lists.positions.size(), {NO_COLOR, 0, 0, 0});
            float const opacity = count >= 7 ? objColorPart(c[3]) : 1.0F;
            lists.colors.push_back({objColorPart(c[0]), objColorPart(c[1]), objColorPart(c[2]), opacity});
        }
        lists.positions.push_back(position);
    }

    void _readNormal() {
        double n[3] = {0, 0, 0};
        _takeNumbers(n, 3);
        lists.normals.push_back(objNormal(n[0], n[1], n[2]));
    }

    void _readTexture() {
        double n[2] = {0, 0};
        _takeNumbers(n, 2);
        lists.textures.push_back(objTexture(n[0], n[1]));
    }

    // == Elements ==

    void _readFace() {
        if (!_takeCorners(true)) {
            return;
        }
        switch (corners.size()) {
        case 0:
            ++emptyFaceCount;
            emptyFace = emptyFaceCount == 1 ? statement : emptyFace;
            return;
        case 1:
            mesh.points.push_back(corners[0]);
            break;
        case 2:
            if (!_addLine(corners[0], corners[1])) {
                return;
            }
            break;
        default:
            if (mesh.triangles.size() + corners.size() > MeshData::LARGEST_COUNT) {
                _fail("the mesh has too many triangles");
                return;
            }
            _addFace();
            return;
        }
        parts.fill();
        materials.use(material);
    }

    /// Adds the polygon of the corners.
    void _addFace() {
        _markMaterial();
        cutter.addFan(corners.data(), corners.size(), mesh.triangles);
        parts.fill();
        materials.use(material);
    }

    void _readLine() {
        if (!_takeCorners(false)) {
            return;
        }
        if (mesh.lines.size() + corners.size() > MeshData::LARGEST_COUNT) {
            _fail("the mesh has too many lines");
            return;
        }
        bool isFilled = false;
        for (std::size_t i = 1; i < corners.size(); ++i) {
            isFilled = _addLine(corners[i - 1], corners[i]) || isFilled;
        }
        if (isFilled) {
            parts.fill();
            materials.use(material);
        }
    }

    /// False for a line from a vertex to itself, of which nothing would be seen.
    bool _addLine(unsigned int from, unsigned int to) {
        if (table[from].vertex == table[to].vertex) {
            pointlessLine = pointlessLineCount == 0 ? statement : pointlessLine;
            ++pointlessLineCount;
            return false;
        }
        mesh.lines.push_back({from, to});
        return true;
    }

    void _readPoints() {
        if (!_takeCorners(false) || corners.empty()) {
            return;
        }
        if (mesh.points.size() + corners.size() > MeshData::LARGEST_COUNT) {
            _fail("the mesh has too many points");
            return;
        }
        mesh.points.insert(mesh.points.end(), corners.begin(), corners.end());
        parts.fill();
        materials.use(material);
    }

    /// Takes the corners to the end of the line, as their numbers in the table.
    bool _takeCorners(bool isFace) {
        corners.clear();
        for (_skipBlanks(); !_isAtLineEnd(); _skipBlanks()) {
            CornerTable::Corner corner{0, CornerTable::NONE, CornerTable::NONE, material};
            if (!_takeIndex(POSITION, corner.vertex)) {
                return false;
            }
            if (here != end && *here == '/') {
                ++here;
                if (!_isAtIndexEnd() && !_takeIndex(_kindOfSecond(isFace), corner.texture)) {
                    return false;
                }
                if (here != end && *here == '/') {
                    ++here;
                    if (!_isAtIndexEnd() && !_takeIndex(NORMAL, corner.normal)) {
                        return false;
                    }
                } else if (_kindOfSecond(isFace) == NORMAL) {
                    std::swap(corner.texture, corner.normal);
                }
            }
            if (!_isWordEnd(here)) {
                _fail(inQuotes(_takeWord()) + " does not belong to a corner");
                return false;
            }
            if (table.size() >= MeshData::LARGEST_COUNT) {
                _fail("the mesh has too many vertices");
                return false;
            }
            corners.push_back(table.indexOf(corner));
        }
        return true;
    }

    /// Some writers have "v/vn" in files without texture coordinates.
    Kind _kindOfSecond(bool isFace) const {
        if (!isFace || !lists.textures.empty() || lists.normals.empty()) {
            return TEXTURE;
        }
        char const* next = here;
        while (next != end && *next != '/' && !_isWordEnd(next)) {
            ++next;
        }
        return next != end && *next == '/' ? TEXTURE : NORMAL;
    }

    bool _takeIndex(Kind kind, std::uint32_t& index) {
        bool const isBackward = here != end && *here == '-';
        here += isBackward || (here != end && *here == '+') ? 1 : 0;
        char const* const first = here;
        std::uint64_t number = 0;
        for (; here != end && isDigit(*here) && number < mostOfAKind * 10; ++here) {
            number = 10 * number + static_cast<std::uint64_t>(*here - '0');
        }
        if (here == first) {
            std::string_view const word = _takeWord();
            _fail(word.empty() ? "an index is missing" : inQuotes(word) + " is not an index");
            return false;
        }
        std::uint64_t const count = lists.size(kind);
        if (number == 0 || number > (isBackward ? count : mostOfAKind)) {
            _failIndex(statement, kind, (isBackward ? "-" : "") + std::to_string(number), count);
            return false;
        }
        index = static_cast<std::uint32_t>(isBackward ? count - number : number - 1);
        // Lists may follow their faces.
        if (number > count && !isBackward && number > forward[kind].index) {
            forward[kind] = {number, statement};
        }
        return true;
    }

    void _markMaterial() {
        if (runs.empty() || runs.back().material != material) {
            runs.push_back({mesh.triangles.size(), material});
        }
    }

    // == The mesh ==

    void _checkForwardIndices() {
        for (Kind const kind : {POSITION, TEXTURE, NORMAL}) {
            if (forward[kind].index > lists.size(kind)) {
                _failIndex(forward[kind].statement, kind, std::to_string(forward[kind].index),
                           lists.size(kind));
                return;
            }
        }
    }

    void _build() {
        if (!_buildPositions()) {
            return;
        }
        _buildColors();
        _buildNormals();
        _buildTextures();
        _buildMaterials();
        cutter.cutFans(mesh);
        mesh.partCount = parts.counted();
        _addNotes();
    }

    bool _buildPositions() {
        mesh.positions.reserve(table.size());
        preferLargePages(mesh.positions.data(), table.size() * sizeof(Vector3<double>));
        for (std::size_t i = 0; i < table.size(); ++i) {
            Vector3<double> const& position = lists.positions[table[i].vertex];
            if (!isFinite(position)) {
                statement = _statementOfPosition(table[i].vertex);
                _fail("vertex " + std::to_string(table[i].vertex + 1) +
                      " has a coordinate that is not a number or infinite");
                return false;
            }
            mesh.positions.push_back(position);
        }
        return true;
    }

    /// Colors go from 0 to 1, or to 255 where all are whole numbers and some are above 1.
    void _scaleColors() {
        constexpr float LARGEST_BYTE = 255;
        float most = 0;
        bool areWhole = true;
        for (Color4<float> const& color : lists.colors) {
            most = std::max({most, color.r, color.g, color.b});
            for (float const part : {color.r, color.g, color.b, color.a}) {
                areWhole = areWhole && part == std::floor(part);
            }
        }
        if (most <= 1) {
            return;
        }
        bool const areBytes = areWhole && most <= LARGEST_BYTE;
        for (Color4<float>& color : lists.colors) {
            if (color.r != NO_COLOR) {
                float const opacityScale = areBytes && color.a > 1 ? LARGEST_BYTE : 1;
                float const scale = areBytes ? LARGEST_BYTE : 1;
                color = {std::min(color.r / scale, 1.0F), std::min(color.g / scale, 1.0F),
                         std::min(color.b / scale, 1.0F), std::min(color.a / opacityScale, 1.0F)};
            }
        }
        if (!areBytes) {
            mesh.notes.emplace_back("colors of vertices above 1 are shown as 1");
        }
    }

    void _buildColors() {
        _scaleColors();
        std::vector<Color4<float>> const ofMaterials = materials.colors();
        mesh.colors.reserve(table.size());
        for (std::size_t i = 0; i < table.size(); ++i) {
            std::uint32_t const vertex = table[i].vertex;
            bool const hasColor = vertex < lists.colors.size() && lists.colors[vertex].r != NO_COLOR;
            mesh.colors.push_back(hasColor ? lists.colors[vertex] : ofMaterials[table[i].material]);
            mesh.hasVertexColors = mesh.hasVertexColors || hasColor;
        }
    }

    void _buildNormals() {
        auto const normalOf = [this](std::size_t i) {
            std::uint32_t const normal = table[i].normal;
            return normal == CornerTable::NONE ? Vector3<float>{0, 0, 0} : lists.normals[normal];
        };
        std::size_t first = 0;
        auto const isMissing = [](Vector3<float> const& n) { return n.x == 0 && n.y == 0 && n.z == 0; };
        while (first < table.size() && isMissing(normalOf(first))) {
            ++first;
        }
        if (first == table.size()) {
            return;
        }
        mesh.normals.reserve(table.size());
        for (std::size_t i = 0; i < table.size(); ++i) {
            mesh.normals.push_back(normalOf(i));
        }
    }

    void _buildTextures() {
        std::size_t first = 0;
        while (first < table.size() && table[first].texture == CornerTable::NONE) {
            ++first;
        }
        if (first == table.size()) {
            return;
        }
        mesh.textureCoordinates.reserve(table.size());
        for (std::size_t i = 0; i < table.size(); ++i) {
            std::uint32_t const texture = table[i].texture;
            mesh.textureCoordinates.push_back(texture == CornerTable::NONE ? Vector2<float>{0, 0}
                                                                           : lists.textures[texture]);
        }
    }

    void _buildMaterials() {
        std::string const missing = materials.missing();
        if (!missing.empty()) {
            mesh.notes.push_back(missing);
        }
        mesh.materials = materials.take();
        bool const areAlike = runs.empty() || (runs.size() == 1 && runs[0].material == 0);
        if (areAlike) {
            return;
        }
        mesh.triangleMaterials.reserve(mesh.triangles.size());
        for (std::size_t i = 0; i < runs.size(); ++i) {
            std::size_t const stop = i + 1 < runs.size() ? runs[i + 1].first : mesh.triangles.size();
            mesh.triangleMaterials.insert(mesh.triangleMaterials.end(), stop - runs[i].first,
                                          runs[i].material);
        }
    }

    void _addNotes() {
        auto const add = [this](char const* place, std::uint64_t count, std::string const& one,
                                std::string const& many) {
            if (count > 0) {
                mesh.notes.push_back(
                    "line " + std::to_string(_lineOf(place)) + ": " +
                    (count == 1 ? one : one + ", and so are " + std::to_string(count - 1) + many));
            }
        };
        add(emptyFace, emptyFaceCount, "a face without corners is skipped", " more");
        add(pointlessLine, pointlessLineCount, "a line from a vertex to itself is skipped", " more");
        add(unknown, unknownCount, "a statement that OBJ does not have is skipped", " more");
        if (shapeCount > 0) {
            mesh.notes.push_back("its " + std::to_string(shapeCount) +
                                 " curves and surfaces are not drawn, only its polygons, lines and points");
        }
    }

    // == Text ==

    bool _isBlank(char character) const {
        return character == ' ' || character == '\t' || (character == '\r' && feed != '\r');
    }

    /// The end of a line that goes on behind the backslash here, or null.
    char const* _continuation() const {
        char const* next = here + 1;
        if (next != end && *next == '\r' && feed == '\n') {
            ++next;
        }
        return next == end ? end : *next == feed ? next + 1 : nullptr;
    }

    void _skipBlanks() {
        while (here != end) {
            if (_isBlank(*here)) {
                ++here;
            } else if (*here == '\\' && _continuation() != nullptr) {
                here = _continuation();
            } else {
                return;
            }
        }
    }

    bool _isAtLineEnd() const { return here == end || *here == feed || *here == '#'; }

    bool _isWordEnd(char const* place) const {
        return place == end || _isBlank(*place) || *place == feed || *place == '\\';
    }

    bool _isAtIndexEnd() const { return _isWordEnd(here) || *here == '/'; }

    std::string_view _takeWord() {
        char const* const first = here;
        while (!_isWordEnd(here)) {
            ++here;
        }
        // A backslash that does not end the line is part of a word.
        if (here == first && here != end && *here == '\\') {
            ++here;
        }
        return {first, static_cast<std::size_t>(here - first)};
    }

    /// What follows to the end of the line, without the blanks around it.
    std::string _rest() {
        _skipBlanks();
        std::string text;
        while (here != end && *here != feed) {
            if (*here == '\\' && _continuation() != nullptr) {
                here = _continuation();
                text.push_back(' ');
            } else {
                text.push_back(*here++);
            }
        }
        std::size_t const last = text.find_last_not_of(BLANKS);
        text.resize(last == std::string::npos ? 0 : last + 1);
        return text;
    }

    /// Behind the end of the line, which a backslash does not end.
    void _skipLine() {
        // A comment that ends with a backslash, as paths do, still ends with its line.
        bool const isComment = here != end && *here == '#';
        while (here != end) {
            if (*here != feed) {
                void const* const next = std::memchr(here, feed, static_cast<std::size_t>(end - here));
                here = next != nullptr ? static_cast<char const*>(next) : end;
                if (here == end) {
                    return;
                }
                char const* before = here - 1;
                before -= feed == '\n' && *before == '\r' && before != start ? 1 : 0;
                if (*before == '\\' && !isComment) {
                    ++here;
                    continue;
                }
            }
            ++here;
            return;
        }
    }

    // == Faults ==

    std::uint64_t _lineOf(char const* place) const {
        return 1 + static_cast<std::uint64_t>(std::count(start, place, feed));
    }

    void _fail(std::string const& reason) {
        fault = Fault{{}, "line " + std::to_string(_lineOf(statement)) + ": " + reason};
    }

    void _failIndex(char const* place, Kind kind, std::string const& index, std::size_t count) {
        statement = place;
        _fail(std::string(KIND_NAMES[kind]) + " index " + index + " is out of range: there are " +
              std::to_string(count));
    }

    char const* _statementOfPosition(std::uint32_t index) {
        std::uint64_t count = 0;
        here = start;
        while (here != end) {
            statement = here;
            _skipBlanks();
            bool const isPosition = here != end && *here == 'v' && (_isWordEnd(here + 1));
            if (isPosition && count++ == index) {
                break;
            }
            _skipLine();
        }
        return statement;
    }

    struct Forward {
        std::uint64_t index = 0;  // counted from 1; the largest beyond the list so far
        char const* statement = nullptr;
    };

    /// Triangles of one material.
    struct Run {
        std::size_t first;
        std::uint32_t material;
    };

    struct TextPiece {
        std::string_view text;
        ObjPiece content;
    };

    std::string const& path;
    ProgressPace pace;
    char const* start;
    char const* here;
    char const* end;
    char feed;
    char const* statement = nullptr;  // the beginning of the line that is read
    std::uint64_t mostOfAKind;        // that a file of this size could have

    BytesAtOnce atOnce;
    std::vector<TextPiece> pieces;
    std::vector<CornerTable::Corner> placed;  // of the face that is taken from a piece

    Lists lists;
    CornerTable table;
    Materials materials;
    Parts parts;
    std::uint32_t material = 0;
    std::unordered_set<std::string> statements;  // of material files
    std::set<std::string> libraries;             // the paths of those that were read
    std::vector<unsigned int> corners;           // of the face that is read
    std::vector<Run> runs;
    Forward forward[KIND_COUNT];
    PolygonCutter cutter;

    char const* emptyFace = nullptr;
    std::uint64_t emptyFaceCount = 0;
    char const* pointlessLine = nullptr;
    std::uint64_t pointlessLineCount = 0;
    char const* unknown = nullptr;
    std::uint64_t unknownCount = 0;
    std::uint64_t shapeCount = 0;

    MeshData mesh;
    std::optional<Fault> fault;
};

}  // namespace

Result<MeshData> readObjMesh(std::string const& path, std::string_view bytes, Progress const& progress) {
    std::optional<std::string> const converted = utf8OfUtf16(bytes);
    return ObjReader(path, converted ? std::string_view(*converted) : bytes, progress).read();
}

}  // namespace vellum::viewport
