#pragma once

#include "foundation/basic/Array.h"
#include "foundation/raster/Mesh_RL.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws one Mesh with OpenGL.
///
/// Two paths draw the same image. Without buffer objects, every drawing iterates over the mesh between
/// glBegin and glEnd. With them (`useBufferObjects`), up to five buffer objects hold the mesh as a triangle
/// soup: the corners of all triangles, contiguous, in single precision. A drawing refills the buffers whose
/// arrays have ARRAY_TYPEABLE_MODIFIED_CONTROL_0 set, clears these bits, and draws with one call; an
/// unchanged mesh is not uploaded.
///
/// Use:
///
///     Mesh_RL_GL renderer(&mesh, false);
///     renderer.useBufferObjects = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
///     MeshShading shading;
///     shading.mode = MeshShadingMode_ns::SMOOTH;
///     renderer.render(shading);
///
/// Buffers of more than a million triangles are filled on several cores, with the same bytes; all GL calls
/// stay on the calling thread. setThreadLimit(1) and VL_THREADS=1 keep the fill there as well; see
/// foundation/basic/threads.h.
///
/// Missing normals are (0, 0, 0); without adjacency, no edges are marked.
///
/// A drawing is skipped if an array that it reads has a fault (Mesh::triangleFault() and similar), so no
/// drawing reads out of range. Faults of other arrays have no effect: outdated face normals of another length
/// hide only the faceted surface and the face normals.
///
///     drawing                               positions  triangles  vertex normals       face normals
///     adjacency render, renderTextured                    x          x      by normal triangles
///     renderFaceted, renderFacetedTextured      x          x                                x
///     renderPoints                              x      with buffers
///     renderVertexNormals                       x                 one by one
///     renderFaceNormals                         x          x                                x
///     renderNormals                             x          x      by normal triangles
///     renderFaceNormals of named arrays                    x
///     renderVertexNormals of named arrays
///     renderEdges                               x          x      by normal triangles                    x
///     renderEdgesConnection, ...Unconnected     x          x                                             x
///
/// It binds no texture and sets no light. It changes render state through VL_Raster, which must not be null.
/// The modified bits belong to the mesh: of two renderers with buffers of one mesh, only the first one that
/// draws detects a change.
///
/// Drawings, and the destructor of a renderer with buffers, need the current context.
///
/// Groups: lifecycle; surfaces; normals; edges and points.
class VL_RASTER_GL_EXPORT Mesh_RL_GL : public Mesh_RL {
public:
    /// Draws this mesh, without an effect and without buffer objects. Makes no GL call.
    ///
    /// Deliberate (ignored-buffer-flag): the second argument is ignored; see `useBufferObjects`.
    Mesh_RL_GL(Mesh* mesh, bool);

    /// Deletes the buffers that exist.
    ///
    /// Deliberate (channel-name-leak): the name of the last texture channel is not freed.
    ///
    /// GL: glDeleteBuffers per buffer, in the order positions, vertex normals, face normals, texture
    /// coordinates, edges.
    ~Mesh_RL_GL() override;

    // == Surfaces ==
    //
    // With buffers, in this order: createBufferObjects(); glEnableClientState for vertices, normals and
    // texture coordinates, as far as the operation has them; glBindBuffer and the pointer for texture
    // coordinates, normals and vertices; glDrawArrays over all corners; glBindBuffer(GL_ARRAY_BUFFER, 0);
    // glDisableClientState in reverse.
    // Without: glBegin(GL_TRIANGLES), for every corner glNormal3fv, glTexCoord2fv, glVertex3dv, glEnd.
    // State: the array-buffer binding is 0; without buffers the current normal and texture coordinate change.

    void render() override;

    void renderFacetedTextured(VL_String const& channel) override;

    /// The coordinates of a channel are found by its name: under the bits TRINDEXED (three coordinate indices
    /// per triangle) together with PER_FACE (the coordinates), else under PER_VERTEX (one coordinate per
    /// position). A coordinate is two floats.
    ///
    /// If the mesh does not have the channel, and at corners out of its range, the coordinate is (0, 0).
    /// Deliberate (unwritten-coordinates): with buffers, the coordinates of a missing channel are
    /// unspecified.
    void renderTextured(VL_String const& channel) override;

    /// Draws the mode of the request: pushes its fillings, calls the drawing, and pops both fillings. Modes:
    /// the box (as outlines; Mesh::workBox() is called if the mesh has none), the wireframe (render() with
    /// outlines), and the faceted and smooth surfaces, textured or not. The drawings are called as virtual
    /// operations. With GPU_SHADER and an effect, create() (if it is not created), init() and preprocess() of
    /// the effect come before the drawing, postprocess() and cleanup() after it.
    ///
    /// Deliberate (unbalanced-filling-pop): a mode above 3 pops both fillings without pushing them.
    void render(MeshShading const& shading) override;

    /// Without buffers the normal of a triangle is sent once, before its three corners.
    void renderFaceted() const override;

    // == Normals ==
    // Always in immediate mode: glBegin(GL_LINES), glVertex3dv for both ends of every segment, glEnd.

    /// From position i along vertex normal i, independent of the normal triangles.
    void renderVertexNormals(float const& length) const override;
    void renderFaceNormals(float const& length) const override;

    /// Points (Vector3<double>) are found under PER_VERTEX, vectors (Color4<float>, x, y, z in r, g, b) under
    /// PER_FACE. If one is missing, nothing is drawn.
    void renderFaceNormals(VL_String const& points, VL_String const& vectors, float const& length) override;

