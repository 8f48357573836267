#include "viewport/files/particles/FrameBuilder.h"

#include "foundation/basic/large_pages.h"
#include "viewport/files/particles/name_meanings.h"
#include "viewport/files/particles/vector_length.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr double LARGEST_ID = 9007199254740992.0;  // 2^53: whole numbers up to here are exact

template <class T>
void reserve(ValueList<T>& values, std::size_t count) {
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
                           ParticleFrame& frame, ChooseValues const& choose)
    : frame(frame), row(columns.size(), 0.0), labelIndices(columns.size(), 0) {
    frame.positions.clear();
    frame.channels.clear();
    frame.labels.clear();
    frame.vectors.clear();
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
        }
    }
    wordLists.resize(labelColumns.size());
    temporary.resize(frame.channels.size());
    areKept.assign(frame.channels.size(), true);
    if (choose) {
        _choose(choose);
    }
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        reserve(frame.channels[i].values, areKept[i] ? rowCount : 0);
    }
    for (MeasuredVector const& one : measured) {
        reserve(frame.vectors[one.vector].lengths, rowCount);
    }
    reserve(frame.positions, hasPositions ? rowCount : 0);
}

/// Asks by the names which values are needed.
void FrameBuilder::_choose(ChooseValues const& choose) {
    findMeanings(frame);
    NeededValues const needed = choose(frame);
    areKept = needed.channels;
    // Whether they are colors is found out in the end.
    for (std::size_t axis = 0; frame.colors && axis < 3; ++axis) {
        areKept[frame.colors->columns[axis]] = true;
    }
    if (idColumn) {
        areIdsKept = areKept[idChannel];
        areKept[idChannel] = true;
    }
    for (std::size_t i = 0; i < frame.vectors.size(); ++i) {
        std::array<std::size_t, 3> const& columns = frame.vectors[i].columns;
        MeasuredVector one{i, {!areKept[columns[0]], !areKept[columns[1]], !areKept[columns[2]]}};
        // The lengths of components that are kept can be taken at any time.
        if (needed.lengths[i] && (one.isTemporary[0] || one.isTemporary[1] || one.isTemporary[2])) {
            measured.push_back(one);
        }
    }
}

bool FrameBuilder::isId(double id) {
    return std::abs(id) <= LARGEST_ID && id == std::floor(id);
}

bool FrameBuilder::addRow() {
    if (idColumn && !isId(row[*idColumn])) {
        return false;
    }
    if (hasPositions) {
        frame.positions.push_back(
            _placed({row[positionColumns[0]], row[positionColumns[1]], row[positionColumns[2]]}));
    }
    for (std::size_t i = 0; i < channelColumns.size(); ++i) {
        if (areKept[i]) {
            frame.channels[i].values.push_back(row[channelColumns[i]]);
        }
    }
    for (MeasuredVector const& one : measured) {
        std::array<std::size_t, 3> const& columns = frame.vectors[one.vector].columns;
        frame.vectors[one.vector].lengths.push_back(vectorLength(row[channelColumns[columns[0]]],
                                                                 row[channelColumns[columns[1]]],
                                                                 row[channelColumns[columns[2]]]));
    }
    for (std::size_t i = 0; i < labelColumns.size(); ++i) {
        frame.labels[i].indices.push_back(static_cast<std::uint32_t>(row[labelColumns[i]]));
    }
    ++rows;
    return true;
}

std::vector<ColumnPlace> FrameBuilder::addRows(std::size_t count) {
    std::size_t const first = rows;
    keepRows(first + count);
    std::vector<ColumnPlace> places = _placesFrom(first);
    temporaryRow = first;
    for (MeasuredVector const& one : measured) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::size_t const channel = frame.vectors[one.vector].columns[axis];
            if (one.isTemporary[axis]) {
                temporary[channel].resize(count);
                places[channelColumns[channel]] = {temporary[channel].data(), 1, nullptr};
            }
        }
    }
    return places;
}

