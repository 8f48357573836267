#include "viewport/files/particles/FrameBuilder.h"

#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr double LARGEST_ID = 9007199254740992.0;  // 2^53: whole numbers up to here are exact

Vector3<float> toFloats(Vector3<double> const& vector) {
    return {toFloat(vector.x), toFloat(vector.y), toFloat(vector.z)};
}

}  // namespace

bool useColumns(std::vector<TableColumn>& columns, std::string_view const (&names)[3], ColumnUse use) {
    TableColumn* found[3] = {nullptr, nullptr, nullptr};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (TableColumn& column : columns) {
            if (found[axis] == nullptr && column.name == names[axis] && column.use == ColumnUse::CHANNEL) {
                found[axis] = &column;
            }
        }
        if (found[axis] == nullptr) {
            return false;
        }
    }
    for (unsigned int axis = 0; axis < 3; ++axis) {
        found[axis]->use = use;
        found[axis]->axis = axis;
    }
    return true;
}

float toFloat(double value) {
    // The conversion of a number beyond all floats is undefined behavior.
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max())) {
        float const infinity = std::numeric_limits<float>::infinity();
        return value < 0 ? -infinity : infinity;
    }
    return static_cast<float>(value);
}

FrameBuilder::FrameBuilder(std::vector<TableColumn> const& columns, std::size_t rowCount,
                           ParticleFrame& frame)
    : frame(frame), row(columns.size(), 0.0) {
    frame.positions.clear();
    frame.velocities.clear();
    frame.channels.clear();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        TableColumn const& column = columns[i];
        if (column.use == ColumnUse::POSITION) {
            positionColumns[column.axis] = i;
        } else if (column.use == ColumnUse::VELOCITY) {
            velocityColumns[column.axis] = i;
            hasVelocities = true;
        } else if (column.use != ColumnUse::IGNORED) {
            channelColumns.push_back(i);
            frame.channels.push_back(ParticleChannel{column.name, {}});
            frame.channels.back().values.reserve(rowCount);
            if (column.isId) {
                idColumn = i;
            }
        }
    }
    frame.positions.reserve(rowCount);
    frame.velocities.reserve(hasVelocities ? rowCount : 0);
    ids.reserve(idColumn ? rowCount : 0);
}

bool FrameBuilder::addRow() {
    if (idColumn) {
        double const id = row[*idColumn];
        if (!(std::abs(id) <= LARGEST_ID) || id != std::floor(id)) {
            return false;
        }
        ids.push_back(id);
    }
    Vector3<double> position = _vector(positionColumns);
    if (box) {
        position = box->origin + box->edges[0] * position.x + box->edges[1] * position.y +
                   box->edges[2] * position.z;
    }
    frame.positions.push_back(toFloats(position));
    if (hasVelocities) {
        frame.velocities.push_back(toFloats(_vector(velocityColumns)));
    }
    for (std::size_t i = 0; i < channelColumns.size(); ++i) {
        frame.channels[i].values.push_back(toFloat(row[channelColumns[i]]));
    }
    return true;
}

Vector3<double> FrameBuilder::_vector(std::size_t const (&columns)[3]) const {
    return {row[columns[0]], row[columns[1]], row[columns[2]]};
}

}  // namespace vellum::viewport
