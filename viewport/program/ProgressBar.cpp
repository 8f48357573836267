#include "viewport/program/ProgressBar.h"

#include "viewport/text/Fault.h"

#include <algorithm>
#include <cstdio>

namespace vellum::viewport {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::size_t longestLabel = 32;
constexpr int steps = 24;

}  // namespace

ProgressBar::ProgressBar(std::ostream& stream, bool const& isTerminal, std::string const& label,
                         Clock const& clock)
    : _stream(stream)
    , _isTerminal(isTerminal)
    , _label(Fault{"", label}.line())
    , _clock(clock)
    , _start(clock()) {
    if (_label.size() > longestLabel) {
        // The end of a path tells more than its beginning.
        _label = "..." + _label.substr(_label.size() - longestLabel + 3);
    }
}

ProgressBar::~ProgressBar() {
    if (!_line.empty()) {
        _stream << '\r' << std::string(_line.size(), ' ') << '\r' << std::flush;
    }
}

void ProgressBar::show(std::uint64_t const& done, std::uint64_t const& all) {
    if (!_isTerminal || _clock() - _start < patience) {
        return;
    }
    double const part = all > 0 ? std::min(1.0, static_cast<double>(done) / static_cast<double>(all)) : 1.0;
    auto const full = static_cast<std::size_t>(part * steps);
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3d %%", static_cast<int>(part * 100));
    std::string const line =
        _label + " [" + std::string(full, '#') + std::string(steps - full, ' ') + "] " + percent;
    if (line != _line) {
        _line = line;
        _stream << '\r' << _line << std::flush;
    }
}

}  // namespace vellum::viewport
