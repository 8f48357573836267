#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

namespace vellum {

/// Draws an ocean: a grid in the plane of x and z, moved by a texture, with sky and depth mixed by the angle of view,
/// highlights and foam.
///
/// A texel's red, green and blue, 0 to 1, move a point by -1 to 1 along the tangent, the normal and the binormal of the
/// surface, along the normal times the scale; its alpha is the foam. Light is GL_LIGHT0's; a pass switches GL_LIGHT1 on
/// as well. Highlights have ten times the shininess and three times the color of the front material.
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
/// Deliberate (axis-tangent-frame): only normals along an axis have a tangent; others are moved along x, y
/// and z of object space. Foam needs an image with alpha: without one it counts as 1, and all is foam.
/// Deliberate (always-dirty-ocean): the effect stays dirty, so every pass sends everything.
/// The texture belongs to the effect and is deleted with it.
class VL_RASTER_GL_EXPORT Displacement_XZ_shader : public Base_shader {
public:
    /// Light from (1, 1, 0), a sea green base color (0.1, 0.3, 0.35), scale 1, one tile, 100 x 100 units, no foam, a map
    /// of 512 texels.
    /// GL: glGenTextures.
    Displacement_XZ_shader();

    /// An effect of its own with the same parameters and no texture. GL: none before its first use.
    Displacement_XZ_shader(Displacement_XZ_shader const& other);

    /// GL: glDeleteTextures, then that of Base_shader.
    ~Displacement_XZ_shader() override;

    // == Parameters ==

    /// Sent as "lightpos"; the effect's own texts read GL_LIGHT0 instead.
    void setLightPosition(float const& x, float const& y, float const& z, float const& w);

    void setBaseColor(float const& r, float const& g, float const& b,
                      float const& a);  ///< A fifth of the color.
    void setScale(float const& scale);  ///< The displacement along the normal.

    /// The size of the grid that one tile of the map covers, in units. Normals are taken on it.
    void setDim_X(float const& size);
    void setDim_Z(float const& size);

    /// What texture coordinates are multiplied by: the number of tiles in their range 0 to 1.
    void setRepeat_U(float const& tiles);
    void setRepeat_V(float const& tiles);

    /// The width and height of the map in texels. Normals are taken from texel to texel.
    void setResolution(int const& texels);

    /// How much foam there is: 0 where alpha is exactly 1 alone, 1 wherever it is above 0. Foam sets in where alpha is
    /// 1 - threshold, and grows with the square from there on.
    void setFoamThreshold(float const& threshold);

    /// Uploads an image into the texture, as floats. An empty one does nothing.
    /// GL: that of Base_shader::loadTexture().
    void setDisplacementTexture(VL_Image const& image);

    // == Lifecycle ==

    /// Compiles and links the stages, takes the program into use and keeps its log.
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: that of enable(true); glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting, GL_LIGHT0 and
    /// GL_LIGHT1 on, white, alpha blending; glGetIntegerv(GL_VIEWPORT); the uniforms; the texture; the log.
    /// State: the current color, the active texture unit (1) and its 2-D texture, which cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< Deliberate (always-dirty-ocean): nothing; see the class. GL: none.

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
    bool flag = false;                     // cleared by create(); part of the interface's layout
    int resolution = 512;                  // texels across the map
    unsigned int displacementTexture = 0;  // owned; 0 until it has a name
};

}  // namespace vellum
