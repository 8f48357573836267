#include "foundation/foundation.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vellum::gallery {

namespace {

constexpr int SIZE = 256;  // texels along each side

/// A test card: checks, a ramp of color, a disk and a bar at the upper left corner that shows which way up
/// the picture is. x and y from 0 to 1, y downwards.
Color4<float> cardAt(float x, float y) {
    bool const isLight = (static_cast<int>(x * 8.0F) + static_cast<int>(y * 8.0F)) % 2 == 0;
    Color4<float> const ramp = scaleColor(x);
    float const shade = isLight ? 0.95F : 0.55F;
    Color4<float> color{ramp.r * shade, ramp.g * shade, ramp.b * shade, 1.0F};
    float const distance = std::hypot(x - 0.5F, y - 0.5F);
    if (distance < 0.25F) {
        color = {0.13F, 0.15F, 0.19F, 1.0F};
    }
    if (distance > 0.18F && distance < 0.22F) {
        color = WHITE;
    }
    if (x > 0.03F && x < 0.3F && y > 0.03F && y < 0.09F) {
        color = WHITE;
    }
    return color;
}

template <class Texel>
std::vector<Texel> card(int channels, float largest) {
    std::vector<Texel> texels;
    texels.reserve(static_cast<std::size_t>(SIZE) * SIZE * static_cast<std::size_t>(channels));
    for (int row = 0; row < SIZE; ++row) {
        for (int column = 0; column < SIZE; ++column) {
            float const x = (static_cast<float>(column) + 0.5F) / SIZE;
            float const y = (static_cast<float>(row) + 0.5F) / SIZE;
            Color4<float> const color = cardAt(x, y);
            texels.push_back(static_cast<Texel>(color.r * largest));
            texels.push_back(static_cast<Texel>(color.g * largest));
            texels.push_back(static_cast<Texel>(color.b * largest));
            if (channels == 4) {
                // Opaque in the middle, fading toward the edge.
                float const fade = 1.2F - 1.8F * std::hypot(x - 0.5F, y - 0.5F);
                texels.push_back(static_cast<Texel>(std::clamp(fade, 0.0F, 1.0F) * largest));
            }
        }
    }
    return texels;
}

/// A texture for the time of one drawing.
class Texture {
public:
    /// 8 bits each of red, green, blue and opacity.
    Texture(Core_RL& layer, std::vector<unsigned char> const& texels) : layer(layer) {
        layer.loadTextureColor(SIZE, SIZE, texels.data(), id, TEXTURE_CLAMP);
    }

    template <class Texel>
    Texture(Core_RL& layer, std::vector<Texel> const& texels, int channels) : layer(layer) {
        int const bits = 8 * static_cast<int>(sizeof(Texel));
        layer.loadTextureColor(SIZE, SIZE, bits, bits * channels, texels.data(), id, TEXTURE_CLAMP);
    }

    ~Texture() { layer.unLoadTextureColor(id); }
    Texture(Texture const&) = delete;
    Texture& operator=(Texture const&) = delete;

    unsigned int const& name() const { return id; }

private:
    Core_RL& layer;
    unsigned int id = 0;
};

void drawQuad(Core_RL& layer, Texture const& texture) {
    layer.pushColor({1.0F, 1.0F, 1.0F, 1.0F});
    layer.pushTransform(scaledBy(0.85F));
    layer.renderQuad3(texture.name());
    layer.popTransform();
    layer.popColor(1);
}

void drawQuad8(Core_RL& layer, View) {
    drawQuad(layer, Texture(layer, card<unsigned char>(3, 255.0F), 3));
}

void drawRhombus(Core_RL& layer, View) {
    Texture const texture(layer, card<unsigned char>(3, 255.0F), 3);
    layer.pushColor({1.0F, 1.0F, 1.0F, 1.0F});
    layer.pushTransform(scaledBy(0.95F));
    layer.renderRhombus3(texture.name());
    layer.popTransform();
    layer.popColor(1);
}

void drawTinted(Core_RL& layer, View) {
    Texture const texture(layer, card<std::uint16_t>(3, 65535.0F), 3);
    Color4<float> const tints[] = {WHITE, YELLOW, TEAL, VIOLET};
    for (int i = 0; i < 4; ++i) {
        layer.pushColor(tints[i]);
        layer.pushTransform(movedTo({i % 2 == 0 ? -0.45F : 0.45F, i / 2 == 0 ? 0.45F : -0.45F, 0.0F}) *
                            scaledBy(0.42F));
        layer.renderQuad3(texture.name());
        layer.popTransform();
        layer.popColor(1);
    }
}

void drawFading(Core_RL& layer, View) {
    Texture const texture(layer, card<unsigned char>(4, 255.0F));
    layer.pushBlending(BLENDING_ALPHA);
    drawQuad(layer, texture);
    layer.popBlending();
}

/// A floor that runs to the horizon: where its texels are smaller than pixels, the mipmaps average them.
void drawFloor(Core_RL& layer, View) {
    Texture const texture(layer, card<float>(3, 1.0F), 3);
    layer.pushColor({1.0F, 1.0F, 1.0F, 1.0F});
    for (int i = -4; i <= 4; ++i) {
        for (int j = 0; j < 14; ++j) {
            layer.pushTransform(
                movedTo({2.0F * static_cast<float>(i), -0.8F, -2.0F * static_cast<float>(j)}) *
                turnedBy(-90.0F, VL_AXIS_X));
            layer.renderQuad3(texture.name());
            layer.popTransform();
        }
    }
    layer.popColor(1);
}

void drawCube(Core_RL& layer, View) {
    Texture const texture(layer, card<std::uint16_t>(4, 65535.0F), 4);
    layer.pushColor({1.0F, 1.0F, 1.0F, 1.0F});
    auto const face = [&](float degrees, VL_AXIS const& axis) {
        layer.pushTransform(scaledBy(0.72F) * turnedBy(degrees, axis) * movedTo({0.0F, 0.0F, 1.0F}));
        layer.renderQuad3(texture.name());
        layer.popTransform();
    };
    for (int i = 0; i < 4; ++i) {
        face(90.0F * static_cast<float>(i), VL_AXIS_Y);
    }
    face(90.0F, VL_AXIS_X);
    face(-90.0F, VL_AXIS_X);
    layer.popColor(1);
}

}  // namespace

Subject textures() {
    View const flat = View::flat(1.0F);
    return {
        "textures",
        {{1.0F,
          {{"quad, 8 bits", flat, drawQuad8},
           {"rhombus, 8 bits", flat, drawRhombus},
           {"tinted, 16 bits", flat, drawTinted}}},
         {1.0F,
          {{"blended by opacity", flat, drawFading},
           {"mipmaps, 32 bits", View::perspective({0.0F, 0.8F, 3.4F}, {0.0F, -0.1F, 0.0F}, 40.0F), drawFloor},
           {"six quads", View::perspective({1.9F, 1.6F, 3.2F}, {}, 34.0F), drawCube}}}}};
}

}  // namespace vellum::gallery
