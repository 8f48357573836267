#include "glsl_shader/Base_shader.h"

#include "Shader_gl.h"
#include "internal/discard_error.h"
#include "internal/geometry_dialect.h"
#include "internal/misuse.h"

#include "foundation/raster/Core_RL.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr unsigned int MOST_LIGHTS = 32;  // drivers have 8; limits the loop for a wrong count

void setTextureParameters() {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
}

GLenum pixelType(VL_Image const& image) {
    switch (image.bitdepth()) {
    case 8:
        return GL_UNSIGNED_BYTE;
    case 16:
        return GL_UNSIGNED_SHORT;
    default:
        return GL_FLOAT;
    }
}

// Gray to RGBA. Alpha is the second channel, or the largest value.
template <class Value>
void spread(Value const* gray, std::size_t channels, Value const& opaque, VL_Image const& image,
            Value* rgba) {
    std::size_t const pixels = std::size_t{image.width()} * image.height();
    for (std::size_t i = 0; i < pixels; ++i) {
        Value const value = gray[i * channels];
        Value* const pixel = rgba + 4 * i;
        pixel[0] = pixel[1] = pixel[2] = value;
        pixel[3] = channels == 2 ? gray[i * channels + 1] : opaque;
    }
}

// The same image as RGBA; empty if that is too large.
VL_Image spreadGray(VL_Image const& gray) {
    auto const channels = static_cast<unsigned int>(gray.pixdepth() / gray.bitdepth());
    VL_Image rgba;
    if (!rgba.create(gray.width(), gray.height(), 4, static_cast<unsigned int>(gray.bitdepth()))) {
        return rgba;
    }
    switch (gray.bitdepth()) {
    case 8:
        spread<unsigned char>(gray.getBuffer(), channels, 0xFF, gray, rgba.getBuffer());
        break;
    case 16:
        spread<unsigned short>(gray.getBuffer16(), channels, 0xFFFF, gray, rgba.getBuffer16());
        break;
    default:
        spread<float>(gray.getBuffer32(), channels, 1, gray, rgba.getBuffer32());
        break;
    }
    return rgba;
}

void const* pixelsOf(VL_Image const& image) {
    switch (image.bitdepth()) {
    case 8:
        return image.getBuffer();
    case 16:
        return image.getBuffer16();
    default:
        return image.getBuffer32();
    }
}

}  // namespace

Base_shader::Base_shader() : program(new Program_gl) {}

Base_shader::Base_shader(Base_shader const&) : Base_shader() {}

Base_shader::~Base_shader() {
    if (program->getId() != 0) {
        misuse::refuseDeadLayer("Base_shader::~Base_shader");
        misuse::requireContext("Base_shader::~Base_shader");
    }
    // The program first: it removes itself from its stages, which then have nothing to detach.
    delete program;
    delete stage1;
    delete stage2;
    delete stage3;
}

// == Lifecycle ==

void Base_shader::setShaderConstant(char const* name, Mesh_RL_Shader::UNIFORM_TYPE type, unsigned int size,
                                    void* values) {
    auto const components = static_cast<int>(size);
    switch (type) {
    case CONSTANT_INT:
        program->setUniform(name, 1, components, static_cast<int const*>(values));
        break;
    case CONSTANT_FLOAT:
        program->setUniform(name, 1, components, static_cast<float const*>(values));
        break;
    default:
        program->setUniformMatrix(name, components, static_cast<float const*>(values));
        break;
    }
}

void Base_shader::reload() {
    created = false;
    dirty = true;
    _deleteStages();
}

void Base_shader::enable(bool const& on) {
    bool const wanted = on;
    if (!created) {
        create();
    }
    program->enable(wanted);
}

void Base_shader::markDirty() {
    dirty = true;
}

bool Base_shader::hasGeometryStages() {
    return takesGeometryStages();
}

// == Logs ==

std::string Base_shader::getLog() const {
    return log;
}

std::string Base_shader::getCompilationLog() {
    return program->getCompilationLog();
}

// == Textures ==

void Base_shader::loadTexture(VL_Image const& image, unsigned int const& texture, int const& internalFormat) {
    if (image.width() == 0 && image.height() == 0) {
        return;
    }
    unsigned int const name =
        texture;  // the argument may be a reference to a name that the render layer changes
    if (VL_Raster != nullptr) {
        VL_Raster->destroyTexture(name);
        // Deliberate (ignored-texture-name): binding `texture` makes it a texture again, whatever the new
        // name is.
        VL_Raster->createTexture();
    }
    _uploadTexture(image, name, internalFormat, static_cast<int>(image.width()),
                   static_cast<int>(image.height()));
    discardError();  // after an error the texture has no contents
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
}

void Base_shader::loadTextureFloat32(VL_Image const& image, unsigned int const& texture) {
    loadTexture(image, texture, GL_RGBA32F_ARB);
}

void Base_shader::loadTextureRGB(VL_Image const& image, unsigned int const& texture) {
    loadTexture(image, texture, GL_RGB);
}

