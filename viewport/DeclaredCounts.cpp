#include "viewport/DeclaredCounts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <vector>

namespace vellum::viewport {

namespace {

// == Words and lines ==

constexpr std::string_view blanks = " \t\r\n\v\f";

/// Takes the next word off the front of the text; empty at its end.
std::string_view takeWord(std::string_view& text) {
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        text = {};
        return {};
    }
    std::size_t const end = std::min(text.find_first_of(blanks, first), text.size());
    std::string_view const word = text.substr(first, end - first);
    text.remove_prefix(end);
    return word;
}

std::string_view takeLine(std::string_view& text) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::optional<std::uint64_t> toCount(std::string_view const& word) {
    std::uint64_t value = 0;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size()) {
        return std::nullopt;
    }
    return value;
}

// == PLY ==

struct ScalarType {
    std::size_t size = 0;  // bytes
    bool isInteger = false;
    bool isSigned = false;
};

struct Property {
    bool isList = false;
    ScalarType length;  // of a list
    ScalarType value;
};

struct Element {
    std::string name;
    std::uint64_t count = 0;
    std::vector<Property> properties;
};

enum class Format { text, littleEndian, bigEndian };

struct Header {
    Format format = Format::text;
    std::vector<Element> elements;
    std::string_view body;
};

std::optional<ScalarType> toScalarType(std::string_view const& word) {
    struct Row {
        std::string_view name;
        ScalarType type;
    };
    static constexpr Row rows[] = {
        {"char", {1, true, true}},     {"int8", {1, true, true}},     {"uchar", {1, true, false}},
        {"uint8", {1, true, false}},   {"short", {2, true, true}},    {"int16", {2, true, true}},
        {"ushort", {2, true, false}},  {"uint16", {2, true, false}},  {"int", {4, true, true}},
        {"int32", {4, true, true}},    {"uint", {4, true, false}},    {"uint32", {4, true, false}},
        {"float", {4, false, true}},   {"float32", {4, false, true}}, {"double", {8, false, true}},
        {"float64", {8, false, true}},
    };
    for (Row const& row : rows) {
        if (row.name == word) {
            return row.type;
        }
    }
    return std::nullopt;
}

bool addProperty(std::string_view line, Header& header) {
    if (header.elements.empty()) {
        return false;
    }
    Property property;
    std::string_view type = takeWord(line);
    if (type == "list") {
        std::optional<ScalarType> const length = toScalarType(takeWord(line));
        if (!length || !length->isInteger) {
            return false;
        }
        property.isList = true;
        property.length = *length;
        type = takeWord(line);
    }
    std::optional<ScalarType> const value = toScalarType(type);
    if (!value) {
        return false;
    }
    property.value = *value;
    header.elements.back().properties.push_back(property);
    return true;
}

bool addElement(std::string_view line, Header& header) {
    Element element;
    element.name = std::string(takeWord(line));
    std::optional<std::uint64_t> const count = toCount(takeWord(line));
    if (!count) {
        return false;
    }
    element.count = *count;
    header.elements.push_back(element);
    return true;
}

bool setFormat(std::string_view line, Header& header) {
    std::string_view const format = takeWord(line);
    header.format = format == "binary_little_endian" ? Format::littleEndian
                    : format == "binary_big_endian"  ? Format::bigEndian
                                                     : Format::text;
    return header.format != Format::text || format == "ascii";
}

