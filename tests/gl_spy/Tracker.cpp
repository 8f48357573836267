#include "Tracker.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include <GL/gl.h>

namespace gl_spy {

namespace {

constexpr Tracker::Matrix identity{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

using Vector = std::array<double, 3>;

Tracker::Matrix product(Tracker::Matrix const& a, Tracker::Matrix const& b) {
    Tracker::Matrix result{};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k) {
                result[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
            }
        }
    }
    return result;
}

Tracker::Matrix transposed(Tracker::Matrix const& m) {
    Tracker::Matrix result{};
    for (std::size_t i = 0; i < 16; ++i) {
        result[i % 4 * 4 + i / 4] = m[i];
    }
    return result;
}

Vector transformed(Tracker::Matrix const& m, Vector const& p) {
    Vector result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = m[row] * p[0] + m[4 + row] * p[1] + m[8 + row] * p[2] + m[12 + row];
    }
    return result;
}

Vector cross(Vector const& a, Vector const& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector normalized(Vector const& v) {
    double const length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return length > 0 ? Vector{v[0] / length, v[1] / length, v[2] / length} : v;
}

/// The matrix among a call's numbers; the identity when the call had null.
Tracker::Matrix matrixOf(Call const& call) {
    Tracker::Matrix matrix = identity;
    if (call.numbers.size() == matrix.size()) {
        std::copy(call.numbers.begin(), call.numbers.end(), matrix.begin());
    }
    return matrix;
}

/// The first numbers of a call over the given ones, so that missing components keep their defaults.
template <std::size_t n>
std::array<double, n> over(std::array<double, n> defaults, std::vector<double> const& numbers) {
    std::copy_n(numbers.begin(), std::min(n, numbers.size()), defaults.begin());
    return defaults;
}

/// Converts one integer component of a color or a normal as GL does, by the type letters of the call: "ub" of
/// "glColor3ubv".
double scaled(double value, std::string const& type) {
    static std::map<std::string, double> const bits{{"b", 8},  {"s", 16},  {"i", 32},
                                                    {"ub", 8}, {"us", 16}, {"ui", 32}};
    auto const found = bits.find(type);
    if (found == bits.end()) {
        return value;
    }
    double const range = std::exp2(found->second) - 1;
    return type[0] == 'u' ? value / range : (2 * value + 1) / range;
}

/// "ub" for "glColor3ubv".
std::string typeOf(std::string const& name) {
    std::size_t const digit = name.find_last_of("1234");
    std::string type = name.substr(digit + 1);
    if (!type.empty() && type.back() == 'v') {
        type.pop_back();
    }
    return type;
}

bool startsWith(std::string const& text, char const* start) {
    return text.rfind(start, 0) == 0;
}

}  // namespace

Tracker::Tracker() {
    _saved.matrixMode = GL_MODELVIEW;
    for (GLenum const mode : {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE, GL_COLOR}) {
        _stacks[mode] = {identity};
    }
}

Tracker::Matrix const& Tracker::matrix(unsigned int mode) const {
    auto const found = _stacks.find(mode);
    return found == _stacks.end() ? identity : found->second.back();
}

void Tracker::follow(Call const& call) {
    auto const found = _handlers().find(call.name);
    if (found != _handlers().end()) {
        (this->*found->second)(call);
    } else if (startsWith(call.name, "glVertex") && std::isdigit(static_cast<unsigned char>(call.name[8]))) {
        _vertex(call);
    } else if (startsWith(call.name, "glNormal3")) {
        _normal(call);
    } else if (startsWith(call.name, "glColor3") || startsWith(call.name, "glColor4")) {
        _color(call);
    } else if (startsWith(call.name, "glTexCoord") &&
               std::isdigit(static_cast<unsigned char>(call.name[10]))) {
        _textureCoordinate(call);
    }
}

