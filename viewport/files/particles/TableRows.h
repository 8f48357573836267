#pragma once

#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/text/TextLines.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Reads the rows of a table, a particle on each line, into a frame. All text formats share it.
class TableRows {
public:
    /// \param separator between two values; a blank stands for any number of blanks and tabulators. With
    ///                  another separator values may be in double quotes, rows without words are skipped, and
    ///                  cells of channels may be empty: they are NaN.
    TableRows(std::vector<TableColumn> const& columns, char separator)
        : columns(columns), separator(separator) {}

    /// Positions are fractions of the box's edges, not lengths.
    void placeInto(ParticleBox const& box) { this->box = box; }

    /// A row that begins with this mark and is not a row of this table begins the next one: its damage is
    /// reported as missing rows. Empty: no mark.
    void endAt(std::string_view mark) { this->mark = mark; }

    /// The words NA, N/A, null and - are NaN, too. A column without a number may begin with them and go on
    /// with words.
    void allowMissing() { isMissingAllowed = true; }

    /// What follows this mark in a row is no part of it.
    void allowComments(char mark) { commentMark = mark; }

    /// Called with the bytes of the text; may be empty.
    void report(Progress const& progress) { this->progress = progress; }

    /// Reads `count` rows, or all to the end, and sorts them. Memory is reserved for no more rows than the
    /// text can hold, whatever `count` says. After damage the content of the frame is undefined.
    std::optional<TextDamage> read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                   ParticleFrame& frame);

    /// Steps over `count` rows without looking at their values.
    /// \return false, and the lines stay where they are, where only reading the rows tells whether they are
    ///         complete: the text ends before them or within the last one, or a row begins with the mark.
    bool skip(TextLines& lines, std::uint64_t count) const;

private:
    std::optional<TextDamage> _read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                    ParticleFrame& frame);
    std::uint64_t _expectedRows(TextLines const& lines, std::optional<std::uint64_t> const& count) const;
    void _findTexts();
    bool _readRow(FrameBuilder& builder);
    bool _readCell(std::size_t column, char const*& here, char const* end, double& value,
                   std::string_view& word);
    bool _takeWord(std::size_t column, char const*& here, char const* end, std::string_view& word);
    bool _toNumber(std::size_t column, std::string_view word, double& value);
    bool _becomesWords(ParticleFrame const& frame);
    bool _fail(std::string const& reason);

    std::vector<TableColumn> columns;
    char separator;
    bool isMissingAllowed = false;
    char commentMark = '\0';  // none
    std::optional<ParticleBox> box;
    std::string_view mark;
    Progress progress;
    std::vector<char> isNumber;               // one for each column: 1 where it holds numbers
    std::string_view line;                    // being read
    std::string reason;                       // of the line's damage
    std::optional<std::size_t> failedColumn;  // of the line: it does not hold a number
};

}  // namespace vellum::viewport
