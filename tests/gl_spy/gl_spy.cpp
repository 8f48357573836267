#include "gl_spy.h"

#include "Spy.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

namespace gl_spy {

// == Call ==

std::string Call::text() const {
    std::string list;
    for (std::string const& argument : arguments) {
        list += (list.empty() ? "" : ", ") + argument;
    }
    return name + "(" + list + ")";
}

// == Recording ==

Recording::Recording() {
    Spy::add(*this);
}

Recording::~Recording() {
    Spy::remove(*this);
}

std::vector<std::string> Recording::texts() const {
    std::vector<std::string> texts;
    texts.reserve(_calls.size());
    for (Call const& call : _calls) {
        texts.push_back(call.text());
    }
    return texts;
}

std::vector<Call> Recording::named(std::string const& name) const {
    std::vector<Call> found;
    std::copy_if(_calls.begin(), _calls.end(), std::back_inserter(found),
                 [&name](Call const& call) { return call.name == name; });
    return found;
}

std::vector<Primitive> Recording::primitives() const {
    Tracker tracker;
    for (Call const& call : _calls) {
        tracker.follow(call);
    }
    return tracker.primitives();
}

// == Script ==

Script::Script() : _rules(std::make_unique<Rules>()) {
    Spy::add(*_rules);
}

Script::Script(Script&& other) noexcept = default;

Script::~Script() {
    if (_rules) {
        Spy::remove(*_rules);
    }
}

Script& Script::string(unsigned int name, std::string const& text) {
    _rules->strings[name] = text;
    return *this;
}

Script& Script::nullString(unsigned int name) {
    _rules->strings[name] = std::nullopt;
    return *this;
}

Script& Script::integer(unsigned int name, std::vector<int> const& values) {
    _rules->integers[name] = values;
    return *this;
}

Script& Script::errors(std::deque<unsigned int> const& codes) {
    _rules->errors = codes;
    return *this;
}

std::size_t Script::errorsLeft() const {
    return _rules->errors.size();
}

Script& Script::shaderStatus(bool compiles, std::string const& log) {
    return shaderStatus(compiles, log, nullptr);
}

Script& Script::shaderStatus(bool compiles, std::string const& log,
                             std::function<bool(std::string const&)> chosen) {
    _rules->shaders.push_back({compiles, log, std::move(chosen)});
    return *this;
}

Script& Script::programStatus(bool links, std::string const& log) {
    _rules->programs = Rules::Status{links, log, nullptr};
    return *this;
}

Script& Script::uniformLocation(std::string const& name, int location) {
    _rules->uniformLocations[name] = location;
    return *this;
}

Script& Script::attributeLocation(std::string const& name, int location) {
    _rules->attributeLocations[name] = location;
    return *this;
}

Script& Script::emptyLogLength(int length) {
    _rules->emptyLogLength = length;
    return *this;
}

Script& Script::nullMap() {
    _rules->nullMap = true;
    return *this;
}

Script& Script::noBufferNames() {
    _rules->noBufferNames = true;
    return *this;
}

Script& Script::answerWithoutDriver() {
    _rules->model = std::make_unique<Model>();
    return *this;
}

std::vector<unsigned char> Script::bufferContents(unsigned int name) const {
    Model::Bytes const* const bytes = _rules->model ? _rules->model->buffer(name) : nullptr;
    return bytes ? *bytes : Model::Bytes();
}

std::size_t Script::liveObjects() const {
    return _rules->model ? _rules->model->liveObjects() : 0;
}

// == Drivers ==

namespace drivers {

namespace {

/// Extensions that became part of OpenGL 2.0; drivers of 2.x still list them.
constexpr char const* shaderExtensions =
    "GL_ARB_vertex_buffer_object GL_ARB_multitexture GL_ARB_point_parameters GL_ARB_point_sprite "
    "GL_ARB_shader_objects GL_ARB_shading_language_100 GL_ARB_vertex_shader GL_ARB_fragment_shader";

Script driver(std::string const& version, std::string const& extensions) {
    Script script;
    script.answerWithoutDriver().string(GL_VERSION, version).string(GL_EXTENSIONS, extensions);
    return script;
}

}  // namespace

Script gl15() {
    return driver("1.5.0", shaderExtensions);
}

Script gl21() {
    Script script = driver("2.1.0", shaderExtensions);
    script.string(GL_SHADING_LANGUAGE_VERSION, "1.20");
    return script;
}

Script gl10_0() {
    return driver("10.0.0", shaderExtensions);
}

Script noExtensions() {
    return driver("2.1.0", "");
}

Script geometryShader4() {
    Script script = gl21();
    script.string(GL_EXTENSIONS, std::string(shaderExtensions) + " GL_EXT_geometry_shader4")
        .integer(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT, {1024});
    return script;
}

Script nvxMemory(int const& totalKilobytes, int const& freeKilobytes) {
    Script script = gl21();
    script.string(GL_EXTENSIONS, std::string(shaderExtensions) + " GL_NVX_gpu_memory_info")
        .integer(GL_GPU_MEMORY_INFO_TOTAL_AVAILABLE_MEMORY_NVX, {totalKilobytes})
        .integer(GL_GPU_MEMORY_INFO_CURRENT_AVAILABLE_VIDMEM_NVX, {freeKilobytes});
    return script;
}

}  // namespace drivers

// == Buffers ==

std::vector<unsigned char> bufferContents(unsigned int target) {
    if (Model* const model = Spy::model()) {
        Model::Bytes const* const bytes = model->bound(target);
        return bytes ? *bytes : Model::Bytes();
    }

    Spy::Passage const unseen;
    GLenum const binding = target == GL_ARRAY_BUFFER           ? GL_ARRAY_BUFFER_BINDING
                           : target == GL_ELEMENT_ARRAY_BUFFER ? GL_ELEMENT_ARRAY_BUFFER_BINDING
                           : target == GL_PIXEL_PACK_BUFFER    ? GL_PIXEL_PACK_BUFFER_BINDING
                                                               : GL_PIXEL_UNPACK_BUFFER_BINDING;
    GLint name = 0;
    glGetIntegerv(binding, &name);
    if (name == 0) {
        return {};
    }
    GLint size = 0;
    glGetBufferParameteriv(target, GL_BUFFER_SIZE, &size);
    std::vector<unsigned char> bytes(std::size_t(std::max(size, 0)));
    glGetBufferSubData(target, 0, size, bytes.data());
    return bytes;
}

}  // namespace gl_spy
