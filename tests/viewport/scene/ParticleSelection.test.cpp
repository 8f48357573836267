#include "viewport/scene/ParticleSelection.h"

#include "tests/viewport/scene/particle_frames.h"

#include <gmock/gmock.h>

#include <limits>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Particles 0 to 3 at x = 0 to 3.
ParticleFrame frame() {
    ParticleFrame data = row(4);
    addVelocities(data, {{-1, 0, 0}, {1, 0, 0}, {0, 3, 4}, {2, 0, 0}});
    data.channels.push_back({"type", {1, 2, 1, 3}, {}});
    data.channels.push_back({"c_s[2]", {5, 6, 7, 8}, {}});
    data.channels.push_back({"heat flux/area", {0, 1, 0, 1}, {}});
    data.channels.push_back({"q", {1, std::numeric_limits<double>::quiet_NaN(), 3, 4}, {}});
    data.channels.push_back({"\xCF\x81", {1, 1, 2, 2}, {}});
    data.labels.push_back({"species", {"O", "H"}, {0, 1, 1, 0}, true});
    data.typeNames = {{1, "wall"}, {2, "fluid"}};
    return data;
}

std::vector<unsigned int> selected(std::string const& expression, ParticleFrame const& data = frame()) {
    Result<ParticleSelection> const selection = ParticleSelection::parse(expression);
    EXPECT_TRUE(selection.isOk()) << selection.fault().line();
    std::vector<unsigned int> particles{0, 1, 2, 3};
    if (selection.isOk()) {
        ParticlePlaces const places(data, false);
        std::optional<Fault> const fault = selection.value().apply(data, places, particles);
        EXPECT_FALSE(fault.has_value()) << fault->line();
    }
    return particles;
}

std::string faultOf(std::string const& expression) {
    Result<ParticleSelection> const selection = ParticleSelection::parse(expression);
    if (!selection.isOk()) {
        return selection.fault().line();
    }
    std::vector<unsigned int> particles{0, 1, 2, 3};
    ParticleFrame const data = frame();
    ParticlePlaces const places(data, false);
    std::optional<Fault> const fault = selection.value().apply(data, places, particles);
    EXPECT_TRUE(fault.has_value()) << expression;
    return fault ? fault->line() : std::string();
}

}  // namespace

TEST(ParticleSelection, conditionsOnAllQuantities) {
    EXPECT_THAT(selected("type==1"), ElementsAre(0, 2));
    EXPECT_THAT(selected("type==1 && vx>-1"), ElementsAre(2));
    EXPECT_THAT(selected("x >= 1 and x <= 2"), ElementsAre(1, 2));
    EXPECT_THAT(selected("speed > 1.5e0"), ElementsAre(2, 3));
    EXPECT_THAT(selected("sqrt(x^2+y^2) < 1.5 || type == 3"), ElementsAre(0, 1, 3));
    EXPECT_THAT(selected("not (type == 1)"), ElementsAre(1, 3));
    EXPECT_THAT(selected("!(type==1)"), ElementsAre(1, 3));
    EXPECT_THAT(selected("x % 2 == 1"), ElementsAre(1, 3));
    EXPECT_THAT(selected("abs(vx) == 1 ? x : 0"), ElementsAre(1)) << "what is not 0 is true";
    EXPECT_THAT(selected("sin(pi/2*x) > 0.5"), ElementsAre(1));
    EXPECT_THAT(selected("max(x, 2) > 2"), ElementsAre(3));
}

TEST(ParticleSelection, theWordNotHoldsForTheComparisonBehindIt) {
    EXPECT_THAT(selected("not type == 1"), ElementsAre(1, 3));
    EXPECT_THAT(selected("not type == 1 and x > 1"), ElementsAre(3));
    EXPECT_THAT(selected("x > 1 and not type == 1 or x == 0"), ElementsAre(0, 3));
    EXPECT_THAT(selected("not species == 'O'"), ElementsAre(1, 2));
    EXPECT_THAT(selected("!type == 0"), ElementsAre(0, 1, 2, 3)) << "the sign holds for the type";
}

TEST(ParticleSelection, namesMayHaveAnyCharacters) {
    EXPECT_THAT(selected("c_s[2] > 6"), ElementsAre(2, 3));
    EXPECT_THAT(selected("`c_s[2]` > 6"), ElementsAre(2, 3));
    EXPECT_THAT(selected("`heat flux/area` == 1"), ElementsAre(1, 3));
    EXPECT_THAT(selected("\xCF\x81 == 2"), ElementsAre(2, 3));
}

