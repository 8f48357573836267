#include "Mesh_RL_GL.h"

#include "foundation/basic/ArrayHandle.h"
#include "foundation/basic/ArrayServer.h"
#include "foundation/geometry/Mesh.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/index_02.h"
#include "foundation/raster/Core_RL.h"

#include <cstring>

#include "internal/fresh_pages.h"
#include "internal/gl_api.h"
#include "internal/long_loops.h"
#include "internal/misuse.h"

namespace vellum {

namespace {

using index_02::ui32::NEXT_CIRCULAR;
using index_02::ui32::PREV_CIRCULAR;

// Deliberate (float-third): single-precision weights in double arithmetic.
constexpr double THIRD = static_cast<double>(0.33333334F);
constexpr double NEAR_END = static_cast<double>(0.7F);  // of an edge, from the end that is meant
constexpr double FAR_END = static_cast<double>(0.3F);
constexpr double AT_EDGE = static_cast<double>(0.45F);  // of the point inside the neighbor
constexpr double AT_OPPOSITE = static_cast<double>(0.1F);

constexpr CullingMode CULL_BACK{true, true};
constexpr CullingMode CULL_FRONT{true, false};

constexpr float NO_NORMAL[3] = {0.0F, 0.0F, 0.0F};
constexpr Vector2<float> NO_COORDINATE{0.0F, 0.0F};

bool isModified(ArrayTypeable const* array) {
    return array != nullptr && (array->flags & ARRAY_TYPEABLE_MODIFIED_CONTROL_0) != 0;
}

void clearModified(ArrayTypeable* array) {
    if (array != nullptr) {
        array->flags &= static_cast<unsigned short>(~ARRAY_TYPEABLE_MODIFIED_CONTROL_0);
    }
}

template <class T>
T const* elementsOf(ArrayTypeable const* array) {
    return array != nullptr && array->size != 0 ? array->as<T>() : nullptr;
}

/// Contiguous triples of indices: index 3 t + k belongs to corner k of triangle t.
unsigned int const* indicesOf(ArrayTypeable const* array) {
    auto const* const triples = elementsOf<Tuple3<unsigned int>>(array);
    return triples != nullptr ? static_cast<unsigned int const*>(array->data) : nullptr;
}

float const* componentsOf(Vector3<float> const& v) {
    return &v.x;
}
float const* componentsOf(Color4<float> const& v) {
    return &v.r;
}

Vector3<double> along(Vector3<double> const& p, float const* direction, float length) {
    double const s = static_cast<double>(length);
    return {p.x + s * static_cast<double>(direction[0]), p.y + s * static_cast<double>(direction[1]),
            p.z + s * static_cast<double>(direction[2])};
}

Vector3<double> middle(Vector3<double> const& a, Vector3<double> const& b, Vector3<double> const& c) {
    return (a + b + c) * THIRD;
}

void emitVertex(Vector3<double> const& p) {
    glVertex3dv(&p.x);
}

void emitSegment(Vector3<double> const& from, Vector3<double> const& to) {
    emitVertex(from);
    emitVertex(to);
}

/// Two segments from a point to the two inner points of an edge.
void emitMark(Vector3<double> const& point, Vector3<double> const& a, Vector3<double> const& b) {
    Vector3<double> const nearA = a * NEAR_END + b * FAR_END;
    Vector3<double> const nearB = a * FAR_END + b * NEAR_END;
    emitSegment(nearA, point);
    emitSegment(point, nearB);
}

// The arrays that a drawing reads by index or by triangle, each with the counts or indices that it depends
// on. A fault of one of them skips the drawings that read it, and no others.
constexpr unsigned int TRIANGLES = 1;       // the triangles, and the positions they name
constexpr unsigned int CORNER_NORMALS = 2;  // the normal triangles, and the vertex normals they name
constexpr unsigned int FACE_NORMALS = 4;
constexpr unsigned int ADJACENCY = 8;

// The arrays of each drawing. Positions and vertex normals that are read one by one need no other array.

// render, renderTextured
constexpr unsigned int SMOOTH_SURFACE = TRIANGLES | CORNER_NORMALS;
// renderFaceted, renderFacetedTextured
constexpr unsigned int FACETED_SURFACE = TRIANGLES | FACE_NORMALS;
// renderPoints, with buffers and without
constexpr unsigned int SOUP_POINTS = TRIANGLES;
constexpr unsigned int VERTEX_POINTS = 0;
// renderVertexNormals, renderFaceNormals, renderNormals
constexpr unsigned int VERTEX_NORMAL_LINES = 0;
constexpr unsigned int FACE_NORMAL_LINES = TRIANGLES | FACE_NORMALS;
constexpr unsigned int CORNER_NORMAL_LINES = TRIANGLES | CORNER_NORMALS;
// renderFaceNormals of named arrays, which checks the triangles against the named points itself
constexpr unsigned int NAMED_FACE_LINES = 0;
// renderEdges
constexpr unsigned int EDGES = TRIANGLES | CORNER_NORMALS | ADJACENCY;
// renderEdgesConnection, renderEdgesUnconnected
constexpr unsigned int EDGE_MARKS = TRIANGLES | ADJACENCY;

// Of a fill: about half a megabyte, so that pages that are taken for a range are still in the cache when it
// is written.
constexpr std::size_t TRIANGLES_PER_RANGE = 16384;
constexpr std::size_t EDGES_PER_RANGE = 65536;

// The sources of the surface buffers.
constexpr unsigned int SOUP = TRIANGLES | CORNER_NORMALS | FACE_NORMALS;

unsigned int faultsOf(Mesh const& mesh, unsigned int reads) {
    unsigned int faults = 0;
    auto const look = [&](unsigned int array, MeshFault_ns::type (Mesh::*faultOf)() const) {
        if ((reads & array) != 0 && (mesh.*faultOf)() != MeshFault_ns::NONE) {
            faults |= array;
        }
    };
    look(TRIANGLES, &Mesh::triangleFault);
    look(CORNER_NORMALS, &Mesh::vertexNormalFault);
    look(FACE_NORMALS, &Mesh::faceNormalFault);
    look(ADJACENCY, &Mesh::adjacencyFault);
    return faults;
}

void deleteBuffer(GLuint& name) {
    if (name != 0) {
        glDeleteBuffers(1, &name);
        name = 0;
    }
}

/// Refills one buffer: allocates and maps it, and calls `write` to write it from front to back. With
/// `keepsStore` an existing buffer has the size already.
template <class Write>
void fillBuffer(GLenum target, GLuint& name, bool keepsStore, std::size_t bytes, Write const& write) {
    if (keepsStore && name != 0) {
        glBindBuffer(target, name);
    } else {
        deleteBuffer(name);
        glGenBuffers(1, &name);
        glBindBuffer(target, name);
        glBufferData(target, static_cast<GLsizeiptr>(bytes), nullptr, GL_DYNAMIC_DRAW);
    }
    // A buffer of size 0 cannot be mapped.
    if (bytes != 0) {
        if (void* const memory = glMapBuffer(target, GL_WRITE_ONLY)) {
            write(memory);
        }
        glUnmapBuffer(target);
    }
    glBindBuffer(target, 0);
}

/// Refills a buffer of the soup; `write` writes the three corners of one triangle, on any thread.
template <class Write>
void fillSoup(GLuint& name, bool keepsStore, unsigned int triangleCount, std::size_t floatsPerCorner,
              Write const& write) {
    std::size_t const floatsPerTriangle = 3 * floatsPerCorner;
    fillBuffer(GL_ARRAY_BUFFER, name, keepsStore, triangleCount * floatsPerTriangle * sizeof(float),
               [&](void* memory) {
                   forLongRanges(triangleCount, TRIANGLES_PER_RANGE, [&](std::size_t begin, std::size_t end) {
                       float* out = static_cast<float*>(memory) + begin * floatsPerTriangle;
                       takePages(out, (end - begin) * floatsPerTriangle * sizeof(float));
                       for (std::size_t t = begin; t < end; ++t) {
                           write(out, static_cast<unsigned int>(t));
                           out += floatsPerTriangle;
                       }
                   });
               });
}

}  // namespace

/// The arrays of a mesh during a drawing: counts and elements, with all indices in range, and the records
/// with their modified bits.
class Mesh_RL_GL::Arrays {
public:
    unsigned int faults = 0;         // of the arrays that a drawing reads
    unsigned int triangleCount = 0;  // 0 where the triangles have a fault
    unsigned int vertexCount = 0;
    unsigned int vertexNormalCount = 0;
    Vector3<double> const* positions = nullptr;
    unsigned int const* triangles = nullptr;
    Vector3<float> const* vertexNormals = nullptr;  // null: none
    Color4<float> const* faceNormals = nullptr;     // null: none
    unsigned int const* normalTriangles = nullptr;  // null: the corners have no normals
    unsigned int const* adjacency = nullptr;        // null: none, or one with a fault

