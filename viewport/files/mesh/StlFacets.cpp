#include "viewport/files/mesh/StlFacets.h"

#include "viewport/text/data_numbers.h"

#include <cmath>
#include <cstring>

namespace vellum::viewport {

bool StlWords::takeNumber(double& value) {
    skipBlanks();
    char const* const next = takeDataNumber(here, end, value);
    bool const isNumber = next != nullptr && (next == end || isBlank(*next));
    here = isNumber ? next : here;
    return isNumber;
}

void StlFacets::read(std::string_view text, char const* textEnd, bool isAtFacet) {
    // The memory of a former text is used again.
    positions.clear();
    cornerCounts.clear();
    solids.clear();
    isWhole = true;
    stop = nullptr;
    char const* const pieceEnd = text.data() + text.size();
    StlWords words{text.data(), textEnd};
    words.skipBlanks();
    auto const isBoundary = [&words] { return words.isKeyword("facet") || words.isKeyword("endsolid"); };
    while (!isAtFacet && words.here < pieceEnd && !isBoundary()) {
        void const* const feed =
            std::memchr(words.here, '\n', static_cast<std::size_t>(pieceEnd - words.here));
        words.here = feed != nullptr ? static_cast<char const*>(feed) + 1 : pieceEnd;
        words.skipBlanks();
    }
    first = words.here < pieceEnd ? words.here : nullptr;
    while (words.here < pieceEnd) {
        stop = words.here;
        if (words.isKeyword("facet")) {
            isWhole = _readFacet(words);
        } else {
            isWhole = words.takeKeyword("endsolid");
            words.skipLine();
            isWhole = isWhole && words.takeKeyword("solid");
            words.skipLine();
            if (isWhole) {
                solids.push_back(cornerCounts.size());
            }
        }
        if (!isWhole) {
            return;
        }
        words.skipBlanks();
        stop = words.here;
    }
}

bool StlFacets::_readFacet(StlWords& words) {
    words.takeKeyword("facet");
    while (!words.takeKeyword("outer")) {
        std::string_view const word = words.word();
        if (word.empty() || words.isKeyword("vertex") || words.isKeyword("facet") ||
            words.isKeyword("endfacet")) {
            return false;
        }
        words.here += word.size();
    }
    std::size_t const before = positions.size();
    bool isSound = words.takeKeyword("loop");
    while (isSound && words.takeKeyword("vertex")) {
        Vector3<double> p{0, 0, 0};
        isSound = words.takeNumber(p.x) && words.takeNumber(p.y) && words.takeNumber(p.z) &&
                  std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
        positions.push_back(p);
    }
    std::size_t const count = positions.size() - before;
    if (!isSound || count < 3 || !words.takeKeyword("endloop") || !words.takeKeyword("endfacet")) {
        positions.resize(before);
        return false;
    }
    cornerCounts.push_back(static_cast<std::uint32_t>(count));
    return true;
}

}  // namespace vellum::viewport
