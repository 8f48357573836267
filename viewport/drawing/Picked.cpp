#include "viewport/drawing/Picked.h"

#include <cmath>
#include <cstdint>

namespace vellum::viewport {

namespace {

constexpr char ID[] = "id";
constexpr char TYPE[] = "type";

/// The name that the file gives to a number of a type; empty: none.
std::string typeName(ParticleFrame const& frame, double number) {
    bool const isWhole = std::abs(number) < 1e15 && number == std::floor(number);
    auto const found =
        isWhole ? frame.typeNames.find(static_cast<std::int64_t>(number)) : frame.typeNames.end();
    return found != frame.typeNames.end() ? found->second : std::string();
}

}  // namespace

PickedParticle PickedParticle::of(ParticleFrame const& frame, CloudRecords const& records,
                                  std::size_t record) {
    PickedParticle picked;
    picked.index = records.particle(record);
    picked.position = frame.positions[picked.index];
    picked.shownAt = records.place(frame, record);
    for (ParticleLabels const& labels : frame.labels) {
        picked.values.push_back({labels.name, {}, labels.words[labels.indices[picked.index]]});
    }
    for (ParticleChannel const& channel : frame.channels) {
        double const value = channel.values[picked.index];
        if (channel.name == ID) {
            picked.id = value;
        } else {
            picked.values.push_back({channel.name, channel.unit, value,
                                     channel.name == TYPE ? typeName(frame, value) : std::string()});
        }
    }
    for (ParticleVector const& vector : frame.vectors) {
        auto const part = [&](std::size_t k) {
            return frame.channels[vector.columns[k]].values[picked.index];
        };
        picked.values.push_back({vector.name, frame.channels[vector.columns[0]].unit,
                                 Vector3<double>{part(0), part(1), part(2)}});
    }
    return picked;
}

}  // namespace vellum::viewport