    ArrayTypeable* positionRecord = nullptr;
    ArrayTypeable* triangleRecord = nullptr;
    ArrayTypeable* vertexNormalRecord = nullptr;
    ArrayTypeable* normalTriangleRecord = nullptr;
    ArrayTypeable* faceNormalRecord = nullptr;
    ArrayTypeable* adjacencyRecord = nullptr;

    /// Only the arrays in `reads` are checked for faults; the others must not be read by index.
    Arrays(Mesh const* mesh, unsigned int reads) {
        misuse::refuseDeadLayer("Mesh_RL_GL");
        misuse::requireMesh("Mesh_RL_GL", mesh);
        misuse::requireContext("Mesh_RL_GL");
        if (mesh == nullptr) {
            return;
        }
        positionRecord = VL_ArrayServer.resolve(mesh->positions());
        triangleRecord = VL_ArrayServer.resolve(mesh->triangles());
        vertexNormalRecord = VL_ArrayServer.resolve(mesh->vertexNormals());
        normalTriangleRecord = VL_ArrayServer.resolve(mesh->normalTriangles());
        faceNormalRecord = VL_ArrayServer.resolve(mesh->faceNormals());
        adjacencyRecord = VL_ArrayServer.resolve(mesh->adjacency());

        faults = faultsOf(*mesh, reads);
        positions = elementsOf<Vector3<double>>(positionRecord);
        vertexCount = positions != nullptr ? positionRecord->size : 0;
        vertexNormals = elementsOf<Vector3<float>>(vertexNormalRecord);
        vertexNormalCount = vertexNormals != nullptr ? vertexNormalRecord->size : 0;
        if ((faults & TRIANGLES) != 0) {
            return;
        }
        triangles = indicesOf(triangleRecord);
        triangleCount = triangles != nullptr ? triangleRecord->size : 0;
        normalTriangles = (faults & CORNER_NORMALS) == 0 ? indicesOf(normalTriangleRecord) : nullptr;
        faceNormals = (faults & FACE_NORMALS) == 0 ? elementsOf<Color4<float>>(faceNormalRecord) : nullptr;
        adjacency = (faults & EDGES) == 0 ? indicesOf(adjacencyRecord) : nullptr;
    }

