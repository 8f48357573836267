#include "viewport/files/common/Decompress.h"

#include "tests/viewport/files/common/compressed_texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace vellum::viewport;
using compressed_texts::Codec;
using compressed_texts::CODECS;

namespace {

constexpr std::uint64_t ENOUGH = 1'000'000;

std::string someText() {
    std::string text;
    for (int i = 0; i < 30'000; ++i) {
        text += std::to_string(i * 7919) + "\n";
    }
    return text;
}

}  // namespace

TEST(Decompress, everyCodecGivesTheText) {
    std::string const text = someText();
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        ASSERT_TRUE(isCompressed(bytes)) << codec.name;
        std::vector<std::uint64_t> told;
        Result<DecompressedText> const result =
            decompress(bytes, ENOUGH, [&](std::uint64_t done, std::uint64_t all) {
                EXPECT_EQ(all, bytes.size());
                told.push_back(done);
            });
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().buffer.bytes(), text) << codec.name;
        EXPECT_FALSE(result.value().isCutOff) << codec.name;
        EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
        EXPECT_EQ(decompressStart(bytes, 1000), text.substr(0, 1000)) << codec.name;
        EXPECT_EQ(decompressStart(codec.compress("short"), 1000), "short") << codec.name;
    }
    EXPECT_FALSE(isCompressed("text"));
    EXPECT_FALSE(isCompressed(""));
}

TEST(Decompress, membersFollowOneAnotherAndTheRestIsIgnored) {
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress("one ") + codec.compress("two") + std::string(100, '\0');
        Result<DecompressedText> const result = decompress(bytes, ENOUGH, {});
        ASSERT_TRUE(result.isOk()) << codec.name;
        EXPECT_EQ(result.value().buffer.bytes(), "one two") << codec.name;
        EXPECT_FALSE(result.value().isCutOff) << codec.name;
        EXPECT_EQ(decompressStart(bytes, 100), "one two") << codec.name;
    }
}

TEST(Decompress, dataCutOffGiveThePartThatIsThere) {
    std::string const text = someText();
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        for (std::size_t const size :
             {bytes.size() - 1, bytes.size() - 9, bytes.size() * 3 / 4, std::size_t(6)}) {
            std::vector<char> const part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            Result<DecompressedText> const result = decompress({part.data(), part.size()}, ENOUGH, {});
            ASSERT_TRUE(result.isOk()) << codec.name << size << result.fault().line();
            EXPECT_TRUE(result.value().isCutOff) << codec.name << size;
            std::string_view const given = result.value().buffer.bytes();
            EXPECT_EQ(given, text.substr(0, given.size())) << codec.name;
            EXPECT_EQ(!given.empty(), size > 6) << codec.name << size;
        }
    }
}

TEST(Decompress, aTextBeyondTheLimitIsAFault) {
    for (Codec const& codec : CODECS) {
        Result<DecompressedText> const result =
            decompress(codec.compress(std::string(200'000, 'x')), 100'000, {});
        ASSERT_FALSE(result.isOk()) << codec.name;
        EXPECT_EQ(result.fault().message, "holds more than 100000 bytes uncompressed");
    }
}

TEST(Decompress, damagedDataAreAFaultOrCutOffNeverAnotherText) {
    std::string const text = someText().substr(0, 2000);
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        bool hadFault = false;
        // The first bytes are the signature, the ones after it in gzip hold names and times.
        for (std::size_t place = 10; place < bytes.size(); ++place) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
            Result<DecompressedText> const result = decompress(damaged, ENOUGH, {});
            hadFault = hadFault || !result.isOk();
            if (result.isOk() && !result.value().isCutOff) {
                EXPECT_EQ(result.value().buffer.bytes(), text) << codec.name << place;
            }
        }
        EXPECT_TRUE(hadFault) << codec.name;
    }
}
