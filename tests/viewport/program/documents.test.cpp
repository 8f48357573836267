#include "viewport/program/documents.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>

using namespace vellum::viewport;
using testing::HasSubstr;
using testing::Not;

namespace {

/// The words that bash offers after this line, one in each line.
std::string completed(std::string const& line) {
    TemporaryFolder const folder;
    std::string const script = folder.write("c", bashCompletion(optionTable()));
    std::string const command = "bash -c 'source " + script + "; COMP_WORDS=(" + line +
                                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vl_viewport; "
                                "printf \"%s\\n\" \"${COMPREPLY[@]}\"' 2>&1";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const output(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), static_cast<int>(part.size()), output.get()) != nullptr) {
        text += part.data();
    }
    return text;
}

}  // namespace

TEST(Documents, theTableHasTheOptionsInTheOrderOfTheHelp) {
    std::vector<OptionEntry> const table = optionTable();
    EXPECT_EQ(table.front().name, "FILE");
    EXPECT_EQ(table.back().group, "Program");
    EXPECT_GT(table.size(), 60U);
    auto const find = [&table](std::string const& name) {
        return *std::find_if(table.begin(), table.end(),
                             [&](OptionEntry const& entry) { return entry.name == name; });
    };
    EXPECT_EQ(find("--size").type, "WxH");
    EXPECT_EQ(find("--no-grid").type, "");
    EXPECT_EQ(find("--help").shortName, "-h");
    EXPECT_TRUE(find("--edges").isWordOptional);
    EXPECT_TRUE(find("--texture").takesFile());
    EXPECT_THAT(find("--view").choices, testing::Contains("top"));
}

TEST(Documents, eachOptionIsInTheManualAndInEachCompletion) {
    std::vector<OptionEntry> const table = optionTable();
    std::string manual = manualPage(table, "1");
    manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
    std::string const bash = bashCompletion(table);
    std::string const zsh = zshCompletion(table);
    std::string const fish = fishCompletion(table);
    for (OptionEntry const& option : table) {
        if (option.isPositional()) {
            continue;
        }
        EXPECT_THAT(manual, testing::ContainsRegex(option.name + "fR"));
        EXPECT_THAT(bash, testing::ContainsRegex("[ ']" + option.name + "[ ']"));
        EXPECT_THAT(zsh, testing::ContainsRegex("'[*]?" + option.name + "[=-]*\\["));
        EXPECT_THAT(fish, HasSubstr(" -l " + option.name.substr(2) + " "));
        for (std::string const& choice : option.choices) {
            EXPECT_THAT(bash, HasSubstr(choice));
            EXPECT_THAT(zsh, HasSubstr(choice));
            EXPECT_THAT(fish, HasSubstr(choice));
        }
    }
}

TEST(Documents, theManualHasNoLineThatIsACommandByChance) {
    OptionEntry const option{"Group", "--x", "", "N", ".5 of it\n'and' a \\ more", {}};
    EXPECT_THAT(manualPage({option}, "1"), HasSubstr("\n\\&.5 of it\n\\&'and' a \\e more.\n"));
}

TEST(Documents, bashCompletesOptionsAndTheirWords) {
    EXPECT_EQ(completed("vl_viewport --no-gr"), "--no-grid\n");
    EXPECT_EQ(completed("vl_viewport --shading sm"), "smooth\n");
    EXPECT_EQ(completed("vl_viewport --shading = sm"), "smooth\n");
    EXPECT_EQ(completed("vl_viewport --edges=h"), "--edges=hard\n");
    EXPECT_EQ(completed("vl_viewport --texture /et"), "/etc\n");
    EXPECT_EQ(completed("vl_viewport /et"), "/etc\n");
    EXPECT_EQ(completed("vl_viewport --size 6"), "\n");
}
