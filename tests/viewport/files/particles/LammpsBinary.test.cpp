#include "viewport/files/particles/LammpsBinary.h"

#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>

using namespace vellum;
using namespace vellum::viewport;
using particle_texts::nobody;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Point = Vector3<double>;

/// Writes dumps as LAMMPS does.
class Writer {
public:
    explicit Writer(bool isBig = false) : isBig(isBig) {}

    template <class T>
    Writer& add(T value) {
        std::string raw;
        mesh_texts::append(raw, value);
        if (isBig) {
            std::reverse(raw.begin(), raw.end());
        }
        bytes += raw;
        return *this;
    }

    Writer& text(std::string const& text) {
        bytes += text;
        return *this;
    }

    Writer& named(std::string const& text) { return add(static_cast<std::int32_t>(text.size())).text(text); }

    Writer& numbers(std::initializer_list<double> values) {
        for (double const value : values) {
            add(value);
        }
        return *this;
    }

    Writer& magic(std::string const& word, std::int32_t revision = 2) {
        return add(-static_cast<std::int64_t>(word.size())).text(word).add<std::int32_t>(1).add(revision);
    }

    /// Time step, count, an upright box from 0 to (10, 20, 30) that is not periodic along y, and columns.
    Writer& sizes(std::int64_t step, std::int64_t count, std::int32_t fields) {
        add(step).add(count).add<std::int32_t>(0);
        for (std::int32_t const face : {0, 0, 1, 1, 0, 0}) {
            add(face);
        }
        return numbers({0, 10, 0, 20, 0, 30}).add(fields);
    }

    Writer& block(std::initializer_list<double> values) {
        return add(static_cast<std::int32_t>(values.size())).numbers(values);
    }

    std::string bytes;

private:
    bool isBig;
};

std::string newer(bool isBig = false) {
    Writer writer(isBig);
    writer.magic("DUMPCUSTOM").sizes(100, 3, 5).named("metal").add<std::int8_t>(1).add(0.5);
    writer.named("id x y z vx").add<std::int32_t>(2);
    writer.block({3, 7, 8, 9, 0.3}).block({1, 1, 2, 3, 0.1, 2, 4, 5, 6, 0.2});
    writer.magic("DUMPCUSTOM").sizes(200, 1, 4).named("").add<std::int8_t>(0).named("id xs ys zs");
    writer.add<std::int32_t>(1).block({1, 0.5, 0.5, 2});
    return writer.bytes;
}

std::string older(bool isBig = false) {
    return Writer(isBig)
        .sizes(7, 2, 5)
        .add<std::int32_t>(1)
        .block({2, 1, 0.5, 0.5, 0.5, 1, 2, 0, 1, 0.25})
        .bytes;
}

std::string faultIn(std::string const& bytes) {
    return faultOf(readLammpsBinary(bytes, std::nullopt, nobody));
}

}  // namespace

TEST(LammpsBinary, bothByteOrdersGiveTheSame) {
    for (bool const isBig : {false, true}) {
        std::string const bytes = newer(isBig);
        EXPECT_TRUE(isLammpsBinary(bytes));
        std::vector<ParticleFrame> const frames = framesOf(readLammpsBinary, bytes);
        ASSERT_EQ(frames.size(), 2U);
        EXPECT_EQ(frames[0].timestep, 100);
        EXPECT_EQ(frames[0].time, 0.5);
        EXPECT_THAT(frames[0].positions, ElementsAre(Point{1, 2, 3}, Point{4, 5, 6}, Point{7, 8, 9}));
        EXPECT_THAT(frames[0].channel("vx")->values, ElementsAre(0.1, 0.2, 0.3));
        EXPECT_EQ(frames[0].channel("vx")->unit, "Å/ps");
        ASSERT_TRUE(frames[0].box);
        EXPECT_TRUE((frames[0].box->edges[2] == Point{0, 0, 30}));
        EXPECT_EQ(frames[0].box->isPeriodic, (std::array<bool, 3>{true, false, true}));
        EXPECT_EQ(frames[1].timestep, 200);
        EXPECT_THAT(frames[1].positions, ElementsAre(Point{5, 10, 60}));
        EXPECT_THAT(readLammpsBinary(bytes, std::nullopt, nobody).value().timesteps, ElementsAre(100, 200));
        LoadFrame const load = openLammpsBinary(bytes);
        for (std::size_t const number : {1U, 0U, 1U}) {
            Result<LoadedFrame> const again = load(number, nobody);
            ASSERT_EQ(faultOf(again), "");
            EXPECT_EQ(again.value().frame.timestep, frames[number].timestep);
            EXPECT_TRUE(again.value().frame.positions == frames[number].positions);
            EXPECT_EQ(again.value().frame.channels.size(), frames[number].channels.size());
            EXPECT_THAT(again.value().timesteps, ElementsAre(100, 200));
        }
    }
}