std::map<std::string, Tracker::Handler> const& Tracker::_handlers() {
    static std::map<std::string, Handler> const handlers{
        {"glBegin", &Tracker::_begin},
        {"glEnd", &Tracker::_end},
        {"glMatrixMode", &Tracker::_setMatrixMode},
        {"glPushMatrix", &Tracker::_pushMatrix},
        {"glPopMatrix", &Tracker::_popMatrix},
        {"glLoadIdentity", &Tracker::_loadIdentity},
        {"glLoadMatrixf", &Tracker::_loadMatrix},
        {"glLoadMatrixd", &Tracker::_loadMatrix},
        {"glLoadTransposeMatrixf", &Tracker::_loadTransposed},
        {"glLoadTransposeMatrixd", &Tracker::_loadTransposed},
        {"glMultMatrixf", &Tracker::_multMatrix},
        {"glMultMatrixd", &Tracker::_multMatrix},
        {"glMultTransposeMatrixf", &Tracker::_multTransposed},
        {"glMultTransposeMatrixd", &Tracker::_multTransposed},
        {"glRotatef", &Tracker::_rotate},
        {"glRotated", &Tracker::_rotate},
        {"glScalef", &Tracker::_scale},
        {"glScaled", &Tracker::_scale},
        {"glTranslatef", &Tracker::_translate},
        {"glTranslated", &Tracker::_translate},
        {"glOrtho", &Tracker::_ortho},
        {"gluOrtho2D", &Tracker::_ortho},
        {"glFrustum", &Tracker::_frustum},
        {"gluPerspective", &Tracker::_perspective},
        {"gluLookAt", &Tracker::_lookAt},
        {"gluPickMatrix", &Tracker::_pickMatrix},
        {"glViewport", &Tracker::_setViewport},
        {"glPushAttrib", &Tracker::_pushAttrib},
        {"glPopAttrib", &Tracker::_popAttrib},
        {"glInitNames", &Tracker::_initNames},
        {"glLoadName", &Tracker::_loadName},
        {"glPushName", &Tracker::_pushName},
        {"glPopName", &Tracker::_popName},
    };
    return handlers;
}

// == Vertices ==

void Tracker::_begin(Call const& call) {
    _open = Primitive{call.enums.at(0), {}};
}

void Tracker::_end(Call const&) {
    if (_open) {
        _primitives.push_back(*_open);
    }
    _open.reset();
}

void Tracker::_vertex(Call const& call) {
    if (!_open) {
        return;
    }
    Vertex vertex = _saved.current;
    vertex.position = over<3>({{0, 0, 0}}, call.numbers);
    vertex.transformed = transformed(matrix(GL_MODELVIEW), vertex.position);
    if (!_names.empty()) {
        vertex.name = _names.back();
    }
    _open->vertices.push_back(vertex);
}

void Tracker::_normal(Call const& call) {
    Vector const normal = over<3>({{0, 0, 1}}, call.numbers);
    std::transform(normal.begin(), normal.end(), _saved.current.normal.begin(),
                   [type = typeOf(call.name)](double value) { return scaled(value, type); });
}

void Tracker::_color(Call const& call) {
    std::string const type = typeOf(call.name);
    std::vector<double> components = call.numbers;
    for (double& component : components) {
        component = scaled(component, type);
    }
    _saved.current.color = over<4>({{0, 0, 0, 1}}, components);
}

void Tracker::_textureCoordinate(Call const& call) {
    _saved.current.textureCoordinate = over<4>({{0, 0, 0, 1}}, call.numbers);
}

// == Matrices ==

void Tracker::_multiply(Matrix const& matrix) {
    _stack().back() = product(_stack().back(), matrix);
}

void Tracker::_setMatrixMode(Call const& call) {
    // An unknown mode is an error to GL and leaves the mode as it is.
    if (_stacks.count(call.enums.at(0))) {
        _saved.matrixMode = call.enums.at(0);
    }
}

void Tracker::_pushMatrix(Call const&) {
    _stack().push_back(Matrix(_stack().back()));
}

void Tracker::_popMatrix(Call const&) {
    if (_stack().size() > 1) {
        _stack().pop_back();
    }
}

void Tracker::_loadIdentity(Call const&) {
    _stack().back() = identity;
}

void Tracker::_loadMatrix(Call const& call) {
    _stack().back() = matrixOf(call);
}

void Tracker::_loadTransposed(Call const& call) {
    _stack().back() = transposed(matrixOf(call));
}

void Tracker::_multMatrix(Call const& call) {
    _multiply(matrixOf(call));
}

void Tracker::_multTransposed(Call const& call) {
    _multiply(transposed(matrixOf(call)));
}

void Tracker::_rotate(Call const& call) {
    double const angle = call.numbers.at(0) * std::acos(-1.0) / 180;
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    auto const [x, y, z] = normalized({call.numbers.at(1), call.numbers.at(2), call.numbers.at(3)});
    _multiply({{x * x * (1 - c) + c, y * x * (1 - c) + z * s, x * z * (1 - c) - y * s, 0,  //
                x * y * (1 - c) - z * s, y * y * (1 - c) + c, y * z * (1 - c) + x * s, 0,  //
                x * z * (1 - c) + y * s, y * z * (1 - c) - x * s, z * z * (1 - c) + c, 0,  //
                0, 0, 0, 1}});
}

