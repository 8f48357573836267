#include "viewport/files/particles/LammpsBinary.h"

#include "viewport/files/common/binary_numbers.h"
#include "viewport/files/particles/FrameBuilder.h"
#include "viewport/files/particles/LammpsColumns.h"
#include "viewport/files/particles/binary_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

namespace {

constexpr std::string_view MAGIC_WORDS[] = {"DUMPATOM", "DUMPCUSTOM"};
constexpr std::int32_t MOST_FIELDS = 10'000;
constexpr std::int32_t UPRIGHT = 0;
constexpr std::int32_t TILTED = 1;
constexpr std::int32_t GENERAL = 2;

/// A cursor that takes numbers. Past the end it takes nothing and notes it.
class Bytes {
public:
    explicit Bytes(std::string_view all) : all(all) {}

    template <class T>
    T take() {
        if (left() < sizeof(T)) {
            endedEarly = true;
            at = all.size();
            return T{};
        }
        T const value = binaryNumber<T>(all.data() + at, isBig);
        at += sizeof(T);
        return value;
    }

    std::string_view takeText(std::int64_t size) {
        if (size < 0 || static_cast<std::uint64_t>(size) > left()) {
            endedEarly = endedEarly || size >= 0;
            return {};
        }
        std::string_view const text = all.substr(at, static_cast<std::size_t>(size));
        at += text.size();
        return text;
    }

    void setBigEndian(bool value) { isBig = value; }
    bool isBigEndian() const { return isBig; }
    bool isPastEnd() const { return endedEarly; }
    std::size_t place() const { return at; }
    std::size_t left() const { return all.size() - at; }
    std::size_t size() const { return all.size(); }
    char const* here() const { return all.data() + at; }

private:
    std::string_view all;
    std::size_t at = 0;
    bool isBig = false;
    bool endedEarly = false;
};

/// What is wrong with a dump.
struct BinaryDamage {
    std::string reason;
    bool isAtEnd = false;
};

struct Head {
    ParticleFrame frame;  // time step, time and box
    std::uint64_t count = 0;
    std::uint64_t fields = 0;
    std::uint64_t chunks = 0;
    std::string columns;  // names with blanks between them; empty: the dump does not name them
};

/// The word behind a frame's marker of the newer format; empty where there is none.
std::string_view magicAt(std::string_view bytes) {
    constexpr std::size_t START = 8;
    for (std::string_view const word : MAGIC_WORDS) {
        if (bytes.size() >= START && bytes.substr(START, word.size()) == word) {
            return word;
        }
    }
    return {};
}

class BinaryDump {
public:
    explicit BinaryDump(std::string_view file, ChooseValues choose = {})
        : choose(std::move(choose)), whole(file), bytes(whole) {
        bytes.setBigEndian(_isBigEndian());
        whole.setBigEndian(bytes.isBigEndian());
    }

    /// See LoadFrame.
    Result<LoadedFrame> load(std::optional<std::size_t> const& wanted, Progress const& progress) {
        if (!isPassed) {
            if (std::optional<Fault> const fault = _findFrames()) {
                return *fault;
            }
            isPassed = true;
        }
        LoadedFrame result;
        result.count = starts.size();
        result.number = wanted.value_or(result.count - 1);
        result.timesteps = timesteps;
        result.times = times;
        result.warning = warning;
        if (result.number < result.count) {
            bytes = starts[result.number];
            if (std::optional<std::string> const reason = _readFrame(result, progress)) {
                return Fault{{}, *reason};
            }
        }
        return result;
    }

