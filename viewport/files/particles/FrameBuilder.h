#pragma once

#include "viewport/files/particles/ParticleFrame.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// The meaning of a column.
enum class ColumnUse {
    POSITION,
    VELOCITY,
    CHANNEL,  ///< a scalar channel if the first row of the text has a number there
    NUMBER,   ///< a scalar channel that must hold numbers
    IGNORED
};

struct TableColumn {
    std::string name;
    ColumnUse use = ColumnUse::CHANNEL;
    unsigned int axis = 0;  ///< of positions and velocities: 0, 1 or 2
    bool isId = false;      ///< the particles are also sorted by these numbers
};

/// Turns three columns that are channels so far into the axes of a vector. \return false, and nothing
/// changes, where one of them is missing.
bool useColumns(std::vector<TableColumn>& columns, std::string_view const (&names)[3], ColumnUse use);

/// The nearest float; numbers beyond all floats become infinite.
float toFloat(double value);

/// Fills a frame row by row from the columns of a table.
///
///     FrameBuilder builder(columns, rowCount, frame);
///     for (...) {
///         builder.values()[0] = ...;  // one for each column
///         if (!builder.addRow()) ...
///     }
///     builder.finish();
class FrameBuilder {
public:
    /// Reserves memory for `rowCount` rows, a number that the caller has checked; more may be added.
    FrameBuilder(std::vector<TableColumn> const& columns, std::size_t rowCount, ParticleFrame& frame);

    /// Positions are fractions of the box's edges, not lengths.
    void placeInto(ParticleBox const& box) { this->box = box; }

    /// The values of the row to be added.
    std::vector<double>& values() { return row; }

    /// Adds a particle. \return false, and nothing is added, where its id is not a whole number of at most
    /// 2^53.
    bool addRow();

    /// Sorts the particles by their ids, if there are any.
    void finish() { frame.sortBy(ids); }

private:
    Vector3<double> _vector(std::size_t const (&columns)[3]) const;

    ParticleFrame& frame;
    std::optional<ParticleBox> box;
    std::vector<double> row;  // one for each column
    bool hasVelocities = false;
    std::size_t positionColumns[3] = {0, 0, 0};
    std::size_t velocityColumns[3] = {0, 0, 0};
    std::vector<std::size_t> channelColumns;  // one for each channel of the frame
    std::optional<std::size_t> idColumn;
    std::vector<double> ids;
};

}  // namespace vellum::viewport
