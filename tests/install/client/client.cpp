// A client of the DLL: every function of the unchanged header, called and checked. Built by
// tests/install/check.cmake with MinGW and, with the flags of a Visual Studio project, with
// clang-cl (client/CMakeLists.txt), once with UNICODE; the current directory holds the data.
#include "VellBase.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define IDS_APPNAME 1 // "VellMsabi"
#define IDS_REGKEY 2  // "Software\VellBase Tests\msabi"

inline void *operator new(size_t, void *where) noexcept {
    return where;
}

static int failures;
static void check(bool ok, const char *what) {
    if (!ok) ++failures;
    printf("%s %s\n", ok ? "ok  " : "FAIL", what);
}

// Visual Studio's code uses a constructor's result as the object (the DLL must return it).
template <class T, class... A> __declspec(noinline) T *make(void *where, A... args) {
    return new (where) T(args...);
}
template <class T> struct Slot {
    alignas(8) unsigned char bytes[sizeof(T)];
    T *obj;
    template <class... A> T &operator()(A... args) {
        void *volatile where = bytes;
        obj = make<T>(bytes, args...);
        check(obj == where, "the constructor returns the object");
        return *obj;
    }
    ~Slot() { obj->~T(); }
};

// A crash fails the program: Wine's debugger would end it with exit code 0.
static LONG WINAPI crashed(EXCEPTION_POINTERS *crash) {
    printf("FAIL crashed: exception 0x%08lx\n",
           (unsigned long)crash->ExceptionRecord->ExceptionCode);
    fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
    return EXCEPTION_EXECUTE_HANDLER;
}

