#include "viewport/files/particles/ParticleFile.h"

#include "foundation/basic/threads.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/build_facts.h"
#include "tests/viewport/files/common/compressed_texts.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/files/particles/particle_texts.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace vellum;
using namespace vellum::viewport;
using compressed_texts::gzip;
using particle_texts::dump;
using particle_texts::nobody;
using testing::HasSubstr;

namespace {

std::string const points = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
                           "property float z\nend_header\n1 2 3\n";

/// Of a large file, which is read in several pieces: fewer where each takes long.
int manyParticles() {
    return isAddressSanitized() ? 30000 : 60000;
}

std::string largeDump() {
    std::string text = "ITEM: TIMESTEP\n7\nITEM: NUMBER OF ATOMS\n" + std::to_string(manyParticles()) +
                       "\nITEM: ATOMS x y z\n";
    for (int i = 0; i < manyParticles(); ++i) {
        text += std::to_string(i) + " 0 " + std::to_string(i % 7919) + "\n";
    }
    return text;
}

}  // namespace

TEST(ParticleFile, theContentTellsTheFormat) {
    struct Row {
        std::string content;
        ParticleFormat format;
    };
    TemporaryFolder const folder;
    for (Row const& row : {Row{dump, ParticleFormat::LAMMPS_DUMP}, Row{"1\n\nH 0 0 0\n", ParticleFormat::XYZ},
                           Row{"x,y,z\n1,2,3\n", ParticleFormat::CSV}, Row{points, ParticleFormat::PLY}}) {
        for (std::string const& content :
             {row.content, gzip(row.content), compressed_texts::zstd(row.content),
              compressed_texts::xz(row.content)}) {
            ParticleFile const file(folder.write("some.dat", content));
            Result<ParticleFormat> const format = file.format();
            ASSERT_TRUE(format.isOk());
            EXPECT_EQ(format.value(), row.format);
            Result<LoadedFrame> const frames = file.load(std::nullopt, nobody);
            ASSERT_EQ(faultOf(frames), "");
            EXPECT_GE(frames.value().frame.positions.size(), 1U);
            EXPECT_EQ(frames.value().warning, "");
        }
    }
}

TEST(ParticleFile, everythingElseIsAFaultWithTheFilesName) {
    TemporaryFolder const folder;
    for (std::string const& content :
         {mesh_texts::triangleObj, mesh_texts::cubeOff, mesh_texts::trianglePly, mesh_texts::noise(3000),
          std::string(1000, '\0'), gzip(mesh_texts::triangleObj), gzip("")}) {
        ParticleFile const file(folder.write("some.dat", content));
        EXPECT_FALSE(file.format().isOk());
        Result<LoadedFrame> const frames = file.load(std::nullopt, nobody);
        ASSERT_FALSE(frames.isOk());
        EXPECT_EQ(frames.fault().file, folder.file("some.dat"));
        EXPECT_NE(frames.fault().message, "");
    }
    EXPECT_THAT(faultOf(ParticleFile(folder.file("none")).load(std::nullopt, nobody)),
                HasSubstr("cannot be opened"));
    EXPECT_EQ(faultOf(ParticleFile(folder.file("")).load(std::nullopt, nobody)), "is a folder, not a file");
    EXPECT_EQ(faultOf(ParticleFile("/dev/null").load(std::nullopt, nobody)), "is not a regular file");
    EXPECT_EQ(faultOf(ParticleFile(folder.write("empty", "")).load(std::nullopt, nobody)),
              "the file is empty");
    EXPECT_FALSE(ParticleFile(folder.file("empty")).format().isOk());
}

TEST(ParticleFile, aFrameBehindTheLastOneIsAFault) {
    TemporaryFolder const folder;
    std::string const path = folder.write("melt.dump", dump);
    EXPECT_EQ(ParticleFile(path).load(1, nobody).value().frame.file, path);
    EXPECT_EQ(ParticleFile(path).load(2, nobody).fault().line(),
              path + ": has no frame 2; its last one is 1");
    EXPECT_EQ(faultOf(ParticleFile(folder.write("one.csv", "x,y,z\n1,2,3\n")).load(1, nobody)),
              "has no frame 1; its last one is 0");
    EXPECT_EQ(
        faultOf(ParticleFile(folder.write("cut", dump.substr(0, dump.size() - 6))).load(1, nobody)),
        "has no frame 1; its last one is 0 (line 27: has 1 of 4 values; the file is cut off in frame 1, "
        "which is left out)");
}

