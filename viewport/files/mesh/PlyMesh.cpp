#include "viewport/files/mesh/PlyMesh.h"

#include "foundation/basic/large_pages.h"
#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/mesh/CornerTable.h"
#include "viewport/files/mesh/PlyBody.h"
#include "viewport/files/mesh/PolygonCutter.h"
#include "viewport/files/mesh/default_color.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

namespace vellum::viewport {

namespace {

using Triangle = MeshData::Triangle;

constexpr std::size_t NONE = static_cast<std::size_t>(-1);

/// Which properties of an element are read, by their places.
class Properties {
public:
    explicit Properties(PlyElement const& element)
        : element(element), isUsed(element.properties.size(), false) {}

    /// The place of the property, or NONE; it is used from now on.
    std::size_t use(std::string_view name, bool isList = false) {
        std::size_t const place = _find(name, isList);
        if (place != NONE) {
            isUsed[place] = true;
        }
        return place;
    }

    /// The places of all the properties where the element has each of them, or nothing.
    template <std::size_t COUNT>
    std::optional<std::array<std::size_t, COUNT>> useAll(std::array<std::string_view, COUNT> const& names) {
        std::array<std::size_t, COUNT> places{};
        for (std::size_t i = 0; i < COUNT; ++i) {
            places[i] = _find(names[i], false);
            if (places[i] == NONE) {
                return std::nullopt;
            }
        }
        for (std::size_t const place : places) {
            isUsed[place] = true;
        }
        return places;
    }

    bool has(std::string_view name) const { return _find(name, false) != NONE; }

    /// The numbers that are not used so far.
    std::vector<std::size_t> otherNumbers() const { return _others(false); }
    std::vector<std::size_t> otherLists() const { return _others(true); }

private:
    std::size_t _find(std::string_view name, bool isList) const {
        for (std::size_t i = 0; i < element.properties.size(); ++i) {
            PlyProperty const& property = element.properties[i];
            if (!isUsed[i] && property.isList == isList && lowerCase(property.name) == name) {
                return i;
            }
        }
        return NONE;
    }

    std::vector<std::size_t> _others(bool areLists) const {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < isUsed.size(); ++i) {
            if (!isUsed[i] && element.properties[i].isList == areLists) {
                places.push_back(i);
            }
        }
        return places;
    }

    PlyElement const& element;
    std::vector<bool> isUsed;
};

/// The color of an item.
class Colors {
public:
    Colors() = default;
    Colors(PlyElement const& element, Properties& properties) {
        struct Names {
            std::array<std::string_view, 3> parts;
            std::string_view opacity;
        };
        static constexpr Names NAMES[] = {{{"red", "green", "blue"}, "alpha"},
                                          {{"diffuse_red", "diffuse_green", "diffuse_blue"}, "diffuse_alpha"},
                                          {{"r", "g", "b"}, "a"}};
        for (Names const& names : NAMES) {
            if (auto const found = properties.useAll(names.parts)) {
                parts = {(*found)[0], (*found)[1], (*found)[2], properties.use(names.opacity)};
                break;
            }
        }
        for (std::size_t i = 0; exist() && i < parts.size(); ++i) {
            full[i] = parts[i] == NONE ? 1 : _fullOf(element.properties[parts[i]].value);
        }
    }

    bool exist() const { return parts[0] != NONE; }

    Color4<float> of(PlyItem const& item) const {
        auto const part = [&](std::size_t i) {
            double const value = item.numbers[parts[i]] / full[i];
            return value > 0 ? static_cast<float>(std::min(value, 1.0)) : 0.0F;
        };
        return {part(0), part(1), part(2), parts[3] == NONE ? 1.0F : part(3)};
    }

private:
    static double _fullOf(PlyScalarType const& type) {
        if (!type.isInteger) {
            return 1;
        }
        // Whole numbers of four bytes hold those of one byte: no program writes colors that fine.
        return type.size == 2 ? (type.isSigned ? 32767 : 65535) : type.isSigned && type.size == 1 ? 127 : 255;
    }

