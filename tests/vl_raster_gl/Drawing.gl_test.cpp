#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <set>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glu.h>

// Every drawing as pixels. One unit of eye space is one pixel, its origin the lower left corner of the
// picture. What a drawing must cover is computed here from its geometry: filled outlines and lines, in
// pixels. A pixel more than one pixel inside must be covered, one more than one pixel outside must not; the
// rim is the rasterizer's.

namespace vellum {

namespace {

constexpr double PI = 3.14159265358979323846;
constexpr double RIM = 1.0;  // pixels

// == Expected shapes ==

struct Pixel2 {
    double x;
    double y;
};

using Outline = std::vector<Pixel2>;  ///< Corners of a convex area, counter-clockwise.
using Line = std::array<Pixel2, 2>;

struct Shape {
    std::vector<Outline> areas;
    std::vector<Line> lines;

    Shape& operator+=(Shape const& other) {
        areas.insert(areas.end(), other.areas.begin(), other.areas.end());
        lines.insert(lines.end(), other.lines.begin(), other.lines.end());
        return *this;
    }
};

double turn(Pixel2 const& o, Pixel2 const& a, Pixel2 const& b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

/// The convex hull of some points (monotone chain).
Outline hull(std::vector<Pixel2> points) {
    std::sort(points.begin(), points.end(),
              [](Pixel2 const& a, Pixel2 const& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    Outline result;
    for (int pass = 0; pass < 2; ++pass) {
        std::size_t const first = result.size();
        for (Pixel2 const& p : points) {
            while (result.size() >= first + 2 && turn(result[result.size() - 2], result.back(), p) <= 0) {
                result.pop_back();
            }
            result.push_back(p);
        }
        result.pop_back();
        std::reverse(points.begin(), points.end());
    }
    return result;
}

double distanceToLine(Pixel2 const& p, Line const& line) {
    double const dx = line[1].x - line[0].x;
    double const dy = line[1].y - line[0].y;
    double const square = dx * dx + dy * dy;
    double const t = square == 0 ? 0 : ((p.x - line[0].x) * dx + (p.y - line[0].y) * dy) / square;
    double const clamped = std::min(1.0, std::max(0.0, t));
    return std::hypot(p.x - line[0].x - clamped * dx, p.y - line[0].y - clamped * dy);
}

bool isInside(Pixel2 const& p, Outline const& area) {
    for (std::size_t i = 0; i < area.size(); ++i) {
        if (turn(area[i], area[(i + 1) % area.size()], p) <= 0) {
            return false;
        }
    }
    return area.size() > 2;
}

/// The distance to the outline, negative inside.
double distanceToArea(Pixel2 const& p, Outline const& area) {
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < area.size(); ++i) {
        Line const edge{area[i], area[(i + 1) % area.size()]};
        nearest = std::min(nearest, distanceToLine(p, edge));
    }
    return isInside(p, area) ? -nearest : nearest;
}

double distanceTo(Shape const& shape, Pixel2 const& p) {
    double nearest = std::numeric_limits<double>::infinity();
    for (Outline const& area : shape.areas) {
        nearest = std::min(nearest, distanceToArea(p, area));
    }
    for (Line const& line : shape.lines) {
        nearest = std::min(nearest, distanceToLine(p, line));
    }
    return nearest;
}

// == Pictures ==

constexpr int SIZE = gl_spy::GlTest::width;

using Color = gl_spy::GlTest::Pixel;

struct Picture {
    std::vector<unsigned char> bytes;

    /// x from the left, y from the bottom, as in GL.
    Color at(int x, int y) const {
        Color color{};
        std::copy_n(bytes.begin() + 4 * ((SIZE - 1 - y) * SIZE + x), 4, color.begin());
        return color;
    }
    Color at(Pixel2 const& p) const { return at(int(std::floor(p.x)), int(std::floor(p.y))); }

    bool isCovered(int x, int y) const {
        if (x < 0 || y < 0 || x >= SIZE || y >= SIZE) {
            return false;
        }
        Color const color = at(x, y);
        return color[0] != 0 || color[1] != 0 || color[2] != 0;
    }

    /// A pixel of the 3 x 3 around the point.
    bool isCoveredNear(Pixel2 const& p) const {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if (isCovered(int(std::floor(p.x)) + dx, int(std::floor(p.y)) + dy)) {
                    return true;
                }
            }
        }
        return false;
    }

    int count() const {
        int covered = 0;
        for (int y = 0; y < SIZE; ++y) {
            for (int x = 0; x < SIZE; ++x) {
                covered += isCovered(x, y) ? 1 : 0;
            }
        }
        return covered;
    }
};

/// No pixel that `counts` accepts lies outside the shape, and there are some.
void expectWithin(Picture const& picture, Shape const& shape, std::function<bool(Color const&)> const& counts,
                  double rim = RIM) {
    int outside = 0;
    int inside = 0;
    Pixel2 example{0, 0};
    for (int y = 0; y < SIZE; ++y) {
        for (int x = 0; x < SIZE; ++x) {
            if (!picture.isCovered(x, y) || !counts(picture.at(x, y))) {
                continue;
            }
            Pixel2 const center{x + 0.5, y + 0.5};
            // Pixels inside need no distance, which takes long.
            bool const isWithin = std::any_of(shape.areas.begin(), shape.areas.end(),
                                              [&](Outline const& area) { return isInside(center, area); }) ||
                                  distanceTo(shape, center) <= rim;
            if (!isWithin) {
                ++outside;
                example = center;
            } else {
                ++inside;
            }
        }
    }
    EXPECT_EQ(outside, 0) << "pixels lie outside, for example at " << example.x << ", " << example.y;
    EXPECT_GT(inside, 0) << "nothing was drawn";
}

void expectShape(Picture const& picture, Shape const& shape, double rim = RIM) {
    expectWithin(
        picture, shape, [](Color const&) { return true; }, rim);

    int missing = 0;
    Pixel2 example{0, 0};
    for (Outline const& area : shape.areas) {
        for (int y = 0; y < SIZE; ++y) {
            for (int x = 0; x < SIZE; ++x) {
                Pixel2 const center{x + 0.5, y + 0.5};
                if (!picture.isCovered(x, y) && isInside(center, area) &&
                    distanceToArea(center, area) < -rim) {
                    ++missing;
                    example = center;
                }
            }
        }
    }
    for (Line const& line : shape.lines) {
        double const length = std::hypot(line[1].x - line[0].x, line[1].y - line[0].y);
        int const samples = int(length) + 1;
        for (int i = 0; i < samples; ++i) {
            double const t = (i + 0.5) / samples;
            Pixel2 const p{line[0].x + t * (line[1].x - line[0].x), line[0].y + t * (line[1].y - line[0].y)};
            if (p.x >= 0 && p.y >= 0 && p.x < SIZE && p.y < SIZE && !picture.isCoveredNear(p)) {
                ++missing;
                example = p;
            }
        }
    }
    EXPECT_EQ(missing, 0) << "places are not covered, for example at " << example.x << ", " << example.y;
}

bool isNear(Color const& a, Color const& b, int tolerance) {
    for (std::size_t k = 0; k < 3; ++k) {
        if (std::abs(int(a[k]) - int(b[k])) > tolerance) {
            return false;
        }
    }
    return true;
}

void expectColor(Color const& actual, Color const& expected, int tolerance, std::string const& what) {
    EXPECT_TRUE(isNear(actual, expected, tolerance))
        << what << " is " << int(actual[0]) << " " << int(actual[1]) << " " << int(actual[2]) << ", not "
        << int(expected[0]) << " " << int(expected[1]) << " " << int(expected[2]);
}

// == The view ==

using Space = std::array<double, 3>;

Space space(Vector3<float> const& v) {
    return {double(v.x), double(v.y), double(v.z)};
}

/// A rotation by angles about y and then about x (degrees), a scale, and a place in the picture.
Matrix4<float> viewMatrix(double aboutY, double aboutX, double scale, Pixel2 const& place) {
    double const cy = std::cos(aboutY * PI / 180);
    double const sy = std::sin(aboutY * PI / 180);
    double const cx = std::cos(aboutX * PI / 180);
    double const sx = std::sin(aboutX * PI / 180);
    double const rows[3][3] = {{cy, 0, sy}, {sx * sy, cx, -sx * cy}, {-cx * sy, sx, cx * cy}};
    Matrix4<float> m = Matrix4<float>::identity();
    for (int column = 0; column < 3; ++column) {
        for (int row = 0; row < 3; ++row) {
            m.e[4 * column + row] = float(scale * rows[row][column]);
        }
    }
    m.e[12] = float(place.x);
    m.e[13] = float(place.y);
    return m;
}

/// A view from the upper right: x runs to the right, y up, z to the lower left.
Matrix4<float> const OBLIQUE = viewMatrix(-35, 25, 70, {118, 108});
/// Straight from the front, 70 pixels for one unit.
Matrix4<float> const FRONT = viewMatrix(0, 0, 70, {128, 128});

Space eye(Matrix4<float> const& view, Space const& p) {
    Space result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = double(view.e[row]) * p[0] + double(view.e[4 + row]) * p[1] +
                      double(view.e[8 + row]) * p[2] + double(view.e[12 + row]);
    }
    return result;
}

Pixel2 seen(Matrix4<float> const& view, Space const& p) {
    Space const e = eye(view, p);
    return {e[0], e[1]};
}

Line seenLine(Matrix4<float> const& view, Space const& a, Space const& b) {
    return {seen(view, a), seen(view, b)};
}

Outline seenHull(Matrix4<float> const& view, std::vector<Space> const& points) {
    std::vector<Pixel2> flat;
    for (Space const& p : points) {
        flat.push_back(seen(view, p));
    }
    return hull(flat);
}

/// A curve as lines between its points; closed or open.
std::vector<Line> curve(Matrix4<float> const& view, std::vector<Space> const& points, bool isClosed) {
    std::vector<Line> lines;
    for (std::size_t i = 1; i < points.size(); ++i) {
        lines.push_back(seenLine(view, points[i - 1], points[i]));
    }
    if (isClosed) {
        lines.push_back(seenLine(view, points.back(), points.front()));
    }
    return lines;
}

std::vector<Space> boxCorners(Space const& min, Space const& max) {
    std::vector<Space> corners;
    for (int i = 0; i < 8; ++i) {
        corners.push_back(
            {(i & 1) != 0 ? max[0] : min[0], (i & 2) != 0 ? max[1] : min[1], (i & 4) != 0 ? max[2] : min[2]});
    }
    return corners;
}

std::vector<Line> edges(Matrix4<float> const& view, std::vector<Space> const& corners) {
    std::vector<Line> lines;
    for (std::size_t i = 0; i < 8; ++i) {
        for (std::size_t const bit : {1U, 2U, 4U}) {
            if ((i & bit) == 0) {
                lines.push_back(seenLine(view, corners[i], corners[i | bit]));
            }
        }
    }
    return lines;
}

/// Axis directions, cyclic: the circle across axis k goes through the two others.
Space unit(std::size_t axis, double length = 1) {
    Space p{0, 0, 0};
    p[axis] = length;
    return p;
}

/// Points of a circle across an axis.
std::vector<Space> circleAcross(std::size_t axis, double radius, double along = 0) {
    std::vector<Space> points;
    for (int i = 0; i < 360; ++i) {
        Space p{};
        p[axis] = along;
        p[(axis + 1) % 3] = radius * std::cos(i * PI / 180);
        p[(axis + 2) % 3] = radius * std::sin(i * PI / 180);
        points.push_back(p);
    }
    return points;
}

/// An arrow handle: a cone from 0.9 and a segment to 1.
Shape arrowHandle(Matrix4<float> const& view, std::size_t axis, double size) {
    std::vector<Space> cone = circleAcross(axis, 0.1, 0.9);
    cone.push_back(unit(axis, 0.9 + size));
    return {{seenHull(view, cone)}, {seenLine(view, {0, 0, 0}, unit(axis))}};
}

Shape boxHandle(Matrix4<float> const& view, std::size_t axis, double size) {
    Space min{-size, -size, -size};
    Space max{size, size, size};
    if (axis < 3) {
        min[axis] = 1 - 2 * size;
        max[axis] = 1;
    }
    Shape shape{{seenHull(view, boxCorners(min, max))}, {}};
    if (axis < 3) {
        shape.lines.push_back(seenLine(view, {0, 0, 0}, unit(axis)));
    }
    return shape;
}

constexpr Tuple3<Color4<float>> COLORS{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
constexpr Tuple4<Color4<float>> FOUR_COLORS{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}};

std::function<bool(Color const&)> onlyChannel(std::size_t channel) {
    return [channel](Color const& color) {
        return color[channel] != 0 && color[(channel + 1) % 3] == 0 && color[(channel + 2) % 3] == 0;
    };
}

/// A turned and moved frame for the circles that take one.
Matrix4<float> const IDENTITY = Matrix4<float>::identity();

class Drawing_drawn_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        if (HasFatalFailure()) {
            return;
        }
        glMatrixMode(GL_PROJECTION);
        glOrtho(0, width, 0, height, -256, 256);
        glMatrixMode(GL_MODELVIEW);
        core.setColor({1, 1, 1, 1});
    }

    Picture picture() { return {readPixels()}; }

    void clear() { glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT); }

    /// White light from the viewer; a surface is as bright as it is turned toward the viewer.
    void light() {
        GLfloat const position[] = {0, 0, 1, 0};
        GLfloat const dark[] = {0, 0, 0, 1};
        glPushMatrix();
        glLoadIdentity();
        glLightfv(GL_LIGHT0, GL_POSITION, position);
        glPopMatrix();
        glLightModelfv(GL_LIGHT_MODEL_AMBIENT, dark);
        glEnable(GL_NORMALIZE);
        core.enableLighting();
        core.enableLight_0();
        core.enableColorMaterial();
        core.setDepthTest({DEPTH_LESS, true});
    }

    Core_RL_GL core;
};

}  // namespace