    /// The corners that a drawing may draw: all, or none if an array that it reads has a fault.
    unsigned int drawnCorners(unsigned int reads) const {
        return (faults & reads) == 0 ? triangleCount * 3 : 0;
    }

    /// The corners whose edges a drawing may check; none without adjacency.
    unsigned int edgeCorners(unsigned int reads) const {
        return adjacency != nullptr ? drawnCorners(reads) : 0;
    }

    Vector3<double> const& position(unsigned int corner) const { return positions[triangles[corner]]; }

    float const* vertexNormal(unsigned int corner) const {
        return normalTriangles != nullptr ? componentsOf(vertexNormals[normalTriangles[corner]]) : NO_NORMAL;
    }

    float const* faceNormal(unsigned int triangle) const {
        return faceNormals != nullptr ? componentsOf(faceNormals[triangle]) : NO_NORMAL;
    }

    bool areCornerNormalsModified() const {
        return isModified(vertexNormalRecord) || isModified(normalTriangleRecord);
    }

    /// Whether the edge that starts at a soup corner is a border or a crease: the neighbor has another normal
    /// at this corner. Requires the adjacency.
    bool isDrawnEdge(unsigned int corner) const {
        unsigned int const entry = adjacency[corner];
        if (entry == Mesh::ADJACENCY_NONE) {
            return true;
        }
        float const* const own = vertexNormal(corner);
        float const* const other = vertexNormal((entry >> 2) * 3 + (entry & 3U));
        return !(own[0] == other[0] && own[1] == other[1] && own[2] == other[2]);
    }

    /// Clears the modified bits of the sources of the buffers. Arrays with a fault keep theirs, so that they
    /// are checked again until they have none.
    void consume() const {
        if ((faults & TRIANGLES) != 0) {
            return;
        }
        clearModified(positionRecord);
        clearModified(triangleRecord);
        if ((faults & CORNER_NORMALS) == 0) {
            clearModified(vertexNormalRecord);
            clearModified(normalTriangleRecord);
        }
        if ((faults & FACE_NORMALS) == 0) {
            clearModified(faceNormalRecord);
        }
    }
};

/// The texture coordinates of a channel, referenced while they are read.
class Mesh_RL_GL::TextureChannel {
public:
    TextureChannel(Mesh const* mesh, VL_String const& name) {
        if (mesh == nullptr) {
            return;
        }
        ArrayHandle const ownTriangles(mesh->namedArray(MeshArrayInf_ns::TRINDEXED, name.c_str()));
        ArrayHandle const ownValues(mesh->namedArray(MeshArrayInf_ns::PER_FACE, name.c_str()));
        if (ownTriangles.isHolding() && ownValues.isHolding()) {
            triangles = ownTriangles;
            values = ownValues;
            isIndexed = true;
        } else {
            values = ArrayHandle(mesh->namedArray(MeshArrayInf_ns::PER_VERTEX, name.c_str()));
        }
        indices = indicesOf(triangles.resolve());
        indexCount = indices != nullptr ? triangles.resolve()->size * 3 : 0;
        coordinates = elementsOf<Vector2<float>>(values.resolve());
        coordinateCount = coordinates != nullptr ? values.resolve()->size : 0;
    }

    bool isFound() const { return values.isHolding(); }
    bool isModified() const {
        return vellum::isModified(triangles.resolve()) || vellum::isModified(values.resolve());
    }
    void clearModified() const {
        vellum::clearModified(triangles.resolve());
        vellum::clearModified(values.resolve());
    }

