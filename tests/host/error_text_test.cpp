// The DirectDraw and DirectSound error texts and the composition of the message boxes.
#include "display/ddraw_errors.h"
#include "sound/dsound_errors.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

// The text of hr, written into a heap block of exactly `size` bytes (AddressSanitizer catches a
// write beyond it).
std::string text(void (*write)(std::int32_t, char *), std::size_t size, std::uint32_t hr) {
    std::unique_ptr<char[]> out(new char[size]);
    write(static_cast<std::int32_t>(hr), out.get());
    return out.get();
}

TEST(ErrorTexts, EveryCodeGivesItsTextAndOthersTheTemplate) {
    for (std::size_t i = 0; i < vell::kDirectDrawErrorCount; ++i) {
        const vell::ErrorEntry &e = vell::kDirectDrawErrors[i];
        EXPECT_EQ(text(vell::directDrawErrorText, vell::kErrorTextSize, e.code), e.text);
    }
    for (std::size_t i = 0; i < vell::kDirectSoundErrorCount; ++i) {
        const vell::ErrorEntry &e = vell::kDirectSoundErrors[i];
        EXPECT_EQ(text(vell::directSoundErrorText, vell::kSoundErrorTextSize, e.code), e.text);
    }
    EXPECT_EQ(text(vell::directDrawErrorText, vell::kErrorTextSize, 0x88780096),
              "Unknown HRESULT(0x88780096)"); // a DirectSound code
    EXPECT_EQ(text(vell::directSoundErrorText, vell::kSoundErrorTextSize, 0x887601C2),
              "Unknown HRESULT(0x887601c2)"); // a DirectDraw code
}

TEST(ErrorTexts, OverlongCallerTextIsCutShort) {
    std::unique_ptr<char[]> out(new char[1024]);
    vell::composeErrorMessage(std::string(5000, 'x').c_str(), "Surface lost!", out.get(), 1024);
    EXPECT_EQ(std::string(out.get()), std::string(1023, 'x'));
}

} // namespace
