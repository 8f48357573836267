#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <array>

namespace vellum {

/// Draws a mesh with GLSL files that a user has written, and feeds them a fixed set of inputs.
///
///     Custom_shader effect;
///     effect.setShaders("stripes.vert", "stripes.frag", "");
///     effect.setTexture("wood.png", 0);
///     effect.setFloatVar(12, 0);
///     mesh.shader = &effect;
///     mesh.render(MeshShading{...});       // create, init, preprocess, draw, postprocess, cleanup
///
/// What the files may declare; what they do not declare they do not get:
///
///     uniform sampler2D Texture0;          // to Texture6: pictures, units 0 to 6
///     uniform sampler2D TextureFB;         // the copy of the framebuffer, unit 7; see grabFrameBuffer()
///     uniform float FloatVar0;             // to FloatVar9
///     uniform vec3 Vec3Var0;               // to Vec3Var9
///     uniform vec4 Vec4Var0;               // to Vec4Var9
///     uniform vec4 BaseColor;
///     uniform int nLights;
///
/// A stage whose file is missing or does not compile is replaced by one that passes everything on, so that the
/// mesh is always seen. What the driver says about it is printed (Core_RL::checkShaderCompilationErrors()). A
/// program whose stages do not fit together does not link; getLog() says why, and the mesh is drawn as GL draws
/// with a program that it refuses.
///
/// A geometry stage takes triangles and gives a triangle strip. Where the driver has GL_EXT_geometry_shader4 it
/// is written for that extension; where it has not, but OpenGL 3.2, in GLSL 1.50 of the compatibility profile
/// with its layout in the text.
///
/// An index outside 0 to 9 (variables) or 0 to 6 (textures) is no error: setters ignore it, getters give zeros,
/// an empty path or null.
class VL_RASTER_GL_EXPORT Custom_shader : public Base_shader {
public:
    /// GL: glGenTextures, eight times.
    Custom_shader();

    /// An effect of its own with the same parameters. GL: glGenTextures, eight times.
    Custom_shader(Custom_shader const& other);

    /// GL: glDeleteTextures for all textures, then as Base_shader.
    ~Custom_shader() override;

    /// Takes over all parameters of another effect: files, pictures' files, variables, base color, light count,
    /// whether the framebuffer is grabbed. No images and no GL objects: the effect is created again when it is
    /// used next and reads the files itself.
    /// GL: that of reload().
    void copy(Custom_shader const& other);

    // == Stages ==

    /// Loads the stages from files and links them. An empty path stands for the stage that passes everything on;
    /// an empty geometry path for no such stage. Does nothing when the effect is created from the same paths;
    /// reload() reads changed files again. Of an effect that is not created it also reads the pictures that have
    /// a path and no image: those of a copy.
    /// GL: glDetachShader and glDeleteShader for the stages before; for each stage those of
    /// Shader_gl::loadShaderSource(), the fragment stage first, then vertex, then geometry; glAttachShader; with
    /// a geometry stage glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT) and glProgramParameteriEXT x 3, on
    /// drivers with the extension; enable(true); glGetError.
    /// State: the current program. One pending error is taken.
    void setShaders(VL_String const& vertexPath, VL_String const& fragmentPath,
                    VL_String const& geometryPath);

    // == Textures ==

    /// Reads the picture of a texture, in any format of VL_Image; an empty path takes the texture away. Does
    /// nothing when the path is the same and the effect not dirty. Deliberate (unreadable-texture-continues):
    /// a file that cannot be read leaves the texture with what it held, and the shader goes on to see that.
    /// GL: none, or that of loadTextureRGB().  State: the bound texture, the texture environment.
    void setTexture(VL_String const& path, int const& index);

    VL_String getTexturePath(int const& index) const;  ///< The picture's file; empty for none.

    /// The path, for dialogs that edit it in place. The picture is read when the path is then given to
    /// setTexture() of an effect that is dirty; see markDirty().
    VL_String& refTexturePath(int const& index);

    /// Whether init() copies the framebuffer for "TextureFB". Without it the texture holds what it last held.
    /// GL: that of enable(true) when it changes.  State: the current program.
    void grabFrameBuffer(bool const& on);

    bool isGrabbingFrameBuffer() const;  ///< Whether it does. First false.

    // == Variables ==
    // A setter makes the effect dirty when the value differs from the one before; see Base_shader. First all are
    // 0. Who writes through a pointer calls markDirty() afterwards.

    void setFloatVar(float const& value, int const& index);
    void setVec3Var(Vector3<float> const& value, int const& index);
    void setVec4Var(Color4<float> const& value, int const& index);

    float getFloatVar(int const& index) const;
    Vector3<float> getVec3Var(int const& index) const;
    Color4<float> getVec4Var(int const& index) const;

    float* getFloatVarPtr(int const& index);
    Vector3<float>* getVec3VarPtr(int const& index);
    Color4<float>* getVec4VarPtr(int const& index);

    /// Sent as "BaseColor". First (0, 0, 0, 1).
    void setBaseColor(Color4<float> const& color);

    /// The number of fixed-function lights that a pass switches on, from GL_LIGHT0 on. First 1.
    void setNLights(unsigned int const& count);

    // == Lifecycle ==

    /// Loads the stages from their files, unless that is done, and keeps the program's log.
    /// GL: that of setShaders(); glGetProgramInfoLog.
    void create() override;

    /// GL: when the framebuffer is grabbed, that of copyFramebufferToTexture().  State: the bound texture.
    void init() override;

    /// Opens the pass.
    /// GL: that of enable(true) when dirty; glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off,
    /// lighting and lights on, white, alpha blending; the textures that have a path at units 0 to 6, the copy of
    /// the framebuffer at unit 7; the uniforms; glGetProgramInfoLog; glGetError.
    /// State: the current color, the textures of the units, the active unit; cleanup() does not restore them.
    /// One pending error is taken.
    void preprocess() override;

    void postprocess() override;  ///< The effect is no longer dirty. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

private:
    static constexpr int PICTURES = 7;
    static constexpr int TEXTURES = 8;  // the last one is the copy of the framebuffer
    static constexpr int VARIABLES = 10;

    void _readPicture(int const& index);
    Shader_gl* _loadStage(unsigned int const& type, VL_String const& path, char const* passThrough);

    bool isGrabbing = false;
    std::array<VL_Image, PICTURES> images;          // as read from texturePaths
    std::array<unsigned int, TEXTURES> textures{};  // owned
    std::array<VL_String, PICTURES> texturePaths;   // empty: none
    std::array<float, VARIABLES> floats{};          // any value
    Color4<float> baseColor{0, 0, 0, 1};            // any value
    std::array<Vector3<float>, VARIABLES> vec3s{};  // any value
    std::array<Color4<float>, VARIABLES> vec4s{};   // any value
    VL_String fragmentPath;                         // empty: the stage that passes on
    VL_String geometryPath;                         // empty: no such stage
    VL_String vertexPath;                           // empty: the stage that passes on
    unsigned int lightCount = 1;                    // lights that are switched on
    VL_String noPath;                               // what refTexturePath() gives for a wrong index

    using Keys = std::array<Program_gl::UniformKey, VARIABLES>;
    Keys floatKeys;
    Keys vec3Keys;
    Keys vec4Keys;
    Program_gl::UniformKey baseColorKey{"BaseColor"};
    Program_gl::UniformKey lightCountKey{"nLights"};
};

}  // namespace vellum