    Vector2<float> const& at(Arrays const& arrays, unsigned int corner) const {
        if (isIndexed && corner >= indexCount) {
            return NO_COORDINATE;
        }
        unsigned int const index = isIndexed ? indices[corner] : arrays.triangles[corner];
        return index < coordinateCount ? coordinates[index] : NO_COORDINATE;
    }

private:
    ArrayHandle triangles;  // of an indexed channel
    ArrayHandle values;     // none when the mesh lacks the channel
    bool isIndexed = false;
    unsigned int const* indices = nullptr;
    unsigned int indexCount = 0;
    Vector2<float> const* coordinates = nullptr;
    unsigned int coordinateCount = 0;
};

// == Lifecycle ==

Mesh_RL_GL::Mesh_RL_GL(Mesh* mesh, bool) : Mesh_RL(mesh) {}

Mesh_RL_GL::~Mesh_RL_GL() {
    if (positionBuffer != 0 || indexBuffer != 0) {
        misuse::requireContext("Mesh_RL_GL::~Mesh_RL_GL");
    }
    dropBufferObjects();
}

// == Buffers ==

void Mesh_RL_GL::createBufferObjects(VL_String const* textureChannel, bool withEdges) {
    _updateBuffers(textureChannel, withEdges ? EDGES : 0);
}

void Mesh_RL_GL::dropBufferObjects() {
    // A buffer without a name is filled whatever its arrays say, so nothing else has to be forgotten.
    for (GLuint* const name :
         {&positionBuffer, &smoothNormalBuffer, &facetedNormalBuffer, &texCoordBuffer, &indexBuffer}) {
        deleteBuffer(*name);
    }
}

// Updates the buffers for a drawing of the arrays in `reads`, and returns the number of corners that it may
// draw.
unsigned int Mesh_RL_GL::_updateBuffers(VL_String const* textureChannel, unsigned int reads) const {
    Arrays const arrays(mesh, SOUP | reads);
    bool const keepsStore = arrays.triangleCount == bufferTriangleCount;

    _updateSurface(arrays, keepsStore);
    if (textureChannel != nullptr) {
        _updateTextureCoordinates(arrays, *textureChannel, keepsStore);
    } else if (!keepsStore) {
        _dropTextureCoordinates();
    }

    // Drawings without edges clear the modified bits as well, so changes of the sources of the edges are
    // remembered.
    areEdgesStale = areEdgesStale || !keepsStore || isModified(arrays.triangleRecord) ||
                    arrays.areCornerNormalsModified();
    if ((reads & ADJACENCY) != 0) {
        _updateEdges(arrays, areEdgesStale || isModified(arrays.adjacencyRecord));
        areEdgesStale = false;
        if ((arrays.faults & ADJACENCY) == 0) {
            clearModified(arrays.adjacencyRecord);
        }
    }
    arrays.consume();
    bufferTriangleCount = arrays.triangleCount;
    return positionBuffer != 0 ? arrays.drawnCorners(reads) : 0;
}

void Mesh_RL_GL::_updateSurface(Arrays const& arrays, bool keepsStore) const {
    unsigned int const count = arrays.triangleCount;
    bool const isMoved = isModified(arrays.positionRecord) || isModified(arrays.triangleRecord);
    if (positionBuffer == 0 || !keepsStore || isMoved) {
        fillSoup(positionBuffer, keepsStore, count, 3, [&](float* out, unsigned int t) {
            for (unsigned int k = 0; k < 3; ++k) {
                Vector3<double> const& p = arrays.position(t * 3 + k);
                *out++ = static_cast<float>(p.x);
                *out++ = static_cast<float>(p.y);
                *out++ = static_cast<float>(p.z);
            }
        });
    }

    // Normals with a fault have no buffer: drawings that read them are skipped, and after a repair the buffer
    // is created again, whatever the repair has marked as modified. Without triangles no buffer is read.
    if (count != 0 && (arrays.faults & CORNER_NORMALS) != 0) {
        deleteBuffer(smoothNormalBuffer);
    } else if (smoothNormalBuffer == 0 || !keepsStore || arrays.areCornerNormalsModified()) {
        fillSoup(smoothNormalBuffer, keepsStore, count, 3, [&](float* out, unsigned int t) {
            for (unsigned int k = 0; k < 3; ++k) {
                std::memcpy(out + std::size_t{3} * k, arrays.vertexNormal(t * 3 + k), 3 * sizeof(float));
            }
        });
    }
    if (count != 0 && (arrays.faults & FACE_NORMALS) != 0) {
        deleteBuffer(facetedNormalBuffer);
    } else if (facetedNormalBuffer == 0 || !keepsStore || isModified(arrays.faceNormalRecord)) {
        fillSoup(facetedNormalBuffer, keepsStore, count, 3, [&](float* out, unsigned int t) {
            for (unsigned int k = 0; k < 3; ++k) {
                std::memcpy(out + std::size_t{3} * k, arrays.faceNormal(t), 3 * sizeof(float));
            }
        });
    }
}

void Mesh_RL_GL::_updateTextureCoordinates(Arrays const& arrays, VL_String const& channel,
                                           bool keepsStore) const {
    TextureChannel const coordinates(mesh, channel);
    bool const isAnother =
        textureChannelName == nullptr || std::strcmp(textureChannelName->c_str(), channel.c_str()) != 0;
    if (!isAnother && texCoordBuffer != 0 && keepsStore && !coordinates.isModified()) {
        return;
    }
    if (isAnother) {
        auto* const name = new VL_String(channel);
        delete textureChannelName;
        textureChannelName = name;
    }
    bool const isFound = coordinates.isFound();
    fillSoup(texCoordBuffer, keepsStore, arrays.triangleCount, 2, [&](float* out, unsigned int t) {
        // Deliberate (unwritten-coordinates): the buffer stays unwritten without the channel.
        for (unsigned int k = 0; isFound && k < 3; ++k) {
            Vector2<float> const& coordinate = coordinates.at(arrays, t * 3 + k);
            *out++ = coordinate.x;
            *out++ = coordinate.y;
        }
    });
    coordinates.clearModified();
}

// The store has the size of another triangle count, so a later textured drawing cannot use it.
void Mesh_RL_GL::_dropTextureCoordinates() const {
    deleteBuffer(texCoordBuffer);
    delete textureChannelName;
    textureChannelName = nullptr;
}

// Edges are listed by the soup corner that they start at, in the order in which they are drawn without
// buffers; each gives two indices.
void Mesh_RL_GL::_updateEdges(Arrays const& arrays, bool isStale) const {
    if (!isStale && indexBuffer != 0) {
        return;
    }
    if (indexList.capacity() != arrays.triangleCount * 3) {
        indexList.reserve(arrays.triangleCount * 3, false);
    }
    indexList.clear();
    for (unsigned int corner = 0; corner < arrays.edgeCorners(EDGES); ++corner) {
        if (arrays.isDrawnEdge(corner)) {
            indexList.pushBack(corner);
        }
    }
    indexCount = indexList.size() * 2;
    fillBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer, indexCount == indexBufferCapacity,
               std::size_t{indexCount} * sizeof(GLuint), [&](void* memory) {
                   unsigned int const* const corners = indexList.data();
                   forLongRanges(indexList.size(), EDGES_PER_RANGE, [&](std::size_t begin, std::size_t end) {
                       auto* out = static_cast<GLuint*>(memory) + 2 * begin;
                       takePages(out, 2 * (end - begin) * sizeof(GLuint));
                       for (std::size_t edge = begin; edge < end; ++edge) {
                           unsigned int const corner = corners[edge];
                           unsigned int const k = corner % 3;
                           out[0] = corner;
                           out[1] = corner - k + NEXT_CIRCULAR[k];
                           out += 2;
                       }
                   });
               });
    indexBufferCapacity = indexCount;
}

