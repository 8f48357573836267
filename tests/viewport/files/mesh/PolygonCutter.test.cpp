#include "viewport/files/mesh/PolygonCutter.h"

#include "tests/support/build_facts.h"
#include "tests/viewport/files/mesh/mesh_checks.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numeric>

using namespace vellum;
using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

using Triangle = MeshData::Triangle;
using Points = std::vector<Vector3<double>>;

constexpr double PI = 3.14159265358979323846;

/// The triangles of one polygon whose corners are all the points in turn.
std::vector<Triangle> cut(Points const& points) {
    std::vector<unsigned int> corners(points.size());
    std::iota(corners.begin(), corners.end(), 0U);
    MeshData mesh;
    mesh.positions = points;
    PolygonCutter cutter;
    cutter.addFan(corners.data(), corners.size(), mesh.triangles);
    cutter.cutFans(mesh);
    EXPECT_TRUE(mesh.notes.empty());
    return mesh.triangles;
}

Vector3<double> areaOf(Points const& points, Triangle const& t) {
    return cross(points[t.e1] - points[t.e0], points[t.e2] - points[t.e0]) * 0.5;
}

/// Whether the triangles cover the polygon once: as many as it has, none of them turned over, together as
/// large as it.
void expectCover(Points const& points, std::string const& name) {
    std::vector<Triangle> const triangles = cut(points);
    ASSERT_EQ(triangles.size(), points.size() - 2) << name;
    Vector3<double> whole{0, 0, 0};
    for (std::size_t i = 2; i < points.size(); ++i) {
        whole = whole + areaOf(points, {0, static_cast<unsigned int>(i - 1), static_cast<unsigned int>(i)});
    }
    double covered = 0;
    for (Triangle const& triangle : triangles) {
        Vector3<double> const area = areaOf(points, triangle);
        EXPECT_GE(dot(area, whole), -1e-9 * dot(whole, whole)) << name;
        covered += length(area);
    }
    EXPECT_NEAR(covered, length(whole), 1e-9 * length(whole)) << name;
}

Points turned(Points points) {
    for (Vector3<double>& p : points) {
        p = {p.z - p.x, p.x + 2 * p.y, p.y - p.z + 10};
    }
    return points;
}

Points comb(int teeth) {
    Points points{{0, 0, 0}, {2.0 * teeth, 0, 0}};
    for (int i = teeth; i-- > 0;) {
        points.push_back({2.0 * i + 2, 10, 0});
        points.push_back({2.0 * i + 1, 1, 0});
    }
    points.push_back({0, 10, 0});
    return points;
}

Points star(int rays) {
    Points points;
    for (int i = 0; i < 2 * rays; ++i) {
        double const angle = PI * i / rays;
        double const radius = i % 2 == 0 ? 3 : 1;
        points.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    return points;
}

/// A band that winds around the origin, without touching itself.
Points spiral(int count) {
    Points points;
    auto const add = [&points](int i, double width) {
        double const radius = 1000 + 0.01 * i + width;
        points.push_back({radius * std::cos(i * 0.005), radius * std::sin(i * 0.005), 0});
    };
    for (int i = 0; i < count; ++i) {
        add(i, 3);
    }
    for (int i = count; i-- > 0;) {
        add(i, 0);
    }
    return points;
}

}  // namespace

TEST(PolygonCutter, lessThanThreeCornersGiveNothing) {
    EXPECT_TRUE(cut({}).empty());
    EXPECT_TRUE(cut({{0, 0, 0}, {1, 0, 0}}).empty());
}

