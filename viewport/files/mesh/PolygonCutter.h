#pragma once

#include "foundation/geometry/Vector2.h"
#include "viewport/files/mesh/MeshData.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vellum::viewport {

/// The polygons among the triangles of a mesh that is being read, and the way to cut them well.
///
/// Readers meet the faces before they know all vertices. They write every polygon as a fan at once, which a
/// polygon with a concave corner leaves, and tell it here. When the vertices are known, cutFans() replaces
/// the triangles in place:
///
///     PolygonCutter cutter;
///     cutter.addFan(corners, count, mesh.triangles);
///     cutter.cutFans(mesh);
///
/// A polygon of n corners is always n - 2 triangles, none of them turned over as long as the polygon does not
/// cross itself. A quad is cut along the diagonal that stays inside, of two such ones along the shorter. A
/// convex polygon stays a fan. Of all others one corner after the other is cut off. Polygons that are not
/// plane are cut as their projection along their mean normal.
class PolygonCutter {
public:
    using Triangle = MeshData::Triangle;

    /// Appends a polygon to the triangles; nothing for less than three corners.
    void addFan(unsigned int const* const& corners, std::size_t count, std::vector<Triangle>& triangles);

    /// Cuts all fans again, in time and memory in proportion to the number of corners. What is left of a
    /// polygon then is cut without care, which adds a note. Such polygons have very many corners and wind
    /// about themselves.
    void cutFans(MeshData& mesh);

private:
    struct Fan {
        std::uint32_t first;  // triangle
        std::uint32_t count;  // of triangles, 2 or more
    };

    /// A corner of the polygon that is being cut, in a ring of those that are left.
    struct Corner {
        Vector2<double> place;
        std::uint32_t previous;
        std::uint32_t next;
        std::uint32_t touched;  // the last round in which a neighbor was cut off
        bool isReflex;          // it is no ear and may lie within one; corners only lose this
        bool isGone;
    };

    struct Cell {
        std::uint32_t column;
        std::uint32_t row;
    };

    bool _cut(Fan const& fan, std::vector<Vector3<double>> const& positions, Triangle* const& triangles);
    void _project(std::vector<Vector3<double>> const& positions);
    bool _isConvex() const;
    bool _clip(Triangle* const& triangles);
    void _gatherReflexCorners();
    void _waitForAll();
    void _cutOff(std::uint32_t corner);
    bool _isFront(std::uint32_t corner) const;
    Cell _cellOf(Vector2<double> const& place) const;
    bool _spend(std::uint64_t steps);   // false: there are none left
    bool _isEar(std::uint32_t corner);  // for a front one

    std::vector<Fan> fans;

    // Of the polygon that is being cut, kept from one to the next.
    std::vector<unsigned int> vertices;
    std::vector<Corner> corners;
    std::vector<std::uint32_t> candidates;  // of this round
    std::vector<std::uint32_t> waiting;     // for the next one
    std::uint32_t round = 0;
    std::uint32_t left = 0;      // corners
    std::uint32_t someLeft = 0;  // one of them
    Triangle* out = nullptr;

    // The reflex corners in the cells of a grid over the polygon: only they can lie within an ear.
    struct Cells {
        Vector2<double> low;
        Vector2<double> perUnit;  // cells
        std::uint32_t columns = 1;
        std::uint32_t rows = 1;
        std::vector<std::vector<std::uint32_t>> reflex;
    };
    Cells cells;
    std::uint64_t stepsLeft = 0;  // of all polygons
};

}  // namespace vellum::viewport
