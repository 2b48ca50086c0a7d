// What the Windows test programs share: one fixture that gives each test its own working directory,
// a clean registry key and a record of the message boxes shown, and makes the client's objects on
// demand; helpers for the key, files and the platform's device lists.
#ifndef VELL_TEST_HARNESS_H
#define VELL_TEST_HARNESS_H

#include "VellBase.h"

#include "test_strings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace vtest {

const char kOtherGuid[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}"; // bytes in memory order
const GUID kOther = {0x67452301, 0xAB89, 0xEFCD, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};

inline std::string keyPath() { // HKEY_CURRENT_USER\<string IDS_REGKEY>, the test program's key
    char path[512] = {};
    LoadStringA(GetModuleHandleA(nullptr), IDS_REGKEY, path, sizeof path);
    return path;
}

inline bool writeValue(const char *name, const std::string &bytes, DWORD type = REG_SZ) {
    return RegSetKeyValueA(HKEY_CURRENT_USER, keyPath().c_str(), name, type, bytes.data(),
                           static_cast<DWORD>(bytes.size())) == ERROR_SUCCESS;
}

// A value of the key: a REG_DWORD in decimal, a REG_SZ as it is; "" when missing or of another
// type.
inline std::string readValue(const char *name) {
    char data[512] = {};
    DWORD type = REG_NONE, size = sizeof data;
    RegGetValueA(HKEY_CURRENT_USER, keyPath().c_str(), name, RRF_RT_REG_DWORD | RRF_RT_REG_SZ,
                 &type, data, &size);
    return type == REG_DWORD ? std::to_string(*reinterpret_cast<DWORD *>(data)) : data;
}

inline std::string readFile(const std::string &path) { // "" when it cannot be opened
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline bool writeFile(const std::string &path, const std::string &bytes) {
    return static_cast<bool>(std::ofstream(path, std::ios::binary) << bytes);
}

inline std::filesystem::path besideProgram(const char *name) { // in this program's folder
    char program[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, program, MAX_PATH);
    return std::filesystem::path(program).parent_path() / name;
}
inline std::string dataFile(const char *name) { // test data, in "data" beside the program
    return (besideProgram("data") / name).string();
}

// Wave files: chunks, a PCM "fmt " chunk and the RIFF form around them.
inline std::string little(std::uint32_t value, int bytes) { // as Windows stores numbers
    return std::string(reinterpret_cast<const char *>(&value), bytes);
}

// A chunk: identifier, declared size (by default the payload's), payload padded to even.
inline std::string chunk(const char *id, const std::string &payload, std::int64_t declared = -1) {
    return id + little(static_cast<std::uint32_t>(declared < 0 ? payload.size() : declared), 4) +
           payload + std::string(payload.size() % 2, '\0');
}

// A "fmt " chunk of PCM samples.
inline std::string format(DWORD rate, WORD channels, WORD bits, std::int64_t declared = -1) {
    const WORD align = static_cast<WORD>(channels * bits / 8);
    const PCMWAVEFORMAT pcm = {{WAVE_FORMAT_PCM, channels, rate, rate * align, align}, bits};
    return chunk("fmt ", std::string(reinterpret_cast<const char *>(&pcm), sizeof pcm), declared);
}

inline std::string riff(const std::string &chunks, const char *form = "WAVE") {
    return "RIFF" + little(static_cast<std::uint32_t>(4 + chunks.size()), 4) + form + chunks;
}

inline int screenDepth() { // bits per pixel of the X screen
    HDC screen = GetDC(nullptr);
    const int bits = GetDeviceCaps(screen, BITSPIXEL);
    ReleaseDC(nullptr, screen);
    return bits;
}

// Every pixel of a 16-bit surface, row by row; with `fill` each is first set to a pattern.
inline std::vector<std::uint16_t> pixels(IDirectDrawSurface2 *s, bool fill = false) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    std::vector<std::uint16_t> all;
    if (s->Lock(nullptr, &desc, DDLOCK_WAIT, nullptr) != DD_OK) {
        ADD_FAILURE() << "the surface cannot be locked";
        return all;
    }
    for (DWORD y = 0; y < desc.dwHeight; ++y) {
        auto *row = reinterpret_cast<std::uint16_t *>(static_cast<char *>(desc.lpSurface) +
                                                      y * desc.lPitch);
        for (DWORD x = 0; x < desc.dwWidth; ++x)
            all.push_back(fill ? row[x] = static_cast<std::uint16_t>(all.size() * 977 + y)
                               : row[x]);
    }
    s->Unlock(nullptr);
    return all;
}

