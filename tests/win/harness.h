// Helpers shared by the Windows test programs: message-box capture, the test's registry key,
// files, and a fixture that gives every test its own working directory and a clean key.
#ifndef VELL_TEST_HARNESS_H
#define VELL_TEST_HARNESS_H

#include "VellBase.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
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
        HWND owner = nullptr;
    };
    MessageBoxCapture();
    ~MessageBoxCapture();
    MessageBoxCapture(const MessageBoxCapture &) = delete;
    MessageBoxCapture &operator=(const MessageBoxCapture &) = delete;

    const std::vector<Box> &boxes() const { return boxes_; }
    void clear() { boxes_.clear(); }
    std::vector<Box> take() { return std::exchange(boxes_, {}); }

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

// A visible 640x480 pop-up window of the test program's own class; destroy it with DestroyWindow.
HWND createTestWindow();

// Full path of a file in the test data folder copied beside the test program.
std::string dataFile(const std::string &name);

// Bits per pixel of the X screen the program runs on.
int screenDepth();

// A surface locked whole for the object's lifetime, to read and write its pixels directly.
class SurfaceLock {
public:
    explicit SurfaceLock(IDirectDrawSurface2 *surface);
    ~SurfaceLock();
    SurfaceLock(const SurfaceLock &) = delete;
    SurfaceLock &operator=(const SurfaceLock &) = delete;

    bool ok() const { return locked_; }
    HRESULT result() const { return result_; }
    int width() const { return static_cast<int>(desc_.dwWidth); }
    int height() const { return static_cast<int>(desc_.dwHeight); }
    int bits() const { return static_cast<int>(desc_.ddpfPixelFormat.dwRGBBitCount); }
    std::uint16_t &at(int x, int y); // 16-bit surfaces only

private:
    IDirectDrawSurface2 *surface_;
    DDSURFACEDESC desc_;
    HRESULT result_;
    bool locked_ = false;
};

// One pixel of a 16-bit surface, or 0xFFFFFFFF when it cannot be locked.
std::uint32_t pixel16(IDirectDrawSurface2 *surface, int x, int y);

// Base fixture: its own working directory, the test key removed before and after the test, and
// every message box captured. Boxes still recorded at the end fail the test: a test that expects
// boxes checks them and calls boxes->clear().
class VellTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    std::optional<ScopedWorkDir> workDir;
    std::optional<MessageBoxCapture> boxes;
};

// A client as the library expects one: a base object (application name "VellTest", its log on)
// with a test window stored in its hWnd. Device fixtures derive from it and destroy their device in
// closeDevice, before the base object goes.
class ClientTest : public VellTest {
protected:
    void SetUp() override;
    void TearDown() override;
    virtual void closeDevice() {}

    // Destroys the device and the base object; returns the log.
    std::string closeAndReadLog();

    std::optional<TVellBase> base;
    HWND window = nullptr;
};

// A device as the platform enumerates it, and what the library's list and log should then hold.
struct EnumeratedDevice {
    GUID guid;
    std::string description, driver;
};
std::vector<EnumeratedDevice> displayDevices();
std::vector<EnumeratedDevice> soundDevices();
// "Initializing <what>:\n", the devices' "  Enumerating %s:\n  done.\n", "done.\n".
std::string constructionLog(const char *what, const std::vector<EnumeratedDevice> &devices);
void expectDeviceList(const structDeviceInfo *list, const std::vector<EnumeratedDevice> &devices);

} // namespace vtest

#endif
