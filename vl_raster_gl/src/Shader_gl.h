#pragma once

#include "raster_gl_export.h"

#include <list>
#include <string>
#include <vector>

namespace vellum {

class Program_gl;

/// One stage of a GLSL program, compiled in every variant of its definitions.
///
/// An effect switches parts of a stage on and off by preprocessor definitions. It first adds the definition
/// lines and then loads the text. Loading compiles one GL shader per subset of the lines, so that
/// Program_gl::setMask() can change the variant later without compiling.
///
/// Use:
///
///     Shader_gl* vertex = new Shader_gl;
///     unsigned int const fogged = vertex->addDefinition("#define FOG");
///     if (vertex->loadShaderSource(GL_VERTEX_SHADER, text, false)) {
///         program->attach(vertex, nullptr, fragment);       // the plain variant, mask 0
///         program->setMask(vertex, fogged);
///     }
///
/// Masks: bit i of a mask, counted from 0, stands for the i-th definition. The text of a variant is its
/// definition lines in the order in which they were added, each followed by a line feed, then the stage's
/// text; so a text with definitions must not contain a `#version` line.
///
/// The stage owns its GL shaders and lists the programs to which it is attached. Stage and program may be
/// deleted in either order. All operations must be called on the thread that owns the context.
class VL_RASTER_GL_EXPORT Shader_gl {
public:
    Shader_gl();  ///< An empty stage. GL: none.

    /// Detaches the stage from every program, then deletes its GL shaders.
    /// GL: glDetachShader for every attachment, glDeleteShader for every variant, also for one that is 0.
    ~Shader_gl();

    Shader_gl(Shader_gl const&) = delete;
    Shader_gl& operator=(Shader_gl const&) = delete;

    // == Loading ==

    /// Adds a definition: a whole line, including "#define". Call it before loadShaderSource(); it does not
    /// compile. A null line counts as empty.
    /// \return the mask bit of the definition: 1, 2, 4, ...; 0 from the 33rd on, which has no bit in a mask.
    unsigned int addDefinition(char const* line);

    /// Compiles the stage in all variants.
    ///
    /// With `fromFile`, the text of the file is appended to the text that the stage has. Every line, also the
    /// empty one after the last line feed of the file, then ends with a line feed; a zero byte ends a line
    /// early. Lines may have any length. If the file does not exist, "../" is put before its path for a
    /// second attempt. Only regular files of at most 16 MiB are read.
    ///
    /// Compiling stops at the first variant that fails; its GL shader is deleted, so getID() returns 0 for it
    /// and for all that follow. If there is a render layer, it prints the log
    /// (Core_RL::checkShaderCompilationErrors()).
    ///
    /// Deliberate (appending-load): a file does not replace the text.
    /// Deliberate (leaked-shader-variants): loading again does not delete the former GL shaders.
    /// \param type GL_VERTEX_SHADER, GL_FRAGMENT_SHADER or GL_GEOMETRY_SHADER_EXT.
    /// \param text the stage's text, or the path of a file with it; null is empty.
    /// \return whether every variant compiled; false also if the file cannot be read (after a line on the
    ///     standard error stream) and with more than 20 definitions, which would have over a million
    ///     variants.
    /// GL: per variant glCreateShader, glShaderSource, glCompileShader, glGetShaderiv(GL_COMPILE_STATUS) and
    /// the calls of the check; glDeleteShader for the one that fails.
    bool loadShaderSource(unsigned int type, char const* text, bool fromFile);

    // == Variants and logs ==

    /// The GL shader of a variant; 0 if it does not exist. GL: none.
    unsigned int getID(unsigned int mask) const;

    /// The info logs of the variants, concatenated, at most 4095 characters of each.
    /// GL: glGetShaderInfoLog for every variant that is not 0.
    std::string getInfoLog();

    /// The compilation log; getInfoLog() has the driver's text.
    /// Deliberate (empty-compilation-log): always empty.
    std::string getCompilationLog();

    // == Pass-through texts ==

    static char const* vertexPassThrough();    ///< ftransform, three texture coordinates, colors, fog.
    static char const* geometryPassThrough();  ///< The input primitive, for GL_EXT_geometry_shader4.
    static char const* fragmentPassThrough();  ///< The interpolated color.

    // == For programs ==

    /// Removes the program from the list of attachments. Called by the destructor of the program; a program
    /// that still lists the stage must be deleted before it. GL: none.
    void dettach(Program_gl* program);

private:
    friend class Program_gl;

    bool _appendFile(std::string const& path);
    bool _loadShader();
    bool _compileVariant(unsigned int mask);

    unsigned int type = 0;                 // of all variants; meaningless before the first load
    std::string source;                    // without definitions
    std::vector<unsigned int> ids;         // owned GL shaders, by mask; 0 for a variant that is missing
    std::vector<std::string> definitions;  // whole lines without their line feeds
    std::list<Program_gl*> programs;       // one entry per attachment; not owned
    std::string compilationLog;            // always empty
};

}  // namespace vellum
