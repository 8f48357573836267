// The entry points of OpenGL, GLU and glewInit, as the tests' executables define them. The table of all of
// them is entry_points.inc; this file expands each line of it.

#include "Notes.h"
#include "Spy.h"

#include <cstdio>
#include <tuple>
#include <type_traits>

#include <dlfcn.h>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

extern "C" GLenum glewInit();  // GLEW's own header would replace every entry point by a macro

namespace gl_spy {

namespace {

// == Kinds of arguments ==

/// Each kind has the C type of the argument and note(), which writes the value down. `All` is the tuple of
/// all arguments of the call, for the few kinds whose extent another argument tells.
namespace kind {

template <class T>
struct Number {
    using Type = T;
    template <class All>
    static void note(Notes& notes, T value, All const&) {
        notes.number(value);
    }
};

using I = Number<GLint>;
using U = Number<GLuint>;
using F = Number<GLfloat>;
using D = Number<GLdouble>;
using S = Number<GLshort>;
using US = Number<GLushort>;
using SB = Number<GLbyte>;
using UB = Number<GLubyte>;
using Size = Number<GLsizei>;
using Bytes = Number<GLsizeiptr>;

template <class T, std::string (*name)(GLenum)>
struct Enum {
    using Type = T;
    template <class All>
    static void note(Notes& notes, T value, All const&) {
        notes.enumeration(static_cast<GLenum>(value), name(static_cast<GLenum>(value)));
    }
};

std::string anyName(GLenum value) {
    return value == GL_NONE ? "GL_NONE" : enumName(value);
}

std::string truthName(GLenum value) {
    return value == GL_FALSE ? "GL_FALSE" : value == GL_TRUE ? "GL_TRUE" : std::to_string(value);
}

std::string maskName(GLenum value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value);
    return text;
}

/// The enums of internal formats begin far above the number of channels, 1 to 4.
std::string formatName(GLenum value) {
    return value <= 4 ? std::to_string(value) : enumName(value);
}

using E = Enum<GLenum, anyName>;
using Mode = Enum<GLenum, primitiveName>;
using Factor = Enum<GLenum, factorName>;
using Bool = Enum<GLboolean, truthName>;
using Mask = Enum<GLbitfield, maskName>;
using Format = Enum<GLint, formatName>;

/// A pointer to a fixed number of values.
template <class T, std::size_t count>
struct Vector {
    using Type = T*;
    template <class All>
    static void note(Notes& notes, Type values, All const&) {
        notes.numbers(values, count);
    }
};

using S1 = Vector<GLshort const, 1>;
using S2 = Vector<GLshort const, 2>;
using S3 = Vector<GLshort const, 3>;
using S4 = Vector<GLshort const, 4>;
using I1 = Vector<GLint const, 1>;
using I2 = Vector<GLint const, 2>;
using I3 = Vector<GLint const, 3>;
using I4 = Vector<GLint const, 4>;
using F1 = Vector<GLfloat const, 1>;
using F2 = Vector<GLfloat const, 2>;
using F3 = Vector<GLfloat const, 3>;
using F4 = Vector<GLfloat const, 4>;
using F16 = Vector<GLfloat const, 16>;
using D1 = Vector<GLdouble const, 1>;
using D2 = Vector<GLdouble const, 2>;
using D3 = Vector<GLdouble const, 3>;
using D4 = Vector<GLdouble const, 4>;
using D16 = Vector<GLdouble const, 16>;
using SB3 = Vector<GLbyte const, 3>;
using SB4 = Vector<GLbyte const, 4>;
using UB1 = Vector<GLubyte const, 1>;
using UB3 = Vector<GLubyte const, 3>;
using UB4 = Vector<GLubyte const, 4>;
using US3 = Vector<GLushort const, 3>;
using US4 = Vector<GLushort const, 4>;
using U3 = Vector<GLuint const, 3>;
using U4 = Vector<GLuint const, 4>;
using MutableI4 = Vector<GLint, 4>;

/// A pointer to as many elements as the count before it says.
template <class T, std::size_t perElement>
struct Array {
    using Type = T const*;
    template <class All>
    static void note(Notes& notes, Type values, All const&) {
        notes.numbers(values, notes.lastCount() * perElement);
    }
};

using UN = Array<GLuint, 1>;
using I1N = Array<GLint, 1>;
using I2N = Array<GLint, 2>;
using I3N = Array<GLint, 3>;
using I4N = Array<GLint, 4>;
using F1N = Array<GLfloat, 1>;
using F2N = Array<GLfloat, 2>;
using F3N = Array<GLfloat, 3>;
using F4N = Array<GLfloat, 4>;
using F6N = Array<GLfloat, 6>;
using F8N = Array<GLfloat, 8>;
using F9N = Array<GLfloat, 9>;
using F12N = Array<GLfloat, 12>;
using F16N = Array<GLfloat, 16>;

template <class T>
struct Parameter {
    using Type = T;
    template <class All>
    static void note(Notes& notes, T value, All const&) {
        notes.parameter(value);
    }
};

using ParameterI = Parameter<GLint>;
using ParameterF = Parameter<GLfloat>;
using ParameterD = Parameter<GLdouble>;

template <class T>
struct Parameters {
    using Type = T const*;
    template <class All>
    static void note(Notes& notes, Type values, All const&) {
        notes.parameters(values);
    }
};

using ParametersI = Parameters<GLint>;
using ParametersF = Parameters<GLfloat>;
using ParametersD = Parameters<GLdouble>;

/// A pointer that is noted as such.
template <class T>
struct Address {
    using Type = T*;
    template <class All>
    static void note(Notes& notes, Type pointer, All const&) {
        notes.address(pointer);
    }
};

using Data = Address<void const>;
using DataF = Address<GLfloat const>;
using DataUB = Address<GLubyte const>;
using Enums = Address<GLenum const>;
using Result = Address<void>;
using ResultI = Address<GLint>;
using ResultU = Address<GLuint>;
using ResultF = Address<GLfloat>;
using ResultD = Address<GLdouble>;
using ResultUB = Address<GLubyte>;
using ResultData = Address<void*>;
using ResultText = Address<GLchar>;
using Quadric = Address<GLUquadric>;

struct Text {
    using Type = GLchar const*;
    template <class All>
    static void note(Notes& notes, Type text, All const&) {
        if (text) {
            notes.strings({text}, false);
        } else {
            notes.address(nullptr);
        }
    }
};

std::vector<std::string> sources(GLsizei count, GLchar const* const* texts, GLint const* lengths) {
    std::vector<std::string> result;
    for (GLsizei i = 0; texts && i < count; ++i) {
        bool const isZeroTerminated = !lengths || lengths[i] < 0;
        result.push_back(isZeroTerminated ? std::string(texts[i])
                                          : std::string(texts[i], std::size_t(lengths[i])));
    }
    return result;
}

/// The strings of glShaderSource(shader, count, strings, lengths).
struct Sources {
    using Type = GLchar const* const*;
    template <class All>
    static void note(Notes& notes, Type texts, All const& all) {
        notes.strings(sources(std::get<1>(all), texts, std::get<3>(all)), true);
    }
};

using SourceLengths = Array<GLint, 1>;

}  // namespace kind

// == The driver ==

/// The function of the same name behind the test's executable: in libGL, libGLU or GLEW.
void* findInDriver(char const* name) {
    void* function = dlsym(RTLD_NEXT, name);
    // A test that uses no library of ours may have been linked without those of GL.
    for (char const* const library : {"libGL.so.1", "libGLU.so.1"}) {
        if (void* const handle = function ? nullptr : dlopen(library, RTLD_LAZY | RTLD_GLOBAL)) {
            function = dlsym(handle, name);
        }
    }
    return function;
}

// == Entries ==

struct AnyEntry {};

/// One line of the table, of which `Self` is the type.
template <class Self, bool isHost, class R, class... Kinds>
struct Entry : AnyEntry {
    using Result = R;
    template <std::size_t index>
    using Argument = std::tuple_element_t<index, std::tuple<typename Kinds::Type...>>;

