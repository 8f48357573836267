#include "viewport/files/particles/RowReader.h"

#include "viewport/text/TextLines.h"
#include "viewport/text/data_numbers.h"
#include "viewport/text/lower_case.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace vellum::viewport {

namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t' || character == '\r';
}

char const* skipBlanks(char const* here, char const* end) {
    while (here != end && isBlank(*here)) {
        ++here;
    }
    return here;
}

bool isMissingWord(std::string_view word) {
    std::string const lower = lowerCase(word);
    return lower == "na" || lower == "n/a" || lower == "null" || lower == "-";
}

}  // namespace

void RowReader::writeTo(std::vector<ColumnPlace> const& places, std::size_t row) {
    wordLists.resize(form.columns.size());
    for (std::size_t i = 0; i < form.columns.size(); ++i) {
        TableColumn const& column = form.columns[i];
        ColumnPlace const& to = places[i];
        Kind const kind = column.use == ColumnUse::WORDS     ? Kind::WORDS
                          : column.use == ColumnUse::IGNORED ? Kind::IGNORED
                                                             : Kind::NUMBER;
        Cell cell{kind, &ignored, 0, nullptr, &wordLists[i]};
        if (to.numbers != nullptr) {
            cell.number = to.numbers + row * to.step;
            cell.step = to.step;
        }
        if (to.words != nullptr) {
            cell.word = to.words + row;
        }
        if (kind == Kind::NUMBER && column.isId && column.use != ColumnUse::POSITION) {
            idColumn = i;
        }
        cells.push_back(cell);
    }
}

void RowReader::read(std::string_view text, char const* textEnd, std::uint64_t lines) {
    place = text.data();
    char const* const end = text.data() + text.size();
    while (place != end && this->lines < lines) {
        if (char const* const next = _takePlainRow(place, textEnd)) {
            ++this->lines;
            ended = true;
            place = next;
        } else {
            TextLines rest(std::string_view(place, static_cast<std::size_t>(end - place)));
            if (form.isSkipping) {
                rest.skipEmpty();
                this->lines += rest.number();
                place = rest.rest().data();
                if (rest.isAtEnd()) {
                    return;
                }
                if (rest.number() > 0) {
                    // Those may have been the last lines.
                    continue;
                }
            }
            std::string_view const row = rowOf(rest.take());
            ended = rest.isEnded();
            ++this->lines;
            place = rest.rest().data();
            if (!_readRow(row)) {
                found->line = this->lines;
                found->isEnded = ended;
                found->text = row;
                return;
            }
        }
        if (!_finishRow()) {
            found->line = this->lines;
            found->isEnded = ended;
            return;
        }
    }
}

bool RowReader::_finishRow() {
    if (idColumn && !FrameBuilder::isId(*cells[*idColumn].number)) {
        return _fail("the particle's id is not a whole number");
    }
    for (Cell& cell : cells) {
        cell.number += cell.step;
        cell.word += cell.word != nullptr ? 1 : 0;
    }
    ++rows;
    return true;
}

/// Reads a row of plain numbers and words between single separators, as nearly all are.
/// \return behind its line feed; null where it is another one. Then some of its cells may be written.
char const* RowReader::_takePlainRow(char const* here, char const* textEnd) {
    bool const isSeparated = form.separator != ' ';
    std::size_t left = cells.size();
    for (Cell const& cell : cells) {
        if (!isSeparated) {
            here = skipBlanks(here, textEnd);
        } else if (here != textEnd && *here == ' ') {
            ++here;
        }
        char const* next = here;
        if (cell.kind == Kind::NUMBER) {
            next = takeDataNumber(here, textEnd, *cell.number);
            if (next == nullptr) {
                return nullptr;
            }
        } else {
            while (next != textEnd && !isBlank(*next) && *next != '\n') {
                ++next;
            }
            auto const size = static_cast<std::size_t>(next - here);
            bool const isPlain =
                !isSeparated && size > 0 &&
                (form.commentMark == '\0' || std::memchr(here, form.commentMark, size) == nullptr);
            if (!isPlain) {
                return nullptr;
            }
            if (cell.kind == Kind::WORDS) {
                *cell.word = cell.words->indexOf(std::string_view(here, size));
            }
        }
        if (next == textEnd) {
            return nullptr;
        }
        --left;
        if (left > 0 && *next != form.separator && (isSeparated || !isBlank(*next))) {
            return nullptr;
        }
        here = next + (left > 0 ? 1 : 0);
    }
    here = skipBlanks(here, textEnd);
    return here != textEnd && *here == '\n' ? here + 1 : nullptr;
}

