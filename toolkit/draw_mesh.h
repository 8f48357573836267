#pragma once

#include "Mesh_RL_GL.h"
#include "toolkit/MeshStyle.h"
#include "toolkit/export.h"

namespace vellum::toolkit {

/// Draws a mesh in a style, with the current matrices, depth test and lights (see Lit). Within drawWith() the effect
/// decides about color and light.
///
///     drawMesh(renderer, {});
///     MeshStyle style;
///     style.edges = Edges::HARD;
///     drawMesh(renderer, style);
///
/// Lines over a surface do not fight with it: the surface is moved back in depth a little (polygon offset), and the lines
/// are drawn unlit, in their own color.
///
/// Meshes have no colors in the renderer's buffers, so a surface with MeshStyle::colors is sent in immediate mode; the
/// colors are interpolated over the triangles.
///
/// What cannot be drawn (a fault of the mesh, an unknown name) is left out or drawn without; Mesh::fault() says why. A
/// render layer must exist.
/// GL: the calls of Mesh_RL_GL's drawings, between those of the state stacks; with edges glPolygonOffset and
/// glEnable(GL_POLYGON_OFFSET_FILL), and glDisable; around lines glPushAttrib(GL_ENABLE_BIT), glDisable(GL_LIGHTING)
/// and glPopAttrib.  State: all that it changes is restored, except the bindings of buffers, which are 0.
VL_TOOLKIT_EXPORT void drawMesh(Mesh_RL_GL& renderer, MeshStyle const& style);

}  // namespace vellum::toolkit