    static constexpr bool computesOnHost = isHost;  // needs no context, hence no driver

    static Call note(typename Kinds::Type... arguments) {
        [[maybe_unused]] auto const all = std::make_tuple(arguments...);
        Notes notes(Self::name);
        (Kinds::note(notes, arguments, all), ...);
        return notes.call();
    }

    static Result findDriver(typename Kinds::Type... arguments) {
        driver = reinterpret_cast<Result (*)(typename Kinds::Type...)>(findInDriver(Self::name));
        if (!driver) {
            std::fprintf(stderr, "gl_spy: the driver has no %s; the call does nothing\n", Self::name);
            driver = &missing;
        }
        return driver(arguments...);
    }

    static Result missing(typename Kinds::Type...) { return Result(); }

    /// Where the calls go on. The first one finds the driver's function, so that no later one need ask for
    /// it.
    static inline Result (*driver)(typename Kinds::Type...) = &findDriver;
};

#define GL_ENTRY(entry, ...)                                                                                 \
    struct entry##_entry : Entry<entry##_entry, false, __VA_ARGS__> {                                        \
        static constexpr char const* name = #entry;                                                          \
    };
#define GL_HOST_ENTRY(entry, ...)                                                                            \
    struct entry##_entry : Entry<entry##_entry, true, __VA_ARGS__> {                                         \
        static constexpr char const* name = #entry;                                                          \
    };
