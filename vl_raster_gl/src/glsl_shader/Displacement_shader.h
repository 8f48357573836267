#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <array>
#include <string>

namespace vellum {

/// Displaces a surface by a texture and shades it with one or two fixed-function lights.
///
/// Red, green and blue of a texel, 0 to 1, displace a vertex along x, y and z of object space by -scale to
/// +scale hundredths; 0.5 leaves it in place. The texture repeats and is sampled at the first texture
/// coordinate times the tile factor. The normal of each pixel is rebuilt from the texture, as if the surface
/// lay in the plane of x and z. Lights, attenuation and materials are those of GL: GL_LIGHT0, and GL_LIGHT1
/// with a light count above 1.
///
///     Displacement_shader effect;
///     effect.setDisplacementTexture("waves.png");
///     effect.setScale(2, 5, 2);
///     effect.tesselate(true);
///     effect.preprocess();
///     drawTriangles();                  // with texture coordinates
///     effect.postprocess();
///     effect.cleanup();
///
/// The plain path displaces the existing vertices. The tessellated path first splits every triangle into
/// depth x depth smaller ones in a geometry stage; the input must be triangles, and only the first light
/// counts. It requires OpenGL 2.1; below, the plain path is drawn. The largest depth depends on the driver.
/// One triangle gives 2 d^2 + d vertices at depth d.
/// - Drivers with GL_EXT_geometry_shader4 drop the vertices beyond their limit
///   (GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT; 1024 is enough for depth 22).
/// - Other drivers, from OpenGL 3.2 on, draw a depth that is too large at the largest depth that fits: the
///   vertices must fit GL_MAX_GEOMETRY_OUTPUT_VERTICES, and 15 times as many
///   GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS. With 1024 components, the required minimum and the usual
///   value, that is depth 5.
///
/// An image without alpha counts as alpha 1. Images that are passed as VL_Image may have any size.
/// docs/shader_spaces.md lists the spaces of the names in the shader texts.
///
/// Deliberate (four-component-displacement): the plain path displaces w too, by 0.01 at alpha 1.
/// Deliberate (unread-normals-map): the normals texture is bound and not read.
/// Deliberate (rounded-displacement-size): files whose sizes are not powers of two come out skewed.
/// Textures belong to the effect and are deleted with it.
class VL_RASTER_GL_EXPORT Displacement_shader : public Base_shader {
public:
    /// White, scale 1, one tile, depth 2, plain path, one light, no textures.
    /// GL: glGenTextures, twice.
    Displacement_shader();

    /// Copies scale, tile factor, depth, path and displacement file, which the copy reads when it is created.
    /// Base color, light count and normals have their defaults. GL: none before its first use.
    Displacement_shader(Displacement_shader const& other);

    /// GL: glDeleteTextures, twice, then glDeleteProgram and glDeleteShader per stage.
    ~Displacement_shader() override;

    /// Copies scale, tile factor, depth, path and displacement file of another effect. If path or file
    /// differ, the next use creates the effect again.
    /// GL: on a reload, glDetachShader and glDeleteShader per stage.
    void copy(Displacement_shader const& other);

    // == Textures ==

    /// Reads an image file into the displacement or the normals texture. The effect keeps the image; creating
    /// the effect reads the displacement file again. A file that cannot be read leaves the texture without
    /// contents. Setting the same path again does nothing unless the effect is dirty.
    /// GL: glDeleteTextures; with an image glBindTexture, glTexParameteri x 4, glTexImage2D.
    void setDisplacementTexture(VL_String path);
    void setNormalsTexture(VL_String path);

    /// Uploads an image to the displacement or the normals texture, as floats. The image is not kept. An
    /// empty image is ignored.
    /// GL: glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x 4, glTexImage2D, glGetError,
    /// glTexEnvf.
    void setDisplacementTexture(VL_Image const& image);
    void setNormalsTexture(VL_Image const& image);

    using Base_shader::loadTexture;

    /// Reads an image file into a new `image`, deletes the former one, and uploads it as floats; see the
    /// class for its sizes. A file that cannot be read leaves the texture without contents.
    /// \param image owned by the caller; may be null on entry and is not null afterwards.
    /// GL: glDeleteTextures; with an image glBindTexture, glTexParameteri x 4, glTexImage2D.
    /// State: the bound texture.
    void loadTexture(VL_String const& path, VL_Image*& image, unsigned int const& texture);

