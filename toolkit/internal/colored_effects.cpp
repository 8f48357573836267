#include "toolkit/internal/colored_effects.h"

#include "Program_gl.h"
#include "Shader_gl.h"

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

namespace {

// Uniforms: size of a sphere whose factor is 1, in clip space. The varyings are those that the geometry stage
// reads.
constexpr char const* SPHERES = R"(uniform float size;
varying float vradius;
varying mat4 matrix;

void main()
{
    gl_FrontColor = vec4(clamp(gl_Color.rgb, 0.0, 1.0), 1.0);
    vradius = size * gl_Color.a;
    matrix = gl_ModelViewProjectionMatrix;
    gl_Position = gl_Vertex;
}
)";

constexpr char const* ARROWS = R"(varying mat4 matrix;
varying vec3 magnitude;

void main()
{
    gl_FrontColor = vec4(clamp(gl_Normal, 0.0, 1.0), 1.0);
    magnitude = gl_Color.rgb;
    matrix = gl_ModelViewProjectionMatrix;
    gl_Position = gl_Vertex;
}
)";

/// Puts another vertex stage in place of that of a program; the next enable() links it again.
void replaceVertexStage(Program_gl& program, Shader_gl*& stage, char const* text) {
    delete stage;
    stage = new Shader_gl;
    stage->loadShaderSource(GL_VERTEX_SHADER, text, false);
    program.attach(stage, nullptr, nullptr);
}

}  // namespace

void ColoredSpheres::create() {
    SphereRendering_shader::create();
    replaceVertexStage(*program, stage1, SPHERES);
    enable(true);
    log = program->getInfoLog();
}

void ColoredArrows::create() {
    ArrowRendering_shader::create();
    replaceVertexStage(*program, stage1, ARROWS);
    enable(true);
    log = program->getInfoLog();
}

}  // namespace vellum::toolkit
