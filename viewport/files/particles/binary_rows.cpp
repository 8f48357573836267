#include "viewport/files/particles/binary_rows.h"

#include "foundation/basic/threads.h"
#include "viewport/files/common/binary_numbers.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace vellum::viewport {

namespace {

/// One column of some records.
struct Column {
    char const* from;
    std::size_t size;  // of a record
    double* to;
    std::size_t step;
};

template <class T, bool IS_BIG>
void copyNumbers(Column const& column, std::size_t count) {
    char const* here = column.from;
    double* to = column.to;
    for (std::size_t i = 0; i < count; ++i, here += column.size, to += column.step) {
        *to = static_cast<double>(binaryNumber<T>(here, IS_BIG));
    }
}

template <bool IS_BIG>
void copyField(PlyScalarType const& type, Column const& column, std::size_t count) {
    if (!type.isInteger) {
        type.size == 4 ? copyNumbers<float, IS_BIG>(column, count)
                       : copyNumbers<double, IS_BIG>(column, count);
    } else if (type.size == 1) {
        type.isSigned ? copyNumbers<std::int8_t, IS_BIG>(column, count)
                      : copyNumbers<std::uint8_t, IS_BIG>(column, count);
    } else if (type.size == 2) {
        type.isSigned ? copyNumbers<std::int16_t, IS_BIG>(column, count)
                      : copyNumbers<std::uint16_t, IS_BIG>(column, count);
    } else {
        type.isSigned ? copyNumbers<std::int32_t, IS_BIG>(column, count)
                      : copyNumbers<std::uint32_t, IS_BIG>(column, count);
    }
}

}  // namespace

std::size_t recordSize(std::vector<PlyScalarType> const& fields) {
    std::size_t size = 0;
    for (PlyScalarType const& field : fields) {
        size += field.size;
    }
    return size;
}

std::optional<std::size_t> addRows(BinaryRows const& rows, FrameBuilder& builder,
                                   std::function<void(std::size_t)> const& passed) {
    // Records of a range stay in the cache while column after column is taken from them.
    constexpr std::size_t RECORDS_PER_RANGE = std::size_t(1) << 12;
    constexpr std::size_t RECORDS_AT_ONCE = std::size_t(1) << 16;  // a read can be cancelled between
    std::size_t const size = recordSize(rows.fields);
    for (std::size_t done = 0; done < rows.count; done += RECORDS_AT_ONCE) {
        passed(done);
        std::size_t const first = builder.rowCount();
        std::size_t const count = std::min(RECORDS_AT_ONCE, rows.count - done);
        std::vector<ColumnPlace> const places = builder.addRows(count);
        std::optional<std::size_t> const idColumn = builder.columnOfIds();
        std::atomic<std::size_t> wrong{count};
        forRanges(count, RECORDS_PER_RANGE, [&](std::size_t begin, std::size_t end) {
            char const* field = rows.start + (done + begin) * size;
            for (std::size_t i = 0; i < rows.fields.size(); ++i) {
                ColumnPlace const& place = places[i];
                if (place.numbers != nullptr) {
                    Column const column{field, size, place.numbers + begin * place.step, place.step};
                    rows.isBigEndian ? copyField<true>(rows.fields[i], column, end - begin)
                                     : copyField<false>(rows.fields[i], column, end - begin);
                }
                field += rows.fields[i].size;
            }
            if (idColumn) {
                double const* const ids = places[*idColumn].numbers;
                double const* const found = std::find_if_not(ids + begin, ids + end, FrameBuilder::isId);
                auto const row = static_cast<std::size_t>(found - ids);
                std::size_t known = wrong.load(std::memory_order_relaxed);
                while (row < end && row < known && !wrong.compare_exchange_weak(known, row)) {
                }
            }
            builder.placeRows(first + begin, end - begin);
        });
        if (wrong < count) {
            return done + wrong;
        }
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
