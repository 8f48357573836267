// An application that includes GLEW last; GLEW's header refuses to come after any other header of OpenGL.

#include "vl_raster_gl.h"

#include <GL/glew.h>

#include "application.h"

int main() {
    return runApplication();
}
