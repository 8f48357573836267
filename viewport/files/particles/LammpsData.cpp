#include "viewport/files/particles/LammpsData.h"

#include "viewport/files/particles/FrameIndex.h"
#include "viewport/files/particles/TableRows.h"
#include "viewport/files/particles/lammps_units.h"
#include "viewport/files/particles/name_meanings.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vellum::viewport {

namespace {

using Damage = std::optional<TextDamage>;
using Words = std::vector<std::string_view>;

constexpr std::size_t IMAGE_FLAGS = 3;

std::string_view withoutComment(std::string_view line) {
    return line.substr(0, line.find('#'));
}

Words wordsOf(std::string_view line) {
    Words words;
    for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
        words.push_back(word);
    }
    return words;
}

/// The first word of the comment; empty where there is none.
std::string_view wordOfComment(std::string_view line) {
    std::size_t const mark = line.find('#');
    if (mark == std::string_view::npos) {
        return {};
    }
    line.remove_prefix(mark + 1);
    return takeWord(line);
}

/// The columns of an atom style, with blanks between them; empty for a style that is not known.
std::string_view columnsOf(std::string_view style) {
    struct Row {
        std::string_view style;
        std::string_view columns;
    };
    static constexpr Row ROWS[] = {
        {"atomic", "id type x y z"},
        {"angle", "id mol type x y z"},
        {"body", "id type bodyflag mass x y z"},
        {"bond", "id mol type x y z"},
        {"charge", "id type q x y z"},
        {"dipole", "id type q x y z mux muy muz"},
        {"dpd", "id type theta x y z"},
        {"edpd", "id type edpd_temp edpd_cv x y z"},
        {"electron", "id type q spin eradius x y z"},
        {"ellipsoid", "id type ellipsoidflag density x y z"},
        {"full", "id mol type q x y z"},
        {"line", "id mol type lineflag density x y z"},
        {"mdpd", "id type rho x y z"},
        {"molecular", "id mol type x y z"},
        {"peri", "id type volume density x y z"},
        {"sph", "id type rho esph cv x y z"},
        {"sphere", "id type diameter density x y z"},
        {"spin", "id type x y z spx spy spz sp"},
        {"template", "id mol template_index template_atom type x y z"},
        {"tri", "id mol type triangleflag density x y z"},
    };
    // Suffixes name a variant for other processors.
    style = style.substr(0, style.find('/'));
    for (Row const& row : ROWS) {
        if (row.style == style) {
            return row.columns;
        }
    }
    return {};
}

enum class Section { NONE, ATOMS, VELOCITIES, MASSES, LABELS, SKIPPED };

/// The section that a line begins. Rows begin with numbers, or in sections of coefficients with the name of a
/// type, so that only names that are known count.
Section sectionOf(std::string_view line) {
    struct Row {
        std::string_view name;
        Section section;
    };
    static constexpr Row ROWS[] = {
        {"Atoms", Section::ATOMS},        {"Velocities", Section::VELOCITIES},
        {"Masses", Section::MASSES},      {"Atom Type Labels", Section::LABELS},
        {"Ellipsoids", Section::SKIPPED}, {"Lines", Section::SKIPPED},
        {"Triangles", Section::SKIPPED},  {"Bodies", Section::SKIPPED},
        {"Bonds", Section::SKIPPED},      {"Angles", Section::SKIPPED},
        {"Dihedrals", Section::SKIPPED},  {"Impropers", Section::SKIPPED},
    };
    if (line.empty() || line.front() < 'A' || line.front() > 'Z') {
        return Section::NONE;
    }
    Words const words = wordsOf(withoutComment(line));
    std::string name;
    for (std::string_view const word : words) {
        name += (name.empty() ? "" : " ") + std::string(word);
    }
    for (Row const& row : ROWS) {
        if (row.name == name) {
            return row.section;
        }
    }
    bool const isOfMore = words.size() >= 2 && (words.back() == "Coeffs" || words.back() == "Labels");
    return isOfMore ? Section::SKIPPED : Section::NONE;
}

