#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The recording OpenGL of the tests.
///
/// A test of the library asks three questions: which GL calls were made, how the library behaves on a driver
/// with given answers, and how the picture looks. The spy answers the first two. A test executable that links
/// the target `gl_spy` defines the entry points of OpenGL 1.0 to 2.1, the extensions that the library uses,
/// GLU and glewInit itself; the dynamic linker resolves the library's calls to them, so the shipped library
/// runs unchanged. Every call is noted and then passed on to the driver, or answered by a script.
///
///     gl_spy::Script driver = gl_spy::drivers::gl15();        // 1.5, answered without any driver or context
///     driver.string(GL_EXTENSIONS, "GL_NVX_gpu_memory_info").integer(0x9048, {2048});
///     vellum::Core_RL_GL core;
///     gl_spy::Recording recording;
///     core.renderPoint3({1, 2, 3});
///     EXPECT_EQ(recording.texts(), (std::vector<std::string>{"glBegin(GL_POINTS)",
///                                                            "glVertex3fv({1, 2, 3})", "glEnd()"}));
///
/// With no Recording and no Script alive a call costs one test and one jump more than without the spy.
/// Calls that GLU or GLEW make on their own account are passed on, and neither noted nor scripted. Function
/// pointers that were fetched with glXGetProcAddress or eglGetProcAddress (GLEW's) bypass the spy altogether.
/// One thread at a time; not for several contexts in several threads.
/// The header includes no GL header: enums and names are `unsigned int`, as GL itself has them on every
/// platform.
namespace gl_spy {

/// One call with its arguments, by value as they were at the time of the call.
struct Call {
    std::string name;                    ///< "glVertex3fv"
    std::vector<std::string> arguments;  ///< one text per argument, as text() shows them

    std::vector<double> numbers;            ///< every integer and floating-point argument, vectors flattened
    std::vector<unsigned int> enums;        ///< every enum, boolean and bit mask argument
    std::vector<std::uintptr_t> addresses;  ///< every argument shown as `pointer` or `null`
    std::vector<std::string> strings;       ///< every string argument, neither quoted nor escaped

    /// The call as C would have it: `glColor4f(1, 0.5, 0, 1)`, `glVertex3fv({1, 2, 3})`,
    /// `glEnable(GL_LIGHTING)`, `glBufferData(GL_ARRAY_BUFFER, 24, null, GL_STREAM_DRAW)`,
    /// `glPushAttrib(0x800)`.
    ///  - Floating-point numbers have the fewest characters that give the same number back in their own type:
    ///    `0.1`, `3`, `1e+05`.
    ///  - Vectors and matrices are in braces; where their length is not known, `pointer` stands.
    ///  - A number that stands for an enum (texture parameters and their like) has the enum's name when it
    ///    has one.
    ///  - Strings are quoted, with `\n` and `\"`; bit masks are hexadecimal.
    ///  - Results written through a pointer are shown as `pointer`.
    std::string text() const;
};

/// A vertex with the current values at the time of its glVertex.
struct Vertex {
    std::array<double, 3> position{};           ///< as sent; z is 0 for glVertex2
    std::array<double, 3> transformed{};        ///< position under the modelview matrix, see primitives()
    std::array<double, 3> normal{{0, 0, 1}};    ///< as sent
    std::array<double, 4> color{{1, 1, 1, 1}};  ///< integers are scaled as GL scales them
    std::array<double, 4> textureCoordinate{{0, 0, 0, 1}};
    std::optional<unsigned int> name;  ///< top of the name stack; empty when there is none
};

/// The vertices between a glBegin and its glEnd.
struct Primitive {
    unsigned int mode = 0;  ///< GL_POINTS (0) to GL_POLYGON (9)
    std::vector<Vertex> vertices;
};

/// Notes all calls while it lives. Recordings may overlap: each notes everything in its own lifetime.
class Recording {
public:
    Recording();   ///< Starts, with nothing noted.
    ~Recording();  ///< Stops.

    Recording(Recording const&) = delete;
    Recording& operator=(Recording const&) = delete;

    std::vector<Call> const& calls() const { return _calls; }

    /// Call::text() of every call.
    std::vector<std::string> texts() const;

    /// The calls of one entry point, in order: `named("glVertex3fv")`.
    std::vector<Call> named(std::string const& name) const;

    /// The number of calls of one entry point.
    std::size_t count(std::string const& name) const { return named(name).size(); }

    void clear() { _calls.clear(); }

    /// The primitives drawn between glBegin and glEnd, whatever variants of glVertex, glNormal, glColor and
    /// glTexCoord sent them. Current values start as GL's initial values (white, normal +z), the name stack
    /// empty, the modelview matrix as identity; glPushAttrib(GL_CURRENT_BIT), glMatrixMode, the calls that
    /// change matrices (GLU's too) and the name stack are followed. A glLoadName without a glPushName before
    /// it sets the name all the same: the push may have come before the recording. Vertex arrays and GLU's
    /// quadrics are not unfolded.
    std::vector<Primitive> primitives() const;

private:
    friend class Spy;

