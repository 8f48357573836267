#pragma once

#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticlePlaces.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// An expression that selects particles, such as
///
///     type == 2 && vx > 0
///     element == "O" || sqrt(x^2 + y^2) < 3
///     `c_pe[1]/atom` > -4.5
///
/// Names are those of Quantity::find(), and of labels and types, which can be compared with texts. Letters,
/// digits, '_', '.' and brackets make a name; others stand in backquotes. There are the usual operators, also
/// `and`, `or`, `not`, which holds for the comparison behind it, and `c ? a : b`, and the functions of
/// muParser. A particle of which it gives NaN is not selected.
class ParticleSelection {
public:
    /// A fault says where the expression is no such expression; which names there are is not known yet.
    static Result<ParticleSelection> parse(std::string const& expression);

    /// All names that it asks for.
    std::vector<std::string> names() const;

    /// Drops the particles that it does not hold for. A fault where the frame lacks a name.
    /// \param particles indices of particles
    std::optional<Fault> apply(ParticleFrame const& frame, ParticlePlaces const& places,
                               std::vector<unsigned int>& particles) const;

private:
    enum class Kind { NAME, TEXT, FUNCTION, EQUAL, UNEQUAL, OTHER };

    struct Token {
        Kind kind;
        std::string text;   // without quotes
        std::size_t place;  // in the expression, bytes from 0
    };

    struct Program;

    Fault _fault(std::string const& what, std::size_t place) const;
    std::optional<Fault> _read();
    Result<Program> _compile(ParticleFrame const* frame, ParticlePlaces const* places) const;

    std::string expression;
    std::vector<Token> tokens;
};

}  // namespace vellum::viewport