std::string_view RowReader::rowOf(std::string_view line) const {
    return form.commentMark != '\0' ? line.substr(0, line.find(form.commentMark)) : line;
}

bool RowReader::_readRow(std::string_view line) {
    bool const isSeparated = form.separator != ' ';
    char const* here = line.data();
    char const* const end = here + line.size();
    std::size_t const count = cells.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && isSeparated) {
            if (here == end) {
                return _fail("has " + std::to_string(i) + " of " + std::to_string(count) + " values");
            }
            ++here;
        }
        std::string_view word;
        if (!readCell(i, here, end, *cells[i].number, word)) {
            return false;
        }
        if (cells[i].kind == Kind::WORDS) {
            *cells[i].word = cells[i].words->indexOf(word);
        }
    }
    if (here != end && skipBlanks(here, end) != end) {
        return _fail("has more than " + std::to_string(count) + " values");
    }
    return true;
}

bool RowReader::readCell(std::size_t column, char const*& here, char const* end, double& value,
                         std::string_view& word) {
    // A tabulator may be the separator; then it is not a blank.
    while (here != end && isBlank(*here) && !(form.separator != ' ' && *here == form.separator)) {
        ++here;
    }
    if (!_takeWord(column, here, end, word)) {
        return false;
    }
    ColumnUse const use = form.columns[column].use;
    return use == ColumnUse::IGNORED || use == ColumnUse::WORDS || _toNumber(column, word, value);
}

bool RowReader::_takeWord(std::size_t column, char const*& here, char const* end, std::string_view& word) {
    char const separator = form.separator;
    char const* const start = here;
    if (separator == ' ') {
        here = std::find_if(start, end, isBlank);
        word = std::string_view(start, static_cast<std::size_t>(here - start));
        return !word.empty() || _fail("has " + std::to_string(column) + " of " +
                                      std::to_string(form.columns.size()) + " values");
    }
    if (here != end && *here == '"') {
        // Two quotes within the quotes stand for one.
        char const* closing = std::find(start + 1, end, '"');
        while (end - closing > 1 && closing[1] == '"') {
            closing = std::find(closing + 2, end, '"');
        }
        if (closing == end) {
            return _fail("has a quote that is not closed");
        }
        word = std::string_view(start + 1, static_cast<std::size_t>(closing - start - 1));
        char const* const behind = closing + 1;
        here = std::find(behind, end, separator);
        return std::all_of(behind, here, isBlank) || _fail("has text behind the quotes of " + inQuotes(word));
    }
    here = std::find(start, end, separator);
    word = std::string_view(start, static_cast<std::size_t>(here - start));
    while (!word.empty() && isBlank(word.back())) {
        word.remove_suffix(1);
    }
    return true;
}

bool RowReader::_toNumber(std::size_t column, std::string_view word, double& value) {
    if (std::optional<double> const number = toDataNumber(word)) {
        value = *number;
        return true;
    }
    bool const isPosition = form.columns[column].use == ColumnUse::POSITION;
    bool const isMissing = word.empty() ? !isPosition : form.isMissingAllowed && isMissingWord(word);
    if (isMissing && !form.columns[column].isId) {
        value = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    return _fail(inQuotes(word) + " in column " + inQuotes(form.columns[column].name) + " is not a number",
                 column);
}

bool RowReader::_fail(std::string const& reason, std::optional<std::size_t> column) {
    found = RowFault{0, true, {}, reason, column};
    return false;
}

}  // namespace vellum::viewport
