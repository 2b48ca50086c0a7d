// Fixture for the display tests: a base object with its log on, a test window stored in it, and
// the display object made on demand, full screen or windowed.
#ifndef VELL_DISPLAY_FIXTURE_H
#define VELL_DISPLAY_FIXTURE_H

#include "VellBase.h"

#include "harness.h"
#include "test_strings.h"

#include <optional>
#include <string>

namespace vtest {

class DisplayTest : public ClientTest {
protected:
    void closeDevice() override { display.reset(); }

    // Opens the display, full screen unless told otherwise.
    TDirectDraw &open(unsigned long mode = 1) {
        display.emplace(&*base, mode);
        return *display;
    }

    // An off-screen surface of the display, w by h, with nothing in it.
    IDirectDrawSurface2 *surface(int w, int h) {
        IDirectDrawSurface2 *s = nullptr;
        EXPECT_TRUE(display->CreateSurface(s, w, h, nullptr)) << w << "x" << h;
        return s;
    }

    std::optional<TDirectDraw> display;
};

// Skips a test that needs the 16-bit X screen when running on the true-colour one (which reports
// 32 bits per pixel for its depth of 24), and the other way round.
#define VELL_NEEDS_16_BIT_SCREEN()                                                                 \
    do {                                                                                           \
        if (vtest::screenDepth() != 16)                                                            \
            GTEST_SKIP() << "needs the 16-bit X screen, this one has " << vtest::screenDepth();    \
    } while (0)
#define VELL_NEEDS_TRUE_COLOUR_SCREEN()                                                            \
    do {                                                                                           \
        if (vtest::screenDepth() < 24)                                                             \
            GTEST_SKIP() << "needs a true-colour X screen, this one has " << vtest::screenDepth(); \
    } while (0)

// 5:6:5 values of the test bitmaps' pure colours.
constexpr std::uint32_t kRed565 = 0xF800, kGreen565 = 0x07E0, kBlue565 = 0x001F, kWhite565 = 0xFFFF;

} // namespace vtest

#endif
