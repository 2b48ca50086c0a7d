// The application base object against the real string table, registry and file system.
#include "VellBase.h"

#include "harness.h"
#include "test_strings.h"

#include <string>

namespace {

using vtest::fileExists;
using vtest::readFile;
using vtest::testModule;

class BaseTest : public vtest::VellTest {};

bool workDirIsEmpty() {
    WIN32_FIND_DATAA entry;
    HANDLE find = FindFirstFileA("*", &entry);
    bool empty = true;
    if (find != INVALID_HANDLE_VALUE) {
        do {
            const std::string name = entry.cFileName;
            if (name != "." && name != "..") empty = false;
        } while (FindNextFileA(find, &entry));
        FindClose(find);
    }
    return empty;
}

// ---- construction --------------------------------------------------------------------------

TEST_F(BaseTest, ConstructionSetsTheFieldsAndLeavesNoLog) {
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, false);
        EXPECT_EQ(base.hWnd, nullptr);
        EXPECT_EQ(base.hInstance, testModule());
        EXPECT_STREQ(base.lpszAppName, "VellTest");
        EXPECT_TRUE(base.bNoDebug);
        EXPECT_EQ(base.hLogFile, nullptr);
        EXPECT_NE(base.hKey, nullptr);
        for (int i = 0; i < 1024; ++i)
            ASSERT_EQ(base.lpszDebug[i], 0) << "at " << i;
        base.DebugOut("nowhere %d\n", 1);
    }
    EXPECT_TRUE(workDirIsEmpty());
}

TEST_F(BaseTest, MissingNameResourceGivesAnEmptyName) {
    TVellBase base(testModule(), IDS_MISSING, IDS_REGKEY, false);
    ASSERT_NE(base.lpszAppName, nullptr);
    EXPECT_STREQ(base.lpszAppName, "");
}

TEST_F(BaseTest, OverlongNameIsCutAt79Characters) {
    {
        TVellBase base(testModule(), IDS_LONGNAME, IDS_REGKEY, true);
        EXPECT_EQ(std::string(base.lpszAppName), std::string(79, 'N'));
        base.DebugOut("long name\n");
    }
    EXPECT_EQ(readFile(std::string(79, 'N') + ".log"), "long name\n");
}

// ---- the debug log -------------------------------------------------------------------------

TEST_F(BaseTest, LogHoldsExactlyTheFormattedCharacters) {
    {
        TVellBase base(testModule(), IDS_SHORTNAME, IDS_REGKEY, true);
        EXPECT_FALSE(base.bNoDebug);
        EXPECT_NE(base.hLogFile, nullptr);
        base.DebugOut("Initializing %s:\n", "DirectDraw");
        base.DebugOut("  no line break");
        base.DebugOut("%s", "");
        base.DebugOut("%c|%zu|%lld|%.2f|%08x\n", 'x', sizeof(int), 1LL << 40, 1.5, 0xBEEFu);
        // Not shared while open: nobody else can open the file.
        EXPECT_FALSE(readFile("Vell.log").has_value());
    }
    EXPECT_EQ(readFile("Vell.log"),
              "Initializing DirectDraw:\n  no line breakx|4|1099511627776|1.50|0000beef\n");
}

TEST_F(BaseTest, EachRunStartsAFreshLog) {
    ASSERT_TRUE(vtest::writeFile("VellTest.log", "left over from an older run\n"));
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, true);
        base.DebugOut("first run\n");
    }
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, true);
        base.DebugOut("second run\n");
    }
    EXPECT_EQ(readFile("VellTest.log"), "second run\n");
}

TEST_F(BaseTest, SecondInitDebugKeepsTheOpenLog) {
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, true);
        const HANDLE first = base.hLogFile;
        base.DebugOut("before\n");
        base.InitDebug();
        EXPECT_EQ(base.hLogFile, first);
        EXPECT_FALSE(base.bNoDebug);
        base.DebugOut("after\n");
    }
    EXPECT_EQ(readFile("VellTest.log"), "before\nafter\n");
}

