#include "internal/misuse.h"

#if defined(VL_CHECK_LIFETIMES)

#include "foundation/basic/lifetimes.h"
#include "foundation/raster/Core_RL.h"
#include "internal/gl_api.h"

#include <cstdio>
#include <cstdlib>

namespace vellum::misuse {

namespace {

bool (*contextProbe)() = nullptr;

[[noreturn]] void fail(char const* operation, char const* what) {
    std::fprintf(stderr, "vl_raster_gl: %s: %s\n", operation, what);
    std::abort();
}

/// Without a current context the dispatch of OpenGL has no driver to ask, and answers null.
bool isContextCurrent() {
    return glGetString(GL_VERSION) != nullptr;
}

}  // namespace

void requireLayer(char const* operation) {
    if (VL_Raster == nullptr) {
        fail(operation, "there is no render layer; construct a Core_RL_GL before it");
    }
    refuseDeadLayer(operation);
}

void refuseDeadLayer(char const* operation) {
    if (VL_Raster != nullptr && !lifetimes::isAlive(VL_Raster)) {
        fail(operation, "the render layer is gone; effects and renderers must end before it");
    }
}

void requireContext(char const* operation) {
    bool const isCurrent = contextProbe != nullptr ? contextProbe() : isContextCurrent();
    if (!isCurrent) {
        fail(operation, "no OpenGL context is current on this thread");
    }
}

void requireMesh(char const* operation, Mesh const* mesh) {
    if (mesh != nullptr && !lifetimes::isAlive(mesh)) {
        fail(operation, "the mesh of the renderer is gone; it must outlive its renderers");
    }
}

void requireEffect(char const* operation, Mesh_RL_Shader const* effect) {
    if (effect != nullptr && !lifetimes::isAlive(effect)) {
        fail(operation, "the effect of the renderer is gone; set `shader` to null before it ends");
    }
}

void setContextProbe(bool (*isCurrent)()) {
    contextProbe = isCurrent;
}

}  // namespace vellum::misuse

#endif
