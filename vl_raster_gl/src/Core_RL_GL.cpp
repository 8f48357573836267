#include "Core_RL_GL.h"

#include "internal/accelerator_memory.h"
#include "internal/arrow_arrays.h"
#include "internal/arrow_geometry.h"
#include "internal/box_faces.h"
#include "internal/circle_points.h"
#include "internal/fresh_pages.h"
#include "internal/long_loops.h"
#include "internal/plane_grid.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>

#include "internal/gl_api.h"

namespace vellum {

namespace {

constexpr unsigned int NO_TEXTURE = 0xFFFFFFFFU;
constexpr GLenum TOTAL_MEMORY_NVX = 0x9048;  // GL_GPU_MEMORY_INFO_TOTAL_AVAILABLE_MEMORY_NVX, kilobytes
constexpr GLenum FREE_MEMORY_NVX = 0x9049;   // GL_GPU_MEMORY_INFO_CURRENT_AVAILABLE_VIDMEM_NVX, kilobytes
constexpr GLbitfield OVERLAY_ATTRIBUTES = GL_VIEWPORT;  // see pushViewportOrtho()
constexpr GLint STIPPLE_FACTOR = 3;
constexpr GLushort STIPPLE_PATTERN = 0xAAAA;  // every second bit; the factor makes them three pixels
constexpr long FIRST_VERSION_WITH_SHADERS = 2;
constexpr std::size_t ARROWS_PER_RANGE = 4096;  // of a fill; whole blocks of ArrowPoints

// == Errors and logs ==

char const* errorName(GLenum code) {
    switch (code) {
    case GL_INVALID_ENUM:
        return "GL_INVALID_ENUM";
    case GL_INVALID_VALUE:
        // Deliberate (error-name-texts): the colon here and the line feed below.
        return "GL_INVALID_VALUE:";
    case GL_INVALID_OPERATION:
        return "GL_INVALID_OPERATION";
    case GL_STACK_OVERFLOW:
        return "GL_STACK_OVERFLOW";
    case GL_STACK_UNDERFLOW:
        return "GL_STACK_UNDERFLOW";
    case GL_OUT_OF_MEMORY:
        return "GL_OUT_OF_MEMORY";
    case GL_TABLE_TOO_LARGE:
        return "GL_TABLE_TOO_LARGE";
    default:
        return "UNDEFINED ERROR\n";
    }
}

/// The log of a shader or program whose `statusName` is GL_FALSE; false without a text to print.
template <class GetInteger, class GetLog>
bool readFailureLog(GLuint object, GLenum statusName, GetInteger const& getInteger, GetLog const& getLog,
                    std::string& log) {
    GLint status = GL_TRUE;
    GLint length = 0;
    getInteger(object, statusName, &status);
    getInteger(object, GL_INFO_LOG_LENGTH, &length);
    // A length of 1 is the terminating zero alone.
    if (status != GL_FALSE || length < 2) {
        return false;
    }
    std::vector<char> buffer(static_cast<std::size_t>(length), '\0');
    GLsizei written = 0;
    getLog(object, length, &written, buffer.data());
    // A driver whose length does not count the zero would leave the text unterminated.
    buffer.back() = '\0';
    log = buffer.data();
    return true;
}

// == The texture queue ==

/// Holds the lock of the texture queue while it lives. It spins instead of sleeping, because the lock is held
/// for an append or a drain only.
class SpinGuard {
public:
    explicit SpinGuard(std::atomic<std::uint32_t>& lockWord) : word(lockWord) {
        while (!_exchange(FREE, HELD)) {
        }
    }
    ~SpinGuard() { _exchange(HELD, FREE); }
    SpinGuard(SpinGuard const&) = delete;
    SpinGuard& operator=(SpinGuard const&) = delete;

private:
    static constexpr std::uint32_t FREE = 0;
    static constexpr std::uint32_t HELD = 1;

    bool _exchange(std::uint32_t expected, std::uint32_t desired) {
        return word.compare_exchange_strong(expected, desired, std::memory_order_seq_cst);
    }

    std::atomic<std::uint32_t>& word;
};

// == Textures ==

void setWrapMode(GLfloat mode) {
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, mode);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, mode);
}

void setClamping(TextureClampingMode const& clamping) {
    switch (clamping) {
    case TEXTURE_REPEAT:
        setWrapMode(GL_REPEAT);
        break;
    case TEXTURE_CLAMP_TO_BORDER:
        setWrapMode(GL_CLAMP_TO_BORDER);
        break;
    case TEXTURE_CLAMPING_WITHOUT_MEANING:
        // Deliberate (wrap-mode-2): no GL wrap mode; GL reports GL_INVALID_ENUM.
        setWrapMode(2.0F);
        break;
    case TEXTURE_CLAMP:
        setWrapMode(GL_CLAMP);
        break;
    default:
        break;
    }
}

void setTextureEnvironment(GLenum mode) {
    glTexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, static_cast<GLfloat>(mode));
}

/// Creates a texture and leaves it enabled and bound, ready for its image. Sets the unpack alignment: rows of
/// RGB images need not be multiples of 4 bytes, GL's default.
void beginTexture(unsigned int& texture, TextureClampingMode const& clamping) {
    glEnable(GL_TEXTURE_2D);
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    setTextureEnvironment(GL_MODULATE);
    glPixelStoref(GL_UNPACK_ALIGNMENT, 1.0F);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    setClamping(clamping);
}

/// GL's pixel format for a channel count, 0 for none.
GLenum pixelFormat(int channels) {
    switch (channels) {
    case 3:
        return GL_RGB;
    case 4:
        return GL_RGBA;
    default:
        return 0;
    }
}

/// GL's component type for a channel width in bits, 0 for none.
GLenum pixelType(int bitsPerChannel) {
    switch (bitsPerChannel) {
    case 8:
        return GL_UNSIGNED_BYTE;
    case 16:
        return GL_UNSIGNED_SHORT;
    case 32:
        return GL_FLOAT;
    default:
        return 0;
    }
}

// == Vertices ==

void sendVertex(Vector3<float> const& v) {
    glVertex3fv(&v.x);
}

void sendNormal(Vector3<float> const& n) {
    glNormal3fv(&n.x);
}

void drawSegment(Vector3<float> const& a, Vector3<float> const& b) {
    glBegin(GL_LINES);
    sendVertex(a);
    sendVertex(b);
    glEnd();
}

void drawSegment(Vector2<float> const& a, Vector2<float> const& b) {
    glBegin(GL_LINES);
    glVertex2fv(&a.x);
    glVertex2fv(&b.x);
    glEnd();
}

void drawQuad(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
              Vector3<float> const& d) {
    glBegin(GL_QUADS);
    sendVertex(a);
    sendVertex(b);
    sendVertex(c);
    sendVertex(d);
    glEnd();
}

/// The six faces of a box; `beforeCorner(i)` is called before corner i is sent. With `wire` each face sends
/// its first corner again, so that thirty vertices pair up to lines.
template <class BeforeCorner>
void drawBox(BoxCorners const& corners, bool wire, BeforeCorner const& beforeCorner) {
    glBegin(wire ? GL_LINES : GL_QUADS);
    for (BoxFace const& face : BOX_FACES) {
        auto const sendCorner = [&](unsigned int corner) {
            beforeCorner(corner);
            sendNormal(face.normal);
            sendVertex(corners[corner]);
        };
        for (unsigned int const corner : face.corners) {
            sendCorner(corner);
        }
        if (wire) {
            sendCorner(face.corners[0]);
        }
    }
    glEnd();
}

void drawBox(BoxCorners const& corners, bool wire) {
    drawBox(corners, wire, [](unsigned int) {});
}

void drawBox(Box3<float> const& box, Tuple8<Vector3<float>> const& colors, bool wire) {
    Vector3<float> const* const cornerColors[8] = {&colors.e0, &colors.e1, &colors.e2, &colors.e3,
                                                   &colors.e4, &colors.e5, &colors.e6, &colors.e7};
    drawBox(boxCorners(box), wire, [&](unsigned int corner) { glColor3fv(&cornerColors[corner]->x); });
}