TEST_F(BaseTest, InitDebugLaterOpensTheLog) {
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, false);
        base.DebugOut("lost\n");
        base.InitDebug();
        EXPECT_FALSE(base.bNoDebug);
        base.DebugOut("kept\n");
    }
    EXPECT_EQ(readFile("VellTest.log"), "kept\n");
}

TEST_F(BaseTest, LogThatCannotBeCreatedStaysClosedAndSilent) {
    ASSERT_TRUE(CreateDirectoryA("VellTest.log", nullptr)); // the name is taken by a directory
    TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, true);
    EXPECT_TRUE(base.bNoDebug);
    EXPECT_EQ(base.hLogFile, nullptr);
    base.DebugOut("nowhere\n");
}

TEST_F(BaseTest, OverlongEntryIsCutAt1023Characters) {
    const std::string huge(5000, 'a');
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, true);
        base.DebugOut("%s", huge.c_str());
        base.DebugOut("|next\n");
    }
    EXPECT_EQ(readFile("VellTest.log"), std::string(1023, 'a') + "|next\n");
}

// ---- string resources ----------------------------------------------------------------------

TEST_F(BaseTest, GetStringReturnsTheSharedBuffer) {
    TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, false);
    char *first = base.getString(IDS_SHORTNAME);
    ASSERT_EQ(first, base.lpszString);
    EXPECT_STREQ(first, "Vell");
    char *second = base.getString(IDS_OTHERTEXT);
    EXPECT_EQ(second, first);
    EXPECT_STREQ(first, "Other text"); // the first text is gone

    EXPECT_EQ(base.getString(IDS_MISSING), nullptr);
}

TEST_F(BaseTest, GetStringKeepsAtMost1022Characters) {
    TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, false);
    const char *text = base.getString(IDS_LONGTEXT); // 2000 characters in the table
    ASSERT_NE(text, nullptr);
    std::string expected;
    while (expected.size() < 1022)
        expected += "0123456789";
    expected.resize(1022);
    EXPECT_EQ(std::string(text), expected);
}

// ---- the registry key ----------------------------------------------------------------------

TEST_F(BaseTest, KeyIsCreatedAndOpenForReadingAndWriting) {
    ASSERT_FALSE(vtest::testKeyExists());
    {
        TVellBase base(testModule(), IDS_APPNAME, IDS_REGKEY, false);
        ASSERT_NE(base.hKey, nullptr);
        EXPECT_TRUE(vtest::testKeyExists());

        const DWORD seven = 7;
        EXPECT_EQ(RegSetValueExA(base.hKey, "TVellBase::probe", 0, REG_DWORD,
                                 reinterpret_cast<const BYTE *>(&seven), sizeof seven),
                  ERROR_SUCCESS);
        ASSERT_TRUE(vtest::writeTestValue("fromOutside", REG_SZ, "hello"));
        char buffer[16] = {};
        DWORD size = sizeof buffer;
        EXPECT_EQ(RegQueryValueExA(base.hKey, "fromOutside", nullptr, nullptr,
                                   reinterpret_cast<BYTE *>(buffer), &size),
                  ERROR_SUCCESS);
        EXPECT_STREQ(buffer, "hello");
    }
    // The key and its values outlive the object.
    const auto probe = vtest::readTestValue("TVellBase::probe");
    ASSERT_TRUE(probe.has_value());
    EXPECT_EQ(probe->type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(probe->data, std::string("\x07\0\0\0", 4));
}

TEST_F(BaseTest, KeyThatCannotBeOpenedIsNull) {
    for (unsigned id : {IDS_BADREGKEY, IDS_MISSING}) {
        TVellBase base(testModule(), IDS_APPNAME, id, false);
        EXPECT_EQ(base.hKey, nullptr) << "sub-key string " << id;
        DWORD size = 0;
        EXPECT_NE(RegQueryValueExA(base.hKey, "anything", nullptr, nullptr, nullptr, &size),
                  ERROR_SUCCESS);
    } // and the destructor closes nothing it does not have
}

} // namespace
