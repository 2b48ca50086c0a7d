// The test helpers themselves: later suites rely on them to see message boxes, registry values and
// files, so they are checked against the platform once here.
#include "harness.h"

#include "test_strings.h"

namespace {

class HarnessTest : public vtest::VellTest {};

TEST_F(HarnessTest, MessageBoxesAreRecordedAndClosed) {
    EXPECT_EQ(MessageBoxA(nullptr, "First line\n\nSecond line", "Caption", MB_OK | MB_ICONERROR),
              IDOK);
    EXPECT_EQ(MessageBoxA(nullptr, "Another", "DirectDraw", MB_OK), IDOK);
    ASSERT_EQ(boxes->boxes().size(), 2u);
    EXPECT_EQ(boxes->boxes()[0].caption, "Caption");
    EXPECT_EQ(boxes->boxes()[0].text, "First line\n\nSecond line");
    EXPECT_EQ(boxes->boxes()[1].caption, "DirectDraw");
    EXPECT_EQ(boxes->boxes()[1].text, "Another");
    boxes->clear();
}

TEST_F(HarnessTest, RegistryValuesRoundTripAndTheKeyIsRemoved) {
    EXPECT_EQ(vtest::testKeyPath(), "Software\\VellBase Tests\\base_tests");
    ASSERT_TRUE(vtest::writeTestValue("text", REG_SZ, std::string("abc", 3)));
    ASSERT_TRUE(vtest::writeTestDword("number", 0x12345678));
    const auto text = vtest::readTestValue("text");
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->type, static_cast<DWORD>(REG_SZ));
    // Counted without its terminating zero, the text is still stored with it: the registry adds
    // the zero when the byte after the counted ones is zero, as Windows NT always has.
    EXPECT_EQ(text->data, std::string("abc", 4));
    const auto number = vtest::readTestValue("number");
    ASSERT_TRUE(number.has_value());
    EXPECT_EQ(number->data, std::string("\x78\x56\x34\x12", 4));
    EXPECT_FALSE(vtest::readTestValue("missing").has_value());

    vtest::removeTestKey();
    EXPECT_FALSE(vtest::testKeyExists());
}

TEST(Harness, WorkDirIsPrivateAndRemoved) {
    std::string path;
    {
        vtest::ScopedWorkDir dir;
        path = dir.path();
        ASSERT_FALSE(path.empty());
        char current[MAX_PATH] = {};
        GetCurrentDirectoryA(MAX_PATH, current);
        EXPECT_STREQ(current, path.c_str());
        ASSERT_TRUE(vtest::writeFile("inside.txt", "data"));
        ASSERT_TRUE(CreateDirectoryA("sub", nullptr));
        ASSERT_TRUE(vtest::writeFile("sub\\deeper.txt", "data"));
        EXPECT_EQ(vtest::readFile(path + "\\inside.txt"), "data");
    }
    EXPECT_FALSE(vtest::fileExists(path));
}

} // namespace
