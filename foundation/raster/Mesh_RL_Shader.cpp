#include "foundation/raster/Mesh_RL_Shader.h"

namespace vellum {

Mesh_RL_Shader::Mesh_RL_Shader() = default;

Mesh_RL_Shader::~Mesh_RL_Shader() = default;

void Mesh_RL_Shader::create() {}

void Mesh_RL_Shader::init() {}

void Mesh_RL_Shader::preprocess() {}

void Mesh_RL_Shader::postprocess() {}

void Mesh_RL_Shader::cleanup() {}

void Mesh_RL_Shader::setShaderConstant(char const*, Mesh_RL_Shader::UNIFORM_TYPE, unsigned int, void*) {}

}  // namespace vellum
