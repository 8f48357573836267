#include "viewport/files/particles/FrameBuilder.h"

#include <cmath>
#include <limits>

namespace vellum::viewport {

namespace {

constexpr double largestId = 9007199254740992.0;  // 2^53: whole numbers up to here are exact

Vector3<float> toFloats(Vector3<double> const& vector) {
    return {toFloat(vector.x), toFloat(vector.y), toFloat(vector.z)};
}

}  // namespace

bool useColumns(std::vector<TableColumn>& columns, std::string_view const (&names)[3], ColumnUse const& use) {
    TableColumn* found[3] = {nullptr, nullptr, nullptr};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (TableColumn& column : columns) {
            if (found[axis] == nullptr && column.name == names[axis] && column.use == ColumnUse::channel) {
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

float toFloat(double const& value) {
    // Asked first: the language leaves the conversion of a number beyond all floats undefined.
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max())) {
        float const infinity = std::numeric_limits<float>::infinity();
        return value < 0 ? -infinity : infinity;
    }
    return static_cast<float>(value);
}

FrameBuilder::FrameBuilder(std::vector<TableColumn> const& columns, std::size_t const& rowCount,
                           ParticleFrame& frame)
    : _frame(frame), _values(columns.size(), 0.0) {
    frame.positions.clear();
    frame.velocities.clear();
    frame.channels.clear();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        TableColumn const& column = columns[i];
        if (column.use == ColumnUse::position) {
            _positionColumns[column.axis] = i;
        } else if (column.use == ColumnUse::velocity) {
            _velocityColumns[column.axis] = i;
            _hasVelocities = true;
        } else if (column.use != ColumnUse::ignored) {
            _channelColumns.push_back(i);
            frame.channels.push_back(ParticleChannel{column.name, {}});
            frame.channels.back().values.reserve(rowCount);
            if (column.isId) {
                _idColumn = i;
            }
        }
    }
    frame.positions.reserve(rowCount);
    frame.velocities.reserve(_hasVelocities ? rowCount : 0);
    _ids.reserve(_idColumn ? rowCount : 0);
}

bool FrameBuilder::addRow() {
    if (_idColumn) {
        double const id = _values[*_idColumn];
        if (!(std::abs(id) <= largestId) || id != std::floor(id)) {
            return false;
        }
        _ids.push_back(id);
    }
    Vector3<double> position = _vector(_positionColumns);
    if (_box) {
        position = _box->origin + _box->edges[0] * position.x + _box->edges[1] * position.y +
                   _box->edges[2] * position.z;
    }
    _frame.positions.push_back(toFloats(position));
    if (_hasVelocities) {
        _frame.velocities.push_back(toFloats(_vector(_velocityColumns)));
    }
    for (std::size_t i = 0; i < _channelColumns.size(); ++i) {
        _frame.channels[i].values.push_back(toFloat(_values[_channelColumns[i]]));
    }
    return true;
}

Vector3<double> FrameBuilder::_vector(std::size_t const (&columns)[3]) const {
    return {_values[columns[0]], _values[columns[1]], _values[columns[2]]};
}

}  // namespace vellum::viewport
