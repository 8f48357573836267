#include "viewport/scene/ParticleLook.h"

#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/Quantity.h"
#include "viewport/scene/joined_ranges.h"
#include "viewport/scene/scalar_colors.h"
#include "viewport/text/joined.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <unordered_map>
#include <utility>

namespace vellum::viewport {

namespace {

using Frames = std::vector<ParticleFrame>;

std::string listed(std::vector<std::string> const& names) {
    return names.empty() ? "none" : joined(names);
}

std::string countOf(std::size_t some, std::size_t all) {
    return std::to_string(some) + " of " + std::to_string(all);
}

template <class Predicate>
bool haveAll(Frames const& frames, Predicate const& has) {
    return std::all_of(frames.begin(), frames.end(), has);
}

// == Values ==

struct Ends {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
    bool isExceeded = false;  // there is an infinity
    bool isWhole = true;
    std::size_t undefinedCount = 0;

    bool isEmpty() const { return !(least <= most); }
};

/// Infinite values have no part in a range: it would have no colors left for the others.
void include(Ends& ends, double value, ValueScale const& scale) {
    // No larger number has a fraction.
    constexpr double LARGEST_FRACTION = 4503599627370496;
    if (!scale.isDefined(value)) {
        ++ends.undefinedCount;
    } else if (std::isinf(value)) {
        ends.isExceeded = ends.isExceeded || value > 0;
    } else {
        ends.least = std::min(ends.least, value);
        ends.most = std::max(ends.most, value);
        ends.isWhole = ends.isWhole && (std::abs(value) >= LARGEST_FRACTION ||
                                        value == static_cast<double>(static_cast<long long>(value)));
    }
}

void join(Ends& ends, Ends const& next) {
    ends.least = std::min(ends.least, next.least);
    ends.most = std::max(ends.most, next.most);
    ends.isExceeded = ends.isExceeded || next.isExceeded;
    ends.isWhole = ends.isWhole && next.isWhole;
    ends.undefinedCount += next.undefinedCount;
}

/// The names of what the colors of a mesh can show.
std::string scalarNames(MeshData const& mesh) {
    std::vector<std::string> names;
    for (MeshScalar const& scalar : mesh.scalars) {
        names.push_back(scalar.name);
    }
    return listed(names);
}

/// Makes the look of one set of frames, step by step.
class LookMaker {
public:
    LookMaker(Frames const& frames, ParticleOptions const& options, std::vector<MeshData> const& meshes,
              std::vector<std::string> const& covers)
        : frames(frames), meshes(meshes), covers(covers), options(options) {}

    Result<ParticleLook> make() {
        look.size = options.size;
        look.drawnPart = static_cast<double>(options.percent) / 100;
        look.isWrapped = options.isWrapped;
        look.copies = options.copies;
        look.colors = ValueColors(options.colors, options.colorMap);
        _findScalars();
        if (frames.empty()) {
            std::optional<Fault> const fault = _chooseMeshColors();
            return fault ? Result<ParticleLook>(*fault) : Result<ParticleLook>(look);
        }
        for (auto const step :
             {&LookMaker::_chooseArrows, &LookMaker::_checkBoxes, &LookMaker::_chooseParticles,
              &LookMaker::_chooseMode, &LookMaker::_chooseColors}) {
            if (std::optional<Fault> const fault = (this->*step)()) {
                return *fault;
            }
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            for (std::string const& note : frames[i].notes) {
                _note(frames[i], note);
            }
            _noteSizes(frames[i], look.choices[i]);
            _notePrecision(frames[i], look.choices[i]);
        }
        return look;
    }

private:
    void _note(ParticleFrame const& frame, std::string const& message) {
        look.notes.push_back({frame.file, message});
    }

    // == Particles ==

    std::optional<Fault> _chooseArrows() {
        if (!options.mode || !isOfArrows(*options.mode)) {
            return std::nullopt;
        }
        look.arrows = ParticleVector::VELOCITY;
        bool const isVector = !options.channel.empty() && haveAll(frames, [this](ParticleFrame const& frame) {
            return frame.vector(options.channel) != nullptr;
        });
        if (isVector) {
            look.arrows = options.channel;
        }
        for (ParticleFrame const& frame : frames) {
            if (frame.vector(look.arrows) == nullptr) {
                std::vector<std::string> vectors;
                for (ParticleVector const& vector : frame.vectors) {
                    vectors.push_back(vector.name);
                }
                std::string const others = vectors.empty() ? "" : " (its vectors: " + joined(vectors) + ")";
                return Fault{frame.file, "has no velocities to be shown as arrows" + others};
            }
        }
        bool const isSpeed =
            options.channel == Quantity::SPEED_NAME && look.arrows == ParticleVector::VELOCITY;
        look.areArrowsMeasured = isVector || isSpeed || options.channel.empty();
        return std::nullopt;
    }