    std::array<std::size_t, 4> parts{NONE, NONE, NONE, NONE};
    std::array<double, 4> full{1, 1, 1, 1};
};

/// The names behind "comment TextureFile".
std::vector<std::string> textureFiles(std::string_view header) {
    std::vector<std::string> names;
    while (!header.empty()) {
        std::string_view line = takeLine(header);
        if (takeWord(line) == "comment" && takeWord(line) == "TextureFile") {
            std::size_t const first = line.find_first_not_of(BLANKS);
            if (first != std::string_view::npos) {
                names.emplace_back(line.substr(first, line.find_last_not_of(BLANKS) - first + 1));
            }
        }
    }
    return names;
}

/// Puts the values at the given places into the list, in this order.
template <class T>
void gather(std::vector<T>& values, std::vector<std::uint32_t> const& places) {
    if (values.empty()) {
        return;
    }
    std::vector<T> gathered;
    gathered.reserve(places.size());
    for (std::uint32_t const place : places) {
        gathered.push_back(values[place]);
    }
    values = std::move(gathered);
}

class PlyReader {
public:
    PlyReader(std::string_view file, PlyHeader const& header, Progress const& progress)
        : header(header)
        , textures(textureFiles(file.substr(0, file.size() - header.body.size())))
        , body(file, header, progress) {}

    Result<MeshData> read() {
        auto const isVertex = [](PlyElement const& element) { return element.name == "vertex"; };
        auto const vertices = std::find_if(header.elements.begin(), header.elements.end(), isVertex);
        if (vertices == header.elements.end()) {
            return Fault{{}, "the PLY file has no element 'vertex'"};
        }
        if (vertices->count > MeshData::LARGEST_COUNT) {
            return Fault{{}, "the mesh has too many vertices"};
        }
        // What is gathered of the corners, faces and edges counts from the first one of the mesh.
        for (std::string_view const name : {"face", "edge"}) {
            if (std::count_if(header.elements.begin(), header.elements.end(),
                              [name](PlyElement const& element) { return element.name == name; }) > 1) {
                return Fault{{}, "the PLY file has more than one element " + inQuotes(name)};
            }
        }
        vertexElement = &*vertices;
        vertexCount = vertices->count;
        for (PlyElement const& element : header.elements) {
            if (std::optional<Fault> const fault = _readElement(element)) {
                return *fault;
            }
        }
        if (body.longLine() != 0) {
            mesh.notes.push_back("line " + std::to_string(body.longLine()) +
                                 ": more numbers than the header declares are skipped");
        }
        if (std::optional<Fault> const fault = _build()) {
            return *fault;
        }
        return std::move(mesh);
    }

private:
    // == Elements ==

    std::optional<Fault> _readElement(PlyElement const& element) {
        if (!body.begin(element)) {
            return _cutOff(element);
        }
        if (&element == vertexElement) {
            return _readVertices(element);
        }
        if (element.count == 0) {
            return std::nullopt;
        }
        if (element.name == "face") {
            return _readFaces(element);
        }
        if (element.name == "tristrips") {
            return _readStrips(element);
        }
        if (element.name == "edge") {
            return _readEdges(element);
        }
        if (!element.properties.empty()) {
            mesh.notes.push_back("the element " + inQuotes(element.name) + " is not drawn");
        }
        return _readOther(element);
    }

    /// Reads to the end of a file that is too short, to tell how many items there are.
    Fault _cutOff(PlyElement const& element) {
        std::optional<Fault> const fault = _readOther(element);
        return fault ? *fault : Fault{{}, "the file is cut off"};
    }

    std::optional<Fault> _readOther(PlyElement const& element) {
        PlyItem item;
        for (std::uint64_t i = 0; i < element.count && !element.properties.empty(); ++i) {
            if (!body.take(item)) {
                return Fault{{}, body.damage()};
            }
        }
        return std::nullopt;
    }

