#include "tools/fontmaker/preview.h"

#include <zlib.h>

#include <algorithm>

#include "image/pixel_format.h"
#include "text/font_file.h"
#include "text/print_loop.h"

namespace vell::fontmaker {
namespace {

constexpr int kMargin = 8;
constexpr unsigned kCodesPerRow = 32;

const char32_t kPangram[] = U"The quick brown fox jumps over the lazy dog. 0123456789 (+-*/=) ?!";

// One line in the code page's own language where it has one.
const char32_t *sample(const CodePage &page) {
    const std::string name = page.name;
    if (name == "1250") return U"Příliš žluťoučký kůň úpěl ďábelské ódy. Zażółć gęślą jaźń.";
    if (name == "1251") return U"Съешь же ещё этих мягких французских булок, да выпей чаю.";
    if (name == "437") return U"╔═╗ Größe: ½ ± ¼ ≈ 3°C, π ≥ 3.14 ░▒▓█ ╚═╝";
    return U"Zwölf Boxkämpfer jagen Viktor quer über den großen Sylter Deich. Ça c'est déjà l'été.";
}

// Characters the code page cannot write are left out.
std::vector<unsigned char> encode(const CodePage &page, const char32_t *text) {
    std::vector<unsigned char> codes;
    for (; *text != 0; ++text)
        if (const unsigned code = fromUnicode(page, *text)) codes.push_back(code);
    codes.push_back(0);
    return codes;
}

} // namespace

bool renderPreview(const std::vector<std::uint8_t> &fontFile, const CodePage &page,
                   Preview &preview) {
    FontImage font;
    if (!parseFontFile(fontFile.data(), fontFile.size(), font)) return false;
    const GlyphFont glyphs{font.glyphs.data(), font.width, font.height, font.cells, font.count};

    std::vector<std::vector<unsigned char>> rows;
    for (unsigned first = 32; first < 32 + font.count; first += kCodesPerRow) {
        rows.emplace_back();
        for (unsigned code = first; code < first + kCodesPerRow && code <= 255; ++code)
            rows.back().push_back(static_cast<unsigned char>(code));
        rows.back().push_back(0);
    }
    const std::vector<unsigned char> pangram = encode(page, kPangram);
    const std::vector<unsigned char> local = encode(page, sample(page));
    std::uint64_t widest = 0;
    for (const auto *line : {&pangram, &local})
        widest = std::max(widest, lineWidth(glyphs, line->data()));
    for (const auto &row : rows)
        widest = std::max(widest, lineWidth(glyphs, row.data()));

    const int line = static_cast<int>(font.height);
    const int samples = kMargin + static_cast<int>(rows.size()) * line + line / 2;
    const int band = samples + 2 * line + kMargin;
    preview.width = static_cast<std::uint32_t>(widest) + 2 * kMargin;
    preview.height = static_cast<std::uint32_t>(band + line + 2 * kMargin);
    preview.pixels.assign(std::size_t{preview.width} * preview.height, 0xFFFF);
    std::fill(preview.pixels.begin() + std::ptrdiff_t{band} * preview.width, preview.pixels.end(),
              packRGB(kMode565, 24, 40, 88));

    const PixelTarget target{reinterpret_cast<std::uint8_t *>(preview.pixels.data()),
                             2 * static_cast<std::ptrdiff_t>(preview.width),
                             static_cast<std::int32_t>(preview.width),
                             static_cast<std::int32_t>(preview.height)};
    const auto print = [&](int y, const std::vector<unsigned char> &text, std::uint16_t colour) {
        printGlyphs(target, glyphs, kMargin, y, text.data(), colour, 0, kMode565);
    };
    for (std::size_t i = 0; i < rows.size(); ++i)
        print(kMargin + static_cast<int>(i) * line, rows[i], 0);
    print(samples, pangram, 0);
    print(samples + line, local, 0);
    print(band + kMargin, pangram, packRGB(kMode565, 255, 224, 96));
    return true;
}

bool encodePng(const Preview &preview, std::vector<std::uint8_t> &png, std::string &error) {
    // Each row: filter type 0 (none), then its red, green and blue bytes.
    std::vector<std::uint8_t> rows;
    rows.reserve(preview.height * (1 + std::size_t{preview.width} * 3));
    for (std::size_t i = 0; i < preview.pixels.size(); ++i) {
        if (i % preview.width == 0) rows.push_back(0);
        const Channels c = split<kMode565>(preview.pixels[i]);
        rows.push_back(static_cast<std::uint8_t>(c.red << 3 | c.red >> 2));
        rows.push_back(static_cast<std::uint8_t>(c.green << 2 | c.green >> 4));
        rows.push_back(static_cast<std::uint8_t>(c.blue << 3 | c.blue >> 2));
    }
    uLongf packedSize = compressBound(static_cast<uLong>(rows.size()));
    std::vector<std::uint8_t> packed(packedSize);
    if (compress2(packed.data(), &packedSize, rows.data(), static_cast<uLong>(rows.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        error = "cannot make the preview picture: zlib failed";
        return false;
    }
    packed.resize(packedSize);

    const auto put32 = [&png](std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8)
            png.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    // A chunk: length, type, data, and the CRC of type and data.
    const auto chunk = [&](const char *type, const std::vector<std::uint8_t> &data) {
        put32(static_cast<std::uint32_t>(data.size()));
        const std::size_t start = png.size();
        png.insert(png.end(), type, type + 4);
        png.insert(png.end(), data.begin(), data.end());
        put32(static_cast<std::uint32_t>(
            crc32(0, &png[start], static_cast<uInt>(png.size() - start))));
    };
    png.assign({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'});
    std::vector<std::uint8_t> header;
    for (const std::uint32_t value : {preview.width, preview.height})
        for (int shift = 24; shift >= 0; shift -= 8)
            header.push_back(static_cast<std::uint8_t>(value >> shift));
    header.insert(header.end(), {8, 2, 0, 0, 0}); // 8 bits per channel, RGB, deflate, no interlace
    chunk("IHDR", header);
    chunk("IDAT", packed);
    chunk("IEND", {});
    return true;
}

} // namespace vell::fontmaker
