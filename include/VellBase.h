// VellBase.h - the public interface of the VellBase library (VellBase.dll).
//
// VellBase gives a 2D game or multimedia program on Windows an application base object (string
// resources, a registry key, a debug log), a DirectDraw display, off-screen surfaces, alpha images,
// bitmap fonts and DirectSound sounds. Everything runs on the client's own thread; the library
// starts no thread and throws no exception.
//
// Using it
//   A client constructs, in this order:
//     1. one TVellBase, given its instance handle and the string-table identifiers of its
//        application name and of its registry sub-key (relative to HKEY_CURRENT_USER);
//     2. then it stores its main window's handle in TVellBase::hWnd;
//     3. then the display and sound objects, each given a pointer to the base object;
//     4. then fonts, images and sounds.
//   It destroys them in the reverse order: the base object must outlive everything made with it.
//
//       TVellBase base(hInstance, IDS_APPNAME, IDS_REGKEY, true); // true: write "<name>.log"
//       base.hWnd = hWnd;
//       base.DebugOut("Level %d loaded\n", level);
//
// Results
//   Methods return 1/true for success and 0/false for failure, or a pointer that is null on
//   failure. Constructors report failure through the debug log and the state they leave.
//
// Ownership
//   Each object owns what it allocates and releases it in its destructor. Objects are not copyable.
//
// Layout
//   The classes are plain and byte-packed, with public fields in a fixed order; on 32-bit Windows
//   TVellBase is 29 bytes.
//
// Linking
//   Link against the import library (libVellBase.dll.a with MinGW, VellBase.lib with Visual
//   Studio: the DLL serves both ABIs, see docs/visual-studio.md); define VELLBASE_STATIC when the
//   library's sources are compiled into the client itself.
#ifndef VELLBASE_H
#define VELLBASE_H

#include <windows.h>

#include <ddraw.h>
#include <dsound.h>

#if defined(VELLBASE_BUILD)
#define VELLBASE_API __declspec(dllexport)
#elif defined(VELLBASE_STATIC)
#define VELLBASE_API
#else
#define VELLBASE_API __declspec(dllimport)
#endif

// DebugOut's arguments are checked like printf's; the library formats them with the C99 printf.
#if defined(__GNUC__)
#define VELLBASE_PRINTF(fmt, first) __attribute__((format(gnu_printf, fmt, first)))
#else
#define VELLBASE_PRINTF(fmt, first)
#endif

#pragma pack(push, 1)

// The application base object: the client's window handle, the module holding its string table,
// its registry key and the debug log. Every other object of the library logs through DebugOut.
class VELLBASE_API TVellBase {
public:
    HWND hWnd;           // the client's main window; null until the client stores it
    HINSTANCE hInstance; // the module whose string table getString reads
    char *lpszAppName;   // the application name (at most 79 characters); names the log file
    HKEY hKey;           // HKEY_CURRENT_USER\<sub-key>, or null when it could not be opened
    bool bNoDebug;       // true while no log file is open
    char *lpszString;    // getString's result buffer (1024 bytes)
    char *lpszDebug;     // DebugOut's formatting buffer (1024 bytes)
    HANDLE hLogFile;     // the open log file, or null

    // idAppName and idRegKey are string resources of hInstance. With bDebug the log file
    // "<application name>.log" is created afresh in the current directory.
    TVellBase(void *hInstance, unsigned int idAppName, unsigned int idRegKey, bool bDebug);
    ~TVellBase();
    TVellBase(const TVellBase &) = delete;
    TVellBase &operator=(const TVellBase &) = delete;

    // Loads string resource id into lpszString (at most 1022 characters) and returns it, or null
    // when there is no such string. Each call overwrites the text the previous call returned.
    char *getString(unsigned int id);

    // Opens (creates, truncating) the log file. While a log is open it does nothing, so a second
    // call keeps the open log and everything written to it.
    void InitDebug();

