#include "viewport/files/particles/TableRows.h"

#include "foundation/basic/threads.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace vellum::viewport {

namespace {

bool hasNoNumber(ParticleChannel const& channel) {
    return std::all_of(channel.values.begin(), channel.values.end(),
                       [](double value) { return std::isnan(value); });
}

/// Bytes that are likely to hold so many rows.
std::size_t bytesOfRows(double bytesPerRow, std::uint64_t rows) {
    constexpr double SLACK = 1.02;
    double const bytes = SLACK * bytesPerRow * static_cast<double>(rows) + 4096;
    return bytes < 1e15 ? static_cast<std::size_t>(bytes) : std::numeric_limits<std::size_t>::max();
}

}  // namespace

/// Rows that stand together, cut into parts for the threads.
struct TableRows::Batch {
    struct Part {
        LineSlice slice;
        std::size_t row;  // of the first one, if no line before it is empty
        RowReader reader;
        std::vector<std::vector<std::uint32_t>> indices =
            {};  // of the words in the frame's list, for each column
    };

    std::vector<Part> parts;
    std::size_t rows = 0;  // at most
};

std::optional<TextDamage> TableRows::read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                          ParticleFrame& frame) {
    TextLines const start = lines;
    std::optional<TextDamage> damage = _read(lines, count, frame);
    // Once for each column at most.
    while (damage && _becomesWords(frame)) {
        lines = start;
        damage = _read(lines, count, frame);
    }
    return damage;
}

std::optional<TextDamage> TableRows::_read(TextLines& lines, std::optional<std::uint64_t> const& count,
                                           ParticleFrame& frame) {
    form.isSkipping = form.separator != ' ' || !count;
    fault.reset();
    atOnce = {};
    std::uint64_t const left = extend ? extend(lines) : lines.left();
    std::uint64_t const expectedRows = _expectedRows(lines, left, count);
    TextLines ahead = lines;
    if (form.isSkipping) {
        ahead.skipEmpty();
    }
    if (!ahead.isAtEnd() && count != 0U) {
        std::string_view const first = ahead.take();
        bytesPerRow = static_cast<double>(first.size() + 1);
        _findTexts(first);
    }
    FrameBuilder builder(form.columns, static_cast<std::size_t>(expectedRows), frame, choose);
    if (box) {
        builder.placeInto(*box);
    }
    _report(lines);
    while (!count || builder.rowCount() < *count) {
        if (extend) {
            extend(lines);
        }
        if (form.isSkipping) {
            lines.skipEmpty();
        }
        if (lines.isAtEnd()) {
            if (!count) {
                break;
            }
            return TextDamage{lines.number(),
                              "the text ends after " + std::to_string(builder.rowCount()) + " of " +
                                  std::to_string(*count) + " particles",
                              true};
        }
        if (std::optional<TextDamage> damage = _readBatch(lines, count, builder)) {
            return damage;
        }
        _report(lines);
    }
    builder.finish();
    return std::nullopt;
}

void TableRows::_report(TextLines const& lines) const {
    if (progress) {
        progress(lines.done(), lines.done() + lines.left());
    }
}

std::optional<TextDamage> TableRows::_readBatch(TextLines& lines, std::optional<std::uint64_t> const& count,
                                                FrameBuilder& builder) {
    std::string_view const rest = lines.rest();
    std::size_t const first = builder.rowCount();
    std::uint64_t const mostLines = count ? *count - first : std::numeric_limits<std::uint64_t>::max();
    std::size_t const bytes =
        std::min(atOnce.next(), count ? bytesOfRows(bytesPerRow, mostLines) : rest.size());
    Batch batch = _cut(wholeLines(rest, bytes), mostLines);
    _readParts(batch, rest.data() + rest.size(), builder);
    _closeGaps(batch, first, builder);

    std::uint64_t passed = 0;
    bool isEnded = lines.isEnded();
    char const* end = rest.data();
    for (Batch::Part& part : batch.parts) {
        if (std::optional<RowFault> const& found = part.reader.fault()) {
            fault = *found;
            bool const isNextFrame = !mark.empty() && found->text.substr(0, mark.size()) == mark;
            std::string const reason = isNextFrame ? "the frame has fewer than the " +
                                                         std::to_string(count.value_or(builder.rowCount())) +
                                                         " atoms that it declares"
                                                   : found->reason;
            return TextDamage{lines.number() + passed + found->line, reason, !found->isEnded};
        }
        passed += part.reader.lineCount();
        isEnded = part.reader.rowCount() > 0 ? part.reader.isEnded() : isEnded;
        end = part.reader.end();
    }
    _joinWords(batch, first, builder);
    if (builder.rowCount() > first) {
        bytesPerRow =
            static_cast<double>(end - rest.data()) / static_cast<double>(builder.rowCount() - first);
    }
    lines.passTo(end, passed, isEnded);
    return std::nullopt;
}

