#pragma once

#include "foundation/raster/MeshImporter_RL.h"
#include "raster_gl_export.h"

namespace vellum {

/// A quick preview of an imported mesh, before it becomes a Mesh: the surface in red, the normals in white.
///
/// Use:
///
///     MeshImporter_RL_GL preview(&importer);
///     preview.render();
///     preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
///
/// Only triangles with corner normals are drawn; an import without normals stays invisible. Triangles whose
/// index is out of range are skipped. Draws in immediate mode, without GL objects and without setting render
/// state other than the color.
class VL_RASTER_GL_EXPORT MeshImporter_RL_GL : public MeshImporter_RL {
public:
    explicit MeshImporter_RL_GL(MeshImporter* importer);  ///< Not owned; must outlive the renderer.
    ~MeshImporter_RL_GL() override;                       ///< GL: none.

    /// The triangles with their corner normals.
    ///
    /// GL: glColor3f(1, 0, 0), glBegin(GL_TRIANGLES), glNormal3dv and glVertex3dv for every corner, glEnd.
    /// State: the color is red.
    void render() override;

    /// The corner normals of one triangle, or of all with EVERY_TRIANGLE, as segments of the length of the
    /// normal.
    ///
    /// GL: glColor3f(1, 1, 1), glBegin(GL_LINES), glVertex3dv for both ends, glEnd.
    /// State: the color is white.
    void renderNormals(unsigned int const& triangle) override;

private:
    MeshImporter* importer;  // not owned
};

}  // namespace vellum