    void _noteLists(PlyElement const& element, Properties const& properties) {
        for (std::size_t const place : properties.otherLists()) {
            mesh.notes.push_back("the lists " + inQuotes(element.properties[place].name) +
                                 " of the element " + inQuotes(element.name) + " are skipped");
        }
    }

    std::optional<Fault> _readVertices(PlyElement const& element) {
        Properties properties(element);
        auto const position = properties.useAll<3>({"x", "y", "z"});
        if (!position) {
            return Fault{{}, "the vertices of the PLY file have no properties x, y and z"};
        }
        auto const normal = properties.useAll<3>({"nx", "ny", "nz"});
        Colors const colors(element, properties);
        auto const texture = _useTexture(properties);
        std::vector<std::size_t> const others = properties.otherNumbers();
        _noteLists(element, properties);

        auto const count = static_cast<std::size_t>(element.count);
        mesh.positions.reserve(count);
        preferLargePages(mesh.positions.data(), count * sizeof(Vector3<double>));
        mesh.normals.reserve(normal ? count : 0);
        mesh.colors.reserve(colors.exist() ? count : 0);
        mesh.textureCoordinates.reserve(texture ? count : 0);
        for (std::size_t const place : others) {
            mesh.scalars.push_back({element.properties[place].name, {}, {}});
            mesh.scalars.back().values.reserve(count);
        }
        PlyItem item;
        for (std::size_t i = 0; i < count; ++i) {
            if (!body.take(item)) {
                return Fault{{}, body.damage()};
            }
            std::vector<double> const& n = item.numbers;
            Vector3<double> const p{n[(*position)[0]], n[(*position)[1]], n[(*position)[2]]};
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
                return Fault{{},
                             body.atItem("vertex " + std::to_string(i) +
                                         " has a coordinate that is not a number or infinite")};
            }
            mesh.positions.push_back(p);
            if (normal) {
                _addNormal({n[(*normal)[0]], n[(*normal)[1]], n[(*normal)[2]]});
            }
            if (colors.exist()) {
                mesh.colors.push_back(colors.of(item));
            }
            if (texture) {
                _addTexture(n[(*texture)[0]], n[(*texture)[1]]);
            }
            for (std::size_t k = 0; k < others.size(); ++k) {
                mesh.scalars[k].values.push_back(n[others[k]]);
            }
        }
        mesh.hasVertexColors = colors.exist();
        return std::nullopt;
    }

    static std::optional<std::array<std::size_t, 2>> _useTexture(Properties& properties) {
        static constexpr std::array<std::string_view, 2> NAMES[] = {
            {"texture_u", "texture_v"}, {"texture_s", "texture_t"}, {"s", "t"}, {"tx", "ty"}, {"u", "v"}};
        for (std::array<std::string_view, 2> const& names : NAMES) {
            // Three components are a velocity or the like.
            bool const hasThird = names[0] == "u" && properties.has("w");
            if (!hasThird) {
                if (auto const places = properties.useAll(names)) {
                    return places;
                }
            }
        }
        return std::nullopt;
    }

    void _addNormal(Vector3<double> const& normal) {
        double const size = length(normal);
        bool const isUsable = std::isfinite(size) && size > 0;
        mesh.normals.push_back(isUsable ? convert<float>(normal * (1 / size)) : Vector3<float>{0, 0, 0});
        hasNormals = hasNormals || isUsable;
    }

    void _addTexture(double u, double v) { mesh.textureCoordinates.push_back(_texture(u, v)); }

    static Vector2<float> _texture(double u, double v) {
        Vector2<float> const place{static_cast<float>(u), static_cast<float>(v)};
        return std::isfinite(place.x) && std::isfinite(place.y) ? place : Vector2<float>{0, 0};
    }

    /// The list of the indices of the vertices.
    static std::size_t _useIndices(Properties& properties) {
        std::size_t const place = properties.use("vertex_indices", true);
        return place != NONE ? place : properties.use("vertex_index", true);
    }

