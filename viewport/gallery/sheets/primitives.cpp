#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

View spatialView() {
    return View::perspective({2.6F, 2.1F, 3.6F}, {0.0F, 0.0F, 0.0F}, 32.0F);
}

void drawPoints(Core_RL& layer, View) {
    for (int row = 0; row < 5; ++row) {
        float const former = layer.setPointSize(2.0F + 3.0F * static_cast<float>(row));
        for (int i = 0; i < 9; ++i) {
            layer.pushColor(scaleColor(static_cast<float>(i) / 8.0F));
            layer.renderPoint3(
                {-1.2F + 0.3F * static_cast<float>(i), 0.68F - 0.34F * static_cast<float>(row), 0.0F});
            layer.popColor(1);
        }
        layer.setPointSize(former);
    }
}

void drawPointBlock(Core_RL& layer, View) {
    constexpr int COUNT = 700;
    constexpr float GOLDEN_ANGLE = 2.39996F;
    float const former = layer.setPointSize(3.0F);
    layer.pushColor(TEAL);
    layer.renderPoint3_Begin();
    for (int i = 0; i < COUNT; ++i) {
        float const radius = 0.9F * std::sqrt(static_cast<float>(i) / COUNT);
        float const angle = GOLDEN_ANGLE * static_cast<float>(i);
        layer.renderPoint3_scoped({radius * std::cos(angle), radius * std::sin(angle), 0.0F});
    }
    layer.renderPoint3_End();
    layer.popColor(1);
    layer.setPointSize(former);
}

void drawSegments(Core_RL& layer, View) {
    for (int i = 0; i < 7; ++i) {
        float const y = 0.72F - 0.24F * static_cast<float>(i);
        layer.pushColor(scaleColor(static_cast<float>(i) / 6.0F));
        layer.pushLineWidth(1.0F + static_cast<float>(i));
        layer.renderSegment3({-1.1F, y - 0.1F, 0.0F}, {1.1F, y + 0.1F, 0.0F});
        layer.popLineWidth();
        layer.popColor(1);
    }
}

void drawStippledSegments(Core_RL& layer, View) {
    layer.pushColor(YELLOW);
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < 16; ++i) {
        float const angle = 2.0F * PI * static_cast<float>(i) / 16.0F;
        Vector3<float> const direction{std::cos(angle), std::sin(angle), 0.0F};
        layer.renderSegmentStipple3(direction * 0.15F, direction * 0.88F);
    }
    layer.popLineWidth();
    layer.popColor(1);
}

void drawStrokes(Core_RL& layer, View) {
    float const former = layer.setPointSize(6.0F);
    for (int i = 0; i < 9; ++i) {
        Vector3<float> const center{-0.8F + 0.2F * static_cast<float>(i), 0.5F, 0.0F};
        float const lean = radians(20.0F - 5.0F * static_cast<float>(i));
        layer.pushColor(ORANGE);
        layer.pushLineWidth(2.0F);
        layer.renderStroke3(center, {std::sin(lean), std::cos(lean), 0.0F}, 1.0F);
        layer.popLineWidth();
        layer.popColor(1);
        layer.pushColor(WHITE);
        layer.renderPoint3(center);
        layer.popColor(1);
    }
    layer.setPointSize(former);
}

void drawCross(Core_RL& layer, View) {
    layer.pushLineWidth(2.0F);
    layer.pushColor(GREEN);
    layer.renderCross3();
    layer.popColor(1);
    layer.pushColor(VIOLET);
    for (int i = 0; i < 8; ++i) {
        auto const side = [i](int bit) { return (i & bit) != 0 ? 0.55F : -0.55F; };
        layer.pushTransform(movedTo({side(1), side(2), side(4)}) * scaledBy(0.18F));
        layer.renderCross3();
        layer.popTransform();
    }
    layer.popColor(1);
    layer.popLineWidth();
}

