// An application that includes GLEW first.

#include <GL/glew.h>

#include "vl_raster_gl.h"

#include "application.h"

int main() {
    return runApplication();
}
