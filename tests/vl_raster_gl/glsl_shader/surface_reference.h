#pragma once

#include "foundation/geometry/Vector3.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::surface_reference {

/// Surface effects computed in main memory, to compare pictures with.

using Vec3 = Vector3<float>;
using Vec4 = std::array<float, 4>;

inline Vec3 xyz(Vec4 const& v) {
    return {v[0], v[1], v[2]};
}
inline Vec3 times(Vec3 const& a, Vec3 const& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
inline Vec3 mix(Vec3 const& a, Vec3 const& b, float const& t) {
    return a * (1 - t) + b * t;
}
inline float clamp(float const& x, float const& low, float const& high) {
    return std::min(std::max(x, low), high);
}

/// The matrices of GL at the time.
struct Transform {
    Transform() {
        glGetFloatv(GL_MODELVIEW_MATRIX, modelView.data());
        glGetFloatv(GL_PROJECTION_MATRIX, projection.data());
    }

    static Vec4 times(std::array<float, 16> const& m, Vec4 const& v) {
        Vec4 result{};
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t column = 0; column < 4; ++column) {
                result[row] += m[column * 4 + row] * v[column];
            }
        }
        return result;
    }

    Vec4 eye(Vec3 const& v) const { return times(modelView, {v.x, v.y, v.z, 1}); }
    Vec4 clip(Vec3 const& v) const { return times(projection, eye(v)); }

    /// gl_NormalMatrix: the inverse of the upper left of the model-view matrix, transposed.
    Vec3 normal(Vec3 const& n) const {
        std::array<float, 16> const& m = modelView;
        Vec3 const a{m[0], m[1], m[2]};
        Vec3 const b{m[4], m[5], m[6]};
        Vec3 const c{m[8], m[9], m[10]};
        float const determinant = dot(a, cross(b, c));
        return (cross(b, c) * n.x + cross(c, a) * n.y + cross(a, b) * n.z) / determinant;
    }

    std::array<float, 16> modelView{};
    std::array<float, 16> projection{};
};

/// A light of GL, in eye coordinates.
struct Light {
    explicit Light(int const& index) {
        GLenum const light = GL_LIGHT0 + static_cast<GLenum>(index);
        glGetLightfv(light, GL_POSITION, position.data());
        glGetLightfv(light, GL_DIFFUSE, diffuse.data());
        glGetLightfv(light, GL_SPECULAR, specular.data());
    }

    Vec4 position{};
    Vec4 diffuse{};
    Vec4 specular{};
};

/// A repeating, linearly filtered texture.
struct Texture {
    Texture(int const& columns, int const& rows)
        : width(columns)
        , height(rows)
        , texels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) {}

    Vec3& at(int const& x, int const& y) {
        auto const wrapped = [](int const& i, int const& n) { return ((i % n) + n) % n; };
        return texels[static_cast<std::size_t>(wrapped(y, height)) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(wrapped(x, width))];
    }

    Vec3 sample(float const& s, float const& t) {
        float const u = s * static_cast<float>(width) - 0.5F;
        float const v = t * static_cast<float>(height) - 0.5F;
        int const x = static_cast<int>(std::floor(u));
        int const y = static_cast<int>(std::floor(v));
        float const a = u - std::floor(u);
        float const b = v - std::floor(v);
        return mix(mix(at(x, y), at(x + 1, y), a), mix(at(x, y + 1), at(x + 1, y + 1), a), b);
    }

    int width;
    int height;
    std::vector<Vec3> texels;
};

/// A corner of a triangle, or a point.
struct Corner {
    Vec3 position;
    Vec3 normal;
};

inline void send(Corner const& corner) {
    glNormal3f(corner.normal.x, corner.normal.y, corner.normal.z);
    glVertex3f(corner.position.x, corner.position.y, corner.position.z);
}