std::vector<ColumnPlace> FrameBuilder::_placesFrom(std::size_t first) {
    std::vector<ColumnPlace> places(row.size());
    for (std::size_t axis = 0; hasPositions && axis < 3; ++axis) {
        // A position is three doubles without gaps.
        auto* const numbers = reinterpret_cast<double*>(frame.positions.data() + first);
        places[positionColumns[axis]] = {numbers + axis, 3, nullptr};
    }
    for (std::size_t i = 0; i < channelColumns.size(); ++i) {
        if (areKept[i]) {
            places[channelColumns[i]] = {frame.channels[i].values.data() + first, 1, nullptr};
        }
    }
    for (std::size_t i = 0; i < labelColumns.size(); ++i) {
        places[labelColumns[i]] = {nullptr, 1, frame.labels[i].indices.data() + first};
    }
    return places;
}

void FrameBuilder::keepRows(std::size_t count) {
    frame.positions.resize(hasPositions ? count : 0);
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        frame.channels[i].values.resize(areKept[i] ? count : 0);
    }
    for (MeasuredVector const& one : measured) {
        frame.vectors[one.vector].lengths.resize(count);
    }
    for (ParticleLabels& labels : frame.labels) {
        labels.indices.resize(count);
    }
    rows = count;
}

void FrameBuilder::moveRows(std::size_t from, std::size_t count, std::size_t to) {
    auto const move = [&](auto& list) {
        auto const first = list.begin() + static_cast<std::ptrdiff_t>(from);
        std::copy(first, first + static_cast<std::ptrdiff_t>(count),
                  list.begin() + static_cast<std::ptrdiff_t>(to));
    };
    if (hasPositions) {
        move(frame.positions);
    }
    for (std::size_t i = 0; i < frame.channels.size(); ++i) {
        if (areKept[i]) {
            move(frame.channels[i].values);
        }
    }
    for (MeasuredVector const& one : measured) {
        move(frame.vectors[one.vector].lengths);
    }
    for (ParticleLabels& labels : frame.labels) {
        move(labels.indices);
    }
}

void FrameBuilder::placeRows(std::size_t first, std::size_t count) {
    for (std::size_t i = first; box && hasPositions && i < first + count; ++i) {
        frame.positions[i] = _placed(frame.positions[i]);
    }
    for (MeasuredVector const& one : measured) {
        ParticleVector& vector = frame.vectors[one.vector];
        double const* components[3];  // of the first row
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::size_t const channel = vector.columns[axis];
            components[axis] = one.isTemporary[axis] ? temporary[channel].data() + (first - temporaryRow)
                                                     : frame.channels[channel].values.data() + first;
        }
        for (std::size_t i = 0; i < count; ++i) {
            vector.lengths[first + i] = vectorLength(components[0][i], components[1][i], components[2][i]);
        }
    }
}

Vector3<double> FrameBuilder::_placed(Vector3<double> const& position) const {
    return box ? box->origin + box->edges[0] * position.x + box->edges[1] * position.y +
                     box->edges[2] * position.z
               : position;
}

void FrameBuilder::finish() {
    for (std::size_t i = 0; i < wordLists.size(); ++i) {
        frame.labels[i].words = wordLists[i].texts();
    }
    if (idColumn) {
        ValueList<double> ids;
        if (!areIdsKept) {
            // They have no part in the sorting themselves.
            ids.swap(frame.channels[idChannel].values);
        }
        frame.sortBy(areIdsKept ? frame.channels[idChannel].values : ids);
    }
    std::vector<ParticleVector> former = std::move(frame.vectors);
    findMeanings(frame);
    for (MeasuredVector const& one : measured) {
        for (ParticleVector& vector : frame.vectors) {
            if (vector.columns == former[one.vector].columns) {
                vector.lengths = std::move(former[one.vector].lengths);
            }
        }
    }
}

}  // namespace vellum::viewport
