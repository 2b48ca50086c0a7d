// The display object against Wine's DirectDraw: opening full screen and windowed, the log, the
// device list, the device choice in the registry, failures and their message boxes.
#include "display_fixture.h"

namespace {

using vtest::DisplayTest;
using vtest::readTestValue;
using vtest::writeTestValue;

const char kZeroText[] = "{00000000-0000-0000-0000-000000000000}";

std::string constructionLog() {
    return vtest::constructionLog("DirectDraw", vtest::displayDevices());
}

const std::string kDestructionLog =
    "De-initializing DirectDraw:\n  Releasing DirectDraw interfaces:\n  done.\ndone.\n";

// The registry value as stored: the 38 characters the display writes, plus the terminating zero
// the registry adds to a text counted without it.
std::string storedGuid(const char *text) {
    return std::string(text, 39);
}

TEST_F(DisplayTest, FullScreenOpensAt640By480With5_6_5) {
    VELL_NEEDS_16_BIT_SCREEN();
    TDirectDraw &dd = open(1);
    ASSERT_NE(dd.lpDD, nullptr);
    ASSERT_NE(dd.lpPrimary, nullptr);
    ASSERT_NE(dd.lpBack, nullptr);
    EXPECT_EQ(dd.hWnd, window);
    EXPECT_EQ(dd.dwMode, 1u);
    EXPECT_EQ(dd.dwGraphicsMode, 2u);
    EXPECT_EQ(dd.wWhite, 0xFFFF);
    {
        vtest::SurfaceLock back(dd.lpBack);
        ASSERT_TRUE(back.ok());
        EXPECT_EQ(back.width(), 640);
        EXPECT_EQ(back.height(), 480);
        EXPECT_EQ(back.bits(), 16);
    }
    EXPECT_TRUE(boxes->boxes().empty());

    // The device list mirrors the enumeration, in order, with own copies of the texts.
    const auto devices = vtest::displayDevices();
    vtest::expectDeviceList(dd.lpDeviceList, devices);
    ASSERT_FALSE(devices.empty());
    const std::string expected = constructionLog() + kDestructionLog;
    EXPECT_TRUE(IsEqualGUID(dd.lpDeviceList->guid, GUID_NULL)); // the primary driver

    EXPECT_EQ(closeAndReadLog(), expected);
    const auto value = readTestValue("TDirectDraw::guidDevice");
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(value->type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(value->data, storedGuid(kZeroText));
}

TEST_F(DisplayTest, EveryOtherModeIsWindowed) {
    for (unsigned long mode : {0ul, 2ul, 7ul}) {
        TDirectDraw &dd = open(mode);
        EXPECT_NE(dd.lpPrimary, nullptr) << "mode " << mode;
        EXPECT_EQ(dd.lpBack, nullptr) << "mode " << mode;
        EXPECT_EQ(dd.Flip(), 0) << "mode " << mode; // the desktop does not flip
        if (vtest::screenDepth() == 16) {
            EXPECT_EQ(dd.dwGraphicsMode, 2u);
            EXPECT_EQ(dd.wWhite, 0xFFFF);
        } else {
            // Not a 16-bit desktop: painting must refuse rather than corrupt it.
            EXPECT_EQ(dd.dwGraphicsMode, 0u);
            EXPECT_EQ(dd.wWhite, 0);
        }
        display.reset();
    }
    EXPECT_TRUE(boxes->boxes().empty());
}

TEST_F(DisplayTest, FullScreenWithoutWindowShowsOneBox) {
    base->hWnd = nullptr;
    TDirectDraw &dd = open(1);
    const auto shown = boxes->take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].caption, "DirectDraw");
    EXPECT_EQ(shown[0].text,
              "Unable to set cooperative level of DirectDraw(tm)!\n\nInvalid parameters!");
    // Half open: DirectDraw stays until Exit, no surfaces.
    EXPECT_NE(dd.lpDD, nullptr);
    EXPECT_EQ(dd.lpPrimary, nullptr);
    EXPECT_EQ(dd.lpBack, nullptr);
    EXPECT_EQ(dd.Flip(), 0);
    // Destruction releases what exists, and still writes the device choice.
    EXPECT_EQ(closeAndReadLog(), constructionLog() + kDestructionLog);
    EXPECT_TRUE(readTestValue("TDirectDraw::guidDevice").has_value());
}

