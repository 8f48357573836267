#include "viewport/scene/ParticleCloud.h"

#include "foundation/basic/large_pages.h"
#include "foundation/basic/threads.h"
#include "toolkit/arrow_box.h"
#include "viewport/files/mesh/points.h"
#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/Quantity.h"
#include "viewport/scene/joined_ranges.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <unordered_map>
#include <utility>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

constexpr double LONGEST_ARROW = 1.9;  // mean distances of neighbors

/// Two ends for each line of the grid that so many boxes form, twelve of a single one.
std::vector<Point> linesOf(ParticleBox const& box, std::array<unsigned int, 3> const& counts) {
    std::vector<Point> ends;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        std::size_t const second = (axis + 1) % 3;
        std::size_t const third = (axis + 2) % 3;
        for (unsigned int i = 0; i <= counts[second]; ++i) {
            for (unsigned int j = 0; j <= counts[third]; ++j) {
                Point const start = box.origin + box.edges[second] * static_cast<double>(i) +
                                    box.edges[third] * static_cast<double>(j);
                ends.push_back(start);
                ends.push_back(start + box.edges[axis] * static_cast<double>(counts[axis]));
            }
        }
    }
    return ends;
}

Vector3<float> toVector(Color4<float> const& color) {
    return {color.r, color.g, color.b};
}

Vector3<float>* vectorsOf(ParticleSystemChunk_v2& chunk, unsigned int channel) {
    return chunk.channelData(channel)->asVectors();
}

float* floatsOf(ParticleSystemChunk_v2& chunk, unsigned int channel) {
    return chunk.channelData(channel)->asFloats();
}

/// How far a copy of the particles lies from the first one.
Point shiftOf(ParticleFrame const& frame, Tuple3<unsigned int> const& copies, std::size_t copy) {
    if (copy == 0) {
        return {0, 0, 0};
    }
    std::size_t const plane = std::size_t{copies.e0} * copies.e1;
    std::array<std::size_t, 3> const steps{copy % copies.e0, copy % plane / copies.e0, copy / plane};
    Point shift{0, 0, 0};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        shift = shift + frame.box->edges[axis] * static_cast<double>(steps[axis]);
    }
    return shift;
}

/// Gives back the memory of particles that are passed.
void releaseParticles(ParticleFrame& frame, std::size_t begin, std::size_t end) {
    auto const release = [begin, end](auto& list) {
        if (end <= list.size()) {
            releasePages(list.data() + begin, (end - begin) * sizeof(list[0]));
        }
    };
    release(frame.positions);
    for (ParticleChannel& channel : frame.channels) {
        release(channel.values);
    }
    for (ParticleVector& vector : frame.vectors) {
        release(vector.lengths);
    }
}

}  // namespace

Vector3<double> CloudRecords::place(ParticleFrame const& frame, std::size_t record) const {
    return ParticlePlaces(frame, isWrapped)[particle(record)] + shiftOf(frame, copies, record / count);
}

CloudMaker::CloudMaker(ParticleFrame const& frame, ParticleLook const& look, std::size_t index)
    : frame(frame), look(look), places(frame, look.isWrapped) {
    if (index < look.choices.size()) {
        choice = std::shared_ptr<ParticleChoice const>(std::shared_ptr<void>(), &look.choices[index]);
    } else {
        Result<ParticleChoice> all = choose(frame, places, frame.vector(look.arrows), nullptr, std::nullopt);
        choice = std::make_shared<ParticleChoice>(std::move(all.value()));
    }
    diameter = look.size.value_or(SPHERE_DIAMETER * choice->spacing);
    // The fewer particles are drawn, the farther apart they are, and the longer arrows can be.
    arrowLength = look.size ? *look.size * look.arrowUnit
                            : LONGEST_ARROW * choice->spacing / std::cbrt(std::max(look.drawnPart, 1e-8));
    _measure();
    if (look.drawnPart < 1) {
        _shuffle();
    }
}

CloudRecords CloudMaker::records() const {
    CloudRecords records{choice->count, nullptr, look.copies, look.isWrapped};
    if (!order.empty()) {
        records.particles = std::make_shared<std::vector<unsigned int>>(order);
    } else if (!choice->isAll) {
        records.particles = std::make_shared<std::vector<unsigned int>>(choice->particles);
    }
    return records;
}