TEST(ParticleFile, aFrameWithoutParticlesIsAFault) {
    TemporaryFolder const folder;
    std::string const ply = "ply\nformat ascii 1.0\nelement vertex 0\nproperty float x\nproperty float y\n"
                            "property float z\nend_header\n";
    for (char const* const text : {"x,y,z\n", "0\n\n", ply.c_str()}) {
        EXPECT_EQ(faultOf(ParticleFile(folder.write("none", text)).load(std::nullopt, nobody)),
                  "has no particles")
            << text;
    }
    ParticleFile const two(folder.write("two", "1\n\nH 0 0 0\n0\n\n"));
    EXPECT_EQ(faultOf(two.load(1, nobody)), "frame 1 has no particles");
    EXPECT_EQ(faultOf(two.load(0, nobody)), "");
}

TEST(ParticleFile, aFormatThatIsGivenIsNotGuessed) {
    TemporaryFolder const folder;
    ParticleFile const file(folder.write("numbers", "1\n\n0 0 0\n"), ParticleFormat::CSV);
    EXPECT_EQ(file.format().value(), ParticleFormat::CSV);
    EXPECT_EQ(faultOf(file.load(std::nullopt, nobody)), "line 1: no columns x, y and z are named");
    for (std::string const& name : particleFormatNames()) {
        EXPECT_TRUE(particleFormatNamed(name).has_value()) << name;
    }
    EXPECT_EQ(particleFormatNamed("lammps-dump-binary"), ParticleFormat::LAMMPS_BINARY);
    EXPECT_FALSE(particleFormatNamed("stl").has_value());
}

TEST(ParticleFile, aFileThatIsOpenIsNotOpenedAgain) {
    TemporaryFolder const folder;
    std::string const path = folder.write("melt", dump);
    Result<InputFile> const opened = InputFile::open(path);
    ASSERT_TRUE(opened.isOk());
    std::filesystem::remove(path);
    ParticleFile const file(opened.value());
    EXPECT_EQ(file.format().value(), ParticleFormat::LAMMPS_DUMP);
    EXPECT_EQ(file.load(0, nobody).value().frame.file, path);
}

TEST(ParticleFile, damageHasFileLineAndReason) {
    TemporaryFolder const folder;
    std::string const path = folder.write("melt.dump", "ITEM: TIMESTEP\nnow\n");
    EXPECT_EQ(ParticleFile(path).load(std::nullopt, nobody).fault().line(),
              path + ": line 2: 'now' is not a time step");
}

TEST(ParticleFile, compressedFilesGiveWhatTheirTextsGive) {
    TemporaryFolder const folder;
    std::string const text = largeDump();
    std::vector<std::uint64_t> told;
    std::uint64_t all = 0;
    std::string const path = folder.write("large.gz", gzip(text));
    Result<LoadedFrame> const result =
        ParticleFile(path).load(std::nullopt, [&](std::uint64_t const& done, std::uint64_t const& inAll) {
            told.push_back(done);
            all = inAll;
        });
    ASSERT_EQ(faultOf(result), "");
    Result<LoadedFrame> const plain = ParticleFile(folder.write("large", text)).load(std::nullopt, nobody);
    ASSERT_EQ(faultOf(plain), "");
    EXPECT_EQ(result.value().frame.positions, plain.value().frame.positions);
    EXPECT_EQ(all, 2 * folder.read("large.gz").size());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_LE(told.back(), all);
    EXPECT_GT(told.back(), all / 2);
}

TEST(ParticleFile, membersFollowOneAnother) {
    TemporaryFolder const folder;
    std::size_t const half = dump.size() / 2;
    std::string const path =
        folder.write("two.gz", gzip(dump.substr(0, half)) + gzip(dump.substr(half)) + std::string(100, '\0'));
    Result<LoadedFrame> const result = ParticleFile(path).load(std::nullopt, nobody);
    ASSERT_EQ(faultOf(result), "");
    EXPECT_EQ(result.value().count, 2U);
    EXPECT_EQ(result.value().warning, "");
}

