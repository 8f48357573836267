#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

/// What the displacement effects compute, once more and in plain C++ with doubles: vertices, tessellation, a
/// rasterizer that interpolates perspectively, and the colors of pixels.
namespace vellum::displacement_reference {

using Vec2 = std::array<double, 2>;
using Vec3 = std::array<double, 3>;
using Vec4 = std::array<double, 4>;
using Mat3 = std::array<double, 9>;   // column by column
using Mat4 = std::array<double, 16>;  // column by column

// == Arithmetic ==

inline Vec3 operator+(Vec3 const& a, Vec3 const& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 operator-(Vec3 const& a, Vec3 const& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 operator*(Vec3 const& a, double const& s) {
    return {a[0] * s, a[1] * s, a[2] * s};
}
inline Vec3 operator*(Vec3 const& a, Vec3 const& b) {
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}
inline double dot(Vec3 const& a, Vec3 const& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Vec3 cross(Vec3 const& a, Vec3 const& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double length(Vec3 const& a) {
    return std::sqrt(dot(a, a));
}
inline Vec3 normalize(Vec3 const& a) {
    return a * (1 / length(a));
}
inline Vec3 mix(Vec3 const& a, Vec3 const& b, double const& t) {
    return a * (1 - t) + b * t;
}
inline Vec3 xyz(Vec4 const& a) {
    return {a[0], a[1], a[2]};
}
inline Vec4 operator*(Mat4 const& m, Vec4 const& v) {
    Vec4 result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            result[row] += m[4 * column + row] * v[column];
        }
    }
    return result;
}
inline Vec3 operator*(Mat3 const& m, Vec3 const& v) {
    Vec3 result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[row] += m[3 * column + row] * v[column];
        }
    }
    return result;
}

/// The transposed inverse of the upper left part: its columns are the cross products of the others, over the
/// determinant.
inline Mat3 normalMatrix(Mat4 const& m) {
    Vec3 const a{m[0], m[1], m[2]};
    Vec3 const b{m[4], m[5], m[6]};
    Vec3 const c{m[8], m[9], m[10]};
    double const determinant = dot(a, cross(b, c));
    Mat3 result{};
    std::size_t i = 0;
    for (Vec3 const& column : {cross(b, c), cross(c, a), cross(a, b)}) {
        for (double const& value : column) {
            result[i++] = value / determinant;
        }
    }
    return result;
}

// == Inputs ==

/// A texture: repeating, linearly filtered.
struct Map {
    int width = 0;
    int height = 0;
    std::vector<float> rgba;