    std::optional<Fault> _checkBoxes() {
        bool const areCopied = options.copies.e0 > 1 || options.copies.e1 > 1 || options.copies.e2 > 1;
        for (ParticleFrame const& frame : frames) {
            if (options.isWrapped && !ParticlePlaces::canWrap(frame)) {
                return Fault{frame.file, "has no box that its particles could be moved into"};
            }
            if (areCopied && !(frame.box && isFinite(*frame.box))) {
                return Fault{frame.file, "has no box that could be repeated"};
            }
        }
        return std::nullopt;
    }

    std::optional<Fault> _chooseParticles() {
        std::optional<ParticleSelection> selection;
        if (!options.selection.empty()) {
            Result<ParticleSelection> parsed = ParticleSelection::parse(options.selection);
            if (!parsed.isOk()) {
                return parsed.fault();
            }
            selection = parsed.value();
        }
        places.reserve(frames.size());
        for (ParticleFrame const& frame : frames) {
            places.emplace_back(frame, options.isWrapped);
            ParticleVector const* const arrow = look.arrows.empty() ? nullptr : frame.vector(look.arrows);
            Result<ParticleChoice> choice =
                choose(frame, places.back(), arrow, selection ? &*selection : nullptr, options.clip);
            if (!choice.isOk()) {
                return choice.fault();
            }
            _noteLoss(frame, choice.value());
            look.choices.push_back(std::move(choice.value()));
        }
        return std::nullopt;
    }

    void _noteLoss(ParticleFrame const& frame, ParticleChoice const& choice) {
        std::size_t const all = frame.positions.size();
        if (choice.unplacedCount > 0) {
            std::string const arrows = look.arrows == ParticleVector::VELOCITY ? " or velocities"
                                       : look.arrows.empty()                   ? ""
                                                                               : " or '" + look.arrows + "'";
            _note(frame, countOf(choice.unplacedCount, all) + " particles are left out: their positions" +
                             arrows + " are not finite");
        }
        if (choice.count == 0 && choice.unplacedCount < all) {
            _note(frame, "none of its " + std::to_string(all) + " particles is selected");
        }
    }

    std::optional<Fault> _chooseMode() {
        // In floating point, which does not overflow.
        double const copies = static_cast<double>(options.copies.e0) *
                              static_cast<double>(options.copies.e1) * options.copies.e2;
        double count = 0;
        for (ParticleChoice const& choice : look.choices) {
            count += static_cast<double>(choice.count) * copies;
        }
        if (count > static_cast<double>(MOST_PARTICLES)) {
            return Fault{frames.front().file,
                         "the copies of its box hold more particles than can be drawn (" +
                             std::to_string(MOST_PARTICLES) + ")"};
        }
        if (copies > static_cast<double>(MOST_COPIES)) {
            return Fault{frames.front().file, "there are more copies of its box than can be drawn (" +
                                                  std::to_string(MOST_COPIES) + ")"};
        }
        bool const areMany = count > static_cast<double>(MOST_SPHERES);
        look.mode = options.mode.value_or(areMany ? ParticleMode::POINTS : ParticleMode::SPHERES);
        return std::nullopt;
    }

    // == Colors ==

    std::optional<Fault> _chooseColors() {
        bool const isOfMeshes =
            (!scalars.empty() || look.areMeshValuesHidden) && !_hasAnyFrame(options.channel);
        std::optional<Fault> fault = look.areArrowsMeasured                  ? _showArrows()
                                     : options.channel.empty() || isOfMeshes ? _showWhatSuits()
                                                                             : _showChannel();
        if (!fault && isOfMeshes && look.scale && !look.areArrowsMeasured) {
            // One bar explains one quantity.
            look.scale = std::nullopt;
            look.coloring = ParticleColoring::NOTHING;
            _note(frames.front(),
                  "has no channel '" + options.channel + "', which the meshes have: it is not colored");
        }
        if (!fault && !scalars.empty()) {
            fault = _showScalars();
        }
        if (!fault && !look.arrows.empty()) {
            bool const isReach = look.areArrowsMeasured && !look.scale->isLogarithmic;
            look.arrowUnit = isReach ? look.scale->reach : _longestArrow();
        }
        return fault;
    }

