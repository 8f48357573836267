#pragma once

#include "foundation/raster/MeshImporter_RL.h"
#include "raster_gl_export.h"

namespace vellum {

/// A quick preview of an imported mesh: its surface in red, its normals in white. For looking at what a file
/// gave, before it becomes a Mesh.
///
/// Use:
///
///     MeshImporter_RL_GL preview(&importer);
///     preview.render();
///     preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
///
/// As many triangles are drawn as there are corner normals; an import without normals shows nothing.
/// Triangles that name a position beyond the end are left out. Immediate mode only; no GL objects, no render
/// state.
class VL_RASTER_GL_EXPORT MeshImporter_RL_GL : public MeshImporter_RL {
public:
    explicit MeshImporter_RL_GL(MeshImporter* importer);  ///< Not owned; must outlive the renderer.
    ~MeshImporter_RL_GL() override;                       ///< Does nothing.

    /// The triangles with their corner normals.
    ///
    /// GL: glColor3f(1, 0, 0), glBegin(GL_TRIANGLES), glNormal3dv and glVertex3dv for every corner, glEnd.
    /// State: the color is red.
    void render() override;

    /// The corner normals of one triangle, or of each with EVERY_TRIANGLE, as segments of their own length.
    ///
    /// GL: glColor3f(1, 1, 1), glBegin(GL_LINES), glVertex3dv for both ends, glEnd.
    /// State: the color is white.
    void renderNormals(unsigned int const& triangle) override;

private:
    MeshImporter* importer;  // not owned
};

}  // namespace vellum
