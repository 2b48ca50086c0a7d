// Fonts read from files with their boxes, printing on 5:6:5 and 5:5:5 surfaces, and the line
// editor driven by keys posted while it runs; every result is read back from the surfaces.
#include "harness.h"
#include "tests/host/font_bytes.h"
#include "text/print_loop.h"

#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

// Codes 32 .. 31 + chars, three columns each, then columns of no character up to a multiple of 4
// (rows without padding, so that the glyph plane is the picture).
vtest::FontPicture fontPicture(int chars, std::uint32_t rows) {
    std::mt19937 rng(chars);
    const int width = (3 * chars + 5) / 4 * 4;
    vtest::FontPicture p = vtest::randomPicture(rng, width, rows, 1);
    for (int i = 0; i < width; ++i)
        p.spacing[i] = i > 0 && i % 3 == 0 && i <= 3 * chars;
    return p;
}

using vtest::pixels;

// A font file's contents as the platform-free parser reads them (tested on its own), for the
// expected pixels: independent of TDirectFont's table and of how the DLL reads it.
vell::FontImage parsed(const std::string &bytes) {
    vell::FontImage font;
    EXPECT_TRUE(vell::parseFontFile(reinterpret_cast<const std::uint8_t *>(bytes.data()),
                                    bytes.size(), font));
    return font;
}

// What the scalar reference loop makes of `want`, a surface w pixels wide.
void printOn(std::vector<std::uint16_t> &want, int w, const vell::FontImage &f, int x, int y,
             const char *text, std::uint16_t colour, std::uint8_t t, DWORD mode) {
    vell::printGlyphsScalar(
        {reinterpret_cast<std::uint8_t *>(want.data()), 2 * w, w, int(want.size()) / w},
        {f.glyphs.data(), f.width, f.height, f.cells, f.count}, x, y,
        reinterpret_cast<const unsigned char *>(text), colour, t, mode);
}

// The widths of codes 32 to 37, e.g. "5 4 3 0 0 0".
std::string widths(TDirectFont &font) {
    std::string all;
    for (unsigned char c = 32; c < 38; ++c)
        all += std::to_string(font.getCharWidth(c)) + (c < 37 ? " " : "");
    return all;
}

class TextTest : public vtest::ScreenTest {
protected:
    void SetUp() override {
        ScreenTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        ASSERT_TRUE(vtest::writeFile("big.bmp", fontFileBytes(big, false)));
        ASSERT_TRUE(vtest::writeFile("small.bmp", fontFileBytes(fontPicture(19, 6), true)));
        bigImage = parsed(fontFileBytes(big, false));
        smallImage = parsed(fontFileBytes(fontPicture(19, 6), true));
    }
    const vtest::FontPicture big = fontPicture(197, 9); // codes 32 to 0xE4; the small font has
                                                        // neither letters nor '_'
    vell::FontImage bigImage, smallImage;
    std::mt19937 rng{3};
};

TEST_F(TextTest, FontFilesAndTheirBoxes) {
    TDirectFont font("big.bmp");
    EXPECT_EQ(font.dwWidth, big.width);
    EXPECT_EQ(font.dwHeight, 9u);
    EXPECT_EQ(font.wCharCount, 197);
    EXPECT_EQ(std::memcmp(font.getFontData(), big.glyphs.data(), big.glyphs.size()), 0);
    EXPECT_EQ(font.getCharPos('#'), 9);
    EXPECT_EQ(font.getCharWidth(0xE4), 3); // code 228, the last
    EXPECT_EQ(font.getStringWidth(reinterpret_cast<const unsigned char *>("AB\rXY")), 6);
    // Which files the parser refuses is its own test's; here the boxes and the reload that keeps.
    std::string cut = fontFileBytes(big, true);
    cut.pop_back();
    for (const std::string &bytes : {std::string(), cut}) {
        const char *name = bytes.empty() ? "none.bmp" : "bad.bmp";
        EXPECT_TRUE(bytes.empty() || vtest::writeFile(name, bytes));
        TDirectFont failed(name);
        expectBox("DirectFont", bytes.empty() ? "Falscher Font-Name!" : "Falsches Font-Format!",
                  nullptr);
        ASSERT_TRUE(vtest::writeFile("big.bmp", bytes)); // a failed reload keeps what it had
        EXPECT_FALSE(font.LoadFont());
        expectBox("DirectFont", "Falsches Font-Format!", nullptr);
        EXPECT_EQ(failed.getFontData(), nullptr);
        EXPECT_EQ(failed.getCharWidth('!'), 0);
        EXPECT_EQ(display->PrintText(&failed, display->lpBack, 0, 0, "!", 0, 0), 0);
        EXPECT_EQ(std::memcmp(font.getFontData(), big.glyphs.data(), big.glyphs.size()), 0);
        EXPECT_EQ(font.getCharWidth(0xE4), 3);
    }
}