// == Segments and points ==

TEST_F(Drawing_drawn_test, segmentsRunBetweenTheirEnds) {
    core.renderSegment2({20, 60.5F}, {200, 30});
    core.renderSegment3({30, 20, 5}, {90, 240, -5});
    expectShape(picture(), {{}, {Line{{{20, 60.5}, {200, 30}}}, Line{{{30, 20}, {90, 240}}}}});
}

TEST_F(Drawing_drawn_test, stippledSegmentIsHalfGapsOfThreePixels) {
    core.renderSegmentStipple3({20, 100.5F, 0}, {212, 100.5F, 0});
    Picture const drawn = picture();
    EXPECT_NEAR(drawn.count(), 96, 3) << savePicture("stippled_segment");
    int longest = 0;
    int run = 0;
    for (int x = 20; x < 212; ++x) {
        run = drawn.isCovered(x, 100) ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    EXPECT_EQ(longest, 3);
}

TEST_F(Drawing_drawn_test, deliberatelyStrokeShowsOnlyHalfBeforeItsCenter) {
    core.renderStroke3({128, 100.5F, 0}, {1, 0, 0}, 80);
    expectShape(picture(), {{}, {Line{{{48, 100.5}, {128, 100.5}}}}});
}

TEST_F(Drawing_drawn_test, pointsHavePointSize) {
    core.setPointSize(5);
    core.renderPoint2({50.5F, 60.5F});
    core.renderPoint3({150.5F, 160.5F, 3});
    core.renderPoint3_Begin();
    core.renderPoint3_scoped({200.5F, 20.5F, 0});
    core.renderPoint3_End();
    Picture const drawn = picture();
    EXPECT_EQ(drawn.count(), 3 * 25);
    for (Pixel2 const& center : {Pixel2{50, 60}, Pixel2{150, 160}, Pixel2{200, 20}}) {
        for (int d : {-2, 2}) {
            EXPECT_TRUE(drawn.isCovered(int(center.x) + d, int(center.y) + d));
            EXPECT_TRUE(drawn.isCovered(int(center.x) - d, int(center.y) + d));
        }
    }
}

TEST_F(Drawing_drawn_test, crossIsThreeSegmentsThroughOrigin) {
    core.setTransform(OBLIQUE);
    core.renderCross3();
    Shape shape;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        shape.lines.push_back(seenLine(OBLIQUE, unit(axis, -1), unit(axis)));
    }
    expectShape(picture(), shape);
}

TEST_F(Drawing_drawn_test, latticeIsItsPoints) {
    core.renderBox3Points_asPoints(Box3Points<double>{{4, 3, 2}, {40.5, 50.5, 0}, {30, 40, 10}});
    Picture const drawn = picture();
    // The points of the two layers lie behind each other.
    EXPECT_EQ(drawn.count(), 12);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_TRUE(drawn.isCovered(40 + 30 * i, 50 + 40 * j)) << i << " " << j;
        }
    }
}

// == Boxes ==

TEST_F(Drawing_drawn_test, filledBox2CoversItsRectangle) {
    core.render(Box2<float>{{30, 50}, {200, 90}}, false);
    EXPECT_EQ(picture().count(), 170 * 40);
    clear();
    core.renderBox2({100, 100}, 20);
    EXPECT_EQ(picture().count(), 40 * 40);
    expectShape(picture(), {{hull({{80, 80}, {120, 80}, {120, 120}, {80, 120}})}, {}});
}

TEST_F(Drawing_drawn_test, deliberatelyWireBox2ShowsTwoEdges) {
    core.render(Box2<float>{{30, 50.5F}, {200, 90.5F}}, true);
    expectShape(picture(), {{}, {Line{{{30, 50.5}, {200, 50.5}}}, Line{{{200, 90.5}, {30, 90.5}}}}});
}

TEST_F(Drawing_drawn_test, filledBox3CoversItsSilhouette) {
    core.setTransform(OBLIQUE);
    core.render(Box3<float>{{-0.8F, -0.5F, -0.6F}, {0.9F, 0.7F, 0.3F}}, false);
    expectShape(picture(), {{seenHull(OBLIQUE, boxCorners({-0.8, -0.5, -0.6}, {0.9, 0.7, 0.3}))}, {}});
}

TEST_F(Drawing_drawn_test, wireBox3ShowsTwelveEdges) {
    core.setTransform(OBLIQUE);
    core.render(Box3<double>{{-0.8, -0.5, -0.6}, {0.9, 0.7, 0.3}}, true);
    expectShape(picture(), {{}, edges(OBLIQUE, boxCorners({-0.8, -0.5, -0.6}, {0.9, 0.7, 0.3}))});
}

TEST_F(Drawing_drawn_test, facesOfBoxAreShadedByTheirNormalsAndWoundOutwards) {
    light();
    core.setTransform(OBLIQUE);
    core.setCulling({true, true});
    core.render(Box3<float>{{-1, -1, -1}, {1, 1, 1}}, false);
    Picture const drawn = picture();
    expectShape(drawn, {{seenHull(OBLIQUE, boxCorners({-1, -1, -1}, {1, 1, 1}))}, {}});
    // The three faces toward the viewer; a face is as bright as its normal's third component in eye space.
    int faces = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (double const side : {-1.0, 1.0}) {
            double const brightness = side * double(OBLIQUE.e[4 * axis + 2]) / 70;
            if (brightness < 0) {
                continue;
            }
            ++faces;
            auto const value = static_cast<unsigned char>(std::lround(255 * brightness));
            expectColor(drawn.at(seen(OBLIQUE, unit(axis, side))), {value, value, value, 255}, 2,
                        "face " + std::to_string(axis));
        }
    }
    EXPECT_EQ(faces, 3);
}

