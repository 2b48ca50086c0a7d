// Fonts read from files with their boxes, printing on 5:6:5 and 5:5:5 surfaces, and the line
// editor driven by keys posted while it runs; every result is read back from the surfaces.
#include "display_fixture.h"
#include "tests/host/font_bytes.h"
#include "text/print_loop.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace {

using vtest::SurfaceLock;

constexpr int charWidth(int code) {
    return 2 + code % 4;
}

// Codes 32 .. 31 + chars, charWidth(code) columns each, `rows` rows of random coverage, and three
// columns after the last marker that belong to no character.
vtest::FontPicture fontPicture(int chars, std::uint32_t rows) {
    std::mt19937 rng(chars);
    vtest::FontPicture p;
    for (int c = 32; c < 32 + chars; ++c)
        p.width += charWidth(c);
    p = vtest::randomPicture(rng, p.width + 3, rows, 1);
    p.spacing.assign(p.width, 0);
    for (int c = 32, end = 0; c < 32 + chars; ++c)
        p.spacing[end += charWidth(c)] = 1;
    return p;
}
const vtest::FontPicture kBig = fontPicture(197, 9);  // codes 32 to 0xE4
const vtest::FontPicture kSmall = fontPicture(19, 6); // codes 32 to 50: no letters, no '_'

class TextTest : public vtest::DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        VELL_NEEDS_16_BIT_SCREEN();
        ASSERT_NE(open(1).lpBack, nullptr);
        ASSERT_TRUE(writeFont("big.bmp", vtest::fontFileBytes(kBig, false)));
        ASSERT_TRUE(writeFont("small.bmp", vtest::fontFileBytes(kSmall, true)));
        font.emplace("big.bmp");
    }
    void TearDown() override {
        font.reset();
        DisplayTest::TearDown();
    }
    static bool writeFont(const char *name, const std::vector<std::uint8_t> &bytes) {
        return vtest::writeFile(name, std::string(bytes.begin(), bytes.end()));
    }

    // Fills the surface with random pixels; returns them, row by row.
    std::vector<std::uint16_t> scramble(IDirectDrawSurface2 *surface) {
        SurfaceLock lock(surface);
        EXPECT_TRUE(lock.ok());
        std::vector<std::uint16_t> pixels;
        for (int y = 0; y < lock.height(); ++y)
            for (int x = 0; x < lock.width(); ++x)
                pixels.push_back(lock.at(x, y) = static_cast<std::uint16_t>(rng()));
        return pixels;
    }
    static void expectPixels(IDirectDrawSurface2 *surface, const std::vector<std::uint16_t> &want) {
        SurfaceLock lock(surface);
        ASSERT_TRUE(lock.ok());
        for (int y = 0; y < lock.height(); ++y)
            for (int x = 0; x < lock.width(); ++x)
                ASSERT_EQ(lock.at(x, y), want[y * lock.width() + x]) << "at " << x << "," << y;
    }
    // What the printing rule makes of pixels (w wide).
    static void printOn(std::vector<std::uint16_t> &pixels, int w, TDirectFont &f, int x, int y,
                        const char *text, std::uint16_t colour, std::uint8_t t, DWORD mode) {
        vell::FontCell cells[vell::kMaxFontChars];
        for (unsigned k = 0; k < f.wCharCount; ++k)
            cells[k] = {f.lpSpacings[k][0], f.lpSpacings[k][1]};
        const int h = static_cast<int>(pixels.size()) / w;
        vell::printGlyphs({reinterpret_cast<std::uint8_t *>(pixels.data()), 2 * w, w, h},
                          {f.lpFontData, f.dwWidth, f.dwHeight, cells, f.wCharCount}, x, y,
                          reinterpret_cast<const unsigned char *>(text), colour, t, mode);
    }

    std::mt19937 rng{3};
    std::optional<TDirectFont> font;
};