    std::vector<Call> _calls;
};

/// Sets the driver's answers while it lives. A later script answers before an earlier one; the driver answers
/// the rest. Every setter gives the script itself, so that they can be chained.
class Script {
public:
    Script();
    ~Script();

    Script(Script&& other) noexcept;
    Script& operator=(Script&& other) = delete;

    // == Strings, state and errors ==

    /// glGetString(name) gives this text. The pointer stays valid, and the same, until the next setting.
    Script& string(unsigned int name, std::string const& text);

    /// glGetString(name) gives null.
    Script& nullString(unsigned int name);

    /// glGetIntegerv(name), and glGetFloatv(name), write these values.
    Script& integer(unsigned int name, std::vector<int> const& values);

    /// glGetError gives these in turn; after the last one the driver answers again.
    Script& errors(std::deque<unsigned int> const& codes);

    /// How many of the errors() are still to be fetched.
    std::size_t errorsLeft() const;

    // == Shaders and programs ==

    /// Every shader compiles, or fails to, with this log. The text is still compiled by the driver, if there
    /// is one.
    Script& shaderStatus(bool compiles, std::string const& log);

    /// Shaders for whose source `chosen` is true compile, or fail to, with this log. Of several the last set
    /// counts.
    Script& shaderStatus(bool compiles, std::string const& log,
                         std::function<bool(std::string const&)> chosen);

    /// Every program links, or fails to, with this log.
    Script& programStatus(bool links, std::string const& log);

    /// GL_INFO_LOG_LENGTH of the empty logs above: 0, as GL says, or 1 for a driver that counts the zero at
    /// the end.
    Script& emptyLogLength(int length);

    /// glGetUniformLocation(any program, name) gives this location; -1 hides the uniform.
    Script& uniformLocation(std::string const& name, int location);

    /// glGetAttribLocation(any program, name) gives this location.
    Script& attributeLocation(std::string const& name, int location);

    // == Buffers ==

    /// glMapBuffer gives null, and nothing is mapped.
    Script& nullMap();

    /// glGenBuffers gives 0 for every name.
    Script& noBufferNames();

    // == No driver ==

    /// Nothing is passed on, so no context is needed. The spy then keeps objects itself:
    ///  - Names from glGen* and glCreate* count up from 1, in one count for all kinds, so that names mixed up
    ///    show.
    ///  - Buffers have memory that glMapBuffer maps, 0xA5 until written, so that a gap shows.
    ///  - Shaders keep their source, and compile; programs link.
    ///  - A uniform's location counts up per program and name, and its values can be read back.
    /// Matrix stacks, viewport, and bindings of buffers, textures and program can be queried; other state
    /// reads as 0. Strings not set: version 2.1.0, no extensions. GLU's objects and texts work, its drawings
    /// and mipmaps do nothing.
    Script& answerWithoutDriver();

    /// The memory of a buffer under answerWithoutDriver(); empty when there is no such buffer.
    std::vector<unsigned char> bufferContents(unsigned int name) const;

    /// How many objects that glGen* or glCreate* gave under answerWithoutDriver() have not been deleted.
    /// Shaders and programs count as deleted when glDelete* is called, whether attached or in use.
    std::size_t liveObjects() const;

    struct Rules;

private:
    std::unique_ptr<Rules> _rules;  // registered with the spy while it is set
};

/// Drivers to play. All answer without a driver; string(), integer() and the like can be added to each.
namespace drivers {

Script gl15();             ///< "1.5.0", GL_ARB_vertex_buffer_object and the extensions that 2.0 took in
Script gl21();             ///< "2.1.0", GL_ARB_vertex_buffer_object, GLSL 1.20
Script gl10_0();           ///< "10.0.0": a version number of two digits
Script noExtensions();     ///< "2.1.0" with an empty list of extensions
Script geometryShader4();  ///< gl21() with GL_EXT_geometry_shader4, 1024 output vertices

/// gl21() with GL_NVX_gpu_memory_info that tells these amounts, in kilobytes.
Script nvxMemory(int const& totalKilobytes, int const& freeKilobytes);

}  // namespace drivers

/// The contents of the buffer bound to the target (GL_ARRAY_BUFFER, ...), read from the driver or, under
/// Script::answerWithoutDriver(), from the spy. Empty when no buffer is bound. Not noted by recordings.
std::vector<unsigned char> bufferContents(unsigned int target);

/// Bytes as values: `as<float>(bufferContents(GL_ARRAY_BUFFER))`. A rest shorter than a value is left out.
template <class Value>
std::vector<Value> as(std::vector<unsigned char> const& bytes) {
    std::vector<Value> values(bytes.size() / sizeof(Value));
    if (!values.empty()) {
        std::memcpy(values.data(), bytes.data(), values.size() * sizeof(Value));
    }
    return values;
}

/// "GL_LIGHTING" for 0x0B50; the value in hexadecimal when no name is known.
std::string enumName(unsigned int value);

}  // namespace gl_spy
