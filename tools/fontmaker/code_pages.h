// 8-bit code pages: which Unicode character each code from 32 to 255 stands for.
#ifndef VELL_FONTMAKER_CODE_PAGES_H
#define VELL_FONTMAKER_CODE_PAGES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vell::fontmaker {

struct CodePage {
    const char *name;           // as given to --codepage
    const char *title;          // for --help
    const std::uint16_t *upper; // codes 128..255, 0 = none; null: Latin-1 (the code itself)
    char32_t del;               // what code 127 shows, 0 = nothing
};

constexpr std::size_t kCodePageCount = 5;
extern const CodePage kCodePages[kCodePageCount];

// The code page named "1252", "1250", "1251", "437" or "latin1"; null for any other name.
const CodePage *findCodePage(std::string_view name);
// The names above as a sentence ("1252, 1250, 1251, 437 or latin1").
std::string codePageNames();
// The character of code 32..255, or 0 where the code page has none (and for codes outside).
char32_t toUnicode(const CodePage &page, unsigned code);
// The first code that stands for ch, or 0 when the code page cannot write it.
unsigned fromUnicode(const CodePage &page, char32_t ch);

} // namespace vell::fontmaker

#endif