TEST(ParticleFile, ofCompressedDataCutOffTheCompleteFramesAreGiven) {
    TemporaryFolder const folder;
    std::size_t const second = dump.find("ITEM: TIMESTEP\n200");
    for (compressed_texts::Codec const& codec : compressed_texts::CODECS) {
        // Two members: what is before the last one is complete even where a codec gives whole blocks only.
        std::string const first = codec.compress(dump.substr(0, second + 10));
        std::string const whole = first + codec.compress(dump.substr(second + 10));
        bool hadOneFrame = false;
        for (std::size_t size = 1; size < whole.size(); ++size) {
            // Between the members the text is complete to the codec, and cut off to the reader of dumps.
            if (size == first.size()) {
                continue;
            }
            Result<LoadedFrame> const result =
                ParticleFile(folder.write("cut.gz", whole.substr(0, size))).load(std::nullopt, nobody);
            if (result.isOk()) {
                bool const isBehindFirst = size > first.size();
                EXPECT_NE(result.value().warning, "") << codec.name << size;
                hadOneFrame = hadOneFrame || (isBehindFirst && result.value().count == 1);
            } else {
                EXPECT_NE(result.fault().message, "");
            }
        }
        EXPECT_TRUE(hadOneFrame) << codec.name;
    }
    // Of one member, what gzip gives of it.
    std::string const whole = gzip(dump);
    bool hadOneFrame = false;
    for (std::size_t size = 1; size < whole.size(); ++size) {
        Result<LoadedFrame> const result =
            ParticleFile(folder.write("cut.gz", whole.substr(0, size))).load(std::nullopt, nobody);
        if (result.isOk()) {
            EXPECT_THAT(result.value().warning, HasSubstr("the compressed data are cut off")) << size;
            hadOneFrame = hadOneFrame || result.value().count == 1;
        } else {
            EXPECT_NE(result.fault().message, "");
        }
    }
    EXPECT_TRUE(hadOneFrame);
}

TEST(ParticleFile, compressedDataWithAWrongBitAreAFault) {
    TemporaryFolder const folder;
    std::string const whole = gzip(dump);
    for (std::size_t place = 10; place < whole.size(); ++place) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
        Result<LoadedFrame> const result =
            ParticleFile(folder.write("bad.gz", damaged)).load(std::nullopt, nobody);
        EXPECT_FALSE(result.isOk() && result.value().warning.empty()) << place;
    }
    std::string checksum = whole;
    checksum[whole.size() - 8] = static_cast<char>(checksum[whole.size() - 8] ^ 1);
    EXPECT_EQ(faultOf(ParticleFile(folder.write("sum.gz", checksum)).load(std::nullopt, nobody)),
              "the compressed data are damaged: incorrect data check");
}

TEST(ParticleFile, readingWhileTheTextIsUncompressedGivesTheSame) {
    TemporaryFolder const folder;
    std::string const text = largeDump();
    std::string xyz = std::to_string(manyParticles()) + "\nmelt\n";
    for (int i = 0; i < manyParticles(); ++i) {
        xyz += "H 0 " + std::to_string(i * 7919 % manyParticles()) + " 1\n";
    }
    std::string wrong = text;
    wrong[text.size() - 40] = 'w';
    std::string const whole = gzip(text);
    std::string damaged = whole;
    damaged[whole.size() / 2] = static_cast<char>(~damaged[whole.size() / 2]);
    struct Row {
        char const* name;
        std::string bytes;
    };
    for (Row const& row : {Row{"one frame", whole},
                           {"three frames", gzip(text + text + text)},
                           {"a small one behind", gzip(text + dump)},
                           {"a small one before", gzip(dump + text)},
                           {"other units behind", gzip("ITEM: UNITS\nmetal\n" + text + text)},
                           {"xyz", gzip(xyz)},
                           {"xyz, two", gzip(xyz + xyz)},
                           {"wrong in the first", gzip(wrong)},
                           {"wrong, not shown", gzip(wrong + text)},
                           {"too few", gzip(text.substr(0, text.size() / 2))},
                           {"too few, and another", gzip(text.substr(0, text.size() / 2) + "\n" + text)},
                           {"no line end", gzip(text.substr(0, text.size() - 1))},
                           {"empty lines", gzip("\n\n" + text + "\n \n")},
                           {"cut off", whole.substr(0, whole.size() / 2)},
                           {"cut off in the second", gzip(text + text).substr(0, whole.size() * 3 / 2)},
                           {"damaged", damaged},
                           {"two members", whole + gzip(text)}}) {
        std::string const path = folder.write("some.gz", row.bytes);
        for (std::optional<std::size_t> const frame : {std::optional<std::size_t>(), {1}}) {
            vellum::setThreadLimit(1);
            Result<LoadedFrame> const expected = ParticleFile(path).load(frame, nobody);
            vellum::setThreadLimit(0);
            ParticleFile const file(path);
            for (int times = 0; times < 2; ++times) {
                Result<LoadedFrame> const result = file.load(frame, nobody);
                ASSERT_EQ(faultOf(result), faultOf(expected)) << row.name;
                if (result.isOk()) {
                    EXPECT_EQ(result.value().frame.positions, expected.value().frame.positions) << row.name;
                    EXPECT_EQ(result.value().frame.timestep, expected.value().frame.timestep) << row.name;
                    EXPECT_EQ(result.value().number, expected.value().number) << row.name;
                    EXPECT_EQ(result.value().timesteps, expected.value().timesteps) << row.name;
                    EXPECT_EQ(result.value().warning, expected.value().warning) << row.name;
                }
            }
        }
    }
}

