// The DirectDraw and DirectSound error texts and the composition of the message boxes.
#include "display/ddraw_errors.h"
#include "sound/dsound_errors.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

// A sample of each table, written out: codes both tables know with different texts, the longest
// texts (written into heap blocks of exactly the size callers provide, where AddressSanitizer
// catches a byte beyond), texts of several lines, and codes of the other table.
TEST(ErrorTexts, CodesGiveTheirTextsAndOthersTheTemplate) {
    const struct {
        bool sound;
        std::uint32_t hr;
        const char *text;
    } cases[] = {
        {false, 0x80070057, "Invalid parameters!"},
        {true, 0x80070057, "Invalid parameter!"},
        {false, 0x887601C2, "Surface lost!"},
        {false, 0x88760231, "Not a valid DirectDraw(tm) driver!\n(Wrong GUID!)"},
        {false, 0x887600DE,
         "Your current display driver does not\nsupport DirectDraw(tm)!\n"
         "Please contact your card manufacturer\nto get the latest drivers."},
        {true, 0x887800A0,
         "Another application has a higher priority level, preventing this "
         "call from succeeding!"},
        {true, 0x88780078, "No sound driver is available for use!"},
        {false, 0x88780096, "Unknown HRESULT(0x88780096)"},
        {true, 0x887601C2, "Unknown HRESULT(0x887601c2)"},
    };
    for (const auto &c : cases) {
        const std::size_t size = c.sound ? vell::kSoundErrorTextSize : vell::kErrorTextSize;
        std::unique_ptr<char[]> out(new char[size]);
        (c.sound ? vell::directSoundErrorText : vell::directDrawErrorText)(std::int32_t(c.hr),
                                                                           out.get());
        EXPECT_STREQ(out.get(), c.text) << std::hex << c.hr;
    }
}

TEST(ErrorTexts, OverlongCallerTextIsCutShort) {
    std::unique_ptr<char[]> out(new char[1024]);
    vell::composeErrorMessage(std::string(5000, 'x').c_str(), "Surface lost!", out.get(), 1024);
    EXPECT_EQ(std::string(out.get()), std::string(1023, 'x'));
}

} // namespace
