#pragma once

#include "Program_gl.h"
#include "foundation/basic/VL_String.h"
#include "foundation/image/VL_Image.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "raster_gl_export.h"

#include <string>

namespace vellum {

class Shader_gl;

/// The base of all GLSL effects: one program, up to three stages, cached parameters, and textures from
/// images.
///
/// The application constructs an effect and sets its parameters; renderers call the operations of
/// Mesh_RL_Shader. The stages are compiled when the effect is enabled for the first time.
///
/// A new effect:
///
///     class Flat_shader : public Base_shader {
///     public:
///         void setSize(float const& pixels) { _store(size, pixels); }
///         void create() override {
///             stage1 = new Shader_gl;
///             stage1->loadShaderSource(GL_VERTEX_SHADER, VERTEX_TEXT, false);
///             program->attach(stage1, nullptr, nullptr);
///             created = true;
///             enable(true);
///             log = program->getInfoLog();
///         }
///         void preprocess() override {
///             if (dirty) enable(true);
///             _openPass(1);                              // closed by _closePass() in cleanup()
///             _useProgram();
///             program->setUniform("size", size);
///         }
///         void postprocess() override { dirty = false; }
///         void cleanup() override { _closePass(); }
///     private:
///         float size = 1;
///     };
///
/// preprocess() sends the uniforms of a dirty effect. Setters make the effect dirty; when a value changes
/// that has no setter, such as the size of the viewport, the application calls markDirty().
/// Deliberate (unsent-when-clean): a pass of a clean effect caches new values and does not send them.
///
/// Failures are not reported to the caller. If a stage does not compile, the render layer prints its log
/// (Core_RL::checkShaderCompilationErrors), and the program is linked without the stage; getLog() does not
/// have its reason. If the program does not link, GL rejects it, and getLog() has the reason. A pass sets its
/// up to 32 uniforms by keys (Program_gl::UniformKey), because searching for the names would cost as much as
/// the pass. All operations must be called on the thread that owns the context. Textures are created and
/// deleted through VL_Raster.
class VL_RASTER_GL_EXPORT Base_shader : public Mesh_RL_Shader {
public:
    /// Selects the variant of the vertex stage of a particle effect, which defines the meaning of the values.
    /// Any number converts.
    enum ProcessType : unsigned int {};

    Base_shader();  ///< Not created, and dirty. GL: none.

    /// Creates a fresh effect: GL objects have one owner, and subclasses copy their parameters. GL: none.
    /// Deliberate (fresh-copy): copies nothing.
    Base_shader(Base_shader const& other);
    Base_shader& operator=(Base_shader const&) = delete;

    /// Deletes the program, then the stages. Needs the context that made them.
    /// GL: glDeleteProgram and glDeleteShader, for what there is.
    ~Base_shader() override;

    // == Lifecycle ==

    /// Passes values to the program by name: `size` integers or floats, or, for any other type, a square
    /// matrix of order `size`, column by column. Cached and sent as by Program_gl::setUniform().
    /// GL: while the program is enabled, glGetUniformLocation and glUniform*.
    void setShaderConstant(char const* name, Mesh_RL_Shader::UNIFORM_TYPE type, unsigned int size,
                           void* values) override;

    /// Deletes the stages; the next enable(true) creates the effect again, with the same program and its
    /// cached uniforms.
    /// GL: glDetachShader and glDeleteShader, for what there is.
    virtual void reload();

    /// Takes the program into use with all cached uniforms (true) or out of use (false). Creates the effect
    /// first if it is not created.
    /// Deliberate (create-to-disable): creates it for false as well.
    /// GL: the calls of create(), once; then glLinkProgram after a change of stages, glUseProgram, and per
    /// cached uniform glGetUniformLocation and glUniform*; or glUseProgram(0).  State: the current program.
    void enable(bool const& on);

    /// Makes the next preprocess() send every uniform: for values that no setter changes, such as the size of
    /// the viewport. GL: none.
    void markDirty();

    /// Whether the driver supports geometry stages, for GL_EXT_geometry_shader4 or in GLSL 1.50 (from OpenGL
    /// 3.2 on). Without them, effects that need one (spheres, arrows, tessellated displacements) lose the
    /// stage and draw incorrectly.
    /// GL: isExtensionSupported(), and without the extension glGetString(GL_VERSION).
    static bool hasGeometryStages();

    // == Logs ==

    std::string getLog() const;  ///< The program's info log of the last link. GL: none.

    /// The compilation logs of the attached stages. GL: none.
    std::string getCompilationLog();

    // == Textures ==

    /// Uploads an image as the contents of a texture: repeating, linearly filtered, without mipmaps. Three
    /// channels are uploaded as RGB, others as RGBA; gray is copied to all channels. An empty image is
    /// ignored. If GL rejects an image, the texture has no contents, and no error is reported. Parameters of
    /// the former texture are lost.
    ///
    /// Deliberate (ignored-texture-name): deletes the texture, creates another name, and uploads to the old
    /// one.
    /// Deliberate (discarded-error): clears one pending error.
    /// \param internalFormat GL's storage of the pixels: GL_RGB, GL_RGBA32F_ARB, ...
    /// GL: glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x 4, glTexImage2D, glGetError,
    /// glTexEnvf. If the length of a row is not a multiple of 4 bytes, also glPushClientAttrib and
    /// glPixelStorei before the upload and glPopClientAttrib after it; an unpack alignment of at most 4 is
    /// assumed.
    /// State: the bound texture, the texture environment (GL_MODULATE).
    void loadTexture(VL_Image const& image, unsigned int const& texture, int const& internalFormat);

