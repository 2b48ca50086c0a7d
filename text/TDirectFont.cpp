// The bitmap font: its file read with the 16-bit file functions and handed to the font-file
// parser, the two "DirectFont" boxes, and the character lookups.
#include "VellBase.h"

#include "text/FontGlyphs.h"
#include "text/font_file.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef _WIN64
static_assert(sizeof(TDirectFont) == 35, "TDirectFont must stay byte-packed");
#else
static_assert(sizeof(TDirectFont) == 23, "TDirectFont must be 23 bytes on 32-bit Windows");
#endif

namespace {

const char kCaption[] = "DirectFont";

// Reads the headers, then as many bytes as they promise, in steps, so that a header promising far
// more than the file holds costs no more memory than the file has. False when memory ran out.
bool readFontBytes(HFILE file, vell::Bytes &bytes) {
    std::size_t got = 0, extent = vell::kFontHeaderSize;
    while (got < extent) {
        const std::size_t step = std::min<std::size_t>(extent - got, 1u << 16);
        if (!bytes.resize(got + step)) return false;
        UINT n = _lread(file, bytes.data() + got, static_cast<UINT>(step));
        if (n == static_cast<UINT>(HFILE_ERROR)) n = 0;
        got += n;
        bytes.resize(got); // shrinking never fails
        if (n < step) break;
        if (got == vell::kFontHeaderSize)
            extent = std::max(extent, vell::fontFileExtent(bytes.data(), got));
    }
    return true;
}

// The table of a loaded font; false (the font unchanged) when it cannot be allocated.
bool storeCells(TDirectFont &font, const vell::FontCell (&cells)[vell::kMaxFontChars],
                unsigned count) {
    if (font.lpSpacings == nullptr)
        font.lpSpacings = new (std::nothrow) DWORD[vell::kMaxFontChars][2];
    if (font.lpSpacings == nullptr) return false;
    for (unsigned k = 0; k < vell::kMaxFontChars; ++k) {
        font.lpSpacings[k][0] = cells[k].position;
        font.lpSpacings[k][1] = cells[k].width;
    }
    font.wCharCount = static_cast<WORD>(count);
    font.bLastIndex = static_cast<BYTE>(count > 0 ? count - 1 : 0);
    return true;
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
    vell::Bytes bytes;
    const bool read = readFontBytes(file, bytes);
    _lclose(file);

    // The plane is at most 64 MiB: out of memory counts as a bad file.
    vell::FontImage image;
    if (!read || !vell::parseFontFile(bytes.data(), bytes.size(), image) ||
        !storeCells(*this, image.cells, image.count)) {
        MessageBoxA(nullptr, "Falsches Font-Format!", kCaption, MB_OK);
        return false;
    }
    std::free(lpFontData);
    lpFontData = image.glyphs.release();
    dwWidth = image.width;
    dwHeight = image.height;
    return true;
}

// Every byte of the row counts, from column 0 (as LoadFont reads the spacing row). Without memory
// for the row or the table the font has no characters.
void TDirectFont::ReadSpacings(int hFile, int rowSize) {
    vell::Bytes row;
    std::size_t got = 0;
    if (rowSize > 0 && row.resize(static_cast<std::size_t>(rowSize))) {
        const UINT n = _lread(static_cast<HFILE>(hFile), row.data(), static_cast<UINT>(rowSize));
        got = n == static_cast<UINT>(HFILE_ERROR) ? 0 : std::min<std::size_t>(n, row.size());
    }
    vell::FontCell cells[vell::kMaxFontChars];
    if (!storeCells(*this, cells, vell::scanSpacingRow(row.data(), got, cells))) wCharCount = 0;
}

unsigned char *TDirectFont::getFontData() {
    return lpFontData;
}

int TDirectFont::getCharPos(unsigned char c) {
    return static_cast<int>(vell::cellOf(vell::FontGlyphs(*this).font, c).position);
}

int TDirectFont::getCharWidth(unsigned char c) {
    return static_cast<int>(vell::cellOf(vell::FontGlyphs(*this).font, c).width);
}

int TDirectFont::getStringWidth(const unsigned char *s) {
    const std::uint64_t width = vell::lineWidth(vell::FontGlyphs(*this).font, s);
    return width > INT_MAX ? INT_MAX : static_cast<int>(width);
}