TEST(PolygonCutter, rectanglesKeepTheirFirstDiagonal) {
    EXPECT_THAT(cut({{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}),
                ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
    // The diagonals differ by rounding only.
    EXPECT_THAT(cut({{0, 0, 0}, {0.1, 0, 0}, {0.1, 0.3, 0}, {1e-9, 0.3, 0}}),
                ElementsAre(Triangle{0, 1, 2}, Triangle{0, 2, 3}));
}

TEST(PolygonCutter, quadsAreCutAlongTheShorterDiagonal) {
    EXPECT_THAT(cut({{0, 0, 0}, {2, 1, 0}, {9, 9, 0}, {1, 2, 0}}),
                ElementsAre(Triangle{0, 1, 3}, Triangle{1, 2, 3}));
}

TEST(PolygonCutter, concaveQuadsAreCutAtTheirConcaveCorner) {
    // An arrow head; only one diagonal lies inside, and it is the longer one where the notch is shallow.
    Points const arrow{{0, 0, 0}, {5, 2, 0}, {10, 0, 0}, {5, 10, 0}};
    for (std::size_t first = 0; first < 4; ++first) {
        Points points;
        for (std::size_t i = 0; i < 4; ++i) {
            points.push_back(arrow[(first + i) % 4]);
        }
        expectCover(points, "arrow " + std::to_string(first));
        expectCover(turned(points), "turned arrow " + std::to_string(first));
    }
}

TEST(PolygonCutter, polygonsAreCovered) {
    struct Row {
        char const* name;
        Points points;
    };
    Points const square{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    Row const rows[] = {
        {"pentagon with a notch", {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {2, 1, 0}, {0, 4, 0}}},
        {"corner on an edge", {{0, 0, 0}, {2, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}},
        {"first corner on an edge", {{2, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}}},
        {"hole joined to the rim",
         {{0, 0, 0},
          {9, 0, 0},
          {9, 9, 0},
          {0, 9, 0},
          {0, 0, 0},
          {3, 3, 0},
          {3, 6, 0},
          {6, 6, 0},
          {6, 3, 0},
          {3, 3, 0}}},
        {"comb", comb(20)},
        {"star", star(11)},
        {"spiral", spiral(3000)},
    };
    for (Row const& row : rows) {
        expectCover(row.points, row.name);
        expectCover(turned(row.points), row.name);
        Points back(row.points.rbegin(), row.points.rend());
        expectCover(back, std::string(row.name) + ", clockwise");
        for (Vector3<double>& p : back) {
            p = p + Vector3<double>{1e7, -1e7, 1e7};
        }
        expectCover(back, std::string(row.name) + ", far away");
    }
}

TEST(PolygonCutter, largePolygonsTakeLittleTime) {
    expectCover(spiral(5'000), "spiral");
    expectCover(comb(5'000), "comb");
}

TEST(PolygonCutter, polygonsThatCrossThemselvesStillGiveAllTriangles) {
    Points crossed;
    for (int i = 0; i < 50; ++i) {
        crossed.push_back({std::cos(i * 2.0), std::sin(i * 3.0), std::sin(i * 5.0)});
    }
    EXPECT_EQ(cut(crossed).size(), 48U);
    EXPECT_EQ(cut(Points(9, {1, 1, 1})).size(), 7U);
    EXPECT_EQ(cut({{0, 0, 0}, {1e300, 0, 0}, {0, 1e300, 0}, {-1e300, 1, 0}, {0, 1, 5}}).size(), 3U);
}

TEST(PolygonCutter, manyHostilePolygonsShareTheirTime) {
    // Each crosses itself everywhere, so that no corner is an ear for long.
    constexpr unsigned int CORNERS = 600;
    constexpr unsigned int POLYGONS = 100;
    MeshData mesh;
    std::vector<unsigned int> polygon(CORNERS);
    for (unsigned int i = 0; i < CORNERS; ++i) {
        polygon[i] = i;
        mesh.positions.push_back({std::sin(i * i * 0.7), std::cos(i * i * 1.3), 0});
    }
    auto const cut = [&](unsigned int polygons) {
        mesh.triangles.clear();
        mesh.notes.clear();
        PolygonCutter cutter;
        for (unsigned int i = 0; i < polygons; ++i) {
            cutter.addFan(polygon.data(), CORNERS, mesh.triangles);
        }
        cutter.cutFans(mesh);
        EXPECT_EQ(mesh.triangles.size(), std::size_t(polygons) * (CORNERS - 2));
    };
    cut(1);
    EXPECT_TRUE(mesh.notes.empty()) << "one alone has enough";
    if (isAddressSanitized()) {
        cut(4);  // all the time that polygons have takes a minute then
        return;
    }
    cut(POLYGONS);
    ASSERT_EQ(mesh.notes.size(), 1U);
    EXPECT_THAT(mesh.notes[0], testing::HasSubstr("too intricate"));
}

TEST(PolygonCutter, severalPolygonsStayInTheirPlaces) {
    MeshData mesh;
    mesh.positions = {{0, 0, 0}, {5, 2, 0}, {10, 0, 0}, {5, 10, 0}};
    unsigned int const triangle[] = {0, 1, 2};
    unsigned int const quad[] = {0, 1, 2, 3};
    PolygonCutter cutter;
    cutter.addFan(triangle, 3, mesh.triangles);
    cutter.addFan(quad, 4, mesh.triangles);
    cutter.addFan(triangle, 3, mesh.triangles);
    cutter.cutFans(mesh);
    EXPECT_THAT(mesh.triangles,
                ElementsAre(Triangle{0, 1, 2}, Triangle{0, 1, 3}, Triangle{1, 2, 3}, Triangle{0, 1, 2}));
}