/// The points of a lattice of any record type. A counter is rounded to float before the multiplication, also
/// in a lattice of doubles; that rounding is part of the result.
template <class Points>
void drawLattice(Points const& points) {
    using Scalar = decltype(points.origin.x);
    auto const at = [](Scalar const& origin, unsigned int counter, Scalar const& step) {
        return static_cast<float>(origin + static_cast<Scalar>(static_cast<float>(counter)) * step);
    };
    glBegin(GL_POINTS);
    for (unsigned int i = 0; i < points.count.e0; ++i) {
        for (unsigned int j = 0; j < points.count.e1; ++j) {
            for (unsigned int k = 0; k < points.count.e2; ++k) {
                sendVertex({at(points.origin.x, i, points.step.x), at(points.origin.y, j, points.step.y),
                            at(points.origin.z, k, points.step.z)});
            }
        }
    }
    glEnd();
}

void drawCircle(float radius) {
    glBegin(GL_LINE_LOOP);
    for (unsigned int i = 0; i < CIRCLE_POINTS; ++i) {
        sendVertex(circlePoint(radius, i));
    }
    glEnd();
}

/// The strip of an ellipse around `center`; `point(cosine, sine)` returns its points relative to the center.
/// The angle is rounded to float, unlike the angle of renderEllipse3(); both roundings are part of the
/// result.
template <class Point>
void drawAxisEllipse(Vector3<float> const& center, Point const& point) {
    glPushMatrix();
    glTranslated(static_cast<double>(center.x), static_cast<double>(center.y), static_cast<double>(center.z));
    glBegin(GL_LINE_STRIP);
    for (unsigned int i = 0; i < ELLIPSE_POINTS; ++i) {
        double const t = static_cast<double>(static_cast<float>(ellipseAngle(i)));
        sendVertex(point(std::cos(t), std::sin(t)));
    }
    glEnd();
    glPopMatrix();
}

float scaled(float length, double factor) {
    return static_cast<float>(static_cast<double>(length) * factor);
}

// == Axis gizmos ==

constexpr VL_AXIS CENTER_HANDLE = VL_AXIS(3);  // of the scale gizmo

bool isAxis(VL_AXIS axis) {
    return axis == VL_AXIS_X || axis == VL_AXIS_Y || axis == VL_AXIS_Z;
}

/// The point at a distance from the origin along an axis.
Vector3<float> alongAxis(VL_AXIS axis, float distance) {
    return {axis == VL_AXIS_X ? distance : 0.0F, axis == VL_AXIS_Y ? distance : 0.0F,
            axis == VL_AXIS_Z ? distance : 0.0F};
}

/// Rotates a model along +Z onto an axis.
void rotateToAxis(VL_AXIS axis) {
    if (axis == VL_AXIS_X) {
        glRotatef(90.0F, 0.0F, 1.0F, 0.0F);
    } else if (axis == VL_AXIS_Y) {
        glRotatef(-90.0F, 1.0F, 0.0F, 0.0F);
    }
}

void translate(Vector3<float> const& offset) {
    glTranslatef(offset.x, offset.y, offset.z);
}

/// A move handle: a cone and a segment from the origin to it. A null `name` loads no picking name.
void drawAxisArrow(Core_RL& layer, VL_AXIS axis, unsigned int const* name, float size) {
    constexpr float CONE_PLACE = 0.9F;
    constexpr double CONE_RADIUS = 0.1;
    constexpr GLint SLICES = 10;
    constexpr GLint STACKS = 1;

    layer.pushFillingFront(FILLING_SOLID);
    layer.pushFillingBack(FILLING_SOLID);
    // gluCylinder draws in the current polygon mode, so the fillings are pushed before.
    GLUquadric* const quadric = gluNewQuadric();
    if (name != nullptr) {
        glLoadName(*name);
    }
    if (isAxis(axis)) {
        glPushMatrix();
        translate(alongAxis(axis, CONE_PLACE));
        rotateToAxis(axis);
        // gluNewQuadric returns null when memory is short. The segment is still drawn.
        if (quadric != nullptr) {
            gluCylinder(quadric, CONE_RADIUS, 0.0, static_cast<double>(size), SLICES, STACKS);
        }
        glPopMatrix();
        drawSegment(constants::f::Z0_Z0_Z0, alongAxis(axis, 1.0F));
    }
    if (quadric != nullptr) {
        gluDeleteQuadric(quadric);
    }
    layer.popFillingBack();
    layer.popFillingFront();
}

/// An axis's circle, through the virtual renderCircle3().
void drawAxisCircle(Core_RL& layer, VL_AXIS axis, float radius) {
    if (axis == VL_AXIS_Z) {
        layer.renderCircle3(radius);
    } else if (isAxis(axis)) {
        glPushMatrix();
        rotateToAxis(axis);
        layer.renderCircle3(radius);
        glPopMatrix();
    }
}

/// A handle for each axis in its color: `draw(axis, name)`.
template <class Draw>
void drawHandles(Core_RL& layer, Tuple3<unsigned int> const& names, Tuple3<Color4<float>> const& colors,
                 Draw const& draw) {
    layer.pushColor(colors.e0);
    draw(VL_AXIS_X, names.e0);
    layer.pushColor(colors.e1);
    draw(VL_AXIS_Y, names.e1);
    layer.pushColor(colors.e2);
    draw(VL_AXIS_Z, names.e2);
    layer.popColor(3);
}

// == Culled circles ==

/// Sends the segments of a circle whose two ends both satisfy `shows(distance)`, the distance being measured
/// from the center along the viewing direction. \return whether any segment was sent.
/// Deliberate (one-degree-gap): none from the last point to the first.
template <class Shows>
bool sendSegments(CirclePoints const& points, Vector3<float> const& center,
                  Vector3<float> const& viewDirection, Shows const& shows) {
    bool any = false;
    bool previousShows = shows(dot(points[0] - center, viewDirection));
    for (unsigned int i = 1; i < CIRCLE_POINTS; ++i) {
        bool const thisShows = shows(dot(points[i] - center, viewDirection));
        if (previousShows && thisShows) {
            sendVertex(points[i - 1]);
            sendVertex(points[i]);
            any = true;
        }
        previousShows = thisShows;
    }
    return any;
}

Vector3<float> translationOf(Matrix4<float> const& frame) {
    return {frame.e[12], frame.e[13], frame.e[14]};
}

// == Arrow arrays ==

/// Sets the size for a caller that overwrites all elements; the old contents are not kept.
template <class T>
void resizeToOverwrite(Array<T>& array, unsigned int size) {
    if (array.capacity() < size) {
        array.reserve(size, false);
    }
    array.setSize(size);
}

// The render layer has client arrays as void*, because other callers pass buffer offsets. GL only reads.
template <class T>
void* clientArray(Array<T> const& array) {
    return const_cast<T*>(array.data());
}

}  // namespace

// == Lifecycle and extensions ==

Core_RL_GL::Core_RL_GL() {
    VL_Raster = this;
}

Core_RL_GL::~Core_RL_GL() = default;

void Core_RL_GL::fillOpenGLExtensions() {
    if (!extensions.empty()) {
        return;
    }
    auto const* const text = reinterpret_cast<char const*>(glGetString(GL_EXTENSIONS));
    // Without a context there is no string. The list stays empty, so that the next query reads it again.
    if (text == nullptr || *text == '\0') {
        return;
    }
    Array<VL_String> pieces;
    VL_String(text).tokenize(' ', pieces);
    extensions.reserve(pieces.size());
    for (VL_String const& piece : pieces) {
        extensions.emplace_back(piece.c_str());
    }
    std::sort(extensions.begin(), extensions.end());
}

// == Camera and point state ==

float Core_RL_GL::setPointSize(float const& size) {
    // The base stores the size, so that the former one is known without a query of GL.
    float const former = Core_RL::setPointSize(size);
    glPointSize(size);
    return former;
}

void Core_RL_GL::setLineWidth(float const& width) {
    lineWidthStack.back() = width;
    glLineWidth(width);
}

bool Core_RL_GL::isExtensionSupported(char const* name) {
    if (extensions.empty()) {
        fillOpenGLExtensions();
    }
    if (name == nullptr) {
        return false;
    }
    // Deliberate (linear-extension-search): from the first entry to the last, although the list is sorted.
    return std::any_of(extensions.begin(), extensions.end(),
                       [name](std::string const& extension) { return extension == name; });
}

