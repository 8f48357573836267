#pragma once

#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/ParticleFrame.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// The columns of a dump of LAMMPS, text or binary.
struct LammpsColumns {
    std::vector<TableColumn> columns;
    bool isScaled = false;  ///< positions are fractions of the box's edges

    /// Positions are the first of these that exist: x y z, xu yu zu, xs ys zs, xsu ysu zsu. Nothing where
    /// there are none.
    /// \param names with blanks between them
    /// \param units the unit style; empty: not known
    static std::optional<LammpsColumns> of(std::string_view names, std::string_view units);

    static constexpr char NO_POSITIONS[] =
        "no columns give positions: x y z, xu yu zu, xs ys zs or xsu ysu zsu";
};

/// The three lines that describe a box in a dump: limits, or limits and a tilt, or an edge and a coordinate
/// of the corner.
struct LammpsBounds {
    double rows[3][4] = {};

    /// The box of lines of limits and tilts; those of upright boxes have tilts of 0. The limits of a tilted
    /// box are those of the upright box around it.
    ParticleBox tilted() const;

    /// The box of lines of edges.
    ParticleBox general() const;
};

}  // namespace vellum::viewport
