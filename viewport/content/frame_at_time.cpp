#include "viewport/content/frame_at_time.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vellum::viewport {

std::optional<std::size_t> nearestTime(std::vector<std::optional<double>> const& times, double wanted) {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < times.size(); ++i) {
        bool const isComparable = times[i] && !std::isnan(*times[i]);
        if (isComparable &&
            (!nearest || std::abs(*times[i] - wanted) < std::abs(*times[*nearest] - wanted))) {
            nearest = i;
        }
    }
    return nearest;
}

bool hasTimes(LoadedFrame const& loaded) {
    return loaded.frame.time ||
           std::any_of(loaded.times.begin(), loaded.times.end(),
                       [](std::optional<double> const& time) { return time.has_value(); });
}

Result<LoadedFrame> loadAtTime(ParticleFile const& file, double time, Progress const& progress) {
    // The times are known once some frame is read.
    Result<LoadedFrame> last = file.load(std::nullopt, progress);
    if (!last.isOk()) {
        return last;
    }
    std::optional<std::size_t> const nearest = nearestTime(last.value().times, time);
    if (!nearest || *nearest == last.value().number) {
        return last;
    }
    last = Fault{};  // Before the next one takes its memory.
    return file.load(nearest, progress);
}

Result<LoadedFrame> loadAtTime(ParticleSeries const& series, double time, Progress const& progress,
                               std::optional<ParticleFormat> format) {
    Result<LoadedFrame> best = Fault{};
    std::optional<double> distance;
    for (std::size_t i = 0; i < series.files().size(); ++i) {
        Result<LoadedFrame> each = series.load(i, progress, format);
        if (!each.isOk()) {
            return each;
        }
        std::optional<double> const& itsTime = each.value().frame.time;
        bool const isTimed = itsTime && !std::isnan(*itsTime);
        if (isTimed ? !distance || std::abs(*itsTime - time) < *distance : !distance) {
            distance = isTimed ? std::optional<double>(std::abs(*itsTime - time)) : std::nullopt;
            best = std::move(each);
        }
    }
    return best;
}

}  // namespace vellum::viewport
