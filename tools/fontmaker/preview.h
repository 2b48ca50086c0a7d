// A picture of a made font, so that a user sees it without a game: the font file is read back by
// the library's own parser and printed by its own printing rule into 5:6:5 pixels.
#ifndef VELL_FONTMAKER_PREVIEW_H
#define VELL_FONTMAKER_PREVIEW_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/fontmaker/code_pages.h"

namespace vell::fontmaker {

struct Preview {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint16_t> pixels; // 5:6:5, rows top first
};

// The font's characters, 32 to a row, then sample sentences written in its code page, black on
// white, and one sentence in colour on a dark band. False when fontFile is not a font file.
bool renderPreview(const std::vector<std::uint8_t> &fontFile, const CodePage &page,
                   Preview &preview);

// The preview as a PNG file's bytes (8-bit RGB, each channel widened by repeating its top bits),
// compressed by zlib alone, so that a given zlib version writes the same bytes everywhere.
bool encodePng(const Preview &preview, std::vector<std::uint8_t> &png, std::string &error);

} // namespace vell::fontmaker

#endif