TableRows::Batch TableRows::_cut(std::string_view text, std::uint64_t mostLines) const {
    Batch batch;
    std::vector<LineSlice> const slices = sliceLines(text);
    batch.parts.reserve(slices.size());
    for (LineSlice slice : slices) {
        slice.lines = std::min<std::uint64_t>(slice.lines, mostLines - batch.rows);
        if (slice.lines == 0) {
            break;
        }
        batch.parts.push_back({slice, batch.rows, RowReader(form)});
        batch.rows += static_cast<std::size_t>(slice.lines);
    }
    return batch;
}

/// Reads all parts up to the first with a fault. Those behind it may be read or not.
void TableRows::_readParts(Batch& batch, char const* textEnd, FrameBuilder& builder) const {
    constexpr std::size_t MOST_WORDS = 64;  // that are copied for each part
    std::size_t const first = builder.rowCount();
    std::vector<ColumnPlace> const places = builder.addRows(batch.rows);
    std::atomic<std::size_t> firstFault{batch.parts.size()};
    std::atomic<bool> isOutOfMemory{false};
    forRanges(batch.parts.size(), 1, [&](std::size_t number, std::size_t) {
        if (number > firstFault.load(std::memory_order_relaxed)) {
            return;
        }
        Batch::Part& part = batch.parts[number];
        try {
            part.reader.writeTo(places, part.row);
            for (std::size_t column = 0; column < form.columns.size(); ++column) {
                // Nearly all parts have the same words.
                if (places[column].words != nullptr && builder.words(column).all().size() <= MOST_WORDS) {
                    part.reader.words(column) = builder.words(column);
                }
            }
            part.reader.read(part.slice.text, textEnd, part.slice.lines);
        } catch (std::exception const&) {
            isOutOfMemory = true;
        }
        if (part.reader.fault()) {
            std::size_t known = firstFault.load(std::memory_order_relaxed);
            while (number < known && !firstFault.compare_exchange_weak(known, number)) {
            }
            return;
        }
        builder.placeRows(first + part.row, static_cast<std::size_t>(part.reader.rowCount()));
    });
    if (isOutOfMemory) {
        throw std::bad_alloc();
    }
}

/// Moves the rows up to the first fault together: lines without words left gaps between them.
void TableRows::_closeGaps(Batch const& batch, std::size_t first, FrameBuilder& builder) {
    std::size_t filled = first;
    for (Batch::Part const& part : batch.parts) {
        auto const count = static_cast<std::size_t>(part.reader.rowCount());
        if (first + part.row != filled) {
            builder.moveRows(first + part.row, count, filled);
        }
        filled += count;
        if (part.reader.fault()) {
            break;
        }
    }
    builder.keepRows(filled);
}

/// Adds the words of all parts to those of the frame, in the order of the text.
void TableRows::_joinWords(Batch& batch, std::size_t first, FrameBuilder& builder) const {
    std::vector<std::size_t> rows;
    std::size_t row = first;
    bool isSame = true;
    for (Batch::Part& part : batch.parts) {
        rows.push_back(row);
        row += static_cast<std::size_t>(part.reader.rowCount());
        part.indices.resize(form.columns.size());
        for (std::size_t column = 0; column < form.columns.size(); ++column) {
            if (form.columns[column].use == ColumnUse::WORDS) {
                std::vector<std::uint32_t>& indices = part.indices[column];
                bool isSameColumn = true;
                for (std::string_view const word : part.reader.words(column).all()) {
                    indices.push_back(builder.words(column).indexOf(word));
                    isSameColumn = isSameColumn && indices.back() == indices.size() - 1;
                }
                if (isSameColumn) {
                    indices.clear();
                }
                isSame = isSame && isSameColumn;
            }
        }
    }
    if (isSame) {
        return;
    }
    std::vector<ColumnPlace> const places = builder.places();
    forRanges(batch.parts.size(), 1, [&](std::size_t number, std::size_t) {
        Batch::Part const& part = batch.parts[number];
        for (std::size_t column = 0; column < form.columns.size(); ++column) {
            std::vector<std::uint32_t> const& indices = part.indices[column];
            for (std::size_t i = 0; !indices.empty() && i < part.reader.rowCount(); ++i) {
                std::uint32_t& word = places[column].words[rows[number] + i];
                word = indices[word];
            }
        }
    });
}