void Tracker::_scale(Call const& call) {
    Matrix matrix = identity;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        matrix[axis * 5] = call.numbers.at(axis);
    }
    _multiply(matrix);
}

void Tracker::_translate(Call const& call) {
    Matrix matrix = identity;
    std::copy_n(call.numbers.begin(), 3, matrix.begin() + 12);
    _multiply(matrix);
}

void Tracker::_ortho(Call const& call) {
    std::array<double, 6> const sides = over<6>({{0, 0, 0, 0, -1, 1}}, call.numbers);
    Matrix matrix = identity;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double const low = sides[axis * 2];
        double const high = sides[axis * 2 + 1];
        matrix[axis * 5] = (axis == 2 ? -2 : 2) / (high - low);
        matrix[12 + axis] = -(high + low) / (high - low);
    }
    _multiply(matrix);
}

void Tracker::_frustum(Call const& call) {
    auto const [left, right, bottom, top, near, far] = over<6>({}, call.numbers);
    _multiply({{2 * near / (right - left), 0, 0, 0,  //
                0, 2 * near / (top - bottom), 0, 0,  //
                (right + left) / (right - left), (top + bottom) / (top - bottom),
                -(far + near) / (far - near), -1,  //
                0, 0, -2 * far * near / (far - near), 0}});
}

void Tracker::_perspective(Call const& call) {
    auto const [fieldOfView, aspect, near, far] = over<4>({}, call.numbers);
    double const f = 1 / std::tan(fieldOfView * std::acos(-1.0) / 360);
    _multiply({{f / aspect, 0, 0, 0, 0, f, 0, 0, 0, 0, (far + near) / (near - far), -1,  //
                0, 0, 2 * far * near / (near - far), 0}});
}

void Tracker::_lookAt(Call const& call) {
    std::array<double, 9> const n = over<9>({}, call.numbers);
    Vector const forward = normalized({n[3] - n[0], n[4] - n[1], n[5] - n[2]});
    Vector const side = normalized(cross(forward, {n[6], n[7], n[8]}));
    Vector const up = cross(side, forward);
    _multiply({{side[0], up[0], -forward[0], 0, side[1], up[1], -forward[1], 0,  //
                side[2], up[2], -forward[2], 0, 0, 0, 0, 1}});
    Matrix away = identity;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        away[12 + axis] = -n[axis];
    }
    _multiply(away);
}

void Tracker::_pickMatrix(Call const& call) {
    auto const [x, y, width, height, left, bottom, viewWidth, viewHeight] = over<8>({}, call.numbers);
    if (width <= 0 || height <= 0) {
        return;
    }
    Matrix matrix = identity;
    matrix[0] = viewWidth / width;
    matrix[5] = viewHeight / height;
    matrix[12] = (viewWidth + 2 * (left - x)) / width;
    matrix[13] = (viewHeight + 2 * (bottom - y)) / height;
    _multiply(matrix);
}

// == Attributes ==

void Tracker::_setViewport(Call const& call) {
    std::transform(call.numbers.begin(), call.numbers.end(), _saved.viewport.begin(),
                   [](double value) { return int(value); });
}

void Tracker::_pushAttrib(Call const& call) {
    _attribStack.push_back(_saved);
    _attribStack.back().mask = call.enums.at(0);
}

void Tracker::_popAttrib(Call const&) {
    if (_attribStack.empty()) {
        return;
    }
    Saved const saved = _attribStack.back();
    _attribStack.pop_back();
    if (saved.mask & GL_TRANSFORM_BIT) {
        _saved.matrixMode = saved.matrixMode;
    }
    if (saved.mask & GL_VIEWPORT_BIT) {
        _saved.viewport = saved.viewport;
    }
    if (saved.mask & GL_CURRENT_BIT) {
        _saved.current = saved.current;
    }
}

// == Names ==

void Tracker::_initNames(Call const&) {
    _names.clear();
}

void Tracker::_loadName(Call const& call) {
    if (_names.empty()) {
        _names.emplace_back();
    }
    _names.back() = static_cast<unsigned int>(call.numbers.at(0));
}

void Tracker::_pushName(Call const& call) {
    _names.push_back(static_cast<unsigned int>(call.numbers.at(0)));
}

void Tracker::_popName(Call const&) {
    if (!_names.empty()) {
        _names.pop_back();
    }
}

}  // namespace gl_spy
