#include "viewport/files/mesh/PlyBody.h"

#include "viewport/files/common/binary_numbers.h"
#include "viewport/files/mesh/blanks.h"
#include "viewport/text/TextLines.h"
#include "viewport/text/data_numbers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vellum::viewport {

PlyBody::PlyBody(std::string_view file, PlyHeader const& header, Progress const& progress)
    : file(file)
    , header(header)
    , pace(progress, file.size())
    , here(file.data() + (file.size() - header.body.size()))
    , end(file.data() + file.size())
    , itemStart(here) {}

PlyBody::Type PlyBody::_typeOf(PlyScalarType const& type) {
    if (!type.isInteger) {
        return type.size == 4 ? Type::FLOAT32 : Type::FLOAT64;
    }
    switch (type.size) {
    case 1:
        return type.isSigned ? Type::INT8 : Type::UINT8;
    case 2:
        return type.isSigned ? Type::INT16 : Type::UINT16;
    default:
        return type.isSigned ? Type::INT32 : Type::UINT32;
    }
}

std::size_t PlyBody::_sizeOf(Type type) {
    switch (type) {
    case Type::INT8:
    case Type::UINT8:
        return 1;
    case Type::INT16:
    case Type::UINT16:
        return 2;
    case Type::INT32:
    case Type::UINT32:
    case Type::FLOAT32:
        return 4;
    case Type::FLOAT64:
        break;
    }
    return 8;
}

bool PlyBody::begin(PlyElement const& element) {
    this->element = &element;
    taken = 0;
    columns.clear();
    std::vector<bool> areLists;
    std::uint64_t least = 0;  // bytes of an item
    for (PlyProperty const& property : element.properties) {
        columns.push_back({property.isList, property.isList ? _typeOf(property.length) : Type::UINT8,
                           _typeOf(property.value)});
        areLists.push_back(property.isList);
        // In a text a digit and what ends it; behind the very last one there may be nothing.
        least += header.format == PlyFormat::TEXT
                     ? 2
                     : _sizeOf(property.isList ? columns.back().length : columns.back().value);
    }
    lines.begin(areLists);
    auto const left = static_cast<std::uint64_t>(end - here) + (header.format == PlyFormat::TEXT ? 1 : 0);
    return least == 0 || element.count <= left / least;
}

bool PlyBody::take(PlyItem& item) {
    pace.at(static_cast<std::uint64_t>(here - file.data()));
    item.numbers.resize(columns.size());
    item.lists.resize(columns.size());
    switch (header.format) {
    case PlyFormat::TEXT:
        return _takeText(item);
    case PlyFormat::BINARY_LITTLE:
        return _takeBinary<false>(item);
    case PlyFormat::BINARY_BIG:
        break;
    }
    return _takeBinary<true>(item);
}

template <bool IS_BIG>
bool PlyBody::_takeBinary(PlyItem& item) {
    auto const numberAt = [](Type type, char const* bytes) -> double {
        switch (type) {
        case Type::INT8:
            return binaryNumber<std::int8_t>(bytes, IS_BIG);
        case Type::UINT8:
            return binaryNumber<std::uint8_t>(bytes, IS_BIG);
        case Type::INT16:
            return binaryNumber<std::int16_t>(bytes, IS_BIG);
        case Type::UINT16:
            return binaryNumber<std::uint16_t>(bytes, IS_BIG);
        case Type::INT32:
            return binaryNumber<std::int32_t>(bytes, IS_BIG);
        case Type::UINT32:
            return binaryNumber<std::uint32_t>(bytes, IS_BIG);
        case Type::FLOAT32:
            return static_cast<double>(binaryNumber<float>(bytes, IS_BIG));
        case Type::FLOAT64:
            break;
        }
        return binaryNumber<double>(bytes, IS_BIG);
    };
    itemStart = here;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Column const& column = columns[i];
        Type const type = column.isList ? column.length : column.value;
        std::size_t const size = _sizeOf(type);
        if (static_cast<std::size_t>(end - here) < size) {
            return _cutOff();
        }
        item.numbers[i] = numberAt(type, here);
        here += size;
        if (!column.isList) {
            continue;
        }
        if (item.numbers[i] < 0) {
            return _damaged("has a list of negative length");
        }
        auto const length = static_cast<std::size_t>(item.numbers[i]);
        std::size_t const valueSize = _sizeOf(column.value);
        if (length > static_cast<std::size_t>(end - here) / valueSize) {
            return _cutOff();
        }
        std::vector<double>& list = item.lists[i];
        list.resize(length);
        for (double& value : list) {
            value = numberAt(column.value, here);
            here += valueSize;
        }
    }
    ++taken;
    return true;
}