    /// Whether the first frame has a head, and its box an extent.
    bool beginsWell() {
        Head head;
        if (_readHead(head, units)) {
            return false;
        }
        return std::all_of(std::begin(head.frame.box->edges), std::end(head.frame.box->edges),
                           [](Vector3<double> const& edge) {
                               double const size = length(edge);
                               return size > 0 && std::isfinite(size);
                           });
    }

private:
    /// Passes the whole dump. On a fault the lists are of no use.
    std::optional<Fault> _findFrames() {
        bytes = whole;
        starts.clear();
        timesteps.clear();
        times.clear();
        while (bytes.left() > 0) {
            starts.push_back(bytes);
            if (std::optional<BinaryDamage> const damage = _passFrame()) {
                if (!damage->isAtEnd) {
                    return Fault{{}, damage->reason};
                }
                starts.pop_back();
                warning = "the file is cut off in frame " + std::to_string(starts.size());
                if (starts.empty()) {
                    return Fault{{}, warning};
                }
                warning += ", which is left out";
                break;
            }
        }
        return starts.empty() ? std::optional<Fault>(Fault{{}, "holds no frame"}) : std::nullopt;
    }

    /// The newer format says it; in the older one the number of particles is not large in the right order.
    bool _isBigEndian() const {
        std::string_view const file(bytes.here(), bytes.left());
        std::string_view const magic = magicAt(file);
        if (!magic.empty()) {
            std::size_t const place = 8 + magic.size();
            return file.size() >= place + 4 && binaryNumber<std::int32_t>(file.data() + place, true) == 1;
        }
        constexpr std::size_t COUNT = 8;
        return file.size() >= COUNT + 8 && binaryNumber<std::uint64_t>(file.data() + COUNT, true) <
                                               binaryNumber<std::uint64_t>(file.data() + COUNT, false);
    }

    BinaryDamage _damage(std::string const& reason) const {
        return bytes.isPastEnd()
                   ? BinaryDamage{"the file is cut off", true}
                   : BinaryDamage{"byte " + std::to_string(bytes.place()) + ": " + reason, false};
    }

    std::optional<BinaryDamage> _readHead(Head& head, std::string& units) {
        std::string_view const magic = magicAt({bytes.here(), bytes.left()});
        constexpr std::size_t LONGEST_MARK = 18;
        if (magic.empty() && bytes.left() < LONGEST_MARK) {
            return BinaryDamage{"the file is cut off", true};
        }
        std::int64_t const marker = bytes.take<std::int64_t>();
        if (!magic.empty()) {
            if (marker != -static_cast<std::int64_t>(magic.size())) {
                return _damage("a frame does not begin as it should");
            }
            bytes.takeText(static_cast<std::int64_t>(magic.size()));
            std::int32_t const order = bytes.take<std::int32_t>();
            std::int32_t const revision = bytes.take<std::int32_t>();
            if (order != 1 || revision < 1 || bytes.isPastEnd()) {
                return _damage("the byte order or the revision of the format is not known");
            }
            head.frame.timestep = bytes.take<std::int64_t>();
            if (std::optional<BinaryDamage> damage = _readSizes(head)) {
                return damage;
            }
            if (revision >= 2) {
                if (std::optional<BinaryDamage> damage = _readNames(head, units)) {
                    return damage;
                }
            }
        } else {
            head.frame.timestep = marker;
            if (marker < 0) {
                return _damage("a frame does not begin as it should");
            }
            if (std::optional<BinaryDamage> damage = _readSizes(head)) {
                return damage;
            }
        }
        std::int32_t const chunks = bytes.take<std::int32_t>();
        if (chunks < 1 || bytes.isPastEnd()) {
            return _damage("the number of blocks is not positive");
        }
        head.chunks = static_cast<std::uint64_t>(chunks);
        return std::nullopt;
    }