std::optional<std::vector<double>> numbersOf(Words const& words, std::size_t count) {
    std::vector<double> numbers;
    for (std::size_t i = 0; i < count && i < words.size(); ++i) {
        std::optional<double> const number = toDataNumber(words[i]);
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers.size() == count ? std::optional<std::vector<double>>(numbers) : std::nullopt;
}

/// What the lines before the first section say.
class Header {
public:
    std::optional<std::uint64_t> atoms;
    std::uint64_t types = 0;
    bool hasBox = false;

    /// \return false where the line is none of a header.
    bool take(std::string_view line) {
        Words const words = wordsOf(withoutComment(line));
        if (words.size() == 2 && words[1] == "atoms") {
            atoms = toCount(words[0]);
            return atoms.has_value();
        }
        if (words.size() == 3 && words[1] == "atom" && words[2] == "types") {
            types = toCount(words[0]).value_or(0);
            return types > 0;
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            std::string const name(1, "xyz"[axis]);
            if (words.size() == 4 && words[2] == name + "lo" && words[3] == name + "hi") {
                return _takeLimits(words, axis);
            }
            if (words.size() == 4 && words[3] == std::string(1, "abc"[axis]) + "vec") {
                return _takeVector(words, edges[axis]);
            }
        }
        if (words.size() == 6 && words[3] == "xy" && words[4] == "xz" && words[5] == "yz") {
            std::optional<std::vector<double>> const numbers = numbersOf(words, 3);
            if (numbers) {
                tilts = {(*numbers)[0], (*numbers)[1], (*numbers)[2]};
            }
            return numbers.has_value();
        }
        if (words.size() == 5 && words[3] == "abc" && words[4] == "origin") {
            return _takeVector(words, corner);
        }
        // Other counts, as of bonds: they begin with a number.
        return words.empty() || toDataNumber(words[0]).has_value();
    }

    /// Limits that are not given are those of LAMMPS.
    ParticleBox box() const {
        ParticleBox box;
        if (isGeneral) {
            box.origin = corner;
            std::copy(std::begin(edges), std::end(edges), std::begin(box.edges));
            return box;
        }
        box.origin = {limits[0][0], limits[1][0], limits[2][0]};
        box.edges[0] = {limits[0][1] - limits[0][0], 0, 0};
        box.edges[1] = {tilts.x, limits[1][1] - limits[1][0], 0};
        box.edges[2] = {tilts.y, tilts.z, limits[2][1] - limits[2][0]};
        return box;
    }

private:
    bool _takeLimits(Words const& words, std::size_t axis) {
        std::optional<std::vector<double>> const numbers = numbersOf(words, 2);
        if (numbers) {
            std::copy(numbers->begin(), numbers->end(), limits[axis]);
            hasBox = true;
        }
        return numbers.has_value();
    }

    bool _takeVector(Words const& words, Vector3<double>& vector) {
        std::optional<std::vector<double>> const numbers = numbersOf(words, 3);
        if (numbers) {
            vector = {(*numbers)[0], (*numbers)[1], (*numbers)[2]};
            hasBox = true;
            isGeneral = true;
        }
        return numbers.has_value();
    }

    double limits[3][2] = {{-0.5, 0.5}, {-0.5, 0.5}, {-0.5, 0.5}};
    Vector3<double> tilts{0, 0, 0};  // xy, xz, yz
    Vector3<double> edges[3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    Vector3<double> corner{0, 0, 0};
    bool isGeneral = false;
};

class DataReader {
public:
    DataReader(std::string_view text, Progress const& progress) : lines(text), progress(progress) {}

    Result<LoadedFrame> read() {
        Damage damage = _read();
        if (!damage && !hasAtoms) {
            damage = TextDamage{lines.number(), "the section 'Atoms' is missing", true};
        }
        if (!damage) {
            damage = _joinVelocities();
        }
        if (!damage) {
            damage = _nameTypes();
        }
        if (damage) {
            return Fault{{}, damage->message() + (damage->isAtEnd ? "; the file is cut off" : "")};
        }
        result.frame.box = header.box();
        result.warning = warning;
        return std::move(result);
    }

private:
    Damage _read() {
        _takeTitle(lines.take());
        Section section = Section::NONE;
        while (true) {
            lines.skipEmpty();
            if (lines.isAtEnd()) {
                return std::nullopt;
            }
            std::string_view const line = lines.take();
            Section const next = sectionOf(line);
            if (next == Section::NONE) {
                // Before the first section, rows are those of the header.
                if (section == Section::NONE && !header.take(line)) {
                    return lines.damage(inQuotes(line) + " is not understood");
                }
                continue;
            }
            section = next;
            headingLine = lines.number();
            lines.skipEmpty();
            if (Damage damage = _readSection(section, line)) {
                return damage;
            }
        }
    }

    Damage _readSection(Section section, std::string_view line) {
        switch (section) {
        case Section::ATOMS:
            return _readAtoms(line);
        case Section::VELOCITIES:
            return _readVelocities();
        case Section::MASSES:
            return _readTypes(
                [](Words const& /*words*/, std::string_view row) { return wordOfComment(row); });
        case Section::LABELS:
            return _readTypes([](Words const& words, std::string_view /*row*/) {
                return words.size() > 1 ? words[1] : std::string_view();
            });
        default:
            return std::nullopt;
        }
    }

    /// "LAMMPS data file via write_data, version ..., timestep = 2, units = metal"
    void _takeTitle(std::string_view title) {
        result.frame.timestep = 0;
        if (title.substr(0, 6) != "LAMMPS") {
            return;
        }
        Words const words = wordsOf(title);
        for (std::size_t i = 0; i + 2 < words.size(); ++i) {
            std::string_view const value = words[i + 2].substr(0, words[i + 2].find(','));
            if (words[i] == "timestep" && words[i + 1] == "=") {
                result.frame.timestep = toSignedInteger(value).value_or(0);
            } else if (words[i] == "units" && words[i + 1] == "=") {
                units = std::string(value);
            }
        }
    }

    TableRows _rows(std::vector<TableColumn> const& columns) const {
        TableRows rows(columns, ' ');
        rows.allowComments('#');
        rows.report(progress);
        return rows;
    }

    std::vector<TableColumn> _columns(std::string_view names) const {
        std::vector<TableColumn> columns;
        for (std::string_view const name : wordsOf(names)) {
            // The type may be a word.
            ColumnUse const use = name == "type" ? ColumnUse::CHANNEL : ColumnUse::NUMBER;
            columns.push_back(TableColumn{std::string(name), use, 0, name == "id", lammpsUnit(units, name)});
        }
        for (unsigned int axis = 0; axis < 3; ++axis) {
            for (TableColumn& column : columns) {
                if (column.name == std::string(1, "xyz"[axis])) {
                    column.use = ColumnUse::POSITION;
                    column.axis = axis;
                }
            }
        }
        return columns;
    }

    Damage _readAtoms(std::string_view heading) {
        if (!header.atoms) {
            return TextDamage{headingLine, "the header does not tell the number of atoms", false};
        }
        hasAtoms = true;
        TextLines ahead = lines;
        std::size_t const count = *header.atoms > 0 ? wordsOf(withoutComment(ahead.take())).size() : 0;
        std::string_view const style = wordOfComment(heading);
        if (style.empty() && count != 5 && *header.atoms > 0) {
            return TextDamage{headingLine,
                              "the atoms have " + std::to_string(count) +
                                  " columns of a style that is not named; write 'Atoms # full', or the style "
                                  "that they have, in place of 'Atoms'",
                              false};
        }
        std::string names(style.empty() ? columnsOf("atomic") : columnsOf(style));
        bool const isOpen = style == "hybrid" || style == "tdpd";
        if (isOpen) {
            names = "id type x y z";
            for (std::size_t i = 6; i <= count; ++i) {
                names += " column" + std::to_string(i);
            }
        }
        if (names.empty()) {
            return TextDamage{headingLine, "the atom style " + inQuotes(style) + " is not known", false};
        }
        if (!isOpen && count == wordsOf(names).size() + IMAGE_FLAGS) {
            names += " ix iy iz";
        }
        if (Damage damage = _rows(_columns(names)).read(lines, header.atoms, result.frame)) {
            return damage;
        }
        _noteLastLine();
        return std::nullopt;
    }

    Damage _readVelocities() {
        if (!header.atoms || *header.atoms == 0) {
            return std::nullopt;
        }
        TextLines ahead = lines;
        std::size_t const count = wordsOf(withoutComment(ahead.take())).size();
        std::string names = "id vx vy vz";
        if (count == 7) {
            names += " wx wy wz";
        } else {
            for (std::size_t i = 5; i <= count; ++i) {
                names += " column" + std::to_string(i);
            }
        }
        velocityLine = headingLine;
        if (Damage damage = _rows(_columns(names)).read(lines, header.atoms, velocities)) {
            return damage;
        }
        _noteLastLine();
        return std::nullopt;
    }

    /// Reads rows of numbers and names of types.
    /// \param nameIn finds the name in a row; empty: it has none
    template <class NameIn>
    Damage _readTypes(NameIn const& nameIn) {
        for (std::uint64_t i = 0; i < header.types; ++i) {
            TextLines const start = lines;
            std::string_view const row = lines.take();
            Words const words = wordsOf(withoutComment(row));
            std::optional<std::int64_t> const type =
                words.empty() ? std::nullopt : toSignedInteger(words.front());
            if (!type) {
                // Types may be given by their labels, and fewer than all.
                if (!words.empty() && sectionOf(row) == Section::NONE) {
                    continue;
                }
                lines = start;
                return std::nullopt;
            }
            std::string_view const name = nameIn(words, row);
            if (!name.empty()) {
                typeNames[*type] = std::string(name);
            }
        }
        return std::nullopt;
    }

    Damage _joinVelocities() {
        if (velocities.channels.empty()) {
            return std::nullopt;
        }
        ParticleFrame& frame = result.frame;
        if (frame.channel("id")->values != velocities.channel("id")->values) {
            return TextDamage{velocityLine, "the velocities are those of other ids than the atoms", false};
        }
        std::move(velocities.channels.begin() + 1, velocities.channels.end(),
                  std::back_inserter(frame.channels));
        findMeanings(frame);
        return std::nullopt;
    }

    /// Turns types that are words into their numbers.
    Damage _nameTypes() {
        ParticleFrame& frame = result.frame;
        frame.typeNames = typeNames;
        auto const words = std::find_if(frame.labels.begin(), frame.labels.end(),
                                        [](ParticleLabels const& labels) { return labels.name == "type"; });
        if (words == frame.labels.end()) {
            return std::nullopt;
        }
        std::unordered_map<std::string_view, std::int64_t> types;
        for (auto const& [type, name] : typeNames) {
            types.emplace(name, type);
        }
        std::vector<double> numbers;
        for (std::string const& word : words->words) {
            auto const type = types.find(word);
            if (type == types.end()) {
                return TextDamage{lines.number(), "the type " + inQuotes(word) + " has no label", false};
            }
            numbers.push_back(static_cast<double>(type->second));
        }
        ParticleChannel channel{"type", {}, {}};
        channel.values.reserve(words->indices.size());
        for (std::uint32_t const index : words->indices) {
            channel.values.push_back(numbers[index]);
        }
        frame.labels.erase(words);
        // Behind the id and the molecule, as in rows of numbers.
        std::size_t const place = frame.channel("mol") != nullptr ? 2 : 1;
        frame.channels.insert(frame.channels.begin() + static_cast<std::ptrdiff_t>(place),
                              std::move(channel));
        findMeanings(frame);
        return std::nullopt;
    }

    void _noteLastLine() {
        if (!lines.isEnded()) {
            warning = lastLineWarning(lines);
        }
    }

    TextLines lines;
    Progress const& progress;
    Header header;
    std::string units;
    std::map<std::int64_t, std::string> typeNames;
    std::uint64_t headingLine = 0;  // of the section
    bool hasAtoms = false;
    ParticleFrame velocities;
    std::uint64_t velocityLine = 0;
    std::string warning;
    LoadedFrame result;
};

}  // namespace

bool isLammpsData(std::string_view text) {
    TextLines lines(text);
    lines.take();
    Header header;
    while (!lines.isAtEnd()) {
        std::string_view const line = lines.take();
        if (sectionOf(line) != Section::NONE) {
            break;
        }
        if (!header.take(line)) {
            return false;
        }
    }
    return header.atoms && (header.types > 0 || header.hasBox);
}

Result<LoadedFrame> readLammpsData(std::string_view text, Progress const& progress) {
    return DataReader(text, progress).read();
}

}  // namespace vellum::viewport
