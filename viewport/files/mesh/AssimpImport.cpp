#include "viewport/files/mesh/AssimpImport.h"

#include "foundation/geometry/Matrix4.h"
#include "viewport/files/common/MappedFile.h"
#include "viewport/files/mesh/DeclaredCounts.h"
#include "viewport/text/Words.h"
#include "viewport/text/lower_case.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>

#include <assimp/DefaultLogger.hpp>
#include <assimp/Importer.hpp>
#include <assimp/LogStream.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/mesh.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

namespace vellum::viewport {

namespace {

constexpr Color4<float> PLAIN_COLOR{0.74F, 0.76F, 0.80F, 1.0F};  // of surfaces without a color

// == Assimp's log ==

/// Keeps the first message in Assimp's log, while it lives, that reports damage which Assimp goes on to
/// ignore.
class DamageWatch {
public:
    DamageWatch() {
        Assimp::DefaultLogger::create("", Assimp::Logger::NORMAL, 0);
        // The logger deletes its streams.
        Assimp::DefaultLogger::get()->attachStream(new Stream(firstNote),
                                                   Assimp::Logger::Err | Assimp::Logger::Warn);
    }
    ~DamageWatch() { Assimp::DefaultLogger::kill(); }
    DamageWatch(DamageWatch const&) = delete;
    DamageWatch& operator=(DamageWatch const&) = delete;

    std::string const& note() const { return firstNote; }  ///< empty while there is none

private:
    class Stream : public Assimp::LogStream {
    public:
        explicit Stream(std::string& note) : firstNote(note) {}

        void write(char const* line) override {
            // Other notes are about what the drawing does without: textures, animations, unknown extensions.
            static constexpr std::string_view DAMAGE[] = {"out of range",         "out-of-range",
                                                          "out of bounds",        "outside the allowed range",
                                                          "header is incorrect",  "unexpected end of file",
                                                          "unexpected eof",       "invalid face index",
                                                          "zero indices",         "invalid vertex index",
                                                          "invalid polygon index"};
            std::string const text = lowerCase(line);
            bool const tellsDamage =
                std::any_of(std::begin(DAMAGE), std::end(DAMAGE),
                            [&](auto const& words) { return text.find(words) != std::string::npos; });
            if (tellsDamage && firstNote.empty()) {
                firstNote = _withoutPrefix(line);
            }
        }

    private:
        /// The line without "Error, T0: " in front and the line end behind.
        static std::string _withoutPrefix(std::string_view line) {
            std::size_t const colon = line.find(": ");
            if (colon != std::string_view::npos) {
                line.remove_prefix(colon + 2);
            }
            return std::string(line.substr(0, line.find('\n')));
        }

        std::string& firstNote;
    };

    std::string firstNote;
};

// == Checks ==

std::optional<Fault> firstFault(std::string const& file, aiMesh const& mesh) {
    for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
        aiFace const& face = mesh.mFaces[f];
        for (unsigned int k = 0; k < face.mNumIndices; ++k) {
            if (face.mIndices[k] >= mesh.mNumVertices) {
                return Fault{file, "face " + std::to_string(f) + " has vertex index " +
                                       std::to_string(face.mIndices[k]) + ", out of range: there are " +
                                       std::to_string(mesh.mNumVertices) + " vertices"};
            }
        }
    }
    for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
        aiVector3D const& p = mesh.mVertices[v];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) {
            return Fault{file, "vertex " + std::to_string(v) +
                                   " has a coordinate that is not a number or infinite"};
        }
    }
    return std::nullopt;
}

std::optional<Fault> firstFault(std::string const& file, aiScene const& scene) {
    for (unsigned int m = 0; m < scene.mNumMeshes; ++m) {
        if (std::optional<Fault> fault = firstFault(file, *scene.mMeshes[m])) {
            return fault;
        }
    }
    return std::nullopt;
}

// == What is up ==

