#pragma once

#include "viewport/drawing/effects/EffectSpec.h"
#include "viewport/text/Fault.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellum::viewport {

/// Where a parameter is kept in the values of its effect, by type. The type decides what a text for it looks
/// like:
///
///     double             one number                        Vector3<float>   three numbers, or one for all
///     unsigned int       one whole number                  Color4<float>    red, green, blue and perhaps opacity
///     bool               yes or no                         std::string      the path of a file
///     Vector2<T>         two numbers, or one for both
///
/// Each function expects values of the parameter's own effect.
using EffectField =
    std::variant<std::function<double&(EffectValues&)>, std::function<unsigned int&(EffectValues&)>,
                 std::function<bool&(EffectValues&)>, std::function<Vector2<float>&(EffectValues&)>,
                 std::function<Vector2<double>&(EffectValues&)>,
                 std::function<Vector3<float>&(EffectValues&)>, std::function<Color4<float>&(EffectValues&)>,
                 std::function<std::string&(EffectValues&)>>;

/// One parameter of an effect: its name, its place in the effect's values, its range and its meaning. The one
/// table of them per effect serves reading, help and dialogs.
struct EffectParameter {
    std::string name;
    EffectField field;
    std::string standard;  ///< the default of the field as a text that assign() takes; of a file, empty
    double least;          ///< of each number
    double most;
    std::string meaning;  ///< for people; may have several lines

    /// Reads a text into the values. A fault names the parameter; the values are then unchanged.
    std::optional<Fault> assign(EffectValues& values, std::string const& text) const;

    /// The value as a text that assign() reads back as the same; of a file that is not given, empty.
    std::string textOf(EffectValues const& values) const;

    /// Whether it is the path of a file.
    bool isFile() const;

    /// The kind of text that assign() takes, in short, like "R,G,B[,A]".
    std::string kindWord() const;

private:
    std::vector<double> _numbersOf(std::string const& text) const;
    std::string _form() const;
};

/// The parameters of the effect whose values these are, in the order in which they are listed.
std::vector<EffectParameter> const& parametersOf(EffectValues const& values);

/// Whether both are of one effect with the same parameters.
bool sameValues(EffectValues const& a, EffectValues const& b);

/// The effect's name as users write it, like "glass".
std::string nameOf(EffectValues const& values);

/// The effect of a name, with the defaults of its parameters; nothing where there is no such effect.
std::optional<EffectValues> effectNamed(std::string const& name);

/// The names of all effects, in alphabetical order.
std::vector<std::string> effectNames();

}  // namespace vellum::viewport
