#include "viewport/drawing/geometry_stages.h"

#include <charconv>
#include <cstring>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

/// Parses the digits of GL_VERSION by hand: the decimal point of strtod is that of the locale.
bool isVersionAtLeast(int major, int minor) {
    auto const* const version = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    if (version == nullptr) {
        return false;
    }
    char const* const end = version + std::strlen(version);
    int has[2] = {0, 0};
    char const* const dot = std::from_chars(version, end, has[0]).ptr;
    if (dot != end && *dot == '.') {
        std::from_chars(dot + 1, end, has[1]);
    }
    return has[0] != major ? has[0] > major : has[1] >= minor;
}

}  // namespace

bool hasGeometryStages(Core_RL& layer) {
    return layer.checkShaderSupport() &&
           (layer.isExtensionSupported("GL_EXT_geometry_shader4") || isVersionAtLeast(3, 2));
}

}  // namespace vellum::viewport
