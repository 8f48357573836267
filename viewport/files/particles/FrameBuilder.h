#pragma once

#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/WordList.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// The meaning of a column.
enum class ColumnUse {
    POSITION,
    CHANNEL,  ///< numbers or words, whichever the first row of the text has there
    NUMBER,   ///< numbers
    WORDS,    ///< labels
    IGNORED
};

struct TableColumn {
    std::string name;
    ColumnUse use = ColumnUse::CHANNEL;
    unsigned int axis = 0;  ///< of positions: 0, 1 or 2
    bool isId = false;      ///< the particles are also sorted by these numbers
    std::string unit;       ///< empty: none is known
};

/// Turns three columns that are channels so far into the axes of a vector. \return false, and nothing
/// changes, where one of them is missing.
bool useColumns(std::vector<TableColumn>& columns, std::string_view const (&names)[3], ColumnUse use);

/// Fills a frame row by row from the columns of a table.
///
///     FrameBuilder builder(columns, rowCount, frame);
///     for (...) {
///         builder.values()[0] = ...;  // one for each column
///         builder.setWord(1, ...);    // where it holds words
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

    /// The value of a column of words. The text must live as long as this object.
    void setWord(std::size_t column, std::string_view word) {
        row[column] = static_cast<double>(wordLists[labelIndices[column]].indexOf(word));
    }

    /// Adds a particle. \return false, and nothing is added, where its id is not a whole number of at most
    /// 2^53.
    bool addRow();

    /// Sorts the particles by their ids, if there are any, and finds what the names of the columns say (see
    /// findMeanings()).
    void finish();

private:
    void _addPosition();

    ParticleFrame& frame;
    std::optional<ParticleBox> box;
    std::vector<double> row;  // one for each column
    bool hasPositions = false;
    std::size_t positionColumns[3] = {0, 0, 0};
    std::vector<std::size_t> channelColumns;  // one for each channel of the frame
    std::vector<std::size_t> labelColumns;    // one for each labels of the frame
    std::vector<std::size_t> labelIndices;    // one for each column: of its labels
    std::vector<WordList> wordLists;          // one for each labels of the frame
    std::optional<std::size_t> idColumn;
    std::size_t idChannel = 0;
};

}  // namespace vellum::viewport