TEST_F(Drawing_drawn_test, orientedBoxCoversItsTurnedSilhouetteAndItsEdges) {
    float const s = std::sqrt(0.5F);
    Obb3<float> const box{{s, s, 0}, 0.5F, {-s, s, 0}, 0.9F, {0, 0, 1}, 0.3F, {0.25F, 0, 0}};
    std::vector<Space> corners;
    for (unsigned int i = 0; i < 8; ++i) {
        double const u = (i & 1U) != 0 ? 0.5 : -0.5;
        double const v = (i & 2U) != 0 ? 0.9 : -0.9;
        double const r = std::sqrt(0.5);
        corners.push_back({0.25 + r * (u - v), r * (u + v), (i & 4U) != 0 ? 0.3 : -0.3});
    }
    core.setTransform(OBLIQUE);
    core.render(box, false);
    expectShape(picture(), {{seenHull(OBLIQUE, corners)}, {}});
    clear();
    core.render(box, true);
    expectShape(picture(), {{}, edges(OBLIQUE, corners)});
}

TEST_F(Drawing_drawn_test, deliberatelyOrientedBoxIsShadedAsIfItWereUpright) {
    light();
    core.setTransform(FRONT);
    // A quarter turn about y brings another side to the front; the normal sent with it points sideways.
    core.render(Obb3<float>{{0, 0, -1}, 1, {0, 1, 0}, 1, {1, 0, 0}, 1, {0, 0, 0}}, false);
    expectColor(picture().at(128, 128), {0, 0, 0, 255}, 1, "the front, lit as a side");
}

TEST_F(Drawing_drawn_test, coloredBoxRunsFromCornerToCorner) {
    core.setTransform(FRONT);
    core.setDepthTest({DEPTH_LESS, true});
    Vector3<float> const red{1, 0, 0};
    Vector3<float> const green{0, 1, 0};
    Vector3<float> const blue{0, 0, 1};
    Vector3<float> const yellow{1, 1, 0};
    Vector3<float> const hidden{1, 1, 1};
    core.render(Box3<float>{{-1, -1, -1}, {1, 1, 1}},
                {hidden, hidden, hidden, hidden, red, green, blue, yellow}, false);
    Picture const drawn = picture();
    expectColor(drawn.at(60, 60), {255, 0, 0, 255}, 12, "lower left");
    expectColor(drawn.at(195, 60), {0, 255, 0, 255}, 12, "lower right");
    expectColor(drawn.at(60, 195), {0, 0, 255, 255}, 12, "upper left");
    expectColor(drawn.at(195, 195), {255, 255, 0, 255}, 12, "upper right");
}

TEST_F(Drawing_drawn_test, cubesAreFilledWhateverFillingIs) {
    core.pushFillingFront(FILLING_LINES);
    core.pushFillingBack(FILLING_LINES);
    core.setTransform(OBLIQUE);
    core.renderBox3(5U, Color4<float>{1, 0, 0, 1}, 0.75F);
    Picture const drawn = picture();
    expectShape(drawn, {{seenHull(OBLIQUE, boxCorners({-0.75, -0.75, -0.75}, {0.75, 0.75, 0.75}))}, {}});
    expectColor(drawn.at(seen(OBLIQUE, {0, 0, 0})), {255, 0, 0, 255}, 0, "the middle");
    clear();
    core.popFillingFront();
    core.popFillingBack();
    core.renderBox3(Vector3<float>{0.5F, 0, 0}, 0.5F);
    expectShape(picture(), {{seenHull(OBLIQUE, boxCorners({0, -0.5, -0.5}, {1, 0.5, 0.5}))}, {}});
}

// == Quads, rhombi and triangles ==

namespace {

/// Four colored quarters; the first row of the image is the upper one.
unsigned int makeQuarters(Core_RL& layer) {
    constexpr int n = 64;
    std::vector<unsigned char> pixels;
    for (int row = 0; row < n; ++row) {
        for (int column = 0; column < n; ++column) {
            bool const isLower = row >= n / 2;
            bool const isRight = column >= n / 2;
            pixels.push_back(!isLower || isRight ? 255 : 0);  // white, red; blue, yellow
            pixels.push_back((!isLower && !isRight) || (isLower && isRight) ? 255 : 0);
            pixels.push_back(!isRight ? 255 : 0);
            pixels.push_back(255);
        }
    }
    unsigned int texture = 0;
    layer.loadTextureColor(n, n, pixels.data(), texture, TEXTURE_CLAMP);
    return texture;
}

constexpr Color WHITE{255, 255, 255, 255};
constexpr Color RED{255, 0, 0, 255};
constexpr Color BLUE{0, 0, 255, 255};
constexpr Color YELLOW{255, 255, 0, 255};

}  // namespace

TEST_F(Drawing_drawn_test, texturedQuadShowsImageUpright) {
    unsigned int const texture = makeQuarters(core);
    core.setTransform(FRONT);
    core.renderQuad3(texture);
    Picture const drawn = picture();
    expectShape(drawn, {{hull({{58, 58}, {198, 58}, {198, 198}, {58, 198}})}, {}});
    expectColor(drawn.at(93, 163), WHITE, 2, "upper left");
    expectColor(drawn.at(163, 163), RED, 2, "upper right");
    expectColor(drawn.at(93, 93), BLUE, 2, "lower left");
    expectColor(drawn.at(163, 93), YELLOW, 2, "lower right");
    core.destroyTexture(texture);
}

TEST_F(Drawing_drawn_test, texturedRhombusShowsImageWithItsFirstRowBelow) {
    unsigned int const texture = makeQuarters(core);
    core.setTransform(FRONT);
    core.renderRhombus3(texture);
    Picture const drawn = picture();
    expectShape(drawn, {{hull({{128, 58}, {198, 128}, {128, 198}, {58, 128}})}, {}});
    expectColor(drawn.at(105, 105), WHITE, 2, "lower left");
    expectColor(drawn.at(150, 105), RED, 2, "lower right");
    expectColor(drawn.at(105, 150), BLUE, 2, "upper left");
    expectColor(drawn.at(150, 150), YELLOW, 2, "upper right");
    core.destroyTexture(texture);
}

TEST_F(Drawing_drawn_test, plainRhombusAndQuadAreFilledWithCurrentColor) {
    core.setTransform(FRONT);
    core.setColor({0, 1, 0, 1});
    core.renderRhombus3();
    expectShape(picture(), {{hull({{128, 58}, {198, 128}, {128, 198}, {58, 128}})}, {}});
    expectColor(picture().at(128, 128), {0, 255, 0, 255}, 0, "the middle");
    clear();
    core.renderQuad3({-1, -1, 0}, {1, -0.5F, 0}, {0.5F, 1, 0}, {-1, 0.5F, 0});
    expectShape(picture(), {{hull({{58, 58}, {198, 93}, {163, 198}, {58, 163}})}, {}});
}