// == Buffers and draw calls ==

void Core_RL_GL::begin(Primitive::type primitive) {
    glBegin(primitive);
}

void Core_RL_GL::end() {
    glEnd();
}

void Core_RL_GL::genBuffers(unsigned long count, unsigned int* ids) {
    glGenBuffers(static_cast<GLsizei>(count), ids);
}

void Core_RL_GL::deleteBuffers(unsigned long count, unsigned int* ids) {
    glDeleteBuffers(static_cast<GLsizei>(count), ids);
}

void Core_RL_GL::bindBuffer(BufferTarget::type target, unsigned int id) {
    glBindBuffer(target, id);
}

void Core_RL_GL::bufferData(BufferTarget::type target, unsigned long size, void* data,
                            BufferUsage::type usage) {
    glBufferData(target, static_cast<GLsizeiptr>(size), data, usage);
}

void Core_RL_GL::bufferSubData(BufferTarget::type target, void* offset, unsigned long size, void* data) {
    glBufferSubData(target, reinterpret_cast<GLintptr>(offset), static_cast<GLsizeiptr>(size), data);
}

void Core_RL_GL::enableClientState(ClientCapability::type array) {
    glEnableClientState(array);
}

void Core_RL_GL::enable(ClientCapability::type capability) {
    glEnable(capability);
}

void Core_RL_GL::disableClientState(ClientCapability::type array) {
    glDisableClientState(array);
}

void Core_RL_GL::vertexPointer(int size, DataType::type type, unsigned long stride, void* pointer) {
    glVertexPointer(size, type, static_cast<GLsizei>(stride), pointer);
}

void Core_RL_GL::colorPointer(int size, DataType::type type, unsigned long stride, void* pointer) {
    glColorPointer(size, type, static_cast<GLsizei>(stride), pointer);
}

void Core_RL_GL::drawElements(Primitive::type mode, unsigned long count, DataType::type type, void* indices) {
    glDrawElements(mode, static_cast<GLsizei>(count), type, indices);
}

void Core_RL_GL::drawArrays(Primitive::type mode, unsigned long first, unsigned long count) {
    glDrawArrays(mode, static_cast<GLint>(first), static_cast<GLsizei>(count));
}

// == Memory, shaders and errors ==

unsigned int Core_RL_GL::getTotalGpuMemory() {
    GLint kilobytes = 0;
    if (isExtensionSupported("GL_NVX_gpu_memory_info")) {
        glGetIntegerv(TOTAL_MEMORY_NVX, &kilobytes);
    } else {
        // Deliberate (ignored-ati-query): a subclass that overrides the operation sees the query.
        isExtensionSupported("GL_ATI_meminfo");
    }
    return static_cast<unsigned int>(kilobytes);
}

unsigned int Core_RL_GL::getFreeGpuMemory() {
    GLint kilobytes = 0;
    if (isExtensionSupported("GL_NVX_gpu_memory_info")) {
        glGetIntegerv(FREE_MEMORY_NVX, &kilobytes);
    } else {
        isExtensionSupported("GL_ATI_meminfo");
    }
    readAcceleratorFreeMemory(kilobytes);
    return static_cast<unsigned int>(kilobytes);
}

bool Core_RL_GL::checkShaderSupport() const {
    auto const* const text = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    // Called in every frame, so the text is not copied: strtol stops at the first point.
    return text != nullptr && std::strtol(text, nullptr, 10) >= FIRST_VERSION_WITH_SHADERS;
}

unsigned int Core_RL_GL::createShader(ShaderType::type type) {
    return glCreateShader(type);
}

void Core_RL_GL::shaderSource(unsigned int shader, unsigned long count, char const** strings, int* lengths) {
    glShaderSource(shader, static_cast<GLsizei>(count), strings, lengths);
}

void Core_RL_GL::compileShader(unsigned int shader) {
    glCompileShader(shader);
}

void Core_RL_GL::attachShader(unsigned int program, unsigned int shader) {
    glAttachShader(program, shader);
}

unsigned int Core_RL_GL::createProgram() {
    return glCreateProgram();
}

int Core_RL_GL::getAttribLocation(unsigned int program, char* name) {
    return glGetAttribLocation(program, name);
}

int Core_RL_GL::getUniformLocation(unsigned int program, char* name) {
    return glGetUniformLocation(program, name);
}

void Core_RL_GL::linkProgram(unsigned int program) {
    glLinkProgram(program);
}

void Core_RL_GL::useProgram(unsigned int program) {
    glUseProgram(program);
}

void Core_RL_GL::checkShaderCompilationErrors(unsigned int shader, char const* name) {
    std::string log;
    if (readFailureLog(shader, GL_COMPILE_STATUS, glGetShaderiv, glGetShaderInfoLog, log)) {
        std::cout << log << std::endl << std::endl << "when compiling:" << std::endl << name << std::endl;
    }
}

void Core_RL_GL::checkProgramLinkageErrors(unsigned int program, char const* name, char const* other) {
    std::string log;
    if (readFailureLog(program, GL_LINK_STATUS, glGetProgramiv, glGetProgramInfoLog, log)) {
        // Deliberate (width-in-link-log): "width:" is the text that readers of these logs look for.
        std::cout << log << std::endl
                  << std::endl
                  << "when linking:" << std::endl
                  << name << std::endl
                  << "width:" << std::endl
                  << other << std::endl;
    }
}

void Core_RL_GL::programParameterI(unsigned int program, ShaderParameterName::type parameter, int value) {
    glProgramParameteriEXT(program, parameter, value);
}

void Core_RL_GL::detachShader(unsigned int program, unsigned int shader) {
    glDetachShader(program, shader);
}

void Core_RL_GL::deleteShader(unsigned int shader) {
    glDeleteShader(shader);
}

void Core_RL_GL::deleteProgram(unsigned int program) {
    glDeleteProgram(program);
}

bool Core_RL_GL::getError(VL_String& message, int& code) {
    GLenum const error = glGetError();
    code = static_cast<int>(error);
    if (error == GL_NO_ERROR) {
        return false;
    }
    message = errorName(error);
    // Deliberate (endless-error-loop): the flag is not read again. A loop without side effects is undefined
    // behavior and could be optimized away; a volatile read is a side effect.
    GLenum const volatile examined = error;
    while (examined != GL_NO_ERROR) {
    }
    return true;
}

bool Core_RL_GL::getError(char const* /*where*/, int /*line*/) {
    bool found = false;
    for (GLenum error = glGetError(); error != GL_NO_ERROR; error = glGetError()) {
        found = true;
    }
    return found;
}

void Core_RL_GL::uniform1f(int location, float x) {
    glUniform1f(location, x);
}

void Core_RL_GL::uniform3f(int location, float x, float y, float z) {
    glUniform3f(location, x, y, z);
}

void Core_RL_GL::hint(HintTarget::type target, HintMode::type mode) {
    glHint(target, mode);
}

void Core_RL_GL::pointParameterfvEXT(PointParameterName::type parameter, float* values) {
    glPointParameterfv(parameter, values);
}

void Core_RL_GL::pointParameterfEXT(PointParameterName::type parameter, float value) {
    glPointParameterf(parameter, value);
}

void* Core_RL_GL::mapBuffer(BufferTarget::type target, BufferAccess::type access) {
    return glMapBuffer(target, access);
}

void Core_RL_GL::unmapBuffer(BufferTarget::type target) {
    glUnmapBuffer(target);
}

// == Lighting and render state ==

Matrix4<float> Core_RL_GL::getModelViewMatrix_asFloat() const {
    glMatrixMode(GL_MODELVIEW);
    Matrix4<float> matrix = Matrix4<float>::identity();
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix.e);
    return matrix;
}

Matrix4<float> Core_RL_GL::getModelViewTransposedMatrix_asFloat() const {
    // Qualified: a subclass that overrides the other operation does not change this one.
    Matrix4<float> const matrix = Core_RL_GL::getModelViewMatrix_asFloat();
    Matrix4<float> transposed{};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            transposed.e[4 * i + j] = matrix.e[4 * j + i];
        }
    }
    return transposed;
}

void Core_RL_GL::enableLighting() {
    glEnable(GL_LIGHTING);
}