    static Fault _noIndices(PlyElement const& element) {
        return Fault{{},
                     "the element " + inQuotes(element.name) + " of the PLY file has no list vertex_indices"};
    }

    std::optional<Fault> _indexFault(PlyElement const& element, std::uint64_t number, double index) const {
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", index);
        return Fault{{},
                     body.atItem(element.name + " " + std::to_string(number) + " has vertex index " + text +
                                 ", out of range: there are " + std::to_string(vertexCount) + " vertices")};
    }

    bool _isIndex(double value) const {
        return value >= 0 && value < static_cast<double>(vertexCount) && value == std::floor(value);
    }

    std::optional<Fault> _readFaces(PlyElement const& element) {
        Properties properties(element);
        std::size_t const indices = _useIndices(properties);
        if (indices == NONE) {
            return _noIndices(element);
        }
        std::size_t const wedges = properties.use("texcoord", true);
        std::size_t const textureNumber = properties.use("texnumber");
        properties.useAll<3>({"nx", "ny", "nz"});
        faceColors = Colors(element, properties);
        std::vector<std::size_t> const others = properties.otherNumbers();
        _noteLists(element, properties);
        for (std::size_t const place : others) {
            faceScalars.push_back({element.properties[place].name, {}, {}});
        }
        hasWedges = wedges != NONE;
        hasTextureNumbers = textureNumber != NONE;
        bool const hasOwn = faceColors.exist() || !others.empty();

        mesh.triangles.reserve(static_cast<std::size_t>(element.count));
        preferLargePages(mesh.triangles.data(), mesh.triangles.capacity() * sizeof(Triangle));
        PlyItem item;
        for (std::uint64_t i = 0; i < element.count; ++i) {
            if (!body.take(item)) {
                return Fault{{}, body.damage()};
            }
            std::vector<double> const& list = item.lists[indices];
            corners.resize(list.size());
            for (std::size_t k = 0; k < list.size(); ++k) {
                if (!_isIndex(list[k])) {
                    return _indexFault(element, i, list[k]);
                }
                corners[k] = static_cast<unsigned int>(list[k]);
            }
            if (hasWedges && !_addWedges(item.lists[wedges])) {
                return Fault{{},
                             body.atItem("face " + std::to_string(i) + " has " +
                                         std::to_string(item.lists[wedges].size()) +
                                         " texture coordinates for its " + std::to_string(corners.size()) +
                                         " corners")};
            }
            std::size_t const first = mesh.triangles.size();
            if (first + corners.size() > MeshData::LARGEST_COUNT || table.size() > MeshData::LARGEST_COUNT) {
                return Fault{{}, "the mesh has too many triangles"};
            }
            cutter.addFan(corners.data(), corners.size(), mesh.triangles);
            std::size_t const count = mesh.triangles.size() - first;
            if (hasTextureNumbers) {
                mesh.triangleMaterials.insert(mesh.triangleMaterials.end(), count,
                                              _materialOf(item.numbers[textureNumber]));
            }
            if (hasOwn) {
                _addOwn(item, others, count);
            }
        }
        return std::nullopt;
    }

    /// Numbers the corners anew, by their texture coordinates as well.
    bool _addWedges(std::vector<double> const& places) {
        if (!places.empty() && places.size() != 2 * corners.size()) {
            return false;
        }
        areWedgesFilled = areWedgesFilled || !places.empty();
        for (std::size_t k = 0; k < corners.size(); ++k) {
            Vector2<float> const place =
                places.empty() ? Vector2<float>{0, 0} : _texture(places[2 * k], places[2 * k + 1]);
            CornerTable::Corner corner{corners[k], 0, 0, 0};
            std::memcpy(&corner.texture, &place.x, sizeof place.x);
            std::memcpy(&corner.normal, &place.y, sizeof place.y);
            corners[k] = table.indexOf(corner);
        }
        return true;
    }

