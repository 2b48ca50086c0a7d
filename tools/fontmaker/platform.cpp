#include "tools/fontmaker/platform.h"

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>
#endif

namespace vell::fontmaker {

#ifdef _WIN32

namespace {

std::wstring wide(const std::string &utf8) {
    const int n =
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring text(static_cast<std::size_t>(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(), n);
    return text;
}

std::string narrow(const wchar_t *text) {
    const int n = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(n > 0 ? static_cast<std::size_t>(n) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), n, nullptr, nullptr);
    utf8.resize(utf8.size() - 1); // the terminating zero
    return utf8;
}

// A memory device context with the font selected, released in the reverse order.
struct SelectedFont {
    HDC dc = CreateCompatibleDC(nullptr);
    HFONT font = nullptr;
    HGDIOBJ previous = nullptr;
    explicit SelectedFont(const LOGFONTW &logFont) : font(CreateFontIndirectW(&logFont)) {
        if (dc != nullptr && font != nullptr) previous = SelectObject(dc, font);
    }
    ~SelectedFont() {
        if (previous != nullptr) SelectObject(dc, previous);
        if (font != nullptr) DeleteObject(font);
        if (dc != nullptr) DeleteDC(dc);
    }
    SelectedFont(const SelectedFont &) = delete;
    SelectedFont &operator=(const SelectedFont &) = delete;
};

} // namespace

std::vector<std::string> commandLine(int, char **) {
    std::vector<std::string> args;
    int count = 0;
    if (LPWSTR *list = CommandLineToArgvW(GetCommandLineW(), &count)) {
        for (int i = 1; i < count; ++i)
            args.push_back(narrow(list[i]));
        LocalFree(list);
    }
    return args;
}

std::filesystem::path filePath(const std::string &utf8) {
    return std::filesystem::path(wide(utf8));
}

std::FILE *openFile(const std::string &utf8, const char *mode) {
    return _wfopen(wide(utf8).c_str(), wide(mode).c_str());
}

bool loadInstalledFont(const std::string &face, bool bold, bool italic, FontSource &font,
                       std::string &error) {
    font = FontSource();
    font.name = "\"" + face + "\"";
    font.family = face;
    font.bold = bold;
    font.italic = italic;
    const std::wstring name = wide(face);
    LOGFONTW logFont = {};
    if (name.empty() || name.size() >= LF_FACESIZE) {
        error = "a face name has 1 to " + std::to_string(LF_FACESIZE - 1) + " characters, not " +
                font.name;
        return false;
    }
    name.copy(logFont.lfFaceName, name.size());
    logFont.lfHeight = -64;
    logFont.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    logFont.lfItalic = italic;
    logFont.lfCharSet = DEFAULT_CHARSET;
    logFont.lfOutPrecision = OUT_TT_ONLY_PRECIS;
    const SelectedFont selected(logFont);
    if (selected.previous == nullptr) {
        error = "Windows cannot select the font " + font.name;
        return false;
    }
    // The font mapper takes another face for a name it does not know: it must be the one asked for.
    wchar_t chosen[LF_FACESIZE] = {};
    GetTextFaceW(selected.dc, LF_FACESIZE, chosen);
    if (lstrcmpiW(chosen, name.c_str()) != 0) {
        error = "no font named " + font.name + " is installed (Windows offered \"" +
                narrow(chosen) + "\" instead)";
        return false;
    }
    // A collection's fonts come whole (table "ttcf"); the glyph strip picks the face from it.
    for (const DWORD table : {DWORD{0x66637474}, DWORD{0}}) {
        const DWORD size = GetFontData(selected.dc, table, 0, nullptr, 0);
        if (size == GDI_ERROR || size == 0) continue;
        font.bytes.resize(size);
        if (GetFontData(selected.dc, table, 0, font.bytes.data(), size) == size) return true;
    }
    error = "Windows gives no font file for " + font.name + " (only TrueType and OpenType fonts)";
    return false;
}

#else

std::vector<std::string> commandLine(int argc, char **argv) {
    return {argv + 1, argv + argc};
}

std::filesystem::path filePath(const std::string &utf8) {
    return std::filesystem::path(utf8);
}

std::FILE *openFile(const std::string &utf8, const char *mode) {
    return std::fopen(utf8.c_str(), mode);
}

bool loadInstalledFont(const std::string &face, bool, bool, FontSource &, std::string &error) {
    error = "--face takes a font installed on Windows; here give the font's file instead (fc-match "
            "--format='%{file}\\n' '" +
            face + "' names it)";
    return false;
}

#endif

} // namespace vell::fontmaker