// Only buffers that exist are enabled: with no buffer bound the offset 0 is a null pointer.
void Mesh_RL_GL::_enableSoup(GLuint normalBuffer, bool isTextured) const {
    glEnableClientState(GL_VERTEX_ARRAY);
    if (normalBuffer != 0) {
        glEnableClientState(GL_NORMAL_ARRAY);
    }
    if (isTextured && texCoordBuffer != 0) {
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glBindBuffer(GL_ARRAY_BUFFER, texCoordBuffer);
        glTexCoordPointer(2, GL_FLOAT, 0, nullptr);
    }
    if (normalBuffer != 0) {
        glBindBuffer(GL_ARRAY_BUFFER, normalBuffer);
        glNormalPointer(GL_FLOAT, 0, nullptr);
    }
    glBindBuffer(GL_ARRAY_BUFFER, positionBuffer);
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
}

void Mesh_RL_GL::_disableSoup(GLuint normalBuffer, bool isTextured) const {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    if (isTextured && texCoordBuffer != 0) {
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    if (normalBuffer != 0) {
        glDisableClientState(GL_NORMAL_ARRAY);
    }
    glDisableClientState(GL_VERTEX_ARRAY);
}

void Mesh_RL_GL::_drawSoup(GLenum mode, GLuint normalBuffer, bool isTextured, unsigned int corners) const {
    _enableSoup(normalBuffer, isTextured);
    glDrawArrays(mode, 0, static_cast<GLsizei>(corners));
    _disableSoup(normalBuffer, isTextured);
}

// == Surfaces ==

void Mesh_RL_GL::render() {
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(nullptr, SMOOTH_SURFACE);
        _drawSoup(GL_TRIANGLES, smoothNormalBuffer, false, corners);
        return;
    }
    Arrays const arrays(mesh, SMOOTH_SURFACE);
    glBegin(GL_TRIANGLES);
    for (unsigned int corner = 0; corner < arrays.drawnCorners(SMOOTH_SURFACE); ++corner) {
        glNormal3fv(arrays.vertexNormal(corner));
        emitVertex(arrays.position(corner));
    }
    glEnd();
}

