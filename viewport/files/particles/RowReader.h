#pragma once

#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/WordList.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// How the rows of a table are written.
struct TableForm {
    std::vector<TableColumn> columns;
    char separator = ' ';  ///< as in TableRows
    bool isMissingAllowed = false;
    char commentMark = '\0';  ///< none
    bool isSkipping = false;  ///< lines without words are no rows
};

/// What is wrong with a row.
struct RowFault {
    std::uint64_t line = 0;  ///< among those of the rows, from 1
    bool isEnded = true;     ///< the line has an end
    std::string_view text;   ///< of the line, without its comment
    std::string reason;
    std::optional<std::size_t> column;  ///< that does not hold a number
};

/// Reads some rows of a table that stand together, on one thread.
class RowReader {
public:
    /// \param form must outlive it
    explicit RowReader(TableForm const& form) : form(form) {}

    /// Where the rows belong: as FrameBuilder::addRows() gave it.
    /// \param row of the first one, from there
    void writeTo(std::vector<ColumnPlace> const& places, std::size_t row);

    /// Reads rows up to a number of lines or the first fault.
    /// \param text begins with a line; `lines` of them are within it
    /// \param textEnd of the whole text, of which numbers are read in larger pieces
    void read(std::string_view text, char const* textEnd, std::uint64_t lines);

    std::uint64_t rowCount() const { return rows; }
    std::uint64_t lineCount() const { return lines; }  ///< of those passed, also of the fault's
    bool isEnded() const { return ended; }             ///< as in TextLines
    char const* end() const { return place; }          ///< behind the lines passed
    std::optional<RowFault> const& fault() const { return found; }

    /// The words of a column. Before anything is read words may be added, which then have the first indices.
    WordList& words(std::size_t column) { return wordLists[column]; }

    // == Cells of a single line ==

    /// The line without its comment.
    std::string_view rowOf(std::string_view line) const;

    /// Reads a cell and leaves `here` at the separator behind it or at the end of the line.
    /// \return false, with a fault, where it cannot be read
    bool readCell(std::size_t column, char const*& here, char const* end, double& value,
                  std::string_view& word);

private:
    enum class Kind { NUMBER, WORDS, IGNORED };

    struct Cell {
        Kind kind;
        double* number;
        std::size_t step;
        std::uint32_t* word;
        WordList* words;
    };

    char const* _takePlainRow(char const* here, char const* textEnd);
    bool _readRow(std::string_view line);
    bool _takeWord(std::size_t column, char const*& here, char const* end, std::string_view& word);
    bool _toNumber(std::size_t column, std::string_view word, double& value);
    bool _fail(std::string const& reason, std::optional<std::size_t> column = std::nullopt);
    bool _finishRow();

    TableForm const& form;
    std::vector<Cell> cells;          // one for each column, of the next row
    std::vector<WordList> wordLists;  // one for each column
    std::optional<std::size_t> idColumn;
    double ignored = 0;
    std::uint64_t rows = 0;
    std::uint64_t lines = 0;
    bool ended = true;
    char const* place = nullptr;
    std::optional<RowFault> found;
};

}  // namespace vellum::viewport