    std::optional<BinaryDamage> _readSizes(Head& head) {
        std::int64_t const count = bytes.take<std::int64_t>();
        std::int32_t const shape = bytes.take<std::int32_t>();
        if (count < 0 || shape < UPRIGHT || shape > GENERAL) {
            return _damage("the number of atoms or the shape of the box is not understood");
        }
        head.count = static_cast<std::uint64_t>(count);
        std::int32_t faces[6];
        for (std::int32_t& face : faces) {
            face = bytes.take<std::int32_t>();
            if (face < 0 || face > 3) {
                return _damage("the box has a face of an unknown kind");
            }
        }
        LammpsBounds bounds;
        if (shape == GENERAL) {
            for (std::size_t i = 0; i < 12; ++i) {
                // The three edges come first, then the corner.
                (i < 9 ? bounds.rows[i / 3][i % 3] : bounds.rows[i - 9][3]) = bytes.take<double>();
            }
        } else {
            for (std::size_t i = 0; i < 6; ++i) {
                bounds.rows[i / 2][i % 2] = bytes.take<double>();
            }
            for (std::size_t i = 0; i < 3 && shape == TILTED; ++i) {
                bounds.rows[i][2] = bytes.take<double>();
            }
        }
        head.frame.box = shape == GENERAL ? bounds.general() : bounds.tilted();
        for (std::size_t i = 0; i < 3; ++i) {
            head.frame.box->isPeriodic[i] = faces[2 * i] == 0;
        }
        std::int32_t const fields = bytes.take<std::int32_t>();
        if (bytes.isPastEnd() || fields < 1 || fields > MOST_FIELDS) {
            return _damage("the number of columns is not understood");
        }
        head.fields = static_cast<std::uint64_t>(fields);
        return std::nullopt;
    }

    std::optional<BinaryDamage> _readNames(Head& head, std::string& units) {
        std::int32_t const unitSize = bytes.take<std::int32_t>();
        std::string_view const style = bytes.takeText(unitSize);
        if (!style.empty()) {
            units = std::string(style);
        }
        if (bytes.take<std::int8_t>() != 0) {
            head.frame.time = bytes.take<double>();
        }
        std::int32_t const namesSize = bytes.take<std::int32_t>();
        head.columns = std::string(bytes.takeText(namesSize));
        return bytes.isPastEnd() || unitSize < 0 || namesSize < 0
                   ? std::optional<BinaryDamage>(_damage("the names of the columns are not understood"))
                   : std::nullopt;
    }

    /// Calls a function with each block of rows, all of which lie within the file.
    template <class Take>
    std::optional<BinaryDamage> _forBlocks(Head const& head, Take const& take) {
        std::uint64_t rows = 0;
        std::uint64_t const rowSize = head.fields * sizeof(double);
        for (std::uint64_t i = 0; i < head.chunks; ++i) {
            std::int32_t const numbers = bytes.take<std::int32_t>();
            if (bytes.isPastEnd() || numbers < 0 || static_cast<std::uint64_t>(numbers) % head.fields != 0) {
                return _damage("a block of rows has a size that is not understood");
            }
            std::uint64_t const count = static_cast<std::uint64_t>(numbers) / head.fields;
            if (count > bytes.left() / rowSize) {
                return BinaryDamage{"the file is cut off", true};
            }
            rows += count;
            if (rows > head.count) {
                return _damage("the frame has more atoms than it declares");
            }
            take(bytes.here(), count);
            bytes.takeText(static_cast<std::int64_t>(count * rowSize));
        }
        return rows == head.count
                   ? std::nullopt
                   : std::optional<BinaryDamage>(_damage("the frame has fewer atoms than it declares"));
    }

    std::optional<BinaryDamage> _passFrame() {
        Head head;
        std::optional<BinaryDamage> damage = _readHead(head, units);
        if (!damage) {
            damage = _forBlocks(head, [](char const*, std::uint64_t) {});
        }
        if (!damage) {
            timesteps.push_back(head.frame.timestep);
            times.push_back(head.frame.time);
        }
        return damage;
    }

