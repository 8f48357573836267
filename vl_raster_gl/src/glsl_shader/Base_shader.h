#pragma once

#include "Program_gl.h"
#include "foundation/basic/VL_String.h"
#include "foundation/image/VL_Image.h"
#include "foundation/raster/Mesh_RL_Shader.h"
#include "raster_gl_export.h"

#include <string>

namespace vellum {

class Shader_gl;

/// What all GLSL effects have in common: one program, up to three stages, parameters that are sent when they
/// are needed, textures from images.
///
/// Renderers drive an effect through the operations of Mesh_RL_Shader; the application constructs it and sets
/// its parameters. Nothing is compiled before the effect is enabled for the first time.
///
/// An effect of one's own:
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
/// Deliberate (unsent-when-clean): cleanup() takes the program out of use, and only a dirty effect takes it
/// into use with its kept uniforms in preprocess(). A pass of an effect that is not dirty therefore keeps new
/// values without sending them. Parameters are no matter, as their setters make the effect dirty. What does
/// not come from setters, such as the size of the viewport, is: the application calls markDirty() when that
/// changes.
///
/// Failures are not reported to the caller. A stage that does not compile is printed with its log by the
/// render layer (Core_RL::checkShaderCompilationErrors) and left out of the program; no log of the effect has
/// its reason. The program is linked from the stages that are left: where that succeeds the effect draws
/// without the missing one and getLog() may be empty, where it fails GL refuses the program and getLog() has
/// the reason. The uniforms of a pass go by keys (Program_gl::UniformKey): a pass sets up to 32 of them, and
/// searching for the names would cost as much as the pass.
/// Everything must be called on the thread that owns the context. Textures are made and deleted through
/// VL_Raster.
class VL_RASTER_GL_EXPORT Base_shader : public Mesh_RL_Shader {
public:
    /// Which variant of its vertex stage a particle effect uses; the effects give the values their meaning.
    /// Any number converts.
    enum ProcessType : unsigned int {};

    Base_shader();  ///< An effect that is not created, and dirty. GL: none.

    /// Deliberate (fresh-copy): takes nothing from the other effect; GL objects have one owner, and the
    /// effects copy their parameters themselves. The copy is created on its first use. GL: none.
    Base_shader(Base_shader const& other);
    Base_shader& operator=(Base_shader const&) = delete;

    /// Deletes the program, then the stages. Needs the context that made them.
    /// GL: glDeleteProgram and glDeleteShader, for what there is.
    ~Base_shader() override;

    // == Lifecycle ==

    /// Passes values to the program by name: `size` integers or floats, or, for any other type, a square
    /// matrix of order `size`, column by column. Kept and sent as Program_gl::setUniform() says.
    void setShaderConstant(char const* name, Mesh_RL_Shader::UNIFORM_TYPE type, unsigned int size,
                           void* values) override;

    /// Deletes the stages; the next enable(true) creates the effect again, with the same program and the
    /// uniforms that it keeps.
    /// GL: glDetachShader and glDeleteShader, for what there is.
    virtual void reload();

    /// Takes the program into use with all kept uniforms (true) or out of use (false). Creates the effect
    /// first when it is not created. Deliberate (create-to-disable): also to take it out of use.
    /// GL: that of create(), once, and of Program_gl::enable().  State: the current program.
    void enable(bool const& on);

    /// Lets the next preprocess() send everything again: for values that do not come from setters, such as
    /// the size of the viewport. GL: none.
    void markDirty();

    /// Whether the driver takes geometry stages, in the language of GL_EXT_geometry_shader4 or in GLSL 1.50
    /// (from version 3.2 on). Where it does not, the effects that need one (spheres, arrows, the tessellated
    /// displacement) lose it and do not draw what they should.
    /// GL: isExtensionSupported(), and glGetString(GL_VERSION) where the extension is not listed.
    static bool hasGeometryStages();

    // == Logs ==

    std::string getLog() const;  ///< What the driver said when the effect was linked last. GL: none.

    /// The compilation logs of the stages that the program has. GL: none.
    std::string getCompilationLog();

    // == Textures ==

    /// Uploads an image as the contents of a texture: repeating, linearly filtered, without mipmaps. An image
    /// with three channels gives RGB, any other RGBA; gray ones are spread out. An empty image does nothing.
    /// An image that GL refuses leaves the texture without contents, and nothing is reported.
    ///
    /// Deliberate (ignored-texture-name): the texture is deleted and another name made and left alone; GL
    /// makes the texture again when its name is bound. So whatever parameters it had are gone.
    /// \param internalFormat how GL keeps the pixels: GL_RGB, GL_RGBA32F_ARB, ...
    /// GL: glDeleteTextures, glGenTextures, glBindTexture, glTexParameteri x 4, glTexImage2D, glGetError,
    /// glTexEnvf. Rows whose length is no multiple of 4 bytes have glPushClientAttrib and glPixelStorei
    /// before the upload and glPopClientAttrib behind it; an unpack alignment of at most 4 is assumed.
    /// State: the bound texture, the texture environment (GL_MODULATE). One pending error is taken.
    void loadTexture(VL_Image const& image, unsigned int const& texture, int const& internalFormat);