    // Formats one printf-style entry and appends exactly its characters to the log: no time
    // stamp, no prefix, no line break of its own. An entry longer than 1023 characters is cut
    // there. Silent while no log is open. From a Visual Studio (Microsoft-ABI) client, where long
    // double is a plain double, a %L conversion (%Lf, %Lg, ...) reads a double, as %f does.
    void DebugOut(const char *format, ...) VELLBASE_PRINTF(2, 3);
};

// One enumerated device of the display or sound object, in a singly linked list in enumeration
// order. The device reported without a GUID (the primary driver) has the all-zero GUID.
struct VELLBASE_API structDeviceInfo {
    _GUID guid;
    char *lpszDescription; // own copy
    char *lpszDriverName;  // own copy
    structDeviceInfo *lpNext;
};

// A proportional bitmap font with anti-aliased glyphs, read from an uncompressed 8-bit BMP: the
// glyphs of codes 32, 33, ... side by side, each pixel's palette index being its coverage (0 none,
// 255 full ink), and below them one spacing row whose non-zero bytes close the characters' cells
// (the first marker ends the cell of code 32 at its column, the next that of code 33, and so on; at
// most 224). The whole stored row counts, its padding to a multiple of 4 bytes included (a cell's
// columns past the image's width are blank). The rows may be stored bottom-up or top-down; a file
// of the spacing row alone is a font of height 0.
//
// A file that cannot be opened shows the box "Falscher Font-Name!", one that is not such a bitmap
// (or is cut short, or has an image height of 0) "Falsches Font-Format!", both captioned
// "DirectFont"; the font then keeps what it had (nothing, after construction). A character the
// font lacks, every code below 32 included, has width 0. The font needs no display.
class VELLBASE_API TDirectFont {
public:
    char *lpFileName;          // own copy of the file name
    DWORD dwWidth;             // the image's width; glyph row r starts at r * dwWidth
    DWORD dwHeight;            // glyph and line height: the image's height - 1
    unsigned char *lpFontData; // dwHeight rows of dwWidth coverage bytes; null until loaded
    DWORD (*lpSpacings)[2];    // 224 cells {position, width} for codes 32..255
    BYTE bLastIndex;           // wCharCount - 1 while the font has characters
    WORD wCharCount;           // the number of characters: codes 32 .. 31 + wCharCount

    explicit TDirectFont(const char *fileName); // loads the file at once
    ~TDirectFont();
    TDirectFont(const TDirectFont &) = delete;
    TDirectFont &operator=(const TDirectFont &) = delete;

    bool LoadFont(); // reads lpFileName again; a failed reload keeps the previous contents
    // Builds the cell table from the next rowSize bytes of a file opened with _lopen, every one
    // from column 0 (as LoadFont does with the spacing row).
    void ReadSpacings(int hFile, int rowSize);
    unsigned char *getFontData();
    int getCharPos(unsigned char c);   // column of c's cell, 0 when the font lacks it
    int getCharWidth(unsigned char c); // 0 when the font lacks c
    // The width of the first line of s: up to the first byte 0, 10 or 13; null gives 0.
    int getStringWidth(const unsigned char *s);
};

// The display. Full screen (dwMode 1): exclusive, 640x480 at 16 bits, lpPrimary with one back
// buffer lpBack to draw on and Flip. Windowed (any other dwMode): lpPrimary is the desktop, no back
// buffer. Construct it after storing the window handle in TVellBase::hWnd; it keeps its own copy.
//
// dwGraphicsMode is the 16-bit pixel layout: 1 = 5:5:5, 2 = 5:6:5, 0 = not a 16-bit display (a
// windowed display on a desktop of another depth: painting refuses to draw). wWhite is white in
// that layout (0x7FFF, 0xFFFF, or 0 in mode 0). Both are read from the primary surface's pixel
// format: its green mask 0x07E0 means 5:6:5, any other 16-bit format 5:5:5.
//
// A device that cannot be opened shows one message box captioned "DirectDraw" with the step that
// failed and the code's text; the object is then closed or half open (lpPrimary null).
class VELLBASE_API TDirectDraw {
public:
    TVellBase *lpBase;
    IDirectDraw *lpDD;
    IDirectDrawSurface2 *lpPrimary;
    IDirectDrawSurface2 *lpBack; // null in windowed mode and while closed
    structDeviceInfo *lpDeviceList;
    DWORD dwGraphicsMode;
    WORD wWhite;
    HWND hWnd;        // lpBase->hWnd as it was at construction
    _GUID guidDevice; // the chosen device, all zeros for the primary driver
    DWORD dwMode;     // 1 = full screen, anything else = windowed

