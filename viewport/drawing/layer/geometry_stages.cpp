#include "viewport/drawing/layer/geometry_stages.h"

#include "glsl_shader/Base_shader.h"

namespace vellum::viewport {

bool hasGeometryStages(Core_RL& layer) {
    return layer.checkShaderSupport() && Base_shader::hasGeometryStages();
}

}  // namespace vellum::viewport
