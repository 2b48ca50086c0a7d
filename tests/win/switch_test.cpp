// The player switches a running full-screen client away and back, as Alt+Tab and the taskbar do:
// a window of this (another) program takes the foreground, then the client's window is restored
// and activated. The clients are the README's (VellMinimal.exe) and the demo (VellDemo.exe), run
// from beside this program; what they show is read back from the screen, what they play from the
// sound server's monitor.
#include "harness.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;
using Frame = std::vector<std::uint32_t>;

// What the screen shows at the top left, where the 640x480 display is.
Frame screen() {
    Frame pixels(640 * 480);
    HDC desktop = GetDC(nullptr), memory = CreateCompatibleDC(desktop);
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, 640, -480, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void *bits = nullptr;
    HBITMAP dib = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, dib);
    BitBlt(memory, 0, 0, 640, 480, desktop, 0, 0, SRCCOPY);
    GdiFlush();
    std::copy_n(static_cast<std::uint32_t *>(bits), pixels.size(), pixels.begin());
    SelectObject(memory, old);
    DeleteObject(dib);
    DeleteDC(memory);
    ReleaseDC(nullptr, desktop);
    return pixels;
}

// Pumps this program's messages and asks `done` about every 50 ms, until it says yes or `seconds`
// pass.
template <class Done> bool waitFor(Done done, double seconds) {
    for (DWORD start = GetTickCount(); GetTickCount() - start < seconds * 1000; Sleep(50)) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&message);
        if (done()) return true;
    }
    return false;
}

// A frame other than `from` that the screen has held for a second: the client has drawn and holds
// still (a running scene changes every frame).
Frame steadyFrame(const Frame &from) {
    Frame previous = screen(), now;
    DWORD since = GetTickCount();
    waitFor(
        [&] {
            if ((now = screen()) != previous || now == from) {
                previous = now;
                since = GetTickCount();
            }
            return GetTickCount() - since >= 1000;
        },
        30);
    return now;
}

// The loudest sample the default capture source (the sound server's monitor) hears while `action`
// runs and for `seconds` after it, recorded at 22050 Hz, 16-bit mono; -1 when nothing can record.
template <class Action> int loudestWhile(Action action, double seconds) {
    WAVEFORMATEX format = {WAVE_FORMAT_PCM, 1, 22050, 44100, 2, 16, 0};
    DSCBUFFERDESC desc = {sizeof desc, 0, 4 * 44100, 0, &format, 0, nullptr};
    int peak = -1;
    // A new capture stream can take a moment to deliver, more so just after another one closed
    // or on a busy machine: it gets five seconds to deliver its first 50 ms, and a stream that
    // does not is made anew, three times at most, before `action` runs.
    for (int attempt = 0; attempt < 3 && peak < 0; ++attempt) {
        IDirectSoundCapture *capture = nullptr;
        IDirectSoundCaptureBuffer *buffer = nullptr;
        DWORD captured = 0, readable = 0, n1 = 0, n2 = 0;
        if (SUCCEEDED(DirectSoundCaptureCreate(nullptr, &capture, nullptr)) &&
            SUCCEEDED(capture->CreateCaptureBuffer(&desc, &buffer, nullptr)) &&
            SUCCEEDED(buffer->Start(0))) {
            for (int waited = 0; waited < 5000 && readable < 2205; waited += 10) {
                Sleep(10);
                buffer->GetCurrentPosition(&captured, &readable);
            }
        }
        if (readable >= 2205) {
            action();
            Sleep(static_cast<DWORD>(seconds * 1000));
            buffer->GetCurrentPosition(&captured, &readable);
            void *p1 = nullptr, *p2 = nullptr;
            if (SUCCEEDED(buffer->Lock(0, readable, &p1, &n1, &p2, &n2, 0))) {
                const auto *x = static_cast<std::int16_t *>(p1);
                if (n1 >= 2) peak = 0;
                for (DWORD i = 0; i < n1 / 2; ++i)
                    peak = std::max(peak, std::abs(int(x[i])));
                buffer->Unlock(p1, n1, p2, n2);
            }
        }
        if (buffer != nullptr) {
            buffer->Stop();
            buffer->Release();
        }
        if (capture != nullptr) capture->Release();
    }
    return peak;
}

