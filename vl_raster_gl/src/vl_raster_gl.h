#pragma once

/// \file
/// The whole public interface of the library in one include. It includes no GL header; the application may
/// include GLEW before or after it.

#include "foundation/foundation.h"

#include "Camera_RL_GL.h"
#include "Core_RL_GL.h"
#include "MeshImporter_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "Particles_RL_GL_v2.h"
#include "Program_gl.h"
#include "Shader_gl.h"
#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/Base_shader.h"
#include "glsl_shader/Custom_shader.h"
#include "glsl_shader/Displacement_XZ_shader.h"
#include "glsl_shader/Displacement_shader.h"
#include "glsl_shader/Glass_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SSScattering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