TEST(LammpsBinary, boxesMayBeTiltedOrOfGeneralShape) {
    Writer tilted;
    tilted.magic("DUMPATOM").add<std::int64_t>(0).add<std::int64_t>(1).add<std::int32_t>(1);
    tilted.numbers({0, 0, 0}).numbers({-1, 12, 0, 23, 0, 8, 2, -1, 3}).add<std::int32_t>(3);
    tilted.named("").add<std::int8_t>(0).named("xs ys zs").add<std::int32_t>(1).block({0, 0, 1});
    ParticleFrame const frame = framesOf(readLammpsBinary, tilted.bytes).at(0);
    EXPECT_TRUE((frame.box->edges[1] == Point{2, 20, 0}));
    EXPECT_THAT(frame.positions, ElementsAre(Point{-1, 3, 8}));

    Writer general;
    general.magic("DUMPATOM").add<std::int64_t>(0).add<std::int64_t>(1).add<std::int32_t>(2);
    general.numbers({0, 0, 0}).numbers({1, 2, 3, 4, 5, 6, 7, 8, 9, 100, 200, 300}).add<std::int32_t>(3);
    general.named("").add<std::int8_t>(0).named("xs ys zs").add<std::int32_t>(1).block({1, 0, 2});
    EXPECT_THAT(framesOf(readLammpsBinary, general.bytes).at(0).positions, ElementsAre(Point{115, 218, 321}));
}

TEST(LammpsBinary, olderDumpsOfAtomsAreReadWithAWarning) {
    for (bool const isBig : {false, true}) {
        std::string const bytes = older(isBig);
        EXPECT_TRUE(isLammpsBinary(bytes));
        Result<LoadedFrame> const result = readLammpsBinary(bytes, std::nullopt, nobody);
        ASSERT_EQ(faultOf(result), "");
        EXPECT_EQ(result.value().frame.timestep, 7);
        EXPECT_THAT(result.value().frame.positions, ElementsAre(Point{0, 20, 7.5}, Point{5, 10, 15}));
        EXPECT_EQ(result.value().warning, "the dump names no columns, which are taken for id type xs ys zs");
    }
    std::string const others = Writer().sizes(7, 1, 5).add<std::int32_t>(1).block({2, 1, 50, 0.5, 0.5}).bytes;
    EXPECT_THAT(faultIn(others), HasSubstr("names no columns; LAMMPS's binary2txt"));
}

TEST(LammpsBinary, damageIsAFault) {
    auto const headed = [](std::int64_t count, std::string const& names) {
        return Writer()
            .magic("DUMPATOM")
            .sizes(0, count, 3)
            .named("")
            .add<std::int8_t>(0)
            .named(names)
            .add<std::int32_t>(1);
    };
    EXPECT_THAT(faultIn(headed(2, "x y z").block({1, 2, 3}).bytes),
                HasSubstr("fewer atoms than it declares"));
    EXPECT_THAT(faultIn(headed(1, "x y z").block({1, 2, 3, 4, 5, 6}).bytes), HasSubstr("more atoms than"));
    EXPECT_THAT(faultIn(headed(1, "x y z").block({1, 2}).bytes), HasSubstr("a block of rows has a size"));
    EXPECT_THAT(faultIn(headed(1, "x y").block({1, 2, 3}).bytes), HasSubstr("no columns give positions"));
    EXPECT_THAT(faultIn(headed(1, "x y z q").block({1, 2, 3}).bytes), HasSubstr("names 4 columns and has 3"));
    EXPECT_THAT(faultIn(headed(std::int64_t(1) << 62, "x y z").add<std::int32_t>(2147483646).bytes),
                HasSubstr("cut off in frame 0"));
    EXPECT_FALSE(isLammpsBinary(std::string(1000, '\0')));
    EXPECT_FALSE(isLammpsBinary(mesh_texts::noise(1000)));
    EXPECT_FALSE(isLammpsBinary(particle_texts::dump));
}

TEST(LammpsBinary, ofADumpCutOffTheCompleteFramesAreGiven) {
    std::string const whole = newer();
    std::size_t const second = whole.rfind("DUMPCUSTOM") - 8;
    for (std::size_t size = 1; size < whole.size(); ++size) {
        std::vector<char> const bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        Result<LoadedFrame> const result =
            readLammpsBinary({bytes.data(), bytes.size()}, std::nullopt, nobody);
        if (size < second) {
            EXPECT_FALSE(result.isOk()) << size;
            continue;
        }
        ASSERT_EQ(faultOf(result), "") << size;
        EXPECT_EQ(result.value().count, 1U);
        EXPECT_EQ(result.value().warning,
                  size == second ? "" : "the file is cut off in frame 1, which is left out");
    }
}

TEST(LammpsBinary, everySingleByteMayBeWrong) {
    for (std::string const& whole : {newer(), older()}) {
        for (std::size_t place = 0; place < whole.size(); ++place) {
            for (int const wrong : {0, 1, 127, 255}) {
                std::string damaged = whole;
                damaged[place] = static_cast<char>(wrong);
                Result<LoadedFrame> const result = readLammpsBinary(damaged, std::nullopt, nobody);
                EXPECT_TRUE(result.isOk() ? result.value().count > 0 : !result.fault().message.empty());
            }
        }
    }
}

TEST(LammpsBinary, withoutAnyByteThereIsNoFrame) {
    EXPECT_EQ(faultIn({}), "holds no frame");
}