class SwitchAway : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("vellswitch-" + std::to_string(GetCurrentProcessId()));
        fs::create_directories(dir);
        fs::copy_file(vtest::besideProgram("blip.wav"), dir / "blip.wav",
                      fs::copy_options::overwrite_existing);
    }
    void TearDown() override {
        if (client.hProcess != nullptr) {
            if (WaitForSingleObject(client.hProcess, 0) == WAIT_TIMEOUT)
                TerminateProcess(client.hProcess, 99);
            CloseHandle(client.hProcess);
            CloseHandle(client.hThread);
        }
        std::error_code ignored;
        fs::remove_all(dir, ignored);
    }

    // Starts the client with its working directory in a fresh folder and waits for its window.
    void start(const char *program, const char *windowClass, const std::string &arguments) {
        desktop = screen();
        std::string line = "\"" + vtest::besideProgram(program).string() + "\" " + arguments;
        STARTUPINFOA info = {};
        info.cb = sizeof info;
        ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                   dir.string().c_str(), &info, &client))
            << program << ": error " << GetLastError();
        ASSERT_TRUE(waitFor([&] { return (window = FindWindowA(windowClass, nullptr)); }, 30))
            << program << " made no window";
    }
    // Another window takes the foreground for a second and a half; then the client's window is
    // restored and brought to the front, the taskbar's way. Returns what the screen showed while
    // the client was away.
    Frame switchAwayAndBack() {
        HWND other =
            CreateWindowExA(WS_EX_TOPMOST, "STATIC", "Another program", WS_POPUP | WS_VISIBLE, 100,
                            100, 200, 100, nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
        SetForegroundWindow(other);
        EXPECT_TRUE(waitFor([&] { return IsIconic(window) != 0; }, 5))
            << "the client's window was not minimised";
        waitFor([] { return false; }, 1.5);
        const Frame away = screen();
        DestroyWindow(other);
        ShowWindow(window, SW_RESTORE);
        SetForegroundWindow(window);
        return away;
    }

    // Switches away and back: the screen changes, then shows `before` again.
    void expectBack(const Frame &before) {
        EXPECT_NE(switchAwayAndBack(), before) << "the picture stayed on the screen";
        EXPECT_TRUE(waitFor([&] { return screen() == before; }, 15)) << "it did not come back";
    }

    bool titleSays(const char *words) { // the demo's title tells what it does
        return waitFor(
            [&] {
                char text[256] = {};
                GetWindowTextA(window, text, sizeof text);
                return std::strstr(text, words) != nullptr;
            },
            30);
    }

    // The client ends, closed as the window's close box would, and its log (VellDemo.log in its
    // working directory, kept in `written`) ends with `last`: under Wine a program that crashes
    // ends with its debugger's exit code, 0.
    void end(const std::string &last, bool close = true) {
        if (close) PostMessageA(window, WM_CLOSE, 0, 0);
        ASSERT_EQ(WaitForSingleObject(client.hProcess, 20000), WAIT_OBJECT_0);
        DWORD status = 1;
        GetExitCodeProcess(client.hProcess, &status);
        EXPECT_EQ(status, 0u);
        written = vtest::readFile((dir / "VellDemo.log").string());
        EXPECT_EQ(written.substr(written.size() - std::min(written.size(), last.size())), last)
            << written;
    }

    fs::path dir;
    std::string written; // the client's log, once it has ended
    Frame desktop;       // the screen before the client started
    PROCESS_INFORMATION client = {};
    HWND window = nullptr;
};

void press(WORD key) { // a key press as the keyboard makes it, to the window in front
    INPUT keys[2] = {};
    keys[0].type = keys[1].type = INPUT_KEYBOARD;
    keys[0].ki.wVk = keys[1].ki.wVk = key;
    keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(2, keys, sizeof keys[0]);
}

TEST_F(SwitchAway, TheReadmeClientComesBackAsItWasAndPlays) {
    start("VellMinimal.exe", "MinimalClient", "");
    const Frame before = steadyFrame(desktop);
    ASSERT_NE(before, desktop) << "the client shows no scene";
    expectBack(before);
    EXPECT_GT(loudestWhile([] { press(VK_SPACE); }, 1.5), 500) << "no blip after the return";
    end("De-initializing DirectDraw:\n  Releasing DirectDraw interfaces:\n  done.\ndone.\n");
}

// By hand the demo runs three seconds of its scene, then asks for the player's name on its last
// frame; the player switches away twice, once with the scene paused and once during the name
// entry.
TEST_F(SwitchAway, TheDemoComesBackPausedAndInItsNameEntry) {
    start("VellDemo.exe", "VellDemoWindow", "");
    PostMessageA(window, WM_KEYDOWN, 'P', 0); // pause: the frame holds still
    ASSERT_TRUE(titleSays(" - paused"));
    expectBack(steadyFrame(desktop));
    // Going on, rocks leave the screen and the ship turns: whooshes and blips.
    EXPECT_GT(loudestWhile([&] { PostMessageA(window, WM_KEYDOWN, 'P', 0); }, 3), 500);
    ASSERT_TRUE(titleSays(" - your name?"));
    const Frame asked = steadyFrame(desktop);
    PostMessageA(window, WM_CHAR, 'A', 0);
    expectBack(steadyFrame(asked)); // "Your name:" and "PlayerA_"
    for (char key : {'b', '\r'})
        PostMessageA(window, WM_CHAR, static_cast<WPARAM>(key), 0);
    end("VellDemo: done\n", false);
    for (const char *line : {"VellDemo: back from another program", "the player is PlayerAb\n"})
        EXPECT_NE(written.find(line), std::string::npos) << written;
}

} // namespace
