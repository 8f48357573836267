#include "foundation/raster/Core_RL.h"

#include "foundation/basic/lifetimes.h"
#include "foundation/geometry/constants.h"
#include "foundation/raster/Camera_RL.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vellum {

Core_RL* VL_Raster = nullptr;

namespace {

using constants::d::PI;

constexpr unsigned int SPHERE_MERIDIANS = 32;
constexpr unsigned int SPHERE_PARALLELS = 16;

/// Makes the top entry of a stack current through its setter.
template <class T>
void applyTop(Core_RL& layer, Array<T>& stack, void (Core_RL::*set)(T const&)) {
    T const value = stack.back();  // the setter overwrites the entry
    (layer.*set)(value);
    // A subclass may pass another value on to the setter it overrides, such as a scaled width. The entry is
    // the value that was asked for, or the next pop would scale it once more.
    stack.back() = value;
}

template <class T>
void push(Core_RL& layer, Array<T>& stack, T const& value, void (Core_RL::*set)(T const&)) {
    stack.pushBack(value);
    applyTop(layer, stack, set);
}

template <class T>
void pop(Core_RL& layer, Array<T>& stack, unsigned int count, void (Core_RL::*set)(T const&)) {
    // The bottom entry stays: callers may pop more than they push.
    unsigned int const removable = stack.size() - 1;
    stack.setSize(stack.size() - std::min(count, removable));
    applyTop(layer, stack, set);
}

bool namesVertices(Tuple3<unsigned int> const& triangle, unsigned int vertexCount) {
    return triangle.e0 < vertexCount && triangle.e1 < vertexCount && triangle.e2 < vertexCount;
}

Color4<float> meanColor(Color4<float> const& a, Color4<float> const& b, Color4<float> const& c) {
    constexpr float THIRD = 1.0F / 3.0F;
    return {(a.r + b.r + c.r) * THIRD, (a.g + b.g + c.g) * THIRD, (a.b + b.b + c.b) * THIRD,
            (a.a + b.a + c.a) * THIRD};
}

template <class T>
void renderVoxel(Core_RL& layer, TricubicVoxel<T> const& voxel) {
    // The sum is taken in the lattice's precision and rounded once.
    layer.render(Box3<float>{convert<float>(voxel.origin), convert<float>(voxel.origin + voxel.step)}, true);

    // setColor() overwrites the top of the stack; the pushed copy protects the current color.
    layer.pushColor(layer.currentColor());
    layer.renderPoint3_Begin();
    for (int k = 0; k < 4; ++k) {
        for (int j = 0; j < 4; ++j) {
            for (int i = 0; i < 4; ++i) {
                auto const shade = static_cast<float>(voxel.samples[i + 4 * j + 16 * k]);
                layer.setColor({shade, shade, shade, 1.0F});
                layer.renderPoint3_scoped(
                    convert<float>(Vector3<T>{voxel.origin.x + static_cast<T>(i - 1) * voxel.step.x,
                                              voxel.origin.y + static_cast<T>(j - 1) * voxel.step.y,
                                              voxel.origin.z + static_cast<T>(k - 1) * voxel.step.z}));
            }
        }
    }
    layer.renderPoint3_End();
    layer.popColor(1);
}

template <class T>
void renderList(Core_RL& layer, Array<Vector3<T>> const& vertices,
                Array<Tuple3<unsigned int>> const& triangles, Array<Vector3<float>> const& normals,
                Array<Color4<float>> const& colors) {
    bool const hasNormals = normals.size() != 0;
    bool const hasColors = colors.size() != 0;

    if (hasColors) {
        layer.pushColor(layer.currentColor());
    }
    // With normals every triangle is a separate block: no operation sends a normal inside an open block.
    if (!hasNormals) {
        layer.begin(Primitive::TRIANGLES);
    }
    for (Tuple3<unsigned int> const& t : triangles) {
        if (!namesVertices(t, vertices.size()) || (hasNormals && !namesVertices(t, normals.size())) ||
            (hasColors && !namesVertices(t, colors.size()))) {
            continue;
        }
        Vector3<float> const a = convert<float>(vertices[t.e0]);
        Vector3<float> const b = convert<float>(vertices[t.e1]);
        Vector3<float> const c = convert<float>(vertices[t.e2]);
        if (hasNormals) {
            if (hasColors) {
                layer.setColor(meanColor(colors[t.e0], colors[t.e1], colors[t.e2]));
            }
            layer.renderTriangle(a, b, c, normals[t.e0], normals[t.e1], normals[t.e2]);
        } else if (hasColors) {
            // Vertices instead of renderTriangle(): a color per vertex must come between them.
            layer.setColor(colors[t.e0]);
            layer.renderPoint3_scoped(a);
            layer.setColor(colors[t.e1]);
            layer.renderPoint3_scoped(b);
            layer.setColor(colors[t.e2]);
            layer.renderPoint3_scoped(c);
        } else {
            layer.renderTriangleOptimized(a, b, c);
        }
    }
    if (!hasNormals) {
        layer.end();
    }
    if (hasColors) {
        layer.popColor(1);
    }
}

}  // namespace