    Vec4 texel(int const& x, int const& y) const {
        auto const wrap = [](int const& i, int const& n) { return ((i % n) + n) % n; };
        float const* const p = rgba.data() + 4 * (wrap(y, height) * width + wrap(x, width));
        return {p[0], p[1], p[2], p[3]};
    }
    Vec4 at(Vec2 const& coordinate) const {
        double const x = coordinate[0] * width - 0.5;
        double const y = coordinate[1] * height - 0.5;
        int const left = static_cast<int>(std::floor(x));
        int const low = static_cast<int>(std::floor(y));
        double const s = x - left;
        double const t = y - low;
        Vec4 result{};
        auto const between = [](double const& a, double const& b, double const& part) {
            return a + part * (b - a);
        };
        for (std::size_t c = 0; c < 4; ++c) {
            result[c] = between(between(texel(left, low)[c], texel(left + 1, low)[c], s),
                                between(texel(left, low + 1)[c], texel(left + 1, low + 1)[c], s), t);
        }
        return result;
    }
};

struct Light {
    Vec4 position{};  // in eye space
    Vec3 ambient{};
    Vec3 diffuse{};
    Vec3 specular{};
    double constant = 1;
    double linear = 0;
    double quadratic = 0;
};

struct Material {
    Vec3 ambient{};
    Vec3 diffuse{};
    Vec3 specular{};
    double shininess = 0;
};

struct Scene {
    Mat4 modelview{};
    Mat4 projection{};
    std::array<Light, 2> lights{};
    Material front;
    Material back;
    Map map;
};

// == Vertices ==

/// A vertex behind the last stage before the rasterizer.
struct Vertex {
    Vec4 clip{};
    Vec2 coordinate{};
    Vec4 eye{};  // vPos
    Mat3 base{};
};

/// A vertex as it is drawn.
struct Input {
    Vec3 position{};
    Vec3 normal{};
    Vec2 coordinate{};
};

inline Vertex placed(Scene const& scene, Vec4 const& position, Vec2 const& coordinate) {
    Vertex vertex;
    vertex.eye = scene.modelview * position;
    vertex.clip = scene.projection * vertex.eye;
    vertex.coordinate = coordinate;
    return vertex;
}

struct Displacement {
    Vec3 baseColor{1, 1, 1};
    Vec3 scale{1, 1, 1};
    Vec2 tiles{1, 1};
};

inline Vec2 tiled(Displacement const& effect, Vec2 const& coordinate) {
    return {coordinate[0] * effect.tiles[0], coordinate[1] * effect.tiles[1]};
}

inline Vertex plainVertex(Scene const& scene, Displacement const& effect, Input const& input) {
    Vec2 const coordinate = tiled(effect, input.coordinate);
    Vec4 const texel = scene.map.at(coordinate);
    Vec4 position{input.position[0], input.position[1], input.position[2], 1};
    for (std::size_t i = 0; i < 4; ++i) {
        position[i] += (texel[i] - 0.5) * 2 * (i < 3 ? effect.scale[i] : 1) * 0.01;
    }
    return placed(scene, position, coordinate);
}

/// The strips of one triangle, one for each step that emits anything.
inline std::vector<std::vector<Vertex>> tessellate(Scene const& scene, Displacement const& effect,
                                                   int const& depth, std::array<Input, 3> const& corners) {
    int const n = depth > 0 ? depth : 1;
    Vec3 const p0 = corners[0].position;
    Vec3 const p1 = corners[1].position;
    Vec3 const p2 = corners[2].position;
    Vec3 const u = (p2 - p1) * (1.0 / n);
    Vec3 const v = (p0 - p1) * (1.0 / n);
    auto const area = [](Vec3 const& a, Vec3 const& b, Vec3 const& c) {
        return length(cross(b - a, c - a)) / 2;
    };
    auto const point = [&](Vec3 const& q) {
        std::array<double, 3> const weights{area(q, p1, p2), area(p0, q, p2), area(p0, p1, q)};
        Vec2 coordinate{};
        for (std::size_t k = 0; k < 3; ++k) {
            Vec2 const corner = tiled(effect, corners[k].coordinate);
            for (std::size_t i = 0; i < 2; ++i) {
                coordinate[i] += weights[k] / area(p0, p1, p2) * corner[i];
            }
        }
        Vec3 const texel = xyz(scene.map.at(coordinate));
        Vec3 const moved = depth > 0 ? q + (texel - Vec3{0.5, 0.5, 0.5}) * 2 * effect.scale * 0.01 : q;
        return placed(scene, {moved[0], moved[1], moved[2], 1}, coordinate);
    };
    std::vector<std::vector<Vertex>> strips;
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n - i; ++j) {
            Vec3 const q0 = p1 + u * i + v * j;
            strips.push_back({point(q0), point(q0 + u), point(q0 + v)});
            if (i + j < n - 1) {
                strips.back().push_back(point(q0 + u + v));
            }
        }
    }
    return strips;
}

/// The triangles of strips, with the winding of each strip's first.
inline std::vector<Vertex> triangles(std::vector<std::vector<Vertex>> const& strips) {
    std::vector<Vertex> result;
    for (std::vector<Vertex> const& strip : strips) {
        result.insert(result.end(), {strip[0], strip[1], strip[2]});
        if (strip.size() == 4) {
            result.insert(result.end(), {strip[2], strip[1], strip[3]});
        }
    }
    return result;
}

struct Ocean {
    Vec3 baseColor{};
    double scale = 1;
    Vec2 repeat{1, 1};
    double dimX = 1;
    double dimZ = 1;
    int resolution = 512;
    double foamThreshold = 0;
};

inline Mat3 localFrame(Vec3 const& normal) {
    double const epsilon = 1.192092896e-07;
    Vec3 const crossX = cross(normal, {1, 0, 0});
    Vec3 const crossY = cross(normal, {0, 1, 0});
    Vec3 const crossZ = cross(normal, {0, 0, 1});
    if (length(crossX) >= epsilon && length(crossY) >= epsilon && length(crossZ) >= epsilon) {
        return {1, 0, 0, 0, 1, 0, 0, 0, 1};
    }
    Vec3 const tangent = normalize(length(crossY) > length(crossZ) ? crossY : crossZ);
    Vec3 const binormal = normalize(cross(tangent, normal));
    return {tangent[0], tangent[1],  tangent[2],  normal[0],  normal[1],
            normal[2],  binormal[0], binormal[1], binormal[2]};
}

