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
    ///                  a channel may lack values: they are NaN.
    TableRows(std::vector<TableColumn> const& columns, char separator)
        : columns(columns), separator(separator) {}

    /// Positions are fractions of the box's edges, not lengths.
    void placeInto(ParticleBox const& box) { this->box = box; }

    /// A row that begins with this mark and is not a row of this table begins the next one: its damage is
    /// reported as missing rows. Empty: no mark.
    void endAt(std::string_view mark) { this->mark = mark; }

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
    void _findTexts();
    bool _readRow(FrameBuilder& builder);
    bool _readValue(std::size_t column, char const*& here, char const* const& end, double& value,
                    std::string_view& word);
    bool _fail(std::string const& reason);

    std::vector<TableColumn> columns;
    char separator;
    std::optional<ParticleBox> box;
    std::string_view mark;
    Progress progress;
    std::string_view line;  // being read
    std::string reason;     // of the line's damage
};

}  // namespace vellum::viewport