TEST_F(TextTest, FontFilesAndTheirBoxes) {
    EXPECT_EQ(font->dwWidth, kBig.width);
    EXPECT_EQ(font->dwHeight, 9u);
    EXPECT_EQ(std::memcmp(font->getFontData(), kBig.glyphs.data(), kBig.glyphs.size()), 0);
    EXPECT_EQ(font->wCharCount, 197);
    EXPECT_EQ(font->getCharPos('#'), charWidth(32) + charWidth(33) + charWidth(34));
    EXPECT_EQ(font->getCharWidth(0xE4), charWidth(0xE4));
    EXPECT_EQ(font->getCharWidth(0xE5), 0);
    EXPECT_EQ(font->getCharWidth('\n'), 0);
    const unsigned char twoLines[] = "AB\nXY";
    EXPECT_EQ(font->getStringWidth(twoLines), charWidth('A') + charWidth('B'));

    auto fourBits = vtest::fontFileBytes(kSmall, false), cut = fourBits;
    fourBits[28] = 4;
    cut.pop_back();
    const struct {
        const char *name;
        std::vector<std::uint8_t> bytes;
        const char *box;
    } failures[] = {{"none.bmp", {}, "Falscher Font-Name!"},
                    {"four.bmp", fourBits, "Falsches Font-Format!"},
                    {"cut.bmp", cut, "Falsches Font-Format!"}};
    for (const auto &f : failures) {
        if (!f.bytes.empty()) {
            ASSERT_TRUE(writeFont(f.name, f.bytes));
        }
        TDirectFont failed(f.name);
        const auto shown = boxes->take();
        ASSERT_EQ(shown.size(), 1u) << f.name;
        EXPECT_EQ(shown[0].caption, "DirectFont");
        EXPECT_EQ(shown[0].text, f.box);
        EXPECT_EQ(failed.getFontData(), nullptr);
        EXPECT_EQ(failed.getCharWidth('!'), 0);
        EXPECT_EQ(display->PrintText(&failed, display->lpBack, 0, 0, "!", 0, 0), 0);
        // A failed reload keeps what the font had.
        ASSERT_TRUE(writeFont("big.bmp", f.bytes));
        EXPECT_FALSE(font->LoadFont());
        EXPECT_EQ(boxes->take().size(), 1u);
        EXPECT_EQ(std::memcmp(font->getFontData(), kBig.glyphs.data(), kBig.glyphs.size()), 0);
        EXPECT_EQ(font->getCharWidth(0xE4), charWidth(0xE4));
    }
}

TEST_F(TextTest, PrintsOnBothLayoutsClippedAtEveryEdge) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    desc.dwWidth = 61;
    desc.dwHeight = 23;
    desc.ddpfPixelFormat = {
        sizeof desc.ddpfPixelFormat, DDPF_RGB, 0, {16}, {0x7C00}, {0x03E0}, {0x001F}, {0}};
    IDirectDrawSurface2 *surface555 = nullptr;
    ASSERT_TRUE(display->CreateSurface(surface555, desc));
    const struct {
        IDirectDrawSurface2 *surface;
        int w, h;
        DWORD mode;
    } targets[] = {{display->lpBack, 640, 480, 2}, {surface555, 61, 23, 1}};
    for (const auto &target : targets) {
        display->dwGraphicsMode = target.mode;
        std::vector<std::uint16_t> want = scramble(target.surface);
        const struct {
            int x, y;
            const char *text;
            std::uint8_t transparency;
        } prints[] = {{-7, -4, "AB\nC\xE4\rD", 0},
                      {target.w - 12, target.h - 5, "Hello\x01 there", 128},
                      {20, 10, "", 0},
                      {target.w / 2, 3, "_!\n\n\nxyz", 255},
                      {5, 2, "fade", 77}};
        for (const auto &p : prints) {
            const auto colour = static_cast<std::uint16_t>(rng());
            EXPECT_EQ(display->PrintText(&*font, target.surface, p.x, p.y, p.text, colour,
                                         p.transparency),
                      static_cast<int>(std::strlen(p.text)) + 1);
            printOn(want, target.w, *font, p.x, p.y, p.text, colour, p.transparency, target.mode);
        }
        expectPixels(target.surface, want);
    }
    EXPECT_EQ(display->PrintText(nullptr, surface555, 0, 0, "x", 0, 0), 0);
    surface555->Release();
}

// The editor's window: records the keyboard messages that reach it. A posted WM_DEADCHAR reaches
// it only once the editor reads the queue, after dropping the keys queued before it started.
HANDLE editorReading = nullptr;
std::vector<UINT> windowSaw;
LRESULT CALLBACK recordingProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DEADCHAR) SetEvent(editorReading);
    if (message == WM_SYSDEADCHAR) DestroyWindow(window);
    if (message >= WM_KEYDOWN && message <= 0x108) windowSaw.push_back(message);
    return DefWindowProcA(window, message, wParam, lParam);
}

struct Key {
    UINT message; // WM_KEYDOWN (with its WM_KEYUP) or WM_CHAR
    WPARAM code;
};
Key down(WPARAM vk) {
    return {WM_KEYDOWN, vk};
}
Key chr(unsigned char c) {
    return {WM_CHAR, c};
}

