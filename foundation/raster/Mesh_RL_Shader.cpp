#include "foundation/raster/Mesh_RL_Shader.h"

#include "foundation/basic/lifetimes.h"

namespace vellum {

Mesh_RL_Shader::Mesh_RL_Shader() {
    lifetimes::begin(this);
}

Mesh_RL_Shader::Mesh_RL_Shader(Mesh_RL_Shader const& other) : label(other.label), created(other.created) {
    lifetimes::begin(this);
}

Mesh_RL_Shader::~Mesh_RL_Shader() {
    lifetimes::end(this);
}

void Mesh_RL_Shader::create() {}

void Mesh_RL_Shader::init() {}

void Mesh_RL_Shader::preprocess() {}

void Mesh_RL_Shader::postprocess() {}

void Mesh_RL_Shader::cleanup() {}

void Mesh_RL_Shader::setShaderConstant(char const*, Mesh_RL_Shader::UNIFORM_TYPE, unsigned int, void*) {}

}  // namespace vellum