    /// Only for a frame that was passed.
    std::optional<std::string> _readFrame(LoadedFrame& result, Progress const& progress) {
        Head head;
        static_cast<void>(_readHead(head, units));
        std::string names = head.columns;
        if (names.empty()) {
            if (!_isOfAtoms(head)) {
                return "the dump is of a format that names no columns; LAMMPS's binary2txt makes a text of "
                       "it";
            }
            names = head.fields == 5 ? "id type xs ys zs" : "id type xs ys zs ix iy iz";
            result.warning = "the dump names no columns, which are taken for " + names +
                             (result.warning.empty() ? "" : "; ") + result.warning;
        }
        std::optional<LammpsColumns> layout = LammpsColumns::of(names, units);
        if (!layout) {
            return LammpsColumns::NO_POSITIONS;
        }
        if (layout->columns.size() != head.fields) {
            return "the dump names " + std::to_string(layout->columns.size()) + " columns and has " +
                   std::to_string(head.fields);
        }
        for (TableColumn& column : layout->columns) {
            column.use = column.use == ColumnUse::CHANNEL ? ColumnUse::NUMBER : column.use;
        }
        result.frame = std::move(head.frame);
        FrameBuilder builder(layout->columns, static_cast<std::size_t>(head.count), result.frame, choose);
        if (layout->isScaled) {
            builder.placeInto(*result.frame.box);
        }
        bool isWhole = true;
        std::vector<PlyScalarType> const fields(layout->columns.size(),
                                                PlyScalarType{sizeof(double), false, true});
        static_cast<void>(_forBlocks(head, [&](char const* place, std::uint64_t count) {
            BinaryRows const rows{place, static_cast<std::size_t>(count), fields, bytes.isBigEndian()};
            auto const report = [&](std::size_t passed) {
                if (progress) {
                    progress(bytes.place() + passed * fields.size() * sizeof(double), bytes.size());
                }
            };
            isWhole = isWhole && !addRows(rows, builder, report);
        }));
        if (!isWhole) {
            return "a particle's id is not a whole number";
        }
        builder.finish();
        return std::nullopt;
    }

    /// Whether the rows are those of "dump atom": an id, a type, three fractions and perhaps three image
    /// flags.
    bool _isOfAtoms(Head const& head) {
        if (head.fields != 5 && head.fields != 8) {
            return false;
        }
        Bytes const start = bytes;
        bool isOfAtoms = true;
        static_cast<void>(_forBlocks(head, [&](char const* place, std::uint64_t count) {
            for (std::uint64_t i = 0; i < count * head.fields; ++i, place += sizeof(double)) {
                double const value = binaryNumber<double>(place, bytes.isBigEndian());
                std::uint64_t const field = i % head.fields;
                bool const isFraction = field >= 2 && field < 5;
                // Particles leave the box a little before they are put back.
                isOfAtoms =
                    isOfAtoms && (isFraction ? value > -1 && value < 2
                                             : value == std::floor(value) && (field > 1 || value >= 1));
            }
        }));
        bytes = start;
        return isOfAtoms;
    }

    ChooseValues choose;
    Bytes whole;
    Bytes bytes;
    std::string units;          // named by the first frame alone
    bool isPassed = false;      // what follows is known
    std::vector<Bytes> starts;  // of the complete frames
    std::vector<std::int64_t> timesteps;
    std::vector<std::optional<double>> times;
    std::string warning;
};

}  // namespace

bool isLammpsBinary(std::string_view bytes) {
    if (!magicAt(bytes).empty()) {
        return true;
    }
    // The older format has no signature: a time step, a number of atoms and a box, all of which must be
    // sound.
    return BinaryDump(bytes).beginsWell();
}

Result<LoadedFrame> readLammpsBinary(std::string_view bytes, std::optional<std::size_t> frame,
                                     Progress const& progress) {
    return BinaryDump(bytes).load(frame, progress);
}

LoadFrame openLammpsBinary(std::string_view bytes, ChooseValues const& choose) {
    auto const dump = std::make_shared<BinaryDump>(bytes, choose);
    return [dump](std::optional<std::size_t> const& frame, Progress const& progress) {
        return dump->load(frame, progress);
    };
}

}  // namespace vellum::viewport