void Core_RL_GL::disableLighting() {
    glDisable(GL_LIGHTING);
}

void Core_RL_GL::enableLight_0() {
    glEnable(GL_LIGHT0);
}

void Core_RL_GL::disableLight_0() {
    glDisable(GL_LIGHT0);
}

void Core_RL_GL::enableLight_1() {
    glEnable(GL_LIGHT1);
}

void Core_RL_GL::disableLight_1() {
    glDisable(GL_LIGHT1);
}

void Core_RL_GL::enableColorMaterial() {
    glEnable(GL_COLOR_MATERIAL);
}

void Core_RL_GL::disableColorMaterial() {
    glDisable(GL_COLOR_MATERIAL);
}

void Core_RL_GL::setColor(Color4<float> const& color) {
    colorStack.back() = color;
    glColor4f(color.r, color.g, color.b, color.a);
}

void Core_RL_GL::setFillingFront(FillingMode const& mode) {
    fillingFrontStack.back() = mode;
    glPolygonMode(GL_FRONT, mode == FILLING_SOLID ? GL_FILL : GL_LINE);
}

void Core_RL_GL::setFillingBack(FillingMode const& mode) {
    fillingBackStack.back() = mode;
    glPolygonMode(GL_BACK, mode == FILLING_SOLID ? GL_FILL : GL_LINE);
}

void Core_RL_GL::setLineStipple(bool on) {
    if (on) {
        glLineStipple(STIPPLE_FACTOR, STIPPLE_PATTERN);
        glEnable(GL_LINE_STIPPLE);
    } else {
        glDisable(GL_LINE_STIPPLE);
    }
}

void Core_RL_GL::setBlending(BlendingMode const& mode) {
    // Another mode changes nothing, so the one on the stack is still current.
    if (mode == BLENDING_ALPHA || mode == BLENDING_OFF) {
        blendingStack.back() = mode;
    }
    if (mode == BLENDING_ALPHA) {
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    } else if (mode == BLENDING_OFF) {
        glDisable(GL_BLEND);
    }
}

void Core_RL_GL::setDepthTest(DepthtTestMode const& mode) {
    // Indexed by mode. GL_NEVER fills the place of the mode that disables the test.
    constexpr GLenum FUNCTIONS[] = {GL_ALWAYS, GL_NEVER,   GL_LESS,     GL_EQUAL,
                                    GL_LEQUAL, GL_GREATER, GL_NOTEQUAL, GL_GEQUAL};
    // A mode above the known ones changes the mask alone, so the one on the stack is still current.
    bool const isKnown = mode.mode <= DEPTH_GREATER_OR_EQUAL;
    depthTestStack.back() = {isKnown ? mode.mode : currentDepthTest().mode, mode.write};

    glDepthMask(mode.write ? GL_TRUE : GL_FALSE);
    if (mode.mode == DEPTH_TEST_OFF) {
        glDisable(GL_DEPTH_TEST);
    } else if (isKnown) {
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(FUNCTIONS[mode.mode]);
    }
}

void Core_RL_GL::setCulling(CullingMode const& mode) {
    cullingStack.back() = mode;
    if (mode.enabled) {
        glEnable(GL_CULL_FACE);
    } else {
        glDisable(GL_CULL_FACE);
    }
    // Also with culling disabled, so that code that enables it directly finds the side.
    glCullFace(mode.back ? GL_BACK : GL_FRONT);
}

// == Textures and transforms ==

unsigned int Core_RL_GL::createTexture() {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    return texture;
}

void Core_RL_GL::destroyTexture(unsigned int const& texture) {
    glDeleteTextures(1, &texture);
}

void Core_RL_GL::createTextures(unsigned int const& count, Array<unsigned int>& textures) {
    if (count > textures.capacity()) {
        textures.reserve(count, true);
    }
    textures.setSize(count);
    glGenTextures(static_cast<GLsizei>(count), textures.data());
}

void Core_RL_GL::destroyTextures(Array<unsigned int> const& textures) {
    glDeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
}

void Core_RL_GL::setTransform(Matrix4<double> const& matrix) {
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(matrix.e);
}

void Core_RL_GL::setTransform(Matrix4<float> const& matrix) {
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(matrix.e);
}

void Core_RL_GL::pushTransform(Matrix4<double> const& matrix) {
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMultMatrixd(matrix.e);
}

void Core_RL_GL::pushTransform(Matrix4<float> const& matrix) {
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glMultMatrixf(matrix.e);
}

void Core_RL_GL::popTransform() {
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

void Core_RL_GL::pushTextureLuminance(unsigned int const& texture, unsigned int const& width,
                                      unsigned int const& height, bool const& blend,
                                      Array<float> const& values) {
    // GL would read beyond the end of a shorter array.
    bool const complete = values.size() >= std::uint64_t{width} * height;

    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStoref(GL_UNPACK_ALIGNMENT, 1.0F);
    glTexImage2D(GL_TEXTURE_2D, 0, 1, static_cast<GLsizei>(width), static_cast<GLsizei>(height), 0,
                 GL_LUMINANCE, GL_FLOAT, complete ? values.data() : nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    if (blend) {
        constexpr GLfloat WHITE[4] = {1.0F, 1.0F, 1.0F, 1.0F};
        glTexEnvfv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_COLOR, WHITE);
        setTextureEnvironment(GL_BLEND);
    } else {
        setTextureEnvironment(GL_DECAL);
    }
}

void Core_RL_GL::popTextureLuminance(unsigned int const& texture) {
    glDeleteTextures(1, &texture);
    setTextureEnvironment(GL_MODULATE);
    glDisable(GL_TEXTURE_2D);
}

void Core_RL_GL::loadTextureColor(unsigned int const& width, unsigned int const& height,
                                  unsigned char const* pixels, unsigned int& texture,
                                  TextureClampingMode const& clamping) {
    beginTexture(texture, clamping);
    gluBuild2DMipmaps(GL_TEXTURE_2D, 4, static_cast<GLsizei>(width), static_cast<GLsizei>(height), GL_RGBA,
                      GL_UNSIGNED_BYTE, pixels);
    glDisable(GL_TEXTURE_2D);
}

void Core_RL_GL::loadTextureColor(unsigned int const& width, unsigned int const& height,
                                  int const& bitsPerChannel, int const& bitsPerPixel, void const* pixels,
                                  unsigned int& texture, TextureClampingMode const& clamping) {
    beginTexture(texture, clamping);
    // A width of 0 would divide by 0; it counts as a layout without an upload.
    int const channels = bitsPerChannel > 0 ? bitsPerPixel / bitsPerChannel : 0;
    GLenum const format = pixelFormat(channels);
    GLenum const type = pixelType(bitsPerChannel);
    if (format != 0 && type != 0) {
        gluBuild2DMipmaps(GL_TEXTURE_2D, channels, static_cast<GLsizei>(width), static_cast<GLsizei>(height),
                          format, type, pixels);
    }
    glDisable(GL_TEXTURE_2D);
}

void Core_RL_GL::unLoadTextureColor(unsigned int const& texture) {
    glEnable(GL_TEXTURE_2D);
    glDeleteTextures(1, &texture);
    setTextureEnvironment(GL_MODULATE);
    glDisable(GL_TEXTURE_2D);
}

void Core_RL_GL::activateTextureColor(unsigned int const& texture) {
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
}

void Core_RL_GL::disableTextureColor() {
    glDisable(GL_TEXTURE_2D);
}

void Core_RL_GL::queueUnloadTextureColor(unsigned int& texture) {
    {
        SpinGuard const guard(textureQueueLock);
        if (texture != NO_TEXTURE) {
            textureUnloadQueue.pushBack(texture);
        }
    }
    // After the lock is released: the argument belongs to the caller, not to the queue.
    texture = NO_TEXTURE;
}

void Core_RL_GL::destroy_RL() {
    SpinGuard const guard(textureQueueLock);
    for (unsigned int const& texture : textureUnloadQueue) {
        if (texture != NO_TEXTURE) {
            // Deliberate (queue-drained-by-last-layer): not necessarily this instance.
            VL_Raster->unLoadTextureColor(texture);
        }
    }
    // The capacity is kept, as the queue fills again with every scene.
    textureUnloadQueue.setSize(0);
}

// == Picking ==

void Core_RL_GL::loadName(unsigned int name) {
    glLoadName(name);
}

// == Segments and planes ==

void Core_RL_GL::renderStroke3(Vector3<float> const& center, Vector3<float> const& direction,
                               float const& halfLength) {
    Vector3<float> const half = direction * halfLength;
    glBegin(GL_LINES);
    sendVertex(center - half);
    sendVertex(center);
    // Deliberate (half-stroke): GL_LINES drops this third vertex.
    sendVertex(center + half);
    glEnd();
}

void Core_RL_GL::renderSegment2(Vector2<float> const& a, Vector2<float> const& b) {
    drawSegment(a, b);
}

void Core_RL_GL::renderPlane3(Plane3<float> const& plane, float const& size, unsigned int const& divisions) {
    PlaneGrid const grid(plane);
    float const half = size * 0.5F;
    // 0 divisions draw one line of each family; the step is then unused.
    float const step = divisions != 0 ? size / static_cast<float>(divisions) : 0.0F;
    Vector3<float> const stepX = grid.axisX * step;
    Vector3<float> const stepZ = grid.axisZ * step;

    Vector3<float> const corner = grid.center - grid.axisX * half - grid.axisZ * half;
    Vector3<float> alongX[2] = {corner, corner + grid.axisX * size};
    Vector3<float> alongZ[2] = {corner, corner + grid.axisZ * size};

    glBegin(GL_LINES);
    // 64 bits, because `i <= divisions` never ends in 32 bits for the largest count. The ends are advanced by
    // addition, whose rounding is part of the result.
    for (std::uint64_t i = 0; i <= divisions; ++i) {
        for (Vector3<float>& end : alongX) {
            sendVertex(end);
            end = end + stepZ;
        }
        for (Vector3<float>& end : alongZ) {
            sendVertex(end);
            end = end + stepX;
        }
    }
    glEnd();
}

void Core_RL_GL::renderSegment3(Vector3<float> const& a, Vector3<float> const& b) {
    drawSegment(a, b);
}

void Core_RL_GL::renderSegmentStipple3(Vector3<float> const& a, Vector3<float> const& b) {
    setLineStipple(true);
    renderSegment3(a, b);
    setLineStipple(false);
}

// == Axis gizmos ==

void Core_RL_GL::renderBox3(unsigned int const& name, Color4<float> const& color, float const& halfSize) {
    pushFillingFront(FILLING_SOLID);
    pushFillingBack(FILLING_SOLID);
    glLoadName(name);
    pushColor(color);
    render(cubeAround(constants::f::Z0_Z0_Z0, halfSize), false);
    popColor(1);
    popFillingFront();
    popFillingBack();
}

void Core_RL_GL::renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY,
                                unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                float const& size) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS axis, unsigned int name) { renderAxisBox3(axis, name, size); });
}

