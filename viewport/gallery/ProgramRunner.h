#pragma once

#include <string>
#include <vector>

namespace vellum::gallery {

/// Runs other programs, one at a time, and makes interruptions orderly: a signal that asks this program to
/// end also ends the program that runs, and is then noted, so that the caller can remove its temporary files
/// first.
///
///     ProgramRunner runner;
///     int const status = runner.run({"/usr/bin/true"});
///     if (runner.isInterrupted()) { ...remove files...; runner.endAsInterrupted(); }
///
/// One object at a time; it handles SIGHUP, SIGINT, SIGPIPE and SIGTERM of the process while it lives. Not
/// for use from several threads.
class ProgramRunner {
public:
    ProgramRunner();
    ~ProgramRunner();  ///< restores the former handling of the signals
    ProgramRunner(ProgramRunner const&) = delete;
    ProgramRunner& operator=(ProgramRunner const&) = delete;

    /// Runs a program to its end, without a shell. The program shares standard input, output and error.
    /// \param words the program's path, then its arguments.
    /// \return its exit status; 128 + the signal's number where a signal ended it; 127 where it cannot be
    /// started or an interruption has been noted.
    int run(std::vector<std::string> const& words);

    bool isInterrupted() const;

    /// Ends this process by the signal that was noted, so that a calling shell sees an interruption.
    [[noreturn]] void endAsInterrupted();
};

}  // namespace vellum::gallery
