#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Color4.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws a mesh as glass: the surroundings reflected in it, and what was drawn before seen through it, bent.
///
/// What is seen through the glass is a copy of the framebuffer, taken by init(). So the scene is drawn first,
/// then the glass:
///
///     Glass_shader glass;
///     glass.setEnvironmentTexture("studio.jpg");
///     drawScene();
///     mesh.shader = &glass;
///     mesh.render(MeshShading{...});       // create, init, preprocess, draw, postprocess, cleanup
///
/// Of the color, four fifths are a mixture of reflection and refraction, and one fifth is the base color under
/// the first two lights. The more the surface faces the viewer, the more is seen through it: the share is the
/// cosine of the angle between view and normal, times the mix ratio, between 0.1 and 0.9.
///
/// The environment is an image of all directions in eye space (x to the right, y up, z toward the viewer).
/// Its middle half has the directions toward the viewer, from left to right; its outer quarters those away
/// from the viewer, so that straight ahead lies on the seam. Across the image the cosine to the x axis runs
/// evenly, upward that to the y axis. Without an image reflections are black.
///
///     s      0        1/4       1/2       3/4        1
///     x      0    ->  -1    ->   0    ->   1    ->   0       of the direction without its height
///     z    away        |      toward       |       away      t = (y + 1) / 2
///
/// Deliberate (both-lights-in-glass): both lights always count, whatever the number of lights; a light that
/// is off has its GL position all the same. The framebuffer's copy repeats, so that at the very left and
/// bottom edge of the frame the filter takes a share from beyond its right and top edge.
class VL_RASTER_GL_EXPORT Glass_shader : public Base_shader {
public:
    /// GL: glGenTextures, twice.
    Glass_shader();

    /// An effect of its own with the same depth, mix ratio and environment. Deliberate (partial-effect-copy):
    /// base color, light and light count have their first values. GL: glGenTextures, twice.
    Glass_shader(Glass_shader const& other);

    /// GL: glDeleteTextures for both textures, then as Base_shader.
    ~Glass_shader() override;

    /// Takes over depth, mix ratio and environment of another effect; the rest stays.
    /// GL: none; on an effect that is created, that of setEnvironmentTexture().
    void copy(Glass_shader const& other);

    // == Parameters ==
    // A setter makes the effect dirty when the value differs from the one before; see Base_shader.

    /// Sent as "LightPos"; the effect's own texts do not read it. First (1, 1, 0, 0).
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    /// The color of the glass under light, each 0 to 1; alpha is not used. First (0, 1, 0, 1).
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// How far the picture behind the glass is moved, as a part of half the frame. First 0.1.
    void setDepth(float const& depth);

    /// What the cosine between view and normal is multiplied by. First 1.
    void setMixRatio(float const& ratio);

    /// The number of fixed-function lights that a pass switches on, from GL_LIGHT0 on. First 1.
    void setNLights(unsigned int const& count);

    /// Names the picture of the surroundings, in any format of VL_Image, and loads it. The same path again is
    /// loaded again only while the effect is dirty. An empty path and a file that cannot be read leave the
    /// environment without contents.
    /// GL: that of loadTextureRGB().  State: the bound texture, the texture environment.
    void setEnvironmentTexture(VL_String path);

    // == Lifecycle ==

    /// Loads, attaches and links the stages, and keeps the program's log. While the effect is dirty the
    /// environment is loaded too.
    void create() override;

    /// Takes the copy of the framebuffer: what lies behind the glass must have been drawn.
    /// GL: that of copyFramebufferToTexture().  State: the bound texture.
    void init() override;

    /// Opens the pass.
    /// GL: that of enable(true) when dirty; glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off,
    /// lighting and lights on, white, alpha blending; glGetIntegerv(GL_VIEWPORT); glUseProgram; the uniforms;
    /// the environment at texture unit 0, the copy of the framebuffer at unit 1.
    /// State: the current color, the textures of both units, the active unit; cleanup() does not restore them.
    void preprocess() override;

    void postprocess() override;  ///< The effect is no longer dirty. GL: none.

    /// Closes the pass and releases the copy of the framebuffer. Deliberate (freed-refraction-name): its name
    /// is kept, freed as it is, and taken again by the next init(); a texture that another one makes in
    /// between may get the same name.
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