TEST(ParticleSelection, wordsAreComparedWithTexts) {
    EXPECT_THAT(selected("element==\"O\""), ElementsAre(0, 3));
    EXPECT_THAT(selected("species != 'O' && x > 1"), ElementsAre(2));
    EXPECT_THAT(selected("'o' == element"), ElementsAre(0, 3)) << "elements in any case";
    EXPECT_THAT(selected("type == 'wall'"), ElementsAre(0, 2));
    EXPECT_THAT(selected("type != 'wall'"), ElementsAre(1, 3));
    EXPECT_THAT(selected("element == 'Fe'"), ElementsAre());
}

TEST(ParticleSelection, whatIsNoNumberIsNotSelected) {
    EXPECT_THAT(selected("q > 0"), ElementsAre(0, 2, 3));
    EXPECT_THAT(selected("q"), ElementsAre(0, 2, 3));
    EXPECT_THAT(selected("sqrt(vx) >= 0"), ElementsAre(1, 2, 3));
}

TEST(ParticleSelection, faultsSayWhatIsWrongAndWhere) {
    EXPECT_EQ(faultOf("type = 1"),
              "the selection 'type = 1' has a single '=' (equality is '==') at character 6");
    EXPECT_THAT(faultOf("x > 1 & y > 2"), HasSubstr("single '&' (write '&&') at character 7"));
    EXPECT_THAT(faultOf("x > \"abc"), HasSubstr("a quote without its end at character 5"));
    EXPECT_THAT(faultOf("x > 1 $"), HasSubstr("unexpected '$' at character 7"));
    EXPECT_THAT(faultOf("x >"), HasSubstr("ends too early"));
    EXPECT_THAT(faultOf("(x > 1"), HasSubstr("lacks a ')'"));
    EXPECT_THAT(faultOf("x > 1)"), HasSubstr("unexpected parenthesis at character 6"));
    EXPECT_THAT(faultOf("x x"), HasSubstr("lacks an operator at character 3"));
    EXPECT_THAT(faultOf("foo(x)"), HasSubstr("unknown function or sign at character 1"));
    EXPECT_THAT(faultOf("x, y"), HasSubstr("unexpected ',' at character 2"));
    EXPECT_THAT(faultOf("'O'"), HasSubstr("a text that is not compared"));
    EXPECT_THAT(faultOf("1 == 'O'"), HasSubstr("compares a text with what is no name at character 6"));
    EXPECT_THAT(faultOf(" "), HasSubstr("is empty"));
    EXPECT_THAT(faultOf("sqrt()"), HasSubstr("too few arguments"));
}

TEST(ParticleSelection, unknownNamesGiveTheKnownOnes) {
    EXPECT_EQ(
        faultOf("x > 1 && mass > 2"),
        "folder/row.xyz: the selection 'x > 1 && mass > 2' has an unknown name 'mass' at character 10 (there "
        "are: speed, species, vx, vy, vz, type, c_s[2], heat flux/area, q, \xCF\x81, x, y, z)");
    EXPECT_THAT(faultOf("mass == 'O'"), HasSubstr("unknown name 'mass'"));
    EXPECT_THAT(faultOf("q == 'O'"), HasSubstr("compares numbers with a text at character 6"));
    EXPECT_THAT(faultOf("species > 2"), HasSubstr("takes words of 'species' for numbers"));
}

TEST(ParticleSelection, itIsAppliedInBlocks) {
    ParticleFrame data = row(100'000);
    Result<ParticleSelection> const selection = ParticleSelection::parse("x % 1000 == 7");
    std::vector<unsigned int> particles;
    for (unsigned int i = 50; i < 100'000; ++i) {
        particles.push_back(i);
    }
    ASSERT_FALSE(selection.value().apply(data, ParticlePlaces(data, false), particles).has_value());
    ASSERT_EQ(particles.size(), 99U);
    EXPECT_EQ(particles.front(), 1007U);
    EXPECT_EQ(particles.back(), 99'007U);
}

// == As an option ==

TEST(ParticleSelection, whatIsNotSelectedHasNoPartInThePicture) {
    ParticleOptions options = channel("x");
    options.selection = "type == 1";
    Shown const result = shown(frame(), options);
    ASSERT_EQ(result.count(), 2U);
    EXPECT_EQ(result.position(1).x, 2);
    EXPECT_EQ(result.look.scale->range.high, 2);
    EXPECT_TRUE(result.look.notes.empty());
    options.clip = Box3<double>{{-1, -1, -1}, {1, 1, 1}};
    EXPECT_EQ(shown(frame(), options).count(), 1U);
    options.selection.clear();
    EXPECT_EQ(shown(frame(), options).count(), 2U) << "the clip box contains its faces";
    options.clip = Box3<double>{{50, 0, 0}, {51, 1, 1}};
    Shown const none = shown(frame(), options);
    EXPECT_EQ(none.count(), 0U);
    EXPECT_EQ(none.look.notes.front().line(), "folder/row.xyz: none of its 4 particles is selected");
    options.selection = "nothing > 1";
    EXPECT_FALSE(lookOf({frame()}, options).isOk());
}