// The stacks start with the state of a new context.
Core_RL::Core_RL()
    : colorStack{{1.0F, 1.0F, 1.0F, 1.0F}}
    , blendingStack{BLENDING_OFF}
    , cullingStack{{false, true}}
    , depthTestStack{{DEPTH_TEST_OFF, true}}
    , fillingFrontStack{FILLING_SOLID}
    , fillingBackStack{FILLING_SOLID}
    , lineWidthStack{1.0F} {
    lifetimes::begin(this);
}

// == Allocation ==

void* Core_RL::operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* Core_RL::operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return std::malloc(size);
}

void Core_RL::operator delete(void* memory) noexcept {
    std::free(memory);
}

void Core_RL::operator delete(void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}

// == State stacks ==

void Core_RL::pushColor(Color4<float> const& color) {
    push(*this, colorStack, color, &Core_RL::setColor);
}

void Core_RL::popColor(unsigned int const& count) {
    pop(*this, colorStack, count, &Core_RL::setColor);
}

void Core_RL::pushBlending(BlendingMode const& mode) {
    push(*this, blendingStack, mode, &Core_RL::setBlending);
}

void Core_RL::popBlending() {
    pop(*this, blendingStack, 1, &Core_RL::setBlending);
}

void Core_RL::pushCulling(CullingMode const& mode) {
    push(*this, cullingStack, mode, &Core_RL::setCulling);
}

void Core_RL::popCulling() {
    pop(*this, cullingStack, 1, &Core_RL::setCulling);
}

void Core_RL::pushDepthTest(DepthtTestMode const& mode) {
    push(*this, depthTestStack, mode, &Core_RL::setDepthTest);
}

void Core_RL::popDepthTest() {
    pop(*this, depthTestStack, 1, &Core_RL::setDepthTest);
}

void Core_RL::pushFillingFront(FillingMode const& mode) {
    push(*this, fillingFrontStack, mode, &Core_RL::setFillingFront);
}

void Core_RL::popFillingFront() {
    pop(*this, fillingFrontStack, 1, &Core_RL::setFillingFront);
}

void Core_RL::pushFillingBack(FillingMode const& mode) {
    push(*this, fillingBackStack, mode, &Core_RL::setFillingBack);
}

void Core_RL::popFillingBack() {
    pop(*this, fillingBackStack, 1, &Core_RL::setFillingBack);
}

void Core_RL::pushLineWidth(float const& width) {
    push(*this, lineWidthStack, width, &Core_RL::setLineWidth);
}

void Core_RL::popLineWidth() {
    pop(*this, lineWidthStack, 1, &Core_RL::setLineWidth);
}

// == Camera and point state ==

Core_RL::~Core_RL() {
    lifetimes::end(this);
}

void Core_RL::setCamera(Camera_RL* newCamera) {
    camera = newCamera;
}

Camera_RL* Core_RL::getCamera() {
    return camera;
}

void Core_RL::setArrowHeadLength(float const& length) {
    headLength = length;
}

float Core_RL::setPointSize(float const& size) {
    float const former = pointSize;
    pointSize = size;
    return former;
}

