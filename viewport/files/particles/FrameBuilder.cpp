#include "viewport/files/particles/FrameBuilder.h"

#include "viewport/files/common/large_pages.h"
#include "viewport/files/particles/name_meanings.h"

#include <cmath>

namespace vellum::viewport {

namespace {

constexpr double LARGEST_ID = 9007199254740992.0;  // 2^53: whole numbers up to here are exact

template <class T>
void reserve(std::vector<T>& values, std::size_t count) {
    values.reserve(count);
    preferLargePages(values.data(), values.capacity() * sizeof(T));
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

FrameBuilder::FrameBuilder(std::vector<TableColumn> const& columns, std::size_t rowCount,
                           ParticleFrame& frame)
    : frame(frame), row(columns.size(), 0.0), labelIndices(columns.size(), 0) {
    frame.positions.clear();
    frame.channels.clear();
    frame.labels.clear();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        TableColumn const& column = columns[i];
        if (column.use == ColumnUse::POSITION) {
            positionColumns[column.axis] = i;
            hasPositions = true;
        } else if (column.use == ColumnUse::WORDS) {
            labelIndices[i] = labelColumns.size();
            labelColumns.push_back(i);
            frame.labels.push_back(ParticleLabels{column.name, {}, {}, false});
            reserve(frame.labels.back().indices, rowCount);
        } else if (column.use != ColumnUse::IGNORED) {
            if (column.isId) {
                idColumn = i;
                idChannel = channelColumns.size();
            }
            channelColumns.push_back(i);
            frame.channels.push_back(ParticleChannel{column.name, {}, column.unit});
            reserve(frame.channels.back().values, rowCount);
        }
    }
    wordLists.resize(labelColumns.size());
    reserve(frame.positions, hasPositions ? rowCount : 0);
}

bool FrameBuilder::addRow() {
    if (idColumn) {
        double const id = row[*idColumn];
        if (!(std::abs(id) <= LARGEST_ID) || id != std::floor(id)) {
            return false;
        }
    }
    if (hasPositions) {
        _addPosition();
    }
    for (std::size_t i = 0; i < channelColumns.size(); ++i) {
        frame.channels[i].values.push_back(row[channelColumns[i]]);
    }
    for (std::size_t i = 0; i < labelColumns.size(); ++i) {
        frame.labels[i].indices.push_back(static_cast<std::uint32_t>(row[labelColumns[i]]));
    }
    return true;
}

void FrameBuilder::_addPosition() {
    Vector3<double> position{row[positionColumns[0]], row[positionColumns[1]], row[positionColumns[2]]};
    if (box) {
        position = box->origin + box->edges[0] * position.x + box->edges[1] * position.y +
                   box->edges[2] * position.z;
    }
    frame.positions.push_back(position);
}

void FrameBuilder::finish() {
    for (std::size_t i = 0; i < wordLists.size(); ++i) {
        frame.labels[i].words = wordLists[i].texts();
    }
    if (idColumn) {
        frame.sortBy(frame.channels[idChannel].values);
    }
    findMeanings(frame);
}

}  // namespace vellum::viewport
