#include "viewport/drawing/effects/ShaderFiles.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::vector<std::string> linesOf(std::string const& log) {
    std::vector<std::string> lines;
    for (Fault const& fault : shaderFaults("my.frag", log)) {
        lines.push_back(fault.line());
    }
    return lines;
}

std::string faultOf(std::string const& path) {
    std::optional<Fault> const fault = shaderFileFault(path);
    if (fault) {
        EXPECT_EQ(fault->file, path);
    }
    return fault ? fault->message : "";
}

}  // namespace

// == Logs ==

TEST(ShaderFiles, logsOfAllDriversNameTheLineOfTheFile) {
    EXPECT_THAT(linesOf("0:12(5): error: no such thing\n"), ElementsAre("my.frag:12: error: no such thing"));
    EXPECT_THAT(linesOf("0(12) : error C1008: undefined variable \"x\"\n"),
                ElementsAre("my.frag:12: error C1008: undefined variable \"x\""));
    EXPECT_THAT(linesOf("ERROR: 0:12: 'x' : undeclared identifier\n"),
                ElementsAre("my.frag:12: ERROR: 'x' : undeclared identifier"));
    EXPECT_THAT(linesOf("WARNING: 0:3: strange"), ElementsAre("my.frag:3: WARNING: strange"));
}

TEST(ShaderFiles, linesWithoutANumberStandBesideTheFile) {
    EXPECT_THAT(linesOf("error: too many things"), ElementsAre("my.frag: error: too many things"));
    EXPECT_THAT(linesOf("0:x: what"), ElementsAre("my.frag: 0:x: what"));
    EXPECT_THAT(linesOf("0"), ElementsAre("my.frag: 0"));
    EXPECT_THAT(linesOf("0:"), ElementsAre("my.frag: 0:"));
    EXPECT_THAT(linesOf("0(12"), ElementsAre("my.frag: 0(12"));
    EXPECT_THAT(linesOf("0:12(5"), ElementsAre("my.frag: 0:12(5"));
}

TEST(ShaderFiles, everyLineOfALogIsToldOnce) {
    EXPECT_THAT(linesOf("0:1(1): error: a\n\n0:2(1): error: b\r\n0:1(9): error: a\n"),
                ElementsAre("my.frag:1: error: a", "my.frag:2: error: b"));
    EXPECT_THAT(linesOf(""), IsEmpty());
    EXPECT_THAT(linesOf("\n \n.\n"), IsEmpty());
    EXPECT_THAT(linesOf("error: a\n.error: a\n."), ElementsAre("my.frag: error: a"));
}

// == Files ==

TEST(ShaderFiles, aTextIsFine) {
    TemporaryFolder const folder;
    EXPECT_EQ(faultOf(folder.write("a.frag", "void main() {}\n")), "");
    EXPECT_EQ(faultOf(folder.write("long.frag", "//" + std::string(5000, 'x') + "\nvoid main() {}")), "");
}

TEST(ShaderFiles, whatCannotBeAStageIsNamed) {
    TemporaryFolder const folder;
    EXPECT_THAT(faultOf(folder.file("gone.frag")), HasSubstr("No such file"));
    EXPECT_EQ(faultOf(folder.write("empty.frag", "")), "is empty");
    EXPECT_EQ(faultOf(folder.write("blank.frag", " \n\t\n")), "is empty");
    EXPECT_EQ(faultOf(folder.write("binary.frag", std::string("void\0main", 9))), "is not a text");
    ASSERT_EQ(mkdir(folder.file("folder.frag").c_str(), 0755), 0);
    EXPECT_EQ(faultOf(folder.file("folder.frag")), "is not a plain file");
    EXPECT_EQ(faultOf("/dev/zero"), "is not a plain file");
    ASSERT_EQ(mkfifo(folder.file("pipe.frag").c_str(), 0644), 0);
    EXPECT_EQ(faultOf(folder.file("pipe.frag")), "is not a plain file");
}

TEST(ShaderFiles, hugeFilesAreNotRead) {
    TemporaryFolder const folder;
    std::string const path = folder.write("huge.frag", "");
    ASSERT_EQ(truncate(path.c_str(), off_t{100} << 20), 0);
    EXPECT_THAT(faultOf(path), HasSubstr("too large"));
    EXPECT_EQ(faultOf(folder.write("just.frag", std::string(1 << 20, '/'))), "");
    EXPECT_THAT(faultOf(folder.write("over.frag", std::string((1 << 20) + 1, '/'))), HasSubstr("too large"));
}
