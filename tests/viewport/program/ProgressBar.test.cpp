#include "viewport/program/ProgressBar.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace vellum::viewport;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class ProgressBar_test : public testing::Test {
protected:
    void wait(std::chrono::milliseconds const& time) { now += time; }

    std::chrono::steady_clock::time_point now{};
    ProgressBar::Clock clock = [this] { return now; };
    std::ostringstream terminal;
};

}  // namespace

TEST_F(ProgressBar_test, nothingIsShownInTheFirstSecond) {
    {
        ProgressBar bar(terminal, true, "melt.lammpstrj", clock);
        bar.show(0, 100);
        wait(std::chrono::milliseconds(999));
        bar.show(90, 100);
    }
    EXPECT_EQ(terminal.str(), "");
}

TEST_F(ProgressBar_test, nothingIsShownWhereThereIsNoTerminal) {
    {
        ProgressBar bar(terminal, false, "melt.lammpstrj", clock);
        wait(std::chrono::seconds(10));
        bar.show(50, 100);
    }
    EXPECT_EQ(terminal.str(), "");
}

TEST_F(ProgressBar_test, whatTakesLongerIsShownAndWipedOff) {
    {
        ProgressBar bar(terminal, true, "melt.lammpstrj", clock);
        wait(std::chrono::milliseconds(1000));
        bar.show(50, 100);
        EXPECT_EQ(terminal.str(), "\rmelt.lammpstrj [############            ]  50 %");
        bar.show(50, 100);
        EXPECT_EQ(terminal.str().size(), 48U) << "the same line is not written again";
        bar.show(100, 100);
        EXPECT_THAT(terminal.str(), EndsWith("[########################] 100 %"));
    }
    EXPECT_THAT(terminal.str(), EndsWith("\r" + std::string(47, ' ') + "\r"));
}

TEST_F(ProgressBar_test, numbersWithoutSenseDoNoHarm) {
    ProgressBar bar(terminal, true, "a", clock);
    wait(std::chrono::seconds(2));
    bar.show(0, 0);
    EXPECT_THAT(terminal.str(), HasSubstr("100 %"));
    bar.show(500, 100);
    bar.show(0, 100);
    EXPECT_THAT(terminal.str(), EndsWith("[                        ]   0 %"));
}

TEST_F(ProgressBar_test, longNamesShowTheirEndAndStayOnOneLine) {
    ProgressBar bar(terminal, true, std::string(100, 'a') + "\n/melt.lammpstrj", clock);
    wait(std::chrono::seconds(2));
    bar.show(1, 2);
    EXPECT_THAT(terminal.str(), StartsWith("\r..."));
    EXPECT_THAT(terminal.str(), HasSubstr("a?/melt.lammpstrj ["));
    EXPECT_LT(terminal.str().size(), 80U);
}
