#pragma once

#include "Core_RL_GL.h"
#include "tests/gl_spy/gl_spy.h"
#include "tests/support/recorded_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// Helpers for the tests of the drawing operations: a scripted driver, a render layer that replaces some of
/// its own virtual operations, and comparisons of recorded vertices with expected ones.
namespace vellum::drawing_probe {

using Point = std::array<double, 3>;

inline Point point(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}

/// The positions of a primitive as sent, or as the modelview matrix places them.
inline std::vector<Point> sent(gl_spy::Primitive const& primitive) {
    std::vector<Point> points;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        points.push_back(vertex.position);
    }
    return points;
}
inline std::vector<Point> placed(gl_spy::Primitive const& primitive) {
    std::vector<Point> points;
    for (gl_spy::Vertex const& vertex : primitive.vertices) {
        points.push_back(vertex.transformed);
    }
    return points;
}

inline void expectNear(Point const& actual, Point const& expected, double tolerance,
                       std::string const& what) {
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(actual[k], expected[k], tolerance) << what << ", component " << k;
    }
}

/// Compares point by point. A tolerance of 0 asks for the same numbers.
inline void expectPoints(std::vector<Point> const& actual, std::vector<Point> const& expected,
                         double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        expectNear(actual[i], expected[i], tolerance, "vertex " + std::to_string(i));
    }
}

inline std::string threeNumbers(std::string const& call, Point const& p) {
    std::ostringstream text;
    text << call << "({" << p[0] << ", " << p[1] << ", " << p[2] << "})";
    return text.str();
}

/// Whether a call only describes a vertex between glBegin and glEnd.
inline bool isVertexData(gl_spy::Call const& call) {
    for (char const* stem : {"glVertex2", "glVertex3", "glNormal3", "glTexCoord2", "glColor3"}) {
        if (call.name.compare(0, std::string(stem).size(), stem) == 0) {
            return true;
        }
    }
    return false;
}

/// The calls without the vertex data: the frame of state, matrices, names and blocks around it.
inline Texts outline(gl_spy::Recording const& recording) {
    Texts texts;
    for (gl_spy::Call const& call : recording.calls()) {
        if (!isVertexData(call)) {
            texts.push_back(call.text());
        }
    }
    return texts;
}

/// A render layer some of whose virtual operations are replaced: they are noted with their arguments and draw
/// nothing. Shows whether one drawing calls another through the virtual operation.
class Witness_core : public Core_RL_GL {
public:
    struct Request {
        std::string operation;
        std::vector<double> numbers;
        std::size_t callsBefore;  // GL calls of the recording that came before it
    };

    explicit Witness_core(std::set<std::string> replacedOperations)
        : replaced(std::move(replacedOperations)) {}

    using Core_RL_GL::render;
    using Core_RL_GL::renderArrow2;
    using Core_RL_GL::renderArrow3;
    using Core_RL_GL::renderAxisArrowStipple3;
    using Core_RL_GL::renderPoint2;
    using Core_RL_GL::renderPoint3;
    using Core_RL_GL::renderPoint3_scoped;
    using Core_RL_GL::renderTetrahedron;
    using Core_RL_GL::renderTriangle;

    gl_spy::Recording const* recording = nullptr;  ///< Tells where among the GL calls a request came.
    mutable std::vector<Request> requests;

    /// outline() of the recording, with "-> operation" where a replaced operation was asked for.
    Texts trace() const {
        Texts texts;
        std::size_t next = 0;
        std::vector<gl_spy::Call> const& calls = recording->calls();
        for (std::size_t i = 0; i <= calls.size(); ++i) {
            for (; next < requests.size() && requests[next].callsBefore == i; ++next) {
                texts.push_back("-> " + requests[next].operation);
            }
            if (i < calls.size() && !isVertexData(calls[i])) {
                texts.push_back(calls[i].text());
            }
        }
        return texts;
    }

