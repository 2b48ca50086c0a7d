// Helpers shared by the Windows test programs: message-box capture, the test's registry key,
// files, and a fixture that gives every test its own working directory and a clean key.
#ifndef VELL_TEST_HARNESS_H
#define VELL_TEST_HARNESS_H

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vtest {

HINSTANCE testModule();

// Answers every message box shown on this thread while it lives: records its caption and text and
// closes it with OK at once, so the code under test never blocks.
class MessageBoxCapture {
public:
    struct Box {
        std::string caption;
        std::string text;
    };
    MessageBoxCapture();
    ~MessageBoxCapture();
    MessageBoxCapture(const MessageBoxCapture &) = delete;
    MessageBoxCapture &operator=(const MessageBoxCapture &) = delete;

    const std::vector<Box> &boxes() const { return boxes_; }
    void clear() { boxes_.clear(); }

private:
    static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam);
    HHOOK hook_ = nullptr;
    std::vector<Box> boxes_;
};

// The test program's own key, HKEY_CURRENT_USER\<string IDS_REGKEY>.
struct RegistryValue {
    DWORD type = REG_NONE;
    std::string data; // the bytes as stored; for text types the stored characters, no more
};
std::string testKeyPath();
void removeTestKey();
bool testKeyExists();
bool writeTestValue(const std::string &name, DWORD type, const std::string &data);
bool writeTestDword(const std::string &name, DWORD value);
std::optional<RegistryValue> readTestValue(const std::string &name);

// Whole-file helpers; a file that cannot be opened reads as std::nullopt.
std::optional<std::string> readFile(const std::string &path);
bool writeFile(const std::string &path, const std::string &data);
bool fileExists(const std::string &path);

// A fresh directory under %TEMP%, made the current directory for the object's lifetime and
// removed with everything in it afterwards.
class ScopedWorkDir {
public:
    ScopedWorkDir();
    ~ScopedWorkDir();
    ScopedWorkDir(const ScopedWorkDir &) = delete;
    ScopedWorkDir &operator=(const ScopedWorkDir &) = delete;
    const std::string &path() const { return path_; }

private:
    std::string previous_;
    std::string path_;
};

// Base fixture: its own working directory, no message box left unseen, and the test key removed
// before and after the test.
class VellTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    std::optional<ScopedWorkDir> workDir;
    std::optional<MessageBoxCapture> boxes;
};

} // namespace vtest

#endif
