#pragma once

#include "foundation/basic/Array.h"
#include "foundation/raster/Mesh_RL.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws one Mesh with OpenGL.
///
/// There are two ways to the same picture. Without buffer objects every drawing walks over the mesh between
/// glBegin and glEnd. With them (`useBufferObjects`) the mesh is kept in up to five buffer objects as a
/// triangle soup: the corners of all triangles one after the other, in single precision. A drawing brings
/// those buffers up to date whose arrays carry ARRAY_TYPEABLE_MODIFIED_CONTROL_0, clears these bits, and is
/// one call then; an unchanged mesh uploads nothing.
///
/// Use:
///
///     Mesh_RL_GL renderer(&mesh, false);
///     renderer.useBufferObjects = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
///     MeshShading shading;
///     shading.mode = MeshShadingMode_ns::SMOOTH;
///     renderer.render(shading);
///
/// What the mesh lacks: normals that it does not have are (0, 0, 0), adjacency that it does not have marks no
/// edges.
///
/// Arrays with a fault: a drawing draws nothing when an array that it reads has a fault (Mesh::triangleFault
/// and its kin), so no drawing reads outside the mesh's arrays. Faults of other arrays do not matter: face
/// normals of another length, left over from a former shape, hide the faceted surface and the face normals
/// alone.
///
///     drawing                               positions  triangles  vertex normals       face normals  adjacency
///     render, renderTextured                    x          x      by normal triangles
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
/// What it does not do: no texture is bound and no light is set. Render state is changed through VL_Raster,
/// which must be there. The bits that it clears are the mesh's own: of two renderers with buffers of one mesh
/// only the one that draws first sees a change.
///
/// It needs a current context for every drawing with buffers, and for its destruction when there were any.
///
/// Groups: lifecycle; surfaces; normals; edges and points.
class VL_RASTER_GL_EXPORT Mesh_RL_GL : public Mesh_RL {
public:
    /// Draws this mesh, without an effect and without buffer objects. Makes no GL call.
    ///
    /// Deliberate (ignored-buffer-flag): the second argument is accepted and ignored. Buffers are asked for
    /// by `useBufferObjects` alone, whatever a caller passes here.
    Mesh_RL_GL(Mesh* mesh, bool);

    /// Deletes the buffers that exist.
    ///
    /// Deliberate (channel-name-leak): the name of the texture channel stays behind, a few bytes for each
    /// renderer that drew a texture from its buffers. A name is only freed when another one takes its place.
    ///
    /// GL: glDeleteBuffers for each buffer, in the order positions, vertex normals, face normals, texture
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

    /// The coordinates of a channel are found by its name, under the bits TRINDEXED (three coordinate indices
    /// for each triangle) together with PER_FACE (the coordinates), else under PER_VERTEX (one coordinate for
    /// each position). Two floats are a coordinate.
    ///
    /// A channel that the mesh lacks has the coordinate (0, 0) everywhere, as has a corner that the channel
    /// does not reach. Deliberate (unwritten-coordinates): with buffers the coordinates of a channel that the
    /// mesh lacks are not written, and what is drawn is not specified.
    void renderTextured(VL_String const& channel) override;

    /// Draws as the request says: pushes the fillings of the mode, calls the drawing, and pops both again.
    /// Modes: the box (as outlines; Mesh::workBox() is called if there is none), the wireframe (render() with
    /// outlines), and the faceted and smooth surfaces, textured or not. The drawings are called as virtual
    /// operations. With GPU_SHADER and an effect the pass is bracketed by its create() (if it was not
    /// created), init() and preprocess(), and by its postprocess() and cleanup().
    ///
    /// Deliberate (unbalanced-filling-pop): a mode above 3 pushes and draws nothing, yet both fillings are
    /// popped. Such a request takes back what its caller has pushed.
    void render(MeshShading const& shading) override;

    /// Without buffers the normal of a triangle is sent once, before its three corners.
    void renderFaceted() const override;

    // == Normals ==
    // Immediate mode always: glBegin(GL_LINES), glVertex3dv for both ends of every segment, glEnd.

    /// From the position i along the vertex normal i. The normal triangles are not asked.
    void renderVertexNormals(float const& length) const override;
    void renderFaceNormals(float const& length) const override;

    /// Points (Vector3<double>) are found under PER_VERTEX, vectors (Color4<float>, x, y, z in r, g, b) under
    /// PER_FACE. Without both nothing is drawn.
    void renderFaceNormals(VL_String const& points, VL_String const& vectors, float const& length) override;

    /// Both are found under PER_VERTEX.
    void renderVertexNormals(VL_String const& points, VL_String const& vectors, float const& length) override;

