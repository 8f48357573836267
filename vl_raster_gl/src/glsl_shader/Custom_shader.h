#pragma once

#include "foundation/basic/VL_String.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/image/VL_Image.h"
#include "glsl_shader/Base_shader.h"
#include "raster_gl_export.h"

#include <array>

namespace vellum {

/// Draws a mesh with GLSL files of a user, and feeds them a fixed set of inputs.
///
///     Custom_shader effect;
///     effect.setShaders("stripes.vert", "stripes.frag", "");
///     effect.setTexture("wood.png", 0);
///     effect.setFloatVar(12, 0);
///     mesh.shader = &effect;
///     mesh.render(MeshShading{...});       // create, init, preprocess, draw, postprocess, cleanup
///
/// The files may declare:
///
///     uniform sampler2D Texture0;          // to Texture6: images, units 0 to 6
///     uniform sampler2D TextureFB;         // the copy of the framebuffer, unit 7; see grabFrameBuffer()
///     uniform float FloatVar0;             // to FloatVar9
///     uniform vec3 Vec3Var0;               // to Vec3Var9
///     uniform vec4 Vec4Var0;               // to Vec4Var9
///     uniform vec4 BaseColor;
///     uniform int nLights;
///
/// A stage whose file is missing or does not compile falls back to a pass-through, so that the mesh stays
/// visible; the compilation log is printed (Core_RL::checkShaderCompilationErrors()). If the stages do not
/// link, getLog() has the reason, and GL draws with an invalid program.
///
/// The input of a geometry stage is triangles, its output a triangle strip. On a driver with
/// GL_EXT_geometry_shader4 it must use that extension; otherwise, from OpenGL 3.2 on, GLSL 1.50 of the
/// compatibility profile with layout qualifiers.
///
/// Indices outside 0 to 9 (variables) or 0 to 6 (textures) are ignored by setters; getters return zeros, an
/// empty path or null.
class VL_RASTER_GL_EXPORT Custom_shader : public Base_shader {
public:
    /// GL: glGenTextures, eight times.
    Custom_shader();

    /// Copies the parameters. GL: glGenTextures, eight times.
    Custom_shader(Custom_shader const& other);

    /// GL: glDeleteTextures for all textures, then glDeleteProgram and glDeleteShader per stage.
    ~Custom_shader() override;

    /// Copies all parameters of another effect: shader and texture files, variables, base color, light count,
    /// framebuffer flag. Images and GL objects are not copied: the next use creates the effect again and
    /// reads the files.
    /// GL: glDetachShader and glDeleteShader per stage.
    void copy(Custom_shader const& other);

    // == Stages ==

    /// Loads the stages from files and links them. An empty vertex or fragment path means the pass-through;
    /// an empty geometry path means no geometry stage. Does nothing if the effect is created from the same
    /// paths; reload() reads changed files again. If the effect is not created, it also reads the images that
    /// have a path and no contents, as in a copy.
    /// GL: glDetachShader and glDeleteShader for the former stages; the calls of
    /// Shader_gl::loadShaderSource() for the fragment, vertex and geometry stage, in this order;
    /// glAttachShader; with a geometry stage glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT) and
    /// glProgramParameteriEXT x 3, on drivers with the extension; glLinkProgram, glUseProgram, the cached
    /// uniforms; glGetError.
    /// State: the current program. Clears one pending error.
    void setShaders(VL_String const& vertexPath, VL_String const& fragmentPath,
                    VL_String const& geometryPath);

    // == Textures ==

    /// Reads the image of a texture, in any format of VL_Image; an empty path removes the texture. Does
    /// nothing if the path is the same and the effect is not dirty.
    /// Deliberate (unreadable-texture-continues): a file that cannot be read leaves the former contents.
    /// GL: without an image none; else glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x 4,
    /// glTexImage2D, glGetError, glTexEnvf.  State: the bound texture, the texture environment.
    void setTexture(VL_String const& path, int const& index);