inline Vertex oceanVertex(Scene const& scene, Ocean const& effect, Input const& input) {
    Vec2 const coordinate{input.coordinate[0] * effect.repeat[0], input.coordinate[1] * effect.repeat[1]};
    Vec3 const d = (xyz(scene.map.at(coordinate)) - Vec3{0.5, 0.5, 0.5}) * 2 * Vec3{1, effect.scale, 1};
    Mat3 const base = localFrame(input.normal);
    Vec3 const moved = input.position + base * d;
    Vertex vertex = placed(scene, {moved[0], moved[1], moved[2], 1}, coordinate);
    vertex.base = base;
    return vertex;
}

// == Pixels ==

/// The normal of the six triangles around a texel.
inline Vec3 displacedNormal(Vec2 const& q, std::function<Vec3(Vec2 const&)> const& displaced) {
    auto const at = [&](double const& dx, double const& dy) { return displaced({q[0] + dx, q[1] + dy}); };
    auto const normal = [](Vec3 const& a, Vec3 const& b, Vec3 const& c) { return cross(c - a, b - a); };
    Vec3 const p = at(0, 0);
    Vec3 const p1 = at(-1, 1);
    Vec3 const p2 = at(0, 1);
    Vec3 const p3 = at(-1, 0);
    Vec3 const p4 = at(1, 0);
    Vec3 const p5 = at(0, -1);
    Vec3 const p6 = at(1, -1);
    return normalize(normal(p3, p, p1) + normal(p, p2, p1) + normal(p, p4, p2) + normal(p5, p, p3) +
                     normal(p5, p6, p) + normal(p6, p4, p));
}

inline Vec3 phong(Scene const& scene, std::size_t const& i, Vec3 const& baseColor, Vec4 const& eye,
                  Vec3 const& n) {
    Light const& light = scene.lights[i];
    double squares = 0;
    for (std::size_t c = 0; c < 4; ++c) {
        squares += (light.position[c] - eye[c]) * (light.position[c] - eye[c]);
    }
    double const r = std::sqrt(squares);
    double const a = light.quadratic * r * r + light.linear * r + light.constant;
    Vec3 const l = normalize(xyz(light.position) - xyz(eye));
    Vec3 const v = normalize(xyz(eye) * -1);
    Vec3 const h = normalize(l + v);
    bool const isFront = dot(n, v) > 0;
    Material const& material = isFront ? scene.front : scene.back;
    Vec3 const side = n * (isFront ? 1 : -1);
    Vec3 color = baseColor * material.ambient * light.ambient;
    if (dot(n, l) * dot(n, v) > 0) {
        color = color + baseColor * material.diffuse * light.diffuse * (std::max(dot(side, l), 0.0) / a) +
                material.specular * light.specular *
                    (std::pow(std::max(dot(side, h), 0.0), material.shininess) / a);
    }
    return color;
}

/// \param lights 1 or 2.  \param choppy how much of the displacement the normals see.
inline Vec4 displacementPixel(Scene const& scene, Displacement const& effect, Vertex const& at,
                              int const& lights, double const& choppy) {
    constexpr double mapSize = 256;
    Vec3 const normal =
        displacedNormal({at.coordinate[0] * mapSize, at.coordinate[1] * mapSize}, [&](Vec2 const& q) {
            Vec3 const d = xyz(scene.map.at({q[0] / mapSize, q[1] / mapSize}));
            return Vec3{q[0], 0, q[1]} * (1 / mapSize) +
                   (d * 2 - Vec3{1, 1, 1}) * effect.scale * 0.01 * choppy;
        });
    Vec3 const n = normalMatrix(scene.modelview) * normal;
    Vec3 color{};
    for (int i = 0; i < lights; ++i) {
        color = color + phong(scene, static_cast<std::size_t>(i), effect.baseColor, at.eye, n);
    }
    return {color[0], color[1], color[2], double(lights)};
}

struct OceanTerms {
    double fresnel = 0;
    double foam = 0;
    bool hasHighlight = false;
};