using namespace kind;
#include "entry_points.inc"
#undef GL_ENTRY
#undef GL_HOST_ENTRY

// == Answers ==
//
// answer(entry, arguments...) gives what the scripts, or the model of a script without a driver, say to a
// call: true or a value when they do, false or none when the call goes on to the driver. Most entries have no
// answer.

struct Unanswered {};
[[maybe_unused]] Unanswered answer(AnyEntry, ...) {
    return {};
}

template <class Value>
bool answerState(GLenum name, Value* values) {
    auto const write = [values](auto const& answer) {
        std::transform(answer.begin(), answer.end(), values,
                       [](auto value) { return static_cast<Value>(value); });
        return true;
    };
    auto const* const scripted = Spy::ask([name](Script::Rules& rules) -> std::vector<int> const* {
        auto const found = rules.integers.find(name);
        return found == rules.integers.end() ? nullptr : &found->second;
    });
    if (scripted) {
        return write(*scripted);
    }
    return Spy::model() && write(Spy::model()->query(name));
}

bool answer(glGetIntegerv_entry, GLenum name, GLint* values) {
    return answerState(name, values);
}

bool answer(glGetFloatv_entry, GLenum name, GLfloat* values) {
    return answerState(name, values);
}

bool answer(glGetDoublev_entry, GLenum name, GLdouble* values) {
    return answerState(name, values);
}

bool answer(glGetBooleanv_entry, GLenum name, GLboolean* values) {
    return answerState(name, values);
}

std::optional<GLubyte const*> answer(glGetString_entry, GLenum name) {
    using Text = std::optional<std::string>;
    auto const* const scripted = Spy::ask([name](Script::Rules& rules) -> Text const* {
        auto const found = rules.strings.find(name);
        return found == rules.strings.end() ? nullptr : &found->second;
    });
    if (scripted) {
        return *scripted ? reinterpret_cast<GLubyte const*>((*scripted)->c_str()) : nullptr;
    }
    if (!Spy::model()) {
        return std::nullopt;
    }
    switch (name) {
    case GL_VENDOR:
    case GL_RENDERER:
        return reinterpret_cast<GLubyte const*>("gl_spy");
    case GL_VERSION:
        return reinterpret_cast<GLubyte const*>("2.1.0");
    case GL_SHADING_LANGUAGE_VERSION:
        return reinterpret_cast<GLubyte const*>("1.20");
    case GL_EXTENSIONS:
        return reinterpret_cast<GLubyte const*>("");
    default:
        return nullptr;
    }
}

std::optional<GLenum> answer(glGetError_entry) {
    return Spy::ask([](Script::Rules& rules) -> std::optional<GLenum> {
        if (rules.errors.empty()) {
            return std::nullopt;
        }
        GLenum const code = rules.errors.front();
        rules.errors.pop_front();
        return code;
    });
}

// -- Names of objects --

