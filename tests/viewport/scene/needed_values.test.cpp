#include "viewport/scene/needed_values.h"

#include "tests/viewport/scene/particle_frames.h"
#include "viewport/files/particles/LammpsBinary.h"
#include "viewport/files/particles/LammpsDump.h"
#include "viewport/files/particles/XyzFile.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <random>

using namespace vellum;
using namespace vellum::viewport;
using namespace vellum::viewport::particle_frames;

namespace {

constexpr std::size_t ROWS = 1200;  // several batches, so that some are read by threads

struct Table {
    char const* columns;
    bool isSorted;
    double scale;  // of what is no id, type or word
};

constexpr Table TABLES[] = {
    {"id type x y z vx vy vz", true, 1},
    {"id type x y z vx vy vz", false, 1},
    {"vx id heat x y vy z vz type fx fy fz radius", false, 1e200},
    {"type xs ys zs id", false, 1},
    {"element x y z id q heat", false, 1},
    {"x y z r g b velocity[1] velocity[2] velocity[3] vx vy vz", true, 1},
    {"x y z colorx colory colorz heat id", false, -1},
    {"x y z mass", true, 1e-200},
};

double valueOf(std::mt19937& random, double scale) {
    return (static_cast<double>(random() % 20001) / 10000 - (scale < 0 ? -1 : 1)) * scale;
}

std::string textOf(Table const& table) {
    std::string text = "ITEM: TIMESTEP\n7\nITEM: NUMBER OF ATOMS\n" + std::to_string(ROWS) +
                       "\nITEM: BOX BOUNDS pp pp pp\n0 2\n0 3\n-1 4\nITEM: ATOMS " + table.columns + "\n";
    std::mt19937 random(11);
    for (std::size_t i = 0; i < ROWS; ++i) {
        std::string_view names = table.columns;
        while (!names.empty()) {
            std::string_view const name = names.substr(0, names.find(' '));
            names.remove_prefix(std::min(names.size(), name.size() + 1));
            bool const isPlace = name.front() >= 'x' && name.front() <= 'z';
            char number[32];
            std::snprintf(number, sizeof number, "%.6g", valueOf(random, isPlace ? 1 : table.scale));
            text += name == "id"        ? std::to_string(table.isSorted ? i + 1 : i * 7 % ROWS + 1)
                    : name == "type"    ? std::to_string(1 + random() % 3)
                    : name == "element" ? (random() % 2 == 0 ? "C" : "Fe")
                                        : number;
            text += names.empty() ? "\n" : " ";
        }
    }
    return text;
}

ParticleFrame frameOf(LoadFrame const& load) {
    Result<LoadedFrame> result = load(std::nullopt, {});
    EXPECT_TRUE(result.isOk()) << result.fault().line();
    return result.isOk() ? std::move(result.value().frame) : ParticleFrame();
}

std::vector<ParticleOptions> allOptions() {
    std::vector<ParticleOptions> all;
    for (char const* const name : {"", "speed", "velocity", "vx", "vz", "x", "type", "element", "id", "heat",
                                   "f", "r", "color", "nothing"}) {
        all.push_back(channel(name));
    }
    for (char const* const selection : {"vx > 0", "speed < 1", "type == 2 and id % 3 == 1",
                                        "heat > 0 or f > 1", "element == \"C\"", "x <", "vz > zz"}) {
        all.emplace_back();
        all.back().selection = selection;
    }
    for (ParticleMode const mode : {ParticleMode::SPHERES, ParticleMode::POINTS, ParticleMode::ARROWS}) {
        for (char const* const name : {"", "speed", "f", "type", "vy"}) {
            all.push_back(channel(name));
            all.back().mode = mode;
        }
    }
    all.emplace_back().isLogarithmic = true;
    all.emplace_back().isWrapped = true;
    all.emplace_back().percent = 30;
    all.emplace_back().copies = {2, 1, 1};
    all.emplace_back().clip = Box3<double>{{0, 0, 0}, {1, 1, 1}};
    all.emplace_back().colorMap = "viridis";
    return all;
}

/// Everything that a picture of the particles is drawn of.
std::string drawnOf(ParticleFrame frame, ParticleOptions const& options) {
    std::vector<ParticleFrame> frames;
    frames.push_back(std::move(frame));
    Result<ParticleLook> const result = lookOf(frames, options);
    if (!result.isOk()) {
        return result.fault().line();
    }
    ParticleLook const& look = result.value();
    std::string drawn;
    for (Fault const& note : look.notes) {
        drawn += note.line() + "\n";
    }
    if (look.scale) {
        drawn += look.scale->name + " " + std::to_string(look.scale->range.low) + " " +
                 std::to_string(look.scale->range.high) + " " + std::to_string(look.scale->undefinedCount) +
                 "\n";
    }
    if (look.legend) {
        drawn += look.legend->title;
        for (ParticleLegend::Entry const& entry : look.legend->entries) {
            drawn += " " + entry.text + " " + std::to_string(entry.count);
        }
    }
    look.dropUnused(frames[0]);
    ParticleCloud const cloud = CloudMaker(frames[0], look).make({}, &frames[0]);
    auto const take = [&drawn](void const* values, std::size_t bytes) {
        drawn.append(static_cast<char const*>(values), bytes);
    };
    for (ParticleSystemChunk_v2 const* chunk = cloud.system->firstChunk(); chunk != nullptr;
         chunk = chunk->next()) {
        for (unsigned int k = 0; k < cloud.system->channelCount(); ++k) {
            ParticleChannelChunkData_v2* const data = chunk->channelData(k);
            data->asVectors() != nullptr ? take(data->asVectors(), chunk->count() * sizeof(Vector3<float>))
                                         : take(data->asFloats(), chunk->count() * sizeof(float));
        }
    }
    take(&cloud.spacing, sizeof cloud.spacing);
    take(&cloud.box, sizeof cloud.box);
    return drawn;
}

std::vector<std::string> keptOf(ParticleFrame const& frame) {
    std::vector<std::string> kept;
    for (ParticleChannel const& channel : frame.channels) {
        if (!channel.values.empty()) {
            kept.push_back(channel.name);
        }
    }
    for (ParticleVector const& vector : frame.vectors) {
        if (!vector.lengths.empty()) {
            kept.push_back("|" + vector.name + "|");
        }
    }
    return kept;
}

}  // namespace