    void setLineStipple(bool on) override {
        if (!_replaces("setLineStipple", {on ? 1.0 : 0.0})) {
            Core_RL_GL::setLineStipple(on);
        }
    }
    void setColor(Color4<float> const& c) override {
        if (!_replaces("setColor", {c.r, c.g, c.b, c.a})) {
            Core_RL_GL::setColor(c);
        }
    }
    void setFillingFront(FillingMode const& mode) override {
        if (!_replaces("setFillingFront", {double(mode)})) {
            Core_RL_GL::setFillingFront(mode);
        }
    }
    void setFillingBack(FillingMode const& mode) override {
        if (!_replaces("setFillingBack", {double(mode)})) {
            Core_RL_GL::setFillingBack(mode);
        }
    }
    void activateTextureColor(unsigned int const& texture) override {
        if (!_replaces("activateTextureColor", {double(texture)})) {
            Core_RL_GL::activateTextureColor(texture);
        }
    }
    void disableTextureColor() override {
        if (!_replaces("disableTextureColor", {})) {
            Core_RL_GL::disableTextureColor();
        }
    }
    void enableClientState(ClientCapability::type array) override {
        if (!_replaces("enableClientState", {double(array)})) {
            Core_RL_GL::enableClientState(array);
        }
    }
    void disableClientState(ClientCapability::type array) override {
        if (!_replaces("disableClientState", {double(array)})) {
            Core_RL_GL::disableClientState(array);
        }
    }
    void vertexPointer(int size, DataType::type type, unsigned long stride, void* pointer) override {
        if (!_replaces("vertexPointer", {double(size), double(type), double(stride)})) {
            Core_RL_GL::vertexPointer(size, type, stride, pointer);
        }
    }
    void colorPointer(int size, DataType::type type, unsigned long stride, void* pointer) override {
        if (!_replaces("colorPointer", {double(size), double(type), double(stride)})) {
            Core_RL_GL::colorPointer(size, type, stride, pointer);
        }
    }
    void drawElements(Primitive::type mode, unsigned long count, DataType::type type,
                      void* indices) override {
        if (!_replaces("drawElements", {double(mode), double(count), double(type)})) {
            Core_RL_GL::drawElements(mode, count, type, indices);
        }
    }
    void renderSegment3(Vector3<float> const& a, Vector3<float> const& b) override {
        if (!_replaces("renderSegment3", {a.x, a.y, a.z, b.x, b.y, b.z})) {
            Core_RL_GL::renderSegment3(a, b);
        }
    }
    void renderPlane3(Plane3<float> const& plane, float const& size, unsigned int const& divisions) override {
        if (!_replaces("renderPlane3", {plane.n.x, plane.n.y, plane.n.z, plane.d, size, double(divisions)})) {
            Core_RL_GL::renderPlane3(plane, size, divisions);
        }
    }
    void renderCircle3(float const& radius) override {
        if (!_replaces("renderCircle3", {radius})) {
            Core_RL_GL::renderCircle3(radius);
        }
    }
    void renderCircleCulled3(Vector3<float> const& direction, Matrix4<float> const& frame,
                             float const& radius) override {
        if (!_replaces("renderCircleCulled3", _circle(direction, frame, radius))) {
            Core_RL_GL::renderCircleCulled3(direction, frame, radius);
        }
    }
    void renderCircleCulledStipple3(Vector3<float> const& direction, Matrix4<float> const& frame,
                                    float const& radius) override {
        if (!_replaces("renderCircleCulledStipple3", _circle(direction, frame, radius))) {
            Core_RL_GL::renderCircleCulledStipple3(direction, frame, radius);
        }
    }
    void renderAxisArrow3(VL_AXIS const& axis, unsigned int const& name, float const& size) override {
        if (!_replaces("renderAxisArrow3", {double(axis), double(name), size})) {
            Core_RL_GL::renderAxisArrow3(axis, name, size);
        }
    }
    void renderTriangle(Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) override {
        if (!_replaces("renderTriangle", {a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z})) {
            Core_RL_GL::renderTriangle(a, b, c);
        }
    }
    void renderArrow3(Vector3<float> const& a, Vector3<float> const& b, float const& headSize,
                      bool const& tailBox) override {
        if (!_replaces("renderArrow3", {a.x, a.y, a.z, b.x, b.y, b.z, headSize, tailBox ? 1.0 : 0.0})) {
            Core_RL_GL::renderArrow3(a, b, headSize, tailBox);
        }
    }
    void renderArrow2(Vector2<float> const& a, Vector2<float> const& b, float const& size) override {
        if (!_replaces("renderArrow2", {a.x, a.y, b.x, b.y, size})) {
            Core_RL_GL::renderArrow2(a, b, size);
        }
    }
    void renderPoint3(Vector3<float> const& p) override {
        if (!_replaces("renderPoint3", {p.x, p.y, p.z})) {
            Core_RL_GL::renderPoint3(p);
        }
    }
    void renderPoint3_scoped(Vector3<float> const& p) override {
        if (!_replaces("renderPoint3_scoped", {p.x, p.y, p.z})) {
            Core_RL_GL::renderPoint3_scoped(p);
        }
    }
    void renderPoint2(Vector2<float> const& p) override {
        if (!_replaces("renderPoint2", {p.x, p.y})) {
            Core_RL_GL::renderPoint2(p);
        }
    }
    void renderTetrahedron(Vector3<float> const& center, float const& size) override {
        if (!_replaces("renderTetrahedron", {center.x, center.y, center.z, size})) {
            Core_RL_GL::renderTetrahedron(center, size);
        }
    }
    void render(Box2<float> const& box, bool const& wire) override {
        if (!_replaces("render(Box2)", {box.min.x, box.min.y, box.max.x, box.max.y, wire ? 1.0 : 0.0})) {
            Core_RL_GL::render(box, wire);
        }
    }
    void render(Box3<float> const& box, bool const& wire) const override {
        if (!_replaces("render(Box3)", _box(box, wire))) {
            Core_RL_GL::render(box, wire);
        }
    }
    void render(Box3<float> const& box, Tuple8<Vector3<float>> const& colors,
                bool const& wire) const override {
        std::vector<double> numbers = _box(box, wire);
        for (Vector3<float> const& c : {colors.e0, colors.e7}) {
            numbers.insert(numbers.end(), {c.x, c.y, c.z});
        }
        if (!_replaces("render(Box3, colors)", numbers)) {
            Core_RL_GL::render(box, colors, wire);
        }
    }
    void render(Obb3<float> const& box, bool const& wire) override {
        std::vector<double> numbers;
        for (Vector3<float> const& v : {box.axis0, box.axis1, box.axis2, box.centre}) {
            numbers.insert(numbers.end(), {v.x, v.y, v.z});
        }
        numbers.insert(numbers.end(), {box.extent0, box.extent1, box.extent2, wire ? 1.0 : 0.0});
        if (!_replaces("render(Obb3)", numbers)) {
            Core_RL_GL::render(box, wire);
        }
    }

private:
    bool _replaces(std::string const& operation, std::vector<double> const& numbers) const {
        if (replaced.count(operation) == 0) {
            return false;
        }
        requests.push_back({operation, numbers, recording == nullptr ? 0 : recording->calls().size()});
        return true;
    }