TEST_F(Drawing_drawn_test, trianglesAreShadedByTheirFaceNormal) {
    light();
    core.setTransform(FRONT);
    // Tilted by 60 degrees about y: half as bright. The next block holds two triangles.
    core.renderTriangle({-1, -1, 0}, {-0.25F, -1, 0.75F * std::sqrt(3.0F)}, {-1, 1, 0});
    core.begin(Primitive::TRIANGLES);
    core.renderTriangleOptimized({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    core.renderTriangleOptimized({0, 0, 0}, {0, -1, 0}, {1, 0, 0});
    core.end();
    Picture const drawn = picture();
    expectShape(drawn,
                {{hull({{58, 58}, {110.5, 58}, {58, 198}}), hull({{128, 58}, {198, 128}, {128, 198}})}, {}});
    expectColor(drawn.at(70, 100), {128, 128, 128, 255}, 2, "the tilted triangle");
    expectColor(drawn.at(140, 140), WHITE, 1, "the triangle across the view");
}

TEST_F(Drawing_drawn_test, triangleWithNormalsIsShadedSmoothly) {
    light();
    core.setTransform(FRONT);
    // Turned away at the left corner only.
    core.renderTriangle({-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {0, 0, 1});
    Picture const drawn = picture();
    EXPECT_LT(drawn.at(65, 60)[0], 30);
    EXPECT_GT(drawn.at(190, 100)[0], 225);
    EXPECT_NEAR(drawn.at(128, 70)[0], 128, 6);
}

// == Plane grids, circles and ellipses ==

TEST_F(Drawing_drawn_test, planeGridIsRuledInBothDirections) {
    core.setTransform(OBLIQUE);
    core.renderPlane3({{0, 1, 0}, 0.25F}, 2, 4);
    Shape shape;
    for (int i = 0; i <= 4; ++i) {
        double const offset = -1 + 0.5 * i;
        shape.lines.push_back(seenLine(OBLIQUE, {-1, -0.25, offset}, {1, -0.25, offset}));
        shape.lines.push_back(seenLine(OBLIQUE, {offset, -0.25, -1}, {offset, -0.25, 1}));
    }
    expectShape(picture(), shape);
}

TEST_F(Drawing_drawn_test, circleIsClosedAndRound) {
    core.setTransform(FRONT);
    core.renderCircle3(1.5F);
    expectShape(picture(), {{}, curve(FRONT, circleAcross(2, 1.5), true)});
}

TEST_F(Drawing_drawn_test, cameraFacingCircleStaysRoundInAnyView) {
    core.setTransform(OBLIQUE);
    Matrix4<float> frame = viewMatrix(50, 70, 3, {0.5, 0.25});
    core.renderCircleCameraFacing3(frame, Matrix3<float>{}, 20, {0, 1, 0, 1}, 2);
    // The place is that of the frame; the size is scale times radius in eye space.
    Pixel2 const center = seen(OBLIQUE, {0.5, 0.25, 0});
    std::vector<Line> circle = curve(IDENTITY, circleAcross(2, 40), true);
    for (Line& line : circle) {
        for (Pixel2& p : line) {
            p = {p.x + center.x, p.y + center.y};
        }
    }
    Picture const drawn = picture();
    expectShape(drawn, {{}, circle});
    expectWithin(drawn, {{}, circle}, onlyChannel(1));
}

TEST_F(Drawing_drawn_test, ellipsesFollowTheirHalfAxes) {
    core.setTransform(OBLIQUE);
    core.renderEllipse3_XY({0.25F, 0, 0}, 1, 0.5F);
    core.renderEllipse3_XZ({0, 0.5F, 0}, 0.5F, 0.75F);
    core.renderEllipse3_YZ({0, 0, 0.25F}, 1, 0.25F);
    core.renderEllipse3({0, 0, 0}, {1, 0.5F, 0}, {0, 0.5F, -1});
    std::vector<Space> points[4];
    for (int i = 0; i < 30; ++i) {
        double const c = std::cos(i * 2 * PI / 29);
        double const s = std::sin(i * 2 * PI / 29);
        points[0].push_back({0.25 + c, 0.5 * s, 0});
        points[1].push_back({0.5 * c, 0.5, 0.75 * s});
        points[2].push_back({0, c, 0.25 + 0.25 * s});
        points[3].push_back({s, 0.5 * s + 0.5 * c, -c});
    }
    Shape shape;
    for (std::vector<Space> const& ellipse : points) {
        shape += {{}, curve(OBLIQUE, ellipse, false)};
    }
    expectShape(picture(), shape);
}

namespace {

/// The open arcs of a ring whose points all satisfy a condition; the step from 359 to 0 degrees is never
/// drawn.
Shape ringWhere(std::vector<Space> const& ring, Matrix4<float> const& view,
                std::function<bool(Space const&)> const& holds) {
    Shape shape;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        if (holds(ring[i - 1]) && holds(ring[i])) {
            shape.lines.push_back(seenLine(view, ring[i - 1], ring[i]));
        }
    }
    return shape;
}

/// The direction in which the viewer of a view looks, in the space of the scene.
Vector3<float> lookingDirection(Matrix4<float> const& view) {
    return normalized(Vector3<float>{-view.e[2], -view.e[6], -view.e[10]});
}

/// Points of the ring of an axis in the order of drawing.
std::vector<Space> gizmoRing(std::size_t axis, double radius) {
    std::vector<Space> points;
    for (int i = 0; i < 360; ++i) {
        double const c = radius * std::cos(i * PI / 180);
        double const s = radius * std::sin(i * PI / 180);
        points.push_back(axis == 0 ? Space{0, s, -c} : axis == 1 ? Space{c, 0, -s} : Space{c, s, 0});
    }
    return points;
}

}  // namespace

TEST_F(Drawing_drawn_test, rotateGizmoShowsHalvesTowardViewer) {
    Vector3<float> const direction = lookingDirection(OBLIQUE);
    core.setTransform(OBLIQUE);
    core.renderAxesCircleCulled3(0, 1, 2, direction, IDENTITY, 1.25F, COLORS, 1);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Shape const half = ringWhere(gizmoRing(axis, 1.25), OBLIQUE, [&](Space const& p) {
            Space const d = space(direction);
            return p[0] * d[0] + p[1] * d[1] + p[2] * d[2] < -0.01;
        });
        all += half;
        expectWithin(drawn, half, onlyChannel(axis));
    }
    expectShape(drawn, all);
    // The half behind is missing: the far end of the ring across y.
    Pixel2 const far = seen(OBLIQUE, {-1.25 * std::sin(35 * PI / 180), 0, -1.25 * std::cos(35 * PI / 180)});
    EXPECT_FALSE(drawn.isCoveredNear(far)) << savePicture("rotate_gizmo");
}

TEST_F(Drawing_drawn_test, rotateGizmoWithItsFarHalfShowsAllRings) {
    core.setTransform(OBLIQUE);
    core.pushLineWidth(1);
    core.renderAxesCircleCulledStipple3(0, 1, 2, lookingDirection(OBLIQUE), IDENTITY, 1, COLORS, 1.25F);
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        all += {{}, curve(OBLIQUE, gizmoRing(axis, 1.25), true)};
    }
    // One degree is one and a half pixels here, so that the gaps at the rim are within the tolerance.
    expectShape(picture(), all);
}

TEST_F(Drawing_drawn_test, tapeRingIsBandWithPointedGapsAtQuarters) {
    // Seen along y, so that the ring's axis z points up.
    Matrix4<float> const side{{70, 0, 0, 0, 0, 0, 70, 0, 0, 70, 0, 0, 128, 128, 0, 1}};
    core.setTransform(side);
    core.renderAxisCircleTape3(VL_AXIS_Z, 1, 0.5F);
    Picture const drawn = picture();
    expectWithin(drawn, {{hull({{58, 110.5}, {198, 110.5}, {198, 145.5}, {58, 145.5}})}, {}},
                 [](Color const&) { return true; });
    for (double const degrees : {10.0, 45.0, 80.0, 100.0, 135.0, 170.0}) {
        double const x = 128 + 70 * std::cos(degrees * PI / 180);
        EXPECT_TRUE(drawn.isCovered(int(x), 143)) << degrees << savePicture("tape_ring");
        EXPECT_TRUE(drawn.isCovered(int(x), 112)) << degrees;
    }
    // In the gap at 90 degrees only the points of the caps remain.
    EXPECT_FALSE(drawn.isCovered(128, 140));
    EXPECT_FALSE(drawn.isCovered(128, 116));
    EXPECT_TRUE(drawn.isCovered(131, 128));
    EXPECT_TRUE(drawn.isCovered(124, 128));
}

TEST_F(Drawing_drawn_test, tapeSetShowsThreeRings) {
    core.setTransform(OBLIQUE);
    core.renderAxesCircleTape3(0, 1, 2, COLORS, 1.25F, 0.25F);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Shape band;
        std::vector<Space> const low = circleAcross(axis, 1.25, -0.125);
        std::vector<Space> const high = circleAcross(axis, 1.25, 0.125);
        for (std::size_t i = 0; i < 360; i += 5) {
            std::size_t const j = (i + 5) % 360;
            band.areas.push_back(seenHull(OBLIQUE, {low[i], high[i], low[j], high[j]}));
        }
        expectWithin(drawn, band, onlyChannel(axis));
        for (int const degrees : {20, 70, 110, 160, 200, 250, 290, 340}) {
            Space const p = circleAcross(axis, 1.25)[std::size_t(degrees)];
            EXPECT_TRUE(drawn.isCoveredNear(seen(OBLIQUE, p))) << "ring " << axis << " at " << degrees;
        }
    }
}

// == Gizmos ==

TEST_F(Drawing_drawn_test, moveGizmoIsArrowOnEachAxisInItsColor) {
    core.pushFillingFront(FILLING_LINES);  // the handles are filled all the same
    core.setTransform(OBLIQUE);
    core.renderAxesArrow3(0, 1, 2, COLORS, 0.4F);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Shape const handle = arrowHandle(OBLIQUE, axis, 0.4);
        all += handle;
        expectWithin(drawn, handle, onlyChannel(axis), 1.5);
    }
    // The cone has ten sides, which lie up to a third of a pixel inside the circle.
    expectShape(drawn, all, 1.5);
}

TEST_F(Drawing_drawn_test, stippledMoveGizmosHaveDashedSegments) {
    core.setTransform(OBLIQUE);
    core.renderAxesArrow3(0, 1, 2, COLORS, 0.4F);
    int const whole = picture().count();
    clear();
    core.renderAxesArrowStipple3(0, 1, 2, COLORS, 0.4F);
    Picture const named = picture();
    clear();
    core.renderAxesArrowStipple3(COLORS, 0.4F);
    Picture const unnamed = picture();
    EXPECT_EQ(named.bytes, unnamed.bytes);
    EXPECT_LT(named.count(), whole - 50);
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        all += arrowHandle(OBLIQUE, axis, 0.4);
    }
    expectWithin(
        named, all, [](Color const&) { return true; }, 1.5);
}

TEST_F(Drawing_drawn_test, scaleGizmoIsBoxOnEachAxisAndOneAtCenter) {
    core.setTransform(OBLIQUE);
    core.renderAxesBox3(0, 1, 2, 3, FOUR_COLORS, 0.15F);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t axis = 0; axis < 4; ++axis) {
        all += boxHandle(OBLIQUE, axis, 0.15);
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        expectWithin(drawn, boxHandle(OBLIQUE, axis, 0.15), onlyChannel(axis));
    }
    expectShape(drawn, all);
    expectColor(drawn.at(seen(OBLIQUE, {0, 0, 0})), WHITE, 0, "the center");

    clear();
    core.renderAxesBox3(0, 1, 2, COLORS, 0.15F);
    Shape three;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        three += boxHandle(OBLIQUE, axis, 0.15);
    }
    expectShape(picture(), three);
}

