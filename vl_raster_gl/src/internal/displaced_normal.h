#pragma once

namespace vellum {

/// For fragment stages: `vec3 displacedNormal(vec2 q)`, the normal of the displaced surface at a texel, from
/// the six triangles around it; the grid lies in the plane of x and z.
///
///     p1 -- p2
///     |   / | \          (offsets of the texels: p1 (-1, 1), p2 (0, 1), p3 (-1, 0), p4 (1, 0),
///     p3 -- p -- p4       p5 (0, -1), p6 (1, -1))
///       \ | /   |
///         p5 -- p6
///
/// The preceding text defines `vec3 displacePoint(vec2 q)`, the displaced point of a texel.
constexpr char const* DISPLACED_NORMAL = R"(
vec3 triangleNormal(vec3 a, vec3 b, vec3 c)
{
    return cross(c - a, b - a);
}

vec3 displacedNormal(vec2 q)
{
    vec3 p = displacePoint(q);
    vec3 p1 = displacePoint(q + vec2(-1.0, 1.0));
    vec3 p2 = displacePoint(q + vec2(0.0, 1.0));
    vec3 p3 = displacePoint(q + vec2(-1.0, 0.0));
    vec3 p4 = displacePoint(q + vec2(1.0, 0.0));
    vec3 p5 = displacePoint(q + vec2(0.0, -1.0));
    vec3 p6 = displacePoint(q + vec2(1.0, -1.0));
    vec3 sum = triangleNormal(p3, p, p1);
    sum += triangleNormal(p, p2, p1);
    sum += triangleNormal(p, p4, p2);
    sum += triangleNormal(p5, p, p3);
    sum += triangleNormal(p5, p6, p);
    sum += triangleNormal(p6, p4, p);
    return normalize(sum);
}
)";

}  // namespace vellum
