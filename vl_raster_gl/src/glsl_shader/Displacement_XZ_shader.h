#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws an ocean: a grid in the plane of x and z, displaced by a texture, with sky and depth colors mixed by
/// the viewing angle, highlights and foam.
///
/// Red, green and blue of a texel, 0 to 1, displace a vertex by -1 to 1 along the tangent, the normal (times
/// the scale) and the binormal of the surface; alpha is the foam, and 1 in an image without alpha. GL_LIGHT0
/// lights the surface; a pass enables GL_LIGHT1 as well. Highlights have ten times the shininess and three
/// times the color of the front material. docs/shader_spaces.md lists the spaces of the names in the shader
/// texts.
///
///     Displacement_XZ_shader ocean;
///     ocean.setDisplacementTexture(waves);      // 512 x 512 texels
///     ocean.setDim_X(100);                      // the map covers 100 x 100 units
///     ocean.setDim_Z(100);
///     ocean.setFoamThreshold(0.3F);
///     ocean.preprocess();
///     drawGrid();                               // normals (0, 1, 0), texture coordinates 0 to 1
///     ocean.postprocess();
///     ocean.cleanup();
///
/// Deliberate (axis-tangent-frame): vertices whose normal is not along an axis move along x, y and z.
/// Deliberate (always-dirty-ocean): the effect stays dirty, so every pass sends every uniform. The texture
/// belongs to the effect and is deleted with it.
class VL_RASTER_GL_EXPORT Displacement_XZ_shader : public Base_shader {
public:
    /// Light at (1, 1, 0), base color (0.1, 0.3, 0.35), scale 1, one tile, 100 x 100 units, no foam, a map of
    /// 512 x 512 texels.
    /// GL: glGenTextures.
    Displacement_XZ_shader();

    /// Copies the parameters, not the texture. GL: none before its first use.
    Displacement_XZ_shader(Displacement_XZ_shader const& other);

    /// GL: glDeleteTextures, then glDeleteProgram and glDeleteShader per stage.
    ~Displacement_XZ_shader() override;

    // == Parameters ==

    /// Sent as "lightpos"; the built-in texts read GL_LIGHT0 instead.
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    /// A fifth of the final color.
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);
    void setScale(float const& scale);  ///< The displacement along the normal.

    /// The size of the part of the grid that one tile of the map covers, in units. Normals are computed from
    /// it.
    void setDim_X(float const& size);
    void setDim_Z(float const& size);

    /// The number of tiles in the range 0 to 1 of the texture coordinates.
    void setRepeat_U(float const& tiles);
    void setRepeat_V(float const& tiles);

    /// The width and height of the map in texels. Normals are computed from neighboring texels.
    void setResolution(int const& texels);

    /// The amount of foam. Foam begins where alpha is 1 - threshold and grows with the square of the excess:
    /// with 0 only alpha 1 is foam, with 1 every alpha above 0.
    void setFoamThreshold(float const& threshold);

    /// Uploads an image to the texture, as floats. An empty image is ignored.
    /// GL: glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x 4, glTexImage2D, glGetError,
    /// glTexEnvf.
    void setDisplacementTexture(VL_Image const& image);

    // == Lifecycle ==

    /// Compiles and links the stages, takes the program into use and stores its log.
    /// GL: the calls of Shader_gl::loadShaderSource() for two stages, glCreateProgram, glAttachShader x 2,
    /// glLinkProgram, glUseProgram, glGetProgramInfoLog.  State: the current program.
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*;
    /// glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting, GL_LIGHT0 and GL_LIGHT1
    /// on, white, alpha blending; glGetIntegerv(GL_VIEWPORT); the uniforms; glActiveTexture, glBindTexture;
    /// glGetProgramInfoLog.
    /// State: the current color, the active texture unit (1) and its 2-D texture, which cleanup() does not
    /// restore.
    void preprocess() override;

    void postprocess() override;  ///< Deliberate (always-dirty-ocean): empty. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

private:
    void _nameTexture();

    Color4<float> lightPosition{1, 1, 0, 0};
    Color4<float> baseColor{0.1F, 0.3F, 0.35F, 1};
    float scale = 1;                       // along the normal
    float repeatU = 1;                     // tiles
    float repeatV = 1;                     // tiles
    float dimX = 100;                      // units that a tile covers
    float dimZ = 100;                      // units that a tile covers
    float foamThreshold = 0;               // 0 none, 1 all
    bool flag = false;                     // cleared by create(), not used; part of the interface's layout
    int resolution = 512;                  // texels across the map
    unsigned int displacementTexture = 0;  // owned; 0 until it has a name

    Program_gl::UniformKey scaleKey{"scale"};
    Program_gl::UniformKey repeatUKey{"repeat_u"};
    Program_gl::UniformKey repeatVKey{"repeat_v"};
    Program_gl::UniformKey foamThresholdKey{"foamThreshold"};
    Program_gl::UniformKey dimXKey{"dim_X"};
    Program_gl::UniformKey dimZKey{"dim_Z"};
    Program_gl::UniformKey resolutionKey{"resolution"};
    Program_gl::UniformKey lightPositionKey{"lightpos"};
    Program_gl::UniformKey baseColorKey{"basecolor"};
};

}  // namespace vellum