    /// As loadTexture() with GL_RGBA32F_ARB.
    void loadTextureFloat32(VL_Image const& image, unsigned int const& texture);

    /// As loadTexture() with GL_RGB.
    void loadTextureRGB(VL_Image const& image, unsigned int const& texture);

    /// Reads a picture file and uploads it. The texture is deleted in any case; an empty path and a file that
    /// cannot be read leave it without contents.
    /// GL: glDeleteTextures, then as for the image.
    void loadTextureFloat32(VL_String const& path, unsigned int const& texture);
    void loadTextureRGB(VL_String const& path, unsigned int const& texture);

    /// The smallest power of two that is not less than `v`, for 1 to 2^30; 0 and negative numbers give 0.
    /// GL: none.
    static int nextHighestPowerOf2(int v);

    /// Copies the framebuffer from the lower left corner of the viewport on into a texture.
    /// Deliberate (power-of-two-copy): width and height are those of the viewport rounded up to powers of
    /// two, so the copy reaches beyond it; what lies outside the framebuffer is undefined. Shaders scale
    /// their look-ups by the sizes of frame and texture.
    /// GL: glGetIntegerv(GL_VIEWPORT), glBindTexture, glTexParameteri x 4, glCopyTexImage2D.
    /// State: the bound texture.
    void copyFramebufferToTexture(unsigned int const& texture);

protected:
    /// The viewport in pixels, and the texture that copyFramebufferToTexture() would make of it.
    struct FrameSize {
        int width;
        int height;
        int textureWidth;
        int textureHeight;
    };

    // == Pieces of create() ==

    /// Deletes the stages that there are: the second, the first, the third.
    /// GL: glDetachShader and glDeleteShader, for what there is.
    void _deleteStages();

    /// Compiles the vertex and the fragment stage, in place of all stages that there are, so that creating an
    /// effect again attaches no second set. The caller attaches them.
    /// GL: that of _deleteStages() and of Shader_gl::loadShaderSource(), twice.
    void _loadStages(char const* vertexText, char const* fragmentText);

    // == Pieces of the effects' passes ==

    /// Saves the attributes that effects change and sets the fixed-function state that they draw with: no
    /// texturing, lighting with lights 0 to `lightCount` - 1, white, alpha blending. Lights beyond the 32nd,
    /// which no driver has, are not tried. Each call needs its _closePass().
    /// GL: glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT), glDisable(GL_TEXTURE_2D),
    /// glDisable(GL_TEXTURE_3D), glEnable(GL_LIGHTING), glEnable per light, glColor4f, glEnable(GL_BLEND),
    /// glBlendFunc.  State: the current color, which is not restored.
    static void _openPass(unsigned int const& lightCount);

    /// Takes the program out of use and restores what _openPass() has saved.
    /// GL: glUseProgram(0), glUseProgramObjectARB(0), glPopAttrib.
    void _closePass();

    /// GL: glUseProgram. State: the current program; the program object does not know.
    void _useProgram() const;

    /// GL: glGetIntegerv(GL_VIEWPORT).
    static FrameSize _readFrameSize();

    /// Sends "FrameWidth", "FrameHeight", "textureWidth" and "textureHeight", in pixels, as floats.
    void _sendFrameSize(FrameSize const& frame);

    /// Binds a texture, makes it repeating and linearly filtered, and uploads an image as its contents. A width
    /// and height other than the image's take its pixels as they follow each other in memory, and black where
    /// it has no more.
    /// GL: glBindTexture, glTexParameteri x 4, glTexImage2D; around it, for rows whose length is no multiple
    /// of 4 bytes, glPushClientAttrib, glPixelStorei and glPopClientAttrib.  State: the bound texture.
    static void _uploadTexture(VL_Image const& image, unsigned int const& texture, int const& internalFormat,
                               int const& width, int const& height);

    /// Stores a parameter; the effect becomes dirty when it differs, exactly compared, and stays so otherwise.
    template <class Value>
    void _store(Value& parameter, Value const& value) {
        dirty = dirty || parameter != value;
        parameter = value;
    }

    Program_gl* program;          ///< Owned; never null.
    Shader_gl* stage1 = nullptr;  ///< Owned; the vertex stage; null until create().
    Shader_gl* stage2 = nullptr;  ///< Owned; the stage that the effect loads second; null until create().
    Shader_gl* stage3 = nullptr;  ///< Owned; the third stage, or null.
    bool dirty = true;  ///< preprocess() has to enable the program; raised by setters, cleared after a pass.
    std::string log;    ///< The program's log after create().

private:
    void _loadTexture(VL_String const& path, unsigned int const& texture, int const& internalFormat);

    Program_gl::UniformKey frameWidthKey{"FrameWidth"};
    Program_gl::UniformKey frameHeightKey{"FrameHeight"};
    Program_gl::UniformKey textureWidthKey{"textureWidth"};
    Program_gl::UniformKey textureHeightKey{"textureHeight"};
};

}  // namespace vellum
