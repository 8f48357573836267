#include "viewport/files/mesh/DeclaredCounts.h"

#include "viewport/files/common/PlyHeader.h"
#include "viewport/text/Words.h"
#include "viewport/text/numbers.h"

#include <cstdint>

namespace vellum::viewport {

namespace {

// == PLY ==

/// Steps over the values of a body, text or binary.
class Body {
public:
    enum class Step { DONE, CUT_OFF, NOT_UNDERSTOOD };

    Body(std::string_view bytes, PlyFormat format) : remaining(bytes), format(format) {}

    Step skip(PlyScalarType const& type, std::uint64_t count) {
        if (format == PlyFormat::TEXT) {
            for (std::uint64_t i = 0; i < count; ++i) {
                if (takeWord(remaining).empty()) {
                    return Step::CUT_OFF;
                }
            }
            return Step::DONE;
        }
        if (count > remaining.size() / type.size) {
            return Step::CUT_OFF;
        }
        remaining.remove_prefix(static_cast<std::size_t>(count) * type.size);
        return Step::DONE;
    }

    Step takeLength(PlyScalarType const& type, std::uint64_t& length) {
        if (format == PlyFormat::TEXT) {
            std::string_view const word = takeWord(remaining);
            if (word.empty()) {
                return Step::CUT_OFF;
            }
            std::optional<std::uint64_t> const count = toCount(word);
            length = count.value_or(0);
            return count ? Step::DONE : Step::NOT_UNDERSTOOD;
        }
        if (remaining.size() < type.size) {
            return Step::CUT_OFF;
        }
        length = 0;
        unsigned char highest = 0;
        for (std::size_t i = 0; i < type.size; ++i) {
            std::size_t const place = format == PlyFormat::BINARY_BIG ? i : type.size - 1 - i;
            auto const byte = static_cast<unsigned char>(remaining[place]);
            highest = i == 0 ? byte : highest;
            length = length << 8 | byte;
        }
        remaining.remove_prefix(type.size);
        bool const isNegative = type.isSigned && highest > 0x7F;
        return isNegative ? Step::NOT_UNDERSTOOD : Step::DONE;
    }

private:
    std::string_view remaining;
    PlyFormat format;
};

Body::Step skipItem(Body& body, PlyElement const& element) {
    for (PlyProperty const& property : element.properties) {
        std::uint64_t count = 1;
        if (property.isList) {
            Body::Step const step = body.takeLength(property.length, count);
            if (step != Body::Step::DONE) {
                return step;
            }
        }
        Body::Step const step = body.skip(property.value, count);
        if (step != Body::Step::DONE) {
            return step;
        }
    }
    return Body::Step::DONE;
}

std::string cutOffMessage(std::uint64_t declared, std::string const& what, std::uint64_t held) {
    return "the file is cut off: it declares " + std::to_string(declared) + " of '" + what + "' and holds " +
           std::to_string(held);
}

// == OFF ==

/// Takes the next line that holds words, without its comment; empty at the end of the text.
std::string_view takeFilledLine(std::string_view& text) {
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        line = line.substr(0, line.find('#'));
        if (line.find_first_not_of(BLANKS) != std::string_view::npos) {
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

/// What is wrong with a line "count index index ...", of which colors may follow.
std::optional<Fault> offFaceFault(std::string const& file, std::string_view line, std::uint64_t face,
                                  std::uint64_t vertexCount) {
    std::optional<std::uint64_t> const count = toCount(takeWord(line));
    if (!count) {
        return Fault{file, "face " + std::to_string(face) + " does not begin with a number of vertices"};
    }
    for (std::uint64_t i = 0; i < *count; ++i) {
        std::string_view const word = takeWord(line);
        std::optional<std::uint64_t> const index = toCount(word);
        if (!index || *index >= vertexCount) {
            return Fault{file, "face " + std::to_string(face) + " has vertex index '" + std::string(word) +
                                   "', missing or out of range: there are " + std::to_string(vertexCount) +
                                   " vertices"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<Fault> plyFault(std::string const& file, std::string_view bytes) {
    std::optional<PlyHeader> const header = readPlyHeader(bytes);
    if (!header) {
        return std::nullopt;
    }
    Body body(header->body, header->format);
    for (PlyElement const& element : header->elements) {
        if (element.properties.empty()) {
            continue;  // Takes no bytes, however many there are.
        }
        for (std::uint64_t i = 0; i < element.count; ++i) {
            Body::Step const step = skipItem(body, element);
            if (step == Body::Step::CUT_OFF) {
                return Fault{file, cutOffMessage(element.count, element.name, i)};
            }
            if (step == Body::Step::NOT_UNDERSTOOD) {
                return std::nullopt;
            }
        }
    }
    return std::nullopt;
}

std::optional<Fault> offFault(std::string const& file, std::string_view bytes) {
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
            return Fault{file, cutOffMessage(*vertexCount, "vertex", i)};
        }
    }
    for (std::uint64_t i = 0; i < *faceCount; ++i) {
        std::string_view const line = takeFilledLine(text);
        if (line.empty()) {
            return Fault{file, cutOffMessage(*faceCount, "face", i)};
        }
        if (std::optional<Fault> fault = offFaceFault(file, line, i, *vertexCount)) {
            return fault;
        }
    }
    return std::nullopt;
}

}  // namespace vellum::viewport