TEST_F(DisplayTest, FullScreenOnA24BitScreenShowsOneBox) {
    VELL_NEEDS_TRUE_COLOUR_SCREEN();
    TDirectDraw &dd = open(1);
    const auto shown = boxes->take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].caption, "DirectDraw");
    EXPECT_EQ(shown[0].text, "Unable to set display mode!\n\nOperation not supported!");
    EXPECT_EQ(shown[0].owner, window);
    EXPECT_NE(dd.lpDD, nullptr);
    EXPECT_EQ(dd.lpPrimary, nullptr);
    EXPECT_EQ(dd.dwGraphicsMode, 0u); // defined even though Init never got that far
}

TEST_F(DisplayTest, StoredDeviceIsUsedAndSavedBackUnchanged) {
    const char text[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}";
    ASSERT_TRUE(writeTestValue("TDirectDraw::guidDevice", REG_SZ, text));
    TDirectDraw &dd = open(0);
    GUID expected;
    str2GUID(text, &expected);
    EXPECT_TRUE(IsEqualGUID(dd.guidDevice, expected));
    closeAndReadLog();
    EXPECT_EQ(readTestValue("TDirectDraw::guidDevice")->data, storedGuid(text));
}

TEST_F(DisplayTest, SetDeviceReachesTheRegistryOnlyAtDestruction) {
    const char text[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}";
    ASSERT_TRUE(writeTestValue("TDirectDraw::guidDevice", REG_SZ, text));
    TDirectDraw &dd = open(0);
    EXPECT_EQ(dd.setDevice(GUID_NULL), 1);
    EXPECT_TRUE(IsEqualGUID(dd.guidDevice, GUID_NULL));
    EXPECT_NE(dd.lpPrimary, nullptr);
    EXPECT_EQ(readTestValue("TDirectDraw::guidDevice")->data, storedGuid(text));
    closeAndReadLog();
    EXPECT_EQ(readTestValue("TDirectDraw::guidDevice")->data, storedGuid(kZeroText));
}

TEST_F(DisplayTest, UnreadableRegistryValueMeansTheDefaultDevice) {
    ASSERT_TRUE(vtest::writeTestValue("TDirectDraw::guidDevice", REG_SZ, std::string(300, 'A')));
    TDirectDraw &dd = open(0);
    EXPECT_TRUE(IsEqualGUID(dd.guidDevice, GUID_NULL)); // too long for its buffer: not read
}

TEST_F(DisplayTest, ExitClosesAndInitReopens) {
    VELL_NEEDS_16_BIT_SCREEN();
    TDirectDraw &dd = open(1);
    EXPECT_EQ(dd.Exit(), 1);
    EXPECT_EQ(dd.lpDD, nullptr);
    EXPECT_EQ(dd.lpPrimary, nullptr);
    EXPECT_EQ(dd.lpBack, nullptr);
    EXPECT_EQ(dd.Flip(), 0);
    EXPECT_EQ(dd.Init(), 1);
    EXPECT_NE(dd.lpBack, nullptr);
    EXPECT_EQ(dd.Flip(), 1);
    EXPECT_EQ(dd.RestoreAll(), 0);
}

TEST_F(DisplayTest, ErrorTextsAndTheBoxOwner) {
    TDirectDraw &dd = open(0);
    char text[128];
    dd.getErrorString(static_cast<int>(0x88760231), text);
    EXPECT_STREQ(text, "Not a valid DirectDraw(tm) driver!\n(Wrong GUID!)");
    dd.getErrorString(static_cast<int>(0x88780096), text);
    EXPECT_STREQ(text, "Unknown HRESULT(0x88780096)");

    // The owner is the window handle copied at construction, not a later one.
    HWND other = vtest::createTestWindow();
    base->hWnd = other;
    EXPECT_FALSE(dd.ErrorMessage(static_cast<int>(0x887601C2), "Something failed."));
    const auto shown = boxes->take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text, "Something failed.\n\nSurface lost!");
    EXPECT_EQ(shown[0].owner, window);
    DestroyWindow(other);
}

} // namespace