void Core_RL_GL::renderAxesBox3(unsigned int const& nameX, unsigned int const& nameY,
                                unsigned int const& nameZ, unsigned int const& nameCenter,
                                Tuple4<Color4<float>> const& colors, float const& size) {
    pushColor(colors.e0);
    renderAxisBox3(VL_AXIS_X, nameX, size);
    pushColor(colors.e1);
    renderAxisBox3(VL_AXIS_Y, nameY, size);
    pushColor(colors.e2);
    renderAxisBox3(VL_AXIS_Z, nameZ, size);
    pushColor(colors.e3);
    renderAxisBox3(CENTER_HANDLE, nameCenter, size);
    popColor(4);
}

void Core_RL_GL::renderAxisBox3(VL_AXIS const& axis, float const& size) {
    renderAxisBox3(axis, static_cast<unsigned int>(axis), size);
}

void Core_RL_GL::renderAxisBox3(VL_AXIS const& axis, unsigned int const& name, float const& size) {
    pushFillingFront(FILLING_SOLID);
    pushFillingBack(FILLING_SOLID);
    glLoadName(name);
    if (isAxis(axis) || axis == CENTER_HANDLE) {
        glPushMatrix();
        translate(alongAxis(axis, 1.0F - size));
        rotateToAxis(axis);
        // Through the virtual operation, so that a subclass can replace the cube.
        render(cubeAround(constants::f::Z0_Z0_Z0, size), false);
        glPopMatrix();
    }
    if (isAxis(axis)) {
        drawSegment(constants::f::Z0_Z0_Z0, alongAxis(axis, 1.0F));
    }
    popFillingBack();
    popFillingFront();
}

void Core_RL_GL::renderAxesCircleStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                          unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                          float const& radius) {
    // Deliberate (names-as-axes): the names serve as axes.
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS, unsigned int name) { renderAxisCircleStipple3(VL_AXIS(name), radius); });
}

void Core_RL_GL::renderAxesCircle3(unsigned int const& nameX, unsigned int const& nameY,
                                   unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                   float const& radius) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS axis, unsigned int name) { renderAxisCircle3(axis, name, radius); });
}

void Core_RL_GL::renderAxesCircleCulled3(unsigned int const& nameX, unsigned int const& nameY,
                                         unsigned int const& nameZ, Vector3<float> const& viewDirection,
                                         Matrix4<float> const& frame, float scale,
                                         Tuple3<Color4<float>> const& colors, float const& radius) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors, [&](VL_AXIS axis, unsigned int name) {
        renderAxisCircleCulled3(axis, name, viewDirection, frame, scale, radius);
    });
}

void Core_RL_GL::renderAxesCircleCulledStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                                unsigned int const& nameZ,
                                                Vector3<float> const& viewDirection,
                                                Matrix4<float> const& frame, float scale,
                                                Tuple3<Color4<float>> const& colors, float const& radius) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors, [&](VL_AXIS axis, unsigned int name) {
        renderAxisCircleCulledStipple3(axis, name, viewDirection, frame, scale, radius);
    });
}

void Core_RL_GL::renderAxisCircle3(VL_AXIS const& axis, float const& radius) {
    renderAxisCircle3(axis, static_cast<unsigned int>(axis), radius);
}

void Core_RL_GL::renderAxisCircleCulled3(VL_AXIS const& axis, unsigned int const& name,
                                         Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                         float scale, float const& radius) {
    glLoadName(name);
    if (isAxis(axis)) {
        renderCircleCulled3(viewDirection, frame * circleAxisFrame(axis, scale), radius);
    }
}

void Core_RL_GL::renderAxisCircleCulledStipple3(VL_AXIS const& axis, unsigned int const& name,
                                                Vector3<float> const& viewDirection,
                                                Matrix4<float> const& frame, float scale,
                                                float const& radius) {
    glLoadName(name);
    if (isAxis(axis)) {
        renderCircleCulledStipple3(viewDirection, frame * circleAxisFrame(axis, scale), radius);
    }
}

void Core_RL_GL::renderAxisCircle3(VL_AXIS const& axis, unsigned int const& name, float const& radius) {
    glLoadName(name);
    drawAxisCircle(*this, axis, radius);
}

void Core_RL_GL::renderAxisCircle3NoPicking(VL_AXIS const& axis, float const& radius) {
    drawAxisCircle(*this, axis, radius);
}

void Core_RL_GL::renderAxesCircleTape3(unsigned int const& nameX, unsigned int const& nameY,
                                       unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                       float const& radius, float const& width) {
    // Deliberate (names-as-axes): the names serve as axes.
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS, unsigned int name) { renderAxisCircleTape3(VL_AXIS(name), radius, width); });
}

void Core_RL_GL::renderAxisCircleStipple3(VL_AXIS const& axis, float const& radius) {
    setLineStipple(true);
    renderAxisCircle3(axis, radius);
    setLineStipple(false);
}

void Core_RL_GL::renderAxisCircleTape3(VL_AXIS const& axis, float const& radius, float const& width) {
    glLoadName(axis);
    if (!isAxis(axis)) {
        return;
    }
    // The first quarter of Z is not rotated, so it is drawn before the matrix is pushed.
    if (axis == VL_AXIS_Z) {
        renderCircleTape3(radius, width);
        glPushMatrix();
    } else {
        glPushMatrix();
        rotateToAxis(axis);
        renderCircleTape3(radius, width);
    }
    for (int quarter = 1; quarter < 4; ++quarter) {
        glRotatef(90.0F, 0.0F, 0.0F, 1.0F);
        renderCircleTape3(radius, width);
    }
    glPopMatrix();
}

