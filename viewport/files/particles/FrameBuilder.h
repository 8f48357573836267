#pragma once

#include "viewport/files/particles/NeededValues.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/WordList.h"

#include <array>
#include <cstddef>
#include <cstdint>
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

/// Where the rows of a column are written. Both are null where they are not kept.
struct ColumnPlace {
    double* numbers = nullptr;  ///< null also of a column whose values nobody needs
    std::size_t step = 1;       ///< from a number to that of the next row
    std::uint32_t* words = nullptr;
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
///
/// Or many rows at once, whose places several threads may fill:
///
///     std::vector<ColumnPlace> const places = builder.addRows(count);
///     ... places[column].numbers[row * places[column].step] = ...;
///     builder.placeRows(first, count);
///     builder.finish();
class FrameBuilder {
public:
    /// Reserves memory for `rowCount` rows, a number that the caller has checked; more may be added.
    /// \param choose which values are kept; ids are kept until the particles are sorted
    FrameBuilder(std::vector<TableColumn> const& columns, std::size_t rowCount, ParticleFrame& frame,
                 ChooseValues const& choose = {});

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

    /// Adds rows without values, which are to be written before anything else is done. \return for each
    /// column where those of the first of these rows belong. The places are valid until rows are added again.
    std::vector<ColumnPlace> addRows(std::size_t count);

    /// The same of all rows that there are.
    std::vector<ColumnPlace> places() { return _placesFrom(0); }

    /// Takes rows off the end again, down to so many.
    void keepRows(std::size_t count);

    /// Takes the rows from `from` on down to `to`, which is not behind it: those between are lost, as are the
    /// last ones.
    void moveRows(std::size_t from, std::size_t count, std::size_t to);

    /// Makes lengths of the written positions of some rows where they are fractions, and takes the lengths of
    /// vectors whose components are not kept. To be called for all rows before others are added. Several
    /// threads may do this, each with rows of its own.
    void placeRows(std::size_t first, std::size_t count);

    /// Whether a number can be the id of a particle: it is whole and at most 2^53.
    static bool isId(double id);

    std::optional<std::size_t> columnOfIds() const { return idColumn; }

    std::size_t rowCount() const { return rows; }  ///< those added so far

    /// The words of a column, to which the indices of its rows belong.
    WordList& words(std::size_t column) { return wordLists[labelIndices[column]]; }

    /// Sorts the particles by their ids, if there are any, and finds what the names of the columns say (see
    /// findMeanings()).
    void finish();

private:
    /// A vector whose lengths are kept: where its components are.
    struct MeasuredVector {
        std::size_t vector;   // of the frame
        bool isTemporary[3];  // the component is in the rows that were added last alone
    };

    void _choose(ChooseValues const& choose);
    std::vector<ColumnPlace> _placesFrom(std::size_t first);
    Vector3<double> _placed(Vector3<double> const& position) const;

    ParticleFrame& frame;
    std::optional<ParticleBox> box;
    std::vector<double> row;  // one for each column
    std::size_t rows = 0;
    bool hasPositions = false;
    std::size_t positionColumns[3] = {0, 0, 0};
    std::vector<std::size_t> channelColumns;  // one for each channel of the frame
    std::vector<std::size_t> labelColumns;    // one for each labels of the frame
    std::vector<std::size_t> labelIndices;    // one for each column: of its labels
    std::vector<WordList> wordLists;          // one for each labels of the frame
    std::vector<bool> areKept;                // of each channel
    std::vector<MeasuredVector> measured;
    std::vector<ValueList<double>> temporary;  // one for each channel: of the rows that were added last
    std::size_t temporaryRow = 0;              // the first of those
    std::optional<std::size_t> idColumn;
    std::size_t idChannel = 0;
    bool areIdsKept = true;
};

}  // namespace vellum::viewport
