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
//   Link against the import library (libVellBase.dll.a with MinGW); define VELLBASE_STATIC when
//   the library's sources are compiled into the client itself.
#ifndef VELLBASE_H
#define VELLBASE_H

#include <windows.h>

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
    // there. Silent while no log is open.
    void DebugOut(const char *format, ...) VELLBASE_PRINTF(2, 3);
};

#pragma pack(pop)

// The text form of a GUID: "{...}" with the sixteen bytes in memory order, 38 characters.
// GUID2str writes 39 bytes (the text and its terminating zero) to text.
VELLBASE_API void GUID2str(_GUID guid, char *text);

// Reads sixteen hexadecimal pairs from text into *guid; '{', '}' and '-' between pairs are
// skipped, lower case is accepted. Never reads past the terminating zero: bytes the text does not
// reach are 0, and so is a pair that does not begin with a hexadecimal digit.
VELLBASE_API void str2GUID(const char *text, _GUID *guid);

#endif