void Core_RL::setZBias(bool on) {
    isZBiased = on;
    if (camera == nullptr) {
        return;
    }
    if (on) {
        camera->updateProjectionMatrixZBias();
    } else {
        camera->updateProjectionMatrix();
    }
}

// == Drawings under a picking name ==

void Core_RL::renderArrow3(Vector3<float> const& from, Vector3<float> const& to, float const& headSize,
                           unsigned int const& name, bool const& tailBox) {
    loadName(name);
    renderArrow3(from, to, headSize, tailBox);
}

void Core_RL::renderArrow2(Vector2<float> const& from, Vector2<float> const& to, float const& size,
                           unsigned int const& name) {
    loadName(name);
    renderArrow2(from, to, size);
}

void Core_RL::renderPoint3(Vector3<float> const& p, unsigned int const& name) {
    loadName(name);
    renderPoint3(p);
}

void Core_RL::renderPoint3_scoped(Vector3<float> const& p, unsigned int const& name) {
    loadName(name);
    renderPoint3_scoped(p);
}

void Core_RL::renderPoint2(Vector2<float> const& p, unsigned int const& name) {
    loadName(name);
    renderPoint2(p);
}

// == Boxes ==

void Core_RL::renderBox2(Vector2<float> const& center, float const& half) {
    Vector2<float> const reach{half, half};
    render(Box2<float>{center - reach, center + reach}, false);
}

void Core_RL::renderSphere(Vector3<float> const& center, float const& radius) {
    // Directions of the grid points, north pole (+Y) first.
    Vector3<float> directions[SPHERE_PARALLELS + 1][SPHERE_MERIDIANS + 1];
    for (unsigned int row = 0; row <= SPHERE_PARALLELS; ++row) {
        // Exactly zero at both poles, where sin(pi) would leave a tiny ring open.
        bool const isPole = row == 0 || row == SPHERE_PARALLELS;
        double const polar = PI * row / SPHERE_PARALLELS;
        double const ring = isPole ? 0.0 : std::sin(polar);
        for (unsigned int column = 0; column <= SPHERE_MERIDIANS; ++column) {
            // The last column repeats the first exactly, so that the seam is closed.
            double const azimuth = 2.0 * PI * (column % SPHERE_MERIDIANS) / SPHERE_MERIDIANS;
            directions[row][column] = {static_cast<float>(ring * std::sin(azimuth)),
                                       static_cast<float>(std::cos(polar)),
                                       static_cast<float>(ring * std::cos(azimuth))};
        }
    }

    for (unsigned int row = 0; row < SPHERE_PARALLELS; ++row) {
        for (unsigned int column = 0; column < SPHERE_MERIDIANS; ++column) {
            Vector3<float> const& north = directions[row][column];
            Vector3<float> const& south = directions[row + 1][column];
            Vector3<float> const& southEast = directions[row + 1][column + 1];
            Vector3<float> const& northEast = directions[row][column + 1];
            // At the poles one of the two triangles has no area.
            if (row + 1 < SPHERE_PARALLELS) {
                renderTriangle(center + north * radius, center + south * radius, center + southEast * radius,
                               north, south, southEast);
            }
            if (row > 0) {
                renderTriangle(center + north * radius, center + southEast * radius,
                               center + northEast * radius, north, southEast, northEast);
            }
        }
    }
}

// == Composed drawings ==

void Core_RL::renderTricubicVoxel(TricubicVoxel<float> const& voxel) {
    renderVoxel(*this, voxel);
}

void Core_RL::renderTricubicVoxel(TricubicVoxel<double> const& voxel) {
    renderVoxel(*this, voxel);
}

void Core_RL::renderPlane3System(Plane3System<float> const& system, float const& size,
                                 unsigned int const& divisions) {
    for (Plane3<float> const& plane : system.planes) {
        renderPlane3(plane, size, divisions);
    }
}

void Core_RL::renderPlane3System(Plane3System<double> const& system, double const& size,
                                 unsigned int const& divisions) {
    for (Plane3<double> const& plane : system.planes) {
        renderPlane3(Plane3<float>{convert<float>(plane.n), static_cast<float>(plane.d)},
                     static_cast<float>(size), divisions);
    }
}

