#include "viewport/scene/ParticleLook.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace vellum::viewport {

namespace {

constexpr char const* SPEED_NAME = "speed";
constexpr char const* COMPONENT_NAMES[] = {"vx", "vy", "vz"};
constexpr double BALL_DIAMETER = 0.98;      // of the mean distance of neighbors
constexpr float LARGEST_MAGNITUDE = 1e18F;  // its square is still a float

bool isFinite(Vector3<float> const& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

double lengthOf(Vector3<float> const& v) {
    return std::hypot(static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z));
}

float component(Vector3<float> const& v, unsigned int axis) {
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

/// One number for each particle of a frame: a channel of the file, or something of the velocities.
class Quantity {
public:
    /// Nothing where the frame has no such quantity.
    static std::optional<Quantity> find(ParticleFrame const& frame, std::string const& name) {
        if (ParticleChannel const* const channel = frame.channel(name)) {
            return Quantity(frame, channel, 0);
        }
        if (frame.velocities.empty()) {
            return std::nullopt;
        }
        if (name == SPEED_NAME) {
            return Quantity(frame, nullptr, 3);
        }
        for (unsigned int axis = 0; axis < 3; ++axis) {
            if (name == COMPONENT_NAMES[axis]) {
                return Quantity(frame, nullptr, axis);
            }
        }
        return std::nullopt;
    }

    bool isSpeed() const { return channel == nullptr && axis == 3; }

    double operator[](std::size_t index) const {
        if (channel != nullptr) {
            return channel->values[index];
        }
        Vector3<float> const& velocity = frame->velocities[index];
        return axis == 3 ? lengthOf(velocity) : component(velocity, axis);
    }

private:
    Quantity(ParticleFrame const& frame, ParticleChannel const* channel, unsigned int axis)
        : frame(&frame), channel(channel), axis(axis) {}

    ParticleFrame const* frame;
    ParticleChannel const* channel;  // null: of the velocities
    unsigned int axis;               // 3: all of them
};

/// The names of all quantities, the likeliest to be looked at first.
std::vector<std::string> quantityNames(ParticleFrame const& frame) {
    std::vector<std::string> names;
    if (!frame.velocities.empty()) {
        names.emplace_back(SPEED_NAME);
    }
    for (ParticleChannel const& channel : frame.channels) {
        if (channel.name != "id" && channel.name != "type") {
            names.push_back(channel.name);
        }
    }
    for (char const* const last : {"type", "id"}) {
        if (frame.channel(last) != nullptr) {
            names.emplace_back(last);
        }
    }
    return names;
}

std::string joined(std::vector<std::string> const& names) {
    std::string text;
    for (std::string const& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

/// The likeliest quantity that all files have; empty where there is none. An id tells nothing by its color.
std::string commonQuantity(std::vector<ParticleData> const& data) {
    for (std::string const& name : quantityNames(data.front().frame)) {
        bool const isCommon = std::all_of(data.begin(), data.end(), [&name](ParticleData const& each) {
            return Quantity::find(each.frame, name).has_value();
        });
        if (isCommon && name != "id") {
            return name;
        }
    }
    return {};
}

/// The ends of what is finite, or nothing where nothing is.
struct Ends {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
    bool hasMore = false;  // beyond all numbers, or none
};

ParticleScale scaleOf(std::string const& name, std::vector<ParticleData> const& data,
                      std::optional<ValueRange> const& range) {
    Ends ends;
    bool isSpeed = false;
    for (ParticleData const& each : data) {
        Quantity const quantity = *Quantity::find(each.frame, name);
        isSpeed = isSpeed || quantity.isSpeed();
        for (std::size_t i = 0; i < each.frame.positions.size(); ++i) {
            double const value = quantity[i];
            if (!std::isfinite(value)) {
                ends.hasMore = ends.hasMore || !(value < 0);
            } else if (isFinite(each.frame.positions[i])) {
                ends.least = std::min(ends.least, value);
                ends.most = std::max(ends.most, value);
            }
        }
    }
    if (!(ends.least <= ends.most)) {
        ends.least = ends.most = range ? range->low : 0;
    }
    ParticleScale scale;
    scale.name = name;
    scale.range = range.value_or(ValueRange{ends.least, ends.most});
    scale.isExceeded = ends.hasMore || ends.most > scale.range.high;
    // Speeds stay what they are, lengths of vectors.
    scale.offset = isSpeed ? 0 : std::min(ends.least, scale.range.low);
    double const reach = scale.range.high - scale.offset;
    scale.unit = reach > 0 && std::isfinite(reach) ? reach : 1;
    return scale;
}

/// The steps of a grid of as many points, in as many dimensions as the particles fill.
double spacingOf(std::vector<Vector3<float>> const& positions) {
    Vector3<float> const first = positions.empty() ? Vector3<float>{0, 0, 0} : positions.front();
    double least[3] = {first.x, first.y, first.z};
    double most[3] = {first.x, first.y, first.z};
    for (Vector3<float> const& p : positions) {
        for (unsigned int axis = 0; axis < 3; ++axis) {
            least[axis] = std::min(least[axis], static_cast<double>(component(p, axis)));
            most[axis] = std::max(most[axis], static_cast<double>(component(p, axis)));
        }
    }
    double const largest = std::max({most[0] - least[0], most[1] - least[1], most[2] - least[2]});
    if (!(largest > 0)) {
        return 1;
    }
    double logarithm = 0;
    int dimensions = 0;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        double const extent = most[axis] - least[axis];
        if (extent > 1e-3 * largest) {
            logarithm += std::log(extent);
            ++dimensions;
        }
    }
    double const pointsPerSide = std::pow(static_cast<double>(positions.size()), 1.0 / dimensions);
    return std::exp(logarithm / dimensions) / std::max(pointsPerSide - 1, 1.0);
}

/// Puts the particles into an order without pattern, always the same one for the same number. Renderers choose every
/// so many of a part of them, which draws stripes where particles stand in the order of a lattice.
void shuffle(ParticleSet& set) {
    std::mt19937 random(20'011);
    for (std::size_t left = set.positions.size(); left > 1; --left) {
        std::size_t const other = random() % left;
        std::swap(set.positions[left - 1], set.positions[other]);
        std::swap(set.colors[left - 1], set.colors[other]);
    }
}

bool isFinite(ParticleBox const& box) {
    auto const isAllFinite = [](Vector3<double> const& v) {
        return std::isfinite(length(v)) && std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}) <
                                               static_cast<double>(std::numeric_limits<float>::max());
    };
    return isAllFinite(box.origin) && std::all_of(std::begin(box.edges), std::end(box.edges), isAllFinite);
}

ParticleSet setOf(ParticleData& data, ParticleMode mode, std::optional<ParticleScale> const& scale) {
    ParticleFrame& frame = data.frame;
    std::optional<Quantity> quantity;
    if (scale) {
        quantity = Quantity::find(frame, scale->name);
    }
    ParticleSet set;
    std::size_t const slash = data.file.find_last_of('/');
    set.name = slash == std::string::npos ? data.file : data.file.substr(slash + 1);
    set.colors.reserve(frame.positions.size());
    std::size_t kept = 0;
    for (std::size_t i = 0; i < frame.positions.size(); ++i) {
        bool const isArrowless = mode == ParticleMode::ARROWS && !isFinite(frame.velocities[i]);
        if (!isFinite(frame.positions[i]) || isArrowless) {
            continue;
        }
        Vector3<float> color{0, 0, 0};
        if (quantity && quantity->isSpeed() && isFinite(frame.velocities[i])) {
            Vector3<float> const& v = frame.velocities[i];
            double const part = 1 / scale->unit;
            color = {static_cast<float>(v.x * part), static_cast<float>(v.y * part),
                     static_cast<float>(v.z * part)};
        } else if (quantity) {
            // Deliberate (scalar-stride-one): a number stands in a vector, too. The way to draw that needs no
            // buffer would take the color of a particle from the numbers of its neighbors.
            color.x = scale->toMagnitude((*quantity)[i]);
        }
        set.colors.push_back(color);
        frame.positions[kept++] = frame.positions[i];
    }
    frame.positions.resize(kept);
    set.positions = std::move(frame.positions);
    set.spacing = spacingOf(set.positions);
    if (frame.box && isFinite(*frame.box)) {
        set.box = frame.box;
    }
    frame = {};
    return set;
}

}  // namespace

float ParticleScale::toMagnitude(double value) const {
    if (!std::isfinite(value)) {
        return value < 0 ? 0.0F : LARGEST_MAGNITUDE;
    }
    double const magnitude = (value - offset) / unit;
    return static_cast<float>(std::min(magnitude, static_cast<double>(LARGEST_MAGNITUDE)));
}

float ParticleScale::highMagnitude() const {
    float const extent = toMagnitude(range.high) - lowMagnitude();
    return extent > 0 ? toMagnitude(range.high) + 1e-5F * extent : lowMagnitude() + 1;
}

Result<ParticleLook> lookOf(std::vector<ParticleData> data, ParticleOptions const& options) {
    ParticleLook look;
    if (data.empty()) {
        return look;
    }
    std::size_t count = 0;
    for (ParticleData const& each : data) {
        count += each.frame.positions.size();
    }
    look.mode = options.mode.value_or(count > MOST_SPHERES ? ParticleMode::POINTS : ParticleMode::SPHERES);
    bool const isArrows = look.mode == ParticleMode::ARROWS;
    if (isArrows && !options.channel.empty() && options.channel != SPEED_NAME) {
        return Fault{data.front().file, "arrows are colored by speed, not by '" + options.channel + "'"};
    }
    for (ParticleData const& each : data) {
        if (isArrows && each.frame.velocities.empty()) {
            return Fault{each.file, "has no velocities to be shown as arrows"};
        }
        if (!options.channel.empty() && !Quantity::find(each.frame, options.channel)) {
            return Fault{each.file, "has no channel '" + options.channel +
                                        "' (it has: " + joined(quantityNames(each.frame)) + ")"};
        }
    }

    std::string name = isArrows ? std::string(SPEED_NAME) : options.channel;
    if (isArrows) {
        // A column of that name is not what arrows show.
        for (ParticleData& each : data) {
            auto& channels = each.frame.channels;
            channels.erase(std::remove_if(channels.begin(), channels.end(),
                                          [](ParticleChannel const& c) { return c.name == SPEED_NAME; }),
                           channels.end());
        }
    } else if (name.empty()) {
        name = commonQuantity(data);
    }
    if (!name.empty()) {
        look.scale = scaleOf(name, data, options.range);
    }
    for (ParticleData& each : data) {
        std::size_t const all = each.frame.positions.size();
        look.sets.push_back(setOf(each, look.mode, look.scale));
        ParticleSet& set = look.sets.back();
        set.diameter = options.size.value_or(BALL_DIAMETER * set.spacing);
        set.reach = look.mode == ParticleMode::SPHERES ? set.diameter / 2 : 0;
        if (options.percent < 100) {
            shuffle(set);
        }
        std::size_t const lost = all - set.positions.size();
        if (lost > 0) {
            look.notes.push_back({each.file, std::to_string(lost) + " of " + std::to_string(all) +
                                                 " particles are left out: their positions" +
                                                 (isArrows ? " or velocities" : "") + " are not finite"});
        }
    }
    return look;
}

}  // namespace vellum::viewport