TEST_F(Drawing_drawn_test, circleGizmoIsCircleAcrossEachAxis) {
    core.setTransform(OBLIQUE);
    core.renderAxesCircle3(0, 1, 2, COLORS, 1.25F);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Shape const ring{{}, curve(OBLIQUE, circleAcross(axis, 1.25), true)};
        all += ring;
        expectWithin(drawn, ring, onlyChannel(axis));
    }
    expectShape(drawn, all);
    int const whole = drawn.count();
    clear();
    core.renderAxesCircleStipple3(0, 1, 2, COLORS, 1.25F);
    expectWithin(picture(), all, [](Color const&) { return true; });
    EXPECT_NEAR(picture().count(), whole / 2, whole / 10);
}

TEST_F(Drawing_drawn_test, planeGizmoIsSquareInEachPlane) {
    core.setTransform(OBLIQUE);
    core.renderAxesPlane3(0, 1, 2, COLORS, 0.8F);
    Picture const drawn = picture();
    double const s = 0.8;
    std::array<Outline, 3> const squares{{seenHull(OBLIQUE, {{0, 0, 0}, {s, 0, 0}, {s, s, 0}, {0, s, 0}}),
                                          seenHull(OBLIQUE, {{0, 0, 0}, {0, s, 0}, {0, s, s}, {0, 0, s}}),
                                          seenHull(OBLIQUE, {{0, 0, 0}, {s, 0, 0}, {s, 0, s}, {0, 0, s}})}};
    expectShape(drawn, {{squares.begin(), squares.end()}, {}});
    for (std::size_t i = 0; i < 3; ++i) {
        expectWithin(drawn, {{squares[i]}, {}}, onlyChannel(i));
    }
}

// == Arrows ==

namespace {

/// The pyramid of an arrow's head along x, the tip at `tip`.
std::vector<Space> headAlongX(double tip, double length) {
    double const w = length * 0.2;
    double const b = tip - length;
    return {{tip, 0, 0}, {b, -w, -w}, {b, w, -w}, {b, w, w}, {b, -w, w}};
}

}  // namespace

TEST_F(Drawing_drawn_test, arrowIsShaftHeadAndTailBox) {
    core.setTransform(OBLIQUE);
    core.renderArrow3({-1, 0, 0}, {1, 0, 0}, 0.5F, true);
    expectShape(picture(), {{seenHull(OBLIQUE, headAlongX(1, 0.5)),
                             seenHull(OBLIQUE, boxCorners({-1.5, -0.5, -0.5}, {-0.5, 0.5, 0.5}))},
                            {seenLine(OBLIQUE, {-1, 0, 0}, {1, 0, 0})}});
    clear();
    core.renderArrow3({-1, 0, 0}, {1, 0, 0}, 10, false);
    expectShape(picture(),
                {{seenHull(OBLIQUE, headAlongX(1, 2 * 0.333))}, {seenLine(OBLIQUE, {-1, 0, 0}, {1, 0, 0})}});
}

TEST_F(Drawing_drawn_test, arrowsShowTheirDarkerBaseFromBehind) {
    // Looking along the arrow from its tail.
    Matrix4<float> const behind{{0, 0, -70, 0, 0, 70, 0, 0, 70, 0, 0, 0, 128, 128, 0, 1}};
    core.setTransform(behind);
    core.setDepthTest({DEPTH_LESS, true});
    core.setColor({1, 1, 1, 1});
    core.renderArrow3({0, 0, 0}, {3, 0, 0}, 10, false);
    auto const shade = [](double factor) {
        auto const value = static_cast<unsigned char>(std::lround(255 * factor));
        return Color{value, value, value, 255};
    };
    expectColor(picture().at(134, 134), shade(0.75), 1, "the base of a single arrow");

    clear();
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;
    core.createBuffers_forRenderArrow3({{0, 0, 0}}, {{3, 0, 0}}, {{1, 1, 1, 1}}, 1, vertices, triangles,
                                       lines, quads, colors);
    core.renderArrow3_usingBuffers(vertices, triangles, lines, quads, colors);
    expectColor(picture().at(134, 134), shade(0.8), 1, "the base of an arrow from buffers");
}

TEST_F(Drawing_drawn_test, arrowHeadIsLitFromOutside) {
    light();
    core.setTransform(OBLIQUE);
    core.setCulling({true, true});
    core.renderArrow3({-1, 0, 0}, {1, 0, 0}, 0.7F, false);
    // Only outward faces are left, and they close the silhouette.
    Picture const drawn = picture();
    expectWithin(drawn,
                 {{seenHull(OBLIQUE, headAlongX(1, 2 * 0.333))}, {seenLine(OBLIQUE, {-1, 0, 0}, {1, 0, 0})}},
                 [](Color const&) { return true; });
    expectShape(drawn, {{seenHull(OBLIQUE, headAlongX(1, 2 * 0.333))},
                        {seenLine(OBLIQUE, {-1, 0, 0}, {0.334, 0, 0})}});
}

TEST_F(Drawing_drawn_test, arrowsFromBuffersStandAtTheirPositions) {
    Array<Vector3<float>> vertices;
    Array<unsigned int> triangles;
    Array<unsigned int> lines;
    Array<unsigned int> quads;
    Array<Color4<float>> colors;
    core.createBuffers_forRenderArrow3(
        {{-1, -1, 0}, {-1, 0, 0}, {-1, 1, 0}}, {{1, 0, 0}, {1, 0, 0}, {0.5F, 0, 0}},
        {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}}, 2, vertices, triangles, lines, quads, colors);
    core.setTransform(OBLIQUE);
    core.renderArrow3_usingBuffers(vertices, triangles, lines, quads, colors);
    Picture const drawn = picture();
    Shape all;
    for (std::size_t i = 0; i < 3; ++i) {
        double const length = i == 2 ? 1 : 2;
        double const y = double(i) - 1;
        std::vector<Space> head = headAlongX(length - 1, length * 0.333);
        for (Space& p : head) {
            p[1] += y;
        }
        Shape const arrow{{seenHull(OBLIQUE, head)}, {seenLine(OBLIQUE, {-1, y, 0}, {length - 1, y, 0})}};
        all += arrow;
        expectWithin(drawn, arrow, onlyChannel(i));
    }
    expectShape(drawn, all);
}

TEST_F(Drawing_drawn_test, unitArrowPointsDown) {
    core.setTransform(OBLIQUE);
    core.renderUnitArrow3();
    Shape shape;
    double const s = 0.05;
    std::vector<Space> const square{{s, -1, s}, {-s, -1, s}, {-s, -1, -s}, {s, -1, -s}};
    shape.lines = curve(OBLIQUE, square, true);
    for (Space const& corner : square) {
        shape.lines.push_back(seenLine(OBLIQUE, corner, {0, -1.2, 0}));
    }
    shape.lines.push_back(seenLine(OBLIQUE, {0, 0, 0}, {0, -1.2, 0}));
    expectShape(picture(), shape);
}

TEST_F(Drawing_drawn_test, flatArrowHasTwoBarbs) {
    core.renderArrow2({40, 60}, {220, 150}, 0.25F);
    double const length = std::hypot(180, 90);
    Shape shape{{}, {Line{{{40, 60}, {220, 150}}}}};
    for (double const side : {-1.0, 1.0}) {
        double const x = -180 - side * 45;
        double const y = -90 + side * 90;
        double const scale = 0.25 * length / std::hypot(x, y);
        shape.lines.push_back(Line{{{220 + x * scale, 150 + y * scale}, {220, 150}}});
    }
    expectShape(picture(), shape);
}

// == Drawings composed by the base ==

TEST_F(Drawing_drawn_test, sphereIsRoundShadedDisc) {
    light();
    core.setTransform(OBLIQUE);
    core.setCulling({true, true});
    core.renderSphere({0.25F, 0, 0}, 1);
    Picture const drawn = picture();
    Pixel2 const center = seen(OBLIQUE, {0.25, 0, 0});
    Outline disc;
    for (int i = 0; i < 360; ++i) {
        disc.push_back({center.x + 70 * std::cos(i * PI / 180), center.y + 70 * std::sin(i * PI / 180)});
    }
    // Its facets lie up to a pixel inside the circle.
    expectShape(drawn, {{disc}, {}}, 2.5);
    int worst = 0;
    for (int y = -60; y <= 60; y += 4) {
        for (int x = -60; x <= 60; x += 4) {
            double const square = (x * x + y * y) / 4900.0;
            if (square > 0.75) {
                continue;
            }
            int const actual = drawn.at(Pixel2{center.x + x, center.y + y})[0];
            worst = std::max(worst, std::abs(actual - int(std::lround(255 * std::sqrt(1 - square)))));
        }
    }
    EXPECT_LE(worst, 8) << savePicture("sphere");
}

TEST_F(Drawing_drawn_test, tetrahedronStandsOnItsBaseWithOneCornerUp) {
    light();
    core.setTransform(OBLIQUE);
    core.setCulling({true, true});
    core.renderTetrahedron(Vector3<double>{0, -0.25, 0}, 1.25);
    double const down = -0.25 - 1.25 / 3;
    double const ring = 1.25 * std::sqrt(8.0) / 3;
    std::vector<Space> corners{{0, 1, 0}};
    for (double const degrees : {90.0, 210.0, 330.0}) {
        corners.push_back({ring * std::cos(degrees * PI / 180), down, ring * std::sin(degrees * PI / 180)});
    }
    expectShape(picture(), {{seenHull(OBLIQUE, corners)}, {}});
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            double const edge = std::hypot(corners[i][0] - corners[j][0], corners[i][1] - corners[j][1],
                                           corners[i][2] - corners[j][2]);
            EXPECT_NEAR(edge, 1.25 * std::sqrt(8.0 / 3), 1e-12) << "the reference itself is regular";
        }
    }
}