// == Circles, quads and rhombi ==

void Core_RL_GL::renderCircle3(float const& radius) {
    drawCircle(radius);
}

void Core_RL_GL::renderCircleCameraFacing3(Matrix4<float> const& frame, Matrix3<float> const& /*unused*/,
                                           float scale, Color4<float> const& color, float const& radius) {
    // Through VL_Raster, as the color belongs to the layer of the process, which may be a subclass.
    VL_Raster->pushColor(color);
    glPushMatrix();
    glMultMatrixf(frame.e);

    // The circle faces the screen if the matrix only translates.
    GLfloat m[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            m[4 * column + row] = column == row ? 1.0F : 0.0F;
        }
    }
    glLoadMatrixf(m);
    glScalef(scale, scale, scale);

    renderCircle3(radius);
    // Deliberate (twice-drawn-circle): the second one is not replaced where renderCircle3() is.
    drawCircle(radius);

    glPopMatrix();
    VL_Raster->popColor(1);
}

void Core_RL_GL::renderQuad3(unsigned int const& texture) {
    activateTextureColor(texture);
    glBegin(GL_POLYGON);
    glTexCoord2i(1, 0);
    glVertex3f(1.0F, 1.0F, 0.0F);
    glTexCoord2i(1, 1);
    glVertex3f(1.0F, -1.0F, 0.0F);
    glTexCoord2i(0, 1);
    glVertex3f(-1.0F, -1.0F, 0.0F);
    glTexCoord2i(0, 0);
    glVertex3f(-1.0F, 1.0F, 0.0F);
    glEnd();
    disableTextureColor();
}

void Core_RL_GL::renderRhombus3(unsigned int const& texture) {
    activateTextureColor(texture);
    glBegin(GL_POLYGON);
    glTexCoord2f(0.5F, 1.0F);
    glVertex3f(0.0F, 1.0F, 0.0F);
    glTexCoord2f(0.0F, 0.5F);
    glVertex3f(-1.0F, 0.0F, 0.0F);
    glTexCoord2f(0.5F, 0.0F);
    glVertex3f(0.0F, -1.0F, 0.0F);
    glTexCoord2f(1.0F, 0.5F);
    glVertex3f(1.0F, 0.0F, 0.0F);
    glEnd();
    disableTextureColor();
}

void Core_RL_GL::renderRhombus3() {
    glBegin(GL_POLYGON);
    glVertex3f(0.0F, 1.0F, 0.0F);
    glVertex3f(-1.0F, 0.0F, 0.0F);
    glVertex3f(0.0F, -1.0F, 0.0F);
    glVertex3f(1.0F, 0.0F, 0.0F);
    glEnd();
}

void Core_RL_GL::renderCircleCulledStipple3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                            float const& radius) {
    CirclePoints const points = circlePoints(frame, radius);
    Vector3<float> const center = translationOf(frame);

    glBegin(GL_LINES);
    sendSegments(points, center, viewDirection, [](float distance) { return distance < 0.0F; });
    glEnd();

    // Deliberate (solid-far-half): no stipple, a line width of 1 only.
    pushLineWidth(1.0F);
    glBegin(GL_LINES);
    sendSegments(points, center, viewDirection, [](float distance) { return distance > 0.0F; });
    glEnd();
    popLineWidth();
}

void Core_RL_GL::renderCircleCulled3(Vector3<float> const& viewDirection, Matrix4<float> const& frame,
                                     float const& radius) {
    CirclePoints const points = circlePoints(frame, radius);
    Vector3<float> const center = translationOf(frame);

    glBegin(GL_LINES);
    bool const any = sendSegments(points, center, viewDirection,
                                  [](float distance) { return distance < FACING_THRESHOLD; });
    if (!any) {
        // Seen face-on no part is nearer than the rest; the whole circle shows.
        sendSegments(points, center, viewDirection, [](float const&) { return true; });
    }
    glEnd();
}

void Core_RL_GL::renderCircleTape3(float const& radius, float const& width) {
    float const up = width * 0.5F;
    float const down = -up;

    glBegin(GL_TRIANGLES);
    sendVertex({radius, 0.0F, 0.0F});
    sendVertex({scaled(radius, TAPE_COS_FIRST), scaled(radius, TAPE_SIN_FIRST), up});
    sendVertex({scaled(radius, TAPE_COS_FIRST), scaled(radius, TAPE_SIN_FIRST), down});
    glEnd();

    glBegin(GL_QUAD_STRIP);
    for (unsigned int i = TAPE_FIRST_DEGREE; i <= TAPE_LAST_DEGREE; ++i) {
        Vector3<float> const p = circlePoint(radius, i);
        sendVertex({p.x, p.y, down});
        sendVertex({p.x, p.y, up});
    }
    glEnd();

    // Deliberate (tape-cap-factors): other factors than the first cap, and the sides in the opposite order.
    glBegin(GL_TRIANGLES);
    sendVertex({0.0F, radius, 0.0F});
    sendVertex({scaled(radius, TAPE_COS_LAST), scaled(radius, TAPE_SIN_LAST), down});
    sendVertex({scaled(radius, TAPE_COS_LAST), scaled(radius, TAPE_SIN_LAST), up});
    glEnd();
}

// == Arrow gizmos ==

void Core_RL_GL::renderAxesArrow3(unsigned int const& nameX, unsigned int const& nameY,
                                  unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                  float const& size) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS axis, unsigned int name) { renderAxisArrow3(axis, name, size); });
}

void Core_RL_GL::renderAxesArrowStipple3(Tuple3<Color4<float>> const& colors, float const& size) {
    drawHandles(*this, {0, 0, 0}, colors,
                [&](VL_AXIS axis, unsigned int /*no picking*/) { renderAxisArrowStipple3(axis, size); });
}

void Core_RL_GL::renderAxesArrowStipple3(unsigned int const& nameX, unsigned int const& nameY,
                                         unsigned int const& nameZ, Tuple3<Color4<float>> const& colors,
                                         float const& size) {
    drawHandles(*this, {nameX, nameY, nameZ}, colors,
                [&](VL_AXIS axis, unsigned int name) { renderAxisArrowStipple3(axis, name, size); });
}

void Core_RL_GL::renderAxesPlane3(unsigned int const& nameXY, unsigned int const& nameYZ,
                                  unsigned int const& nameXZ, Tuple3<Color4<float>> const& colors,
                                  float const& size) {
    float const s = size;
    Vector3<float> const& origin = constants::f::Z0_Z0_Z0;
    pushColor(colors.e0);
    glLoadName(nameXY);
    drawQuad(origin, {s, 0.0F, 0.0F}, {s, s, 0.0F}, {0.0F, s, 0.0F});
    pushColor(colors.e1);
    glLoadName(nameYZ);
    drawQuad(origin, {0.0F, s, 0.0F}, {0.0F, s, s}, {0.0F, 0.0F, s});
    pushColor(colors.e2);
    glLoadName(nameXZ);
    drawQuad(origin, {s, 0.0F, 0.0F}, {s, 0.0F, s}, {0.0F, 0.0F, s});
    popColor(3);
}

void Core_RL_GL::renderAxisArrow3(VL_AXIS const& axis, unsigned int const& name, float const& size) {
    drawAxisArrow(*this, axis, &name, size);
}

void Core_RL_GL::renderAxisArrow3NoPicking(VL_AXIS const& axis, float const& size) {
    drawAxisArrow(*this, axis, nullptr, size);
}

void Core_RL_GL::renderAxisArrowStipple3(VL_AXIS const& axis, unsigned int const& name, float const& size) {
    setLineStipple(true);
    renderAxisArrow3(axis, name, size);
    setLineStipple(false);
}