    // == Parameters ==
    // A setter makes the effect dirty if the value differs; see Base_shader.

    /// Multiplies the colors of lights and material, except highlights.
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// The greatest displacement along each axis, in hundredths of a unit.
    void setScale(float const& x, float const& y, float const& z);
    void setScale(Vector3<float> const& scale);

    /// The number of tiles in the range 0 to 1 of each texture coordinate; z is not used.
    void setTileScale(float const& u, float const& v);
    void setTileScale(Vector3<float> const& tiles);

    /// The number of parts into which the tessellated path splits each side of a triangle. Below 1: neither
    /// tessellation nor displacement. For the largest depth see the class.
    void setDepth(int const& depth);

    /// Selects the tessellated or the plain path. If the choice differs or the effect is dirty, the effect is
    /// reloaded and the next use creates it again.
    /// GL: on a reload, glDetachShader and glDeleteShader per stage.
    void tesselate(bool const& on);

    /// Whether the tessellated path is selected; after create(), whether it is drawn.
    bool isTesselated() const { return tesselated; }

    /// The number of lights that a pass enables, from GL_LIGHT0 on. At most the first two light the surface.
    void setNLights(unsigned int const& count);

    /// The stored scale (x, y, z) and tile factor (u, v), for user interfaces that edit them in place and
    /// then call markDirty(). Valid as long as the effect.
    float* getScalePtr() { return scale.data(); }
    float* getTileFactorPtr() { return tileFactor.data(); }

    // == Lifecycle ==

    /// Compiles and links the stages of the selected path, and reads the displacement file if one is set and
    /// the effect is dirty. Prints "OpenGL 2.1 NOT ready" if the tessellated path is selected and the driver
    /// is older.
    /// GL: the calls of Shader_gl::loadShaderSource() per stage, glCreateProgram, glAttachShader per stage;
    /// with a file glDeleteTextures, glBindTexture, glTexParameteri x 4, glTexImage2D; glLinkProgram,
    /// glUseProgram, glGetProgramInfoLog.
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: when dirty glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*;
    /// glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white, alpha
    /// blending; glGetIntegerv(GL_VIEWPORT); the uniforms; glActiveTexture and glBindTexture per texture;
    /// glGetProgramInfoLog.
    /// State: the current color, the active texture unit (1) and the 2-D textures of units 0 and 1, which
    /// cleanup() does not restore.
    void preprocess() override;

    void postprocess() override;  ///< Clears the dirty flag. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

    void
    createShadersCompatible();  ///< Creates and attaches the stages of the plain path. Called by create().

    /// Creates and attaches the stages of the tessellated path. Called by create().
    /// GL: the calls of Shader_gl::loadShaderSource() for three stages, glAttachShader x 3, glGetIntegerv x
    /// 2; with the extension glProgramParameteriEXT x 3.
    void createShadersGeometry();

private:
    // Creates the names of both textures.
    void _nameTextures();

    std::array<float, 4> baseColor{1, 1, 1, 1};  // red, green, blue, alpha
    std::array<float, 3> scale{1, 1, 1};         // hundredths of a unit
    std::array<float, 2> tileFactor{1, 1};       // tiles per unit of the texture coordinates
    float spare = 1;                             // copied, not used; part of the interface's layout
    VL_Image* normalsImage = nullptr;            // owned; from the last file
    VL_Image* displacementImage = nullptr;       // owned; from the last file
    int depth = 2;                               // parts of a side
    bool tesselated = false;                     // the tessellated path is chosen
    unsigned int displacementTexture = 0;        // owned; 0 until it has a name
    unsigned int normalsTexture = 0;             // owned; 0 until it has a name
    VL_String displacementPath;                  // empty: no file
    VL_String normalsPath;                       // empty: no file
    unsigned int lightCount = 1;                 // switched on in a pass
    Program_gl::UniformKey depthKey{"depth"};
    Program_gl::UniformKey baseColorKey{"basecolor"};
    Program_gl::UniformKey scaleKey{"scale"};
    Program_gl::UniformKey tileFactorKey{"uvTileFactor"};
    Program_gl::UniformKey lightCountKey{"nLights"};
};

}  // namespace vellum