/// The up_axis of a COLLADA file; nothing where it has none that is seen.
std::optional<UpAxis> upOfCollada(std::string const& path) {
    Result<MappedFile> const file = MappedFile::open(path);
    // It stands before all lists of numbers.
    constexpr std::size_t FAR_ENOUGH = 1 << 16;
    std::string_view const start =
        file.isOk() ? file.value().bytes().substr(0, FAR_ENOUGH) : std::string_view();
    constexpr std::string_view ELEMENT = "<up_axis>";
    std::size_t const place = start.find(ELEMENT);
    if (place == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view rest = start.substr(place + ELEMENT.size());
    std::string_view const word = takeWord(rest).substr(0, 4);
    return word == "X_UP"   ? std::optional<UpAxis>(UpAxis::X)
           : word == "Y_UP" ? std::optional<UpAxis>(UpAxis::Y)
           : word == "Z_UP" ? std::optional<UpAxis>(UpAxis::Z)
                            : std::nullopt;
}

/// What a scene of an FBX file says; nothing for other scenes.
std::optional<UpAxis> upOfMetadata(aiScene const& scene) {
    std::int32_t axis = -1;
    std::int32_t sign = 1;
    if (scene.mMetaData == nullptr || !scene.mMetaData->Get("UpAxis", axis) || axis < 0 || axis > 2) {
        return std::nullopt;
    }
    scene.mMetaData->Get("UpAxisSign", sign);
    static constexpr UpAxis AXES[2][3] = {{UpAxis::X, UpAxis::Y, UpAxis::Z},
                                          {UpAxis::MINUS_X, UpAxis::MINUS_Y, UpAxis::MINUS_Z}};
    return AXES[sign < 0 ? 1 : 0][axis];
}

/// Whether a matrix only exchanges axes and changes their signs.
bool turnsByRightAngles(aiMatrix4x4 const& m) {
    for (unsigned int row = 0; row < 4; ++row) {
        for (unsigned int column = 0; column < 4; ++column) {
            float const size = std::abs(m[row][column]);
            bool const isWhole = size < 1e-5F || std::abs(size - 1) < 1e-5F;
            bool const isPlace = column == 3 && row < 3 && size >= 1e-5F;
            if (!isWhole || isPlace) {
                return false;
            }
        }
    }
    return true;
}

/// What is up in a scene, which has the coordinates of the file afterwards: importers of some formats turn their
/// z to y with a matrix of the root.
UpAxis settleUp(aiScene const& scene, std::string const& extension) {
    if (std::optional<UpAxis> const said = upOfMetadata(scene)) {
        return *said;
    }
    UpAxis const up = upOfFormat(extension);
    aiNode* const root = scene.mRootNode;
    if (up == UpAxis::Y || root == nullptr) {
        return up;
    }
    if (turnsByRightAngles(root->mTransformation)) {
        root->mTransformation = aiMatrix4x4();
        return up;
    }
    // Turned and scaled: the importer's coordinates.
    return root->mTransformation.IsIdentity() ? up : UpAxis::Y;
}

// == From a scene to one mesh ==

Matrix4<double> toMatrix(aiMatrix4x4 const& m) {
    return {{m.a1, m.b1, m.c1, m.d1, m.a2, m.b2, m.c2, m.d2, m.a3, m.b3, m.c3, m.d3, m.a4, m.b4, m.c4, m.d4}};
}

Vector3<double> column(Matrix4<double> const& m, int index) {
    return {m.e[4 * index], m.e[4 * index + 1], m.e[4 * index + 2]};
}

Vector3<double> toVector(aiVector3D const& v) {
    return {v.x, v.y, v.z};
}

/// Colors of a material or a vertex may be anything; what is drawn is opaque and within 0 to 1.
Color4<float> toColor(aiColor4D const& c) {
    auto const component = [](float value) {
        return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0.0F;
    };
    return {component(c.r), component(c.g), component(c.b), 1.0F};
}

Color4<float> materialColor(aiScene const& scene, unsigned int index) {
    if (index >= scene.mNumMaterials) {
        return PLAIN_COLOR;
    }
    aiMaterial const& material = *scene.mMaterials[index];
    aiColor4D diffuse;
    aiString name;
    material.Get(AI_MATKEY_NAME, name);
    if (material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) != AI_SUCCESS) {
        return PLAIN_COLOR;
    }
    // Assimp adds a gray material where a file has none.
    std::string_view const word = name.C_Str();
    bool const isAssimpsGray = diffuse.r == 0.6F && diffuse.g == 0.6F && diffuse.b == 0.6F;
    if (word == AI_DEFAULT_MATERIAL_NAME || (word.empty() && isAssimpsGray)) {
        return PLAIN_COLOR;
    }
    Color4<float> const color = toColor(diffuse);
    bool const isBlack = color.r + color.g + color.b == 0.0F;
    // Files leave the color black where a texture replaces it; without the texture nothing would be seen.
    bool const isReplaced = material.GetTextureCount(aiTextureType_DIFFUSE) > 0 ||
                            material.GetTextureCount(aiTextureType_BASE_COLOR) > 0;
    return isBlack && isReplaced ? PLAIN_COLOR : color;
}

/// Takes over a texture that the file itself holds.
void takeTexture(aiTexture const& texture, Material& material) {
    constexpr unsigned int LONGEST_SIDE = 16384;
    if (texture.mHeight == 0) {
        // A picture file; the width is its size in bytes.
        unsigned char const* const bytes = reinterpret_cast<unsigned char const*>(texture.pcData);
        material.textureBytes.assign(bytes, bytes + texture.mWidth);
    } else if (texture.mWidth > 0 && texture.mWidth <= LONGEST_SIDE && texture.mHeight <= LONGEST_SIDE) {
        material.texelColumns = texture.mWidth;
        material.texelRows = texture.mHeight;
        std::size_t const count = std::size_t(texture.mWidth) * texture.mHeight;
        material.textureBytes.reserve(4 * count);
        for (std::size_t i = 0; i < count; ++i) {
            aiTexel const& texel = texture.pcData[i];
            material.textureBytes.insert(material.textureBytes.end(), {texel.r, texel.g, texel.b, texel.a});
        }
    }
}