// Posts the keys from a second thread as soon as the editor reads the queue.
void typeKeys(HWND window, std::vector<Key> keys) {
    for (int i = 0; i < 500 && WaitForSingleObject(editorReading, 20) != WAIT_OBJECT_0; ++i)
        PostMessageA(window, WM_DEADCHAR, 0, 0);
    for (const Key &k : keys) {
        if (k.message == WM_QUIT) {
            PostThreadMessageA(GetWindowThreadProcessId(window, nullptr), WM_QUIT, k.code, 0);
            continue;
        }
        const LPARAM scan = MapVirtualKeyA(static_cast<UINT>(k.code), MAPVK_VK_TO_VSC) << 16;
        PostMessageA(window, k.message, k.code, k.message == WM_KEYDOWN ? scan | 1 : 1);
        if (k.message == WM_KEYDOWN) PostMessageA(window, WM_KEYUP, k.code, scan | 0xC0000001);
    }
}

TEST_F(TextTest, EditorTakesKeysWhileItRuns) {
    SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(recordingProc));
    TDirectFont small("small.bmp");
    const int narrow = 640 - 2 * charWidth('a') - charWidth('_'); // room for two 'a' and '_'
    const struct {
        TDirectFont *font;
        int x, y;
        const char *initial;
        int maxLength;
        std::vector<Key> keys; // WM_CHARs first: translated key-downs join the queue at its end
        const char *result;
        bool drawn;
    } cases[] = {
        {&*font,
         40,
         100,
         "ab",
         10,
         {down('C'), down('D'), down(VK_BACK), down(VK_RETURN)},
         "abc",
         true},
        {&*font,
         0,
         0,
         "xy",
         4,
         {chr(0x7F), chr(0x85), chr(1), chr('z'), chr(0xE4), chr('w'), chr(13)},
         "xyz\xE4",
         true},
        {&*font,
         300,
         471,
         "hi",
         8,
         {chr('a'), chr(8), chr(8), chr(8), chr(8), chr('b'), chr(27)},
         "hi",
         true},
        {&*font, 100, 200, "abc", 3, {chr('x'), chr(8), chr('y'), chr(13)}, "aby", true},
        {&*font, narrow, 50, "", 9, {chr('a'), chr('a'), chr('a'), chr(13)}, "aa", true},
        {&small, 10, 300, "", 5, {chr('z'), chr('!'), chr(13)}, "!", true},
        {&*font, 10, 472, "keep", 9, {}, "keep", false}, // the strip would leave the screen
        {&*font, 60, 0, "", 9, {chr('a'), {WM_QUIT, 7}, chr('b'), chr(13)}, "ab", true}, // quit
                                                                                         // kept
        {&*font, 10, 20, "go", 9, {chr('a'), {WM_SYSDEADCHAR, 0}}, "go", true}, // window destroyed
    };
    for (const auto &c : cases) {
        std::vector<std::uint16_t> want = scramble(display->lpPrimary);
        if (c.drawn) printOn(want, 640, *c.font, c.x, c.y, c.result, 0xFFFF, 0, 2);
        editorReading = CreateEventA(nullptr, TRUE, FALSE, nullptr);
        windowSaw.clear();
        PostMessageA(window, WM_CHAR, 'Q', 1); // queued before the editor opens: dropped
        std::thread typist(typeKeys, window, c.keys);
        char text[16];
        std::strcpy(text, c.initial);
        const int length = display->Input(c.font, c.x, c.y, text, c.maxLength, 0xFFFF);
        if (!c.drawn) SetEvent(editorReading);
        typist.join();
        CloseHandle(editorReading);
        EXPECT_EQ(length, static_cast<int>(std::strlen(c.result))) << c.result;
        EXPECT_STREQ(text, c.result);
        for (UINT m : windowSaw) // only what the editor hands on
            EXPECT_TRUE(m == WM_DEADCHAR || m == WM_SYSDEADCHAR) << m;
        expectPixels(display->lpPrimary, want);
        MSG left;
        while (PeekMessageA(&left, window, WM_KEYDOWN, 0x108, PM_REMOVE)) {
        }
        const bool quit =
            std::any_of(c.keys.begin(), c.keys.end(), [](Key k) { return k.message == WM_QUIT; });
        EXPECT_EQ(PeekMessageA(&left, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0, quit);
    }
    display->Exit(); // no save strip can be made: nothing is drawn, the text is kept
    char text[] = "same";
    EXPECT_EQ(display->Input(&*font, 0, 0, text, 9, 0), 4);
}

} // namespace
