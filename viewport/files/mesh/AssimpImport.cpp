#include "viewport/files/mesh/AssimpImport.h"

#include "foundation/geometry/Matrix4.h"
#include "viewport/files/common/MappedFile.h"
#include "viewport/files/mesh/AssimpPose.h"
#include "viewport/files/mesh/DeclaredCounts.h"
#include "viewport/files/mesh/assimp_materials.h"
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
#include <assimp/mesh.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

namespace vellum::viewport {

namespace {

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
            // Other notes are about what the drawing does without: textures, unknown extensions.
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
std::optional<UpAxis> upOfCollada(std::string_view bytes) {
    // It stands before all lists of numbers.
    constexpr std::size_t FAR_ENOUGH = 1 << 16;
    std::string_view const start = bytes.substr(0, FAR_ENOUGH);
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

/// What is up in a scene, which has the coordinates of the file afterwards: importers of some formats turn
/// their z to y with a matrix of the root.
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

Vector3<double> column(Matrix4<double> const& m, int index) {
    return {m.e[4 * index], m.e[4 * index + 1], m.e[4 * index + 2]};
}

Vector3<double> toVector(aiVector3D const& v) {
    return {v.x, v.y, v.z};
}

/// Collects the meshes of a scene into one.
class Collector {
public:
    /// What of a format is not to be taken from its importer.
    struct Lacks {
        bool normals;
        bool bones;
        bool morphs;
    };

    Collector(aiScene const& scene, AssimpPose const& pose, Lacks const& lacks)
        : scene(scene), pose(pose), lacks(lacks) {}

    /// \return false where the scene has more vertices or triangles than a mesh may have.
    bool collect() {
        for (unsigned int i = 0; i < scene.mNumMaterials; ++i) {
            collected.materials.push_back(materialOf(scene, i, collected.notes));
        }
        collected.materials.emplace_back();  // for meshes without a material
        collected.animations = animationsOf(scene);
        for (AssimpPose::Place const& place : pose.places()) {
            for (unsigned int i = 0; i < place.node->mNumMeshes; ++i) {
                unsigned int const index = place.node->mMeshes[i];
                if (index < scene.mNumMeshes && !_add(*scene.mMeshes[index], place)) {
                    return false;
                }
            }
        }
        if (hasLostMorphs) {
            collected.notes.emplace_back("morph targets are not shown");
        }
        if (hasBrightColors) {
            collected.notes.emplace_back("colors of vertices above 1 are shown as 1");
        }
        return true;
    }

    MeshData take() {
        collected.makeVisible();
        if (!hasNormals) {
            collected.normals.clear();
        }
        if (!hasTextureCoordinates) {
            collected.textureCoordinates.clear();
        }
        return std::move(collected);
    }

private:
    /// A matrix in the form in which vertices go through it.
    struct Mover {
        Vector3<double> axes[3];
        Vector3<double> origin;
        Vector3<double> normalAxes[3];
        bool isMirrored;

        explicit Mover(Matrix4<double> const& m)
            : axes{column(m, 0), column(m, 1), column(m, 2)}
            , origin(column(m, 3))
            , isMirrored(dot(cross(axes[0], axes[1]), axes[2]) < 0) {
            // Normals turn with the inverse of the transpose, which up to a factor is this matrix of
            // cofactors.
            double const side = isMirrored ? -1 : 1;
            normalAxes[0] = cross(axes[1], axes[2]) * side;
            normalAxes[1] = cross(axes[2], axes[0]) * side;
            normalAxes[2] = cross(axes[0], axes[1]) * side;
        }

        Vector3<double> place(Vector3<double> const& p) const {
            return axes[0] * p.x + axes[1] * p.y + axes[2] * p.z + origin;
        }
        Vector3<double> normal(Vector3<double> const& n) const {
            return normalAxes[0] * n.x + normalAxes[1] * n.y + normalAxes[2] * n.z;
        }
    };

    bool _add(aiMesh const& mesh, AssimpPose::Place const& at) {
        bool const isDrawn = std::any_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces, [](aiFace const& face) {
            return face.mNumIndices >= 1 && face.mNumIndices <= 3;
        });
        if (!isDrawn) {
            return true;
        }
        std::size_t const base = collected.positions.size();
        std::size_t const faces =
            std::max({collected.triangles.size(), collected.lines.size(), collected.points.size()});
        if (base + mesh.mNumVertices > MeshData::LARGEST_COUNT ||
            faces + mesh.mNumFaces > MeshData::LARGEST_COUNT) {
            return false;
        }
        Matrix4<double> const& transform = at.transform;
        Mover const whole(transform);
        std::vector<Matrix4<double>> const bones =
            lacks.bones ? std::vector<Matrix4<double>>() : pose.vertexTransforms(mesh, transform);
        // Bones do not mirror by themselves: those of a mesh agree.
        bool const isMirrored = bones.empty() ? whole.isMirrored : Mover(bones.front()).isMirrored;
        _addVertices(mesh, _shapeOf(mesh, *at.node), whole, bones);
        _addFaces(mesh, static_cast<unsigned int>(base), isMirrored);
        ++collected.partCount;
        return true;
    }

    Color4<float> _vertexColor(aiMesh const& mesh, unsigned int v, Color4<float> const& surface) {
        aiColor4D const& c = mesh.mColors[0][v];
        hasBrightColors = hasBrightColors || c.r > 1 || c.g > 1 || c.b > 1;
        Color4<float> color = colorOf(c.r, c.g, c.b, c.a);
        if (multipliesVertexColors(scene, mesh.mMaterialIndex)) {
            bool const isSolid = collected.materials[mesh.mMaterialIndex].alphaMode == AlphaMode::SOLID;
            color = {color.r * surface.r, color.g * surface.g, color.b * surface.b, isSolid ? 1 : color.a};
        }
        return color;
    }

    AssimpPose::Shape _shapeOf(aiMesh const& mesh, aiNode const& node) {
        bool const areLost = lacks.morphs || !pose.hasSoundWeights(mesh, node);
        hasLostMorphs = hasLostMorphs || (areLost && mesh.mNumAnimMeshes > 0);
        return lacks.morphs ? AssimpPose::Shape() : pose.morphed(mesh, node);
    }

    void _addVertices(aiMesh const& mesh, AssimpPose::Shape const& shape, Mover const& whole,
                      std::vector<Matrix4<double>> const& bones) {
        Color4<float> const color = surfaceColorOf(scene, mesh.mMaterialIndex);
        bool const hasColors = mesh.HasVertexColors(0);
        // Importers of some formats name lists that they do not give.
        unsigned int const named = coordinatesOf(scene, mesh.mMaterialIndex);
        unsigned int const list = mesh.HasTextureCoords(named) ? named : 0;
        bool const hasTexture = mesh.HasTextureCoords(list);
        collected.hasVertexColors = collected.hasVertexColors || hasColors;
        hasTextureCoordinates = hasTextureCoordinates || hasTexture;

        for (unsigned int v = 0; v < mesh.mNumVertices; ++v) {
            std::optional<Mover> own;
            if (!bones.empty()) {
                own.emplace(bones[v]);
            }
            Mover const& mover = own ? *own : whole;
            collected.positions.push_back(
                mover.place(shape.places.empty() ? toVector(mesh.mVertices[v]) : shape.places[v]));

            Vector3<double> normal{0, 0, 0};
            if (mesh.HasNormals() && !lacks.normals) {
                normal = mover.normal(shape.normals.empty() ? toVector(mesh.mNormals[v]) : shape.normals[v]);
            }
            double const size = length(normal);
            bool const isUsable = std::isfinite(size) && size > 0;
            collected.normals.push_back(isUsable ? convert<float>(normal * (1 / size))
                                                 : Vector3<float>{0, 0, 0});
            hasNormals = hasNormals || isUsable;

            collected.colors.push_back(hasColors ? _vertexColor(mesh, v, color) : color);

            Vector2<float> texture{0, 0};
            if (hasTexture) {
                aiVector3D const& t = mesh.mTextureCoords[list][v];
                texture = std::isfinite(t.x) && std::isfinite(t.y) ? Vector2<float>{t.x, t.y} : texture;
            }
            collected.textureCoordinates.push_back(texture);
        }
    }

    void _addFaces(aiMesh const& mesh, unsigned int base, bool isMirrored) {
        for (unsigned int f = 0; f < mesh.mNumFaces; ++f) {
            aiFace const& face = mesh.mFaces[f];
            if (face.mNumIndices == 1) {
                collected.points.push_back(base + face.mIndices[0]);
            } else if (face.mNumIndices == 2) {
                collected.lines.push_back({base + face.mIndices[0], base + face.mIndices[1]});
            } else if (face.mNumIndices == 3) {
                _addTriangle(mesh, face, base, isMirrored);
            }
        }
    }

    void _addTriangle(aiMesh const& mesh, aiFace const& face, unsigned int base, bool isMirrored) {
        unsigned int const a = base + face.mIndices[0];
        unsigned int const b = base + face.mIndices[1];
        unsigned int const c = base + face.mIndices[2];
        // Mirroring turns the front of a triangle to the back; swapping two corners turns it again.
        collected.triangleMaterials.push_back(std::min(mesh.mMaterialIndex, scene.mNumMaterials));
        collected.triangles.push_back(isMirrored ? MeshData::Triangle{a, c, b} : MeshData::Triangle{a, b, c});
    }

    aiScene const& scene;
    AssimpPose const& pose;
    Lacks const lacks;
    MeshData collected;
    bool hasLostMorphs = false;
    bool hasBrightColors = false;
    bool hasNormals = false;
    bool hasTextureCoordinates = false;
};

/// What the bytes say that the importer does not.
struct FirstLook {
    std::optional<Fault> fault;
    std::optional<UpAxis> up;
};

FirstLook lookAt(std::string const& name, std::string_view bytes, std::string const& extension) {
    FirstLook look;
    look.fault = extension == ".ply"   ? plyFault(name, bytes)
                 : extension == ".off" ? offFault(name, bytes)
                                       : std::nullopt;
    look.up = extension == ".dae" ? upOfCollada(bytes) : std::nullopt;
    return look;
}

/// What is imported: bytes, or what is at a path.
struct Source {
    std::string const& name;
    std::string const& extension;
    std::optional<std::string_view> bytes;
    FirstLook look;
};

NodeWeights nodeWeights(Source const& source) {
    if (source.bytes) {
        return gltfNodeWeights(*source.bytes);
    }
    Result<MappedFile> const file = MappedFile::open(source.name);
    return file.isOk() ? gltfNodeWeights(file.value().bytes()) : NodeWeights();
}

Result<MeshData> importSource(Source const& source, MeshOptions const& options) {
    std::string const& path = source.name;
    std::string const& extension = source.extension;
    auto const fault = [&path](std::string const& message) { return Fault{path, message}; };

    DamageWatch const watch;
    Assimp::Importer importer;
    if (extension.empty()) {
        return fault("the file name has no extension that tells the format");
    }
    if (!importer.IsExtensionSupported(extension)) {
        return fault("unknown mesh file extension '" + extension + "'");
    }
    if (source.look.fault) {
        return *source.look.fault;
    }

    std::optional<UpAxis> const& said = source.look.up;
    // The importer need not turn what the drawing turns.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, said.has_value());

    // Postprocessing trusts the indices, so they are checked before it.
    aiScene const* scene = source.bytes
                               ? importer.ReadFileFromMemory(source.bytes->data(), source.bytes->size(), 0,
                                                             extension.c_str() + 1)
                               : importer.ReadFile(path, 0);
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
    // Some materials say where their texture lies by a form, such as a cylinder, in place of coordinates.
    scene = importer.ApplyPostProcessing(aiProcess_Triangulate | aiProcess_GenUVCoords);
    if (scene == nullptr) {
        return fault(std::string("cannot cut the faces into triangles: ") + importer.GetErrorString());
    }

    UpAxis const up = said ? *said : settleUp(*scene, extension);

    // An STL file has a normal for each facet and none for a vertex.
    // The importer of MDL files hangs all bones below one node, whatever bone they belong to.
    bool const isGltf = extension == ".gltf" || extension == ".glb" || extension == ".vrm";
    bool const hasMorphs = std::any_of(scene->mMeshes, scene->mMeshes + scene->mNumMeshes,
                                       [](aiMesh const* mesh) { return mesh->mNumAnimMeshes > 0; });
    AssimpPose const pose(*scene, options.time, isGltf && hasMorphs ? nodeWeights(source) : NodeWeights());
    // The weights that importers give of other formats are no weights: of FBX it is 1 for each single shape.
    Collector collector(*scene, pose, {extension == ".stl", extension == ".mdl", !isGltf});
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

}  // namespace

Result<MeshData> importWithAssimp(std::string const& path, MeshOptions const& options) {
    std::string const extension = lowerCase(std::filesystem::path(path).extension().string());
    FirstLook look;
    if (extension == ".ply" || extension == ".off" || extension == ".dae") {
        // The importer reads the file again: it is not held meanwhile.
        Result<MappedFile> const file = MappedFile::open(path);
        look = lookAt(path, file.isOk() ? file.value().bytes() : std::string_view(), extension);
    }
    return importSource({path, extension, std::nullopt, look}, options);
}

Result<MeshData> importWithAssimp(std::string const& name, std::string_view bytes,
                                  std::string const& extension, MeshOptions const& options) {
    return importSource({name, extension, bytes, lookAt(name, bytes, extension)}, options);
}

std::vector<std::string> importedFormats() {
    aiString list;
    Assimp::Importer().GetExtensionList(list);  // "*.3ds;*.obj"
    std::string_view rest(list.C_Str());
    std::vector<std::string> formats;
    while (!rest.empty()) {
        std::size_t const end = std::min(rest.find(';'), rest.size());
        formats.emplace_back(rest.substr(0, end).substr(std::min<std::size_t>(2, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    std::sort(formats.begin(), formats.end());
    formats.erase(std::unique(formats.begin(), formats.end()), formats.end());
    return formats;
}

bool isMeshExtension(std::string const& extension) {
    return !extension.empty() && Assimp::Importer().IsExtensionSupported(extension);
}

}  // namespace vellum::viewport