void Core_RL_GL::renderUnitArrow3() {
    constexpr Vector3<float> CORNERS[4] = {
        {0.05F, -1.0F, 0.05F}, {-0.05F, -1.0F, 0.05F}, {-0.05F, -1.0F, -0.05F}, {0.05F, -1.0F, -0.05F}};
    constexpr Vector3<float> TIP{0.0F, -1.2F, 0.0F};

    glBegin(GL_LINE_STRIP);
    for (Vector3<float> const& corner : CORNERS) {
        sendVertex(corner);
    }
    // A strip, not a loop: the repeated corner closes it.
    sendVertex(CORNERS[0]);
    glEnd();

    glBegin(GL_LINES);
    for (Vector3<float> const& corner : CORNERS) {
        sendVertex(corner);
        sendVertex(TIP);
    }
    sendVertex(constants::f::Z0_Z0_Z0);
    sendVertex(TIP);
    glEnd();
}

// == Ellipses ==

void Core_RL_GL::renderEllipse3(Vector3<float> const& center, Vector3<float> const& u,
                                Vector3<float> const& v) {
    // In double up to the last conversion, unlike the ellipses in the planes of the axes.
    Vector3<double> const c = convert<double>(center);
    Vector3<double> const uWide = convert<double>(u);
    Vector3<double> const vWide = convert<double>(v);
    glBegin(GL_LINE_STRIP);
    for (unsigned int i = 0; i < ELLIPSE_POINTS; ++i) {
        double const t = ellipseAngle(i);
        sendVertex(convert<float>(c + uWide * std::sin(t) + vWide * std::cos(t)));
    }
    glEnd();
}

void Core_RL_GL::renderEllipse3_XZ(Vector3<float> const& center, float const& a, float const& b) {
    drawAxisEllipse(center, [&](double cosine, double sine) {
        return Vector3<float>{scaled(a, cosine), 0.0F, scaled(b, sine)};
    });
}

void Core_RL_GL::renderEllipse3_XY(Vector3<float> const& center, float const& a, float const& b) {
    drawAxisEllipse(center, [&](double cosine, double sine) {
        return Vector3<float>{scaled(a, cosine), scaled(b, sine), 0.0F};
    });
}

void Core_RL_GL::renderEllipse3_YZ(Vector3<float> const& center, float const& a, float const& b) {
    drawAxisEllipse(center, [&](double cosine, double sine) {
        return Vector3<float>{0.0F, scaled(a, cosine), scaled(b, sine)};
    });
}

// == Arrows between points ==

void Core_RL_GL::renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                              bool const& tailBox) {
    Vector3<float> direction = to - from;
    float const arrowLength = length(direction);
    if (hasDirection(arrowLength)) {
        direction = direction / arrowLength;
    }
    if (headSize * HEAD_TO_SKIP > arrowLength) {
        return;
    }
    renderSegment3(from, to);

    float const longestHead = arrowLength * HEAD_PER_LENGTH;
    float const headLength = longestHead <= headSize ? longestHead : headSize;
    ArrowHead const head(direction, to - direction * headLength, headLength * HEAD_WIDTH_PER_LENGTH);
    Vector3<float> const& k1 = head.corners[0];
    Vector3<float> const& k2 = head.corners[1];
    Vector3<float> const& k3 = head.corners[2];
    Vector3<float> const& k4 = head.corners[3];

    pushFillingFront(FILLING_SOLID);
    pushFillingBack(FILLING_SOLID);
    // Sides first, then the base in its darker color: one color change per arrow.
    renderTriangle(to, k1, k2);
    renderTriangle(to, k2, k3);
    renderTriangle(to, k3, k4);
    renderTriangle(to, k4, k1);
    // Deliberate (arrow-base-shades): 0.75 here, 0.8 in arrays.
    pushColor(headBaseColor(currentColor(), HEAD_BASE_SHADE));
    renderTriangle(k1, k3, k2);
    renderTriangle(k1, k4, k3);
    popColor(1);
    if (tailBox) {
        render(cubeAround(from, headLength), false);
    }
    popFillingFront();
    popFillingBack();
}

void Core_RL_GL::createBuffers_forRenderArrow3(Array<Vector3<float>> const& positions,
                                               Array<Vector3<float>> const& directions,
                                               Array<Color4<float>> const& colors, float scale,
                                               Array<Vector3<float>>& vertices,
                                               Array<unsigned int>& triangles, Array<unsigned int>& lines,
                                               Array<unsigned int>& quads,
                                               Array<Color4<float>>& vertexColors) {
    constexpr unsigned int MOST_ARROWS =
        std::numeric_limits<unsigned int>::max() / TRIANGLE_INDICES_PER_ARROW;
    unsigned int const wanted = std::min(positions.size(), directions.size());
    // Triangle indices are the most numerous: 12 per arrow.
    unsigned int const count = wanted <= MOST_ARROWS ? wanted : 0;

    resizeToOverwrite(vertices, VERTICES_PER_ARROW * count);
    resizeToOverwrite(triangles, TRIANGLE_INDICES_PER_ARROW * count);
    resizeToOverwrite(lines, LINE_INDICES_PER_ARROW * count);
    resizeToOverwrite(quads, QUAD_INDICES_PER_ARROW * count);
    resizeToOverwrite(vertexColors, VERTICES_PER_ARROW * count);

    unsigned int const colorCount = colors.size();
    forLongRanges(count, ARROWS_PER_RANGE, [&](std::size_t begin, std::size_t end) {
        // Points are computed for a block of arrows, which vectorizes, and then each arrow is written to all
        // arrays. Computation then overlaps with the stores.
        ArrowPoints points;
        Vector3<float>* vertex = vertices.data() + VERTICES_PER_ARROW * begin;
        Color4<float>* vertexColor = vertexColors.data() + VERTICES_PER_ARROW * begin;
        unsigned int* triangle = triangles.data() + TRIANGLE_INDICES_PER_ARROW * begin;
        unsigned int* line = lines.data() + LINE_INDICES_PER_ARROW * begin;
        unsigned int* quad = quads.data() + QUAD_INDICES_PER_ARROW * begin;
        takePages(vertex, (end - begin) * VERTICES_PER_ARROW * sizeof(Vector3<float>));
        takePages(vertexColor, (end - begin) * VERTICES_PER_ARROW * sizeof(Color4<float>));
        takePages(triangle, (end - begin) * TRIANGLE_INDICES_PER_ARROW * sizeof(unsigned int));
        takePages(line, (end - begin) * LINE_INDICES_PER_ARROW * sizeof(unsigned int));
        takePages(quad, (end - begin) * QUAD_INDICES_PER_ARROW * sizeof(unsigned int));
        auto const last = static_cast<unsigned int>(end);
        for (auto first = static_cast<unsigned int>(begin); first < last; first += ArrowPoints::ARROWS) {
            unsigned int const arrows = std::min(last - first, ArrowPoints::ARROWS);
            Vector3<float> const* const tails = positions.data() + first;
            points.compute(tails, directions.data() + first, scale, arrows);
            for (unsigned int arrow = 0; arrow < arrows; ++arrow) {
                unsigned int const i = first + arrow;
                unsigned int const k = VERTICES_PER_ARROW * i;
                writeArrowVertices(points, arrow, tails[arrow], vertex);
                writeArrowColors(colorCount == 0 ? DEFAULT_ARROW_COLOR : colors[std::min(i, colorCount - 1)],
                                 vertexColor);
                writeArrowIndices(TRIANGLE_INDICES, k, triangle);
                writeArrowIndices(LINE_INDICES, k, line);
                writeArrowIndices(QUAD_INDICES, k, quad);
                vertex += VERTICES_PER_ARROW;
                vertexColor += VERTICES_PER_ARROW;
                triangle += TRIANGLE_INDICES_PER_ARROW;
                line += LINE_INDICES_PER_ARROW;
                quad += QUAD_INDICES_PER_ARROW;
            }
        }
    });
}

void Core_RL_GL::renderArrow3_usingBuffers(Array<Vector3<float>> const& vertices,
                                           Array<unsigned int> const& triangles,
                                           Array<unsigned int> const& lines, Array<unsigned int> const& quads,
                                           Array<Color4<float>> const& vertexColors) {
    pushFillingFront(FILLING_SOLID);
    pushFillingBack(FILLING_SOLID);
    VL_Raster->enableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->enableClientState(ClientCapability::COLOR_ARRAY);
    VL_Raster->vertexPointer(3, DataType::FLOAT, 0, clientArray(vertices));
    // Three components with a stride of four: alpha is skipped.
    VL_Raster->colorPointer(3, DataType::FLOAT, sizeof(Color4<float>), clientArray(vertexColors));
    VL_Raster->drawElements(Primitive::TRIANGLES, triangles.size(), DataType::UNSIGNED_INT,
                            clientArray(triangles));
    VL_Raster->drawElements(Primitive::QUADS, quads.size(), DataType::UNSIGNED_INT, clientArray(quads));
    VL_Raster->drawElements(Primitive::LINES, lines.size(), DataType::UNSIGNED_INT, clientArray(lines));
    VL_Raster->disableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->disableClientState(ClientCapability::COLOR_ARRAY);
    popFillingBack();
    popFillingFront();
}