    std::optional<Fault> _showArrows() {
        std::vector<std::optional<Quantity>> quantities;
        for (ParticleFrame const& frame : frames) {
            quantities.emplace_back(Quantity::lengthOf(frame, *frame.vector(look.arrows)));
        }
        bool const areVelocities = look.arrows == ParticleVector::VELOCITY;
        return _showValues(areVelocities ? Quantity::SPEED_NAME : look.arrows, quantities);
    }

    std::optional<Fault> _showChannel() {
        std::string const& name = options.channel;
        bool const areValues = (_wantsValues() || !scalars.empty()) && _haveQuantity(name);
        if (!areValues && _tryKinds(false, name)) {
            return std::nullopt;
        }
        return areValues || _haveQuantity(name) ? _showQuantity(name) : _showWhereItIs();
    }

    /// Of frames that do not all have the channel, shows those that do.
    std::optional<Fault> _showWhereItIs() {
        std::string const& name = options.channel;
        std::size_t quantities = 0;
        std::size_t kinds = 0;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            quantities += Quantity::find(frames[i], places[i], name) ? 1 : 0;
            kinds += ParticleKinds::find(frames[i], name) ? 1 : 0;
        }
        if (quantities + kinds == 0) {
            return Fault{frames.front().file, _lackOf(frames.front()) + _scalarsOfMeshes()};
        }
        bool const areValues = _wantsValues() || !scalars.empty();
        if (quantities == 0 || (kinds >= quantities && !areValues)) {
            look.areElements = false;
            kindName = name;
            _showKinds();
        } else if (std::optional<Fault> fault = _showQuantity(name)) {
            return fault;
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            bool const isColored = look.scale ? Quantity::find(frames[i], places[i], name).has_value()
                                              : ParticleKinds::find(frames[i], name).has_value();
            if (!isColored) {
                _note(frames[i], _lackOf(frames[i]) + ": its particles are gray");
            }
        }
        return std::nullopt;
    }

    std::string _lackOf(ParticleFrame const& frame) const {
        return "has no channel '" + options.channel + "' (it has: " + listed(Quantity::names(frame)) + ")";
    }

    /// Whether something is asked for that only values have.
    bool _wantsValues() const { return options.range || options.isLogarithmic || !options.colorMap.empty(); }

    bool _haveQuantity(std::string const& name) const {
        bool isCommon = true;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            isCommon = isCommon && Quantity::find(frames[i], places[i], name).has_value();
        }
        return isCommon;
    }

    /// The name of the quantity that is shown where nothing is asked for; empty: there is none.
    std::string _suitableQuantity() const {
        std::vector<std::string> const names = Quantity::suitableNames(frames.front());
        auto const found = std::find_if(names.begin(), names.end(),
                                        [this](std::string const& name) { return _haveQuantity(name); });
        return found != names.end() ? *found : std::string();
    }

    std::optional<Fault> _showWhatSuits() {
        std::string const quantity = _suitableQuantity();
        if (_wantsValues() && !quantity.empty()) {
            return _showQuantity(quantity);
        }
        if (haveAll(frames, [](ParticleFrame const& frame) { return frame.colors.has_value(); })) {
            look.coloring = ParticleColoring::OWN;
            for (std::size_t i = 0; i < frames.size(); ++i) {
                _noteColors(frames[i], look.choices[i]);
            }
            return std::nullopt;
        }
        if (_tryKinds(true, {})) {
            return std::nullopt;
        }
        if (!quantity.empty()) {
            return _showQuantity(quantity);
        }
        bool const haveTypes = _haveQuantity(ParticleKinds::TYPE);
        if (haveTypes && (_wantsValues() || !_tryKinds(false, ParticleKinds::TYPE))) {
            return _showQuantity(ParticleKinds::TYPE);
        }
        if (!haveTypes && !frames.front().labels.empty()) {
            _tryKinds(false, frames.front().labels.front().name);
        }
        return std::nullopt;
    }