bool createObjects(Model::Kind kind, GLsizei count, GLuint* names) {
    if (kind == Model::Kind::buffer && Spy::ask([](Script::Rules& rules) { return rules.noBufferNames; })) {
        std::fill_n(names, count, 0U);
        return true;
    }
    if (!Spy::model()) {
        return false;
    }
    std::generate_n(names, count, [kind] { return Spy::model()->create(kind); });
    return true;
}

bool destroyObjects(Model::Kind kind, GLsizei count, GLuint const* names) {
    if (!Spy::model()) {
        return false;
    }
    std::for_each_n(names, std::max(count, 0), [kind](GLuint name) { Spy::model()->destroy(kind, name); });
    return true;
}

std::optional<GLboolean> answerAlive(Model::Kind kind, GLuint name) {
    if (!Spy::model()) {
        return std::nullopt;
    }
    return Spy::model()->isAlive(kind, name) ? GL_TRUE : GL_FALSE;
}

#define GL_OBJECTS(kind, generate, remove, is)                                                               \
    bool answer(generate##_entry, GLsizei count, GLuint* names) {                                            \
        return createObjects(Model::Kind::kind, count, names);                                               \
    }                                                                                                        \
    bool answer(remove##_entry, GLsizei count, GLuint const* names) {                                        \
        return destroyObjects(Model::Kind::kind, count, names);                                              \
    }                                                                                                        \
    std::optional<GLboolean> answer(is##_entry, GLuint name) {                                               \
        return answerAlive(Model::Kind::kind, name);                                                         \
    }
GL_OBJECTS(buffer, glGenBuffers, glDeleteBuffers, glIsBuffer)
GL_OBJECTS(texture, glGenTextures, glDeleteTextures, glIsTexture)
GL_OBJECTS(query, glGenQueries, glDeleteQueries, glIsQuery)
#undef GL_OBJECTS

/// A block of lists has consecutive names, the first of which is given.
std::optional<GLuint> answer(glGenLists_entry, GLsizei count) {
    std::vector<GLuint> names(std::size_t(std::max(count, 0)));
    if (names.empty() || !createObjects(Model::Kind::list, count, names.data())) {
        return std::nullopt;
    }
    return names.front();
}

bool answer(glDeleteLists_entry, GLuint first, GLsizei count) {
    for (GLsizei i = 0; Spy::model() && i < count; ++i) {
        Spy::model()->destroy(Model::Kind::list, first + GLuint(i));
    }
    return Spy::model() != nullptr;
}

std::optional<GLboolean> answer(glIsList_entry, GLuint name) {
    return answerAlive(Model::Kind::list, name);
}

std::optional<GLuint> answer(glCreateShader_entry, GLenum type) {
    GLuint name = 0;
    if (!createObjects(Model::Kind::shader, 1, &name)) {
        return std::nullopt;
    }
    Spy::model()->shaderType(name) = type;
    return name;
}

bool answer(glDeleteShader_entry, GLuint name) {
    return destroyObjects(Model::Kind::shader, 1, &name);
}

std::optional<GLboolean> answer(glIsShader_entry, GLuint name) {
    return answerAlive(Model::Kind::shader, name);
}

std::optional<GLuint> answer(glCreateProgram_entry) {
    GLuint name = 0;
    if (!createObjects(Model::Kind::program, 1, &name)) {
        return std::nullopt;
    }
    return name;
}

bool answer(glDeleteProgram_entry, GLuint name) {
    return destroyObjects(Model::Kind::program, 1, &name);
}

std::optional<GLboolean> answer(glIsProgram_entry, GLuint name) {
    return answerAlive(Model::Kind::program, name);
}

// -- Buffers --

bool answer(glBindBuffer_entry, GLenum target, GLuint name) {
    if (Spy::model()) {
        Spy::model()->bind(target, name);
    }
    return Spy::model() != nullptr;
}

bool answer(glBufferData_entry, GLenum target, GLsizeiptr size, void const* data, GLenum) {
    if (!Spy::model()) {
        return false;
    }
    if (Model::Bytes* const bytes = Spy::model()->bound(target)) {
        bytes->assign(std::size_t(std::max<GLsizeiptr>(size, 0)), Model::unwritten);
        if (data) {
            std::memcpy(bytes->data(), data, bytes->size());
        }
    }
    return true;
}

