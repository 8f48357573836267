#pragma once

/// \file
/// OpenGL and GLU with their prototypes, for the sources of the library alone. The library calls OpenGL
/// directly, never through the function pointers of GLEW, so it works without initializing GLEW.

#define GL_GLEXT_PROTOTYPES 1

#if defined(__APPLE__)
#include <OpenGL/gl.h>
#include <OpenGL/glext.h>
#include <OpenGL/glu.h>
#else
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>
#endif
