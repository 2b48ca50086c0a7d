// The GUID text form: exact inverse of itself, tolerant where documented, and never reading past
// the end of the text.
#include "base/guid_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace {

using Bytes = std::array<unsigned char, vell::kGuidBytes>;

std::string format(const Bytes &b) {
    char text[vell::kGuidTextLength + 1];
    std::memset(text, 'X', sizeof text);
    vell::formatGuidText(b.data(), text);
    return text;
}

// Parses from a heap block of exactly the text's size, so AddressSanitizer catches any read past
// the terminating zero.
Bytes parse(const std::string &s) {
    std::unique_ptr<char[]> exact(new char[s.size() + 1]);
    std::memcpy(exact.get(), s.c_str(), s.size() + 1);
    Bytes b;
    b.fill(0xEE);
    vell::parseGuidText(exact.get(), b.data());
    return b;
}

const Bytes kExample = {0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE,
                        0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

TEST(GuidText, WritesBytesInMemoryOrder) {
    EXPECT_EQ(format(kExample), "{78563412-BC9A-F0DE-0123-456789ABCDEF}");
    EXPECT_EQ(format(Bytes{}), "{00000000-0000-0000-0000-000000000000}");
    Bytes ff;
    ff.fill(0xFF);
    EXPECT_EQ(format(ff), "{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}");
}

TEST(GuidText, RoundTripsRandomGuids) {
    std::mt19937 rng(20261122);
    for (int i = 0; i < 20000; ++i) {
        Bytes b;
        for (auto &x : b)
            x = static_cast<unsigned char>(rng());
        const std::string text = format(b);
        ASSERT_EQ(text.size(), vell::kGuidTextLength);
        ASSERT_EQ(text.find_first_of("abcdef"), std::string::npos) << text;
        ASSERT_EQ(parse(text), b) << text;
    }
}

TEST(GuidText, ReadsOtherSpellingsOfTheSameBytes) {
    EXPECT_EQ(parse("{78563412-BC9A-F0DE-0123-456789ABCDEF}"), kExample);
    EXPECT_EQ(parse("78563412BC9AF0DE0123456789ABCDEF"), kExample);
    EXPECT_EQ(parse("{78563412-bc9a-f0de-0123-456789abcdef}"), kExample);
    EXPECT_EQ(parse("78-56-34-12-BC-9A-F0-DE-01-23-45-67-89-AB-CD-EF"), kExample);
    EXPECT_EQ(parse("{{--78563412}}BC9A--F0DE{0123}456789ABCDEF"), kExample);
    // The sixteenth pair ends the reading: whatever follows is ignored.
    EXPECT_EQ(parse("{78563412-BC9A-F0DE-0123-456789ABCDEF}trailing junk"), kExample);
}

TEST(GuidText, ShortTextLeavesTheRestZero) {
    Bytes expected{};
    EXPECT_EQ(parse(""), expected);
    EXPECT_EQ(parse("{"), expected);
    EXPECT_EQ(parse("{--}}"), expected);

    expected[0] = 0x12;
    expected[1] = 0x34;
    EXPECT_EQ(parse("{12-34"), expected);

    // A last pair cut short by the end of the text keeps its one digit.
    expected[2] = 0x05;
    EXPECT_EQ(parse("{12-345"), expected);
}

TEST(GuidText, NullTextGivesTheZeroGuid) {
    Bytes b;
    b.fill(0xEE);
    vell::parseGuidText(nullptr, b.data());
    EXPECT_EQ(b, Bytes{});
}

TEST(GuidText, PairWithoutDigitsGivesZeroNotThePreviousByte) {
    Bytes expected{};
    expected[0] = 0xAB;
    expected[1] = 0x00; // "zz"
    expected[2] = 0xCD;
    expected[3] = 0x00; // "  "
    expected[4] = 0x07; // "7q": the digit before the stray character
    expected[5] = 0x08; // " 8": a leading blank is skipped, as scanf does
    EXPECT_EQ(parse("ABzzCD  7q 8"), expected);
}

TEST(GuidText, EveryPairReadsAsScanfHexWouldRead) {
    // Each two-character field that can begin a pair, against the C library's own "%X".
    for (int a = 1; a < 256; ++a) {
        if (a == '-' || a == '{' || a == '}') continue;
        for (int b = 1; b < 256; ++b) {
            const char field[3] = {static_cast<char>(a), static_cast<char>(b), '\0'};
            unsigned int scanned = 0;
            const unsigned expected =
                std::sscanf(field, "%X", &scanned) == 1 ? (scanned & 0xFFu) : 0u;
            const Bytes got = parse(field);
            ASSERT_EQ(got[0], expected) << "field 0x" << std::hex << a << " 0x" << b;
        }
    }
}

TEST(GuidText, WriterStopsAtThirtyNineBytes) {
    char buffer[64];
    std::memset(buffer, '#', sizeof buffer);
    vell::formatGuidText(kExample.data(), buffer);
    EXPECT_EQ(buffer[vell::kGuidTextLength], '\0');
    EXPECT_EQ(buffer[vell::kGuidTextLength + 1], '#');
}

} // namespace