/// The part of a bound buffer that a call names; null where GL would raise an error.
unsigned char* bufferPart(GLenum target, GLintptr offset, GLsizeiptr size) {
    Model::Bytes* const bytes = Spy::model()->bound(target);
    bool const isInside = bytes && offset >= 0 && size >= 0 && std::size_t(offset + size) <= bytes->size();
    return isInside ? bytes->data() + offset : nullptr;
}

bool answer(glBufferSubData_entry, GLenum target, GLintptr offset, GLsizeiptr size, void const* data) {
    if (!Spy::model()) {
        return false;
    }
    if (unsigned char* const part = bufferPart(target, offset, size)) {
        std::copy_n(static_cast<unsigned char const*>(data), size, part);
    }
    return true;
}

bool answer(glGetBufferSubData_entry, GLenum target, GLintptr offset, GLsizeiptr size, void* data) {
    if (!Spy::model()) {
        return false;
    }
    if (unsigned char const* const part = bufferPart(target, offset, size)) {
        std::copy_n(part, size, static_cast<unsigned char*>(data));
    }
    return true;
}

std::optional<void*> answer(glMapBuffer_entry, GLenum target, GLenum) {
    if (Spy::ask([](Script::Rules& rules) { return rules.nullMap; })) {
        return nullptr;
    }
    if (!Spy::model()) {
        return std::nullopt;
    }
    return Spy::model()->map(target);
}

std::optional<GLboolean> answer(glUnmapBuffer_entry, GLenum target) {
    if (!Spy::model()) {
        return std::nullopt;
    }
    return Spy::model()->unmap(target) ? GL_TRUE : GL_FALSE;
}

bool answer(glGetBufferParameteriv_entry, GLenum target, GLenum name, GLint* value) {
    if (!Spy::model()) {
        return false;
    }
    Model::Bytes const* const bytes = Spy::model()->bound(target);
    *value = name == GL_BUFFER_SIZE && bytes ? GLint(bytes->size()) : 0;
    return true;
}

// -- Shaders and programs --

std::string sourceOf(GLuint shader) {
    if (Spy::model()) {
        return Spy::model()->source(shader);
    }
    GLint length = 0;
    glGetShaderiv_entry::driver(shader, GL_SHADER_SOURCE_LENGTH, &length);
    std::string text(std::size_t(std::max(length, 1)), '\0');
    glGetShaderSource_entry::driver(shader, GLsizei(text.size()), nullptr, text.data());
    text.pop_back();
    return text;
}

/// The answer of the scripts, or of the spy without a driver, about a shader or program; null when the driver
/// answers.
using Status = Script::Rules::Status;

Status const* withoutDriver() {
    static Status const success;
    return Spy::model() ? &success : nullptr;
}

Status const* shaderStatus(GLuint shader) {
    std::optional<std::string> source;  // read when a script asks for it
    auto const applies = [&source, shader](Status const& status) {
        if (!status.chosen) {
            return true;
        }
        if (!source) {
            source = sourceOf(shader);
        }
        return status.chosen(*source);
    };
    Status const* const scripted = Spy::ask([&applies](Script::Rules& rules) -> Status const* {
        auto const found = std::find_if(rules.shaders.rbegin(), rules.shaders.rend(), applies);
        return found == rules.shaders.rend() ? nullptr : &*found;
    });
    return scripted ? scripted : withoutDriver();
}

Status const* programStatus() {
    Status const* const scripted = Spy::ask(
        [](Script::Rules& rules) -> Status const* { return rules.programs ? &*rules.programs : nullptr; });
    return scripted ? scripted : withoutDriver();
}

/// GL counts the zero at the end of a log, and gives 0 for none.
GLint lengthWithZero(std::string const& text) {
    return text.empty() ? 0 : GLint(text.size()) + 1;
}

GLint logLength(std::string const& log) {
    auto const scripted = Spy::ask([](Script::Rules& rules) { return rules.emptyLogLength; });
    return log.empty() && scripted ? *scripted : lengthWithZero(log);
}

void writeText(std::string const& text, GLsizei room, GLsizei* length, GLchar* destination) {
    std::size_t const count = room > 0 ? std::min(text.size(), std::size_t(room) - 1) : 0;
    if (room > 0 && destination) {
        destination[text.copy(destination, count)] = '\0';
    }
    if (length) {
        *length = GLsizei(count);
    }
}

