#include "viewport/drawing/view/Region.h"

#include <GL/glew.h>

namespace vellum::viewport {

void cropProjection(Region const& region, PictureSize const& size) {
    GLdouble projection[16];
    glGetDoublev(GL_PROJECTION_MATRIX, projection);
    GLint whole[4] = {0, 0, size.width, size.height};
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // What GLU calls picking is a crop: the region's center and size come to fill the viewport.
    gluPickMatrix(region.x + region.width / 2, region.y + region.height / 2, region.width, region.height,
                  whole);
    glMultMatrixd(projection);
    glMatrixMode(GL_MODELVIEW);
}

}  // namespace vellum::viewport
