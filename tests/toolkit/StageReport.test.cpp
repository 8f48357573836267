#include "toolkit/StageReport.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vellum;
using namespace vellum::toolkit;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Replacement = StageReport::Replacement;

std::vector<std::string> linesOf(std::string const& log) {
    std::vector<std::string> lines;
    for (StageMessage const& message : readStageLog(log)) {
        lines.push_back(std::to_string(message.line) + ": " + message.text);
    }
    return lines;
}

std::string faultOf(std::string const& path) {
    return stageFileFault(path).value_or("");
}

}  // namespace

// == Logs ==

TEST(StageReport, logsOfAllDriversNameTheLineOfTheText) {
    EXPECT_THAT(linesOf("0:12(5): error: no such thing\n"), ElementsAre("12: error: no such thing"));
    EXPECT_THAT(linesOf("0(12) : error C1008: undefined variable \"x\"\n"),
                ElementsAre("12: error C1008: undefined variable \"x\""));
    EXPECT_THAT(linesOf("ERROR: 0:12: 'x' : undeclared identifier\n"),
                ElementsAre("12: ERROR: 'x' : undeclared identifier"));
    EXPECT_THAT(linesOf("WARNING: 0:3: strange"), ElementsAre("3: WARNING: strange"));
}

TEST(StageReport, wordsWithoutANumberHaveLineZero) {
    for (char const* const line :
         {"error: too many things", "0:x: what", "0", "0:", "0(12", "0:12(5", "0:99999999999999999999: x"}) {
        EXPECT_THAT(linesOf(line), ElementsAre(std::string("0: ") + line));
    }
}

TEST(StageReport, everyLineOfALogIsToldOnce) {
    EXPECT_THAT(linesOf("0:1(1): error: a\n\n0:2(1): error: b\r\n0:1(9): error: a\n"),
                ElementsAre("1: error: a", "2: error: b"));
    EXPECT_THAT(linesOf("0:1(1): error: a\n0:2(1): error: a\n"), ElementsAre("1: error: a", "2: error: a"));
    EXPECT_THAT(linesOf(""), IsEmpty());
    EXPECT_THAT(linesOf("\n \n.\n"), IsEmpty());
    EXPECT_THAT(linesOf("error: a\n.error: a\n."), ElementsAre("0: error: a"));
}

// == Texts ==

TEST(StageReport, textsNameFileLineAndWhatIsDrawnInstead) {
    struct Row {
        char const* name;
        StageReport report;
        char const* text;
    };
    for (Row const& row :
         {Row{"compile error",
              {Stage::FRAGMENT,
               "a.frag",
               {{3, "error: x"}, {0, "and more"}},
               "log",
               Replacement::PASS_THROUGH},
              "a.frag:3: error: x\na.frag: and more\n"
              "a.frag: does not compile; a stage that passes everything on takes its place\n"},
          Row{"unreadable file",
              {Stage::VERTEX, "a.vert", {{0, "is empty"}}, "", Replacement::PASS_THROUGH},
              "a.vert: is empty; a stage that passes everything on takes its place\n"},
          Row{"geometry stage",
              {Stage::GEOMETRY, "a.geom", {{0, "is empty"}}, "", Replacement::LEFT_OUT},
              "a.geom: is empty; it is left out\n"},
          Row{"link error",
              {Stage::PROGRAM, "", {{0, "error: y"}}, "log", Replacement::ALL_STAGES},
              "the program of the stages: error: y\n"
              "the program of the stages: cannot be linked; stages that pass everything on take its place\n"},
          Row{"no color",
              {Stage::VERTEX, "a.vert", {{0, "sets nothing"}}, "", Replacement::ALL_STAGES},
              "a.vert: sets nothing; such a stage takes its place, too\n"},
          Row{"warning",
              {Stage::FRAGMENT, "a.frag", {{7, "warning: z"}}, "log", Replacement::NOTHING},
              "a.frag:7: warning: z\n"},
          Row{"stage without a file",
              {Stage::GEOMETRY, "", {{2, "error: x"}}, "log", Replacement::LEFT_OUT},
              "the geometry stage:2: error: x\nthe geometry stage: does not compile; it is left out\n"},
          Row{"no messages",
              {Stage::VERTEX, "", {}, "", Replacement::PASS_THROUGH},
              "the vertex stage: cannot be used; a stage that passes everything on takes its place\n"},
          Row{"control characters",
              {Stage::FRAGMENT, "a\n.frag", {{1, "b\x1b[2J\x7f"}}, "", Replacement::NOTHING},
              "a?.frag:1: b?[2J?\n"}}) {
        EXPECT_EQ(toText(row.report), row.text) << row.name;
    }
}

// == Files ==

TEST(StageReport, aTextIsAFileOfAStage) {
    TemporaryFolder const folder;
    EXPECT_EQ(faultOf(folder.write("a.frag", "void main() {}\n")), "");
    EXPECT_EQ(faultOf(folder.write("long.frag", "//" + std::string(5000, 'x') + "\nvoid main() {}")), "");
}

TEST(StageReport, whatCannotBeAStageIsNamed) {
    TemporaryFolder const folder;
    EXPECT_THAT(faultOf(folder.file("gone.frag")), HasSubstr("cannot be opened: No such file"));
    EXPECT_EQ(faultOf(folder.write("empty.frag", "")), "is empty");
    EXPECT_EQ(faultOf(folder.write("blank.frag", " \n\t\n")), "is empty");
    EXPECT_EQ(faultOf(folder.write("binary.frag", std::string("void\0main", 9))), "is not a text");
    ASSERT_EQ(mkdir(folder.file("folder.frag").c_str(), 0755), 0);
    EXPECT_EQ(faultOf(folder.file("folder.frag")), "is not a plain file");
    EXPECT_EQ(faultOf("/dev/zero"), "is not a plain file");
    ASSERT_EQ(mkfifo(folder.file("pipe.frag").c_str(), 0644), 0);
    EXPECT_EQ(faultOf(folder.file("pipe.frag")), "is not a plain file");
}

TEST(StageReport, hugeFilesAreNotRead) {
    TemporaryFolder const folder;
    std::string const path = folder.write("huge.frag", "");
    ASSERT_EQ(truncate(path.c_str(), off_t{100} << 20), 0);
    EXPECT_EQ(faultOf(path), "is too large for the text of a stage (1 MiB)");
    EXPECT_EQ(faultOf(folder.write("just.frag", std::string(1 << 20, '/'))), "");
    EXPECT_THAT(faultOf(folder.write("over.frag", std::string((1 << 20) + 1, '/'))), HasSubstr("too large"));
}
