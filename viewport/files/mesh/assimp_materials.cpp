#include "viewport/files/mesh/assimp_materials.h"

#include "viewport/files/mesh/default_color.h"
#include "viewport/text/TextLines.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

namespace vellum::viewport {

namespace {

constexpr aiTextureType COLOR_TEXTURES[] = {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR};
constexpr aiTextureType LIGHT_TEXTURES[] = {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR};

float withinOne(float value) {
    return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0.0F;
}

Color4<float> toColor(aiColor4D const& c) {
    return colorOf(c.r, c.g, c.b, 1);
}

bool isBlack(Color4<float> const& color) {
    return color.r + color.g + color.b == 0;
}

bool hasColorTexture(aiMaterial const& source) {
    return std::any_of(std::begin(COLOR_TEXTURES), std::end(COLOR_TEXTURES),
                       [&source](aiTextureType kind) { return source.GetTextureCount(kind) > 0; });
}

/// Takes over a texture that the file itself holds.
void takeTexture(aiTexture const& texture, MaterialPicture& picture) {
    constexpr unsigned int LONGEST_SIDE = 16384;
    if (texture.mHeight == 0) {
        // A picture file; the width is its size in bytes.
        unsigned char const* const bytes = reinterpret_cast<unsigned char const*>(texture.pcData);
        picture.bytes.assign(bytes, bytes + texture.mWidth);
    } else if (texture.mWidth > 0 && texture.mWidth <= LONGEST_SIDE && texture.mHeight <= LONGEST_SIDE) {
        picture.columns = texture.mWidth;
        picture.rows = texture.mHeight;
        std::size_t const count = std::size_t(texture.mWidth) * texture.mHeight;
        picture.bytes.reserve(4 * count);
        for (std::size_t i = 0; i < count; ++i) {
            aiTexel const& texel = texture.pcData[i];
            picture.bytes.insert(picture.bytes.end(), {texel.r, texel.g, texel.b, texel.a});
        }
    }
}

bool isGltf(aiMaterial const& source) {
    aiString mode;
    return source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == AI_SUCCESS;
}

/// How Assimp turns texture coordinates. It scales, turns about the middle and moves; of glTF, which turns
/// about a corner, the importer has made that.
TextureTransform transformOf(aiMaterial const& source, aiTextureType kind) {
    aiUVTransform t;
    if (source.Get(AI_MATKEY_UVTRANSFORM(kind, 0), t) != AI_SUCCESS) {
        return {};
    }
    float const sum = t.mScaling.x + t.mScaling.y + t.mTranslation.x + t.mTranslation.y + t.mRotation;
    if (!std::isfinite(sum)) {
        return {};
    }
    if (isGltf(source)) {
        // The importer's formulas solved for what the file says.
        float const rotation = -t.mRotation;
        float const cosine = std::cos(rotation);
        float const sine = std::sin(rotation);
        Vector2<float> const offset{t.mTranslation.x - 0.5F * t.mScaling.x * (1 - cosine + sine),
                                    0.5F * t.mScaling.y * (sine + cosine - 1) + 1 - t.mScaling.y -
                                        t.mTranslation.y};
        return TextureTransform::ofGltf({t.mScaling.x, t.mScaling.y}, rotation, offset);
    }
    float const cosine = std::cos(t.mRotation);
    float const sine = std::sin(t.mRotation);
    return {cosine * t.mScaling.x,
            -sine * t.mScaling.y,
            sine * t.mScaling.x,
            cosine * t.mScaling.y,
            0.5F - 0.5F * cosine + 0.5F * sine + t.mTranslation.x,
            0.5F - 0.5F * sine - 0.5F * cosine + t.mTranslation.y};
}

/// The first of some kinds of textures that a material has.
template <std::size_t COUNT>
std::optional<aiTextureType> firstKind(aiMaterial const& source, aiTextureType const (&kinds)[COUNT]) {
    aiString name;
    for (aiTextureType const kind : kinds) {
        if (source.GetTexture(kind, 0, &name) == AI_SUCCESS && name.length > 0) {
            return kind;
        }
    }
    return std::nullopt;
}

/// The list of texture coordinates that a texture lies by.
unsigned int coordinatesOf(aiMaterial const& source, aiTextureType kind) {
    int index = 0;
    source.Get(AI_MATKEY_UVWSRC(kind, 0), index);
    return index > 0 ? static_cast<unsigned int>(index) : 0;
}

/// The name of a texture, and its bytes where the file holds it.
MaterialPicture pictureOf(aiScene const& scene, aiMaterial const& source, aiTextureType kind) {
    MaterialPicture picture;
    aiString name;
    source.GetTexture(kind, 0, &name);
    picture.name = name.C_Str();
    picture.transform = transformOf(source, kind);
    aiTexture const* const embedded = scene.GetEmbeddedTexture(name.C_Str());
    if (embedded != nullptr && embedded->pcData != nullptr) {
        takeTexture(*embedded, picture);
    }
    return picture;
}

void takeColorTexture(aiScene const& scene, aiMaterial const& source, Material& material) {
    std::optional<aiTextureType> const kind = firstKind(source, COLOR_TEXTURES);
    if (!kind) {
        return;
    }
    MaterialPicture picture = pictureOf(scene, source, *kind);
    material.texture = std::move(picture.name);
    material.textureBytes = std::move(picture.bytes);
    material.texelColumns = picture.columns;
    material.texelRows = picture.rows;
    material.textureTransform = picture.transform;
    int flags = 0;
    source.Get(AI_MATKEY_TEXFLAGS(*kind, 0), flags);
    if ((flags & aiTextureFlags_UseAlpha) != 0) {
        material.alphaMode = AlphaMode::BLEND;
    }
}

/// The light that a surface gives off, and where.
void takeEmission(aiScene const& scene, aiMaterial const& source, Material& material,
                  std::vector<std::string>& notes) {
    aiColor4D color(0, 0, 0, 1);
    source.Get(AI_MATKEY_COLOR_EMISSIVE, color);
    material.emission = toColor(color);
    std::optional<aiTextureType> const kind = firstKind(source, LIGHT_TEXTURES);
    if (!kind) {
        return;
    }
    // In glTF the texture is multiplied with the color, which is black where a file does not say. Others
    // leave the color black where a texture replaces it.
    if (isBlack(material.emission) && isGltf(source)) {
        return;
    }
    material.emission = isBlack(material.emission) ? Color4<float>{1, 1, 1, 1} : material.emission;
    MaterialPicture picture = pictureOf(scene, source, *kind);
    std::optional<aiTextureType> const colorKind = firstKind(source, COLOR_TEXTURES);
    if (colorKind && coordinatesOf(source, *colorKind) != coordinatesOf(source, *kind)) {
        notes.push_back("emission texture " + inQuotes(picture.name) +
                        " lies by other texture coordinates than the color; drawn without it");
        // Without a picture of where it shines, all of the surface would.
        material.emission = {0, 0, 0, 1};
        return;
    }
    material.emissionTexture = std::move(picture);
}

void takeOpacity(aiScene const& scene, aiMaterial const& source, Material& material) {
    float opacity = 1;
    if (source.Get(AI_MATKEY_OPACITY, opacity) == AI_SUCCESS && std::isfinite(opacity)) {
        material.opacity = withinOne(opacity);
    }
    aiString text;
    if (source.GetTexture(aiTextureType_OPACITY, 0, &text) == AI_SUCCESS && text.length > 0 &&
        (text.C_Str() == material.texture || scene.GetEmbeddedTexture(text.C_Str()) == nullptr)) {
        material.opacityTexture = text.C_Str();
        material.alphaMode = AlphaMode::BLEND;
    }
    if (source.Get(AI_MATKEY_GLTF_ALPHAMODE, text) != AI_SUCCESS) {
        return;
    }
    std::string_view const mode = text.C_Str();
    aiColor4D base(1, 1, 1, 1);
    if (source.Get(AI_MATKEY_BASE_COLOR, base) == AI_SUCCESS) {
        material.opacity = withinOne(base.a);
    }
    material.alphaMode = mode == "BLEND"  ? AlphaMode::BLEND
                         : mode == "MASK" ? AlphaMode::MASK
                                          : AlphaMode::SOLID;
    source.Get(AI_MATKEY_GLTF_ALPHACUTOFF, material.alphaCutoff);
    material.alphaCutoff = withinOne(material.alphaCutoff);
    if (material.alphaMode == AlphaMode::SOLID) {
        material.opacity = 1;
    }
}

void takeHighlights(aiMaterial const& source, Material& material) {
    aiColor4D color;
    float shininess = 0;
    if (source.Get(AI_MATKEY_COLOR_SPECULAR, color) != AI_SUCCESS ||
        source.Get(AI_MATKEY_SHININESS, shininess) != AI_SUCCESS || !std::isfinite(shininess)) {
        return;
    }
    float strength = 1;
    if (source.Get(AI_MATKEY_SHININESS_STRENGTH, strength) == AI_SUCCESS && std::isfinite(strength)) {
        color = color * strength;
    }
    // Importers put black, or an exponent of 0, where a file says nothing.
    Color4<float> const specular = toColor(color);
    if (!isBlack(specular) && shininess > 0) {
        material.specular = specular;
        material.shininess = shininess;
    }
}

}  // namespace

Color4<float> colorOf(float red, float green, float blue, float opacity) {
    return {withinOne(red), withinOne(green), withinOne(blue), withinOne(opacity)};
}

Color4<float> surfaceColorOf(aiScene const& scene, unsigned int index) {
    if (index >= scene.mNumMaterials) {
        return DEFAULT_COLOR;
    }
    aiMaterial const& source = *scene.mMaterials[index];
    aiColor4D diffuse;
    aiString name;
    source.Get(AI_MATKEY_NAME, name);
    if (source.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) != AI_SUCCESS) {
        return DEFAULT_COLOR;
    }
    // Assimp adds a gray material where a file has none.
    std::string_view const word = name.C_Str();
    bool const isAssimpsGray = diffuse.r == 0.6F && diffuse.g == 0.6F && diffuse.b == 0.6F;
    if (word == AI_DEFAULT_MATERIAL_NAME || (word.empty() && isAssimpsGray)) {
        return DEFAULT_COLOR;
    }
    // Files leave the color black where a texture replaces it; without the texture nothing would be seen.
    Color4<float> const color = toColor(diffuse);
    return isBlack(color) && hasColorTexture(source) ? DEFAULT_COLOR : color;
}

