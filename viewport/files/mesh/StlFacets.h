#pragma once

#include "foundation/geometry/Vector3.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// A cursor over the words of an STL text. Lines mean nothing to the format but the end of a solid's name.
struct StlWords {
    char const* here;
    char const* end;

    static bool isBlank(char character) {
        return character == ' ' || (character >= '\t' && character <= '\r');
    }

    void skipBlanks() {
        while (here != end && isBlank(*here)) {
            ++here;
        }
    }

    void skipLine() {
        while (here != end && *here != '\n' && *here != '\r') {
            ++here;
        }
    }

    /// The word ahead.
    std::string_view word() {
        skipBlanks();
        char const* stop = here;
        while (stop != end && !isBlank(*stop)) {
            ++stop;
        }
        return {here, static_cast<std::size_t>(stop - here)};
    }

    /// Whether the word ahead is this one, which has small letters only; it may have others in the file.
    bool isKeyword(std::string_view keyword) {
        skipBlanks();
        if (static_cast<std::size_t>(end - here) < keyword.size()) {
            return false;
        }
        for (std::size_t i = 0; i < keyword.size(); ++i) {
            if ((here[i] | 0x20) != keyword[i]) {
                return false;
            }
        }
        char const* const stop = here + keyword.size();
        return stop == end || isBlank(*stop);
    }

    bool takeKeyword(std::string_view keyword) {
        bool const isThere = isKeyword(keyword);
        here += isThere ? keyword.size() : 0;
        return isThere;
    }

    /// Takes a number. \return false where none is ahead.
    bool takeNumber(double& value);
};

/// Facets of an STL text that stand together, and the ends of solids between them. A core reads them while
/// others read other ones. What is damaged is left to the reader of the file.
struct StlFacets {
    char const* first = nullptr;  ///< where the first facet or end of a solid begins; null: there is none
    char const* stop = nullptr;   ///< behind the last facet that was read, or behind the beginning of a solid
    bool isWhole = false;         ///< all is read that begins in the text
    std::vector<Vector3<double>> positions;   ///< of the corners
    std::vector<std::uint32_t> cornerCounts;  ///< by facet, 3 or more
    std::vector<std::size_t>
        solids;  ///< how many of the facets stand before the beginning of each further solid

    /// Reads all facets that begin in the text; the last one may end behind it.
    /// \param isAtFacet a facet begins at its front, behind blanks; else the first line is looked for that begins one or ends
    ///     a solid
    void read(std::string_view text, char const* textEnd, bool isAtFacet);

private:
    bool _readFacet(StlWords& words);
};

}  // namespace vellum::viewport
