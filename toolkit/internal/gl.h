#pragma once

/// \file
/// OpenGL and GLU with their prototypes, for the sources of the toolkit alone. Like the library, the toolkit
/// calls OpenGL directly, so it works whether the application uses GLEW or another loader, or none.

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
