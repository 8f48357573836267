#include "boxes_by_hand.h"

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>

namespace vellum::benchmarks {

namespace {

using Corners = float[8][3];

constexpr float LEFT[3] = {-1.0F, 0.0F, 0.0F};
constexpr float RIGHT[3] = {1.0F, 0.0F, 0.0F};
constexpr float BELOW[3] = {0.0F, -1.0F, 0.0F};
constexpr float ABOVE[3] = {0.0F, 1.0F, 0.0F};
constexpr float BEHIND[3] = {0.0F, 0.0F, -1.0F};
constexpr float BEFORE[3] = {0.0F, 0.0F, 1.0F};

/// The eight corners of an upright box. Corner i is at the maximum where bit 0 (x), 1 (y), 2 (z) is set, so
/// that both kinds of boxes have the same faces.
inline void fill(Corners& corners, Box3<float> const& box) {
    for (unsigned int i = 0; i < 8; ++i) {
        corners[i][0] = (i & 1U) != 0 ? box.max.x : box.min.x;
        corners[i][1] = (i & 2U) != 0 ? box.max.y : box.min.y;
        corners[i][2] = (i & 4U) != 0 ? box.max.z : box.min.z;
    }
}

inline void fill(Corners& corners, Obb3<float> const& box) {
    Vector3<float> const u = box.axis0 * box.extent0;
    Vector3<float> const v = box.axis1 * box.extent1;
    Vector3<float> const w = box.axis2 * box.extent2;
    for (unsigned int i = 0; i < 8; ++i) {
        Vector3<float> corner = box.centre;
        corner = (i & 1U) != 0 ? corner + u : corner - u;
        corner = (i & 2U) != 0 ? corner + v : corner - v;
        corner = (i & 4U) != 0 ? corner + w : corner - w;
        corners[i][0] = corner.x;
        corners[i][1] = corner.y;
        corners[i][2] = corner.z;
    }
}

// Written out instead of looped: the fastest form that a program would have. The normal is sent per vertex,
// as the render layer sends it.
inline void sendFace(Corners const& corners, float const* normal, int a, int b, int c, int d, bool wire) {
    glNormal3fv(normal);
    glVertex3fv(corners[a]);
    glNormal3fv(normal);
    glVertex3fv(corners[b]);
    glNormal3fv(normal);
    glVertex3fv(corners[c]);
    glNormal3fv(normal);
    glVertex3fv(corners[d]);
    if (wire) {
        glNormal3fv(normal);
        glVertex3fv(corners[a]);
    }
}

inline void sendFace(Corners const& corners, float const* const* colors, float const* normal, int a, int b,
                     int c, int d, bool wire) {
    auto const send = [&](int corner) {
        glColor3fv(colors[corner]);
        glNormal3fv(normal);
        glVertex3fv(corners[corner]);
    };
    send(a);
    send(b);
    send(c);
    send(d);
    if (wire) {
        send(a);
    }
}

template <class Box>
void drawAll(Box const* boxes, unsigned int count, bool wire) {
    for (unsigned int i = 0; i < count; ++i) {
        Corners corners;
        fill(corners, boxes[i]);
        glBegin(wire ? GL_LINES : GL_QUADS);
        sendFace(corners, LEFT, 0, 4, 6, 2, wire);
        sendFace(corners, RIGHT, 1, 3, 7, 5, wire);
        sendFace(corners, BELOW, 0, 1, 5, 4, wire);
        sendFace(corners, ABOVE, 2, 6, 7, 3, wire);
        sendFace(corners, BEHIND, 0, 2, 3, 1, wire);
        sendFace(corners, BEFORE, 4, 5, 7, 6, wire);
        glEnd();
    }
}

}  // namespace

void drawByHand(Box3<float> const* boxes, unsigned int const& count, bool const& wire) {
    drawAll(boxes, count, wire);
}

void drawByHand(Obb3<float> const* boxes, unsigned int const& count, bool const& wire) {
    drawAll(boxes, count, wire);
}

void drawByHand(Box3<float> const* boxes, Tuple8<Vector3<float>> const& colors, unsigned int const& count,
                bool const& wire) {
    float const* const all[8] = {&colors.e0.x, &colors.e1.x, &colors.e2.x, &colors.e3.x,
                                 &colors.e4.x, &colors.e5.x, &colors.e6.x, &colors.e7.x};
    for (unsigned int i = 0; i < count; ++i) {
        Corners corners;
        fill(corners, boxes[i]);
        glBegin(wire ? GL_LINES : GL_QUADS);
        sendFace(corners, all, LEFT, 0, 4, 6, 2, wire);
        sendFace(corners, all, RIGHT, 1, 3, 7, 5, wire);
        sendFace(corners, all, BELOW, 0, 1, 5, 4, wire);
        sendFace(corners, all, ABOVE, 2, 6, 7, 3, wire);
        sendFace(corners, all, BEHIND, 0, 2, 3, 1, wire);
        sendFace(corners, all, BEFORE, 4, 5, 7, 6, wire);
        glEnd();
    }
}

void drawByHand(Box2<float> const* boxes, unsigned int const& count, bool const& wire) {
    for (unsigned int i = 0; i < count; ++i) {
        Box2<float> const& box = boxes[i];
        float const lowerRight[2] = {box.max.x, box.min.y};
        float const upperLeft[2] = {box.min.x, box.max.y};
        glBegin(wire ? GL_LINES : GL_QUADS);
        glVertex2fv(&box.min.x);
        glVertex2fv(lowerRight);
        glVertex2fv(&box.max.x);
        glVertex2fv(upperLeft);
        if (wire) {
            glVertex2fv(&box.min.x);
        }
        glEnd();
    }
}

}  // namespace vellum::benchmarks