inline Vec4 oceanPixel(Scene const& scene, Ocean const& effect, Vertex const& at, OceanTerms& terms) {
    double const size = effect.resolution;
    Vec3 const flat = displacedNormal({at.coordinate[0] * size, at.coordinate[1] * size}, [&](Vec2 const& q) {
        Vec3 const d =
            (xyz(scene.map.at({q[0] / size, q[1] / size})) * 2 - Vec3{1, 1, 1}) * Vec3{1, effect.scale, 1};
        return Vec3{q[0] / size * effect.dimX, 0, q[1] / size * effect.dimZ} + d;
    });
    Vec3 const n = normalize(normalMatrix(scene.modelview) * (at.base * Vec3{-flat[2], flat[1], flat[0]}));
    Vec3 const l = normalize(xyz(scene.lights[0].position) - xyz(at.eye));
    Vec3 const v = normalize(xyz(at.eye) * -1);
    Vec3 const h = normalize(l + v);
    Vec3 specular{};
    terms.hasHighlight = dot(n, v) > 0 && dot(n, l) * dot(n, v) > 0;
    if (terms.hasHighlight) {
        specular = scene.front.specular * scene.lights[0].specular * 3 *
                   std::pow(std::max(dot(n, h), 0.0), scene.front.shininess * 10);
    }
    terms.fresnel = std::min(std::max(std::abs(dot(normalize(xyz(at.eye)), n)) * 1.5, 0.01), 0.9);
    Vec3 const sky = mix(Vec3{0.16, 0.36, 0.5} * 1.2, {0.5, 0.5, 0.5}, 0.4);
    Vec3 const depth = Vec3{0.1, 0.25, 0.40} * 0.5;
    Vec3 color = mix(sky, depth, terms.fresnel);
    color = mix(color, effect.baseColor * std::max(dot(n, l), 0.0), 0.2) + specular;

    double const m = scene.map.at(at.coordinate)[3];
    double const c = 1 - effect.foamThreshold;
    double const reached = m < c ? 0 : c == 1 && m == 1 ? 1 : (m - c) / (1 - c);
    terms.foam = reached * reached;
    color = color + Vec3{1, 1, 1} * terms.foam;
    return {color[0], color[1], color[2], 1};
}

// == Rasterizer ==

struct Fragment {
    int x = 0;
    int y = 0;  // from the bottom
    Vec4 color{};
};

/// The pixels inside triangles, those drawn later over those drawn earlier; a pixel
/// whose center may lie on an edge of any triangle is left out. All vertices lie in front of the eye.
inline std::vector<Fragment> rasterize(std::vector<Vertex> const& triangles, int const& width,
                                       int const& height, std::function<Vec4(Vertex const&)> const& shade) {
    std::vector<char> isUncertain(static_cast<std::size_t>(width * height), 0);
    std::vector<Vertex const*> owner(isUncertain.size(), nullptr);
    std::vector<Vec3> weights(isUncertain.size());
    for (std::size_t t = 0; t + 2 < triangles.size(); t += 3) {
        std::array<Vec2, 3> window{};
        for (std::size_t k = 0; k < 3; ++k) {
            Vec4 const& clip = triangles[t + k].clip;
            window[k] = {(clip[0] / clip[3] + 1) / 2 * width, (clip[1] / clip[3] + 1) / 2 * height};
        }
        auto const doubled = [](Vec2 const& a, Vec2 const& b, Vec2 const& c) {
            return (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
        };
        double const whole = doubled(window[0], window[1], window[2]);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                Vec2 const p{x + 0.5, y + 0.5};
                std::array<double, 3> const part{doubled(p, window[1], window[2]) / whole,
                                                 doubled(window[0], p, window[2]) / whole,
                                                 doubled(window[0], window[1], p) / whole};
                double const nearest = *std::min_element(part.begin(), part.end());
                auto const pixel = static_cast<std::size_t>(y * width + x);
                double const margin = 0.02;  // of a pixel
                double const edge =
                    margin *
                    (std::abs(window[1][0] - window[0][0]) + std::abs(window[1][1] - window[0][1]) +
                     std::abs(window[2][0] - window[0][0]) + std::abs(window[2][1] - window[0][1])) /
                    std::abs(whole);
                if (std::abs(nearest) <= edge) {
                    isUncertain[pixel] = 1;
                }
                if (nearest > 0) {
                    owner[pixel] = &triangles[t];
                    weights[pixel] = {part[0], part[1], part[2]};
                }
            }
        }
    }
    std::vector<Fragment> fragments;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto const pixel = static_cast<std::size_t>(y * width + x);
            if (owner[pixel] == nullptr || isUncertain[pixel] != 0) {
                continue;
            }
            Vertex at;
            double whole = 0;
            std::array<double, 3> perspective{};
            for (std::size_t k = 0; k < 3; ++k) {
                perspective[k] = weights[pixel][k] / owner[pixel][k].clip[3];
                whole += perspective[k];
            }
            for (std::size_t k = 0; k < 3; ++k) {
                double const share = perspective[k] / whole;
                Vertex const& vertex = owner[pixel][k];
                for (std::size_t i = 0; i < 2; ++i) {
                    at.coordinate[i] += share * vertex.coordinate[i];
                }
                for (std::size_t i = 0; i < 4; ++i) {
                    at.eye[i] += share * vertex.eye[i];
                }
                for (std::size_t i = 0; i < 9; ++i) {
                    at.base[i] += share * vertex.base[i];
                }
            }
            fragments.push_back({x, y, shade(at)});
        }
    }
    return fragments;
}

}  // namespace vellum::displacement_reference