// Widths, strings, printing and text images all go by the font's bLastIndex, which a client may
// lower: characters past it are not in the font for any of them. A text image holds the glyphs'
// columns of each line, lines one glyph height apart, 0 right of a shorter line.
TEST_F(TextTest, EveryReaderGoesByTheLastIndex) {
    TDirectFont font("big.bmp");
    font.bLastIndex = 2; // codes 32 to 34
    EXPECT_EQ(widths(font), "3 3 3 0 0 0");
    EXPECT_EQ(font.getCharPos('#'), 0);
    EXPECT_EQ(font.getStringWidth(reinterpret_cast<const unsigned char *>("!#!")), 6);
    const TBitmap image(&*display, &font, "!#!\n\"");
    ASSERT_EQ(std::to_string(image.dwWidth) + "x" + std::to_string(image.dwHeight), "6x18");
    EXPECT_EQ(image.lpRGB, nullptr);
    for (unsigned r = 0; r < 18; ++r)
        for (unsigned c = 0; c < 6; ++c) { // '!' in columns 3 to 5 of the picture, '"' in 6 to 8
            const unsigned at = (r % 9) * big.width + (r < 9 ? 3 : 6) + c % 3;
            ASSERT_EQ(image.lpAlpha[r * 6 + c], r >= 9 && c >= 3 ? 0 : big.glyphs[at]) << c << r;
        }
    const std::vector<std::uint16_t> before = pixels(display->lpBack, true);
    EXPECT_EQ(display->PrintText(&font, display->lpBack, 0, 0, "##", 0xFFFF, 0), 3);
    EXPECT_TRUE(pixels(display->lpBack) == before);
}

// The spacing row is read from column 0 to its stored end: markers in the row's padding count.
TEST_F(TextTest, OneRowFontsAndSpacingRowsReadWhole) {
    vtest::FontPicture row{14, {}, std::vector<std::uint8_t>(14)}; // the spacing row alone
    row.spacing[5] = row.spacing[9] = row.spacing[12] = 1;
    ASSERT_TRUE(vtest::writeFile("row.bmp", fontFileBytes(row, false, 0, 7))); // padding 7, 7
    TDirectFont font("row.bmp");
    EXPECT_EQ(font.dwHeight, 0u);
    EXPECT_EQ(font.dwWidth, 14u); // the image's width, though the markers reach 15
    EXPECT_EQ(widths(font), "5 4 3 2 1 0");
    EXPECT_EQ(display->PrintText(&font, display->lpBack, 0, 0, "!", 0, 0), 2);

    // ReadSpacings takes the next rowSize bytes of the file, as far as the file goes.
    const HFILE file = _lopen("row.bmp", OF_READ);
    ASSERT_NE(file, HFILE_ERROR);
    _llseek(file, 54 + 1024, FILE_BEGIN); // headers and 256 colours
    font.ReadSpacings(file, 12);          // columns 0 to 11
    EXPECT_EQ(widths(font), "5 4 0 0 0 0");
    font.ReadSpacings(file, 100); // the last 4 bytes: markers in columns 0, 2 and 3
    EXPECT_EQ(widths(font), "0 2 1 0 0 0");
    font.ReadSpacings(file, 16); // at the end: no characters
    EXPECT_EQ(widths(font), "0 0 0 0 0 0");
    _lclose(file);
}

TEST_F(TextTest, PrintsOnBothLayoutsClippedAtEveryEdge) {
    // sans16.bmp is what vell-fontmaker makes of DejaVu Sans at 16 pixels, on Linux and Windows.
    const std::string madeFile = vtest::dataFile("sans16.bmp");
    TDirectFont font("big.bmp"), made(madeFile.c_str());
    const vell::FontImage madeImage = parsed(vtest::readFile(madeFile));
    IDirectDrawSurface2 *surface555 = make555(61, 23);
    for (auto [s, w, h, mode] :
         {std::tuple(display->lpBack, 640, 480, 2), {surface555, 61, 23, 1}}) {
        display->dwGraphicsMode = mode;
        std::vector<std::uint16_t> want = pixels(s, true);
        const std::tuple<int, int, const char *, int> prints[] = {
            {-7, -4, "AB\nC\xE4\rD", 0},
            {w - 12, h - 5, "Hello\x01 there", 128},
            {20, 10, "", 0},
            {w / 2, 3, "_!\n\n\nxyz", 255},
            {5, 2, "fade", 77}};
        for (auto [x, y, text, t] : prints) {
            const auto colour = static_cast<std::uint16_t>(rng());
            EXPECT_EQ(display->PrintText(&font, s, x, y, text, colour, t),
                      int(std::strlen(text)) + 1);
            printOn(want, w, bigImage, x, y, text, colour, t, mode);
        }
        // A font the font maker made prints by the same rule.
        EXPECT_EQ(display->PrintText(&made, s, 2, h - 12, "Wij 0!", 0x7BEF, 0), 7);
        printOn(want, w, madeImage, 2, h - 12, "Wij 0!", 0x7BEF, 0, mode);
        EXPECT_TRUE(pixels(s) == want) << "mode " << mode;
    }
    EXPECT_EQ(display->PrintText(nullptr, surface555, 0, 0, "x", 0, 0), 0);
}

