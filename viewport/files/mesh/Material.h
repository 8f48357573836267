#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/image/VL_Image.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// How the opacity of a texture's pixels is taken.
enum class AlphaMode {
    SOLID,  ///< it is ignored: the surface is as opaque as its material and vertices say
    MASK,   ///< the surface is there where the opacity reaches the material's cutoff, and not elsewhere
    BLEND   ///< the surface is as opaque as the texture says
};

/// Turns the texture coordinates of a vertex into those of the texture, whose origin is its lower left
/// corner:
///
///     u' = uu * u + uv * v + u0
///     v' = vu * u + vv * v + v0
struct TextureTransform {
    float uu = 1;
    float uv = 0;
    float vu = 0;
    float vv = 1;
    float u0 = 0;
    float v0 = 0;

    /// As the options -s and -o of MTL say: coordinates are scaled, then moved.
    static TextureTransform ofMtl(Vector2<float> const& scale, Vector2<float> const& offset);

    /// As glTF says, whose origin is the upper left corner: coordinates are scaled, turned about the origin
    /// and moved.
    /// \param rotation radians, counter-clockwise as glTF counts
    static TextureTransform ofGltf(Vector2<float> const& scale, float rotation, Vector2<float> const& offset);

    bool isIdentity() const;
    bool operator==(TextureTransform const& other) const;
    Vector2<float> apply(Vector2<float> const& p) const {
        return {uu * p.x + uv * p.y + u0, vu * p.x + vv * p.y + v0};
    }
};

/// A picture that a mesh file names or holds, and how it lies.
struct MaterialPicture {
    std::string name;                  ///< as the file names it; empty: there is none
    std::vector<unsigned char> bytes;  ///< where the mesh file itself holds it
    unsigned int columns = 0;          ///< as Material::texelColumns
    unsigned int rows = 0;
    TextureTransform transform;
};

/// A material of a mesh file, with or without a diffuse texture. All numbers are finite; colors are 0 to 1.
struct Material {
    std::string name;                ///< as the file has it; may be empty
    Color4<float> tint{1, 1, 1, 1};  ///< what the texture is multiplied with
    float opacity = 1;               ///< of the surface, 0 to 1; multiplied with that of vertices and texture
    /// Light that the surface gives off; with `emissionTexture` what that is multiplied with.
    Color4<float> emission{0, 0, 0, 1};
    std::optional<Color4<float>> specular;  ///< of highlights; nothing: the file does not say
    float shininess = 0;                    ///< exponent of highlights, from 0 up; only with `specular`
    bool isTwoSided = false;                ///< the back is lit as the front is

    std::string texture;                      ///< as the file names it; empty: no texture
    std::vector<unsigned char> textureBytes;  ///< the picture, where the mesh file itself holds it
    /// Pixels of the texture where `textureBytes` are its pixels: red, green, blue, opacity, upper row first.
    /// 0: they are those of a picture file.
    unsigned int texelColumns = 0;
    unsigned int texelRows = 0;
    TextureTransform textureTransform;
    AlphaMode alphaMode = AlphaMode::SOLID;
    float alphaCutoff = 0.5F;  ///< 0 to 1; only with AlphaMode::MASK

    /// A texture whose opacity, or brightness where it has none, is that of the surface (map_d of MTL). It
    /// may be `texture` itself. Empty: none.
    std::string opacityTexture;

    MaterialPicture emissionTexture;  ///< where the surface gives off light

    std::shared_ptr<VL_Image const> image;  ///< the texture once it is read (see Textures.h); else null
    std::shared_ptr<VL_Image const> emissionImage;  ///< the same of light, multiplied with `emission`
};

}  // namespace vellum::viewport
