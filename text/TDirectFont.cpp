// The bitmap font: its file read with the 16-bit file functions and handed to the font-file
// parser, the two "DirectFont" boxes, and the character lookups.
#include "VellBase.h"

#include "text/font_file.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

#ifdef _WIN64
static_assert(sizeof(TDirectFont) == 35, "TDirectFont must stay byte-packed");
#else
static_assert(sizeof(TDirectFont) == 23, "TDirectFont must be 23 bytes on 32-bit Windows");
#endif

namespace {

const char kCaption[] = "DirectFont";

// Reads the headers, then as many bytes as they promise, in steps, so that a header promising far
// more than the file holds costs no more memory than the file has.
std::vector<std::uint8_t> readFontBytes(HFILE file) {
    std::vector<std::uint8_t> bytes(vell::kFontHeaderSize);
    UINT got = _lread(file, bytes.data(), vell::kFontHeaderSize);
    if (got == static_cast<UINT>(HFILE_ERROR)) got = 0;
    bytes.resize(got);
    const std::size_t extent = vell::fontFileExtent(bytes.data(), bytes.size());
    while (bytes.size() < extent) {
        const std::size_t done = bytes.size();
        const std::size_t step = std::min<std::size_t>(extent - done, 1u << 16);
        bytes.resize(done + step);
        got = _lread(file, bytes.data() + done, static_cast<UINT>(step));
        if (got == static_cast<UINT>(HFILE_ERROR)) got = 0;
        bytes.resize(done + got);
        if (got < step) break;
    }
    return bytes;
}

void storeCells(TDirectFont &font, const vell::FontCell (&cells)[vell::kMaxFontChars],
                unsigned count) {
    if (font.lpSpacings == nullptr) font.lpSpacings = new DWORD[vell::kMaxFontChars][2];
    for (unsigned k = 0; k < vell::kMaxFontChars; ++k) {
        font.lpSpacings[k][0] = cells[k].position;
        font.lpSpacings[k][1] = cells[k].width;
    }
    font.wCharCount = static_cast<WORD>(count);
    font.bLastIndex = static_cast<BYTE>(count > 0 ? count - 1 : 0);
}

// Entry c of the table: {position, width}, or null when the font lacks c.
const DWORD *cellOf(const TDirectFont &font, unsigned char c) {
    const unsigned k = static_cast<unsigned char>(c - 32);
    if (font.lpSpacings == nullptr || font.wCharCount == 0 || k > font.bLastIndex ||
        k >= vell::kMaxFontChars)
        return nullptr;
    return font.lpSpacings[k];
}

} // namespace

TDirectFont::TDirectFont(const char *fileName) {
    lpFileName = nullptr;
    if (fileName != nullptr) {
        const std::size_t size = std::strlen(fileName) + 1;
        lpFileName = static_cast<char *>(std::malloc(size));
        if (lpFileName != nullptr) std::memcpy(lpFileName, fileName, size);
    }
    dwWidth = 0;
    dwHeight = 0;
    lpFontData = nullptr;
    lpSpacings = nullptr;
    bLastIndex = 0;
    wCharCount = 0;
    LoadFont();
}

TDirectFont::~TDirectFont() {
    std::free(lpFileName);
    lpFileName = nullptr;
    delete[] lpSpacings;
    lpSpacings = nullptr;
    std::free(lpFontData);
    lpFontData = nullptr;
    dwWidth = 0;
    dwHeight = 0;
}

bool TDirectFont::LoadFont() {
    const HFILE file = lpFileName != nullptr ? _lopen(lpFileName, OF_READ) : HFILE_ERROR;
    if (file == HFILE_ERROR) {
        MessageBoxA(nullptr, "Falscher Font-Name!", kCaption, MB_OK);
        return false;
    }
    const std::vector<std::uint8_t> bytes = readFontBytes(file);
    _lclose(file);

    vell::FontImage image;
    unsigned char *plane = nullptr;
    if (vell::parseFontFile(bytes.data(), bytes.size(), image))
        plane = static_cast<unsigned char *>(std::malloc(image.glyphs.size()));
    if (plane == nullptr) { // the plane is at most 64 MiB: out of memory counts as a bad file
        MessageBoxA(nullptr, "Falsches Font-Format!", kCaption, MB_OK);
        return false;
    }
    std::memcpy(plane, image.glyphs.data(), image.glyphs.size());
    std::free(lpFontData);
    lpFontData = plane;
    dwWidth = image.width;
    dwHeight = image.height;
    storeCells(*this, image.cells, image.count);
    return true;
}

void TDirectFont::ReadSpacings(int hFile, int rowSize) {
    std::vector<std::uint8_t> row(rowSize > 0 ? static_cast<std::size_t>(rowSize) : 0);
    const UINT got = _lread(static_cast<HFILE>(hFile), row.data(), static_cast<UINT>(row.size()));
    row.resize(got == static_cast<UINT>(HFILE_ERROR) ? 0 : std::min<std::size_t>(got, row.size()));
    vell::FontCell cells[vell::kMaxFontChars];
    const unsigned count =
        vell::scanSpacingRow(row.data(), std::min<std::size_t>(row.size(), dwWidth), cells);
    storeCells(*this, cells, count);
}

unsigned char *TDirectFont::getFontData() {
    return lpFontData;
}

int TDirectFont::getCharPos(unsigned char c) {
    const DWORD *cell = cellOf(*this, c);
    return cell != nullptr ? static_cast<int>(cell[0]) : 0;
}

int TDirectFont::getCharWidth(unsigned char c) {
    const DWORD *cell = cellOf(*this, c);
    return cell != nullptr ? static_cast<int>(cell[1]) : 0;
}

int TDirectFont::getStringWidth(const unsigned char *s) {
    long long width = 0;
    for (; s != nullptr && *s != 0 && *s != 10 && *s != 13; ++s)
        width += getCharWidth(*s);
    return width > INT_MAX ? INT_MAX : static_cast<int>(width);
}
