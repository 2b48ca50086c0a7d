// The GUID text form: exact inverse of itself, tolerant where documented, and never reading or
// writing past the ends of its buffers.
#include "base/guid_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

using Bytes = std::array<unsigned char, vell::kGuidBytes>;

// Written into a heap block of exactly 39 bytes, so AddressSanitizer catches any write beyond.
std::string format(const Bytes &b) {
    std::unique_ptr<char[]> text(new char[vell::kGuidTextLength + 1]);
    vell::formatGuidText(b.data(), text.get());
    return text.get();
}

// Parsed from a heap block of exactly the text's size, so AddressSanitizer catches any read past
// the terminating zero; a null text is passed on as it is.
Bytes parse(const char *s) {
    std::unique_ptr<char[]> exact(s ? std::strcpy(new char[std::strlen(s) + 1], s) : nullptr);
    Bytes b;
    b.fill(0xEE);
    vell::parseGuidText(exact.get(), b.data());
    return b;
}

const Bytes kExample = {0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE,
                        0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};

// Round trips of every text the reader can produce are the fuzz target's.
TEST(GuidText, WritesTheBytesInMemoryOrderAndReadsOtherSpellingsAndShortTexts) {
    EXPECT_EQ(format(kExample), "{78563412-BC9A-F0DE-0123-456789ABCDEF}");
    EXPECT_EQ(format(Bytes{}), "{00000000-0000-0000-0000-000000000000}");
    for (const char *text :
         {"78563412BC9AF0DE0123456789ABCDEF", "{78563412-bc9a-f0de-0123-456789abcdef}",
          "78-56-34-12-BC-9A-F0-DE-01-23-45-67-89-AB-CD-EF",
          "{{--78563412}}BC9A--F0DE{0123}456789ABCDEF",
          "{78563412-BC9A-F0DE-0123-456789ABCDEF}trailing junk"})
        EXPECT_EQ(parse(text), kExample) << text;
    // Bytes the text does not reach are 0; a last pair cut short keeps its one digit.
    for (const char *text : {"", "{", "{--}}"})
        EXPECT_EQ(parse(text), Bytes{}) << text;
    EXPECT_EQ(parse("{12-345"), (Bytes{0x12, 0x34, 0x05}));
    EXPECT_EQ(parse(nullptr), Bytes{});
}

TEST(GuidText, EveryPairReadsAsScanfHexWouldRead) {
    // Each two-character field that can begin a pair, against the C library's own "%X"; a pair
    // without a leading digit gives 0.
    for (int a = 1; a < 256; ++a) {
        if (a == '-' || a == '{' || a == '}') continue;
        for (int b = 1; b < 256; ++b) {
            const char field[3] = {static_cast<char>(a), static_cast<char>(b), '\0'};
            unsigned int scanned = 0;
            const unsigned expected =
                std::sscanf(field, "%X", &scanned) == 1 ? (scanned & 0xFFu) : 0u;
            ASSERT_EQ(parse(field)[0], expected) << "field 0x" << std::hex << a << " 0x" << b;
        }
    }
}

} // namespace