TEST(ParticleFile, uncompressingIsGivenUpAtAnyTime) {
    TemporaryFolder const folder;
    std::string const path = folder.write("large.gz", gzip(largeDump()));
    int calls = 0;
    ASSERT_TRUE(ParticleFile(path).load(std::nullopt, [&](std::uint64_t, std::uint64_t) { ++calls; }).isOk());
    for (int last = 1; last <= calls; last += 1 + last / 3) {
        int left = last;
        ParticleFile const file(path);
        bool isGivenUp = false;
        try {
            static_cast<void>(file.load(std::nullopt, [&](std::uint64_t, std::uint64_t) {
                if (--left == 0) {
                    throw Cancelled();
                }
            }));
        } catch (Cancelled const&) {
            isGivenUp = true;
        }
        EXPECT_TRUE(isGivenUp || left > 0) << last;
        EXPECT_EQ(faultOf(file.load(std::nullopt, nobody)), "") << last;
    }
}

// == Several frames ==

TEST(ParticleFile, laterLoadsReadTheirFrameAloneAndGiveTheSame) {
    std::string text;
    for (int i = 0; i < 3; ++i) {
        text += "ITEM: UNITS\nmetal\n";
        text += "ITEM: TIME\n" + std::to_string(i) + "\n" + largeDump();
        text.replace(text.rfind("STEP\n7"), 6, "STEP\n" + std::to_string(i));
    }
    text += text.substr(0, 30);
    TemporaryFolder const folder;
    for (std::string const& content : {text, gzip(text)}) {
        ParticleFile const file(folder.write("some.dump", content));
        ASSERT_EQ(faultOf(file.load(std::nullopt, nobody)), "");
        for (std::size_t const number : {1U, 0U, 2U, 1U}) {
            std::uint64_t most = 0;
            std::uint64_t latest = 0;
            Result<LoadedFrame> const again = file.load(number, [&](std::uint64_t done, std::uint64_t all) {
                EXPECT_GE(done, latest);
                latest = done;
                most = all;
                EXPECT_LE(done, all);
            });
            ASSERT_EQ(faultOf(again), "");
            EXPECT_GT(most, text.size() / 4);
            EXPECT_LT(most, text.size() / 2) << "the whole text is read again";
            LoadedFrame const fresh = ParticleFile(folder.file("some.dump")).load(number, nobody).value();
            EXPECT_EQ(again.value().number, number);
            EXPECT_EQ(again.value().count, 3U);
            EXPECT_EQ(again.value().frame.timestep, static_cast<std::int64_t>(number));
            EXPECT_EQ(again.value().times, fresh.times);
            EXPECT_EQ(again.value().warning, fresh.warning);
            EXPECT_NE(again.value().warning, "");
            EXPECT_TRUE(again.value().frame.positions == fresh.frame.positions);
        }
        EXPECT_THAT(faultOf(file.load(3, nobody)), HasSubstr("has no frame 3; its last one is 2 ("));
    }
}

TEST(ParticleFile, theFramesAreListedWithoutReadingThem) {
    TemporaryFolder const folder;
    // The rows of the second frame are damaged, which only reading them shows.
    std::string damaged = dump;
    damaged.replace(damaged.find("9 0.5"), 5, "9 xxx");
    for (std::string const& content : {damaged, gzip(damaged)}) {
        ParticleFile const file(folder.write("some.dump", content));
        Result<FrameList> const list = file.frames(nobody);
        ASSERT_TRUE(list.isOk()) << list.fault().line();
        EXPECT_EQ(list.value().count, 2U);
        EXPECT_EQ(list.value().timesteps, (std::vector<std::int64_t>{100, 200}));
        EXPECT_EQ(list.value().times, (std::vector<std::optional<double>>{0.5, std::nullopt}));
        EXPECT_EQ(faultOf(file.load(0, nobody)), "");
        EXPECT_THAT(faultOf(file.load(1, nobody)), HasSubstr("'xxx'"));
        EXPECT_EQ(faultOf(file.load(0, nobody)), "") << "a damaged frame does not spoil the others";
    }
    EXPECT_EQ(ParticleFile(folder.write("one.ply", points)).frames(nobody).value().count, 1U);
    EXPECT_EQ(
        ParticleFile(folder.write("two.xyz", "1\n\nH 1 0 0\n1\n\nH 3 0 0\n")).frames(nobody).value().count,
        2U);
    EXPECT_THAT(ParticleFile(folder.file("none")).frames(nobody).fault().message,
                HasSubstr("cannot be opened"));
    EXPECT_FALSE(ParticleFile(folder.write("noise", mesh_texts::noise(300))).frames(nobody).isOk());
}
