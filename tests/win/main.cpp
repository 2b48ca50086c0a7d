// Entry point of the Windows test programs. A crash must end the program, not wait for a click
// on an error dialog.
#include <windows.h>

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