void Mesh_RL_GL::renderFacetedTextured(VL_String const& channel) {
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(&channel, FACETED_SURFACE);
        _drawSoup(GL_TRIANGLES, facetedNormalBuffer, true, corners);
        return;
    }
    Arrays const arrays(mesh, FACETED_SURFACE);
    TextureChannel const coordinates(mesh, channel);
    glBegin(GL_TRIANGLES);
    for (unsigned int corner = 0; corner < arrays.drawnCorners(FACETED_SURFACE); ++corner) {
        glNormal3fv(arrays.faceNormal(corner / 3));
        glTexCoord2fv(&coordinates.at(arrays, corner).x);
        emitVertex(arrays.position(corner));
    }
    glEnd();
}

void Mesh_RL_GL::renderTextured(VL_String const& channel) {
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(&channel, SMOOTH_SURFACE);
        _drawSoup(GL_TRIANGLES, smoothNormalBuffer, true, corners);
        return;
    }
    Arrays const arrays(mesh, SMOOTH_SURFACE);
    TextureChannel const coordinates(mesh, channel);
    glBegin(GL_TRIANGLES);
    for (unsigned int corner = 0; corner < arrays.drawnCorners(SMOOTH_SURFACE); ++corner) {
        glNormal3fv(arrays.vertexNormal(corner));
        glTexCoord2fv(&coordinates.at(arrays, corner).x);
        emitVertex(arrays.position(corner));
    }
    glEnd();
}

void Mesh_RL_GL::render(MeshShading const& shading) {
    misuse::requireLayer("Mesh_RL_GL::render");
    // The effect of this pass; `shader` may be another one when the pass ends.
    Mesh_RL_Shader* const effect = (shading.flags & MeshShadingFlags_ns::GPU_SHADER) != 0 ? shader : nullptr;
    misuse::requireEffect("Mesh_RL_GL::render", effect);
    if (effect != nullptr) {
        if (!effect->created) {
            effect->create();
        }
        effect->init();
        effect->preprocess();
    }

    if (shading.mode <= MeshShadingMode_ns::SMOOTH) {
        _pushFillings(shading);
        _drawMode(shading);
    }

    if (effect != nullptr) {
        effect->postprocess();
        effect->cleanup();
    }
    // Deliberate (unbalanced-filling-pop): also for a mode without a push.
    VL_Raster->popFillingFront();
    VL_Raster->popFillingBack();
}

// render(MeshShading) pops what this pushes.
void Mesh_RL_GL::_pushFillings(MeshShading const& shading) {
    bool const areLines =
        shading.mode == MeshShadingMode_ns::BOX || shading.mode == MeshShadingMode_ns::WIREFRAME;
    bool const isBackOfLines = areLines || (shading.flags & MeshShadingFlags_ns::WIREFRAME_BACK_FACES) != 0;
    VL_Raster->pushFillingBack(isBackOfLines ? FILLING_LINES : FILLING_SOLID);
    VL_Raster->pushFillingFront(areLines ? FILLING_LINES : FILLING_SOLID);
}

void Mesh_RL_GL::_drawMode(MeshShading const& shading) {
    bool const isTextured = (shading.flags & MeshShadingFlags_ns::TEXTURE) != 0;
    switch (shading.mode) {
    case MeshShadingMode_ns::BOX:
        _drawBox();
        break;
    case MeshShadingMode_ns::WIREFRAME:
        render();
        break;
    case MeshShadingMode_ns::FACETED:
        if (isTextured) {
            renderFacetedTextured(shading.textureChannel);
        } else {
            renderFaceted();
        }
        break;
    case MeshShadingMode_ns::SMOOTH:
        if (isTextured) {
            renderTextured(shading.textureChannel);
        } else {
            render();
        }
        break;
    default:
        break;
    }
}

void Mesh_RL_GL::_drawBox() const {
    if (mesh == nullptr) {
        return;
    }
    if ((mesh->flags() & MESH_GOT_BOX) == 0) {
        mesh->workBox();
    }
    VL_Raster->render(mesh->box(), false);
}

void Mesh_RL_GL::renderFaceted() const {
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(nullptr, FACETED_SURFACE);
        _drawSoup(GL_TRIANGLES, facetedNormalBuffer, false, corners);
        return;
    }
    Arrays const arrays(mesh, FACETED_SURFACE);
    glBegin(GL_TRIANGLES);
    for (unsigned int t = 0; t < arrays.drawnCorners(FACETED_SURFACE) / 3; ++t) {
        glNormal3fv(arrays.faceNormal(t));
        for (unsigned int k = 0; k < 3; ++k) {
            emitVertex(arrays.position(t * 3 + k));
        }
    }
    glEnd();
}