    /// \param name of a quantity that some frame has
    std::optional<Fault> _showQuantity(std::string const& name) {
        std::vector<std::optional<Quantity>> quantities;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            quantities.push_back(Quantity::find(frames[i], places[i], name));
        }
        return _showValues(name, quantities);
    }

    /// \param quantities one for each frame; nothing where the frame has none
    std::optional<Fault> _showValues(std::string const& name,
                                     std::vector<std::optional<Quantity>> const& quantities) {
        ParticleScale scale;
        scale.name = name;
        scale.isLogarithmic = options.isLogarithmic;
        Ends ends;
        std::optional<std::size_t> first;  // of the frames that have it
        for (std::size_t i = 0; i < frames.size(); ++i) {
            if (!quantities[i]) {
                ends.undefinedCount += look.choices[i].count;
                continue;
            }
            Quantity const& quantity = *quantities[i];
            std::size_t const before = ends.undefinedCount;
            ParticleChoice const& choice = look.choices[i];
            join(ends,
                 joinedRanges<Ends>(
                     choice.count, Ends(),
                     [&](Ends& some, std::size_t place) { include(some, quantity[choice[place]], scale); },
                     join));
            _noteUndefined(frames[i], name, ends.undefinedCount - before, look.choices[i].count);
            if (!first) {
                first = i;
                scale.unit = quantity.unit();
            } else if (quantity.unit() != scale.unit) {
                _note(frames[i], "'" + name + "' is in " + _unitText(quantity.unit()) + ", that of " +
                                     frames[*first].file + " in " + _unitText(scale.unit) +
                                     "; both share a scale");
            }
        }
        if (name == options.channel) {
            _includeScalars(ends, scale);
        }
        return _settle(scale, ends);
    }

    /// Makes a scale with its name and unit that of the particles.
    std::optional<Fault> _settle(ValueScale scale, Ends ends) {
        if (std::optional<Fault> fault = _settleRange(scale, ends)) {
            return fault;
        }
        look.scale = scale;
        look.coloring = ParticleColoring::VALUES;
        return std::nullopt;
    }

    std::optional<Fault> _settleRange(ValueScale& scale, Ends& ends) const {
        if (options.range && options.isLogarithmic && !(options.range->low > 0)) {
            return Fault{_firstFile(), "a range of colors that show logarithms begins above 0"};
        }
        if (ends.isEmpty()) {
            if (options.isLogarithmic && !options.range) {
                return Fault{_firstFile(),
                             "has no value of '" + scale.name + "' above 0, whose logarithm could be shown"};
            }
            ends.least = ends.most = options.range ? options.range->low : 0;
        }
        scale.range = options.range.value_or(ValueRange{ends.least, ends.most});
        scale.isExceeded = ends.isExceeded || ends.most > scale.range.high;
        scale.isWhole = ends.isWhole;
        scale.undefinedCount = ends.undefinedCount;
        _shift(scale, ends);
        return std::nullopt;
    }

    // == Meshes ==

    struct ScalarOfMesh {
        MeshData const* mesh;
        MeshScalar const* scalar;
    };

    std::string const& _firstFile() const {
        return frames.empty() ? scalars.front().mesh->name : frames.front().file;
    }

    void _findScalars() {
        for (std::size_t i = 0; i < meshes.size() && !options.channel.empty(); ++i) {
            MeshScalar const* const scalar = findScalar(meshes[i], options.channel);
            if (scalar == nullptr) {
                continue;
            }
            if (!_isCovered(i)) {
                scalars.push_back({&meshes[i], scalar});
                continue;
            }
            look.areMeshValuesHidden = true;
            look.notes.push_back(
                {meshes[i].name, "its channel '" + options.channel + "' is hidden by " + covers[i]});
        }
    }

    bool _isCovered(std::size_t mesh) const { return mesh < covers.size() && !covers[mesh].empty(); }

    bool _areAllCovered() const {
        std::size_t mesh = 0;
        while (mesh < meshes.size() && _isCovered(mesh)) {
            ++mesh;
        }
        return mesh == meshes.size();
    }

    /// Whether some frame has what is asked for, as values or as kinds.
    bool _hasAnyFrame(std::string const& name) const {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            if (Quantity::find(frames[i], places[i], name) || ParticleKinds::find(frames[i], name)) {
                return true;
            }
        }
        return false;
    }

    std::string _scalarsOfMeshes() const {
        std::string text;
        for (MeshData const& mesh : meshes) {
            text += ", nor has " + mesh.name + " (it has: " + scalarNames(mesh) + ")";
        }
        return text;
    }

    /// For meshes alone.
    std::optional<Fault> _chooseMeshColors() {
        if (!scalars.empty()) {
            return _showScalars();
        }
        if (options.channel.empty() || look.areMeshValuesHidden || _areAllCovered()) {
            return std::nullopt;
        }
        std::string others;
        for (std::size_t i = 1; i < meshes.size(); ++i) {
            others += ", nor has " + meshes[i].name + " (it has: " + scalarNames(meshes[i]) + ")";
        }
        return Fault{meshes.front().name, "has no channel '" + options.channel +
                                              "' (it has: " + scalarNames(meshes.front()) + ")" + others};
    }

    void _includeScalars(Ends& ends, ValueScale& scale) {
        for (ScalarOfMesh const& one : scalars) {
            std::size_t const before = ends.undefinedCount;
            for (double const value : one.scalar->values) {
                include(ends, value, scale);
            }
            std::size_t const count = ends.undefinedCount - before;
            if (count > 0 && options.isLogarithmic) {
                look.notes.push_back({one.mesh->name, countOf(count, one.scalar->values.size()) +
                                                          " values of '" + scale.name +
                                                          "' have no logarithm"});
            }
            bool const isFirst = frames.empty() && &one == &scalars.front();
            if (isFirst) {
                scale.unit = one.scalar->unit;
            } else if (!one.scalar->unit.empty() && one.scalar->unit != scale.unit) {
                look.notes.push_back({one.mesh->name, "'" + scale.name + "' is in " + one.scalar->unit +
                                                          "; it shares the scale of the others"});
            }
        }
    }

    /// The scale of the particles where they show the same, or one of their own.
    std::optional<Fault> _showScalars() {
        if (look.scale && look.scale->name == options.channel) {
            look.meshScale = look.scale;
            return std::nullopt;
        }
        ValueScale scale;
        scale.name = options.channel;
        scale.isLogarithmic = options.isLogarithmic;
        scale.unit = scalars.front().scalar->unit;
        Ends ends;
        _includeScalars(ends, scale);
        if (std::optional<Fault> fault = _settleRange(scale, ends)) {
            return fault;
        }
        look.meshScale = scale;
        return std::nullopt;
    }

    void _shift(ParticleScale& scale, Ends const& ends) const {
        double low = std::min(ends.least, scale.range.low);
        double high = scale.range.high;
        if (scale.isLogarithmic) {
            low = std::log10(low);
            high = std::log10(high);
        }
        // The lengths of arrows cannot be shifted: renderers get the vectors themselves.
        scale.offset = look.areArrowsMeasured && !scale.isLogarithmic ? 0 : low;
        double const reach = high - scale.offset;
        scale.reach = !(reach > 0) ? 1 : std::min(reach, std::numeric_limits<double>::max());
    }

    static std::string _unitText(std::string const& unit) { return unit.empty() ? "no unit" : unit; }

    /// The largest finite length, or 1.
    double _longestArrow() const {
        double longest = 0;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            Quantity const lengths = Quantity::lengthOf(frames[i], *frames[i].vector(look.arrows));
            for (std::size_t place = 0; place < look.choices[i].count; ++place) {
                double const one = lengths[look.choices[i][place]];
                longest = std::isfinite(one) ? std::max(longest, one) : longest;
            }
        }
        return longest > 0 ? longest : 1;
    }

    void _noteUndefined(ParticleFrame const& frame, std::string const& name, std::size_t count,
                        std::size_t all) {
        if (count > 0 && options.isLogarithmic) {
            _note(frame, countOf(count, all) + " values of '" + name + "' have no logarithm");
        }
    }

    void _noteColors(ParticleFrame const& frame, ParticleChoice const& choice) {
        std::size_t lacking = 0;
        std::size_t outside = 0;
        for (std::size_t i = 0; i < choice.count; ++i) {
            bool isKnown = true;
            bool isInside = true;
            for (std::size_t const column : frame.colors->columns) {
                double const part = frame.channels[column].values[choice[i]];
                isKnown = isKnown && !std::isnan(part);
                isInside = isInside && part >= 0 && part <= frame.colors->full;
            }
            lacking += isKnown ? 0 : 1;
            outside += isKnown && !isInside ? 1 : 0;
        }
        if (outside > 0) {
            _note(frame, countOf(outside, choice.count) + " particles have colors outside 0 to " +
                             std::to_string(static_cast<int>(frame.colors->full)) +
                             ", which are shown as the nearest inside");
        }
        if (lacking > 0) {
            _note(frame, countOf(lacking, choice.count) + " particles have no color and are shown gray");
        }
    }

    // == Kinds ==

    std::optional<ParticleKinds> _kindsOf(ParticleFrame const& frame) const {
        return look.areElements ? ParticleKinds::elements(frame) : ParticleKinds::find(frame, kindName);
    }

    /// Shows the elements, or the kinds of that name, where all frames have them.
    bool _tryKinds(bool areElements, std::string const& name) {
        look.areElements = areElements;
        kindName = name;
        if (!haveAll(frames, [this](ParticleFrame const& frame) { return _kindsOf(frame).has_value(); })) {
            return false;
        }
        _showKinds();
        return true;
    }

    /// Those of all frames that have some.
    void _showKinds() {
        struct Total {
            ParticleKind kind;
            std::size_t count;
        };
        std::vector<Total> totals;
        std::unordered_map<std::string, std::size_t> indices;
        std::string title;
        for (std::size_t i = 0; i < frames.size(); ++i) {
            std::optional<ParticleKinds> const kinds = _kindsOf(frames[i]);
            if (!kinds) {
                continue;
            }
            title = kinds->title();
            std::vector<std::size_t> counts(kinds->kinds().size(), 0);
            for (std::size_t place = 0; place < look.choices[i].count; ++place) {
                ++counts[(*kinds)[look.choices[i][place]]];
            }
            for (std::size_t kind = 0; kind < counts.size(); ++kind) {
                ParticleKind const& one = kinds->kinds()[kind];
                auto const [known, isNew] = indices.emplace(one.name, totals.size());
                if (isNew) {
                    totals.push_back({one, 0});
                }
                totals[known->second].count += counts[kind];
            }
        }
        std::stable_sort(totals.begin(), totals.end(),
                         [](Total const& a, Total const& b) { return _rank(a.kind) < _rank(b.kind); });
        bool const areElements = std::any_of(
            totals.begin(), totals.end(), [](Total const& total) { return total.kind.element != nullptr; });
        look.legend = ParticleLegend{title, {}};
        std::size_t next = 0;
        for (Total const& total : totals) {
            bool const isNothing = total.kind.number && std::isnan(*total.kind.number);
            // A color belongs to a kind, whichever of them are selected.
            Color4<float> const color = total.kind.element != nullptr ? total.kind.element->color()
                                        : isNothing || areElements    ? look.colors.undefined()
                                                                      : kindColor(next++);
            if (total.count > 0) {
                look.legend->entries.push_back({total.kind.name, color, total.count});
            }
        }
        look.coloring = ParticleColoring::KINDS;
    }

    /// Elements in the order of the periodic system, types by number, what has neither last.
    static double _rank(ParticleKind const& kind) {
        if (kind.element != nullptr) {
            return atomicNumber(*kind.element);
        }
        bool const hasNumber = kind.number && !std::isnan(*kind.number);
        return hasNumber ? *kind.number : std::numeric_limits<double>::infinity();
    }

    // == Sizes and places ==

    void _noteSizes(ParticleFrame const& frame, ParticleChoice const& choice) {
        if (look.mode != ParticleMode::SPHERES || look.size) {
            return;
        }
        if (frame.sizes) {
            ValueList<double> const& sizes = frame.channels[frame.sizes->column].values;
            std::size_t invalid = 0;
            for (std::size_t i = 0; i < choice.count; ++i) {
                double const size = sizes[choice[i]];
                invalid += size > 0 && std::isfinite(size) ? 0 : 1;
            }
            if (invalid > 0) {
                _note(frame, countOf(invalid, choice.count) + " values of '" +
                                 frame.channels[frame.sizes->column].name +
                                 "' are no sizes above 0: these particles have the usual size");
            }
        } else if (std::optional<ParticleKinds> const elements = ParticleKinds::elements(frame)) {
            double largest = 0;
            for (ParticleKind const& kind : elements->kinds()) {
                largest = std::max(largest, kind.element != nullptr ? kind.element->covalentRadius : 0);
            }
            if (largest > 0 && !unitsPerAngstrom(largest, choice).second) {
                _note(frame,
                      "its lengths do not seem to be in angstrom: spheres have the sizes of their elements "
                      "relative to each other only");
            }
        }
    }

    void _notePrecision(ParticleFrame const& frame, ParticleChoice const& choice) {
        double largest = 0;
        for (Vector3<double> const& corner : {choice.box.min, choice.box.max}) {
            largest = std::max({largest, std::abs(corner.x), std::abs(corner.y), std::abs(corner.z)});
        }
        double const step = std::nextafter(largest, std::numeric_limits<double>::infinity()) - largest;
        if (choice.count > 1 && choice.spacing < 4 * step) {
            _note(frame, "its coordinates are so large that the particles' distances are rounded");
        }
    }

    Frames const& frames;
    std::vector<MeshData> const& meshes;
    std::vector<std::string> const& covers;
    std::vector<ScalarOfMesh> scalars;  // of the uncovered meshes that have what is asked for
    ParticleOptions const& options;
    std::vector<ParticlePlaces> places;  // of each frame
    std::string kindName;                // of the kinds that are tried
    ParticleLook look;
};

}  // namespace