    unsigned int _materialOf(double number) const {
        // The material behind those of the textures is that of faces without any.
        auto const none = static_cast<unsigned int>(textures.size());
        return number >= 0 && number < static_cast<double>(none) ? static_cast<unsigned int>(number) : none;
    }

    /// What a face has apart from its vertices.
    void _addOwn(PlyItem const& item, std::vector<std::size_t> const& others, std::size_t triangleCount) {
        triangleFaces.insert(triangleFaces.end(), triangleCount, faceCount);
        ++faceCount;
        if (faceColors.exist()) {
            colorsOfFaces.push_back(faceColors.of(item));
        }
        for (std::size_t k = 0; k < others.size(); ++k) {
            faceScalars[k].values.push_back(item.numbers[others[k]]);
        }
    }

    std::optional<Fault> _readStrips(PlyElement const& element) {
        Properties properties(element);
        std::size_t const indices = _useIndices(properties);
        if (indices == NONE) {
            return _noIndices(element);
        }
        constexpr double STRIP_END = -1;
        PlyItem item;
        for (std::uint64_t i = 0; i < element.count; ++i) {
            if (!body.take(item)) {
                return Fault{{}, body.damage()};
            }
            std::size_t length = 0;  // of the strip so far
            unsigned int last[2] = {0, 0};
            for (double const value : item.lists[indices]) {
                if (value == STRIP_END) {
                    length = 0;
                    continue;
                }
                if (!_isIndex(value)) {
                    return _indexFault(element, i, value);
                }
                auto const index = static_cast<unsigned int>(value);
                // Strips turn over with each triangle. Those that repeat a vertex only join strips.
                if (length >= 2 && last[0] != last[1] && last[1] != index && last[0] != index) {
                    strips.push_back(length % 2 == 0 ? Triangle{last[0], last[1], index}
                                                     : Triangle{last[1], last[0], index});
                }
                last[0] = last[1];
                last[1] = index;
                ++length;
            }
            if (strips.size() > MeshData::LARGEST_COUNT) {
                return Fault{{}, "the mesh has too many triangles"};
            }
        }
        return std::nullopt;
    }

    std::optional<Fault> _readEdges(PlyElement const& element) {
        Properties properties(element);
        auto const ends = properties.useAll<2>({"vertex1", "vertex2"});
        if (!ends) {
            return Fault{{}, "the edges of the PLY file have no properties vertex1 and vertex2"};
        }
        Colors const colors(element, properties);
        for (std::size_t const place : properties.otherNumbers()) {
            mesh.notes.push_back("the numbers " + inQuotes(element.properties[place].name) +
                                 " of the edges are skipped");
        }
        _noteLists(element, properties);
        std::uint64_t pointlessCount = 0;
        PlyItem item;
        for (std::uint64_t i = 0; i < element.count; ++i) {
            if (!body.take(item)) {
                return Fault{{}, body.damage()};
            }
            for (std::size_t const place : *ends) {
                if (!_isIndex(item.numbers[place])) {
                    return _indexFault(element, i, item.numbers[place]);
                }
            }
            MeshLine const line{static_cast<unsigned int>(item.numbers[(*ends)[0]]),
                                static_cast<unsigned int>(item.numbers[(*ends)[1]])};
            if (line.e0 == line.e1) {
                ++pointlessCount;
                continue;
            }
            mesh.lines.push_back(line);
            if (colors.exist()) {
                edgeColors.push_back(colors.of(item));
            }
        }
        if (pointlessCount > 0) {
            mesh.notes.push_back(pointlessCount == 1 ? "an edge from a vertex to itself is skipped"
                                                     : std::to_string(pointlessCount) +
                                                           " edges from a vertex to itself are skipped");
        }
        return std::nullopt;
    }

    // == The mesh ==

