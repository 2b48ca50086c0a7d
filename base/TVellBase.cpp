// The application base object: string resources, the registry key and the debug log.
#include "VellBase.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

// The byte-packed layout is part of the binary interface.
#ifdef _WIN64
static_assert(sizeof(TVellBase) == 57, "TVellBase must stay byte-packed");
#else
static_assert(sizeof(TVellBase) == 29, "TVellBase must be 29 bytes on 32-bit Windows");
#endif

namespace {
constexpr int kStringSize = 1024; // getString and DebugOut buffers
constexpr int kAppNameSize = 80;  // 79 characters and the terminating zero
} // namespace

TVellBase::TVellBase(void *hInst, unsigned int idAppName, unsigned int idRegKey, bool bDebug) {
    hInstance = static_cast<HINSTANCE>(hInst);
    hWnd = nullptr;
    hKey = nullptr;

    lpszString = new (std::nothrow) char[kStringSize]();
    lpszDebug = new (std::nothrow) char[kStringSize]();

    // getString reuses one buffer, so the name is copied out before the sub-key is loaded. A
    // missing name resource leaves an empty name; a longer one is cut at 79 characters.
    lpszAppName = new (std::nothrow) char[kAppNameSize]();
    if (lpszAppName != nullptr) {
        if (const char *name = getString(idAppName)) lstrcpynA(lpszAppName, name, kAppNameSize);
    }

    hLogFile = nullptr;
    bNoDebug = true;
    if (bDebug) InitDebug();

    // Failure is not reported here: hKey stays null, so later value reads fail (the readers take
    // their defaults) and writes are dropped.
    if (const char *subKey = getString(idRegKey)) {
        char keyClass[] = "";
        DWORD disposition = 0;
        HKEY key = nullptr;
        if (RegCreateKeyExA(HKEY_CURRENT_USER, subKey, 0, keyClass, REG_OPTION_NON_VOLATILE,
                            KEY_ALL_ACCESS, nullptr, &key, &disposition) == ERROR_SUCCESS)
            hKey = key;
    }
}

TVellBase::~TVellBase() {
    if (hLogFile != nullptr) {
        CloseHandle(hLogFile);
        hLogFile = nullptr;
    }
    bNoDebug = true;
    delete[] lpszAppName;
    lpszAppName = nullptr;
    delete[] lpszString;
    lpszString = nullptr;
    delete[] lpszDebug;
    lpszDebug = nullptr;
    if (hKey != nullptr) RegCloseKey(hKey);
    hKey = nullptr;
}

char *TVellBase::getString(unsigned int id) {
    if (lpszString == nullptr) return nullptr;
    // One less than the buffer, as the library has always passed: at most 1022 characters.
    if (LoadStringA(hInstance, id, lpszString, kStringSize - 1) == 0) return nullptr;
    return lpszString;
}

void TVellBase::InitDebug() {
    // Creating the file again would fail against our own unshared handle and lose the open log.
    if (hLogFile != nullptr) return;

    char fileName[MAX_PATH];
    std::snprintf(fileName, sizeof fileName, "%s.log", lpszAppName != nullptr ? lpszAppName : "");
    HANDLE file = CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        hLogFile = nullptr;
        bNoDebug = true;
        return;
    }
    hLogFile = file;
    bNoDebug = false;
}

namespace {
bool logging(const TVellBase &base) {
    return !base.bNoDebug && base.hLogFile != nullptr && base.lpszDebug != nullptr;
}

void writeEntry(TVellBase &base, const char *format, va_list args) {
    const int wanted = std::vsnprintf(base.lpszDebug, kStringSize, format, args);
    if (wanted <= 0) return;
    const DWORD length = static_cast<DWORD>(std::strlen(base.lpszDebug));
    DWORD written = 0;
    WriteFile(base.hLogFile, base.lpszDebug, length, &written, nullptr);
}

// Copies format with the L of every floating-point conversion (%Lf, %-12.3Lg, ...) dropped.
void plainDoubles(const char *format, char *out) {
    while (*format != 0) {
        if ((*out++ = *format++) != '%') continue;
        while (*format != 0 && std::strchr("-+ #0123456789.*'$", *format) != nullptr)
            *out++ = *format++;
        if (format[0] == 'L' && format[1] != 0 && std::strchr("aAeEfFgG", format[1]) != nullptr)
            ++format;
        else if (*format == '%')
            *out++ = *format++;
    }
    *out = 0;
}
} // namespace

void TVellBase::DebugOut(const char *format, ...) {
    if (!logging(*this) || format == nullptr) return;
    va_list args;
    va_start(args, format);
    writeEntry(*this, format, args);
    va_end(args);
}

// DebugOut for Microsoft-ABI (Visual Studio) clients, exported under its Microsoft name by
// base/msabi_<arch>.def: their long double is a double, so a %L conversion reads a double.
extern "C" void msabi_TVellBase_DebugOut(TVellBase *self, const char *format, ...) {
    if (self == nullptr || !logging(*self) || format == nullptr) return;
    char *plain = new (std::nothrow) char[std::strlen(format) + 1];
    if (plain == nullptr) return;
    plainDoubles(format, plain);
    va_list args;
    va_start(args, format);
    writeEntry(*self, plain, args);
    va_end(args);
    delete[] plain;
}