/// No more rows than the text can hold. Memory that is reserved and not used takes none.
/// \param left bytes that are expected
std::uint64_t TableRows::_expectedRows(TextLines const& lines, std::uint64_t left,
                                       std::optional<std::uint64_t> const& count) const {
    // A value and its separator need two bytes at least; the last line may lack its end.
    std::uint64_t const possible = (left + 1) / (2 * std::max<std::size_t>(form.columns.size(), 1));
    if (count) {
        return std::min(*count, possible);
    }
    TextLines ahead = lines;
    std::uint64_t const bytesOfFirst = ahead.take().size() + 1;
    return std::min(left / bytesOfFirst * 5 / 4, possible);
}

bool TableRows::skip(TextLines& lines, std::uint64_t count) const {
    TextLines ahead = lines;
    std::uint64_t skipped = 0;
    auto const skipLine = [&] {
        std::string_view const line = ahead.take();
        ++skipped;
        return ahead.isEnded() && (mark.empty() || line.substr(0, mark.size()) != mark);
    };
    BytesAtOnce bytesAtOnce;
    double const bytesPerLine = static_cast<double>(TextLines(ahead).take().size() + 1);
    while (skipped < count) {
        std::size_t const bytes = std::min(bytesAtOnce.next(), bytesOfRows(bytesPerLine, count - skipped));
        std::string_view const text = wholeLines(ahead.rest(), bytes);
        if (text.empty()) {
            return false;
        }
        for (LineSlice const& slice : sliceLines(text)) {
            // Rows of numbers have no letter that begins a mark.
            bool const isPlain = slice.lines <= count - skipped && slice.text.back() == '\n' &&
                                 (mark.empty() || slice.text.find(mark.front()) == std::string_view::npos);
            if (isPlain) {
                ahead.passTo(slice.text.data() + slice.text.size(), slice.lines, true);
                skipped += slice.lines;
            } else {
                for (std::uint64_t i = 0; i < slice.lines && skipped < count; ++i) {
                    if (!skipLine()) {
                        return false;
                    }
                }
            }
        }
        _report(ahead);
    }
    lines = ahead;
    return true;
}

void TableRows::_findTexts(std::string_view row) {
    RowReader reader(form);
    std::string_view const line = reader.rowOf(row);
    char const* here = line.data();
    char const* const end = here + line.size();
    double value = 0.0;
    std::string_view word;
    for (std::size_t i = 0; i < form.columns.size(); ++i) {
        char const* const start = here;
        if (!reader.readCell(i, here, end, value, word) && form.columns[i].use == ColumnUse::CHANNEL) {
            form.columns[i].use = ColumnUse::WORDS;
            here = start;
            static_cast<void>(reader.readCell(i, here, end, value, word));
        }
        if (form.separator != ' ' && here != end) {
            ++here;
        }
    }
}

/// Whether the column of the damaged line had no number so far. Then its cells are words, and so are those of
/// all other columns for which the line shows the same: a table of many columns is not read once for each.
bool TableRows::_becomesWords(ParticleFrame const& frame) {
    if (!form.isMissingAllowed || !fault || !fault->column) {
        return false;
    }
    RowReader reader(form);
    std::vector<std::size_t> found;
    std::size_t channel = 0;
    char const* here = fault->text.data();
    char const* const end = here + fault->text.size();
    for (std::size_t i = 0; i < form.columns.size(); ++i) {
        double value = 0;
        std::string_view word;
        bool const isNumber = reader.readCell(i, here, end, value, word);
        if (form.separator != ' ') {
            here = std::find(here, end, form.separator);
            here += here != end ? 1 : 0;
        }
        ColumnUse const use = form.columns[i].use;
        if (use == ColumnUse::CHANNEL && !isNumber && hasNoNumber(frame.channels[channel])) {
            found.push_back(i);
        }
        channel += use == ColumnUse::CHANNEL || use == ColumnUse::NUMBER ? 1 : 0;
    }
    if (std::find(found.begin(), found.end(), *fault->column) == found.end()) {
        return false;
    }
    for (std::size_t const column : found) {
        form.columns[column].use = ColumnUse::WORDS;
    }
    return true;
}

}  // namespace vellum::viewport