/// The diffuse texture of a material: its name and, if the file itself holds it, its bytes.
Material toMaterial(aiScene const& scene, unsigned int index) {
    Material material;
    if (index >= scene.mNumMaterials) {
        return material;
    }
    aiMaterial const& source = *scene.mMaterials[index];
    aiColor4D diffuse;
    if (source.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == AI_SUCCESS) {
        Color4<float> const color = toColor(diffuse);
        material.tint = color.r + color.g + color.b > 0 ? color : material.tint;
    }
    aiString name;
    for (aiTextureType const& kind : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}) {
        if (source.GetTexture(kind, 0, &name) != AI_SUCCESS || name.length == 0) {
            continue;
        }
        material.texture = name.C_Str();
        aiTexture const* const embedded = scene.GetEmbeddedTexture(name.C_Str());
        if (embedded != nullptr && embedded->pcData != nullptr) {
            takeTexture(*embedded, material);
        }
        break;
    }
    return material;
}

/// Collects the meshes of a scene into one.
class Collector {
public:
    Collector(aiScene const& scene, bool ignoreNormals) : scene(scene), ignoreNormals(ignoreNormals) {}

    /// \return false where the scene has more vertices or triangles than a mesh may have.
    bool collect() {
        for (unsigned int i = 0; i < scene.mNumMaterials; ++i) {
            collected.materials.push_back(toMaterial(scene, i));
        }
        collected.materials.emplace_back();  // for meshes without a material
        if (scene.mRootNode == nullptr) {
            return true;
        }
        // Not recursive: a file may nest its nodes deeper than the call stack reaches.
        struct Placed {
            aiNode const* node;
            Matrix4<double> transform;
        };
        std::vector<Placed> open{{scene.mRootNode, toMatrix(scene.mRootNode->mTransformation)}};
        while (!open.empty()) {
            Placed const placed = open.back();
            open.pop_back();
            for (unsigned int i = 0; i < placed.node->mNumMeshes; ++i) {
                unsigned int const index = placed.node->mMeshes[i];
                if (index < scene.mNumMeshes && !_add(*scene.mMeshes[index], placed.transform)) {
                    return false;
                }
            }
            for (unsigned int i = placed.node->mNumChildren; i-- > 0;) {
                aiNode const* const child = placed.node->mChildren[i];
                open.push_back({child, placed.transform * toMatrix(child->mTransformation)});
            }
        }
        return true;
    }

