#include "viewport/drawing/MeshSearch.h"

#include "viewport/drawing/ScreenPlace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;
using OnScreen = ScreenPlace::Point;

constexpr double COVERED = 1.5;  // pixels from the point

/// So much deeper a thing may be than what hides it, since selection computes in single precision. Surfaces
/// are drawn a little behind the lines that lie on them.
constexpr double SLACK = 1e-5;

bool isInside(std::optional<Box3<double>> const& box, Point const& p) {
    return !box || (p.x >= box->min.x && p.x <= box->max.x && p.y >= box->min.y && p.y <= box->max.y &&
                    p.z >= box->min.z && p.z <= box->max.z);
}

/// A place on an element.
struct Found {
    MeshElement kind = MeshElement::TRIANGLE;
    std::size_t index = 0;
    double u = 0;  // shares of the second and the third corner
    double v = 0;
    double depth = 0;
};

class Search {
public:
    Search(Model const& model, MeshData const& mesh, toolkit::View const& view,
           std::optional<Box3<double>> const& clip, double most, ShownAt const& shownAt)
        : model(model)
        , mesh(mesh)
        , view(view)
        , middleX(view.viewport.width / 2.0)
        , middleY(view.viewport.height / 2.0)
        , screen(view, middleX, middleY)
        , clip(clip)
        , shownAt(shownAt)
        , most(most + SLACK) {}

    std::optional<Found> find() {
        _addSamples();
        _crossTriangles();
        std::optional<Found> surface = _surface();
        bool const isCovered = samples.front().isCrossed && _isShown(samples.front().found);
        double const reach = isCovered ? COVERED : PICK_REACH;
        double const deepest = surface ? std::min(surface->depth + SLACK, most) : most;
        std::optional<Found> const above = _nearestMark(reach, deepest);
        return above ? above : surface;
    }

private:
    /// The middle of a pixel.
    struct Sample {
        double distance;
        toolkit::Ray ray;
        bool isCrossed = false;
        Found found = {};
    };

    void _addSamples() {
        for (int y = 0; y < view.viewport.height; ++y) {
            for (int x = 0; x < view.viewport.width; ++x) {
                samples.push_back(
                    {std::hypot(x + 0.5 - middleX, y + 0.5 - middleY), view.rayThrough(x + 0.5, y + 0.5)});
            }
        }
        std::stable_sort(samples.begin(), samples.end(),
                         [](Sample const& a, Sample const& b) { return a.distance < b.distance; });
    }

    void _crossTriangles() {
        double const width = middleX;
        double const height = middleY;
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
            MeshData::Triangle const& t = mesh.triangles[i];
            Point const corners[3] = {_vertex(t.e0), _vertex(t.e1), _vertex(t.e2)};
            double x[3];
            double y[3];
            double w[3];
            for (std::size_t k = 0; k < 3; ++k) {
                x[k] = screen.x(corners[k]);
                y[k] = screen.y(corners[k]);
                w[k] = screen.w(corners[k]);
            }
            bool const isBeside = (x[0] > width * w[0] && x[1] > width * w[1] && x[2] > width * w[2]) ||
                                  (x[0] < -width * w[0] && x[1] < -width * w[1] && x[2] < -width * w[2]) ||
                                  (y[0] > height * w[0] && y[1] > height * w[1] && y[2] > height * w[2]) ||
                                  (y[0] < -height * w[0] && y[1] < -height * w[1] && y[2] < -height * w[2]);
            if (isBeside) {
                continue;
            }
            for (Sample& sample : samples) {
                _cross(i, corners, sample);
            }
        }
    }

    void _cross(std::size_t index, Point const* corners, Sample& sample) const {
        toolkit::Ray const& ray = sample.ray;
        std::optional<Crossing> const crossing =
            Crossing::of(ray.origin, ray.direction, corners[0], corners[1], corners[2]);
        if (!crossing) {
            return;
        }
        OnScreen const place = screen.of(ray.origin + ray.direction * crossing->distance);
        Found const found{MeshElement::TRIANGLE, index, crossing->u, crossing->v, place.depth()};
        bool const isFirst = !sample.isCrossed || found.depth < sample.found.depth;
        if (isFirst && place.isBetweenPlanes() && _isInside(_positionOf(found))) {
            sample.isCrossed = true;
            sample.found = found;
        }
    }

    bool _isShown(Found const& found) const { return found.depth <= most; }

    std::optional<Found> _surface() const {
        Sample const* nearest = nullptr;
        for (Sample const& sample : samples) {
            if (sample.isCrossed && _isShown(sample.found)) {
                return sample.found;
            }
            if (sample.isCrossed && (nearest == nullptr || sample.found.depth < nearest->found.depth)) {
                nearest = &sample;
            }
        }
        return nearest != nullptr ? std::optional<Found>(nearest->found) : std::nullopt;
    }

    /// The nearest point or line on the screen.
    std::optional<Found> _nearestMark(double reach, double deepest) const {
        std::optional<Found> found;
        double least = reach;
        for (std::size_t i = 0; i < mesh.points.size(); ++i) {
            OnScreen const place = screen.of(_vertex(mesh.points[i]));
            double const distance = std::hypot(place.x, place.y) / place.w;
            bool const isNearest = found ? distance < least : distance <= least;
            if (place.isBetweenPlanes() && isNearest && place.depth() <= deepest &&
                _isInside(mesh.positions[mesh.points[i]])) {
                least = distance;
                found = Found{MeshElement::POINT, i, 0, 0, place.depth()};
            }
        }
        for (std::size_t i = 0; i < mesh.lines.size(); ++i) {
            MeshLine const& line = mesh.lines[i];
            OnScreen const from = screen.of(_vertex(line.e0));
            OnScreen const to = screen.of(_vertex(line.e1));
            LinePart const part = _partOf(line, from, to);
            if (part.isEmpty()) {
                continue;
            }
            OnScreen const step = to - from;
            NearestOnLine const nearest = NearestOnLine::of(from + step * part.from, from + step * part.to);
            // A point at the end of a line is drawn over it.
            if (nearest.distance <= reach && (!found || nearest.distance < least) &&
                nearest.depth <= deepest) {
                least = nearest.distance;
                found = Found{MeshElement::LINE, i, part.from + nearest.part * (part.to - part.from), 0,
                              nearest.depth};
            }
        }
        return found;
    }

    /// What is drawn of a line.
    LinePart _partOf(MeshLine const& line, OnScreen const& from, OnScreen const& to) const {
        LinePart part;
        part.keep(from.z + from.w, to.z + to.w);
        part.keep(from.w - from.z, to.w - to.z);
        if (clip) {
            Point const a = _shownAt(mesh.positions[line.e0]);
            Point const b = _shownAt(mesh.positions[line.e1]);
            for (auto const axis : {&Point::x, &Point::y, &Point::z}) {
                part.keep(a.*axis - clip->min.*axis, b.*axis - clip->min.*axis);
                part.keep(clip->max.*axis - a.*axis, clip->max.*axis - b.*axis);
            }
        }
        return part;
    }

    /// Where a place of the file is drawn.
    Point _shownAt(Point const& place) const { return shownAt ? shownAt(place) : place; }

    bool _isInside(Point const& place) const { return !clip || isInside(clip, _shownAt(place)); }

    Point const& _vertex(unsigned int index) const { return model.vertices[index]; }

    Point _positionOf(Found const& found) const {
        MeshData::Triangle const& t = mesh.triangles[found.index];
        Point const& a = mesh.positions[t.e0];
        return a + (mesh.positions[t.e1] - a) * found.u + (mesh.positions[t.e2] - a) * found.v;
    }

    Model const& model;
    MeshData const& mesh;
    toolkit::View const& view;
    double middleX;
    double middleY;
    ScreenPlace screen;
    std::optional<Box3<double>> const& clip;
    ShownAt const& shownAt;
    double most;
    std::vector<Sample> samples;
};