    std::optional<Fault> _build() {
        if (!hasNormals) {
            mesh.normals.clear();
        }
        _splitByWedges();
        cutter.cutFans(mesh);
        if (mesh.hasVertexColors && !colorsOfFaces.empty()) {
            mesh.notes.emplace_back("both vertices and faces have colors; those of the vertices are shown");
            colorsOfFaces.clear();
        }
        _spreadFaces();
        mesh.colors.resize(mesh.positions.size(), DEFAULT_COLOR);
        _colorEdges();
        _setMaterials();
        mesh.partCount = mesh.triangles.empty() && mesh.lines.empty() ? 0 : 1;
        if (mesh.positions.size() > MeshData::LARGEST_COUNT) {
            return Fault{{}, "the mesh has too many vertices"};
        }
        return std::nullopt;
    }

    /// Renumbers what the corner table does not know yet, so that the whole mesh is in its numbers, and takes
    /// the vertices from it.
    void _gather(CornerTable& corners) {
        std::vector<std::uint32_t> origins(corners.size());
        for (std::size_t i = 0; i < origins.size(); ++i) {
            origins[i] = corners[i].vertex;
        }
        gather(mesh.positions, origins);
        gather(mesh.normals, origins);
        gather(mesh.colors, origins);
        gather(mesh.textureCoordinates, origins);
        for (MeshScalar& scalar : mesh.scalars) {
            gather(scalar.values, origins);
        }
    }

    static void _renumber(CornerTable& corners, unsigned int& vertex) {
        vertex = corners.indexOf({vertex, 0, 0, CornerTable::NONE});
    }

    void _renumberOthers(CornerTable& corners, std::vector<Triangle>& triangles) {
        for (Triangle& triangle : triangles) {
            _renumber(corners, triangle.e0);
            _renumber(corners, triangle.e1);
            _renumber(corners, triangle.e2);
        }
        for (MeshLine& line : mesh.lines) {
            _renumber(corners, line.e0);
            _renumber(corners, line.e1);
        }
    }

    void _splitByWedges() {
        if (hasWedges) {
            _renumberOthers(table, strips);
            _gather(table);
        }
        if (areWedgesFilled) {
            mesh.textureCoordinates.resize(table.size());
            for (std::size_t i = 0; i < table.size(); ++i) {
                CornerTable::Corner const& corner = table[i];
                Vector2<float>& place = mesh.textureCoordinates[i];
                place = {0, 0};
                if (corner.material != CornerTable::NONE) {
                    std::memcpy(&place.x, &corner.texture, sizeof place.x);
                    std::memcpy(&place.y, &corner.normal, sizeof place.y);
                }
            }
        }
    }

    static bool _isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
    static bool _isSame(Color4<float> const& a, Color4<float> const& b) {
        return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
    }

    template <class T>
    static bool _areAlike(std::vector<T> const& values) {
        return std::all_of(values.begin(), values.end(),
                           [&values](T const& value) { return _isSame(value, values.front()); });
    }