static int boxes; // message boxes shown, each closed at once
static LRESULT CALLBACK closeBoxes(int code, WPARAM wParam, LPARAM lParam) {
    char name[16] = "";
    if (code == HCBT_ACTIVATE && GetClassNameA((HWND)wParam, name, sizeof name) &&
        !strcmp(name, "#32770")) {
        ++boxes;
        PostMessageA((HWND)wParam, WM_COMMAND, IDOK, 0);
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

static WORD pixel(IDirectDrawSurface2 *surface, int x, int y) {
    DDSURFACEDESC desc = {};
    desc.dwSize = sizeof desc;
    if (FAILED(surface->Lock(nullptr, &desc, DDLOCK_WAIT, nullptr))) return 0xDEAD;
    WORD value = ((WORD *)((BYTE *)desc.lpSurface + y * desc.lPitch))[x];
    surface->Unlock(nullptr);
    return value;
}

// The pixel paths, called with the stack at every 4-byte offset on i686, where Visual Studio
// keeps only 4-byte alignment but the DLL's SSE and AVX loops spill 16- and 32-byte vectors.
static struct {
    TDirectDraw *display;
    TBitmap *image;
    TDirectFont *font;
    IDirectDrawSurface2 *target;
    int painted, faded, blended, printed;
} d;
static int drawn(bool ok) {
    const int value = ok ? pixel(d.target, 7, 3) : -1;
    d.display->ClearSurface(d.target, 0);
    return value;
}
static void draw() {
    d.painted = drawn(d.image->Paint(d.target, 0, 0, -1, -1));
    d.faded = drawn(d.image->Paint(d.target, 0, 0, -1, 255 * 128 / 256));
    d.blended = drawn(d.image->Blend(d.target, 0, 0, 128, -1, -1));
    d.printed = d.display->PrintText(d.font, d.target, 0, 0, "Vell", d.display->wWhite, 0);
}
#if defined(_M_IX86)
extern "C" __declspec(naked) void __cdecl atOffset(void (*call)(), int by) {
    __asm__("push %ebp\n mov %esp, %ebp\n and $-16, %esp\n sub 12(%ebp), %esp\n"
            "call *8(%ebp)\n mov %ebp, %esp\n pop %ebp\n ret");
}
static const int offsets[] = {0, 4, 8, 12};
#else
static void atOffset(void (*call)(), int) {
    call();
}
static const int offsets[] = {0};
#endif

int main() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(crashed);
    HHOOK hook = SetWindowsHookExA(WH_CBT, closeBoxes, nullptr, GetCurrentThreadId());
    HINSTANCE instance = GetModuleHandleA(nullptr);
    {
        Slot<TVellBase> baseSlot;
        TVellBase &base = baseSlot(instance, IDS_APPNAME, IDS_REGKEY, true);
        base.hWnd = CreateWindowExA(0, "STATIC", "Msabi", WS_POPUP | WS_VISIBLE, 0, 0, 640, 480,
                                    nullptr, nullptr, instance, nullptr);
        check(!strcmp(base.getString(IDS_APPNAME), "VellMsabi") && !base.getString(99),
              "getString");
        base.InitDebug(); // the log is open already: kept
        base.DebugOut("msabi %d %s %.1f %Lg|", 7, "x", 2.5, (long double)0.25);

        const char text[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}";
        GUID guid = {}, zero = {};
        char back[39] = "";
        str2GUID(text, &guid);
        GUID2str(guid, back);
        check(!strcmp(back, text) && ((BYTE *)&guid)[0] == 0x01 && ((BYTE *)&guid)[15] == 0xEF,
              "str2GUID and GUID2str");

        Slot<TDirectDraw> displaySlot;
        TDirectDraw &display = displaySlot(&base, 1ul);
        check(display.lpBack && display.dwGraphicsMode != 0, "a full-screen 16-bit display");
        display.LoadRegistry();
        display.SaveRegistry();
        unsigned char before[sizeof(TDirectDraw)];
        memcpy(before, &display, sizeof before);
        RECT rect = display.CreateRect(1, 2, 3, 4);
        check(rect.left == 1 && rect.top == 2 && rect.right == 4 && rect.bottom == 6 &&
                  !memcmp(before, &display, sizeof before),
              "CreateRect's result, the display's bytes untouched");
        IDirectDrawSurface2 *white = nullptr, *target = nullptr, *tile = nullptr;
        DDSURFACEDESC desc = {sizeof desc, DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT, 32, 64};
        check(display.CreateSurface(white, 8, 4, nullptr) && display.CreateSurface(target, desc) &&
                  display.CreateSurface(tile, 0, 0, "TILE"),
              "surfaces");
        const WORD wWhite = display.wWhite;
        check(display.ClearSurface(white, wWhite) == DD_OK &&
                  display.ColorMatch(white, RGB(255, 255, 255)) == wWhite,
              "ClearSurface and ColorMatch");
        HBITMAP bitmap = (HBITMAP)LoadImageA(nullptr, "quad16.bmp", IMAGE_BITMAP, 0, 0,
                                             LR_LOADFROMFILE | LR_CREATEDIBSECTION);
#pragma push_macro("LoadBitmap")
#undef LoadBitmap
        check(display.LoadBitmap(tile, "quad16.bmp", true), "LoadBitmap");
#pragma pop_macro("LoadBitmap")
        check(display.LoadBitmap(tile, "TILE", false) && display.LoadBitmapA(tile, "TILE", true) &&
                  display.LoadBitmapW(tile, "TILE", false) &&
                  display.CopyBitmap(tile, bitmap, 0, 0, 0, 0, true),
              "LoadBitmap through windows.h's name, LoadBitmapA, LoadBitmapW and CopyBitmap");
        DeleteObject(bitmap);
        RECT all = display.CreateRect(0, 0, 8, 8);
        check(display.Blit(display.lpBack, 0, 0, tile, &all, 0) == 1 && display.Flip() == 1 &&
                  display.RestoreAll() == 0,
              "Blit, Flip and RestoreAll");

        Slot<TDirectFont> fontSlot;
        TDirectFont &font = fontSlot("sans16.bmp");
        const int widthV = font.getCharWidth('V'), widthE = font.getCharWidth('e');
        check(font.getFontData() == font.lpFontData && font.lpFontData && widthV > 0 &&
                  font.getCharPos(' ') == 0 && font.getCharPos('!') == font.getCharWidth(' ') &&
                  font.getStringWidth((const unsigned char *)"Ve") == widthV + widthE,
              "a font");
        char line[16] = "name";
        check(display.Input(&font, 0, 10000, line, 15, wWhite) == 4, "Input off the screen");

        Slot<TBitmap> empty, loaded, cut, copy, part, gdiText, fontText;
        check(empty(&display).dwWidth == 0 && loaded(&display, "pattern32.tga", 0ul).lpAlpha,
              "an empty image, an image from a file");
        RECT whole = display.CreateRect(0, 0, 8, 4), half = display.CreateRect(4, 2, 4, 2);
        TBitmap &image = cut(&display, white, whole);
        check(image.dwWidth == 8 && image.lpRGB[31] == wWhite && !image.lpAlpha &&
                  copy(image).lpRGB != image.lpRGB && part(image, half).dwWidth == 4,
              "an image cut from a surface, and copied");
        LOGFONTA logFont = {};
        logFont.lfHeight = 12;
        check(gdiText(&display, &logFont, "Vell", (unsigned char)4).lpAlpha &&
                  logFont.lfHeight == 48 &&
                  fontText(&display, &font, "Ve").dwWidth == (DWORD)(widthV + widthE),
              "text images from a GDI font and from the bitmap font");

        d = {&display, &image, &font, target};
        for (int by : offsets) {
            atOffset(draw, by);
            char what[80];
            snprintf(what, sizeof what, "Paint, Blend and PrintText, stack offset %d", by);
            check(d.painted == wWhite && d.blended == d.faded && d.faded != 0 &&
                      d.faded != wWhite && d.printed == 5,
                  what);
        }

        HFILE marks = _lcreat("marks.bin", 0);
        _lwrite(marks, "\0\0\1\0\0\1", 6);
        _lclose(marks);
        marks = _lopen("marks.bin", OF_READ);
        font.ReadSpacings(marks, 6); // code 32 two columns wide, code 33 three
        _lclose(marks);
        check(font.getCharWidth(' ') == 2 && font.getCharWidth('!') == 3 && !font.getCharWidth('V'),
              "ReadSpacings");
        check(font.LoadFont() && font.getCharWidth('V') == widthV, "LoadFont");

        char error[128] = "";
        display.getErrorString(DDERR_SURFACELOST, error);
        check(error[0] != 0 && !display.ErrorMessage(DDERR_SURFACELOST, "msabi") && boxes == 1,
              "the display's error text and box");

        Slot<TDirectSound> soundSlot;
        TDirectSound &sound = soundSlot(&base);
        const char *expected = getenv("VELL_EXPECT_SOUND");
        if (expected && *expected == '1') {
            sound.LoadRegistry();
            sound.setVolume(70);
            sound.SaveRegistry();
            structDirectSoundBuffer *blip = sound.newSound("blip.wav", 2);
            check(sound.lpDS && blip && sound.playSound(blip) == 1 && !sound.isPlaying() &&
                      sound.getVolume() == 70,
                  "a sound played on the sound server");
            sound.Update();
            sound.deleteSound(blip);
            check(sound.setDevice(zero) == 1 && sound.Exit() == 1 && sound.Init() == 1,
                  "the sound device");
        }
        sound.getErrorString(DSERR_BADFORMAT, error);
        boxes = 0;
        check(error[0] != 0 && !sound.ErrorMessage(DSERR_BADFORMAT, "msabi") && boxes == 1,
              "the sound's error text and box");
        IDirectDrawSurface2 *surfaces[] = {white, target, tile};
        for (IDirectDrawSurface2 *surface : surfaces)
            if (surface) surface->Release();
        check(display.setDevice(zero) == 1 && display.Exit() == 1 && display.Init() == 1,
              "the display's device");
    } // the objects are destroyed in the reverse order

    static char log[65536];
    DWORD got = 0;
    HANDLE file = CreateFileA("VellMsabi.log", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    ReadFile(file, log, sizeof log - 1, &got, nullptr);
    CloseHandle(file);
    check(strstr(log, "msabi 7 x 2.5 0.25|") != nullptr, "DebugOut's entry, %Lg read as a double");
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\VellBase Tests\\msabi");
    UnhookWindowsHookEx(hook);
    printf("%d failed\n", failures);
    return failures != 0;
}
