#pragma once

#include "Mesh_RL_GL.h"
#include "toolkit/MeshStyle.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Draws a mesh in a style, with the current matrices, depth test and lights (see Lit). Within drawWith() the
/// effect decides about color and light of surfaces and wireframes; edges and boxes are drawn past it.
///
///     drawMesh(renderer, {});
///     MeshStyle style;
///     style.edges = Edges::HARD;
///     drawMesh(renderer, style);
///
/// Surfaces are lit if lighting is on, and so are outlines of their backs; other lines (boxes, wireframes,
/// edges) have their own color. Lines over a surface do not fight with it: the surface is moved back in depth
/// a little (polygon offset). The mesh needs adjacency and normals for its hard edges; see prepareMesh().
///
/// Meshes have no colors in the renderer's buffers, so a surface with MeshStyle::colors is sent in immediate
/// mode, in each frame anew; the colors are interpolated over the triangles.
///
/// What cannot be drawn (a fault of the mesh, an unknown name) is left out or drawn without; Mesh::fault()
/// says why. A mesh without a box gets one (Mesh::workBox()) when its box is drawn. Nothing is allocated
/// while mesh and style stay the same. A render layer must exist.
///
/// GL: glPushAttrib of what the style needs; within it the state stacks of VL_Raster, and:
///  - a box: glDisable for lighting and texture, the calls of Core_RL::render(Box3);
///  - a surface or wireframe: glEnable(GL_POLYGON_OFFSET_FILL) and glPolygonOffset with edges, activateTextureColor() and
///    disableTextureColor() with a texture, glDisable as above for a wireframe, and the calls of Mesh_RL_GL::render(),
///    renderFaceted(), renderTextured() or renderFacetedTextured(); with colors glBegin(GL_TRIANGLES), for every
///    corner glNormal3fv (faceted: for every triangle), glTexCoord2fv with a channel, glColor4fv and glVertex3dv, glEnd;
///  - edges: glDisable as above, and the calls of Mesh_RL_GL::renderEdges(), or of render() for all triangles; hidden ones
/// between glGetIntegerv x 2, glDepthFunc and glDepthMask, and the same two that restore; then
/// glGetFloatv(GL_CURRENT_COLOR) and glPopAttrib. For boxes and edges glGetString(GL_VERSION) tells whether
/// there are shaders; with them glGetIntegerv(GL_CURRENT_PROGRAM), and glUseProgram(0) and one that restores
/// where it names one. State: all that it changes is restored, except the bindings of buffers, which are 0,
/// and the arrays of vertices, normals and texture coordinates, which are off. With color material the
/// material is that of the current color of VL_Raster.
VL_TOOLKIT_EXPORT void drawMesh(Mesh_RL_GL& renderer, MeshStyle const& style);

}  // namespace vellum::toolkit