    TDirectDraw(TVellBase *lpBase, unsigned long dwMode);
    ~TDirectDraw();
    TDirectDraw(const TDirectDraw &) = delete;
    TDirectDraw &operator=(const TDirectDraw &) = delete;

    // Device (closing first is the caller's job: Init on an open display drops what it holds).
    int Init();                // 1, or 0 after a message box
    int Exit();                // releases the surfaces and DirectDraw; 1
    void LoadRegistry();       // "TDirectDraw::guidDevice", default all zeros
    void SaveRegistry();       // written as its 38-character text
    int setDevice(_GUID guid); // Exit, take guid, Init; Init's result
    int RestoreAll();          // restores nothing; 0

    // Surfaces. A bitmap name is a bitmap resource of the executable, else a bitmap file.
    // width/height 0 with a bitmap take the bitmap's size; the bitmap is tiled at its own size.
    bool CreateSurface(IDirectDrawSurface2 *&lpSurface, int width, int height, const char *bitmap);
    // Off-screen, video memory first, then system memory (DDSCAPS_SYSTEMMEMORY then stays set in
    // desc). Failure shows a message box.
    bool CreateSurface(IDirectDrawSurface2 *&lpSurface, _DDSURFACEDESC &desc);
    // windows.h makes LoadBitmap a macro (LoadBitmapA, or LoadBitmapW with UNICODE): the member
    // is LoadBitmap itself, and the two names the macro may give it lead there.
#pragma push_macro("LoadBitmap")
#undef LoadBitmap
    bool LoadBitmap(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch);
    bool LoadBitmapA(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch);
    bool LoadBitmapW(IDirectDrawSurface2 *lpSurface, const char *bitmap, bool bStretch);
#pragma pop_macro("LoadBitmap")
    // The rectangle (x, y, dx, dy) of the bitmap (dx/dy 0: to its edge), stretched over the whole
    // surface or tiled across it at its own size. Restores a lost surface first.
    bool CopyBitmap(IDirectDrawSurface2 *lpSurface, void *hBitmap, int x, int y, int dx, int dy,
                    bool bStretch);

    // Drawing. Blit clips lpSrcRect in place (see its comment in the source for the exact rule)
    // and returns 1 when copied or nothing needed copying, 0 on failure (also for a null surface).
    int Blit(IDirectDrawSurface2 *lpDest, int x, int y, IDirectDrawSurface2 *lpSrc,
             tagRECT *lpSrcRect, int flags);
    int Flip(); // 1, or 0 (windowed, closed)
    HRESULT ClearSurface(IDirectDrawSurface2 *lpSurface, unsigned long dwColor); // raw pixel value
    unsigned long ColorMatch(IDirectDrawSurface2 *lpSurface,
                             unsigned long dwRGB); // 0xFFFFFFFF: failed
    tagRECT CreateRect(int x, int y, int w, int h);

    // Text. PrintText mixes the colour into surface by each glyph pixel's coverage, faded by
    // transparency (0: the glyphs' own coverage, 255: no change), under one lock of the surface.
    // A line feed goes back to x and one glyph height down, other codes below 32 are skipped.
    // Glyphs partly off the surface show their visible part. Returns strlen(text) + 1, or 0 (a
    // null or empty font, a surface that cannot be locked, a null text).
    int PrintText(TDirectFont *font, IDirectDrawSurface2 *surface, int x, int y, const char *text,
                  unsigned short colour, unsigned char transparency);
    // A modal one-line editor on lpPrimary at (x, y): the window's keys edit text (room for
    // maxLength + 1 bytes) until Enter keeps it or Escape restores it; returns its length. Keys
    // queued before the call are dropped. A line that would run past the screen's right edge
    // takes no more characters; a line not wholly on the screen, or a missing off-screen save
    // strip, returns the initial length without drawing.
    int Input(TDirectFont *font, int x, int y, char *text, int maxLength, unsigned short colour);

