#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/export.h"
#include "foundation/geometry/Color4.h"
#include "foundation/raster/MeshShading.h"
#include "foundation/raster/Mesh_RL_Shader.h"

namespace vellum {

class Mesh;

/// The abstract renderer of one mesh.
///
/// An application requests drawings through it and does not depend on the drawing system:
///
///     MeshShading shading;
///     shading.mode = MeshShadingMode_ns::FACETED;
///     renderer->render(shading);
///
/// render(MeshShading) sets the state that a mode needs and restores it; the other operations use the current
/// state. Colors, lights, textures and line widths are the caller's responsibility. A mesh with a fault
/// (Mesh::fault()) is not drawn.
///
/// The order of the virtual operations is part of the interface.
class VL_FOUNDATION_EXPORT Mesh_RL {
public:
    explicit Mesh_RL(Mesh* mesh);  ///< Draws this mesh, without an effect.
    Mesh_RL(Mesh_RL const&) = delete;
    Mesh_RL& operator=(Mesh_RL const&) = delete;

    virtual ~Mesh_RL();

    // == Surfaces ==

    virtual void render() = 0;  ///< With the vertex normals.

    /// With the face normals, or with the vertex normals, and the texture coordinates of a channel.
    virtual void renderFacetedTextured(VL_String const& channel) = 0;
    virtual void renderTextured(VL_String const& channel) = 0;

    virtual void render(MeshShading const& shading) = 0;  ///< As the request says.
    virtual void renderFaceted() const = 0;               ///< With the face normals.

    // == Normals ==
    // One segment for each normal, `length` times as long as the normal.

    virtual void renderVertexNormals(float const& length) const = 0;  ///< From every vertex.
    virtual void renderFaceNormals(float const& length) const = 0;    ///< From the middle of every triangle.

    /// The same of named arrays: from the points of the first name along the vectors of the second.
    virtual void renderFaceNormals(VL_String const& points, VL_String const& vectors,
                                   float const& length) = 0;
    virtual void renderVertexNormals(VL_String const& points, VL_String const& vectors,
                                     float const& length) = 0;

    virtual void renderNormals(unsigned int const& triangle, float const& length) = 0;  ///< Of one triangle.

    // == Edges and points ==

    virtual void renderEdgesConnection() = 0;          ///< Marks where triangles are connected.
    virtual void renderEdgesUnconnected() = 0;         ///< Marks where a triangle has no neighbor.
    virtual void renderPoints(float const& size) = 0;  ///< The vertices; size in pixels.
    virtual void renderEdges() = 0;                    ///< Borders and hard edges.

    /// The surface in a darker tone of the color, with its edges.
    virtual void renderWithEdges(Color4<float> const& color) = 0;

    /// The edges, darker on triangles that face away, and optionally the surface blended over them.
    virtual void renderWithEdgesBlending(Color4<float> const& color, bool const& withSurface) = 0;

    Mesh* mesh;  ///< The mesh to draw. Not owned; may be null.
    /// The effect for MeshShadingFlags_ns::GPU_SHADER. Not owned; may be null.
    Mesh_RL_Shader* shader = nullptr;
};

}  // namespace vellum