    VL_String getTexturePath(int const& index) const;  ///< The image file; empty for none.

    /// The path, for dialogs that edit it in place. To read the image afterwards, call markDirty() and pass
    /// the path to setTexture().
    VL_String& refTexturePath(int const& index);

    /// Whether init() copies the framebuffer for "TextureFB". Without it the texture keeps its contents.
    /// GL: on a change glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*.  State: the
    /// current program.
    void grabFrameBuffer(bool const& on);

    bool isGrabbingFrameBuffer() const;  ///< Default false.

    // == Variables ==
    // A setter makes the effect dirty if the value differs; see Base_shader. All defaults are 0. After
    // writing through a pointer, call markDirty().

    void setFloatVar(float const& value, int const& index);
    void setVec3Var(Vector3<float> const& value, int const& index);
    void setVec4Var(Color4<float> const& value, int const& index);

    float getFloatVar(int const& index) const;
    Vector3<float> getVec3Var(int const& index) const;
    Color4<float> getVec4Var(int const& index) const;

    float* getFloatVarPtr(int const& index);
    Vector3<float>* getVec3VarPtr(int const& index);
    Color4<float>* getVec4VarPtr(int const& index);

    /// Sent as "BaseColor". Default (0, 0, 0, 1).
    void setBaseColor(Color4<float> const& color);

    /// The number of fixed-function lights that a pass enables, from GL_LIGHT0 on. Default 1.
    void setNLights(unsigned int const& count);

    // == Lifecycle ==

    /// Loads the stages from their files, unless they are loaded, and stores the program's log.
    /// GL: the calls of setShaders(); glGetProgramInfoLog.
    void create() override;

    /// GL: when the framebuffer is grabbed, glGetIntegerv(GL_VIEWPORT), glBindTexture, glTexParameteri x 4,
    /// glCopyTexImage2D.  State: the bound texture.
    void init() override;

    /// Opens the pass.
    /// GL: when dirty glUseProgram and, per cached uniform, glGetUniformLocation and glUniform*;
    /// glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT); texturing off, lighting and lights on, white, alpha
    /// blending; the textures that have a path at units 0 to 6, the copy of the framebuffer at unit 7; the
    /// uniforms; glGetProgramInfoLog; glGetError.
    /// State: the current color, the textures of the units, the active unit; cleanup() does not restore them.
    /// Clears one pending error.
    void preprocess() override;

    void postprocess() override;  ///< Clears the dirty flag. GL: none.

    /// Closes the pass. GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void cleanup() override;

private:
    static constexpr int PICTURES = 7;
    static constexpr int TEXTURES = 8;  // the last one is the copy of the framebuffer
    static constexpr int VARIABLES = 10;

    void _readPicture(int index);
    Shader_gl* _loadStage(unsigned int type, VL_String const& path, char const* passThrough);

    bool isGrabbing = false;
    std::array<VL_Image, PICTURES> images;          // as read from texturePaths
    std::array<unsigned int, TEXTURES> textures{};  // owned
    std::array<VL_String, PICTURES> texturePaths;   // empty: none
    std::array<float, VARIABLES> floats{};
    Color4<float> baseColor{0, 0, 0, 1};
    std::array<Vector3<float>, VARIABLES> vec3s{};
    std::array<Color4<float>, VARIABLES> vec4s{};
    VL_String fragmentPath;       // empty: the pass-through
    VL_String geometryPath;       // empty: no geometry stage
    VL_String vertexPath;         // empty: the pass-through
    unsigned int lightCount = 1;  // lights that a pass enables
    VL_String noPath;             // returned by refTexturePath() for an index out of range

    using Keys = std::array<Program_gl::UniformKey, VARIABLES>;
    Keys floatKeys;
    Keys vec3Keys;
    Keys vec4Keys;
    Program_gl::UniformKey baseColorKey{"BaseColor"};
    Program_gl::UniformKey lightCountKey{"nLights"};
};

}  // namespace vellum