    /// As loadTexture() with GL_RGBA32F_ARB.
    void loadTextureFloat32(VL_Image const& image, unsigned int const& texture);

    /// As loadTexture() with GL_RGB.
    void loadTextureRGB(VL_Image const& image, unsigned int const& texture);

    /// Reads an image file and uploads it. The texture is deleted in any case; an empty path and a file that
    /// cannot be read leave it without contents.
    /// GL: glDeleteTextures, then the calls of loadTexture().
    void loadTextureFloat32(VL_String const& path, unsigned int const& texture);
    void loadTextureRGB(VL_String const& path, unsigned int const& texture);

    /// The smallest power of two that is not less than `v`, for 1 to 2^30; 0 and negative numbers give 0.
    /// GL: none.
    static int nextHighestPowerOf2(int v);

    /// Copies the framebuffer, from the lower left corner of the viewport, to a texture. Pixels outside the
    /// framebuffer are undefined. Shaders scale their look-ups by the sizes of viewport and texture.
    /// Deliberate (power-of-two-copy): width and height of the viewport are rounded up to powers of two.
    /// GL: glGetIntegerv(GL_VIEWPORT), glBindTexture, glTexParameteri x 4, glCopyTexImage2D.
    /// State: the bound texture.
    void copyFramebufferToTexture(unsigned int const& texture);

protected:
    /// The size of the viewport in pixels, and of the texture that copyFramebufferToTexture() creates from
    /// it.
    struct FrameSize {
        int width;
        int height;
        int textureWidth;
        int textureHeight;
    };

    // == Parts of create() ==

    /// Deletes the existing stages: the second, the first, the third.
    /// GL: glDetachShader and glDeleteShader, for what there is.
    void _deleteStages();

    /// Replaces all stages by a new vertex and fragment stage, so that a second create() attaches no second
    /// set. The caller attaches them.
    /// GL: glDetachShader and glDeleteShader per former stage, the calls of Shader_gl::loadShaderSource(),
    /// twice.
    void _loadStages(char const* vertexText, char const* fragmentText);

    // == Parts of passes ==

    /// Saves the attributes that effects change and sets their fixed-function state: texturing off, lighting
    /// with lights 0 to `lightCount` - 1, white, alpha blending. Lights above the 32nd, which no driver has,
    /// are ignored. _closePass() ends it.
    /// GL: glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT), glDisable(GL_TEXTURE_2D),
    /// glDisable(GL_TEXTURE_3D), glEnable(GL_LIGHTING), glEnable per light, glColor4f, glEnable(GL_BLEND),
    /// glBlendFunc.  State: the current color, which is not restored.
    static void _openPass(unsigned int const& lightCount);

    /// Takes the program out of use and restores the attributes that _openPass() saved.
    /// GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void _closePass();

    /// GL: glUseProgram. State: the current program; Program_gl::isEnabled() does not change.
    void _useProgram() const;

    /// GL: glGetIntegerv(GL_VIEWPORT).
    static FrameSize _readFrameSize();

    /// Sends "FrameWidth", "FrameHeight", "textureWidth" and "textureHeight", in pixels, as floats.
    void _sendFrameSize(FrameSize const& frame);

    /// Binds a texture, makes it repeating and linearly filtered, and uploads an image as its contents. If
    /// width and height differ from the image, its pixels are read in memory order, and black follows them.
    /// GL: glBindTexture, glTexParameteri x 4, glTexImage2D; for rows whose length is not a multiple of 4
    /// bytes also glPushClientAttrib, glPixelStorei and glPopClientAttrib.  State: the bound texture.
    static void _uploadTexture(VL_Image const& image, unsigned int const& texture, int const& internalFormat,
                               int const& width, int const& height);

    /// Stores a parameter and makes the effect dirty if it differs (exact comparison); a dirty effect stays
    /// dirty.
    template <class Value>
    void _store(Value& parameter, Value const& value) {
        dirty = dirty || parameter != value;
        parameter = value;
    }

    Program_gl* program;          ///< Owned; never null.
    Shader_gl* stage1 = nullptr;  ///< Owned; the vertex stage; null until create().
    Shader_gl* stage2 = nullptr;  ///< Owned; the stage that the effect loads second; null until create().
    Shader_gl* stage3 = nullptr;  ///< Owned; the third stage, or null.
    bool dirty = true;  ///< preprocess() must enable the program; set by setters, cleared after a pass.
    std::string log;    ///< The program's log after create().

private:
    void _loadTexture(VL_String const& path, unsigned int const& texture, int const& internalFormat);

    Program_gl::UniformKey frameWidthKey{"FrameWidth"};
    Program_gl::UniformKey frameHeightKey{"FrameHeight"};
    Program_gl::UniformKey textureWidthKey{"textureWidth"};
    Program_gl::UniformKey textureHeightKey{"textureHeight"};
};

}  // namespace vellum
