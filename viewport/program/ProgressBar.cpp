#include "viewport/program/ProgressBar.h"

#include "viewport/text/single_line.h"

#include <algorithm>
#include <cstdio>

namespace vellum::viewport {

namespace {

constexpr std::chrono::seconds PATIENCE{1};
constexpr std::size_t LONGEST_LABEL = 32;
constexpr int STEPS = 24;

}  // namespace

ProgressBar::ProgressBar(std::ostream& stream, bool isTerminal, std::string const& label, Clock const& clock)
    : stream(stream), isTerminal(isTerminal), title(singleLine(label)), clock(clock), start(clock()) {
    if (title.size() > LONGEST_LABEL) {
        // The end of a path tells more than its beginning.
        title = "..." + title.substr(title.size() - LONGEST_LABEL + 3);
    }
}

ProgressBar::~ProgressBar() {
    if (!shownLine.empty()) {
        stream << '\r' << std::string(shownLine.size(), ' ') << '\r' << std::flush;
    }
}

void ProgressBar::show(std::uint64_t done, std::uint64_t all) {
    if (!isTerminal || clock() - start < PATIENCE) {
        return;
    }
    double const part = all > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(all)) : 1.0;
    auto const full = static_cast<std::size_t>(part * STEPS);
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(part * 100));
    std::string const line =
        title + " [" + std::string(full, '#') + std::string(STEPS - full, ' ') + "] " + percent;
    if (line != shownLine) {
        shownLine = line;
        stream << '\r' << shownLine << std::flush;
    }
}

}  // namespace vellum::viewport
