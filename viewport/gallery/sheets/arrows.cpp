#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

/// Three upright arrows of growing length.
void drawThree(Core_RL& layer, Color4<float> const& color, float headSize, bool tailBox) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(color);
    layer.pushLineWidth(3.0F);
    for (int i = 0; i < 3; ++i) {
        float const x = 0.75F * static_cast<float>(i - 1);
        layer.renderArrow3({x, -0.8F, 0.3F}, {x + 0.1F, -0.2F + 0.5F * static_cast<float>(i), 0.0F}, headSize,
                           tailBox);
    }
    layer.popLineWidth();
    layer.popColor(1);
}

void drawShortHeads(Core_RL& layer, View) {
    drawThree(layer, TEAL, 0.2F, false);
}

void drawLongHeads(Core_RL& layer, View) {
    drawThree(layer, GREEN, 0.45F, false);
}

void drawLimitedHeads(Core_RL& layer, View) {
    drawThree(layer, YELLOW, 10.0F, false);
}

void drawTailBoxes(Core_RL& layer, View) {
    drawThree(layer, ORANGE, 0.18F, true);
}

void drawAllRound(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    constexpr int COUNT = 90;
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < COUNT; ++i) {
        float const height = 1.0F - 2.0F * (static_cast<float>(i) + 0.5F) / COUNT;
        float const ring = std::sqrt(1.0F - height * height);
        float const angle = 2.39996F * static_cast<float>(i);
        Vector3<float> const direction{ring * std::cos(angle), height, ring * std::sin(angle)};
        layer.pushColor(scaleColor(0.5F + 0.5F * height));
        layer.renderArrow3(direction * 0.35F, direction * 1.05F, 0.22F, false);
        layer.popColor(1);
    }
    layer.popLineWidth();
}

void drawSeenFromBelow(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(VIOLET);
    layer.pushLineWidth(3.0F);
    layer.renderArrow3({0.0F, -0.3F, 0.0F}, {0.0F, 1.1F, 0.0F}, 0.45F, false);
    layer.renderArrow3({0.0F, -0.3F, 0.0F}, {1.0F, 0.4F, 0.4F}, 0.4F, false);
    layer.renderArrow3({0.0F, -0.3F, 0.0F}, {-1.0F, 0.4F, 0.4F}, 0.4F, false);
    layer.popLineWidth();
    layer.popColor(1);
}

void drawUnit(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < 8; ++i) {
        layer.pushColor(scaleColor(static_cast<float>(i) / 7.0F));
        layer.pushTransform(turnedBy(45.0F * static_cast<float>(i), VL_AXIS_Z) * scaledBy(0.85F));
        layer.renderUnitArrow3();
        layer.popTransform();
        layer.popColor(1);
    }
    layer.popLineWidth();
}

void drawFlatArrows(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < 9; ++i) {
        for (int j = 0; j < 7; ++j) {
            Vector2<float> const place{-1.1F + 0.275F * static_cast<float>(i),
                                       -0.75F + 0.25F * static_cast<float>(j)};
            Vector2<float> const flow =
                Vector2<float>{-place.y - 0.4F * place.x, place.x - 0.4F * place.y} * 0.16F;
            if (length(flow) < 0.02F) {
                continue;
            }
            layer.pushColor(scaleColor(length(flow) / 0.2F));
            layer.renderArrow2(place - flow * 0.5F, place + flow * 0.5F, 0.4F);
            layer.popColor(1);
        }
    }
    layer.popLineWidth();
}

/// Velocity in a whirl about the Y axis: fast around a core that widens upwards, rising inside the core,
/// inwards near the ground.
Vector3<float> whirlAt(Vector3<float> const& p) {
    float const height = p.y + 1.0F;
    float const core = 0.16F + 0.14F * height;
    float const radius = std::hypot(p.x, p.z);
    float const turning = 1.0F / std::pow(core * core + radius * radius, 0.8F);
    float const inwards = 1.2F * std::exp(-2.2F * height);
    float const rising = 1.5F * std::exp(-radius * radius / (2.0F * core * core));
    Vector3<float> const outwards{p.x, 0.0F, p.z};
    Vector3<float> const around{p.z, 0.0F, -p.x};
    return around * (0.62F * turning) - outwards * inwards + Vector3<float>{0.0F, rising, 0.0F};
}

void drawField(Core_RL& layer, View) {
    constexpr int LEVELS = 18;
    constexpr int RINGS = 7;
    constexpr float FASTEST = 1.7F;
    Array<Vector3<float>> positions;
    Array<Vector3<float>> directions;
    Array<Color4<float>> colors;
    for (int level = 0; level < LEVELS; ++level) {
        float const height = 2.0F * static_cast<float>(level) / (LEVELS - 1);
        for (int ring = 1; ring <= RINGS; ++ring) {
            float const radius = static_cast<float>(ring) * (0.08F + 0.055F * height);
            int const count = 8 * ring;
            for (int i = 0; i < count; ++i) {
                float const angle = 2.0F * PI *
                                    (static_cast<float>(i) + 0.5F * static_cast<float>(level % 2)) /
                                    static_cast<float>(count);
                Vector3<float> const place{radius * std::cos(angle), height - 1.0F, radius * std::sin(angle)};
                Vector3<float> const flow = whirlAt(place);
                positions.pushBack(place);
                directions.pushBack(flow);
                colors.pushBack(scaleColor(length(flow) / FASTEST));
            }
        }
    }

    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> vertexColors;
    layer.createBuffers_forRenderArrow3(positions, directions, colors, 0.105F, vertices, triangles, lines,
                                        quads, vertexColors);
    layer.renderArrow3_usingBuffers(vertices, triangles, lines, quads, vertexColors);

    layer.pushColor(FAINT);
    layer.renderPlane3({{0.0F, 1.0F, 0.0F}, 1.02F}, 2.8F, 14);
    layer.popColor(1);
}

}  // namespace

Subject arrows() {
    View const view = View::perspective({1.4F, 1.2F, 3.9F}, {0.0F, 0.0F, 0.0F}, 34.0F);
    return {"arrows",
            {{1.0F,
              {{"short heads", view, drawShortHeads},
               {"long heads", view, drawLongHeads},
               {"heads limited to a third", view, drawLimitedHeads},
               {"boxes at the tails", view, drawTailBoxes}}},
             {1.0F,
              {{"all directions", View::perspective({1.8F, 1.5F, 3.6F}, {}, 32.0F), drawAllRound},
               {"darker base of the head", View::perspective({0.6F, -2.6F, 2.9F}, {0.0F, 0.3F, 0.0F}, 34.0F),
                drawSeenFromBelow},
               {"flat arrows", View::flat(1.0F), drawFlatArrows},
               {"unit arrow, turned", View::perspective({0.6F, 0.9F, 3.6F}, {}, 36.0F), drawUnit}}}}};
}

Subject vectorField() {
    return {"vector-field",
            {{1.0F, {{"", View::perspective({1.7F, 1.5F, 4.1F}, {0.0F, -0.08F, 0.0F}, 35.0F), drawField}}}}};
}

}  // namespace vellum::gallery