    static std::vector<double> _box(Box3<float> const& box, bool wire) {
        return {box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z, wire ? 1.0 : 0.0};
    }
    static std::vector<double> _circle(Vector3<float> const& direction, Matrix4<float> const& frame,
                                       float radius) {
        std::vector<double> numbers{direction.x, direction.y, direction.z, radius};
        numbers.insert(numbers.end(), frame.e, frame.e + 16);
        return numbers;
    }

    std::set<std::string> replaced;
};

/// The fixture, on a scripted driver. The initial state differs from the state that drawings set, so that
/// tests see whether they restore it: outlines on both sides, width 3, an unusual color.
class Drawing_calls_test : public testing::Test {
protected:
    static constexpr Color4<float> START_COLOR{0.5F, 0.25F, 0.75F, 0.5F};

    void SetUp() override { prepare(core); }

    static void prepare(Core_RL_GL& layer) {
        layer.setColor(START_COLOR);
        layer.pushFillingFront(FILLING_LINES);
        layer.pushFillingBack(FILLING_LINES);
        layer.pushLineWidth(3.0F);
    }

    /// All calls of one drawing.
    template <class Drawing>
    Texts calls(Drawing const& draw) {
        gl_spy::Recording recording;
        draw(core);
        return recording.texts();
    }

    gl_spy::Script driver = gl_spy::drivers::gl21();
    Core_RL_GL core;
};

inline Texts const PUSHED_FILLINGS{"glPolygonMode(GL_FRONT, GL_FILL)", "glPolygonMode(GL_BACK, GL_FILL)"};
inline Texts const FILLINGS_BACK_FIRST{"glPolygonMode(GL_BACK, GL_LINE)", "glPolygonMode(GL_FRONT, GL_LINE)"};
inline Texts const FILLINGS_FRONT_FIRST{"glPolygonMode(GL_FRONT, GL_LINE)",
                                        "glPolygonMode(GL_BACK, GL_LINE)"};
inline Texts const STIPPLE_ON{"glLineStipple(3, 43690)", "glEnable(GL_LINE_STIPPLE)"};
inline Texts const STIPPLE_OFF{"glDisable(GL_LINE_STIPPLE)"};
inline Texts const START_COLOR_AGAIN{"glColor4f(0.5, 0.25, 0.75, 0.5)"};

}  // namespace vellum::drawing_probe