bool answer(glShaderSource_entry, GLuint shader, GLsizei count, GLchar const* const* texts,
            GLint const* lengths) {
    if (!Spy::model()) {
        return false;
    }
    std::string& source = Spy::model()->source(shader);
    source.clear();
    for (std::string const& text : sources(count, texts, lengths)) {
        source += text;
    }
    return true;
}

bool answer(glGetShaderSource_entry, GLuint shader, GLsizei room, GLsizei* length, GLchar* text) {
    if (Spy::model()) {
        writeText(Spy::model()->source(shader), room, length, text);
    }
    return Spy::model() != nullptr;
}

bool answer(glGetShaderiv_entry, GLuint shader, GLenum name, GLint* value) {
    if (name == GL_COMPILE_STATUS || name == GL_INFO_LOG_LENGTH) {
        Status const* const status = shaderStatus(shader);
        if (status) {
            *value = name == GL_COMPILE_STATUS ? status->succeeds : logLength(status->log);
        }
        return status != nullptr;
    }
    if (!Spy::model()) {
        return false;
    }
    *value = name == GL_SHADER_TYPE            ? GLint(Spy::model()->shaderType(shader))
             : name == GL_SHADER_SOURCE_LENGTH ? lengthWithZero(Spy::model()->source(shader))
                                               : 0;
    return true;
}

bool answer(glGetShaderInfoLog_entry, GLuint shader, GLsizei room, GLsizei* length, GLchar* text) {
    Status const* const status = shaderStatus(shader);
    if (status) {
        writeText(status->log, room, length, text);
    }
    return status != nullptr;
}

bool answer(glGetProgramiv_entry, GLuint, GLenum name, GLint* value) {
    Status const* const status = programStatus();
    if (status && (name == GL_LINK_STATUS || name == GL_VALIDATE_STATUS)) {
        *value = status->succeeds;
        return true;
    }
    if (status && name == GL_INFO_LOG_LENGTH) {
        *value = logLength(status->log);
        return true;
    }
    if (Spy::model()) {
        *value = 0;
    }
    return Spy::model() != nullptr;
}

bool answer(glGetProgramInfoLog_entry, GLuint, GLsizei room, GLsizei* length, GLchar* text) {
    Status const* const status = programStatus();
    if (status) {
        writeText(status->log, room, length, text);
    }
    return status != nullptr;
}

std::optional<GLint> answerLocation(std::map<std::string, int> Script::Rules::*scripted, GLuint program,
                                    std::string const& name) {
    auto const location = Spy::ask([&](Script::Rules& rules) -> std::optional<GLint> {
        auto const found = (rules.*scripted).find(name);
        return found == (rules.*scripted).end() ? std::nullopt : std::optional<GLint>(found->second);
    });
    if (location || !Spy::model()) {
        return location;
    }
    return Spy::model()->location(program, name);
}

std::optional<GLint> answer(glGetUniformLocation_entry, GLuint program, GLchar const* name) {
    return answerLocation(&Script::Rules::uniformLocations, program, name);
}

std::optional<GLint> answer(glGetAttribLocation_entry, GLuint program, GLchar const* name) {
    return answerLocation(&Script::Rules::attributeLocations, program, name);
}

template <class Value>
bool answerUniform(GLuint program, GLint location, Value* values) {
    if (!Spy::model()) {
        return false;
    }
    std::vector<double> const uniform = Spy::model()->uniform(program, location);
    std::transform(uniform.begin(), uniform.end(), values, [](double value) { return Value(value); });
    return true;
}

bool answer(glGetUniformfv_entry, GLuint program, GLint location, GLfloat* values) {
    return answerUniform(program, location, values);
}

bool answer(glGetUniformiv_entry, GLuint program, GLint location, GLint* values) {
    return answerUniform(program, location, values);
}

// == The way of a call ==

