#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws a mesh as glass: it reflects an environment image and refracts the scene behind it.
///
/// init() copies the framebuffer, which the glass refracts. So the scene is drawn first, then the glass:
///
///     Glass_shader glass;
///     glass.setEnvironmentTexture("studio.jpg");
///     drawScene();
///     mesh.shader = &glass;
///     mesh.render(MeshShading{...});       // create, init, preprocess, draw, postprocess, cleanup
///
/// Four fifths of the color are a mixture of reflection and refraction, one fifth is the base color under the
/// first two lights. The share of the refraction is the cosine between view and normal times the mix ratio,
/// clamped to 0.1 and 0.9. docs/shader_spaces.md lists the spaces of the names in the shader texts.
///
/// The environment is an image of all directions in eye space (x to the right, y up, z toward the viewer).
/// Its middle half contains the directions toward the viewer, from left to right; its outer quarters contain
/// the directions away from the viewer, with straight ahead on the seam. The cosine to the x axis is linear
/// across the image, the cosine to the y axis linear upward. Without an image reflections are black.
///
///     s      0        1/4       1/2       3/4        1
///     x      0    ->  -1    ->   0    ->   1    ->   0       of the direction without its height
///     z    away        |      toward       |       away      t = (y + 1) / 2
///
/// Deliberate (both-lights-in-glass): lights 0 and 1 always count.
/// Deliberate (repeating-framebuffer-copy): at the left and bottom edges the filter reads the opposite edges.
class VL_RASTER_GL_EXPORT Glass_shader : public Base_shader {
public:
    /// GL: glGenTextures, twice.
    Glass_shader();

    /// Copies depth, mix ratio and environment. GL: glGenTextures, twice.
    /// Deliberate (partial-effect-copy): base color, light and light count have their defaults.
    Glass_shader(Glass_shader const& other);

    /// GL: glDeleteTextures for both textures, then glDeleteProgram and glDeleteShader per stage.
    ~Glass_shader() override;

    /// Copies depth, mix ratio and environment of another effect.
    /// GL: none before create(); afterwards as setEnvironmentTexture().
    void copy(Glass_shader const& other);

    // == Parameters ==
    // A setter makes the effect dirty if the value differs; see Base_shader.

    /// Sent as "LightPos"; the built-in texts do not read it. Default (1, 1, 0, 0).
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    /// The color of the lit glass, each 0 to 1; alpha is not used. Default (0, 1, 0, 1).
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// The offset of the refracted image, in normalized device coordinates. Default 0.1.
    void setDepth(float const& depth);

    /// The factor of the cosine between view and normal. Default 1.
    void setMixRatio(float const& ratio);

    /// The number of fixed-function lights that a pass enables, from GL_LIGHT0 on. Default 1.
    void setNLights(unsigned int const& count);

    /// Loads the environment image, in any format of VL_Image. The same path is loaded again only if the
    /// effect is dirty. An empty path and a file that cannot be read leave the environment without contents.
    /// GL: glDeleteTextures; with an image glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x
    /// 4, glTexImage2D, glGetError, glTexEnvf.  State: the bound texture, the texture environment.
    void setEnvironmentTexture(VL_String path);

    // == Lifecycle ==

    /// Loads, attaches and links the stages, and stores the program's log. A dirty effect also loads its
    /// environment.
    /// GL: the calls of Shader_gl::loadShaderSource() for two stages, glCreateProgram, glAttachShader x 2;
    /// the calls of setEnvironmentTexture(), if any; glLinkProgram, glUseProgram, glGetProgramInfoLog.
    void create() override;

    /// Copies the framebuffer. The scene behind the glass must be drawn before.
    /// GL: glGetIntegerv(GL_VIEWPORT), glBindTexture, glTexParameteri x 4, glCopyTexImage2D.  State: the
    /// bound texture.
    void init() override;

    /// Opens the pass.
    /// GL: when dirty glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*;
    /// glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white, alpha
    /// blending; glGetIntegerv(GL_VIEWPORT); glUseProgram; the uniforms; the environment at texture unit 0,
    /// the copy of the framebuffer at unit 1.
    /// State: the current color, the textures of both units, the active unit; cleanup() does not restore
    /// them.
    void preprocess() override;

    void postprocess() override;  ///< Clears the dirty flag. GL: none.

    /// Closes the pass and deletes the copy of the framebuffer.
    /// Deliberate (freed-refraction-name): the next init() uses the deleted name again.
    /// GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib, glDeleteTextures.
    void cleanup() override;

private:
    Color4<float> lightPosition{1, 1, 0, 0};
    Color4<float> baseColor{0, 1, 0, 1};
    unsigned int environmentTexture;  // owned
    unsigned int refractionTexture;   // owned; without contents between cleanup() and init()
    VL_String environmentPath;        // empty: none
    float depth = 0.1F;
    float mixRatio = 1;
    unsigned int lightCount = 1;

    Program_gl::UniformKey baseColorKey{"BaseColor"};
    Program_gl::UniformKey lightPositionKey{"LightPos"};
    Program_gl::UniformKey depthKey{"Depth"};
    Program_gl::UniformKey mixRatioKey{"MixRatio"};
    Program_gl::UniformKey lightCountKey{"nLights"};
};

}  // namespace vellum