// == Normals ==

void Mesh_RL_GL::renderVertexNormals(float const& length) const {
    Arrays const arrays(mesh, VERTEX_NORMAL_LINES);
    glBegin(GL_LINES);
    for (unsigned int i = 0; i < arrays.vertexCount && i < arrays.vertexNormalCount; ++i) {
        Vector3<double> const& p = arrays.positions[i];
        emitSegment(p, along(p, componentsOf(arrays.vertexNormals[i]), length));
    }
    glEnd();
}

void Mesh_RL_GL::renderFaceNormals(float const& length) const {
    Arrays const arrays(mesh, FACE_NORMAL_LINES);
    glBegin(GL_LINES);
    for (unsigned int t = 0; arrays.faceNormals != nullptr && t < arrays.triangleCount; ++t) {
        Vector3<double> const center =
            middle(arrays.position(t * 3), arrays.position(t * 3 + 1), arrays.position(t * 3 + 2));
        emitSegment(center, along(center, arrays.faceNormal(t), length));
    }
    glEnd();
}

void Mesh_RL_GL::renderFaceNormals(VL_String const& points, VL_String const& vectors, float const& length) {
    if (mesh == nullptr) {
        return;
    }
    ArrayHandle const pointArray(mesh->namedArray(MeshArrayInf_ns::PER_VERTEX, points.c_str()));
    ArrayHandle const vectorArray(mesh->namedArray(MeshArrayInf_ns::PER_FACE, vectors.c_str()));
    auto const* const p = elementsOf<Vector3<double>>(pointArray.resolve());
    auto const* const v = elementsOf<Color4<float>>(vectorArray.resolve());
    if (p == nullptr || v == nullptr) {
        return;
    }
    Arrays const arrays(mesh, NAMED_FACE_LINES);
    unsigned int const pointCount = pointArray.resolve()->size;
    glBegin(GL_LINES);
    for (unsigned int t = 0; t < arrays.triangleCount && t < vectorArray.resolve()->size; ++t) {
        unsigned int const* const corners = arrays.triangles + std::size_t{t} * 3;
        if (corners[0] < pointCount && corners[1] < pointCount && corners[2] < pointCount) {
            Vector3<double> const center = middle(p[corners[0]], p[corners[1]], p[corners[2]]);
            emitSegment(center, along(center, componentsOf(v[t]), length));
        }
    }
    glEnd();
}

void Mesh_RL_GL::renderVertexNormals(VL_String const& points, VL_String const& vectors, float const& length) {
    if (mesh == nullptr) {
        return;
    }
    ArrayHandle const pointArray(mesh->namedArray(MeshArrayInf_ns::PER_VERTEX, points.c_str()));
    ArrayHandle const vectorArray(mesh->namedArray(MeshArrayInf_ns::PER_VERTEX, vectors.c_str()));
    auto const* const p = elementsOf<Vector3<double>>(pointArray.resolve());
    auto const* const v = elementsOf<Color4<float>>(vectorArray.resolve());
    if (p == nullptr || v == nullptr) {
        return;
    }
    glBegin(GL_LINES);
    for (unsigned int i = 0; i < pointArray.resolve()->size && i < vectorArray.resolve()->size; ++i) {
        emitSegment(p[i], along(p[i], componentsOf(v[i]), length));
    }
    glEnd();
}

void Mesh_RL_GL::renderNormals(unsigned int const& triangle, float const& length) {
    Arrays const arrays(mesh, CORNER_NORMAL_LINES);
    glBegin(GL_LINES);
    if (triangle < arrays.drawnCorners(CORNER_NORMAL_LINES) / 3 && arrays.normalTriangles != nullptr) {
        for (unsigned int k = 0; k < 3; ++k) {
            Vector3<double> const& p = arrays.position(triangle * 3 + k);
            emitSegment(p, along(p, arrays.vertexNormal(triangle * 3 + k), length));
        }
    }
    glEnd();
}

// == Edges and points ==

void Mesh_RL_GL::renderEdgesConnection() {
    using index_02::ui16::NEXT_CIRCULAR;
    using index_02::ui16::PREV_CIRCULAR;
    Arrays const arrays(mesh, EDGE_MARKS);
    glColor3f(1.0F, 1.0F, 1.0F);
    glBegin(GL_LINES);
    for (unsigned int corner = 0; corner < arrays.edgeCorners(EDGE_MARKS); ++corner) {
        unsigned int const entry = arrays.adjacency[corner];
        if (entry == Mesh::ADJACENCY_NONE) {
            continue;
        }
        // Deliberate (sixteen-bit-neighbor): the neighbor is truncated to 16 bits.
        unsigned int const first = static_cast<unsigned short>(entry >> 2) * 3U;
        unsigned int const c = entry & 3U;
        Vector3<double> const inside = arrays.position(first + c) * AT_EDGE +
                                       arrays.position(first + NEXT_CIRCULAR[c]) * AT_EDGE +
                                       arrays.position(first + PREV_CIRCULAR[c]) * AT_OPPOSITE;
        unsigned int const k = corner % 3;
        emitMark(inside, arrays.position(corner), arrays.position(corner - k + NEXT_CIRCULAR[k]));
    }
    glEnd();
}

