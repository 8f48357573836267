#include "viewport/drawing/subjects/derived_arrays.h"

#include "viewport/drawing/subjects/array_elements.h"

namespace vellum::viewport {

namespace {

bool drawsFaceNormals(MeshStyle const& style) {
    return style.shading == Shading::FACETED || style.normals == Normals::FACE;
}

bool drawsAdjacency(MeshStyle const& style) {
    return style.edges || style.edgesBlend || style.connectivity;
}

}  // namespace

void dropArrays(Mesh& mesh, MeshStyle const& style) {
    if (mesh.triangleCount() < LARGE_MESH) {
        return;
    }
    if (!drawsFaceNormals(style) && sizeOf(mesh.faceNormals()) == mesh.triangleCount()) {
        mesh.setFaceNormals({{0, 0, 0, 0}});
    }
    if (!drawsAdjacency(style) && sizeOf(mesh.adjacency()) != 0) {
        mesh.setAdjacency({});
    }
}

bool deriveArrays(Mesh& mesh, MeshStyle const& style) {
    if (mesh.triangleCount() < LARGE_MESH) {
        return true;
    }
    bool const lacksNormals = drawsFaceNormals(style) && sizeOf(mesh.faceNormals()) != mesh.triangleCount();
    bool const lacksAdjacency = drawsAdjacency(style) && sizeOf(mesh.adjacency()) == 0;
    bool const hasNormals = !lacksNormals || mesh.workFaceNormals();
    return (!lacksAdjacency || mesh.workAdjacency()) && hasNormals;
}

}  // namespace vellum::viewport
