// The application base object against the real string table, registry and file system.
#include "harness.h"

using vtest::readFile;
using BaseTest = vtest::VellTest;

const HINSTANCE kModule = GetModuleHandleA(nullptr);

TEST_F(BaseTest, WithoutALogNothingIsWrittenUntilInitDebug) {
    {
        TVellBase base(kModule, IDS_APPNAME, IDS_REGKEY, false);
        EXPECT_EQ(base.hLogFile, nullptr);
        base.DebugOut("lost %d\n", 1);
        EXPECT_TRUE(std::filesystem::is_empty("."));
        base.InitDebug();
        base.DebugOut("kept\n");
    }
    EXPECT_EQ(readFile("VellTest.log"), "kept\n");
    std::filesystem::create_directory("Vell.log"); // a log that cannot be created stays closed
    TVellBase base(kModule, IDS_SHORTNAME, IDS_REGKEY, true);
    EXPECT_TRUE(base.bNoDebug);
    EXPECT_EQ(base.hLogFile, nullptr);
}

TEST_F(BaseTest, LogHoldsExactlyTheFormattedCharacters) {
    std::ofstream("Vell.log") << "left over from an earlier run\n";
    {
        TVellBase base(kModule, IDS_SHORTNAME, IDS_REGKEY, true);
        const HANDLE log = base.hLogFile;
        base.DebugOut("Initializing %s:\n", "DirectDraw");
        base.DebugOut("  no line break");
        base.DebugOut("%s", "");
        base.InitDebug(); // again: the open log stays in use
        EXPECT_EQ(base.hLogFile, log);
        base.DebugOut("%c|%zu|%lld|%.2f|%08x\n", 'x', sizeof(int), 1LL << 40, 1.5, 0xBEEFu);
        base.DebugOut("%s", std::string(5000, 'a').c_str()); // cut at 1023 characters
        base.DebugOut("|next\n");
        EXPECT_EQ(readFile("Vell.log"), "") << "the open log is shared";
    }
    const std::string formatted =
        "Initializing DirectDraw:\n  no line breakx|4|1099511627776|1.50|";
    EXPECT_EQ(readFile("Vell.log"), formatted + "0000beef\n" + std::string(1023, 'a') + "|next\n");
}

TEST_F(BaseTest, NamesStringsAndKeys) {
    {
        TVellBase base(kModule, IDS_LONGNAME, IDS_REGKEY, true); // 100 characters
        EXPECT_EQ(std::string(base.lpszAppName), std::string(79, 'N'));
        base.DebugOut("named");
        char *text = base.getString(IDS_SHORTNAME);
        EXPECT_EQ(text, base.lpszString);
        EXPECT_EQ(base.getString(IDS_APPNAME), text);
        EXPECT_STREQ(text, "VellTest"); // the first text is gone
        EXPECT_EQ(base.getString(IDS_MISSING), nullptr);
        std::string digits; // the first 1022 of the 2000 characters
        for (int i = 0; i < 1022; ++i)
            digits += static_cast<char>('0' + i % 10);
        EXPECT_STREQ(base.getString(IDS_LONGTEXT), digits.c_str());
    }
    EXPECT_EQ(readFile(std::string(79, 'N') + ".log"), "named");
    EXPECT_STREQ(TVellBase(kModule, IDS_MISSING, IDS_REGKEY, false).lpszAppName, "");
    // The key itself is checked through the values the device objects keep in it.
    for (unsigned id : {IDS_BADREGKEY, IDS_MISSING}) // refused by the registry, or missing
        EXPECT_EQ(TVellBase(kModule, IDS_APPNAME, id, false).hKey, nullptr) << "sub-key " << id;
}
