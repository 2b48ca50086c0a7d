// The DirectDraw error texts and the composition of the display's message boxes.
#include "display/ddraw_errors.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

std::string text(std::uint32_t hr) {
    char out[vell::kErrorTextSize + 16];
    std::memset(out, '#', sizeof out);
    vell::directDrawErrorText(static_cast<std::int32_t>(hr), out);
    return out;
}

TEST(DirectDrawErrors, KnownCodesGiveTheirTexts) {
    EXPECT_EQ(text(0x887601C2), "Surface lost!");
    EXPECT_EQ(text(0x88760231), "Not a valid DirectDraw(tm) driver!\n(Wrong GUID!)");
    EXPECT_EQ(text(0x80070057), "Invalid parameters!");
    EXPECT_EQ(text(0x80004001), "Operation not supported!");
    EXPECT_EQ(text(0x8876026C), "DC has already been created!");
}

TEST(DirectDrawErrors, OtherCodesGiveTheTemplate) {
    EXPECT_EQ(text(0), "Unknown HRESULT(0x00000000)");
    EXPECT_EQ(text(0x88780096), "Unknown HRESULT(0x88780096)"); // a DirectSound code
    EXPECT_EQ(text(0xFFFFFFFF), "Unknown HRESULT(0xffffffff)");
    EXPECT_EQ(text(0x0000ABCD).size(), 27u);
}

TEST(DirectDrawErrors, TableIsWellFormed) {
    std::set<std::int32_t> codes;
    std::size_t longest = 0, multiLine = 0;
    for (std::size_t i = 0; i < vell::kDirectDrawErrorCount; ++i) {
        const auto &e = vell::kDirectDrawErrors[i];
        EXPECT_TRUE(codes.insert(e.code).second) << "duplicate code " << std::hex << e.code;
        longest = std::max(longest, std::strlen(e.text));
        if (std::strchr(e.text, '\n')) ++multiLine;
    }
    EXPECT_EQ(vell::kDirectDrawErrorCount, 29u);
    EXPECT_EQ(longest, 125u); // the "no DirectDraw support" text, four lines
    EXPECT_EQ(longest + 1, vell::kErrorTextSize);
    EXPECT_EQ(multiLine, 3u);
}

TEST(ErrorMessages, CallerTextThenBlankLineThenCodeText) {
    char out[1024];
    vell::composeErrorMessage("Unable to set display mode!", "Operation not supported!", out,
                              sizeof out);
    EXPECT_STREQ(out, "Unable to set display mode!\n\nOperation not supported!");
}

TEST(ErrorMessages, OverlongCallerTextIsCutShort) {
    const std::string huge(5000, 'x');
    char out[1024 + 8];
    std::memset(out, '#', sizeof out);
    vell::composeErrorMessage(huge.c_str(), "Surface lost!", out, 1024);
    EXPECT_EQ(std::strlen(out), 1023u);
    EXPECT_EQ(out[1024], '#');
}

} // namespace