Material materialOf(aiScene const& scene, unsigned int index, std::vector<std::string>& notes) {
    Material material;
    if (index >= scene.mNumMaterials) {
        return material;
    }
    aiMaterial const& source = *scene.mMaterials[index];
    aiString name;
    if (source.Get(AI_MATKEY_NAME, name) == AI_SUCCESS) {
        material.name = name.C_Str();
    }
    aiColor4D diffuse;
    if (source.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == AI_SUCCESS) {
        Color4<float> const color = toColor(diffuse);
        material.tint = isBlack(color) ? material.tint : color;
    }
    int isTwoSided = 0;
    source.Get(AI_MATKEY_TWOSIDED, isTwoSided);
    material.isTwoSided = isTwoSided != 0;
    takeColorTexture(scene, source, material);
    takeOpacity(scene, source, material);
    takeEmission(scene, source, material, notes);
    takeHighlights(source, material);
    return material;
}

unsigned int coordinatesOf(aiScene const& scene, unsigned int index) {
    if (index >= scene.mNumMaterials) {
        return 0;
    }
    aiMaterial const& source = *scene.mMaterials[index];
    std::optional<aiTextureType> const color = firstKind(source, COLOR_TEXTURES);
    std::optional<aiTextureType> const kind = color ? color : firstKind(source, LIGHT_TEXTURES);
    return kind ? coordinatesOf(source, *kind) : 0;
}

bool multipliesVertexColors(aiScene const& scene, unsigned int index) {
    return index < scene.mNumMaterials && isGltf(*scene.mMaterials[index]);
}

}  // namespace vellum::viewport
