#include "foundation/foundation.h"
#include "toolkit/Lit.h"
#include "viewport/gallery/sheets/palette.h"
#include "viewport/gallery/sheets/placement.h"
#include "viewport/gallery/sheets/subjects.h"

#include <cmath>

namespace vellum::gallery {

namespace {

using Triangles = Array<Tuple3<unsigned int>>;

/// A torus about the Y axis as a triangle list.
struct Torus {
    Array<Vector3<double>> vertices;
    Array<Vector3<float>> normals;
    Array<Color4<float>> colors;
    Triangles triangles;

    Torus(unsigned int around, unsigned int across) {
        for (unsigned int i = 0; i < around; ++i) {
            for (unsigned int j = 0; j < across; ++j) {
                double const u = 2.0 * PI * i / around;
                double const v = 2.0 * PI * j / across;
                Vector3<double> const outwards{std::cos(u), 0.0, std::sin(u)};
                Vector3<double> const normal =
                    outwards * std::cos(v) + Vector3<double>{0.0, std::sin(v), 0.0};
                vertices.pushBack(outwards * 0.75 + normal * 0.35);
                normals.pushBack(convert<float>(normal));
                colors.pushBack(scaleColor(static_cast<float>(0.5 + 0.5 * std::sin(3.0 * u + v))));

                unsigned int const nextI = (i + 1) % around;
                unsigned int const nextJ = (j + 1) % across;
                unsigned int const a = i * across + j;
                unsigned int const b = i * across + nextJ;
                unsigned int const c = nextI * across + nextJ;
                unsigned int const d = nextI * across + j;
                triangles.pushBack({a, b, c});
                triangles.pushBack({a, c, d});
            }
        }
    }