void Core_RL::renderTetrahedron(Vector3<float> const& center, float const& size) {
    // A corner up, three below it: cos of the angle between two corners is -1/3.
    float const down = -size / 3.0F;
    float const ring = size * std::sqrt(8.0F) / 3.0F;  // distance of the lower corners from the Y axis
    float const halfWidth = ring * std::sqrt(3.0F) * 0.5F;
    Vector3<float> const top = center + Vector3<float>{0.0F, size, 0.0F};
    Vector3<float> const front = center + Vector3<float>{0.0F, down, ring};
    Vector3<float> const right = center + Vector3<float>{halfWidth, down, -0.5F * ring};
    Vector3<float> const left = center + Vector3<float>{-halfWidth, down, -0.5F * ring};
    renderTriangle(top, front, right);
    renderTriangle(top, right, left);
    renderTriangle(top, left, front);
    renderTriangle(front, left, right);
}

void Core_RL::renderTetrahedron(Vector3<double> const& center, double const& size) {
    renderTetrahedron(convert<float>(center), static_cast<float>(size));
}

void Core_RL::renderTree(GeometryTree<GeometryNode<Box3<float>>>& tree) {
    if (tree.nodes.size() == 0) {
        return;
    }
    // Each node is drawn once: in a damaged tree, nodes may share children, and the number of paths would be
    // exponential. An explicit stack instead of recursion, because a tree may be as deep as it has nodes.
    Array<bool> isReached;
    isReached.reserve(tree.nodes.size(), false);
    isReached.setSize(tree.nodes.size());
    std::fill(isReached.begin(), isReached.end(), false);
    isReached[0] = true;
    Array<unsigned int> waiting{0U};
    while (waiting.size() != 0) {
        unsigned int const index = waiting.back();
        waiting.setSize(waiting.size() - 1);
        GeometryNode<Box3<float>> const& node = tree.nodes[index];
        render(node.volume, true);
        std::uint64_t const end =
            std::min<std::uint64_t>(std::uint64_t{node.firstChild} + node.childCount, tree.nodes.size());
        // The children are pushed in reverse, so that the first one is drawn next.
        for (std::uint64_t child = end; child > node.firstChild;) {
            --child;
            auto const childIndex = static_cast<unsigned int>(child);
            if (!isReached[childIndex]) {
                isReached[childIndex] = true;
                waiting.pushBack(childIndex);
            }
        }
    }
}

// == Triangle lists ==

void Core_RL::render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles) {
    renderList(*this, vertices, triangles, Array<Vector3<float>>(), Array<Color4<float>>());
}

void Core_RL::renderNormals(Array<Vector3<double>> const& vertices,
                            Array<Tuple3<unsigned int>> const& triangles, float const& length) {
    // One block for all triangles: glBegin per segment would cost more than the segments.
    begin(Primitive::LINES);
    for (Tuple3<unsigned int> const& t : triangles) {
        if (!namesVertices(t, vertices.size())) {
            continue;
        }
        Vector3<double> const& a = vertices[t.e0];
        Vector3<double> const& b = vertices[t.e1];
        Vector3<double> const& c = vertices[t.e2];
        Vector3<double> const normal = cross(b - a, c - a);
        double const doubleArea = vellum::length(normal);
        // Negated, so that NaN is skipped as well.
        if (!(doubleArea > 0.0)) {
            continue;
        }
        Vector3<double> const centroid = (a + b + c) * (1.0 / 3.0);
        renderPoint3_scoped(convert<float>(centroid));
        renderPoint3_scoped(convert<float>(centroid + normal * (static_cast<double>(length) / doubleArea)));
    }
    end();
}

void Core_RL::render(Array<Vector3<float>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                     Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) {
    renderList(*this, vertices, triangles, normals, colors);
}

void Core_RL::render(Array<Vector3<double>> const& vertices, Array<Tuple3<unsigned int>> const& triangles,
                     Array<Vector3<float>> const& normals, Array<Color4<float>> const& colors) {
    renderList(*this, vertices, triangles, normals, colors);
}

}  // namespace vellum
