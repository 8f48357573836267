#pragma once

#include "viewport/files/common/LineSlices.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/RowReader.h"
#include "viewport/text/TextLines.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Reads the rows of a table, a particle on each line, into a frame. All text formats share it.
class TableRows {
public:
    /// \param separator between two values; a blank stands for any number of blanks and tabulators. With
    ///                  another separator values may be in double quotes, rows without words are skipped, and
    ///                  cells of channels may be empty: they are NaN.
    TableRows(std::vector<TableColumn> const& columns, char separator) {
        form.columns = columns;
        form.separator = separator;
    }

    /// Positions are fractions of the box's edges, not lengths.
    void placeInto(ParticleBox const& box) { this->box = box; }

    /// A row that begins with this mark and is not a row of this table begins the next one: its damage is
    /// reported as missing rows. Empty: no mark.
    void endAt(std::string_view mark) { this->mark = mark; }

    /// The words NA, N/A, null and - are NaN, too. A column without a number may begin with them and go on
    /// with words.
    void allowMissing() { form.isMissingAllowed = true; }

    /// What follows this mark in a row is no part of it.
    void allowComments(char mark) { form.commentMark = mark; }

    /// Which values of the frame are kept; empty: all. Not together with allowMissing(), which looks at them.
    void keep(ChooseValues const& choose) { this->choose = choose; }

    /// Called before rows are read; may put the end of the lines behind others, and says how many bytes of
    /// lines are expected in all. Empty: the lines are all that there is.
    using Extend = std::function<std::uint64_t(TextLines& lines)>;
    void follow(Extend const& extend) { this->extend = extend; }

    /// Called with the bytes of the text; may be empty.
    void report(Progress const& progress) { this->progress = progress; }

    /// Reads `count` rows, or all to the end, on all cores, and sorts them. Memory is reserved for no more
    /// rows than the text can hold, whatever `count` says. After damage the content of the frame is
    /// undefined.
    std::optional<TextDamage> read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                   ParticleFrame& frame);

    /// Steps over `count` rows without looking at their values.
    /// \return false, and the lines stay where they are, where only reading the rows tells whether they are
    ///         complete: the text ends before them or within the last one, or a row begins with the mark.
    bool skip(TextLines& lines, std::uint64_t count) const;

private:
    struct Batch;

    std::optional<TextDamage> _read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                    ParticleFrame& frame);
    std::optional<TextDamage> _readBatch(TextLines& lines, std::optional<std::uint64_t> const& count,
                                         FrameBuilder& builder);
    Batch _cut(std::string_view text, std::uint64_t mostLines) const;
    void _readParts(Batch& batch, char const* textEnd, FrameBuilder& builder) const;
    static void _closeGaps(Batch const& batch, std::size_t first, FrameBuilder& builder);
    void _joinWords(Batch& batch, std::size_t first, FrameBuilder& builder) const;
    std::uint64_t _expectedRows(TextLines const& lines, std::uint64_t left,
                                std::optional<std::uint64_t> const& count) const;
    void _findTexts(std::string_view row);
    bool _becomesWords(ParticleFrame const& frame);
    void _report(TextLines const& lines) const;

    TableForm form;
    std::optional<ParticleBox> box;
    std::string_view mark;
    ChooseValues choose;
    Extend extend;
    Progress progress;
    BytesAtOnce atOnce;
    double bytesPerRow = 1;         // of those read so far, or of the first one
    std::optional<RowFault> fault;  // of the damaged line
};

}  // namespace vellum::viewport