/// Corners all over the picture, with normals that are not of length 1 and some that face away.
inline std::vector<Corner> const CORNERS{{{0, 0, 0}, {0, 0, 1}},
                                         {{0.5F, 0.3F, 0.1F}, {0.3F, 0.2F, 0.9F}},
                                         {{-0.7F, 0.4F, -0.2F}, {-1, 1, 1}},
                                         {{0.3F, -0.6F, 0.4F}, {0.5F, -0.9F, 0.3F}},
                                         {{-0.4F, -0.5F, 0.2F}, {-0.2F, 0.1F, -1}},
                                         {{0.2F, 0.6F, 0}, {1, 0.1F, -0.6F}},
                                         {{0.9F, 0, 0}, {1, 0.05F, 0.3F}},
                                         {{-0.2F, 0.1F, 0.5F}, {0, 0.2F, 4}}};

/// Multiplies the model-view matrix by one under which corners and normals do not go alike.
inline void placeCorners() {
    glMatrixMode(GL_MODELVIEW);
    glTranslatef(0.1F, -0.05F, -3);
    glRotatef(25, 1, 2, 3);
    glScalef(1, 1.2F, 0.8F);
}

/// Draws in a pass of the effect, which is created if it is not yet.
template <class Effect, class Draw>
void drawWith(Effect& effect, Draw const& draw) {
    if (!effect.created) {
        effect.create();
    }
    effect.init();
    effect.preprocess();
    draw();
    effect.postprocess();
    effect.cleanup();
}

template <class Effect, class Corners>
void drawCorners(Effect& effect, GLenum const& mode, Corners const& corners) {
    drawWith(effect, [&] {
        glBegin(mode);
        for (Corner const& corner : corners) {
            send(corner);
        }
        glEnd();
    });
}

template <class Effect>
void drawPoint(Effect& effect, Corner const& corner) {
    drawCorners(effect, GL_POINTS, std::array<Corner, 1>{corner});
}

/// The shares that three corners have in a pixel, corrected for perspective; all 0 outside the triangle. Of
/// pixels less than a hundredth inside it either may be.
inline std::array<float, 3> shares(std::array<Vec4, 3> const& clip, float const& ndcX, float const& ndcY) {
    auto const flat = [](Vec4 const& v) { return Vec3{v[0], v[1], v[3]}; };
    Vec3 const a = flat(clip[0]);
    Vec3 const b = flat(clip[1]);
    Vec3 const c = flat(clip[2]);
    Vec3 const pixel{ndcX, ndcY, 1};
    std::array<float, 3> shares{dot(pixel, cross(b, c)), dot(pixel, cross(c, a)), dot(pixel, cross(a, b))};
    float const sum = shares[0] + shares[1] + shares[2];
    for (float& share : shares) {
        share /= sum;
    }
    if (std::min({shares[0], shares[1], shares[2]}) < 0.01F) {
        return {};
    }
    return shares;
}

/// Sets what passes of effects change to other values than theirs, on units 0 to 7.
inline void setUnlikePasses() {
    for (GLenum unit = 8; unit-- > 0;) {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, 0);
        glEnable(GL_TEXTURE_2D);
        glEnable(GL_TEXTURE_3D);
    }
    glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
    glDisable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_DST_COLOR);
    glDisable(GL_LIGHTING);
    for (GLenum light = 0; light < 8; ++light) {
        glDisable(GL_LIGHT0 + light);
    }
}

/// These names, and the lights that a pass switches on where the driver, as Mesa does, brings single lights
/// not back with the group that has them.
inline std::vector<std::string> withLightsThatStay(std::vector<std::string> names, int const& lightCount) {
    glDisable(GL_LIGHT0);
    glPushAttrib(GL_ENABLE_BIT);
    glEnable(GL_LIGHT0);
    glPopAttrib();
    bool const isKept = glIsEnabled(GL_LIGHT0) == GL_TRUE;
    for (int i = 0; isKept && i < lightCount; ++i) {
        names.push_back("GL_LIGHT" + std::to_string(i));
    }
    return names;
}

/// The largest difference of a pixel, 0 to 255, from a color, 0 to 1, that is limited first.
template <class Pixel>
float distance(Pixel const& pixel, Vec3 const& color) {
    float largest = 0;
    float const wanted[3] = {color.x, color.y, color.z};
    for (int c = 0; c < 3; ++c) {
        largest = std::max(largest, std::abs(static_cast<float>(pixel[c]) - 255 * clamp(wanted[c], 0, 1)));
    }
    return largest;
}

}  // namespace vellum::surface_reference
