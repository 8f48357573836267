#include "viewport/gallery/ListStatements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vellum::gallery::ListStatement;
using vellum::gallery::splitStatements;

/// "line: word|word" for each statement, or the fault.
std::vector<std::string> split(std::string const& text) {
    auto const statements = splitStatements(text, "list");
    if (!statements.isOk()) {
        return {"fault " + statements.fault().line()};
    }
    std::vector<std::string> result;
    for (ListStatement const& statement : statements.value()) {
        std::string line = std::to_string(statement.line) + ": ";
        for (std::string const& word : statement.words) {
            line += word + "|";
        }
        result.push_back(line);
    }
    return result;
}

TEST(ListStatements, blanksSeparateWords) {
    EXPECT_THAT(split("  a  bc\td \r\n"), ElementsAre("1: a|bc|d|"));
}

TEST(ListStatements, emptyLinesAndCommentsAreSkipped) {
    EXPECT_THAT(split(""), IsEmpty());
    EXPECT_THAT(split("\n# any ' text\n \na # rest \" of it\nb\n"), ElementsAre("4: a|", "5: b|"));
}

TEST(ListStatements, numberSignInsideAWordIsNoComment) {
    EXPECT_THAT(split("a#b '#c'"), ElementsAre("1: a#b|#c|"));
}

TEST(ListStatements, quotesKeepBlanks) {
    EXPECT_THAT(split(R"("a b" 'c  "d"' e" f "g "" 'it'"'"s)"), ElementsAre("1: a b|c  \"d\"|e f g||it's|"));
}

TEST(ListStatements, backslashTakesTheNextCharacter) {
    EXPECT_THAT(split(R"(a\ b \# "c\"d\\" 'e\f')"), ElementsAre(R"(1: a b|#|c"d\|e\f|)"));
}

TEST(ListStatements, backslashAtTheEndContinuesTheLine) {
    EXPECT_THAT(split("a \\\n  b\\\nc\nd \\"), ElementsAre("1: a|bc|", "4: d|"));
}

TEST(ListStatements, statementIsOnTheLineOfItsFirstWord) {
    EXPECT_THAT(split("\"a\nb\" c\n\\\n d\n"), ElementsAre("1: a\nb|c|", "4: d|"));
}

TEST(ListStatements, openQuoteIsAFaultOfItsLine) {
    EXPECT_THAT(split("a\nb 'c\nd\n"), ElementsAre("fault list: line 2: the quote has no end"));
    EXPECT_THAT(split("a \""), ElementsAre("fault list: line 1: the quote has no end"));
    EXPECT_THAT(split("\"a\\\""), ElementsAre("fault list: line 1: the quote has no end"));
}

}  // namespace
