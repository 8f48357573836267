#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

namespace vellum::viewport {

/// Shows on a terminal how far something is that takes long: nothing before the first second is over, then a line
/// that is written anew in its place and wiped off in the end.
class ProgressBar {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// \param isTerminal whether anybody looks at the stream; if not, nothing is written.
    ProgressBar(std::ostream& stream, bool isTerminal, std::string const& label,
                Clock const& clock = std::chrono::steady_clock::now);
    ~ProgressBar();  ///< Wipes the line off.
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    void show(std::uint64_t done, std::uint64_t all);

private:
    std::ostream& stream;
    bool isTerminal;
    std::string title;  // one line
    Clock clock;
    std::chrono::steady_clock::time_point start;
    std::string shownLine;  // that stands there; empty: none
};

}  // namespace vellum::viewport