std::pair<double, bool> unitsPerAngstrom(double largestRadius, ParticleChoice const& choice) {
    constexpr double MOST_SPACINGS = 2;
    constexpr double FEWEST_SPACINGS = 0.01;
    double const spacing = choice.spacing;
    bool const fits = choice.count < 2 || (largestRadius <= MOST_SPACINGS * spacing &&
                                           largestRadius >= FEWEST_SPACINGS * spacing);
    return {fits ? 1 : SPHERE_DIAMETER * spacing / (2 * largestRadius), fits};
}

std::optional<Quantity> ParticleLook::quantity(ParticleFrame const& frame,
                                               ParticlePlaces const& places) const {
    return areArrowsMeasured ? Quantity::lengthOf(frame, *frame.vector(arrows))
                             : Quantity::find(frame, places, scale->name);
}

void ParticleLook::dropUnused(ParticleFrame& frame) const {
    std::vector<char> isUsed(frame.channels.size(), 0);
    auto const useChannel = [&](std::string const& name) {
        for (std::size_t i = 0; i < frame.channels.size(); ++i) {
            isUsed[i] |= frame.channels[i].name == name ? 1 : 0;
        }
    };
    auto const useColumns = [&](auto const& columns) {
        for (std::size_t const column : columns) {
            isUsed[column] = 1;
        }
    };
    if (coloring == ParticleColoring::KINDS || !frame.typeNames.empty()) {
        useChannel(ParticleKinds::TYPE);
    }
    if (scale) {
        useChannel(scale->name);
    }
    bool const isOfVelocity = scale && (scale->name == Quantity::SPEED_NAME || scale->name == "vx" ||
                                        scale->name == "vy" || scale->name == "vz");
    for (ParticleVector& vector : frame.vectors) {
        bool const isShown = scale && (scale->name == vector.name ||
                                       (isOfVelocity && vector.name == ParticleVector::VELOCITY));
        if (isShown || vector.name == arrows) {
            useColumns(vector.columns);
        } else {
            ValueList<double>().swap(vector.lengths);
        }
    }
    if (coloring == ParticleColoring::OWN && frame.colors) {
        useColumns(frame.colors->columns);
    }
    if (frame.sizes) {
        isUsed[frame.sizes->column] = 1;
    }
    for (std::size_t i = 0; i < isUsed.size(); ++i) {
        if (isUsed[i] == 0) {
            ValueList<double>().swap(frame.channels[i].values);
        }
    }
}

std::optional<ParticleKinds> ParticleLook::kinds(ParticleFrame const& frame) const {
    // A column of words may have the name of the elements.
    return areElements ? ParticleKinds::elements(frame) : ParticleKinds::find(frame, legend->title);
}

Result<ParticleLook> lookOf(std::vector<ParticleFrame> const& frames, ParticleOptions const& options,
                            std::vector<MeshData> const& meshes, std::vector<std::string> const& covers) {
    if (frames.empty() && meshes.empty()) {
        return ParticleLook{};
    }
    return LookMaker(frames, options, meshes, covers).make();
}

}  // namespace vellum::viewport
