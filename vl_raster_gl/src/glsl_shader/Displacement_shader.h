#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <array>
#include <string>

namespace vellum {

/// Displaces a surface by a texture and shades it with one or two of GL's lights.
///
/// A texel's red, green and blue, 0 to 1, move a point along x, y and z of object space by -scale to +scale
/// hundredths; middle gray leaves it in place. The texture is looked up at the first texture coordinate times the tile
/// factor, repeating. The normal of each pixel is rebuilt from the texture, as if the surface lay in the plane of x and
/// z. Lights, materials and their attenuation are GL's: GL_LIGHT0, and GL_LIGHT1 with a light count above 1.
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
/// The plain path moves the vertices there are. The tessellated path cuts every triangle, along its sides, into depth x
/// depth smaller ones first, in a geometry stage; the input must then be triangles. It needs OpenGL 2.1, else the
/// plain path is drawn; only the first light shines in it. How far a triangle can be cut depends on the driver. One
/// triangle gives 2 d^2 + d vertices at depth d.
/// - Drivers with GL_EXT_geometry_shader4 leave out the vertices beyond their limit (GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT;
///   1024 is enough for depth 22).
/// - Others, from OpenGL 3.2 on, draw a depth that is too great at the greatest that fits: the vertices must stay
///   within GL_MAX_GEOMETRY_OUTPUT_VERTICES, and 15 times as many within GL_MAX_GEOMETRY_TOTAL_OUTPUT_COMPONENTS. That
///   is depth 5 with the 1024 components that every driver has to have and most have.
///
/// Deliberate (four-component-displacement): all four channels displace in the plain path, so that an image
/// without alpha, which counts as 1, moves w by 0.01: points come one part in a hundred nearer to the origin.
/// Only with an alpha of one half does middle gray leave the vertices exactly in place. The tessellated path
/// moves x, y and z alone. Deliberate (rounded-displacement-size): a file's picture is uploaded as if its
/// sizes were powers of two; others come out skewed and with black at the top. Images that are passed
/// themselves may have any sizes. The normals texture is bound for the program and not read by it.
/// Textures belong to the effect and are deleted with it.
class VL_RASTER_GL_EXPORT Displacement_shader : public Base_shader {
public:
    /// White, scale 1, one tile, depth 2, plain path, one light, no textures.
    /// GL: glGenTextures, twice.
    Displacement_shader();

    /// An effect of its own with the same scale, tile factor, depth, path and displacement file, which it reads itself
    /// when it is created. Base color, light count and normals are as at the start. GL: none before its first use.
    Displacement_shader(Displacement_shader const& other);

    /// GL: glDeleteTextures, twice, then that of Base_shader.
    ~Displacement_shader() override;

    /// Takes over the scale, tile factor, depth, path and displacement file of another effect. Where path or file
    /// differ, the effect is created again when it is next enabled.
    /// GL: that of reload(), if any.
    void copy(Displacement_shader const& other);

    // == Textures ==

    /// Reads a picture file into the texture that displaces, or into that of the normals; the effect keeps the picture,
    /// and creating it reads the displacement file again. A file that cannot be read leaves the texture without
    /// contents. The path of the last call does nothing while the effect is not dirty.
    /// GL: that of loadTexture(), if any.
    void setDisplacementTexture(VL_String path);
    void setNormalsTexture(VL_String path);

    /// Uploads an image into the texture that displaces, or into that of the normals, as floats. The image is not
    /// kept. An empty one does nothing.
    /// GL: that of Base_shader::loadTexture().
    void setDisplacementTexture(VL_Image const& image);
    void setNormalsTexture(VL_Image const& image);

    using Base_shader::loadTexture;

    /// Reads a picture file into `image`, which is deleted and made anew, and uploads it as floats; see the class about
    /// its sizes. A file that cannot be read leaves the texture without contents.
    /// \param image owned by the caller; may be null before, never afterwards.
    /// GL: glDeleteTextures; with a picture glBindTexture, glTexParameteri x 4, glTexImage2D.
    /// State: the bound texture.
    void loadTexture(VL_String const& path, VL_Image*& image, unsigned int const& texture);

    // == Parameters ==
    // A setter makes the effect dirty when the value differs from the one before; see Base_shader.

    /// What the lights' and the material's colors are multiplied by, highlights apart.
    void setBaseColor(float const& r, float const& g, float const& b, float const& a);

    /// The greatest displacement along each axis, in hundredths of a unit.
    void setScale(float const& x, float const& y, float const& z);
    void setScale(Vector3<float> const& scale);

    /// How often the texture repeats within the range 0 to 1 of each texture coordinate; z is not used.
    void setTileScale(float const& u, float const& v);
    void setTileScale(Vector3<float> const& tiles);

    /// Into how many parts the tessellated path cuts each side of a triangle. 0 and less: no cut, and no displacement.
    /// For the greatest see the class.
    void setDepth(int const& depth);

    /// Chooses the tessellated path or the plain one. The effect is reloaded when the choice differs or the effect is
    /// dirty, and created again when it is next enabled.
    /// GL: that of reload(), if any.
    void tesselate(bool const& on);

    /// Whether the tessellated path is chosen; once the effect is created, whether it is drawn.
    bool isTesselated() const { return tesselated; }

    /// How many lights a pass switches on, from GL_LIGHT0 on. The first two at most light the surface.
    void setNLights(unsigned int const& count);

    /// The stored scale (x, y, z) and tile factor (u, v), for user interfaces that edit them in place; the caller tells
    /// markDirty() afterwards. Valid as long as the effect.
    float* getScalePtr() { return scale.data(); }
    float* getTileFactorPtr() { return tileFactor.data(); }

    // == Lifecycle ==

    /// Compiles and links the stages of the chosen path, and reads the displacement file, if one is set and the effect
    /// is dirty. Prints "OpenGL 2.1 NOT ready" where the tessellated path is chosen and the driver is older.
    /// GL: that of the stages, of loadTexture() and of enable(true).
    void create() override;

    /// GL: glUseProgram. State: the current program.
    void init() override;

    /// Opens the pass.
    /// GL: that of enable(true) when dirty; glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting
    /// and lights on, white, alpha blending; glGetIntegerv(GL_VIEWPORT); the uniforms; the textures; the log.
    /// State: the current color, the active texture unit (1) and the 2-D textures of units 0 and 1, which cleanup()
    /// does not restore.
    void preprocess() override;

    void postprocess() override;  ///< The effect is no longer dirty. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

    void createShadersCompatible();  ///< Makes and attaches the stages of the plain path. Called by create().

    /// Makes and attaches the stages of the tessellated path. Called by create().
    /// GL: that of the stages; glProgramParameteriEXT x 3 with the extension; glGetIntegerv x 2.
    void createShadersGeometry();

private:
    /// What a pass sets: width and height of the frame, depth, light count; base color; scale; tile factor.
    void _nameTextures();

    std::array<float, 4> baseColor{1, 1, 1, 1};  // red, green, blue, alpha
    std::array<float, 3> scale{1, 1, 1};         // hundredths of a unit
    std::array<float, 2> tileFactor{1, 1};       // tiles per unit of the texture coordinates
    float spare = 1;                             // only copied; part of the interface's layout
    VL_Image* normalsImage = nullptr;            // owned; of the last file that was to be read
    VL_Image* displacementImage = nullptr;       // owned; of the last file that was to be read
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
