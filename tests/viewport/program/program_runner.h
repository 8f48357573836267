#pragma once

#include "tests/support/TemporaryFolder.h"

#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

/// Where this build has vl_viewport; for programs that link vl_test_program.
extern char const* const VL_VIEWPORT_PROGRAM;

/// What a program did.
struct Outcome {
    int status = -1;  ///< exit status; 128 + the signal's number for a crash
    std::string output;
    std::string error;
};

/// Runs a program to its end. `environment` holds settings "NAME=value" beside those of the test.
inline Outcome runProgram(std::string const& program, std::vector<std::string> const& arguments,
                          std::vector<std::string> const& environment = {}) {
    TemporaryFolder const folder;
    std::string const output = folder.write("output", "");
    std::string const error = folder.write("error", "");
    pid_t const child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(open(output.c_str(), O_WRONLY), STDOUT_FILENO);
        dup2(open(error.c_str(), O_WRONLY), STDERR_FILENO);
        for (std::string const& setting : environment) {
            std::size_t const middle = setting.find('=');
            setenv(setting.substr(0, middle).c_str(), setting.substr(middle + 1).c_str(), 1);
        }
        std::vector<std::string> words{program};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Outcome outcome;
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.output = folder.read("output");
    outcome.error = folder.read("error");
    return outcome;
}

/// What --pick prints, without what is known about the things: each fact is a line that begins with two
/// blanks.
inline std::string withoutFacts(std::string const& output) {
    std::string lines;
    std::istringstream input(output);
    for (std::string line; std::getline(input, line);) {
        lines += line.rfind("  ", 0) == 0 ? std::string() : line + "\n";
    }
    return lines;
}
