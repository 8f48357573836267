#include "MeshImporter_RL_GL.h"

#include <algorithm>

#include "internal/gl_api.h"

namespace vellum {

namespace {

/// Calls `draw(triangle, normal, position)` for every corner of every valid triangle. An import is not
/// validated before its preview, so counts and indices are checked here.
template <class Draw>
void forEachCorner(MeshImporter const& importer, Draw const& draw) {
    unsigned int const count = std::min(importer.cornerNormals.size(), importer.triangles.size());
    unsigned int const positionCount = importer.positions.size();
    for (unsigned int t = 0; t < count; ++t) {
        Tuple3<unsigned int> const& corners = importer.triangles[t];
        Tuple4<Vector3<double>> const& normals = importer.cornerNormals[t];
        if (corners.e0 < positionCount && corners.e1 < positionCount && corners.e2 < positionCount) {
            draw(t, normals.e0, importer.positions[corners.e0]);
            draw(t, normals.e1, importer.positions[corners.e1]);
            draw(t, normals.e2, importer.positions[corners.e2]);
        }
    }
}

}  // namespace

MeshImporter_RL_GL::MeshImporter_RL_GL(MeshImporter* importer) : importer(importer) {}

MeshImporter_RL_GL::~MeshImporter_RL_GL() = default;

void MeshImporter_RL_GL::render() {
    glColor3f(1.0F, 0.0F, 0.0F);
    glBegin(GL_TRIANGLES);
    forEachCorner(*importer,
                  [](unsigned int, Vector3<double> const& normal, Vector3<double> const& position) {
                      glNormal3dv(&normal.x);
                      glVertex3dv(&position.x);
                  });
    glEnd();
}

void MeshImporter_RL_GL::renderNormals(unsigned int const& triangle) {
    glColor3f(1.0F, 1.0F, 1.0F);
    glBegin(GL_LINES);
    forEachCorner(*importer,
                  [&](unsigned int t, Vector3<double> const& normal, Vector3<double> const& position) {
                      if (triangle == t || triangle == EVERY_TRIANGLE) {
                          Vector3<double> const tip = position + normal;
                          glVertex3dv(&position.x);
                          glVertex3dv(&tip.x);
                      }
                  });
    glEnd();
}

}  // namespace vellum