/// The corners of an element: one, two or three.
std::vector<unsigned int> cornersOf(MeshData const& mesh, Found const& found) {
    switch (found.kind) {
    case MeshElement::POINT:
        return {mesh.points[found.index]};
    case MeshElement::LINE:
        return {mesh.lines[found.index].e0, mesh.lines[found.index].e1};
    case MeshElement::TRIANGLE:
        break;
    }
    MeshData::Triangle const& t = mesh.triangles[found.index];
    return {t.e0, t.e1, t.e2};
}

PickedElement describe(MeshData const& mesh, Found const& found) {
    PickedElement element;
    element.kind = found.kind;
    element.index = found.index;
    std::vector<unsigned int> const corners = cornersOf(mesh, found);
    Point const& first = mesh.positions[corners[0]];
    double const shares[3] = {0, found.u, found.v};
    element.position = first;
    for (std::size_t k = 1; k < corners.size(); ++k) {
        element.position = element.position + (mesh.positions[corners[k]] - first) * shares[k];
    }
    element.vertex = *std::min_element(corners.begin(), corners.end(), [&](unsigned int a, unsigned int b) {
        return length(mesh.positions[a] - element.position) < length(mesh.positions[b] - element.position);
    });
    element.vertexPosition = mesh.positions[element.vertex];
    if (found.kind == MeshElement::TRIANGLE && !mesh.triangleMaterials.empty() &&
        mesh.triangleMaterials[found.index] < mesh.materials.size()) {
        element.material = mesh.materials[mesh.triangleMaterials[found.index]].name;
    }
    for (MeshScalar const& scalar : mesh.scalars) {
        element.values.push_back({scalar.name, scalar.unit, scalar.values[element.vertex], {}});
    }
    return element;
}

}  // namespace

std::optional<Crossing> Crossing::of(Point const& origin, Point const& direction, Point const& a,
                                     Point const& b, Point const& c) {
    Point const toB = b - a;
    Point const toC = c - a;
    Point const across = cross(direction, toC);
    double const determinant = dot(toB, across);
    Point const fromA = origin - a;
    double const u = dot(fromA, across) / determinant;
    Point const upright = cross(fromA, toB);
    double const v = dot(direction, upright) / determinant;
    double const distance = dot(toC, upright) / determinant;
    // A hair outside, so that no line slips through between two triangles. Not a number where the determinant
    // is 0.
    constexpr double HAIR = 1e-12;
    bool const isCrossed = u >= -HAIR && v >= -HAIR && u + v <= 1 + HAIR && std::isfinite(distance);
    return isCrossed ? std::optional<Crossing>({distance, std::clamp(u, 0.0, 1.0), std::clamp(v, 0.0, 1.0)})
                     : std::nullopt;
}

std::optional<PickedElement> findElement(Model const& model, MeshData const& mesh, toolkit::View const& view,
                                         std::optional<Box3<double>> const& clip, double most,
                                         ShownAt const& shownAt) {
    std::optional<Found> const found = Search(model, mesh, view, clip, most, shownAt).find();
    return found ? std::optional<PickedElement>(describe(mesh, *found)) : std::nullopt;
}

}  // namespace vellum::viewport