inline HWND createWindow() {
    return CreateWindowExA(0, "STATIC", "VellBase test", WS_POPUP | WS_VISIBLE, 0, 0, 640, 480,
                           nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
}

// The devices as the platform enumerates them or as a device object lists them, one line each.
template <class Id, class Text>
BOOL WINAPI addDevice(Id *guid, Text description, Text driver, void *to) {
    const GUID id = guid != nullptr ? *guid : GUID_NULL;
    *static_cast<std::string *>(to) += std::string(reinterpret_cast<const char *>(&id), sizeof id) +
                                       description + "\n" + driver + "\n";
    return TRUE;
}

// tools/test.sh sets VELL_EXPECT_SOUND=1 where it started a sound server: sound must work there.
inline bool soundExpected() {
    const char *expected = std::getenv("VELL_EXPECT_SOUND");
    return expected != nullptr && *expected == '1';
}

// Checks a device object's list against the platform's enumeration; returns what the object's
// construction logs: "Initializing DirectDraw:\n", "  Enumerating %s:\n  done.\n" for each device,
// "done.\n".
inline std::string expectDeviceList(const structDeviceInfo *record, bool sound) {
    std::string platform, object,
        log = sound ? "Initializing DirectSound:\n" : "Initializing DirectDraw:\n";
    sound ? DirectSoundEnumerateA(addDevice<GUID, LPCSTR>, &platform)
          : DirectDrawEnumerateA(addDevice<GUID, LPSTR>, &platform);
    for (; record != nullptr; record = record->lpNext) {
        addDevice<const GUID, char *>(&record->guid, record->lpszDescription,
                                      record->lpszDriverName, &object);
        log += std::string("  Enumerating ") + record->lpszDescription + ":\n  done.\n";
    }
    // An empty list proves little; only a machine without a sound server may have no sound device.
    if (!sound || soundExpected()) {
        EXPECT_NE(platform, "");
    }
    EXPECT_EQ(object, platform);
    return log + "done.\n";
}

struct Box {
    std::string caption, text;
    HWND owner;
};
inline std::vector<Box> *recordedBoxes = nullptr;

// Every message box shown during a test is recorded and closed with OK at once; one the test does
// not check with expectBox (or clear from `boxes`) fails it.
class VellTest : public ::testing::Test {
protected:
    void SetUp() override {
        // A crash ends the program instead of waiting for a click on an error dialog.
        SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
        RegDeleteTreeA(HKEY_CURRENT_USER, keyPath().c_str());
        static int serial = 0;
        dir_ =
            std::filesystem::temp_directory_path() /
            ("velltest-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++serial));
        std::filesystem::remove_all(dir_); // left by a crashed program that had this process id
        std::filesystem::create_directory(dir_);
        std::filesystem::current_path(dir_);
        recordedBoxes = &boxes;
        hook_ = SetWindowsHookExA(WH_CBT, hook, nullptr, GetCurrentThreadId());
    }
    void TearDown() override {
        closeAndReadLog();
        if (window != nullptr) DestroyWindow(window);
        UnhookWindowsHookEx(hook_);
        recordedBoxes = nullptr;
        for (const Box &box : boxes)
            ADD_FAILURE() << "unexpected message box \"" << box.caption << "\": " << box.text;
        std::filesystem::current_path(dir_.parent_path());
        std::filesystem::remove_all(dir_); // throws while a file in it is still open
        RegDeleteTreeA(HKEY_CURRENT_USER, keyPath().c_str());
    }

    // The client as the library expects one: a base object (application "VellTest", its log on)
    // with a visible window in its hWnd, made on first use.
    TVellBase &client() {
        if (base) return *base;
        base.emplace(GetModuleHandleA(nullptr), IDS_APPNAME, IDS_REGKEY, true);
        if (window == nullptr) window = createWindow();
        base->hWnd = window;
        return *base;
    }
    TDirectDraw &openDisplay(unsigned long mode = 1) { return display.emplace(&client(), mode); }
    TDirectSound &openSound() { return sound.emplace(&client()); }

    // Destroys the device objects, then the base object; returns the log.
    std::string closeAndReadLog() {
        display.reset();
        sound.reset();
        base.reset();
        return readFile("VellTest.log");
    }

    // Exactly one box was shown since the last check, and this is it.
    void expectBox(const char *caption, const std::string &text, HWND owner) {
        ASSERT_EQ(boxes.size(), 1u) << "expected one box: " << text;
        EXPECT_EQ(boxes[0].caption, caption);
        EXPECT_EQ(boxes[0].text, text);
        EXPECT_EQ(boxes[0].owner, owner);
        boxes.clear();
    }

    std::optional<TVellBase> base;
    std::optional<TDirectDraw> display;
    std::optional<TDirectSound> sound;
    HWND window = nullptr;
    std::vector<Box> boxes;

private:
    static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam) {
        HWND box = reinterpret_cast<HWND>(wParam);
        char className[16] = {}, caption[256] = {}, text[2048] = {};
        if (code == HCBT_ACTIVATE && recordedBoxes != nullptr &&
            GetClassNameA(box, className, sizeof className) && !std::strcmp(className, "#32770")) {
            GetWindowTextA(box, caption, sizeof caption);
            GetDlgItemTextA(box, 0xFFFF, text, sizeof text); // the box's static text
            recordedBoxes->push_back({caption, text, GetWindow(box, GW_OWNER)});
            PostMessageA(box, WM_COMMAND, IDOK, 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }
    HHOOK hook_ = nullptr;
    std::filesystem::path dir_;
};

// Full screen on the 16-bit X screen, its back buffer 5:6:5. Surfaces made with `make` are
// released after the test.
class ScreenTest : public VellTest {
protected:
    void SetUp() override {
        VellTest::SetUp();
        if (screenDepth() != 16) GTEST_SKIP() << "needs the 16-bit X screen";
        ASSERT_NE(openDisplay().lpBack, nullptr);
    }
    void TearDown() override {
        for (IDirectDrawSurface2 *s : surfaces)
            s->Release();
        VellTest::TearDown();
    }
    template <class... Args> IDirectDrawSurface2 *make(Args &&...args) {
        IDirectDrawSurface2 *s = nullptr;
        EXPECT_TRUE(display->CreateSurface(s, args...));
        if (s != nullptr) surfaces.push_back(s);
        return s;
    }
    IDirectDrawSurface2 *make555(DWORD width, DWORD height) { // an off-screen 5:5:5 surface
        DDSURFACEDESC desc = {};
        desc.dwSize = sizeof desc;
        desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
        desc.dwWidth = width;
        desc.dwHeight = height;
        desc.ddpfPixelFormat = {
            sizeof desc.ddpfPixelFormat, DDPF_RGB, 0, {16}, {0x7C00}, {0x03E0}, {0x001F}, {0}};
        return make(desc);
    }
    std::vector<IDirectDrawSurface2 *> surfaces;
};

} // namespace vtest

// A crash ends the program at once with exit code 3 and a line that says so. Without this, Wine
// starts its debugger, which ends the program with exit code 0: ctest would count a passed test.
inline LONG WINAPI reportCrash(EXCEPTION_POINTERS *crash) {
    std::fprintf(stderr, "crashed: exception 0x%08lx at %p\n",
                 crash->ExceptionRecord->ExceptionCode, crash->ExceptionRecord->ExceptionAddress);
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}
inline const bool kCrashesFail = (SetUnhandledExceptionFilter(reportCrash), true);

// A program whose cases all passed while some skipped themselves (a device this machine lacks)
// ends with 77, which ctest counts as skipped rather than passed.
class SkippedExitsWith77 : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest &run) override {
        if (run.Passed() && run.skipped_test_count() > 0)
            std::atexit([] {
                std::fflush(nullptr);
                std::_Exit(77);
            });
    }
};
inline const bool kSkippedExitsWith77 =
    (testing::UnitTest::GetInstance()->listeners().Append(new SkippedExitsWith77), true);

#endif
