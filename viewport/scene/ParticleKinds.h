#pragma once

#include "foundation/geometry/Color4.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/elements.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// One of the kinds that the particles of a frame are of.
struct ParticleKind {
    std::string name;
    Element const* element = nullptr;  ///< null: none is known
    std::optional<double> number;      ///< of a type; NaN: the particle has none
};

/// Sorts the particles of a frame by their elements, types or words. The frame must outlive it.
class ParticleKinds {
public:
    static constexpr char ELEMENT[] = "element";
    static constexpr char TYPE[] = "type";

    /// More types than these are no kinds but values.
    static constexpr std::size_t MOST_TYPES = 1000;

    /// By the file's elements: those of its labels, or of the names that it gives types. Nothing where there
    /// are none, or no word is the symbol of one.
    static std::optional<ParticleKinds> elements(ParticleFrame const& frame);

    /// By the name of labels, ELEMENT or TYPE: by the channel of that name, where all of its values are whole
    /// numbers.
    static std::optional<ParticleKinds> find(ParticleFrame const& frame, std::string const& name);

    /// What they are called: ELEMENT, TYPE, or the name of the labels.
    std::string const& title() const { return titleText; }

    /// Types in ascending order, others in the order of the file.
    std::vector<ParticleKind> const& kinds() const { return kindList; }

    /// The index of a particle's kind.
    std::size_t operator[](std::size_t particle) const {
        return labels != nullptr ? kindOfWord[labels->indices[particle]] : _kindOfType(types[particle]);
    }

private:
    static std::optional<ParticleKinds> _types(ParticleFrame const& frame);
    static ParticleKinds _words(ParticleLabels const& labels);

    std::size_t _kindOfType(double type) const {
        double const place = type - firstType;
        if (place >= 0 && place < static_cast<double>(kindOfType.size())) {
            return kindOfType[static_cast<std::size_t>(place)];
        }
        return _searchType(type);
    }
    std::size_t _searchType(double type) const;
    std::size_t _add(ParticleKind kind);

    std::string titleText;
    std::vector<ParticleKind> kindList;
    ParticleLabels const* labels = nullptr;  // null: by types
    std::vector<std::size_t> kindOfWord;
    double const* types = nullptr;          // of the particles
    std::vector<double> typeNumbers;        // ascending, NaN at the end
    std::vector<std::size_t> kindOfNumber;  // by the place in `typeNumbers`
    std::vector<std::size_t> kindOfType;  // by the distance from `firstType`, where types are close together
    double firstType = 0;
};

/// Colors of kinds that have none of their own: the first are chosen to be told apart easily, the others go
/// round the hues.
Color4<float> kindColor(std::size_t index);

}  // namespace vellum::viewport