    MeshData take() {
        if (!hasNormals) {
            collected.normals.clear();
        }
        if (!hasTextureCoordinates) {
            collected.textureCoordinates.clear();
        }
        return std::move(collected);
    }

private:
    bool _add(aiMesh const& mesh, Matrix4<double> const& transform) {
        bool const hasTriangle = std::any_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                                             [](aiFace const& face) { return face.mNumIndices == 3; });
        if (!hasTriangle) {
            return true;
        }
        std::size_t const base = collected.positions.size();
        if (base + mesh.mNumVertices > MeshData::LARGEST_COUNT ||
            collected.triangles.size() + mesh.mNumFaces > MeshData::LARGEST_COUNT) {
            return false;
        }
        Vector3<double> const axes[3] = {column(transform, 0), column(transform, 1), column(transform, 2)};
        bool const isMirrored = dot(cross(axes[0], axes[1]), axes[2]) < 0;
        _addVertices(mesh, axes, column(transform, 3), isMirrored);
        _addTriangles(mesh, static_cast<unsigned int>(base), isMirrored);
        ++collected.partCount;
        return true;
    }

    void _addVertices(aiMesh const& mesh, Vector3<double> const (&axes)[3], Vector3<double> const& origin,
                      bool isMirrored) {
        // Normals turn with the inverse of the transpose, which up to a factor is this matrix of cofactors.
        double const side = isMirrored ? -1 : 1;
        Vector3<double> const normalAxes[3] = {cross(axes[1], axes[2]) * side, cross(axes[2], axes[0]) * side,
                                               cross(axes[0], axes[1]) * side};
        Color4<float> const color = materialColor(scene, mesh.mMaterialIndex);
        bool const hasColors = mesh.HasVertexColors(0);
        bool const hasTexture = mesh.HasTextureCoords(0);
        collected.hasVertexColors = collected.hasVertexColors || hasColors;
        hasTextureCoordinates = hasTextureCoordinates || hasTexture;

        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            Vector3<double> const p = toVector(mesh.mVertices[v]);
            collected.positions.push_back(axes[0] * p.x + axes[1] * p.y + axes[2] * p.z + origin);

            Vector3<double> normal{0, 0, 0};
            if (mesh.HasNormals() && !ignoreNormals) {
                Vector3<double> const n = toVector(mesh.mNormals[v]);
                normal = normalAxes[0] * n.x + normalAxes[1] * n.y + normalAxes[2] * n.z;
            }
            double const size = length(normal);
            bool const isUsable = std::isfinite(size) && size > 0;
            collected.normals.push_back(isUsable ? convert<float>(normal * (1 / size))
                                                 : Vector3<float>{0, 0, 0});
            hasNormals = hasNormals || isUsable;

            collected.colors.push_back(hasColors ? toColor(mesh.mColors[0][v]) : color);

            Vector2<float> texture{0, 0};
            if (hasTexture) {
                aiVector3D const& t = mesh.mTextureCoords[0][v];
                texture = std::isfinite(t.x) && std::isfinite(t.y) ? Vector2<float>{t.x, t.y} : texture;
            }
            collected.textureCoordinates.push_back(texture);
        }
    }

    void _addTriangles(aiMesh const& mesh, unsigned int base, bool isMirrored) {
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
            aiFace const& face = mesh.mFaces[f];
            if (face.mNumIndices != 3) {
                continue;
            }
            unsigned int const a = base + face.mIndices[0];
            unsigned int const b = base + face.mIndices[1];
            unsigned int const c = base + face.mIndices[2];
            // Mirroring turns the front of a triangle to the back; swapping two corners turns it again.
            collected.triangleMaterials.push_back(std::min(mesh.mMaterialIndex, scene.mNumMaterials));
            collected.triangles.push_back(isMirrored ? MeshData::Triangle{a, c, b}
                                                     : MeshData::Triangle{a, b, c});
        }
    }

    aiScene const& scene;
    bool const ignoreNormals;
    MeshData collected;
    bool hasNormals = false;
    bool hasTextureCoordinates = false;
};

std::optional<Fault> declaredCountsFault(std::string const& path, std::string const& extension) {
    if (extension != ".ply" && extension != ".off") {
        return std::nullopt;
    }
    // Mapped: the importer reads the file again, and the check should not hold a copy of it meanwhile.
    Result<MappedFile> const file = MappedFile::open(path);
    std::string_view const bytes = file.isOk() ? file.value().bytes() : std::string_view();
    return extension == ".ply" ? plyFault(path, bytes) : offFault(path, bytes);
}

}  // namespace

Result<MeshData> importWithAssimp(std::string const& path) {
    auto const fault = [&path](std::string const& message) { return Fault{path, message}; };
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());

    DamageWatch const watch;
    Assimp::Importer importer;
    if (extension.empty()) {
        return fault("the file name has no extension that tells the format");
    }
    if (!importer.IsExtensionSupported(extension)) {
        return fault("unknown mesh file extension '" + extension + "'");
    }
    if (std::optional<Fault> const damage = declaredCountsFault(path, extension)) {
        return *damage;
    }

    std::optional<UpAxis> const said = extension == ".dae" ? upOfCollada(path) : std::nullopt;
    // The importer need not turn what the drawing turns.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, said.has_value());

    // Postprocessing trusts the indices, so they are checked before it.
    aiScene const* scene = importer.ReadFile(path, 0);
    if (scene == nullptr) {
        std::string const reason = importer.GetErrorString();
        return fault("not a readable mesh: " + (reason.empty() ? "the importer gives no reason" : reason));
    }
    if (!watch.note().empty()) {
        return fault("the file is damaged: " + watch.note());
    }
    if (std::optional<Fault> const damage = firstFault(path, *scene)) {
        return *damage;
    }
    scene = importer.ApplyPostProcessing(aiProcess_Triangulate);
    if (scene == nullptr) {
        return fault(std::string("cannot cut the faces into triangles: ") + importer.GetErrorString());
    }

    UpAxis const up = said ? *said : settleUp(*scene, extension);

    // An STL file has a normal for each facet and none for a vertex.
    Collector collector(*scene, extension == ".stl");
    if (!collector.collect()) {
        return fault("the mesh has too many vertices or triangles");
    }
    MeshData mesh = collector.take();
    mesh.up = up;
    mesh.name = std::filesystem::path(path).filename().string();
    if (std::optional<Fault> const damage = mesh.firstFault(path)) {
        return *damage;
    }
    return mesh;
}

bool isMeshExtension(std::string const& extension) {
    return !extension.empty() && Assimp::Importer().IsExtensionSupported(extension);
}

}  // namespace vellum::viewport
