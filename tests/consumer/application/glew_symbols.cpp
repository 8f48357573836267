// The library hands GLEW on: its functions and entry-point variables are found on the library's own handle.

#include "vl_raster_gl.h"

#include <dlfcn.h>

#include <cstdio>

int main() {
    vellum::Core_RL_GL const layer;  // the program needs the library, so it is loaded
    void* const library = dlopen(VL_RASTER_GL_SONAME, RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) {
        std::fprintf(stderr, "%s is not loaded\n", VL_RASTER_GL_SONAME);
        return 1;
    }
    int missing = 0;
    for (char const* const name :
         {"glewInit", "glewIsSupported", "glewGetExtension", "glewGetString", "glewGetErrorString",
          "glewExperimental", "__glewCreateShader", "__glewGenBuffers", "__glewProgramParameteriEXT",
          "__GLEW_VERSION_1_5", "__GLEW_EXT_geometry_shader4"}) {
        if (dlsym(library, name) == nullptr) {
            std::fprintf(stderr, "%s has no %s\n", VL_RASTER_GL_SONAME, name);
            ++missing;
        }
    }
    return missing == 0 ? 0 : 1;
}