void Core_RL_GL::renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size) {
    drawSegment(from, to);
    Vector2<float> const d = to - from;
    float const barbLength = length(d) * size;
    Vector2<float> const sideways{-BARB_TANGENT * d.y, BARB_TANGENT * d.x};
    Vector2<float> const q1 = from + sideways - to;
    Vector2<float> const q2 = from - sideways - to;
    drawSegment(to + q1 / length(q1) * barbLength, to);
    drawSegment(to + q2 / length(q2) * barbLength, to);
}

// == Triangles, quads and points ==

void Core_RL_GL::renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) {
    glBegin(GL_TRIANGLES);
    // Qualified: glBegin and the vertices belong together, so an override of the inner operation is not used.
    Core_RL_GL::renderTriangleOptimized(a, b, c);
    glEnd();
}

void Core_RL_GL::renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                                Vector3<float> const& normalA, Vector3<float> const& normalB,
                                Vector3<float> const& normalC) {
    glBegin(GL_TRIANGLES);
    sendNormal(normalA);
    sendVertex(a);
    sendNormal(normalB);
    sendVertex(b);
    sendNormal(normalC);
    sendVertex(c);
    glEnd();
}

void Core_RL_GL::renderTriangleOptimized(Vector3<float> const& a, Vector3<float> const& b,
                                         Vector3<float> const& c) {
    Vector3<float> const normal = normalized(cross(b - a, c - a));
    sendNormal(normal);
    sendVertex(a);
    sendNormal(normal);
    sendVertex(b);
    sendNormal(normal);
    sendVertex(c);
}

void Core_RL_GL::renderQuad3(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c,
                             Vector3<float> const& d) {
    drawQuad(a, b, c, d);
}

void Core_RL_GL::renderPoint3(Vector3<float> const& p) {
    glBegin(GL_POINTS);
    sendVertex(p);
    glEnd();
}

void Core_RL_GL::renderPoint3_Begin() {
    glBegin(GL_POINTS);
}

void Core_RL_GL::renderPoint3_End() {
    glEnd();
}

void Core_RL_GL::renderPoint3_scoped(Vector3<float> const& p) {
    sendVertex(p);
}

void Core_RL_GL::renderPoint2(Vector2<float> const& p) {
    glBegin(GL_POINTS);
    glVertex2fv(&p.x);
    glEnd();
}

void Core_RL_GL::renderCross3() {
    glBegin(GL_LINES);
    sendVertex(constants::f::P1_Z0_Z0_P1);
    sendVertex(constants::f::N1_Z0_Z0_P1);
    sendVertex(constants::f::Z0_P1_Z0_P1);
    sendVertex(constants::f::Z0_N1_Z0_P1);
    sendVertex(constants::f::Z0_Z0_P1_P1);
    sendVertex(constants::f::Z0_Z0_N1_P1);
    glEnd();
}

// == Boxes ==

void Core_RL_GL::renderBox3(Vector3<float> const& center, float const& halfSize) {
    render(cubeAround(center, halfSize), false);
}

void Core_RL_GL::renderBox3Points_asPoints(Box3Points<float> const& points) {
    drawLattice(points);
}

void Core_RL_GL::renderBox3Points_asPoints(Box3Points<double> const& points) {
    drawLattice(points);
}

void Core_RL_GL::renderBox3Points_asPoints(Box3Points_ex<float> const& points) {
    drawLattice(points);
}

void Core_RL_GL::renderBox3Points_asPoints(Box3Points_ex<double> const& points) {
    drawLattice(points);
}

void Core_RL_GL::render(Box3<float> const& box, bool const& wire) const {
    drawBox(boxCorners(box), wire);
}

void Core_RL_GL::render(Box3<float> const& box, Tuple8<Vector3<float>> const& colors,
                        bool const& wire) const {
    drawBox(box, colors, wire);
}

void Core_RL_GL::render(Box2<float> const& box, bool const& wire) {
    Vector2<float> const lowerRight{box.max.x, box.min.y};
    Vector2<float> const upperLeft{box.min.x, box.max.y};
    // Deliberate (two-edge-rectangle): GL_LINES, not a loop, so only two edges are visible.
    glBegin(wire ? GL_LINES : GL_QUADS);
    glVertex2fv(&box.min.x);
    glVertex2fv(&lowerRight.x);
    glVertex2fv(&box.max.x);
    glVertex2fv(&upperLeft.x);
    if (wire) {
        glVertex2fv(&box.min.x);
    }
    glEnd();
}

void Core_RL_GL::render(Obb3<float> const& box, bool const& wire) {
    // Deliberate (upright-box-normals): drawBox() sends the normals of the upright box.
    drawBox(boxCorners(box), wire);
}

void Core_RL_GL::render(Box2<double> const& box, bool const& wire) {
    render(Box2<float>{convert<float>(box.min), convert<float>(box.max)}, wire);
}

void Core_RL_GL::render(Box3<double> const& box, bool const& wire) const {
    render(Box3<float>{convert<float>(box.min), convert<float>(box.max)}, wire);
}

void Core_RL_GL::render(Box3<double> const& box, Tuple8<Vector3<float>> const& colors,
                        bool const& wire) const {
    render(Box3<float>{convert<float>(box.min), convert<float>(box.max)}, colors, wire);
}

void Core_RL_GL::render(Obb3<double> const& box, bool const& wire) {
    render(Obb3<float>{convert<float>(box.axis0), static_cast<float>(box.extent0), convert<float>(box.axis1),
                       static_cast<float>(box.extent1), convert<float>(box.axis2),
                       static_cast<float>(box.extent2), convert<float>(box.centre)},
           wire);
}

// == Triangle lists ==

void Core_RL_GL::render(Array<Vector3<double>> const& vertices,
                        Array<Tuple3<unsigned int>> const& triangles) {
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_DOUBLE, 0, vertices.data());
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(3 * triangles.size()), GL_UNSIGNED_INT,
                   triangles.data());
    glDisableClientState(GL_VERTEX_ARRAY);
}

void Core_RL_GL::render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                        Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) {
    Core_RL::render(vertices, triangles, normals, colors);
}

void Core_RL_GL::render(Array<Vector3<double>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                        Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) {
    Core_RL::render(vertices, triangles, normals, colors);
}

// == Viewports ==

Tuple4<unsigned int> Core_RL_GL::getCurrentViewportCoords() const {
    GLint v[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, v);
    return {static_cast<unsigned int>(v[0]), static_cast<unsigned int>(v[1]), static_cast<unsigned int>(v[2]),
            static_cast<unsigned int>(v[3])};
}

void Core_RL_GL::pushViewportOrtho(Tuple4<unsigned int> const& viewport, Tuple4<float> const& box) {
    // Before glViewport(), which the viewport group saves. The matrices have their own stacks.
    glPushAttrib(OVERLAY_ATTRIBUTES);
    glViewport(static_cast<GLint>(viewport.e0), static_cast<GLint>(viewport.e1),
               static_cast<GLsizei>(viewport.e2), static_cast<GLsizei>(viewport.e3));
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(static_cast<double>(box.e0), static_cast<double>(box.e1), static_cast<double>(box.e2),
            static_cast<double>(box.e3), -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
}

void Core_RL_GL::popViewportOrtho() {
    // pushViewportOrtho() has left GL_MODELVIEW selected, so the first pop needs no glMatrixMode.
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glPopAttrib();
    glMatrixMode(GL_MODELVIEW);
}

void Core_RL_GL::renderAxisArrowStipple3(VL_AXIS const& axis, float const& size) {
    setLineStipple(true);
    renderAxisArrow3NoPicking(axis, size);
    setLineStipple(false);
}

}  // namespace vellum