    /// An index beyond the last triangle draws an empty block.
    void renderNormals(unsigned int const& triangle, float const& length) override;

    // == Edges and points ==

    /// For every shared edge two segments that meet inside the neighbor, in white.
    ///
    /// Deliberate (sixteen-bit-neighbor): the neighbor's number is taken as 16 bits. In a mesh of more than
    /// 65536 triangles the marks of neighbors above 65535 meet in triangles at the beginning of the mesh.
    ///
    /// GL: glColor3f(1, 1, 1), glBegin(GL_LINES), glVertex3dv, glEnd.  State: the color is white.
    void renderEdgesConnection() override;

    /// For every border edge two segments that meet inside its triangle, in white. GL and state as above.
    void renderEdgesUnconnected() override;

    /// The vertices as points of `size` pixels; VL_Raster's point size is restored.
    ///
    /// Deliberate (points-per-corner): without buffers every position is drawn once, with buffers every
    /// corner of the soup, so a vertex as often as triangles use it.
    void renderPoints(float const& size) override;

    /// The border edges, and the edges at which the vertex normal of the first corner differs from the
    /// neighbor's there. -0 equals 0, and what is not a number equals nothing. A hard edge is found from both
    /// sides and drawn twice. Lines are lit like the surface.
    ///
    /// GL: with buffers as a surface, but glDrawElements(GL_LINES) with the edges' indices bound to
    /// GL_ELEMENT_ARRAY_BUFFER, which is 0 afterwards; without, glNormal3fv and glVertex3dv for both ends.
    void renderEdges() override;

    /// renderEdges() in the color and render() in half the color, seen from the front.
    /// State: culling is restored, the color is the surface's.
    void renderWithEdges(Color4<float> const& color) override;

    /// renderEdges() with 30 % of the color where triangles face the viewer and with 10 % where they do not;
    /// then, if asked for, render() in the color itself, alpha blended, without writing depth.
    /// State: culling, blending and depth test are restored, the color is the given one.
    void renderWithEdgesBlending(Color4<float> const& color, bool const& withSurface) override;

    /// Brings the buffers up to date with the mesh; the drawings with buffers call it first.
    ///
    /// A buffer is refilled when it does not exist, when the triangle count has changed, or when an array that
    /// it is made of was modified: positions from the positions and triangles, vertex normals from the vertex
    /// normals and normal triangles, face normals from the face normals. Texture coordinates are refilled when
    /// `textureChannel` has another name than the last one or its own arrays were modified. The modified bits
    /// of all arrays that were looked at are cleared; arrays with a fault keep theirs. Normals with a fault
    /// have no buffer until they are repaired.
    ///
    /// Deliberate (stale-coordinates): triangles that change without changing their count leave the
    /// coordinates of a channel as they are, even if it is stored per vertex. The writer marks the channel
    /// too.
    ///
    /// \param textureChannel the channel whose coordinates are wanted; null leaves them alone. If the triangle
    ///     count has changed meanwhile, their buffer is dropped with the channel's name.
    /// \param withEdges whether the indices of renderEdges() are wanted too.
    ///
    /// GL, for each buffer that is refilled: glBindBuffer, or glDeleteBuffers, glGenBuffers, glBindBuffer and
    /// glBufferData(GL_DYNAMIC_DRAW) when its size changes; glMapBuffer(GL_WRITE_ONLY) and glUnmapBuffer,
    /// unless it has no bytes; glBindBuffer(0). When the map is null nothing is written.
    /// State: the bindings of the targets used are 0.
    void createBufferObjects(VL_String const* textureChannel, bool withEdges);

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

    // What the buffers hold is derived from the mesh, so the drawings that change nothing else are const.
    mutable unsigned int positionBuffer = 0;          // GL names; 0: there is no such buffer
    mutable unsigned int smoothNormalBuffer = 0;      //
    mutable unsigned int facetedNormalBuffer = 0;     //
    mutable unsigned int texCoordBuffer = 0;          //
    mutable unsigned int indexBuffer = 0;             //
    mutable unsigned int indexCount = 0;              // indices last written to indexBuffer
    mutable VL_String* textureChannelName = nullptr;  // what texCoordBuffer was filled for; see ~Mesh_RL_GL
    mutable unsigned int bufferTriangleCount = 0;     // for which the array buffers were allocated
    mutable unsigned int indexBufferCapacity = 0;     // indices for which indexBuffer was allocated
    mutable Array<unsigned int> indexList;            // soup corners at which the edges start; room for all
    mutable bool areEdgesStale = false;  // triangles or normals were modified since indexBuffer was filled
};

}  // namespace vellum
