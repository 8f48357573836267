#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

namespace vellum::viewport {

/// Shows the progress of a long task on a terminal: nothing during the first second, then a line that is
/// rewritten in place and erased in the end.
class ProgressBar {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// \param isTerminal whether the stream is a terminal; if not, nothing is written.
    ProgressBar(std::ostream& stream, bool isTerminal, std::string const& label,
                Clock const& clock = std::chrono::steady_clock::now);
    ~ProgressBar();  ///< Erases the line.
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    void show(std::uint64_t done, std::uint64_t all);

private:
    std::ostream& stream;
    bool isTerminal;
    std::string title;  // one line
    Clock clock;
    std::chrono::steady_clock::time_point start;
    std::string shownLine;  // on the terminal now; empty: none
};

}  // namespace vellum::viewport
