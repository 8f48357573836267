#include "viewport/gallery/ProgramRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using vellum::gallery::ProgramRunner;

TEST(ProgramRunner, statusIsThatOfTheProgram) {
    ProgramRunner runner;
    EXPECT_EQ(runner.run({"/bin/sh", "-c", "exit 0"}), 0);
    EXPECT_EQ(runner.run({"/bin/sh", "-c", "exit 7"}), 7);
    EXPECT_EQ(runner.run({"/bin/sh", "-c", "kill -9 $$"}), 128 + SIGKILL);
    EXPECT_EQ(runner.run({"/nowhere/at/all"}), 127);
    EXPECT_FALSE(runner.isInterrupted());
}

TEST(ProgramRunner, argumentsArriveUnchanged) {
    TemporaryFolder const folder;
    ProgramRunner runner;
    EXPECT_EQ(runner.run({"/bin/sh", "-c", "printf '%s|' \"$@\" > \"$0\"", folder.file("out"), "a b", "",
                          "$c '\"", "*"}),
              0);
    EXPECT_EQ(folder.read("out"), "a b||$c '\"|*|");
}

TEST(ProgramRunner, interruptionEndsTheProgramAndIsNoted) {
    for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        SCOPED_TRACE(signal);
        ProgramRunner runner;
        // The program interrupts its caller, then sleeps for longer than a test may take.
        std::string const script =
            "kill -" + std::to_string(signal) + " " + std::to_string(getpid()) + "; exec sleep 900";
        EXPECT_EQ(runner.run({"/bin/sh", "-c", script}), 128 + SIGTERM);
        EXPECT_TRUE(runner.isInterrupted());
    }
}

TEST(ProgramRunner, nothingIsStartedAfterAnInterruption) {
    TemporaryFolder const folder;
    ProgramRunner runner;
    std::raise(SIGTERM);
    EXPECT_TRUE(runner.isInterrupted());
    EXPECT_EQ(runner.run({"/usr/bin/touch", folder.file("a")}), 127);
    EXPECT_TRUE(folder.names().empty());
}

TEST(ProgramRunner, signalThatWasIgnoredStaysIgnored) {
    auto const former = std::signal(SIGHUP, SIG_IGN);
    {
        ProgramRunner const runner;
        std::raise(SIGHUP);
        EXPECT_FALSE(runner.isInterrupted());
    }
    EXPECT_EQ(std::signal(SIGHUP, former), SIG_IGN);
}

TEST(ProgramRunner, formerHandlingReturnsAtTheEnd) {
    auto const former = std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGTERM, former);
    { ProgramRunner const runner; }
    EXPECT_EQ(std::signal(SIGTERM, former), former);
}

TEST(ProgramRunner, interruptedProcessEndsByItsSignal) {
    pid_t const child = fork();
    if (child == 0) {
        ProgramRunner runner;
        std::raise(SIGINT);
        runner.endAsInterrupted();
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGINT);
}

}  // namespace
