#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellum::viewport {

enum class Effect { NONE, DISPLACEMENT, OCEAN, GLASS, SSS, CUSTOM };

/// A parameter of an effect: what may be given after --effect-param.
struct EffectParameter {
    enum class Type {
        NUMBER,  ///< one number
        WHOLE,   ///< one whole number
        ANSWER,  ///< yes or no
        PAIR,    ///< two numbers, or one for both
        TRIPLE,  ///< three numbers, or one for all
        COLOR,   ///< red, green, blue and perhaps opacity
        FILE     ///< the path of a file
    };

    std::string name;
    Type type;
    std::string standard;  ///< the default, as it would be given; of a file, empty
    double least;          ///< of each number
    double most;
    std::string meaning;
};

/// The parameters of an effect, in the order in which they are listed.
std::vector<EffectParameter> const& parametersOf(Effect effect);

/// The list of an effect's parameters, for people: complete lines.
std::string describeParameters(Effect effect);

/// The values of an effect's parameters. All numbers are finite and in range.
class EffectValues {
public:
    EffectValues() = default;              ///< of no effect: there are none
    explicit EffectValues(Effect effect);  ///< the defaults

    /// Takes "NAME=VALUE". Gives what is wrong with it, or nothing.
    std::optional<std::string> assign(std::string const& assignment);

    // The values of parameters that the effect has; others are 0, no, black or empty.
    double number(std::string const& name) const;
    int whole(std::string const& name) const;
    bool isYes(std::string const& name) const;
    Vector3<float> triple(std::string const& name) const;  ///< a pair has the third component 0
    Color4<float> color(std::string const& name) const;
    std::string file(std::string const& name) const;  ///< empty: none is given

private:
    double _component(std::string const& name, std::size_t index) const;

    Effect effect = Effect::NONE;
    std::map<std::string, std::vector<double>> numberLists;
    std::map<std::string, std::string> files;
};

/// What is asked for with the options of effects.
struct EffectOptions {
    Effect effect = Effect::NONE;
    EffectValues values;
    std::size_t model = 0;    ///< the file that has the effect, counted from 1; 0: all files
    std::string environment;  ///< a picture file; empty: the program's own sky
    std::string vertexShader;
    std::string fragmentShader;
    std::string geometryShader;

    bool isOn() const { return effect != Effect::NONE; }

    /// Whether a file, counted from 0, has the effect.
    bool covers(std::size_t file) const { return isOn() && (model == 0 || model == file + 1); }
};

/// The options of effects as they stand on the command line.
struct EffectWords {
    std::string effect;
    std::vector<std::string> assignments;
    std::string model;
    std::string environment;
    std::string vertexShader;
    std::string fragmentShader;
    std::string geometryShader;

    void addTo(CLI::App& app);  ///< Lets the command line fill this, which must outlive the parsing.

    /// Whether, beside an effect, a list of its parameters is asked for.
    bool asksForHelp() const;

    /// Reads the words. Gives what is wrong with them, or nothing.
    /// \param fileCount of the files on the command line.
    std::optional<std::string> read(std::size_t fileCount, EffectOptions& options) const;

private:
    std::optional<std::string> _firstStray(Effect kind) const;
};

}  // namespace vellum::viewport