TEST_F(Drawing_drawn_test, tricubicVoxelIsItsCellAndSixtyFourShadedSamples) {
    auto const draw = [this](auto voxel) {
        for (int i = 0; i < 64; ++i) {
            voxel.samples[i] = float(i + 1) / 64;
        }
        clear();
        core.setPointSize(3);
        core.setTransform(OBLIQUE);
        core.renderTricubicVoxel(voxel);
        Picture const drawn = picture();
        Shape shape{{}, edges(OBLIQUE, boxCorners({-0.2, -0.2, -0.2}, {0.3, 0.3, 0.3}))};
        for (int k = 0; k < 4; ++k) {
            for (int j = 0; j < 4; ++j) {
                for (int i = 0; i < 4; ++i) {
                    Pixel2 const p = seen(OBLIQUE, {-0.7 + 0.5 * i, -0.7 + 0.5 * j, -0.7 + 0.5 * k});
                    shape.lines.push_back({p, p});
                    int const number = i + 4 * j + 16 * k;
                    auto const value = static_cast<unsigned char>(std::lround(255.0 * (number + 1) / 64));
                    expectColor(drawn.at(p), {value, value, value, 255}, 1,
                                "sample " + std::to_string(number));
                }
            }
        }
        expectShape(drawn, shape, 2.5);
    };
    draw(TricubicVoxel<float>{{-0.2F, -0.2F, -0.2F}, {0.5F, 0.5F, 0.5F}, {}});
    draw(TricubicVoxel<double>{{-0.2, -0.2, -0.2}, {0.5, 0.5, 0.5}, {}});
}

TEST_F(Drawing_drawn_test, planeSystemIsOneGridForEachPlane) {
    Plane3System<double> system;
    system.planes = {{{0, 1, 0}, 0.5}, {{0, 0, 1}, 0.25}};
    core.setTransform(OBLIQUE);
    core.renderPlane3System(system, 2.0, 2);
    Shape shape;
    for (double const offset : {-1.0, 0.0, 1.0}) {
        shape.lines.push_back(seenLine(OBLIQUE, {-1, -0.5, offset}, {1, -0.5, offset}));
        shape.lines.push_back(seenLine(OBLIQUE, {offset, -0.5, -1}, {offset, -0.5, 1}));
        shape.lines.push_back(seenLine(OBLIQUE, {-1, offset, -0.25}, {1, offset, -0.25}));
        shape.lines.push_back(seenLine(OBLIQUE, {offset, -1, -0.25}, {offset, 1, -0.25}));
    }
    expectShape(picture(), shape);
}

TEST_F(Drawing_drawn_test, treeIsWireBoxesOfAllItsNodes) {
    GeometryTree<GeometryNode<Box3<float>>> tree;
    tree.nodes = {{{{-1, -1, -1}, {1, 1, 1}}, 1, 2},
                  {{{-1, -1, -1}, {0, 1, 1}}, 0, 0},
                  {{{0.25F, -1, -1}, {1, 0, 1}}, 3, 1},
                  {{{0.5F, -0.5F, 0}, {1, 0, 1}}, 0, 0}};
    core.setTransform(OBLIQUE);
    core.renderTree(tree);
    Shape shape;
    for (auto const& [min, max] : std::vector<std::pair<Space, Space>>{{{-1, -1, -1}, {1, 1, 1}},
                                                                       {{-1, -1, -1}, {0, 1, 1}},
                                                                       {{0.25, -1, -1}, {1, 0, 1}},
                                                                       {{0.5, -0.5, 0}, {1, 0, 1}}}) {
        shape += {{}, edges(OBLIQUE, boxCorners(min, max))};
    }
    expectShape(picture(), shape);
}