void Base_shader::loadTextureFloat32(VL_String const& path, unsigned int const& texture) {
    _loadTexture(path, texture, GL_RGBA32F_ARB);
}

void Base_shader::loadTextureRGB(VL_String const& path, unsigned int const& texture) {
    _loadTexture(path, texture, GL_RGB);
}

void Base_shader::_loadTexture(VL_String const& path, unsigned int const& texture,
                               int const& internalFormat) {
    if (VL_Raster != nullptr) {
        VL_Raster->destroyTexture(texture);
    }
    VL_Image image;
    if (path.size() > 1 && image.read(path)) {
        loadTexture(image, texture, internalFormat);
    }
}

// Each step copies the highest bit further down until all lower bits are set. The shifts are signed, so that
// 0 and negative numbers stay -1; the sums are unsigned, so that none overflows.
int Base_shader::nextHighestPowerOf2(int v) {
    int x = static_cast<int>(static_cast<unsigned int>(v) - 1);
    for (int const shift : {1, 2, 4, 8, 16}) {
        x |= x >> shift;
    }
    return static_cast<int>(static_cast<unsigned int>(x) + 1);
}

void Base_shader::copyFramebufferToTexture(unsigned int const& texture) {
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    glBindTexture(GL_TEXTURE_2D, texture);
    setTextureParameters();
    glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, viewport[0], viewport[1], nextHighestPowerOf2(viewport[2]),
                     nextHighestPowerOf2(viewport[3]), 0);
}

// == Parts of create() ==

void Base_shader::_deleteStages() {
    for (Shader_gl** stage : {&stage2, &stage1, &stage3}) {
        delete *stage;
        *stage = nullptr;
    }
}

void Base_shader::_loadStages(char const* vertexText, char const* fragmentText) {
    _deleteStages();
    stage1 = new Shader_gl;
    stage1->loadShaderSource(GL_VERTEX_SHADER, vertexText, false);
    stage2 = new Shader_gl;
    stage2->loadShaderSource(GL_FRAGMENT_SHADER, fragmentText, false);
}

// == Parts of passes ==

void Base_shader::_openPass(unsigned int const& lightCount) {
    misuse::refuseDeadLayer("Base_shader::preprocess");
    misuse::requireContext("Base_shader::preprocess");
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_3D);
    glEnable(GL_LIGHTING);
    unsigned int const lights = std::min(lightCount, MOST_LIGHTS);
    for (unsigned int i = 0; i < lights; ++i) {
        glEnable(GL_LIGHT0 + i);
    }
    glColor4f(1, 1, 1, 1);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void Base_shader::_closePass() {
    program->disable();
    glUseProgramObjectARB(0);
    glPopAttrib();
}

void Base_shader::_useProgram() const {
    glUseProgram(program->getId());
}

Base_shader::FrameSize Base_shader::_readFrameSize() {
    std::array<GLint, 4> viewport{};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    return {viewport[2], viewport[3], nextHighestPowerOf2(viewport[2]), nextHighestPowerOf2(viewport[3])};
}

void Base_shader::_sendFrameSize(FrameSize const& frame) {
    program->setUniform(frameWidthKey, static_cast<float>(frame.width));
    program->setUniform(frameHeightKey, static_cast<float>(frame.height));
    program->setUniform(textureWidthKey, static_cast<float>(frame.textureWidth));
    program->setUniform(textureHeightKey, static_cast<float>(frame.textureHeight));
}

void Base_shader::_uploadTexture(VL_Image const& image, unsigned int const& texture,
                                 int const& internalFormat, int const& width, int const& height) {
    if (image.width() == 0 || width < 1 || height < 1) {
        return;
    }
    int const channels = image.pixdepth() / image.bitdepth();
    if (channels < 3) {
        VL_Image const rgba = spreadGray(image);
        _uploadTexture(rgba, texture, internalFormat, width, height);
        return;
    }
    std::size_t const pixelBytes = static_cast<std::size_t>(image.pixdepth()) / 8;
    std::size_t const rowBytes = static_cast<std::size_t>(width) * pixelBytes;
    std::size_t const wanted = rowBytes * static_cast<std::size_t>(height);
    std::size_t const present = std::size_t{image.width()} * image.height() * pixelBytes;
    void const* pixels = pixelsOf(image);
    std::vector<unsigned char> padded;
    if (wanted > present) {
        padded.resize(wanted, 0);
        std::memcpy(padded.data(), pixels, present);
        pixels = padded.data();
    }

    glBindTexture(GL_TEXTURE_2D, texture);
    setTextureParameters();
    // In GL each row begins at a multiple of the unpack alignment, by default 4. The rows of an image are
    // contiguous.
    bool const isUnaligned = rowBytes % 4 != 0;
    if (isUnaligned) {
        glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, channels == 3 ? GL_RGB : GL_RGBA,
                 pixelType(image), pixels);
    if (isUnaligned) {
        glPopClientAttrib();
    }
}

}  // namespace vellum