/// A wave cut into quads.
void drawQuads(Core_RL& layer, View) {
    constexpr int CELLS = 12;
    auto const at = [](int i, int j) {
        float const x = -1.1F + 2.2F * static_cast<float>(i) / CELLS;
        float const z = -1.1F + 2.2F * static_cast<float>(j) / CELLS;
        return Vector3<float>{x, 0.35F * std::sin(2.6F * x) * std::cos(2.6F * z), z};
    };
    for (int i = 0; i < CELLS; ++i) {
        for (int j = 0; j < CELLS; ++j) {
            Vector3<float> const corner = at(i, j);
            Color4<float> color = scaleColor(0.5F + 1.3F * corner.y);
            float const shade = (i + j) % 2 == 0 ? 1.0F : 0.78F;
            color = {color.r * shade, color.g * shade, color.b * shade, 1.0F};
            layer.pushColor(color);
            layer.renderQuad3(corner, at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
            layer.popColor(1);
        }
    }
}

void drawRhombi(Core_RL& layer, View) {
    for (int i = 0; i < 5; ++i) {
        layer.pushColor(scaleColor(static_cast<float>(i) / 4.0F));
        layer.pushTransform(movedTo({0.0F, 0.0F, 0.1F * static_cast<float>(i)}) *
                            scaledBy(0.92F - 0.19F * static_cast<float>(i)));
        layer.renderRhombus3();
        layer.popTransform();
        layer.popColor(1);
    }
}

/// An octahedron that was divided into triangles twice and blown up to a ball.
template <class Draw>
void forEachBallTriangle(Draw const& draw) {
    constexpr int STEPS = 4;
    for (int octant = 0; octant < 8; ++octant) {
        Vector3<float> const x{(octant & 1) != 0 ? 1.0F : -1.0F, 0.0F, 0.0F};
        Vector3<float> const y{0.0F, (octant & 2) != 0 ? 1.0F : -1.0F, 0.0F};
        Vector3<float> const z{0.0F, 0.0F, (octant & 4) != 0 ? 1.0F : -1.0F};
        bool const isMirrored = x.x * y.y * z.z < 0.0F;
        auto const at = [&](int i, int j) {
            auto const a = static_cast<float>(i);
            auto const b = static_cast<float>(j);
            return normalized(x * (STEPS - a - b) + y * a + z * b);
        };
        auto const emit = [&](Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) {
            isMirrored ? draw(a, c, b) : draw(a, b, c);
        };
        for (int i = 0; i < STEPS; ++i) {
            for (int j = 0; i + j < STEPS; ++j) {
                emit(at(i, j), at(i + 1, j), at(i, j + 1));
                if (i + j + 1 < STEPS) {
                    emit(at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
                }
            }
        }
    }
}

void drawFacetedTriangles(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(BLUE);
    // One block for all: the cheap way to draw many triangles.
    layer.begin(Primitive::TRIANGLES);
    forEachBallTriangle([&](Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) {
        layer.renderTriangleOptimized(a, b, c);
    });
    layer.end();
    layer.popColor(1);
}

void drawSmoothTriangles(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(BLUE);
    forEachBallTriangle([&](Vector3<float> const& a, Vector3<float> const& b, Vector3<float> const& c) {
        layer.renderTriangle(a, b, c, a, b, c);
    });
    layer.popColor(1);
}

void drawCircles(Core_RL& layer, View) {
    for (int i = 0; i < 8; ++i) {
        layer.pushColor(scaleColor(static_cast<float>(i) / 7.0F));
        layer.renderCircle3(0.13F + 0.11F * static_cast<float>(i));
        layer.popColor(1);
    }
}

void drawFlat(Core_RL& layer, View) {
    constexpr int COUNT = 48;
    auto const at = [](int i) {
        float const x = -0.95F + 1.9F * static_cast<float>(i) / COUNT;
        return Vector2<float>{x, 0.6F * std::sin(5.0F * x) * std::exp(-0.5F * x * x)};
    };
    layer.pushColor(GRAY);
    layer.renderSegment2({-1.0F, 0.0F}, {1.0F, 0.0F});
    layer.renderSegment2({0.0F, -0.8F}, {0.0F, 0.8F});
    layer.popColor(1);
    layer.pushColor(TEAL);
    layer.pushLineWidth(2.0F);
    for (int i = 0; i < COUNT; ++i) {
        layer.renderSegment2(at(i), at(i + 1));
    }
    layer.popLineWidth();
    layer.popColor(1);
    float const former = layer.setPointSize(7.0F);
    layer.pushColor(YELLOW);
    for (int i = 0; i <= COUNT; i += 6) {
        layer.renderPoint2(at(i));
    }
    layer.popColor(1);
    layer.setPointSize(former);
}

void drawBlended(Core_RL& layer, View) {
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushDepthTest({DEPTH_TEST_OFF, false});
    Color4<float> const colors[] = {RED, GREEN, BLUE};
    for (int i = 0; i < 3; ++i) {
        Color4<float> color = colors[i];
        color.a = 0.55F;
        layer.pushColor(color);
        layer.pushTransform(movedTo({0.32F * static_cast<float>(i - 1), 0.0F, 0.0F}) *
                            turnedBy(30.0F * static_cast<float>(i - 1), VL_AXIS_Z) * scaledBy(0.44F));
        layer.renderQuad3({-1.0F, -1.0F, 0.0F}, {1.0F, -1.0F, 0.0F}, {1.0F, 1.0F, 0.0F}, {-1.0F, 1.0F, 0.0F});
        layer.popTransform();
        layer.popColor(1);
    }
    layer.popDepthTest();
    layer.popBlending();
}

}  // namespace

Subject primitives() {
    View const flat = View::flat(1.0F);
    return {"primitives",
            {{1.0F,
              {{"points", flat, drawPoints},
               {"a block of points", flat, drawPointBlock},
               {"segments", flat, drawSegments},
               {"stippled segments", flat, drawStippledSegments}}},
             {1.0F,
              {{"strokes", flat, drawStrokes},
               {"crosses", spatialView(), drawCross},
               {"quads", spatialView(), drawQuads},
               {"rhombi", flat, drawRhombi}}},
             {1.0F,
              {{"triangles, flat", View::perspective({0.0F, 1.2F, 4.4F}, {}, 32.0F), drawFacetedTriangles},
               {"triangles, smooth", View::perspective({0.0F, 1.2F, 4.4F}, {}, 32.0F), drawSmoothTriangles},
               {"in the plane", flat, drawFlat},
               {"circles", flat, drawCircles},
               {"blended quads", flat, drawBlended}}}}};
}

}  // namespace vellum::gallery
