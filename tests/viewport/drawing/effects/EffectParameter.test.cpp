#include "viewport/drawing/effects/EffectParameter.h"

#include <gmock/gmock.h>

#include <set>
#include <type_traits>

using namespace vellum;
using namespace vellum::viewport;

namespace {

std::vector<double> list(double value) {
    return {value};
}

template <class T>
std::vector<double> list(Vector2<T> const& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.y)};
}

std::vector<double> list(Vector3<float> const& v) {
    return {v.x, v.y, v.z};
}

std::vector<double> list(Color4<float> const& c) {
    return {c.r, c.g, c.b, c.a};
}

std::vector<double> list(std::string const& text) {
    return {text.begin(), text.end()};
}

/// The value of a parameter as numbers, a path as its letters.
std::vector<double> valueOf(EffectParameter const& parameter, EffectValues values) {
    return std::visit([&values](auto const& place) { return list(place(values)); }, parameter.field);
}

EffectParameter const& parameterNamed(std::string const& name, EffectValues const& values) {
    std::vector<EffectParameter> const& all = parametersOf(values);
    auto const found =
        std::find_if(all.begin(), all.end(), [&name](EffectParameter const& p) { return p.name == name; });
    EXPECT_NE(found, all.end()) << name;
    return found != all.end() ? *found : all.front();
}

}  // namespace

TEST(EffectParameter, everyListedDefaultIsThatOfTheField) {
    for (std::string const& effect : effectNames()) {
        EffectValues const standard = *effectNamed(effect);
        EXPECT_FALSE(parametersOf(standard).empty());
        for (EffectParameter const& parameter : parametersOf(standard)) {
            SCOPED_TRACE(effect + " " + parameter.name);
            EXPECT_FALSE(parameter.meaning.empty());
            if (parameter.kindWord() == "FILE") {
                EXPECT_EQ(parameter.standard, "");
                EXPECT_EQ(valueOf(parameter, standard), std::vector<double>());
                continue;
            }
            EffectValues values = standard;
            EXPECT_FALSE(parameter.assign(values, parameter.standard).has_value());
            EXPECT_EQ(valueOf(parameter, values), valueOf(parameter, standard));
        }
    }
}

TEST(EffectParameter, everyParameterHasANameAndAPlaceOfItsOwn) {
    for (std::string const& effect : effectNames()) {
        EffectValues values = *effectNamed(effect);
        std::set<std::string> names;
        std::set<void const*> places;
        for (EffectParameter const& parameter : parametersOf(values)) {
            EXPECT_TRUE(names.insert(parameter.name).second) << parameter.name;
            std::visit([&](auto const& place) { EXPECT_TRUE(places.insert(&place(values)).second); },
                       parameter.field);
        }
    }
}

TEST(EffectParameter, valuesOfEachTypeAreRead) {
    struct Row {
        char const* effect;
        char const* name;
        char const* text;
        std::vector<double> value;
    };
    for (Row const& row :
         {Row{"glass", "depth", "-2.5", {-2.5}}, Row{"glass", "lights", "2", {2}},
          Row{"custom", "grab", "yes", {1}}, Row{"displacement", "tile", "3", {3, 3}},
          Row{"displacement", "tile", "3,4", {3, 4}}, Row{"ocean", "sun", "5,6", {5, 6}},
          Row{"glass", "light", "1", {1, 1, 1}}, Row{"glass", "light", "1,2,3", {1, 2, 3}},
          Row{"glass", "color", "0,1,0", {0, 1, 0, 1}}, Row{"glass", "color", "0,1,0,0.5", {0, 1, 0, 0.5}},
          Row{"displacement", "map", "ab", {'a', 'b'}}}) {
        SCOPED_TRACE(row.name);
        EffectValues values = *effectNamed(row.effect);
        EffectParameter const& parameter = parameterNamed(row.name, values);
        EXPECT_FALSE(parameter.assign(values, row.text).has_value());
        EXPECT_EQ(valueOf(parameter, values), row.value);
    }
}

TEST(EffectParameter, faultyTextsLeaveTheValuesAsTheyWere) {
    EffectValues values = GlassEffect();
    for (auto const& [name, text] : {std::pair{"depth", "deep"},
                                     {"depth", "101"},
                                     {"depth", ""},
                                     {"lights", "1.5"},
                                     {"light", "1,2"},
                                     {"color", "1,2"},
                                     {"color", "2,0,0"}}) {
        EffectParameter const& parameter = parameterNamed(name, values);
        std::optional<Fault> const fault = parameter.assign(values, text);
        ASSERT_TRUE(fault.has_value()) << name << " " << text;
        EXPECT_THAT(fault->message, testing::StartsWith(name + std::string(": '") + text + "' is not "));
        EXPECT_EQ(valueOf(parameter, values), valueOf(parameter, GlassEffect()));
    }
}

TEST(EffectParameter, effectsAreKnownByTheirNames) {
    for (std::string const& name : effectNames()) {
        EXPECT_EQ(nameOf(*effectNamed(name)), name);
    }
    EXPECT_FALSE(effectNamed("fog").has_value());
    EXPECT_FALSE(effectNamed("").has_value());
}

TEST(EffectParameter, filesWithOptionsOfTheirOwnMakeOtherValues) {
    CustomEffect custom;
    custom.fragmentShader = "a.frag";
    CustomEffect other = custom;
    EXPECT_TRUE(sameValues(custom, other));
    other.fragmentShader = "b.frag";
    EXPECT_FALSE(sameValues(custom, other));
    GlassEffect glass;
    glass.environment = "sky.hdr";
    EXPECT_FALSE(sameValues(glass, GlassEffect()));
}
