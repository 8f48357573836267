#include "viewport/files/particles/LammpsColumns.h"

#include "viewport/files/particles/lammps_units.h"
#include "viewport/text/Words.h"

#include <algorithm>

namespace vellum::viewport {

std::optional<LammpsColumns> LammpsColumns::of(std::string_view names, std::string_view units) {
    LammpsColumns result;
    std::vector<TableColumn>& columns = result.columns;
    for (std::string_view name = takeWord(names); !name.empty(); name = takeWord(names)) {
        columns.push_back(
            TableColumn{std::string(name), ColumnUse::CHANNEL, 0, name == "id", lammpsUnit(units, name)});
    }
    if (!useColumns(columns, {"x", "y", "z"}, ColumnUse::POSITION) &&
        !useColumns(columns, {"xu", "yu", "zu"}, ColumnUse::POSITION)) {
        result.isScaled = useColumns(columns, {"xs", "ys", "zs"}, ColumnUse::POSITION) ||
                          useColumns(columns, {"xsu", "ysu", "zsu"}, ColumnUse::POSITION);
        if (!result.isScaled) {
            return std::nullopt;
        }
    }
    return result;
}

ParticleBox LammpsBounds::tilted() const {
    double const xy = rows[0][2];
    double const xz = rows[1][2];
    double const yz = rows[2][2];
    double const left = rows[0][0] - std::min({0.0, xy, xz, xy + xz});
    double const right = rows[0][1] - std::max({0.0, xy, xz, xy + xz});
    double const front = rows[1][0] - std::min(0.0, yz);
    double const back = rows[1][1] - std::max(0.0, yz);
    ParticleBox box;
    box.origin = {left, front, rows[2][0]};
    box.edges[0] = {right - left, 0, 0};
    box.edges[1] = {xy, back - front, 0};
    box.edges[2] = {xz, yz, rows[2][1] - rows[2][0]};
    return box;
}

ParticleBox LammpsBounds::general() const {
    ParticleBox box;
    box.origin = {rows[0][3], rows[1][3], rows[2][3]};
    for (std::size_t i = 0; i < 3; ++i) {
        box.edges[i] = {rows[i][0], rows[i][1], rows[i][2]};
    }
    return box;
}

}  // namespace vellum::viewport