    // Error texts: getErrorString writes at most 126 bytes; ErrorMessage shows the box and
    // returns false.
    void getErrorString(int hr, char *lpszError);
    bool ErrorMessage(int hr, const char *lpszText);
};

// An image in ordinary memory, made for one display: a 16-bit colour plane in the display's
// layout (dwGraphicsMode as it was when the image was made) and an 8-bit alpha plane, 0
// transparent to 255 opaque. Both planes are dwWidth x dwHeight, row-major, top row first, no
// padding, allocated with malloc; either may be null (no alpha plane: opaque; no colour plane: a
// mask drawn in a given colour). Copies never share planes. The display and its base object must
// outlive the image. Constructors never fail loudly: a failure is one line in the debug log and
// leaves an empty image (0 x 0, no planes) unless noted.
//
//   TBitmap ship(&display, "ship.tga", 0);             // colour, and alpha if the file has it
//   ship.Paint(display.lpBack, x, y, -1, -1);          // its own colours and alpha
//   ship.Blend(display.lpBack, x, y, 128, 0, 96);      // a black shadow, half faded
//
// Painting and blending clip to the surface: positions are read as signed numbers, so a sprite
// partly off any edge (a negative position cast to unsigned long included) shows its visible part.
class VELLBASE_API TBitmap {
public:
    DWORD dwWidth;
    DWORD dwHeight;
    BYTE *lpAlpha; // dwWidth * dwHeight alpha values, or null
    WORD *lpRGB;   // dwWidth * dwHeight pixel words, or null
    TVellBase *lpBase;
    TDirectDraw *lpDirectDraw;

    explicit TBitmap(TDirectDraw *lpDirectDraw); // empty
    // An uncompressed true-colour TGA file of 24 or 32 bits. dwPlanes 1 keeps the alpha plane only,
    // 2 the colour plane only, any other value both (alpha when the file has 8 alpha bits).
    // Truncated files and files of width * height * 2 >= 2^32 bytes are refused.
    TBitmap(TDirectDraw *lpDirectDraw, const char *file, unsigned long dwPlanes);
    // The rectangle of a 16-bit surface (words copied as they are), clipped to the surface; no
    // alpha plane. An inverted rectangle gives an empty image.
    TBitmap(TDirectDraw *lpDirectDraw, IDirectDrawSurface2 *lpDDS, const RECT &rect);
    TBitmap(const TBitmap &src);
    // The rectangle of src, clipped to it; an inverted rectangle gives an empty image.
    TBitmap(const TBitmap &src, const RECT &rect);
    // Alpha-only images of text (lpRGB null). From a GDI font: one line rendered factor times
    // larger on a scratch surface and reduced, every factor x factor block's exactly white pixels
    // counted (factor 0 counts as 1); the caller's lfHeight is multiplied by factor and lfWidth set
    // to 0, and stay so. From a bitmap font: the glyphs' coverage, lines below each other, as
    // wide as the first line; a wider later line is cut at the edge, pixels no glyph covers are 0.
    TBitmap(TDirectDraw *lpDirectDraw, LOGFONTA *logFont, const char *text, unsigned char factor);
    TBitmap(TDirectDraw *lpDirectDraw, TDirectFont *font, const char *text);
    ~TBitmap();
    TBitmap &operator=(const TBitmap &) = delete;

    // Draws the image with its top-left pixel at (dwX, dwY). lColor -1 takes the colour plane
    // (0xFFFF without one), any other value its low 16 bits for every pixel; lAlpha -1 takes the
    // alpha plane (255 without one), any other value, clamped to 0..255, is the alpha of the whole
    // rectangle. Alpha 0 leaves a pixel, 255 replaces it, anything between mixes it. Always true;
    // a failed lock or a display mode that cannot mix is one line in the log.
    bool Paint(IDirectDrawSurface2 *lpDDS, unsigned long dwX, unsigned long dwY, long lColor,
               long lAlpha);
    // Paint at an opacity: every alpha is scaled to alpha * dwOpacity / 256 (truncated). 0 draws
    // nothing; 255 (and above) is Paint itself.
    bool Blend(IDirectDrawSurface2 *lpDDS, unsigned long dwX, unsigned long dwY,
               unsigned long dwOpacity, long lColor, long lAlpha);
};

