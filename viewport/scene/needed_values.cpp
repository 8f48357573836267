#include "viewport/scene/needed_values.h"

#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/ParticleSelection.h"
#include "viewport/scene/Quantity.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vellum::viewport {

namespace {

/// Collects what is asked for of one frame.
class Needs {
public:
    explicit Needs(ParticleFrame const& frame) : frame(frame) {
        needed.channels.assign(frame.channels.size(), false);
        needed.lengths.assign(frame.vectors.size(), false);
    }

    void add(ParticleOptions const& options) {
        if (frame.colors) {
            _addColumns(*frame.colors);
        }
        if (frame.sizes) {
            needed.channels[frame.sizes->column] = true;
        }
        if (!frame.typeNames.empty()) {
            _addName(ParticleKinds::TYPE);
        }
        if (options.mode && isOfArrows(*options.mode)) {
            ParticleVector const* const asked = frame.vector(options.channel);
            ParticleVector const* const arrows = asked != nullptr ? asked : frame.velocity();
            if (arrows != nullptr) {
                _addColumns(*arrows);
            }
        }
        if (options.channel.empty()) {
            std::vector<std::string> const suitable = Quantity::suitableNames(frame);
            _addName(suitable.empty() ? ParticleKinds::TYPE : suitable.front());
        } else {
            _addName(options.channel);
        }
        if (!options.selection.empty()) {
            Result<ParticleSelection> const selection = ParticleSelection::parse(options.selection);
            for (std::string const& name :
                 selection.isOk() ? selection.value().names() : std::vector<std::string>()) {
                _addName(name);
            }
        }
    }

    NeededValues const& found() const { return needed; }

private:
    template <class Columns>
    void _addColumns(Columns const& of) {
        for (std::size_t const column : of.columns) {
            needed.channels[column] = true;
        }
    }

    /// What Quantity::find() and ParticleKinds::find() take for that name.
    void _addName(std::string const& name) {
        bool isChannel = false;
        for (std::size_t i = 0; i < frame.channels.size(); ++i) {
            if (frame.channels[i].name == name) {
                needed.channels[i] = true;
                isChannel = true;
            }
        }
        if (isChannel) {
            return;
        }
        for (std::size_t i = 0; i < frame.vectors.size(); ++i) {
            bool const isVelocity = frame.vectors[i].name == ParticleVector::VELOCITY;
            if (frame.vectors[i].name == name || (isVelocity && name == Quantity::SPEED_NAME)) {
                needed.lengths[i] = true;
            } else if (isVelocity && (name == "vx" || name == "vy" || name == "vz")) {
                _addColumns(frame.vectors[i]);
            }
        }
    }

    ParticleFrame const& frame;
    NeededValues needed;
};

}  // namespace

ChooseValues neededValues(ParticleOptions const& options) {
    return [options](ParticleFrame const& names) {
        Needs needs(names);
        needs.add(options);
        return needs.found();
    };
}

}  // namespace vellum::viewport
