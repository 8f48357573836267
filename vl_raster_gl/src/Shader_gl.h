#pragma once

#include "raster_gl_export.h"

#include <list>
#include <string>
#include <vector>

namespace vellum {

class Program_gl;

/// One stage of a GLSL program, compiled in every variant of its definitions at once.
///
/// An effect switches parts of a stage on and off by preprocessor definitions. The stage is given its
/// definition lines first and its text after them; loading then compiles one GL shader for every subset of
/// the lines, so that Program_gl::setMask() can change the variant later without compiling anything.
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
/// text; so a text that has definitions has no #version line of its own.
///
/// The stage owns its GL shaders and knows the programs that it is attached to. Either may be deleted first.
/// Everything must be called on the thread that owns the context.
class VL_RASTER_GL_EXPORT Shader_gl {
public:
    Shader_gl();  ///< An empty stage. GL: none.

    /// Takes the stage off every program that it is attached to, then deletes its GL shaders.
    /// GL: glDetachShader for every attachment, glDeleteShader for every variant, also for one that is 0.
    ~Shader_gl();

    Shader_gl(Shader_gl const&) = delete;
    Shader_gl& operator=(Shader_gl const&) = delete;

    // == Loading ==

    /// Adds a definition: a whole line, nothing is put before it. Compiles nothing: definitions are added
    /// before loadShaderSource(). A null line is an empty one.
    /// \return the mask bit of the definition: 1, 2, 4, ...; 0 from the 33rd on, which no mask can name.
    unsigned int addDefinition(char const* line);

    /// Compiles the stage in all variants.
    ///
    /// From a file the text is read line by line and put behind the text that the stage already has.
    /// Deliberate (appending-load): it is not cleared, so a stage can be put together from several files.
    /// Every line ends with a line feed afterwards, also the empty one behind the last line feed of the file;
    /// a line ends early at a zero byte. Lines may be of any length. A file that is not found is looked for
    /// one folder up, by "../" in front of its path. What is no regular file or has more than 16 MiB counts
    /// as not found.
    ///
    /// Compiling stops at the first variant that fails; its GL shader is deleted again, so getID() gives 0
    /// for it and for all that follow. The log is printed (Core_RL::checkShaderCompilationErrors()) while
    /// there is a render layer. Deliberate (leaked-shader-variants): loading a second time takes new GL
    /// shaders and leaves the former ones to themselves.
    /// \param type GL_VERTEX_SHADER, GL_FRAGMENT_SHADER or GL_GEOMETRY_SHADER_EXT.
    /// \param text the stage's text, or the path of a file with it; null is empty.
    /// \return whether every variant compiled; false also when the file cannot be read (a line on the standard
    ///         error stream then says so) and with more than 20 definitions, whose variants are a million.
    /// GL: per variant glCreateShader, glShaderSource, glCompileShader, glGetShaderiv(GL_COMPILE_STATUS) and
    /// the calls of the check; glDeleteShader for the one that fails.
    bool loadShaderSource(unsigned int type, char const* text, bool fromFile);

    // == Variants and logs ==

    /// The GL shader of a variant; 0 when there is none. GL: none.
    unsigned int getID(unsigned int mask) const;

    /// What the driver says about the variants, one behind the other, at most 4095 characters of each.
    /// GL: glGetShaderInfoLog for every variant that is not 0.
    std::string getInfoLog();

    /// The compilation log. Deliberate (empty-compilation-log): always empty, as compiling prints its log and
    /// does not keep it; getInfoLog() has the text.
    std::string getCompilationLog();

    // == Texts of stages that pass everything on ==

    static char const* vertexPassThrough();    ///< ftransform, three texture coordinates, colors, fog.
    static char const* geometryPassThrough();  ///< The input primitive, for GL_EXT_geometry_shader4.
    static char const* fragmentPassThrough();  ///< The interpolated color.

    // == For programs ==

    /// Forgets every attachment to the program, as the program asks for when it is deleted. A program that
    /// lives on still lists the stage, and must then go first. GL: none.
    void dettach(Program_gl* program);

private:
    friend class Program_gl;

    bool _appendFile(std::string const& path);
    bool _loadShader();
    bool _compileVariant(unsigned int const& mask);

    unsigned int type = 0;                 // of all variants; meaningless before the first load
    std::string source;                    // without definitions
    std::vector<unsigned int> ids;         // owned GL shaders, by mask; 0 for a variant that is missing
    std::vector<std::string> definitions;  // whole lines without their line feeds
    std::list<Program_gl*> programs;       // one entry for each attachment; not owned
    std::string compilationLog;            // always empty
};

}  // namespace vellum