    /// Both are found under PER_VERTEX.
    void renderVertexNormals(VL_String const& points, VL_String const& vectors, float const& length) override;

    /// An index out of range draws an empty block.
    void renderNormals(unsigned int const& triangle, float const& length) override;

    // == Edges and points ==

    /// For every shared edge two segments that meet inside the neighbor, in white.
    ///
    /// Deliberate (sixteen-bit-neighbor): the neighbor's number is truncated to 16 bits.
    ///
    /// GL: glColor3f(1, 1, 1), glBegin(GL_LINES), glVertex3dv, glEnd.  State: the color is white.
    void renderEdgesConnection() override;

    /// For every border edge two segments that meet inside its triangle, in white. GL and state as above.
    void renderEdgesUnconnected() override;

    /// The vertices as points of `size` pixels; VL_Raster's point size is restored.
    ///
    /// Deliberate (points-per-corner): with buffers, a vertex is drawn once per triangle that uses it.
    void renderPoints(float const& size) override;

    /// The border edges, and the edges at which the vertex normal of the first corner differs from the
    /// neighbor's there. -0 equals 0, and NaN differs from everything. A crease is found from both sides and
    /// drawn twice. Lines are lit like the surface.
    ///
    /// GL: with buffers as a surface, but glDrawElements(GL_LINES) with the edges' indices bound to
    /// GL_ELEMENT_ARRAY_BUFFER, which is 0 afterwards; without, glNormal3fv and glVertex3dv for both ends.
    void renderEdges() override;

    /// renderEdges() in the color and render() in half the color, seen from the front.
    /// State: culling is restored, the color is the surface's.
    void renderWithEdges(Color4<float> const& color) override;

    /// renderEdges() with 30 % of the color where triangles face the viewer and with 10 % elsewhere; then,
    /// with `withSurface`, render() in the color itself, alpha blended, without writing depth.
    /// State: culling, blending and depth test are restored, the color is the given one.
    void renderWithEdgesBlending(Color4<float> const& color, bool const& withSurface) override;

    /// Updates the buffers from the mesh; drawings with buffers call it first.
    ///
    /// A buffer is refilled if it does not exist, if the triangle count has changed, or if one of its source
    /// arrays was modified: positions from the positions and triangles, vertex normals from the vertex
    /// normals and normal triangles, face normals from the face normals. Texture coordinates are refilled if
    /// `textureChannel` differs from the last name or the arrays of the channel were modified. The modified
    /// bits of all checked arrays are cleared, except of arrays with a fault. Normals with a fault have no
    /// buffer until they are repaired.
    ///
    /// Deliberate (stale-coordinates): modified triangles of the same count do not refill the coordinates.
    ///
    /// \param textureChannel the channel of the coordinates to update; null skips them, and drops their
    ///     buffer and the channel's name if the triangle count has changed.
    /// \param withEdges whether to update the indices of renderEdges() as well.
    ///
    /// GL, for each buffer that is refilled: glBindBuffer, or glDeleteBuffers, glGenBuffers, glBindBuffer and
    /// glBufferData(GL_DYNAMIC_DRAW) when its size changes; glMapBuffer(GL_WRITE_ONLY) and glUnmapBuffer,
    /// unless it has no bytes; glBindBuffer(0). If the mapping is null, nothing is written.
    /// State: the bindings of the targets used are 0.
    void createBufferObjects(VL_String const* textureChannel, bool withEdges);

    /// Deletes all buffers; the next drawing with buffers creates and fills them again. For a renderer that
    /// outlives its context: it is called while the context is current, and the destructor then makes no GL
    /// call.
    ///
    /// GL: as ~Mesh_RL_GL().  State: none.
    void dropBufferObjects();

    bool useBufferObjects = false;  ///< Set by the owner; the renderer never changes it.

private:
    class Arrays;
    class TextureChannel;

    static void _pushFillings(MeshShading const& shading);
    void _drawMode(MeshShading const& shading);
    void _drawBox() const;

    unsigned int _updateBuffers(VL_String const* textureChannel, unsigned int reads) const;
    void _updateSurface(Arrays const& arrays, bool keepsStore) const;
    void _updateTextureCoordinates(Arrays const& arrays, VL_String const& channel, bool keepsStore) const;
    void _dropTextureCoordinates() const;
    void _updateEdges(Arrays const& arrays, bool isStale) const;
    void _enableSoup(unsigned int normalBuffer, bool isTextured) const;
    void _disableSoup(unsigned int normalBuffer, bool isTextured) const;
    void _drawSoup(unsigned int mode, unsigned int normalBuffer, bool isTextured, unsigned int corners) const;

    // The buffers are caches of the mesh, so drawings that change only them are const.
    mutable unsigned int positionBuffer = 0;          // GL names; 0: no buffer
    mutable unsigned int smoothNormalBuffer = 0;      //
    mutable unsigned int facetedNormalBuffer = 0;     //
    mutable unsigned int texCoordBuffer = 0;          //
    mutable unsigned int indexBuffer = 0;             //
    mutable unsigned int indexCount = 0;              // indices last written to indexBuffer
    mutable VL_String* textureChannelName = nullptr;  // channel in texCoordBuffer; see ~Mesh_RL_GL
    mutable unsigned int bufferTriangleCount = 0;     // for which the array buffers were allocated
    mutable unsigned int indexBufferCapacity = 0;     // indices for which indexBuffer was allocated
    mutable Array<unsigned int> indexList;  // soup corners at which the edges start; capacity for all
    mutable bool areEdgesStale = false;     // triangles or normals were modified since indexBuffer was filled
};

}  // namespace vellum