bool PlyBody::_skipToLine() {
    while (here != end && (isBlank(*here) || *here == FEED)) {
        ++here;
    }
    return here != end;
}

bool PlyBody::_takeText(PlyItem& item) {
    // An item without properties has no line.
    if (columns.empty()) {
        ++taken;
        return true;
    }
    constexpr std::uint64_t WORTH_READING_AHEAD = 256;
    for (;;) {
        bool const isTaken = lines.take(item);
        here = lines.here() != nullptr ? lines.here() : here;
        if (isTaken) {
            itemStart = lines.itemStart();
            ++taken;
            return true;
        }
        std::uint64_t const left = element->count - std::min(taken, element->count);
        if (here == end || lines.isStopped() || left < WORTH_READING_AHEAD) {
            return _takeLine(item);
        }
        pace.at(static_cast<std::uint64_t>(here - file.data()));
        lines.read({here, static_cast<std::size_t>(end - here)}, left);
        if (firstLongLine == 0 && lines.longLine() != nullptr) {
            firstLongLine = _lineOf(lines.longLine());
        }
    }
}

/// Where an item is damaged, this is what tells how.
bool PlyBody::_takeLine(PlyItem& item) {
    lines.forget();
    if (!_skipToLine()) {
        itemStart = here;
        return _cutOff();
    }
    itemStart = here;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!_takeNumber(item.numbers[i])) {
            return false;
        }
        if (!columns[i].isList) {
            continue;
        }
        double const length = item.numbers[i];
        if (!(length >= 0) || length != std::floor(length)) {
            return _damaged("has a list whose length is not a whole number");
        }
        if (length > static_cast<double>(end - here)) {
            return _cutOff();
        }
        std::vector<double>& list = item.lists[i];
        list.clear();
        for (auto left = static_cast<std::size_t>(length); left > 0; --left) {
            double value = 0;
            if (!_takeNumber(value)) {
                return false;
            }
            list.push_back(value);
        }
    }
    while (here != end && isBlank(*here)) {
        ++here;
    }
    if (here != end && *here != FEED) {
        firstLongLine = firstLongLine == 0 ? _lineOf(here) : firstLongLine;
        void const* const next = std::memchr(here, FEED, static_cast<std::size_t>(end - here));
        here = next != nullptr ? static_cast<char const*>(next) : end;
    }
    ++taken;
    return true;
}

bool PlyBody::_takeNumber(double& value) {
    while (here != end && isBlank(*here)) {
        ++here;
    }
    if (here == end) {
        return _cutOff();
    }
    if (*here == FEED) {
        return _damaged("has fewer numbers than the header declares");
    }
    char const* const next = takeDataNumber(here, end, value);
    if (next == nullptr || (next != end && !isBlank(*next) && *next != FEED)) {
        char const* stop = here;
        while (stop != end && !isBlank(*stop) && *stop != FEED) {
            ++stop;
        }
        return _damaged("has " + inQuotes({here, static_cast<std::size_t>(stop - here)}) +
                        " in place of a number");
    }
    here = next;
    return true;
}

bool PlyBody::_cutOff() {
    reason = "the file is cut off: it declares " + std::to_string(element->count) + " of " +
             inQuotes(element->name) + " and holds " + std::to_string(taken);
    if (header.format == PlyFormat::TEXT) {
        reason = "line " + std::to_string(_lineOf(end)) + ": " + reason;
    }
    return false;
}

bool PlyBody::_damaged(std::string const& what) {
    reason = atItem(inQuotes(element->name) + " " + std::to_string(taken) + " " + what);
    return false;
}

std::string PlyBody::damage() const {
    return reason;
}

std::string PlyBody::atItem(std::string const& what) const {
    return header.format == PlyFormat::TEXT ? "line " + std::to_string(_lineOf(itemStart)) + ": " + what
                                            : "byte " + std::to_string(itemStart - file.data()) + ": " + what;
}

std::uint64_t PlyBody::_lineOf(char const* place) const {
    return 1 + static_cast<std::uint64_t>(std::count(file.data(), place, FEED));
}

}  // namespace vellum::viewport
