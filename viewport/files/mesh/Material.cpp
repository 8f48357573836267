#include "viewport/files/mesh/Material.h"

#include <cmath>

namespace vellum::viewport {

TextureTransform TextureTransform::ofMtl(Vector2<float> const& scale, Vector2<float> const& offset) {
    return {scale.x, 0, 0, scale.y, offset.x, offset.y};
}

TextureTransform TextureTransform::ofGltf(Vector2<float> const& scale, float rotation,
                                          Vector2<float> const& offset) {
    // With s = u and t = 1 - v glTF's rule is
    //     s' =  cos * scale.x * s + sin * scale.y * t + offset.x
    //     t' = -sin * scale.x * s + cos * scale.y * t + offset.y
    float const cosine = std::cos(rotation);
    float const sine = std::sin(rotation);
    return {cosine * scale.x, -sine * scale.y,           sine * scale.x,
            cosine * scale.y, sine * scale.y + offset.x, 1 - cosine * scale.y - offset.y};
}

bool TextureTransform::isIdentity() const {
    return *this == TextureTransform();
}

bool TextureTransform::operator==(TextureTransform const& other) const {
    return uu == other.uu && uv == other.uv && vu == other.vu && vv == other.vv && u0 == other.u0 &&
           v0 == other.v0;
}

}  // namespace vellum::viewport