namespace {

Array<Vector3<double>> const LIST_CORNERS{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
Array<Vector3<float>> const LIST_CORNERS_FLOAT{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
Array<Tuple3<unsigned int>> const LIST_TRIANGLES{{0, 1, 2}, {0, 2, 3}};
Outline const LIST_SQUARE{{58, 58}, {198, 58}, {198, 198}, {58, 198}};

}  // namespace

TEST_F(Drawing_drawn_test, normalsAreSegmentsFromCentroids) {
    core.setTransform(OBLIQUE);
    core.renderNormals(LIST_CORNERS, LIST_TRIANGLES, 0.75F);
    Shape shape;
    double const third = 1.0 / 3;
    shape.lines.push_back(seenLine(OBLIQUE, {third, -third, 0}, {third, -third, 0.75}));
    shape.lines.push_back(seenLine(OBLIQUE, {-third, third, 0}, {-third, third, 0.75}));
    expectShape(picture(), shape);
}

TEST_F(Drawing_drawn_test, triangleListsWithoutColorsTakeCurrentOne) {
    core.setColor({0, 1, 0, 1});
    core.setTransform(FRONT);
    core.render(LIST_CORNERS, LIST_TRIANGLES);
    expectShape(picture(), {{LIST_SQUARE}, {}});
    expectColor(picture().at(100, 150), {0, 255, 0, 255}, 0, "a triangle from arrays");
    clear();
    light();
    core.render(LIST_CORNERS_FLOAT, LIST_TRIANGLES);
    expectShape(picture(), {{LIST_SQUARE}, {}});
    expectColor(picture().at(100, 150), {0, 255, 0, 255}, 1, "a lit triangle across the view");
}

TEST_F(Drawing_drawn_test, coloredTriangleListsRunSmoothlyOrTakeMean) {
    Array<Color4<float>> const colors{{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1}};
    core.setTransform(FRONT);
    core.render(LIST_CORNERS, LIST_TRIANGLES, {}, colors);
    Picture const smooth = picture();
    expectShape(smooth, {{LIST_SQUARE}, {}});
    expectColor(smooth.at(60, 59), RED, 12, "first corner");
    expectColor(smooth.at(195, 59), {0, 255, 0, 255}, 12, "second corner");
    expectColor(smooth.at(195, 193), BLUE, 12, "third corner");

    clear();
    light();
    Array<Vector3<float>> const normals{{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    core.render(LIST_CORNERS_FLOAT, LIST_TRIANGLES, normals, colors);
    expectColor(picture().at(150, 100), {85, 85, 85, 255}, 1, "mean of red, green and blue");
    expectColor(picture().at(100, 150), {170, 85, 170, 255}, 1, "mean of red, blue and white");
}

// == Picking ==

namespace {

constexpr unsigned int NO_NAME = 0xFFFFFFFFU;

/// The names that are hit within a few pixels of a place, drawn by `draw` in GL's selection mode.
std::set<unsigned int> pick(Pixel2 const& place, std::function<void()> const& draw) {
    GLuint buffer[512] = {};
    glSelectBuffer(512, buffer);
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(NO_NAME);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    GLint viewport[4] = {0, 0, SIZE, SIZE};
    gluPickMatrix(place.x, place.y, 5, 5, viewport);
    glOrtho(0, SIZE, 0, SIZE, -256, 256);
    glMatrixMode(GL_MODELVIEW);
    draw();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    GLint const hits = glRenderMode(GL_RENDER);
    EXPECT_GE(hits, 0) << "the selection buffer is too small";

    std::set<unsigned int> names;
    GLuint const* record = buffer;
    for (GLint i = 0; i < hits; ++i) {
        EXPECT_EQ(record[0], 1U) << "one name in each record";
        names.insert(record[3]);
        record += 3 + record[0];
    }
    return names;
}

}  // namespace

TEST_F(Drawing_drawn_test, moveHandlesArePickedByTheirNames) {
    core.setTransform(OBLIQUE);
    for (bool const isStippled : {false, true}) {
        auto const draw = [&] {
            if (isStippled) {
                core.renderAxesArrowStipple3(70, 71, 72, COLORS, 0.4F);
            } else {
                core.renderAxesArrow3(70, 71, 72, COLORS, 0.4F);
            }
        };
        for (unsigned int axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(pick(seen(OBLIQUE, unit(axis, 1)), draw), (std::set<unsigned int>{70 + axis}));
            EXPECT_EQ(pick(seen(OBLIQUE, unit(axis, 0.6)), draw), (std::set<unsigned int>{70 + axis}));
        }
        EXPECT_THAT(pick({10, 250}, draw), testing::IsEmpty());
        EXPECT_EQ(pick(seen(OBLIQUE, {0, 0, 0}), draw), (std::set<unsigned int>{70, 71, 72}));
    }
}

TEST_F(Drawing_drawn_test, scaleHandlesArePickedByTheirNames) {
    core.setTransform(OBLIQUE);
    auto const draw = [this] { core.renderAxesBox3(70, 71, 72, 73, FOUR_COLORS, 0.1F); };
    for (unsigned int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(pick(seen(OBLIQUE, unit(axis, 0.9)), draw), (std::set<unsigned int>{70 + axis}));
    }
    EXPECT_EQ(pick(seen(OBLIQUE, {0.09, 0.09, 0.09}), draw).count(73), 1U);
    EXPECT_THAT(pick({10, 250}, draw), testing::IsEmpty());
    // Without names of its own a box has its axis as name.
    EXPECT_EQ(pick(seen(OBLIQUE, unit(1, 0.9)), [this] { core.renderAxisBox3(VL_AXIS_Y, 0.1F); }),
              (std::set<unsigned int>{1}));
    EXPECT_EQ(pick(seen(OBLIQUE, {0, 0, 0}),
                   [this] {
                       core.renderBox3(74U, Color4<float>{1, 1, 1, 1}, 0.25F);
                   }),
              (std::set<unsigned int>{74}));
}

TEST_F(Drawing_drawn_test, rotateHandlesArePickedByTheirNames) {
    core.setTransform(OBLIQUE);
    Vector3<float> const direction = lookingDirection(OBLIQUE);
    struct {
        char const* name;
        std::function<void()> draw;
        unsigned int firstName;
    } const gizmos[] = {
        {"circles", [&] { core.renderAxesCircle3(70, 71, 72, COLORS, 1.25F); }, 70},
        {"stippled circles", [&] { core.renderAxesCircleStipple3(0, 1, 2, COLORS, 1.25F); }, 0},
        {"culled circles",
         [&] { core.renderAxesCircleCulled3(70, 71, 72, direction, IDENTITY, 1.25F, COLORS, 1); }, 70},
        {"culled circles with the far half",
         [&] { core.renderAxesCircleCulledStipple3(70, 71, 72, direction, IDENTITY, 1, COLORS, 1.25F); }, 70},
        {"tape rings", [&] { core.renderAxesCircleTape3(0, 1, 2, COLORS, 1.25F, 0.1F); }, 0}};
    // Of each ring a point toward the viewer, far from the other rings.
    std::array<Pixel2, 3> places{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Shape others;
        for (std::size_t other = 0; other < 3; ++other) {
            if (other != axis) {
                std::vector<Line> const ring = curve(OBLIQUE, gizmoRing(other, 1.25), true);
                others.lines.insert(others.lines.end(), ring.begin(), ring.end());
            }
        }
        double best = -1e9;
        for (Space const& p : gizmoRing(axis, 1.25)) {
            if (eye(OBLIQUE, p)[2] <= 20) {
                continue;
            }
            double const alone = distanceTo(others, seen(OBLIQUE, p));
            if (alone > best) {
                best = alone;
                places[axis] = seen(OBLIQUE, p);
            }
        }
        ASSERT_GT(best, 12) << "a place with one ring only";
    }
    for (auto const& gizmo : gizmos) {
        SCOPED_TRACE(gizmo.name);
        for (unsigned int axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(pick(places[axis], gizmo.draw), (std::set<unsigned int>{gizmo.firstName + axis}));
        }
        EXPECT_THAT(pick({3, 253}, gizmo.draw), testing::IsEmpty());
    }
}

TEST_F(Drawing_drawn_test, planeHandlesArePickedByTheirNames) {
    core.setTransform(OBLIQUE);
    auto const draw = [this] { core.renderAxesPlane3(70, 71, 72, COLORS, 0.8F); };
    EXPECT_EQ(pick(seen(OBLIQUE, {0.6, 0.6, 0}), draw), (std::set<unsigned int>{70}));
    EXPECT_EQ(pick(seen(OBLIQUE, {0, 0.6, 0.6}), draw), (std::set<unsigned int>{71}));
    EXPECT_EQ(pick(seen(OBLIQUE, {0.6, 0, 0.6}), draw), (std::set<unsigned int>{72}));
    EXPECT_THAT(pick({10, 250}, draw), testing::IsEmpty());
}

TEST_F(Drawing_drawn_test, namedPointsAndArrowsArePicked) {
    EXPECT_EQ(pick({100, 100},
                   [this] {
                       core.Core_RL::renderPoint3({100, 100, 0}, 11U);
                   }),
              (std::set<unsigned int>{11}));
    EXPECT_EQ(pick({100, 100},
                   [this] {
                       core.Core_RL::renderPoint2({100, 100}, 12U);
                   }),
              (std::set<unsigned int>{12}));
    EXPECT_EQ(pick({100, 100},
                   [this] {
                       core.renderArrow3({20, 100, 0}, {180, 100, 0}, 20, 13U, true);
                   }),
              (std::set<unsigned int>{13}));
    EXPECT_EQ(pick({100, 100},
                   [this] {
                       core.renderArrow2({20, 100}, {180, 100}, 0.25F, 14U);
                   }),
              (std::set<unsigned int>{14}));
    EXPECT_THAT(pick({100, 120},
                     [this] {
                         core.renderArrow2({20, 100}, {180, 100}, 0.25F, 14U);
                     }),
                testing::IsEmpty());
}

// == State after a drawing ==

namespace {

/// The state that drawings touch on their way.
struct State {
    std::vector<std::pair<std::string, std::vector<double>>> values;

    static State read() {
        State state;
        auto const add = [&state](char const* name, GLenum query, std::size_t count) {
            GLdouble numbers[16] = {};
            glGetDoublev(query, numbers);
            state.values.emplace_back(name, std::vector<double>(numbers, numbers + count));
        };
        add("polygon mode", GL_POLYGON_MODE, 2);
        add("line width", GL_LINE_WIDTH, 1);
        add("point size", GL_POINT_SIZE, 1);
        add("current color", GL_CURRENT_COLOR, 4);
        add("matrix mode", GL_MATRIX_MODE, 1);
        add("modelview depth", GL_MODELVIEW_STACK_DEPTH, 1);
        add("modelview matrix", GL_MODELVIEW_MATRIX, 16);
        add("projection depth", GL_PROJECTION_STACK_DEPTH, 1);
        add("projection matrix", GL_PROJECTION_MATRIX, 16);
        add("attribute depth", GL_ATTRIB_STACK_DEPTH, 1);
        add("client attribute depth", GL_CLIENT_ATTRIB_STACK_DEPTH, 1);
        add("cull face mode", GL_CULL_FACE_MODE, 1);
        add("depth mask", GL_DEPTH_WRITEMASK, 1);
        add("depth function", GL_DEPTH_FUNC, 1);
        for (auto const& [name, capability] :
             std::vector<std::pair<char const*, GLenum>>{{"line stipple", GL_LINE_STIPPLE},
                                                         {"texturing", GL_TEXTURE_2D},
                                                         {"blending", GL_BLEND},
                                                         {"depth test", GL_DEPTH_TEST},
                                                         {"culling", GL_CULL_FACE},
                                                         {"lighting", GL_LIGHTING},
                                                         {"color material", GL_COLOR_MATERIAL},
                                                         {"vertex array", GL_VERTEX_ARRAY},
                                                         {"normal array", GL_NORMAL_ARRAY},
                                                         {"color array", GL_COLOR_ARRAY}}) {
            state.values.emplace_back(name, std::vector<double>{glIsEnabled(capability) ? 1.0 : 0.0});
        }
        return state;
    }
};

struct Drawing {
    char const* name;
    std::function<void(Core_RL&)> draw;
    bool changesColor = false;
};

Matrix4<float> const SOME_FRAME = viewMatrix(20, 30, 0.5, {0.25, 0.5});

std::vector<Drawing> allDrawings() {
    static Vector3<float> const a{-1, 0, 0};
    static Vector3<float> const b{1, 0.5F, 0};
    static Vector3<float> const c{0, 1, 1};
    static Vector3<float> const direction{0, 0, -1};
    static Box3<float> const box{{-1, -1, -1}, {1, 1, 1}};
    static Box3<double> const preciseBox{{-1, -1, -1}, {1, 1, 1}};
    static Obb3<float> const turned{{1, 0, 0}, 1, {0, 1, 0}, 1, {0, 0, 1}, 1, {0, 0, 0}};
    static Tuple8<Vector3<float>> const cornerColors{a, b, c, a, b, c, a, b};
    using L = Core_RL&;
    // A color for each vertex leaves the last one behind, and GL leaves the current color undefined after a
    // color array.
    return {
        {"renderStroke3", [](L l) { l.renderStroke3(a, b, 1); }},
        {"renderSegment2",
         [](L l) {
             l.renderSegment2({0, 0}, {1, 1});
         }},
        {"renderPlane3",
         [](L l) {
             l.renderPlane3({{0, 1, 0}, 0}, 2, 4);
         }},
        {"renderSegment3", [](L l) { l.renderSegment3(a, b); }},
        {"renderSegmentStipple3", [](L l) { l.renderSegmentStipple3(a, b); }},
        {"renderBox3 with a name",
         [](L l) {
             l.renderBox3(1U, Color4<float>{1, 0, 0, 1}, 0.5F);
         }},
        {"renderAxesBox3", [](L l) { l.renderAxesBox3(0, 1, 2, COLORS, 0.1F); }},
        {"renderAxesBox3 with a center", [](L l) { l.renderAxesBox3(0, 1, 2, 3, FOUR_COLORS, 0.1F); }},
        {"renderAxisBox3 X", [](L l) { l.renderAxisBox3(VL_AXIS_X, 0.1F); }},
        {"renderAxisBox3 Y", [](L l) { l.renderAxisBox3(VL_AXIS_Y, 5U, 0.1F); }},
        {"renderAxisBox3 Z", [](L l) { l.renderAxisBox3(VL_AXIS_Z, 5U, 0.1F); }},
        {"renderAxisBox3 center", [](L l) { l.renderAxisBox3(VL_AXIS(3), 5U, 0.1F); }},
        {"renderAxisBox3 of no axis", [](L l) { l.renderAxisBox3(VL_AXIS(4), 5U, 0.1F); }},
        {"renderAxesCircleStipple3", [](L l) { l.renderAxesCircleStipple3(0, 1, 2, COLORS, 1); }},
        {"renderAxesCircle3", [](L l) { l.renderAxesCircle3(0, 1, 2, COLORS, 1); }},
        {"renderAxesCircleCulled3",
         [](L l) { l.renderAxesCircleCulled3(0, 1, 2, direction, SOME_FRAME, 1, COLORS, 1); }},
        {"renderAxesCircleCulledStipple3",
         [](L l) { l.renderAxesCircleCulledStipple3(0, 1, 2, direction, SOME_FRAME, 1, COLORS, 1); }},
        {"renderAxisCircle3", [](L l) { l.renderAxisCircle3(VL_AXIS_X, 1); }},
        {"renderAxisCircle3 of no axis", [](L l) { l.renderAxisCircle3(VL_AXIS(3), 9U, 1); }},
        {"renderAxisCircleCulled3",
         [](L l) { l.renderAxisCircleCulled3(VL_AXIS_X, 5, direction, SOME_FRAME, 1, 1); }},
        {"renderAxisCircleCulledStipple3",
         [](L l) { l.renderAxisCircleCulledStipple3(VL_AXIS_Y, 5, direction, SOME_FRAME, 1, 1); }},
        {"renderAxisCircle3NoPicking", [](L l) { l.renderAxisCircle3NoPicking(VL_AXIS_Y, 1); }},
        {"renderAxesCircleTape3", [](L l) { l.renderAxesCircleTape3(0, 1, 2, COLORS, 1, 0.25F); }},
        {"renderAxisCircleStipple3", [](L l) { l.renderAxisCircleStipple3(VL_AXIS_Y, 1); }},
        {"renderAxisCircleTape3 X", [](L l) { l.renderAxisCircleTape3(VL_AXIS_X, 1, 0.25F); }},
        {"renderAxisCircleTape3 Z", [](L l) { l.renderAxisCircleTape3(VL_AXIS_Z, 1, 0.25F); }},
        {"renderAxisCircleTape3 of no axis", [](L l) { l.renderAxisCircleTape3(VL_AXIS(3), 1, 0.25F); }},
        {"renderCircle3", [](L l) { l.renderCircle3(1); }},
        {"renderCircleCameraFacing3",
         [](L l) {
             l.renderCircleCameraFacing3(SOME_FRAME, {}, 1, {1, 0, 0, 1}, 1);
         }},
        {"renderQuad3 of a texture", [](L l) { l.renderQuad3(0U); }},
        {"renderRhombus3 of a texture", [](L l) { l.renderRhombus3(0U); }},
        {"renderRhombus3", [](L l) { l.renderRhombus3(); }},
        {"renderCircleCulledStipple3", [](L l) { l.renderCircleCulledStipple3(direction, SOME_FRAME, 1); }},
        {"renderCircleCulled3", [](L l) { l.renderCircleCulled3(direction, SOME_FRAME, 1); }},
        {"renderCircleTape3", [](L l) { l.renderCircleTape3(1, 0.25F); }},
        {"renderAxesArrow3", [](L l) { l.renderAxesArrow3(0, 1, 2, COLORS, 0.25F); }},
        {"renderAxesArrowStipple3", [](L l) { l.renderAxesArrowStipple3(COLORS, 0.25F); }},
        {"renderAxesArrowStipple3 with names",
         [](L l) { l.renderAxesArrowStipple3(0, 1, 2, COLORS, 0.25F); }},
        {"renderAxesPlane3", [](L l) { l.renderAxesPlane3(0, 1, 2, COLORS, 0.25F); }},
        {"renderAxisArrow3", [](L l) { l.renderAxisArrow3(VL_AXIS_X, 5, 0.25F); }},
        {"renderAxisArrow3 of no axis", [](L l) { l.renderAxisArrow3(VL_AXIS(3), 5, 0.25F); }},
        {"renderAxisArrow3NoPicking", [](L l) { l.renderAxisArrow3NoPicking(VL_AXIS_Z, 0.25F); }},
        {"renderAxisArrowStipple3 with a name", [](L l) { l.renderAxisArrowStipple3(VL_AXIS_Y, 5U, 0.25F); }},
        {"renderAxisArrowStipple3", [](L l) { l.renderAxisArrowStipple3(VL_AXIS_Y, 0.25F); }},
        {"renderUnitArrow3", [](L l) { l.renderUnitArrow3(); }},
        {"renderEllipse3", [](L l) { l.renderEllipse3(a, b, c); }},
        {"renderEllipse3_XZ", [](L l) { l.renderEllipse3_XZ(a, 1, 2); }},
        {"renderEllipse3_XY", [](L l) { l.renderEllipse3_XY(a, 1, 2); }},
        {"renderEllipse3_YZ", [](L l) { l.renderEllipse3_YZ(a, 1, 2); }},
        {"renderArrow3", [](L l) { l.renderArrow3(a, b, 0.25F, false); }},
        {"renderArrow3 with a tail", [](L l) { l.renderArrow3(a, b, 0.25F, true); }},
        {"renderArrow3 of no length", [](L l) { l.renderArrow3(a, a, 0.25F, true); }},
        {"renderArrow3 with a name", [](L l) { l.renderArrow3(a, b, 0.25F, 3U, true); }},
        {"renderArrow3_usingBuffers",
         [](L l) {
             l.renderArrow3_usingBuffers({a, b, c}, {0, 1, 2}, {0, 1}, {0, 1, 2, 0},
                                         {{1, 0, 0, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}});
         },
         true},
        {"renderArrow2",
         [](L l) {
             l.renderArrow2({0, 0}, {1, 1}, 0.25F);
         }},
        {"renderArrow2 with a name",
         [](L l) {
             l.renderArrow2({0, 0}, {1, 1}, 0.25F, 4U);
         }},
        {"renderTriangle", [](L l) { l.renderTriangle(a, b, c); }},
        {"renderTriangle with normals", [](L l) { l.renderTriangle(a, b, c, a, b, c); }},
        {"renderQuad3", [](L l) { l.renderQuad3(a, b, c, a); }},
        {"renderPoint3", [](L l) { l.renderPoint3(a); }},
        {"renderPoint3 with a name", [](L l) { l.renderPoint3(a, 3U); }},
        {"renderPoint2",
         [](L l) {
             l.renderPoint2({0, 0});
         }},
        {"renderCross3", [](L l) { l.renderCross3(); }},
        {"renderBox2",
         [](L l) {
             l.renderBox2({0, 0}, 1);
         }},
        {"renderBox3", [](L l) { l.renderBox3(a, 1); }},
        {"renderSphere", [](L l) { l.renderSphere(a, 1); }},
        {"renderBox3Points_asPoints",
         [](L l) {
             l.renderBox3Points_asPoints(Box3Points<float>{{2, 2, 2}, a, b});
         }},
        {"render Box3", [](L l) { l.render(box, false); }},
        {"render Box3, wire", [](L l) { l.render(preciseBox, true); }},
        {"render Box3, colored", [](L l) { l.render(box, cornerColors, false); }, true},
        {"render Box2",
         [](L l) {
             l.render(Box2<float>{{0, 0}, {1, 1}}, true);
         }},
        {"render Obb3", [](L l) { l.render(turned, false); }},
        {"renderTricubicVoxel",
         [](L l) {
             l.renderTricubicVoxel(TricubicVoxel<float>{a, b, {}});
         }},
        {"renderPlane3System",
         [](L l) {
             Plane3System<float> system;
             system.planes = {{{0, 1, 0}, 1}};
             l.renderPlane3System(system, 1.0F, 2);
         }},
        {"renderTetrahedron", [](L l) { l.renderTetrahedron(a, 1); }},
        {"renderTree",
         [](L l) {
             GeometryTree<GeometryNode<Box3<float>>> tree;
             tree.nodes = {{box, 0, 0}};
             l.renderTree(tree);
         }},
        {"render of a triangle list, double", [](L l) { l.render(LIST_CORNERS, LIST_TRIANGLES); }},
        {"render of a triangle list, float", [](L l) { l.render(LIST_CORNERS_FLOAT, LIST_TRIANGLES); }},
        {"renderNormals", [](L l) { l.renderNormals(LIST_CORNERS, LIST_TRIANGLES, 1); }},
        {"render of a colored triangle list",
         [](L l) {
             l.render(LIST_CORNERS, LIST_TRIANGLES, {},
                      {{1, 0, 0, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}, {1, 0, 0, 1}});
         }},
    };
}

}  // namespace

TEST_F(Drawing_drawn_test, everyDrawingRestoresStateAndRaisesNoError) {
    core.setTransform(OBLIQUE);
    core.setColor({0.5F, 0.25F, 0.75F, 0.5F});
    core.pushFillingFront(FILLING_LINES);
    core.pushFillingBack(FILLING_LINES);
    core.pushLineWidth(3);
    core.setPointSize(2);
    core.pushCulling({true, false});
    core.pushDepthTest({DEPTH_GREATER_OR_EQUAL, false});
    for (Drawing const& drawing : allDrawings()) {
        SCOPED_TRACE(drawing.name);
        State const before = State::read();
        drawing.draw(core);
        State const after = State::read();
        ASSERT_EQ(before.values.size(), after.values.size());
        for (std::size_t i = 0; i < before.values.size(); ++i) {
            if (before.values[i].first == "current color" && drawing.changesColor) {
                core.setColor(Color4<float>(core.currentColor()));
                continue;
            }
            EXPECT_EQ(before.values[i].second, after.values[i].second) << before.values[i].first;
        }
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        EXPECT_THAT(glErrors(), testing::IsEmpty());
        EXPECT_EQ(core.currentColor(), (Color4<float>{0.5F, 0.25F, 0.75F, 0.5F}));
        EXPECT_EQ(core.currentFillingFront(), FILLING_LINES);
        EXPECT_EQ(core.currentFillingBack(), FILLING_LINES);
        EXPECT_EQ(core.currentLineWidth(), 3);
    }
}

TEST_F(Drawing_drawn_test, everyDrawingPicksWithoutLeavingNamesBehind) {
    core.setTransform(OBLIQUE);
    GLuint buffer[4096] = {};
    glSelectBuffer(4096, buffer);
    glRenderMode(GL_SELECT);
    glInitNames();
    glPushName(NO_NAME);
    for (Drawing const& drawing : allDrawings()) {
        drawing.draw(core);
        GLint depth = 0;
        glGetIntegerv(GL_NAME_STACK_DEPTH, &depth);
        EXPECT_EQ(depth, 1) << drawing.name;
    }
    EXPECT_NE(glRenderMode(GL_RENDER), 0);
}

}  // namespace vellum