// One loaded sound: nBuffers voices sharing one sample buffer (lpdsBuffer[0] holds the samples,
// the others are duplicates of it); iNext is the voice the next playSound starts. Owned by the
// client from TDirectSound::newSound to TDirectSound::deleteSound.
struct VELLBASE_API structDirectSoundBuffer {
    IDirectSoundBuffer **lpdsBuffer;
    int iNext;
    int nBuffers;
};

// The sound device. Constructed after TVellBase::hWnd is set; opens the device named by
// guidDevice at the normal cooperative level. A device that cannot be opened shows one message box
// captioned "DirectSound" and switches sound off for good: dwDisable is saved, so later runs stay
// silent (and show no box) until the registry value "TDirectSound::dwDisable" is 0 or removed.
//
// Persisted in the base object's key: "TDirectSound::dwDisable" (REG_DWORD, default 0; a value of
// another type disables sound), "TDirectSound::dwVolume" (REG_DWORD, default 5),
// "TDirectSound::guidDevice" (REG_SZ, default the all-zero GUID = the default device).
class VELLBASE_API TDirectSound {
public:
    TVellBase *lpBase;
    IDirectSound *lpDS; // null while closed
    structDeviceInfo *lpDeviceList;
    DWORD dwDisable;  // nonzero: sound is off
    DWORD dwVolume;   // master attenuation in 1/100 dB: 0 full, 10000 silent
    _GUID guidDevice; // all zeros: the default device

    explicit TDirectSound(TVellBase *base);
    ~TDirectSound();
    TDirectSound(const TDirectSound &) = delete;
    TDirectSound &operator=(const TDirectSound &) = delete;

    void LoadRegistry();
    void SaveRegistry();
    int Init();                // 1 when open; 0 when disabled or (after a box) failed
    int Exit();                // 1
    bool isPlaying();          // false: the object keeps no record of playing sounds
    int setDevice(_GUID guid); // Exit, take guid, Init; Init's result
    // The master volume on a logarithmic scale: 100 full, each halving about 15 dB quieter, 1 (and
    // 0) -100 dB; over 100 counts as 100. getVolume gives back exactly what setVolume took (1-100).
    int getVolume();
    void setVolume(unsigned long volume);
    void Update(); // nothing to do

    // A RIFF/WAVE file with "fmt " and then "data" chunks, played as 22050 Hz 16-bit mono PCM
    // whatever its header says, with up to nBuffers voices (at least 1). Null on failure.
    structDirectSoundBuffer *newSound(const char *lpszFileName, int nBuffers);
    void deleteSound(structDirectSoundBuffer *lpSound); // stops and frees; null is fine
    // Starts the next voice once at the master volume; 1 when it plays. A failure, or a voice that
    // the device took but does not play, is logged and gives 0 (the same voice is tried next).
    int playSound(structDirectSoundBuffer *lpSound);

    void getErrorString(int hr, char *lpszError); // at most 87 bytes
    bool ErrorMessage(int hr, const char *lpszText);
};

#pragma pack(pop)

// The text form of a GUID: "{...}" with the sixteen bytes in memory order, 38 characters.
// GUID2str writes 39 bytes (the text and its terminating zero) to text.
VELLBASE_API void __cdecl GUID2str(_GUID guid, char *text);

// Reads sixteen hexadecimal pairs from text into *guid; '{', '}' and '-' between pairs are
// skipped, lower case is accepted. Never reads past the terminating zero: bytes the text does not
// reach are 0, and so is a pair that does not begin with a hexadecimal digit.
VELLBASE_API void __cdecl str2GUID(const char *text, _GUID *guid);

#endif
