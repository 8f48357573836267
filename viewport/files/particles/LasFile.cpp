#include "viewport/files/particles/LasFile.h"

#include "viewport/files/common/binary_numbers.h"
#include "viewport/files/particles/FrameBuilder.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace vellum::viewport {

namespace {

constexpr std::size_t SMALLEST_HEADER = 227;
constexpr std::size_t HEADER_OF_1_4 = 375;
constexpr double DEGREES_PER_STEP = 0.006;  // of the scan angle of the newer formats

template <class T>
T numberAt(std::string_view bytes, std::size_t place) {
    return binaryNumber<T>(bytes.data() + place, false);
}

/// What a format of points holds, and where in a record.
struct Layout {
    std::size_t size;
    bool isNewer;      // returns and classes of more bits, and a finer scan angle
    std::size_t time;  // 0: none, as below
    std::size_t color;
    std::size_t infrared;
};

constexpr Layout LAYOUTS[] = {
    {20, false, 0, 0, 0},   {28, false, 20, 0, 0},  {26, false, 0, 20, 0},  {34, false, 20, 28, 0},
    {57, false, 20, 0, 0},  {63, false, 20, 28, 0}, {30, true, 22, 0, 0},   {36, true, 22, 30, 0},
    {38, true, 22, 30, 36}, {59, true, 22, 0, 0},   {67, true, 22, 30, 36},
};

constexpr char const* CLASSES[] = {
    "never classified",  "unclassified",    "ground",         "low vegetation",
    "medium vegetation", "high vegetation", "building",       "low point",
    "key point",         "water",           "rail",           "road surface",
    "overlap",           "wire guard",      "wire conductor", "transmission tower",
    "wire connector",    "bridge deck",     "high noise",
};

std::vector<TableColumn> columnsOf(Layout const& layout) {
    std::vector<TableColumn> columns;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        columns.push_back(TableColumn{std::string(1, "xyz"[axis]), ColumnUse::POSITION, axis, false, {}});
    }
    auto const add = [&columns](char const* name, char const* unit = "") {
        columns.push_back(TableColumn{name, ColumnUse::NUMBER, 0, false, unit});
    };
    for (char const* const name : {"intensity", "return number", "number of returns", "type"}) {
        add(name);
    }
    add("scan angle", "°");
    add("user data");
    add("point source");
    if (layout.time != 0) {
        add("gps time", "s");
    }
    if (layout.color != 0) {
        for (char const* const name : {"red", "green", "blue"}) {
            add(name);
        }
    }
    if (layout.infrared != 0) {
        add("near infrared");
    }
    return columns;
}

/// The channels of a record, in the order of columnsOf().
void readRecord(std::string_view record, Layout const& layout, double* value) {
    unsigned int const returns = numberAt<std::uint8_t>(record, 14);
    *value++ = numberAt<std::uint16_t>(record, 12);
    if (layout.isNewer) {
        *value++ = returns & 15U;
        *value++ = returns >> 4U & 15U;
        *value++ = numberAt<std::uint8_t>(record, 16);
        *value++ = DEGREES_PER_STEP * numberAt<std::int16_t>(record, 18);
        *value++ = numberAt<std::uint8_t>(record, 17);
        *value++ = numberAt<std::uint16_t>(record, 20);
    } else {
        *value++ = returns & 7U;
        *value++ = returns >> 3U & 7U;
        // The upper bits are flags.
        *value++ = numberAt<std::uint8_t>(record, 15) & 31U;
        *value++ = numberAt<std::int8_t>(record, 16);
        *value++ = numberAt<std::uint8_t>(record, 17);
        *value++ = numberAt<std::uint16_t>(record, 18);
    }
    if (layout.time != 0) {
        *value++ = numberAt<double>(record, layout.time);
    }
    for (std::size_t i = 0; i < 3 && layout.color != 0; ++i) {
        *value++ = numberAt<std::uint16_t>(record, layout.color + 2 * i);
    }
    if (layout.infrared != 0) {
        *value++ = numberAt<std::uint16_t>(record, layout.infrared);
    }
}