    /// Gives every corner of a face what the face has. Where all faces have the same no vertex is repeated.
    void _spreadFaces() {
        bool const areAlike = _areAlike(colorsOfFaces) &&
                              std::all_of(faceScalars.begin(), faceScalars.end(),
                                          [](MeshScalar const& scalar) { return _areAlike(scalar.values); });
        std::vector<std::uint32_t> faces;  // by vertex
        if (areAlike) {
            faces.assign(mesh.positions.size(), 0);
        } else {
            CornerTable corners;
            for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
                std::uint32_t const face = triangleFaces[i];
                Triangle& triangle = mesh.triangles[i];
                for (unsigned int* const vertex : {&triangle.e0, &triangle.e1, &triangle.e2}) {
                    *vertex = corners.indexOf({*vertex, face, 0, 0});
                }
            }
            _renumberOthers(corners, strips);
            _gather(corners);
            faces.resize(corners.size());
            for (std::size_t i = 0; i < faces.size(); ++i) {
                faces[i] = corners[i].material == CornerTable::NONE ? CornerTable::NONE : corners[i].texture;
            }
        }
        _takeFromFaces(faces);
        mesh.triangles.insert(mesh.triangles.end(), strips.begin(), strips.end());
        if (hasTextureNumbers) {
            mesh.triangleMaterials.resize(mesh.triangles.size(), _materialOf(-1));
        }
    }

    void _takeFromFaces(std::vector<std::uint32_t> const& faces) {
        if (!colorsOfFaces.empty()) {
            mesh.hasVertexColors = true;
            mesh.colors.reserve(faces.size());
            for (std::uint32_t const face : faces) {
                mesh.colors.push_back(face == CornerTable::NONE ? DEFAULT_COLOR : colorsOfFaces[face]);
            }
        }
        std::unordered_set<std::string> taken;
        for (MeshScalar const& scalar : mesh.scalars) {
            taken.insert(scalar.name);
        }
        for (MeshScalar& scalar : faceScalars) {
            if (scalar.values.empty()) {
                continue;
            }
            bool const isTaken = !taken.insert(scalar.name).second;
            MeshScalar spread{(isTaken ? "face " : "") + scalar.name, {}, {}};
            taken.insert(spread.name);
            spread.values.reserve(faces.size());
            for (std::uint32_t const face : faces) {
                spread.values.push_back(face == CornerTable::NONE ? std::numeric_limits<double>::quiet_NaN()
                                                                  : scalar.values[face]);
            }
            mesh.scalars.push_back(std::move(spread));
        }
    }

    /// Edges with colors of their own have vertices of their own.
    void _colorEdges() {
        if (edgeColors.empty()) {
            return;
        }
        std::size_t const kept = mesh.positions.size();
        std::vector<std::uint32_t> places(kept);
        for (std::size_t i = 0; i < kept; ++i) {
            places[i] = static_cast<std::uint32_t>(i);
        }
        for (MeshLine& line : mesh.lines) {
            for (unsigned int* const vertex : {&line.e0, &line.e1}) {
                places.push_back(*vertex);
                *vertex = static_cast<unsigned int>(places.size() - 1);
            }
        }
        gather(mesh.positions, places);
        gather(mesh.normals, places);
        gather(mesh.colors, places);
        gather(mesh.textureCoordinates, places);
        for (MeshScalar& scalar : mesh.scalars) {
            gather(scalar.values, places);
        }
        for (std::size_t i = 0; i < edgeColors.size(); ++i) {
            mesh.colors[kept + 2 * i] = edgeColors[i];
            mesh.colors[kept + 2 * i + 1] = edgeColors[i];
        }
        mesh.hasVertexColors = true;
    }

    void _setMaterials() {
        for (std::string const& texture : textures) {
            mesh.materials.emplace_back();
            mesh.materials.back().texture = texture;
        }
        if (textures.empty() || hasTextureNumbers) {
            mesh.materials.emplace_back();
        }
    }

    PlyHeader const& header;
    std::vector<std::string> textures;
    PlyBody body;
    PlyElement const* vertexElement = nullptr;
    std::uint64_t vertexCount = 0;
    bool hasNormals = false;

    std::vector<unsigned int> corners;  // of the face that is read
    PolygonCutter cutter;
    bool hasWedges = false;  // faces have lists of texture coordinates
    bool areWedgesFilled = false;
    CornerTable table;  // of corners with texture coordinates of their own
    bool hasTextureNumbers = false;
    std::vector<Triangle> strips;

    // What faces have apart from their vertices; empty where they have nothing.
    Colors faceColors;
    std::vector<std::uint32_t> triangleFaces;
    std::uint32_t faceCount = 0;
    std::vector<Color4<float>> colorsOfFaces;
    std::vector<MeshScalar> faceScalars;

    std::vector<Color4<float>> edgeColors;

    MeshData mesh;
};

}  // namespace

Result<MeshData> readPlyMesh(std::string_view bytes, Progress const& progress) {
    std::optional<PlyHeader> const plyHeader = readPlyHeader(bytes);
    if (!plyHeader) {
        return Fault{{}, "the header of the PLY file is cut off or not understood"};
    }
    return PlyReader(bytes, *plyHeader, progress).read();
}

}  // namespace vellum::viewport