TEST(needed_values, picturesAreThoseOfAllValues) {
    for (Table const& table : TABLES) {
        std::string const text = textOf(table);
        ParticleFrame const whole = frameOf(openLammpsDump(text));
        for (ParticleOptions const& options : allOptions()) {
            EXPECT_TRUE(drawnOf(whole, options) ==
                        drawnOf(frameOf(openLammpsDump(text, neededValues(options))), options))
                << table.columns << ": " << options.channel << " " << options.selection << " "
                << (options.mode ? static_cast<int>(*options.mode) : -1);
        }
    }
}

TEST(needed_values, onlyWhatIsAskedForIsKept) {
    using testing::ElementsAre;
    std::string const text = textOf(TABLES[1]);
    auto const kept = [&text](ParticleOptions const& options) {
        return keptOf(frameOf(openLammpsDump(text, neededValues(options))));
    };
    EXPECT_THAT(keptOf(frameOf(openLammpsDump(text))), ElementsAre("id", "type", "vx", "vy", "vz"));
    EXPECT_THAT(kept({}), ElementsAre("|velocity|"));
    EXPECT_THAT(kept(channel("type")), ElementsAre("type"));
    EXPECT_THAT(kept(channel("vy")), ElementsAre("vy"));
    EXPECT_THAT(kept(channel("z")), ElementsAre());
    EXPECT_THAT(kept(mode(ParticleMode::ARROWS)), ElementsAre("vx", "vy", "vz"));
    ParticleOptions selecting;
    selecting.selection = "id < 7 and vx > 0";
    EXPECT_THAT(kept(selecting), ElementsAre("id", "vx", "|velocity|"));
}

TEST(needed_values, binaryDumpsAndXyzKeepTheSame) {
    std::string bytes;
    auto const put = [&bytes](auto number) {
        bytes.append(reinterpret_cast<char const*>(&number), sizeof number);
    };
    std::string const names = "id type x y z vx vy vz";
    put(std::int64_t{-10});
    bytes += "DUMPCUSTOM";
    put(std::int32_t{1});
    put(std::int32_t{2});
    put(std::int64_t{7});
    put(std::int64_t{3});
    put(std::int32_t{0});
    for (int i = 0; i < 6; ++i) {
        put(std::int32_t{0});
    }
    for (int i = 0; i < 3; ++i) {
        put(0.0);
        put(1.0);
    }
    put(std::int32_t{8});
    put(std::int32_t{0});
    put(char{0});
    put(static_cast<std::int32_t>(names.size()));
    bytes += names;
    put(std::int32_t{1});
    put(std::int32_t{24});
    for (double const value :
         {2., 1., .1, .2, .3, 3., 4., 0., 1., 1., .4, .5, .6, 1., 2., 2., 3., 1., .7, .8, .9, 0., 0., 0.}) {
        put(value);
    }
    ParticleFrame const dump = frameOf(openLammpsBinary(bytes, neededValues({})));
    EXPECT_THAT(keptOf(dump), testing::ElementsAre("|velocity|"));
    EXPECT_THAT(dump.vectors[0].lengths, testing::ElementsAre(3, 5, 0));

    std::string const text =
        "2\nProperties=species:S:1:pos:R:3:velo:R:3:q:R:1\nH 0 0 0 2 3 6 1\nO 1 1 1 0 0 1 2\n";
    ParticleFrame const xyz = frameOf(openXyz(text, neededValues(channel("speed"))));
    EXPECT_THAT(keptOf(xyz), testing::ElementsAre("|velocity|"));
    EXPECT_THAT(xyz.vectors[0].lengths, testing::ElementsAre(7, 1));
}