std::optional<Header> readHeader(std::string_view bytes) {
    Header header;
    std::string_view first = takeLine(bytes);
    std::string_view const magic = takeWord(first);
    if (magic != "ply" && magic != "PLY") {
        return std::nullopt;
    }
    while (!bytes.empty()) {
        std::string_view line = takeLine(bytes);
        std::string_view const keyword = takeWord(line);
        bool isUnderstood = true;
        if (keyword == "end_header") {
            header.body = bytes;
            return header;
        }
        if (keyword == "format") {
            isUnderstood = setFormat(line, header);
        } else if (keyword == "element") {
            isUnderstood = addElement(line, header);
        } else if (keyword == "property") {
            isUnderstood = addProperty(line, header);
        }
        if (!isUnderstood) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

/// Steps over the values of a body, text or binary.
class Body {
public:
    enum class Step { done, cutOff, notUnderstood };

    Body(std::string_view const& bytes, Format const& format) : _left(bytes), _format(format) {}

    Step skip(ScalarType const& type, std::uint64_t const& count) {
        if (_format == Format::text) {
            for (std::uint64_t i = 0; i < count; ++i) {
                if (takeWord(_left).empty()) {
                    return Step::cutOff;
                }
            }
            return Step::done;
        }
        if (count > _left.size() / type.size) {
            return Step::cutOff;
        }
        _left.remove_prefix(static_cast<std::size_t>(count) * type.size);
        return Step::done;
    }

    Step takeLength(ScalarType const& type, std::uint64_t& length) {
        if (_format == Format::text) {
            std::string_view const word = takeWord(_left);
            if (word.empty()) {
                return Step::cutOff;
            }
            std::optional<std::uint64_t> const count = toCount(word);
            length = count.value_or(0);
            return count ? Step::done : Step::notUnderstood;
        }
        if (_left.size() < type.size) {
            return Step::cutOff;
        }
        length = 0;
        for (std::size_t i = 0; i < type.size; ++i) {
            std::size_t const place = _format == Format::bigEndian ? i : type.size - 1 - i;
            length = length << 8 | static_cast<unsigned char>(_left[place]);
        }
        _left.remove_prefix(type.size);
        bool const isNegative = type.isSigned && (length >> (8 * type.size - 1)) != 0;
        return isNegative ? Step::notUnderstood : Step::done;
    }

private:
    std::string_view _left;
    Format _format;
};

Body::Step skipItem(Body& body, Element const& element) {
    for (Property const& property : element.properties) {
        std::uint64_t count = 1;
        if (property.isList) {
            Body::Step const step = body.takeLength(property.length, count);
            if (step != Body::Step::done) {
                return step;
            }
        }
        Body::Step const step = body.skip(property.value, count);
        if (step != Body::Step::done) {
            return step;
        }
    }
    return Body::Step::done;
}

std::string cutOffMessage(std::uint64_t const& declared, std::string const& what, std::uint64_t const& held) {
    return "the file is cut off: it declares " + std::to_string(declared) + " of '" + what + "' and holds " +
           std::to_string(held);
}

// == OFF ==

/// Takes the next line that holds words, without its comment; empty at the end of the text.
std::string_view takeFilledLine(std::string_view& text) {
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        line = line.substr(0, line.find('#'));
        if (line.find_first_not_of(blanks) != std::string_view::npos) {
            return line;
        }
    }
    return {};
}

/// The number of words in the line.
std::uint64_t countWords(std::string_view line) {
    std::uint64_t count = 0;
    while (!takeWord(line).empty()) {
        ++count;
    }
    return count;
}

/// What is wrong with a line "count index index ...", of which colours may follow.
std::optional<std::string> offFaceFault(std::string_view line, std::uint64_t const& face,
                                        std::uint64_t const& vertexCount) {
    std::optional<std::uint64_t> const count = toCount(takeWord(line));
    if (!count) {
        return "face " + std::to_string(face) + " does not begin with a number of vertices";
    }
    for (std::uint64_t i = 0; i < *count; ++i) {
        std::string_view const word = takeWord(line);
        std::optional<std::uint64_t> const index = toCount(word);
        if (!index || *index >= vertexCount) {
            return "face " + std::to_string(face) + " has vertex index '" + std::string(word) +
                   "', missing or out of range: there are " + std::to_string(vertexCount) + " vertices";
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> plyFault(std::string_view const& bytes) {
    std::optional<Header> const header = readHeader(bytes);
    if (!header) {
        return std::nullopt;
    }
    Body body(header->body, header->format);
    for (Element const& element : header->elements) {
        if (element.properties.empty()) {
            continue;  // Takes no bytes, however many there are.
        }
        for (std::uint64_t i = 0; i < element.count; ++i) {
            Body::Step const step = skipItem(body, element);
            if (step == Body::Step::cutOff) {
                return cutOffMessage(element.count, element.name, i);
            }
            if (step == Body::Step::notUnderstood) {
                return std::nullopt;
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> offFault(std::string_view const& bytes) {
    std::string_view text = bytes;
    std::string_view counts = takeFilledLine(text);
    // The counts may stand behind the keyword or on a line of their own.
    std::string_view const keyword = takeWord(counts);
    if (keyword.size() < 3 || keyword.substr(keyword.size() - 3) != "OFF") {
        return std::nullopt;
    }
    if (countWords(counts) == 0) {
        counts = takeFilledLine(text);
    }
    std::optional<std::uint64_t> const vertexCount = toCount(takeWord(counts));
    std::optional<std::uint64_t> const faceCount = toCount(takeWord(counts));
    if (!vertexCount || !faceCount) {
        return std::nullopt;
    }
    for (std::uint64_t i = 0; i < *vertexCount; ++i) {
        if (countWords(takeFilledLine(text)) < 3) {
            return cutOffMessage(*vertexCount, "vertex", i);
        }
    }
    for (std::uint64_t i = 0; i < *faceCount; ++i) {
        std::string_view const line = takeFilledLine(text);
        if (line.empty()) {
            return cutOffMessage(*faceCount, "face", i);
        }
        if (std::optional<std::string> fault = offFaceFault(line, i, *vertexCount)) {
            return fault;
        }
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