bool CloudMaker::_hasBox() const {
    return frame.box && isFinite(*frame.box);
}

std::size_t CloudMaker::_copyCount() const {
    return std::size_t{look.copies.e0} * look.copies.e1 * look.copies.e2;
}

Vector3<double> CloudMaker::_shift(std::size_t copy) const {
    return shiftOf(frame, look.copies, copy);
}

/// With the width of spheres and the length of arrows. The size of points is in pixels.
void CloudMaker::_measure() {
    bounds = choice->box;
    if (look.mode == ParticleMode::SPHERES) {
        _measureSpheres();
    } else if (!look.arrows.empty()) {
        _measureArrows();
    }
    if (!_hasBox()) {
        return;
    }
    if (choice->count == 0) {
        bounds = {frame.box->origin, frame.box->origin};
    }
    Box3<double> const one = bounds;
    for (unsigned int corner = 1; corner < 8; ++corner) {
        std::array<unsigned int, 3> const last{look.copies.e0 - 1, look.copies.e1 - 1, look.copies.e2 - 1};
        Point shift{0, 0, 0};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            double const steps = (corner >> axis & 1U) != 0 ? last[axis] : 0.0;
            shift = shift + frame.box->edges[axis] * steps;
        }
        include(bounds, one.min + shift);
        include(bounds, one.max + shift);
    }
    for (Point const& end : linesOf(*frame.box, {1, 1, 1})) {
        include(bounds, end);
        include(bounds, end + _shift(_copyCount() - 1));
    }
}

void CloudMaker::_measureSpheres() {
    DiameterOf const diameterOf = _diameters();
    if (!diameterOf) {
        double const radius = diameter / 2;
        bounds = {bounds.min - Point{radius, radius, radius}, bounds.max + Point{radius, radius, radius}};
        return;
    }
    bounds = joinedRanges<Box3<double>>(
        choice->count, bounds,
        [&](Box3<double>& box, std::size_t i) {
            std::size_t const particle = (*choice)[i];
            double const radius = diameterOf(particle) / 2;
            Point const place = places[particle];
            include(box, place - Point{radius, radius, radius});
            include(box, place + Point{radius, radius, radius});
        },
        [](Box3<double>& box, Box3<double> const& next) {
            include(box, next.min);
            include(box, next.max);
        });
}

void CloudMaker::_measureArrows() {
    ParticleVector const& vector = *frame.vector(look.arrows);
    toolkit::ParticleMode const mode = look.mode == ParticleMode::SOLID_ARROWS
                                           ? toolkit::ParticleMode::SOLID_ARROWS
                                           : toolkit::ParticleMode::ARROWS;
    double const factor = arrowLength / look.arrowUnit;
    for (std::size_t i = 0; i < choice->count; ++i) {
        Point const place = places[(*choice)[i]];
        Point const along = vectorOf(frame, vector, (*choice)[i]) * factor;
        // Nearly all arrows are far inside, whatever their direction.
        double const most = std::abs(along.x) + std::abs(along.y) + std::abs(along.z);
        bool const isInside = place.x - most > bounds.min.x && place.x + most < bounds.max.x &&
                              place.y - most > bounds.min.y && place.y + most < bounds.max.y &&
                              place.z - most > bounds.min.z && place.z + most < bounds.max.z;
        if (!isInside) {
            toolkit::includeArrow(bounds, mode, place, along);
        }
    }
}