/// Scanners without a camera write 0 for all colors.
void settleColors(ParticleFrame& frame) {
    if (!frame.colors) {
        return;
    }
    auto const isBlack = [&frame](std::size_t column) {
        ValueList<double> const& values = frame.channels[column].values;
        return std::all_of(values.begin(), values.end(), [](double value) { return value == 0; });
    };
    if (std::all_of(frame.colors->columns.begin(), frame.colors->columns.end(), isBlack)) {
        frame.colors.reset();
        frame.notes.emplace_back("all of its colors are 0: it is taken to have none");
    } else {
        frame.colors->full = std::max(frame.colors->full, 255.0);
    }
}

}  // namespace

bool isLas(std::string_view bytes) {
    return bytes.substr(0, 4) == "LASF";
}

Result<LoadedFrame> readLas(std::string_view bytes, Progress const& progress) {
    if (!isLas(bytes) || bytes.size() < SMALLEST_HEADER) {
        return Fault{{}, "the header of the LAS file is cut off"};
    }
    unsigned int const minor = numberAt<std::uint8_t>(bytes, 25);
    if (numberAt<std::uint8_t>(bytes, 24) != 1 || minor > 4) {
        return Fault{{}, "the version of the LAS file is not 1.0 to 1.4"};
    }
    unsigned int const format = numberAt<std::uint8_t>(bytes, 104);
    if (format >= 64) {
        return Fault{{}, "is compressed as LAZ, which is not read; uncompress it to LAS"};
    }
    if (format >= std::size(LAYOUTS)) {
        return Fault{{}, "has points of the format " + std::to_string(format) + ", which is not known"};
    }
    Layout const& layout = LAYOUTS[format];
    std::size_t const recordSize = numberAt<std::uint16_t>(bytes, 105);
    if (recordSize < layout.size) {
        return Fault{{},
                     "has records of " + std::to_string(recordSize) +
                         " bytes, too few for points of the format " + std::to_string(format)};
    }
    std::uint64_t count = numberAt<std::uint32_t>(bytes, 107);
    if (minor >= 4) {
        if (bytes.size() < HEADER_OF_1_4) {
            return Fault{{}, "the header of the LAS file is cut off"};
        }
        count = std::max(count, numberAt<std::uint64_t>(bytes, 247));
    }
    std::size_t const start = numberAt<std::uint32_t>(bytes, 96);
    if (start < SMALLEST_HEADER || start > bytes.size()) {
        return Fault{{}, "the points of the LAS file do not begin within it"};
    }
    LoadedFrame result;
    std::uint64_t const held = (bytes.size() - start) / recordSize;
    if (held < count) {
        result.warning = "the file is cut off: it declares " + std::to_string(count) + " points and holds " +
                         std::to_string(held);
        count = held;
        if (count == 0) {
            return Fault{{}, result.warning};
        }
    }
    FrameBuilder builder(columnsOf(layout), static_cast<std::size_t>(count), result.frame);
    double scale[3];
    double offset[3];
    for (std::size_t axis = 0; axis < 3; ++axis) {
        scale[axis] = numberAt<double>(bytes, 131 + 8 * axis);
        offset[axis] = numberAt<double>(bytes, 155 + 8 * axis);
    }
    ProgressPace pace(progress, bytes.size());
    for (std::uint64_t i = 0; i < count; ++i) {
        std::string_view const record = bytes.substr(start + i * recordSize, recordSize);
        double* const values = builder.values().data();
        for (std::size_t axis = 0; axis < 3; ++axis) {
            values[axis] = scale[axis] * numberAt<std::int32_t>(record, 4 * axis) + offset[axis];
        }
        readRecord(record, layout, values + 3);
        static_cast<void>(builder.addRow());
        pace.at(start + i * recordSize);
    }
    builder.finish();
    settleColors(result.frame);
    for (std::size_t i = 0; i < std::size(CLASSES); ++i) {
        result.frame.typeNames[static_cast<std::int64_t>(i)] = CLASSES[i];
    }
    return result;
}

}  // namespace vellum::viewport