void Mesh_RL_GL::renderEdgesUnconnected() {
    Arrays const arrays(mesh, EDGE_MARKS);
    glColor3f(1.0F, 1.0F, 1.0F);
    glBegin(GL_LINES);
    for (unsigned int corner = 0; corner < arrays.edgeCorners(EDGE_MARKS); ++corner) {
        if (arrays.adjacency[corner] != Mesh::ADJACENCY_NONE) {
            continue;
        }
        unsigned int const k = corner % 3;
        Vector3<double> const& a = arrays.position(corner);
        Vector3<double> const& b = arrays.position(corner - k + NEXT_CIRCULAR[k]);
        Vector3<double> const& c = arrays.position(corner - k + PREV_CIRCULAR[k]);
        emitMark(c * 0.25 + ((a + b) * 0.5) * 0.75, a, b);
    }
    glEnd();
}

void Mesh_RL_GL::renderPoints(float const& size) {
    misuse::requireLayer("Mesh_RL_GL::renderPoints");
    float const former = VL_Raster->setPointSize(size);
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(nullptr, SOUP_POINTS);
        _drawSoup(GL_POINTS, 0, false, corners);
    } else {
        Arrays const arrays(mesh, VERTEX_POINTS);
        glBegin(GL_POINTS);
        for (unsigned int i = 0; i < arrays.vertexCount; ++i) {
            emitVertex(arrays.positions[i]);
        }
        glEnd();
    }
    VL_Raster->setPointSize(former);
}

void Mesh_RL_GL::renderEdges() {
    if (useBufferObjects) {
        unsigned int const corners = _updateBuffers(nullptr, EDGES);
        // Indices without a buffer would be read from the null pointer.
        bool const isDrawn = corners != 0 && indexBuffer != 0;
        _enableSoup(smoothNormalBuffer, false);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
        glDrawElements(GL_LINES, isDrawn ? static_cast<GLsizei>(indexCount) : 0, GL_UNSIGNED_INT, nullptr);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        _disableSoup(smoothNormalBuffer, false);
        return;
    }
    Arrays const arrays(mesh, EDGES);
    glBegin(GL_LINES);
    for (unsigned int corner = 0; corner < arrays.edgeCorners(EDGES); ++corner) {
        if (arrays.isDrawnEdge(corner)) {
            unsigned int const k = corner % 3;
            unsigned int const next = corner - k + NEXT_CIRCULAR[k];
            glNormal3fv(arrays.vertexNormal(corner));
            emitVertex(arrays.position(corner));
            glNormal3fv(arrays.vertexNormal(next));
            emitVertex(arrays.position(next));
        }
    }
    glEnd();
}

void Mesh_RL_GL::renderWithEdges(Color4<float> const& color) {
    misuse::requireLayer("Mesh_RL_GL::renderWithEdges");
    VL_Raster->pushCulling(CULL_BACK);
    VL_Raster->setColor(color);
    renderEdges();
    VL_Raster->setColor({color.r * 0.5F, color.g * 0.5F, color.b * 0.5F, 1.0F});
    render();
    VL_Raster->popCulling();
}

void Mesh_RL_GL::renderWithEdgesBlending(Color4<float> const& color, bool const& withSurface) {
    misuse::requireLayer("Mesh_RL_GL::renderWithEdgesBlending");
    // The modes that are set below replace this copy, and popCulling() removes it.
    VL_Raster->pushCulling(CullingMode(VL_Raster->currentCulling()));
    VL_Raster->setCulling(CULL_BACK);
    VL_Raster->setColor({color.r * 0.3F, color.g * 0.3F, color.b * 0.3F, 1.0F});
    renderEdges();
    VL_Raster->setCulling(CULL_FRONT);
    VL_Raster->setColor({color.r * 0.1F, color.g * 0.1F, color.b * 0.1F, 1.0F});
    renderEdges();
    VL_Raster->setCulling(CULL_BACK);
    VL_Raster->pushBlending(BLENDING_ALPHA);
    VL_Raster->pushDepthTest({VL_Raster->currentDepthTest().mode, false});
    VL_Raster->setColor(color);
    if (withSurface) {
        render();
    }
    VL_Raster->popBlending();
    VL_Raster->popDepthTest();
    VL_Raster->popCulling();
}

}  // namespace vellum