template <class Entry, class... Arguments>
[[gnu::noinline]] typename Entry::Result callWatched(Arguments... arguments) {
    using Result = typename Entry::Result;
    if (Spy::isPassing()) {
        return Entry::driver(arguments...);
    }

    Spy::Passage const inside;  // calls that GLU and GLEW make from here on are not noted
    Spy::note(Entry::note(arguments...));
    if constexpr (!std::is_same_v<decltype(answer(Entry(), arguments...)), Unanswered>) {
        auto const answered = answer(Entry(), arguments...);
        if constexpr (std::is_void_v<Result>) {
            if (answered) {
                return;
            }
        } else {
            if (answered) {
                return *answered;
            }
        }
    }
    if (!Entry::computesOnHost && Spy::model()) {
        return Result();
    }
    return Entry::driver(arguments...);
}

template <class Entry, class... Arguments>
inline typename Entry::Result call(Arguments... arguments) {
    if (__builtin_expect(Spy::watching, false)) {
        return callWatched<Entry>(arguments...);
    }
    return Entry::driver(arguments...);
}

}  // namespace
}  // namespace gl_spy

// == The entry points ==

#define GL_FUNCTION(entry)                                                                                   \
    extern "C" __attribute__((visibility("default"))) gl_spy::entry##_entry::Result entry
#define GL_ARGUMENT(entry, index) gl_spy::entry##_entry::Argument<index> a##index

// clang-format off
#define GL_PARAMETERS_0(e)
#define GL_PARAMETERS_1(e) GL_ARGUMENT(e, 0)
#define GL_PARAMETERS_2(e) GL_PARAMETERS_1(e), GL_ARGUMENT(e, 1)
#define GL_PARAMETERS_3(e) GL_PARAMETERS_2(e), GL_ARGUMENT(e, 2)
#define GL_PARAMETERS_4(e) GL_PARAMETERS_3(e), GL_ARGUMENT(e, 3)
#define GL_PARAMETERS_5(e) GL_PARAMETERS_4(e), GL_ARGUMENT(e, 4)
#define GL_PARAMETERS_6(e) GL_PARAMETERS_5(e), GL_ARGUMENT(e, 5)
#define GL_PARAMETERS_7(e) GL_PARAMETERS_6(e), GL_ARGUMENT(e, 6)
#define GL_PARAMETERS_8(e) GL_PARAMETERS_7(e), GL_ARGUMENT(e, 7)
#define GL_PARAMETERS_9(e) GL_PARAMETERS_8(e), GL_ARGUMENT(e, 8)
#define GL_PARAMETERS_10(e) GL_PARAMETERS_9(e), GL_ARGUMENT(e, 9)
#define GL_PARAMETERS_11(e) GL_PARAMETERS_10(e), GL_ARGUMENT(e, 10)

#define GL_VALUES_0
#define GL_VALUES_1 a0
#define GL_VALUES_2 GL_VALUES_1, a1
#define GL_VALUES_3 GL_VALUES_2, a2
#define GL_VALUES_4 GL_VALUES_3, a3
#define GL_VALUES_5 GL_VALUES_4, a4
#define GL_VALUES_6 GL_VALUES_5, a5
#define GL_VALUES_7 GL_VALUES_6, a6
#define GL_VALUES_8 GL_VALUES_7, a7
#define GL_VALUES_9 GL_VALUES_8, a8
#define GL_VALUES_10 GL_VALUES_9, a9
#define GL_VALUES_11 GL_VALUES_10, a10

// The number of kinds after the result.
#define GL_ARITY(...) GL_TWELFTH_AFTER(__VA_ARGS__, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, end)
#define GL_TWELFTH_AFTER(r, k0, k1, k2, k3, k4, k5, k6, k7, k8, k9, k10, arity, ...) arity

#define GL_DEFINE(entry, arity) GL_DEFINE_EXPANDED(entry, arity)
#define GL_DEFINE_EXPANDED(entry, arity) \
    GL_FUNCTION(entry)(GL_PARAMETERS_##arity(entry)) \
    { \
        return gl_spy::call<gl_spy::entry##_entry>(GL_VALUES_##arity); \
    }
#define GL_ENTRY(entry, ...) GL_DEFINE(entry, GL_ARITY(__VA_ARGS__))
#define GL_HOST_ENTRY(entry, ...) GL_DEFINE(entry, GL_ARITY(__VA_ARGS__))
#include "entry_points.inc"