/// Renderers draw every so many of the particles. Those of a lattice, in the order of the lattice, would show
/// stripes; in this order, which is always the same for the same count, they show none.
void CloudMaker::_shuffle() {
    order.reserve(choice->count);
    for (std::size_t i = 0; i < choice->count; ++i) {
        order.push_back(static_cast<unsigned int>((*choice)[i]));
    }
    std::mt19937 random(20'011);
    for (std::size_t left = choice->count; left > 1; --left) {
        std::swap(order[left - 1], order[random() % left]);
    }
}

/// Empty where all have the same diameter.
CloudMaker::DiameterOf CloudMaker::_diameters() const {
    if (look.mode != ParticleMode::SPHERES || look.size) {
        return {};
    }
    double const usual = diameter;
    if (frame.sizes) {
        double const* const sizes = frame.channels[frame.sizes->column].values.data();
        double const factor = frame.sizes->diameters;
        return [usual, sizes, factor](std::size_t i) {
            double const size = sizes[i] * factor;
            return size > 0 && std::isfinite(size) ? size : usual;
        };
    }
    std::optional<ParticleKinds> const elements = ParticleKinds::elements(frame);
    if (!elements) {
        return {};
    }
    double largest = 0;
    std::vector<double> diameters;
    for (ParticleKind const& kind : elements->kinds()) {
        diameters.push_back(kind.element != nullptr ? 2 * kind.element->covalentRadius : 0);
        largest = std::max(largest, diameters.back() / 2);
    }
    if (!(largest > 0)) {
        return {};
    }
    double const units = unitsPerAngstrom(largest, *choice).first;
    for (double& one : diameters) {
        one = one > 0 ? one * units : usual;
    }
    return [kinds = *elements, diameters](std::size_t i) { return diameters[kinds[i]]; };
}

/// Empty where colors are those of SHOWN, or all alike.
CloudMaker::ColorOf CloudMaker::_colors() const {
    auto const undefined = [color = toVector(look.colors.undefined())](std::size_t) { return color; };
    if (look.coloring == ParticleColoring::OWN) {
        std::array<double const*, 3> columns{};
        for (std::size_t part = 0; part < 3; ++part) {
            columns[part] = frame.channels[frame.colors->columns[part]].values.data();
        }
        double const full = frame.colors->full;
        Vector3<float> const unknown = toVector(look.colors.undefined());
        return [columns, full, unknown](std::size_t i) {
            auto const part = [&](std::size_t k) {
                return static_cast<float>(std::clamp(columns[k][i] / full, 0.0, 1.0));
            };
            bool const isKnown =
                !std::isnan(columns[0][i]) && !std::isnan(columns[1][i]) && !std::isnan(columns[2][i]);
            return isKnown ? Vector3<float>{part(0), part(1), part(2)} : unknown;
        };
    }
    if (look.coloring == ParticleColoring::KINDS) {
        std::unordered_map<std::string, Vector3<float>> known;
        for (ParticleLegend::Entry const& entry : look.legend->entries) {
            known.emplace(entry.text, toVector(entry.color));
        }
        std::optional<ParticleKinds> const kinds = look.kinds(frame);
        if (!kinds) {
            return undefined;
        }
        std::vector<Vector3<float>> colors;
        for (ParticleKind const& kind : kinds->kinds()) {
            auto const found = known.find(kind.name);
            colors.push_back(found != known.end() ? found->second : Vector3<float>{0, 0, 0});
        }
        return [kinds = *kinds, colors](std::size_t i) { return colors[kinds[i]]; };
    }
    bool const hasLengths = look.arrows.empty() || (look.areArrowsMeasured && !look.scale->isLogarithmic);
    if (!look.scale || (look.scale->undefinedCount == 0 && hasLengths)) {
        return {};
    }
    std::optional<Quantity> const found = look.quantity(frame, places);
    if (!found) {
        return undefined;
    }
    return [this, quantity = *found](std::size_t i) {
        double const value = quantity[i];
        bool const isDefined = look.scale->isDefined(value);
        return toVector(isDefined ? look.colors.at(look.scale->place(value)) : look.colors.undefined());
    };
}

/// What the channel SHOWN holds. A number is stored in a vector too: drawn without a buffer, particles with a
/// scalar channel would take their colors from the numbers of other particles.
std::function<Vector3<float>(std::size_t)> CloudMaker::_shown(Turn const& turn) const {
    if (!look.arrows.empty()) {
        return [this, turn, vector = *frame.vector(look.arrows)](std::size_t i) {
            return convert<float>(turn(vectorOf(frame, vector, i) / look.arrowUnit));
        };
    }
    if (!look.scale || look.scale->undefinedCount > 0) {
        return {};
    }
    std::optional<Quantity> const found = look.quantity(frame, places);
    if (!found) {
        return {};
    }
    return [this, quantity = *found](std::size_t i) {
        return Vector3<float>{look.scale->toMagnitude(quantity[i]), 0, 0};
    };
}

/// Fills a channel with the value of each particle, copy after copy, on all cores.
template <class Element, class Value>
void CloudMaker::_fill(std::vector<Part> const& parts,
                       Element* (*elementsOf)(ParticleSystemChunk_v2&, unsigned int), unsigned int channel,
                       Value const& value) const {
    forRanges(parts.size(), 1, [&](std::size_t number, std::size_t) {
        Part const& part = parts[number];
        std::size_t place = part.first % choice->count;
        std::size_t copy = part.first / choice->count;
        Element* const elements = elementsOf(*part.chunk, channel);
        for (std::size_t i = 0; i < part.chunk->count(); ++i) {
            elements[i] = value(_index(place), copy);
            if (++place == choice->count) {
                place = 0;
                ++copy;
            }
        }
    });
}

/// Adds records to a system of full chunks. \return the chunks of them
std::vector<CloudMaker::Part> CloudMaker::_add(ParticleSystem_v2& system, std::size_t first,
                                               std::size_t end) {
    ParticleSystemChunk_v2* const last = system.lastChunk();
    system.addParticles(static_cast<unsigned int>(end - first));
    std::vector<Part> parts;
    for (ParticleSystemChunk_v2* chunk = last != nullptr ? last->next() : system.firstChunk();
         chunk != nullptr; chunk = chunk->next()) {
        parts.push_back({chunk, first});
        first += chunk->count();
    }
    return parts;
}

ParticleCloud CloudMaker::make(Placement const& placement, ParticleFrame* used) const {
    ParticleCloud cloud;
    auto const system = std::make_shared<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("shown", ParticleChannel_v2::VECTOR);
    ColorOf const colors = _colors();
    DiameterOf const diameters = _diameters();
    if (colors) {
        cloud.colors = system->addChannel("color", ParticleChannel_v2::VECTOR);
    }
    if (diameters) {
        cloud.sizes = system->addChannel("size", ParticleChannel_v2::SCALAR);
    }
    Point const center = placement.center;
    double const scale = placement.scale;
    Turn const turn = placement.turn;
    std::vector<Point> shifts;
    for (std::size_t copy = 0; copy < _copyCount(); ++copy) {
        shifts.push_back(_shift(copy));
    }
    auto const shown = _shown(turn);
    // Whoever fills and gives back by turns never has both, the frame and the whole system.
    constexpr std::size_t RECORDS_AT_ONCE = std::size_t{64} * ParticleSystemChunk_v2::CAPACITY;
    bool const isPassed = used != nullptr && order.empty() && _copyCount() == 1;
    std::size_t const all = choice->count * _copyCount();
    for (std::size_t done = 0; done < all;) {
        std::size_t const next = std::min(all, done + RECORDS_AT_ONCE);
        std::vector<Part> const parts = _add(*system, done, next);
        _fill(parts, vectorsOf, ParticleCloud::POSITIONS, [&](std::size_t i, std::size_t copy) {
            return convert<float>(turn((places[i] - center + shifts[copy]) * scale));
        });
        if (shown) {
            _fill(parts, vectorsOf, ParticleCloud::SHOWN,
                  [&](std::size_t i, std::size_t) { return shown(i); });
        }
        if (colors) {
            _fill(parts, vectorsOf, *cloud.colors, [&](std::size_t i, std::size_t) { return colors(i); });
        }
        if (diameters) {
            _fill(parts, floatsOf, *cloud.sizes,
                  [&](std::size_t i, std::size_t) { return static_cast<float>(diameters(i) * scale); });
        }
        if (isPassed) {
            releaseParticles(*used, (*choice)[done], (*choice)[next - 1] + 1);
        }
        done = next;
    }

    cloud.name = frame.file.substr(frame.file.find_last_of('/') + 1);
    cloud.system = system;
    cloud.box = turn({(bounds.min - center) * scale, (bounds.max - center) * scale});
    cloud.spacing = choice->spacing * scale;
    cloud.diameter = diameter * scale;
    cloud.arrowLength = arrowLength * scale;
    if (_hasBox()) {
        for (Point const& end : linesOf(*frame.box, {look.copies.e0, look.copies.e1, look.copies.e2})) {
            cloud.boxLines.push_back(convert<float>(placement(end)));
        }
    }
    return cloud;
}

}  // namespace vellum::viewport