// The editor's window. A posted WM_DEADCHAR reaches it only once the editor reads the queue,
// after dropping the keys queued before it started; a WM_SYSDEADCHAR destroys it. It counts the
// other keyboard messages it sees: the editor hands none on.
HANDLE editorReading = nullptr;
int windowSawKeys = 0;
LRESULT CALLBACK editorWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DEADCHAR) SetEvent(editorReading);
    if (message == WM_SYSDEADCHAR) DestroyWindow(window);
    if (message >= WM_KEYDOWN && message <= WM_CHAR) ++windowSawKeys;
    return DefWindowProcA(window, message, wParam, lParam);
}

// Posts keys from a second thread as soon as the editor reads the queue: each byte a WM_CHAR, or
// with `downs` a virtual key's WM_KEYDOWN and WM_KEYUP; kQuit posts WM_QUIT to the thread.
constexpr char kQuit = '\x81', kDestroy = '\x82';
void typeKeys(HWND window, std::string keys, bool downs) {
    for (int i = 0; i < 500 && WaitForSingleObject(editorReading, 20) != WAIT_OBJECT_0; ++i)
        PostMessageA(window, WM_DEADCHAR, 0, 0);
    for (char key : keys) {
        const auto k = static_cast<unsigned char>(key);
        const LPARAM scan = MapVirtualKeyA(k, MAPVK_VK_TO_VSC) << 16 | 1;
        if (key == kQuit)
            PostThreadMessageA(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 7, 0);
        else if (key == kDestroy)
            PostMessageA(window, WM_SYSDEADCHAR, 0, 0);
        else if (!downs)
            PostMessageA(window, WM_CHAR, k, 1);
        else
            PostMessageA(window, WM_KEYDOWN, k, scan),
                PostMessageA(window, WM_KEYUP, k, scan | 0xC0000000);
    }
}

TEST_F(TextTest, EditorTakesKeysWhileItRuns) {
    SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(editorWindow));
    TDirectFont font("big.bmp"), small("small.bmp");
    const int narrow = 640 - 9; // room for "aa_"
    const struct {
        TDirectFont *font;
        const vell::FontImage *image; // the same font, for the expected pixels
        int x, y;
        const char *initial;
        int maxLength;
        bool downs;
        std::string keys;
        const char *result; // null: nothing drawn
    } cases[] = {
        {&font, &bigImage, 40, 100, "ab", 10, true, "CD\b\r", "abc"},
        {&font, &bigImage, 0, 0, "xy", 3, false, "\x7F\1zw\b\x85\xE4\r", "xy\xE4"},
        {&font, &bigImage, 300, 471, "hi", 8, false, "a\b\b\b\bb\x1B", "hi"},
        {&font, &bigImage, narrow, 50, "", 9, false, std::string("a") + kQuit + "aa\r", "aa"},
        {&small, &smallImage, 10, 300, "", 5, false, "z!\r", "!"},
        {&font, &bigImage, 10, 472, "keep", 9, false, "",
         nullptr}, // the strip would leave the screen
        {&font, &bigImage, 10, 20, "go", 9, false, std::string("a") + kDestroy,
         "go"}, // no window: Escape
    };
    for (const auto &c : cases) {
        std::vector<std::uint16_t> want = pixels(display->lpPrimary, true);
        if (c.result != nullptr) printOn(want, 640, *c.image, c.x, c.y, c.result, 0xFFFF, 0, 2);
        editorReading = CreateEventA(nullptr, TRUE, c.keys.empty(), nullptr);
        windowSawKeys = 0;
        PostMessageA(window, WM_CHAR, 'Q', 1); // queued before the editor opens: dropped
        std::thread typist(typeKeys, window, c.keys, c.downs);
        char text[16];
        const int length =
            display->Input(c.font, c.x, c.y, std::strcpy(text, c.initial), c.maxLength, 0xFFFF);
        typist.join();
        CloseHandle(editorReading);
        EXPECT_STREQ(text, c.result != nullptr ? c.result : c.initial);
        EXPECT_EQ(length, int(std::strlen(text)));
        EXPECT_EQ(windowSawKeys, 0) << text;
        EXPECT_TRUE(pixels(display->lpPrimary) == want) << text;
        MSG left;
        while (PeekMessageA(&left, window, WM_KEYDOWN, 0x108, PM_REMOVE)) {
        }
        EXPECT_EQ(PeekMessageA(&left, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0,
                  c.keys.find(kQuit) != std::string::npos);
    }
    display->Exit(); // no save strip can be made: nothing is drawn, the text is kept
    char text[] = "same";
    EXPECT_EQ(display->Input(&font, 0, 0, text, 9, 0), 4);
}

} // namespace
