#include "viewport/program/Configuration.h"

#include "tests/support/TemporaryFolder.h"
#include "viewport/program/CommandLine.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

CommandLine parse(std::vector<std::string> const& words, std::string const& configuration) {
    std::vector<char const*> arguments{"vl_viewport"};
    for (std::string const& word : words) {
        arguments.push_back(word.c_str());
    }
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data(), configuration);
}

}  // namespace

TEST(Configuration, linesAreReadWithoutCommentsAndQuotes) {
    TemporaryFolder const folder;
    std::string const file = folder.write("c", "#first\n\n size = 64x48 \nbackground=\"#ffffff\" ; "
                                               "white\nno-axes\ncolors = #ff0000,#00ff00 # two\n");
    Result<Configuration> const read = Configuration::read(file);
    ASSERT_TRUE(read.isOk()) << read.fault().line();
    std::string text;
    for (Configuration::Line const& line : read.value().lines) {
        text += std::to_string(line.number) + " " + line.name + " " + line.value + "\n";
    }
    EXPECT_EQ(text, "3 size 64x48\n4 background #ffffff\n5 no-axes true\n6 colors #ff0000,#00ff00\n");
}

TEST(Configuration, theCommandLineOutranksIt) {
    TemporaryFolder const folder;
    std::string const file = folder.write(
        "c", "size = 64x48\nshading = faceted\nno-axes = true\nno-grid = false\nedges = all\nquiet\n");
    CommandLine const line =
        parse({"a.obj", "--out", "a.png", "--out", "b.png", "--size", "1x2", "--shading", "smooth"}, file);
    ASSERT_TRUE(line.options.has_value()) << line.error;
    Options const& options = *line.options;
    EXPECT_EQ(options.pictures[0].size.width, 64);
    EXPECT_EQ(options.pictures[1].size.width, 1);
    EXPECT_FALSE(options.pictures[1].explanations.hasAxes);
    EXPECT_TRUE(options.pictures[1].explanations.hasGrid);
    EXPECT_EQ(options.mesh.shading, Shading::SMOOTH);
    EXPECT_TRUE(options.mesh.allEdges);
    EXPECT_TRUE(options.isQuiet);
    EXPECT_EQ(options.given.count("--edges"), 0U) << "not of the command line";
    EXPECT_EQ(options.given.count("--size"), 1U);
}

TEST(Configuration, anotherOneOrNoneIsTakenWhereAskedFor) {
    TemporaryFolder const folder;
    std::string const mine = folder.write("mine", "size = 64x48\n");
    std::string const other = folder.write("other", "size = 10x10\n");
    EXPECT_EQ(parse({"a.obj", "--out", "a.png", "--config", other}, mine).options->pictures[0].size.width,
              10);
    EXPECT_EQ(parse({"a.obj", "--out", "a.png", "--no-config"}, mine).options->pictures[0].size.width, 1280);
}

TEST(Configuration, faultsNameFileAndLine) {
    TemporaryFolder const folder;
    struct Row {
        char const* text;
        char const* fault;
    };
    for (Row const& row :
         {Row{"\nteapot = 1\n", "line 2: there is no option 'teapot'"},
          Row{"size = 1\n", "line 1: --size: '1' is not"},
          Row{"quiet\nshading = shiny\n", "line 2: --shading: unknown mode"},
          Row{"size=\n", "line 1: size: has no value"}, Row{"[view]\n", "line 1: is not NAME = VALUE"},
          Row{"quiet = loud\n", "line 1: quiet: is a flag"},
          Row{"out = a.png\n", "line 1: out: belongs on the command line"},
          Row{"log\nlog\n", "line 2: log: is given twice"},
          Row{"FILE = a\n", "line 1: there is no option 'FILE'"},
          Row{"percent = 101\n", "line 1: --percent: '101'"}}) {
        std::string const file = folder.write("c", row.text);
        CommandLine const line = parse({"a.obj", "--out", "a.png"}, file);
        EXPECT_EQ(line.exitStatus, 2) << row.text;
        EXPECT_THAT(line.error, HasSubstr(file + ": " + row.fault));
    }
    EXPECT_THAT(parse({"a", "--info", "--config", folder.file("gone")}, "").error,
                HasSubstr("gone: cannot be read: No such file"));
    EXPECT_THAT(parse({"a", "--info", "--config", folder.file("")}, "").error, HasSubstr("cannot be read"));
}

TEST(Configuration, thatOfTheUserIsFoundWhereItExists) {
    TemporaryFolder const folder;
    setenv("XDG_CONFIG_HOME", folder.file("x").c_str(), 1);
    EXPECT_EQ(userConfiguration(), "");
    std::filesystem::create_directories(folder.file("x/vl_viewport"));
    std::string const file = folder.write("x/vl_viewport/config", "quiet\n");
    EXPECT_EQ(userConfiguration(), file);
    unsetenv("XDG_CONFIG_HOME");
    setenv("HOME", folder.file("h").c_str(), 1);
    EXPECT_EQ(userConfiguration(), "");
}
