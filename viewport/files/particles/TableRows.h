#pragma once

#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/ParticleFrames.h"
#include "viewport/text/TextLines.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Reads the rows of a table, a particle on each line, into a frame. All text formats share it.
class TableRows {
public:
    /// \param separator between two values; a blank stands for any number of BLANKS and tabulators. With another
    ///                  separator values may be in double quotes, rows without words are passed over, and a channel
    ///                  may lack values: they are not a number.
    TableRows(std::vector<TableColumn> const& columns, char separator)
        : columns(columns), separator(separator) {}

    /// Positions are parts of the box's edges, not lengths.
    void placeInto(ParticleBox const& box) { this->box = box; }

    /// Told about the bytes of the text; may be empty.
    void tell(ParticleProgress const& progress) { this->progress = progress; }

    /// Reads `count` rows, or all to the end, and sorts them. Memory is taken for no more rows than the text can hold,
    /// whatever `count` says. After damage the frame is of no use.
    std::optional<TextDamage> read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                   ParticleFrame& frame);

    /// The line of the last damage, as it stands in the text.
    std::string_view damagedLine() const { return line; }

private:
    void _findTexts();
    bool _readRow(std::vector<double>& values);
    bool _readValue(std::size_t column, char const*& here, char const* const& end, double& value);
    bool _fail(std::string const& reason);

    std::vector<TableColumn> columns;
    char separator;
    std::optional<ParticleBox> box;
    ParticleProgress progress;
    std::string_view line;  // being read
    std::string reason;     // of the line's damage
};

}  // namespace vellum::viewport