    Array<Vector3<float>> singleVertices() const {
        Array<Vector3<float>> result;
        for (Vector3<double> const& vertex : vertices) {
            result.pushBack(convert<float>(vertex));
        }
        return result;
    }
};

void drawSphere(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(RED);
    layer.renderSphere({0.0F, 0.0F, 0.0F}, 1.0F);
    layer.popColor(1);
}

void drawTetrahedron(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    layer.pushColor(YELLOW);
    layer.renderTetrahedron(Vector3<float>{0.0F, -0.2F, 0.0F}, 1.15F);
    layer.popColor(1);
}

void drawVoxel(Core_RL& layer, View) {
    TricubicVoxel<float> voxel{{-0.3F, -0.3F, -0.3F}, {0.6F, 0.6F, 0.6F}, {}};
    for (int i = 0; i < 64; ++i) {
        Vector3<float> const offset = Vector3<float>{static_cast<float>(i % 4), static_cast<float>(i / 4 % 4),
                                                     static_cast<float>(i / 16)} -
                                      Vector3<float>{1.5F, 1.5F, 1.5F};
        voxel.samples[i] = 1.15F - 0.36F * length(offset);
    }
    float const former = layer.setPointSize(9.0F);
    layer.pushColor(YELLOW);
    layer.renderTricubicVoxel(voxel);
    layer.popColor(1);
    layer.setPointSize(former);
}

void drawPlaneSystem(Core_RL& layer, View) {
    Plane3System<float> system;
    for (int i = 0; i < 3; ++i) {
        float const angle = radians(60.0F * static_cast<float>(i) + 10.0F);
        system.planes.pushBack({{std::cos(angle), 0.0F, std::sin(angle)}, 0.0F});
    }
    layer.pushColor(TEAL);
    layer.renderPlane3System(system, 1.9F, 8);
    layer.popColor(1);
}

void drawTree(Core_RL& layer, View) {
    GeometryTree<GeometryNode<Box3<float>>> tree;
    tree.nodes.pushBack({{{-1.0F, -1.0F, -1.0F}, {1.0F, 1.0F, 1.0F}}, 0, 0});
    // Only boxes that intersect the surface of a ball are divided into eight.
    constexpr float RADIUS = 1.1F;
    Vector3<float> const middle{-1.0F, -1.0F, -1.0F};
    for (unsigned int index = 0; index < tree.nodes.size(); ++index) {
        Box3<float> const box = tree.nodes[index].volume;
        Vector3<float> const half = (box.max - box.min) * 0.5F;
        float const distance = length(box.min + half - middle);
        if (half.x < 0.2F || std::fabs(distance - RADIUS) > length(half)) {
            continue;
        }
        tree.nodes[index].firstChild = tree.nodes.size();
        tree.nodes[index].childCount = 8;
        for (int i = 0; i < 8; ++i) {
            Vector3<float> const low =
                box.min + Vector3<float>{(i & 1) != 0 ? half.x : 0.0F, (i & 2) != 0 ? half.y : 0.0F,
                                         (i & 4) != 0 ? half.z : 0.0F};
            tree.nodes.pushBack({{low, low + half}, 0, 0});
        }
    }
    layer.pushColor(GREEN);
    layer.pushLineWidth(1.0F);
    layer.renderTree(tree);
    layer.popLineWidth();
    layer.popColor(1);
}

void drawPlainList(Core_RL& layer, View) {
    Torus const torus(36, 18);
    layer.pushFillingFront(FILLING_LINES);
    layer.pushFillingBack(FILLING_LINES);
    layer.pushColor(BLUE);
    layer.render(torus.vertices, torus.triangles);
    layer.popColor(1);
    layer.popFillingBack();
    layer.popFillingFront();
}

void drawFlatList(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    Torus const torus(24, 12);
    layer.pushColor(VIOLET);
    layer.render(torus.singleVertices(), torus.triangles);
    layer.popColor(1);
}

void drawSmoothList(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    Torus const torus(48, 24);
    layer.pushColor(ORANGE);
    layer.render(torus.vertices, torus.triangles, torus.normals, Array<Color4<float>>());
    layer.popColor(1);
}

void drawColoredList(Core_RL& layer, View) {
    toolkit::Lit const lit = toolkit::Lit::asSet();
    Torus const torus(72, 36);
    layer.render(torus.singleVertices(), torus.triangles, torus.normals, torus.colors);
}

void drawNormals(Core_RL& layer, View) {
    Torus const torus(24, 12);
    {
        toolkit::Lit const lit = toolkit::Lit::asSet();
        layer.pushColor(GRAY);
        layer.render(torus.singleVertices(), torus.triangles);
        layer.popColor(1);
    }
    layer.pushColor(YELLOW);
    layer.renderNormals(torus.vertices, torus.triangles, 0.14F);
    layer.popColor(1);
}

}  // namespace

Subject composed() {
    View const view = View::perspective({1.5F, 2.1F, 3.4F}, {0.0F, 0.0F, 0.0F}, 29.0F);
    View const far = View::perspective({2.2F, 2.0F, 4.2F}, {0.0F, 0.0F, 0.0F}, 37.0F);
    View const ball = View::perspective({1.7F, 1.2F, 3.6F}, {0.0F, 0.0F, 0.0F}, 32.0F);
    return {
        "composed",
        {{1.0F,
          {{"sphere", ball, drawSphere},
           {"tetrahedron", View::perspective({0.6F, 1.6F, 3.7F}, {0.0F, 0.1F, 0.0F}, 34.0F), drawTetrahedron},
           {"tricubic voxel", View::perspective({1.7F, 1.2F, 3.6F}, {}, 37.0F), drawVoxel},
           {"plane system", far, drawPlaneSystem}}},
         {1.0F,
          {{"tree of boxes", far, drawTree},
           {"triangle list, wire", view, drawPlainList},
           {"triangle list, flat", view, drawFlatList}}},
         {1.0F,
          {{"triangle list, smooth", view, drawSmoothList},
           {"triangle list, colored", view, drawColoredList},
           {"face normals", view, drawNormals}}}}};
}

}  // namespace vellum::gallery
