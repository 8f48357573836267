#include "glsl_shader/Custom_shader.h"

#include "Shader_gl.h"
#include "internal/discard_error.h"
#include "internal/geometry_dialect.h"
#include "internal/misuse.h"

#include "foundation/raster/Core_RL.h"

#include <cstddef>
#include <utility>

#include "internal/gl_api.h"

namespace vellum {

namespace {

// Behind the units of the images, 0 to 6.
constexpr int FRAME_UNIT = 7;
constexpr std::size_t FRAME_TEXTURE = 7;

// Tables instead of formatted names: a pass sends 30 variables and allocates no memory.
template <std::size_t COUNT>
using Names = std::array<char const*, COUNT>;

constexpr Names<7> TEXTURE_NAMES{"Texture0", "Texture1", "Texture2", "Texture3",
                                 "Texture4", "Texture5", "Texture6"};
constexpr Names<10> FLOAT_NAMES{"FloatVar0", "FloatVar1", "FloatVar2", "FloatVar3", "FloatVar4",
                                "FloatVar5", "FloatVar6", "FloatVar7", "FloatVar8", "FloatVar9"};
constexpr Names<10> VEC3_NAMES{"Vec3Var0", "Vec3Var1", "Vec3Var2", "Vec3Var3", "Vec3Var4",
                               "Vec3Var5", "Vec3Var6", "Vec3Var7", "Vec3Var8", "Vec3Var9"};
constexpr Names<10> VEC4_NAMES{"Vec4Var0", "Vec4Var1", "Vec4Var2", "Vec4Var3", "Vec4Var4",
                               "Vec4Var5", "Vec4Var6", "Vec4Var7", "Vec4Var8", "Vec4Var9"};

template <std::size_t COUNT, std::size_t... INDEX>
std::array<Program_gl::UniformKey, COUNT> keysOf(Names<COUNT> const& names, std::index_sequence<INDEX...>) {
    return {Program_gl::UniformKey(names[INDEX])...};
}

template <std::size_t COUNT>
std::array<Program_gl::UniformKey, COUNT> keysOf(Names<COUNT> const& names) {
    return keysOf(names, std::make_index_sequence<COUNT>());
}

template <int COUNT>
bool isInside(int index) {
    return index >= 0 && index < COUNT;
}

// Null for an index out of range: indices come from user interfaces and are not trusted.
template <class Value, std::size_t COUNT>
Value* entry(std::array<Value, COUNT>& values, int index) {
    return isInside<COUNT>(index) ? &values[static_cast<std::size_t>(index)] : nullptr;
}

template <class Value, std::size_t COUNT>
Value valueOf(std::array<Value, COUNT> const& values, int index) {
    return isInside<COUNT>(index) ? values[static_cast<std::size_t>(index)] : Value{};
}

bool isEmpty(VL_String const& path) {
    return path.size() <= 1;  // the terminating zero
}

}  // namespace

Custom_shader::Custom_shader()
    : floatKeys(keysOf(FLOAT_NAMES)), vec3Keys(keysOf(VEC3_NAMES)), vec4Keys(keysOf(VEC4_NAMES)) {
    if (VL_Raster != nullptr) {
        for (unsigned int& texture : textures) {
            texture = VL_Raster->createTexture();
        }
    }
}

Custom_shader::Custom_shader(Custom_shader const& other) : Custom_shader() {
    copy(other);
}

Custom_shader::~Custom_shader() {
    misuse::refuseDeadLayer("Custom_shader::~Custom_shader");
    if (VL_Raster != nullptr) {
        for (unsigned int const texture : textures) {
            VL_Raster->destroyTexture(texture);
        }
    }
}

void Custom_shader::copy(Custom_shader const& other) {
    if (this == &other) {
        return;
    }
    isGrabbing = other.isGrabbing;
    texturePaths = other.texturePaths;
    floats = other.floats;
    baseColor = other.baseColor;
    vec3s = other.vec3s;
    vec4s = other.vec4s;
    fragmentPath = other.fragmentPath;
    geometryPath = other.geometryPath;
    vertexPath = other.vertexPath;
    lightCount = other.lightCount;
    // The images belong to the former paths; create() reads the new ones.
    for (VL_Image& image : images) {
        image.destroy();
    }
    // Qualified: the constructor calls this too.
    Base_shader::reload();
}

// == Stages ==

void Custom_shader::setShaders(VL_String const& vertexPath, VL_String const& fragmentPath,
                               VL_String const& geometryPath) {
    if (created && vertexPath == this->vertexPath && fragmentPath == this->fragmentPath &&
        geometryPath == this->geometryPath) {
        return;
    }
    if (!created) {
        for (int i = 0; i < PICTURES; ++i) {
            if (images[static_cast<std::size_t>(i)].width() == 0) {
                _readPicture(i);  // a copy has the paths only
            }
        }
    }
    // Before the new stages: a program with two main functions of one kind would not link.
    _deleteStages();
    this->vertexPath = vertexPath;
    this->fragmentPath = fragmentPath;
    this->geometryPath = geometryPath;

    // The fragment stage first, which is the order in which logs are printed.
    stage2 = _loadStage(GL_FRAGMENT_SHADER, this->fragmentPath, Shader_gl::fragmentPassThrough());
    stage1 = _loadStage(GL_VERTEX_SHADER, this->vertexPath, Shader_gl::vertexPassThrough());
    if (!isEmpty(this->geometryPath)) {
        GeometryDialect const dialect = geometryDialect();
        stage3 = _loadStage(GL_GEOMETRY_SHADER_EXT, this->geometryPath, geometryPassThrough(dialect).c_str());
        program->attach(stage1, stage2, stage3);
        if (dialect == GeometryDialect::EXT_SHADER4) {
            // The number of vertices that the user's stage emits is unknown, so the driver's maximum is set.
            GLint mostVertices = 0;
            glGetIntegerv(GL_MAX_GEOMETRY_OUTPUT_VERTICES_EXT, &mostVertices);
            setGeometryLayout(dialect,
                              {GL_TRIANGLES, GL_TRIANGLE_STRIP, static_cast<unsigned int>(mostVertices)},
                              *program);
        }
    } else {
        program->attach(stage1, stage2, nullptr);
    }
    created = true;
    enable(true);
    discardError();
}

// Loads a stage from a file and falls back to the pass-through. The failed stage is deleted, because loading
// again would append to its text.
Shader_gl* Custom_shader::_loadStage(unsigned int type, VL_String const& path, char const* passThrough) {
    auto* stage = new Shader_gl;
    if (isEmpty(path) || !stage->loadShaderSource(type, path.c_str(), true)) {
        log += stage->getCompilationLog();
        delete stage;
        stage = new Shader_gl;
        stage->loadShaderSource(type, passThrough, false);
    }
    return stage;
}

// == Textures ==

void Custom_shader::setTexture(VL_String const& path, int const& index) {
    VL_String* const stored = entry(texturePaths, index);
    if (stored == nullptr || (path == *stored && !dirty)) {
        return;
    }
    *stored = path;
    _readPicture(index);
}

void Custom_shader::_readPicture(int index) {
    auto const i = static_cast<std::size_t>(index);
    images[i].destroy();
    if (!isEmpty(texturePaths[i]) && images[i].read(texturePaths[i])) {
        loadTextureRGB(images[i], textures[i]);
    }
}

VL_String Custom_shader::getTexturePath(int const& index) const {
    VL_String path;
    if (isInside<PICTURES>(index)) {
        path = texturePaths[static_cast<std::size_t>(index)];
    }
    return path;
}

VL_String& Custom_shader::refTexturePath(int const& index) {
    VL_String* const stored = entry(texturePaths, index);
    if (stored == nullptr) {
        noPath = "";  // callers may have written to it
        return noPath;
    }
    return *stored;
}

void Custom_shader::grabFrameBuffer(bool const& on) {
    if (on != isGrabbing) {
        isGrabbing = on;
        enable(true);
    }
}

bool Custom_shader::isGrabbingFrameBuffer() const {
    return isGrabbing;
}

// == Variables ==

void Custom_shader::setFloatVar(float const& value, int const& index) {
    if (float* const stored = entry(floats, index)) {
        _store(*stored, value);
    }
}

void Custom_shader::setVec3Var(Vector3<float> const& value, int const& index) {
    if (Vector3<float>* const stored = entry(vec3s, index)) {
        // Vector3 has no operator!=.
        dirty = dirty || stored->x != value.x || stored->y != value.y || stored->z != value.z;
        *stored = value;
    }
}

void Custom_shader::setVec4Var(Color4<float> const& value, int const& index) {
    if (Color4<float>* const stored = entry(vec4s, index)) {
        _store(*stored, value);
    }
}

float Custom_shader::getFloatVar(int const& index) const {
    return valueOf(floats, index);
}

Vector3<float> Custom_shader::getVec3Var(int const& index) const {
    return valueOf(vec3s, index);
}

Color4<float> Custom_shader::getVec4Var(int const& index) const {
    return valueOf(vec4s, index);
}

float* Custom_shader::getFloatVarPtr(int const& index) {
    return entry(floats, index);
}

Vector3<float>* Custom_shader::getVec3VarPtr(int const& index) {
    return entry(vec3s, index);
}

Color4<float>* Custom_shader::getVec4VarPtr(int const& index) {
    return entry(vec4s, index);
}

void Custom_shader::setBaseColor(Color4<float> const& color) {
    _store(baseColor, color);
}

void Custom_shader::setNLights(unsigned int const& count) {
    _store(lightCount, count);
}

// == Lifecycle ==

void Custom_shader::create() {
    setShaders(vertexPath, fragmentPath, geometryPath);
    log = program->getInfoLog();
}

void Custom_shader::init() {
    if (isGrabbing) {
        copyFramebufferToTexture(textures[FRAME_TEXTURE]);
    }
}

void Custom_shader::preprocess() {
    if (dirty) {
        enable(true);
    }
    _openPass(lightCount);
    for (std::size_t i = 0; i < PICTURES; ++i) {
        if (!isEmpty(texturePaths[i])) {
            program->setUniformSampler(TEXTURE_NAMES[i], textures[i], static_cast<int>(i));
        }
    }
    // Also without grabbing: a sampler of a user's stage must not read unit 0.
    program->setUniformSampler("TextureFB", textures[FRAME_TEXTURE], FRAME_UNIT);
    for (std::size_t i = 0; i < VARIABLES; ++i) {
        program->setUniform(floatKeys[i], floats[i]);
        program->setUniform(vec3Keys[i], vec3s[i].x, vec3s[i].y, vec3s[i].z);
        program->setUniform(vec4Keys[i], vec4s[i].r, vec4s[i].g, vec4s[i].b, vec4s[i].a);
    }
    program->setUniform(baseColorKey, baseColor.r, baseColor.g, baseColor.b, baseColor.a);
    program->setUniform(lightCountKey, static_cast<int>(lightCount));
    log = program->getInfoLog();
    discardError();
}

void Custom_shader::postprocess() {
    dirty = false;
}

void Custom_shader::cleanup() {
    _closePass();
}

}  // namespace vellum
