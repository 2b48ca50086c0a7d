// vell-fontmaker: any TrueType or OpenType font into a font file of the library.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "text/font_file.h"
#include "tools/fontmaker/code_pages.h"
#include "tools/fontmaker/font_bitmap.h"
#include "tools/fontmaker/glyph_strip.h"
#include "tools/fontmaker/platform.h"
#include "tools/fontmaker/preview.h"

namespace {

using namespace vell::fontmaker;

const char kUsage[] = "usage: vell-fontmaker [options] FONTFILE OUT.bmp\n"
                      "       vell-fontmaker [options] --face NAME OUT.bmp";

void printHelp() {
    std::printf("%s\n\n", kUsage);
    std::puts(
        "Renders the characters 32 to 255 of an 8-bit code page from a TrueType or OpenType font\n"
        "(any scalable font FreeType reads, or a font installed on Windows) into a font file for\n"
        "the library: an uncompressed 8-bit BMP strip of glyphs side by side, one byte of\n"
        "coverage per pixel (0 blank, 255 full ink), with one more row at the bottom that marks\n"
        "with a non-zero byte the column where each character's cell ends (code 32 first). The\n"
        "same font file and options give the same bytes on Windows and on Linux.\n"
        "\n"
        "Options:\n"
        "  --face NAME     on Windows: the installed font of this name (as the font list of any\n"
        "                  Windows program shows it) instead of a FONTFILE; a name no installed\n"
        "                  font has is an error. The font's file is rendered as from FONTFILE.\n"
        "  --bold, --italic  with --face: its bold or italic face, which must be installed.\n"
        "  --size PX       glyph rows, the line height of printed text, 1 to 255 (default 16).\n"
        "                  The font is drawn at the largest whole pixels-per-em size at which its\n"
        "                  ascender and descender, each rounded up to whole pixels, fit in PX "
        "rows\n"
        "                  together. The baseline lies the ascender below the top of the cell (or\n"
        "                  lower, where a glyph reaches above the ascender); rows left over stay\n"
        "                  blank at the bottom. Where the glyphs of the range would still need\n"
        "                  more than PX rows, a smaller size is taken: nothing is cut off.\n"
        "  --codepage CP   the code page that maps codes 32..255 to characters:");
    for (const CodePage &page : kCodePages)
        std::printf("                    %-7s %s%s\n", page.name, page.title,
                    &page == &kCodePages[0] ? " (default)" : "");
    std::puts(
        "                  A code that the code page or the font lacks gets a blank cell one\n"
        "                  column wide, so that every later code keeps its place.\n"
        "  --mono          hinted black-and-white glyphs (0 or 255) instead of anti-aliased ones.\n"
        "  --spacing N     blank columns after each glyph, 0 to 255 (default 1). A cell is the\n"
        "                  glyph's advance (widened where its ink reaches beyond it) plus these;\n"
        "                  kerning cannot be expressed in the format and is ignored.\n"
        "  --first CODE    codes from 32 to CODE - 1 get blank cells (default 32).\n"
        "  --last CODE     the font ends with this code (default 255).\n"
        "  --preview PNG   also write a picture of the font: its characters and sample sentences,\n"
        "                  printed by the library's own printing rule.\n"
        "  --top-down      store the rows top row first (default: bottom row first).\n"
        "  --help          this text.\n"
        "\n"
        "Nothing is written unless everything succeeds: files are written under a temporary\n"
        "name and renamed. The exit status is 0 on success, 1 when the font or an output file\n"
        "fails, 2 for a wrong command line.\n"
        "\n"
        "Examples: vell-fontmaker --size 16 --face \"DejaVu Sans\" font.bmp\n"
        "          vell-fontmaker --size 16 /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf "
        "font.bmp");
}

int fail(int status, const std::string &message) {
    std::fprintf(stderr, "vell-fontmaker: %s\n", message.c_str());
    return status;
}

// A whole number from low to high, the whole text.
bool parseNumber(const std::string &text, unsigned low, unsigned high, unsigned &value) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != text.npos)
        return false;
    value = static_cast<unsigned>(std::stoul(text));
    return value >= low && value <= high;
}

// A file beside the target, under a name no other run picks.
std::string temporaryName(const std::string &path) {
    static std::mt19937_64 random{std::random_device{}()};
    return path + ".tmp" + std::to_string(random() % 1000000000);
}

bool writeFile(const std::string &path, const std::vector<std::uint8_t> &bytes,
               std::string &error) {
    std::FILE *file = openFile(path, "wb");
    bool ok = file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const int cause = errno;
    if (file != nullptr && std::fclose(file) != 0) ok = false;
    if (!ok) error = std::strerror(cause != 0 ? cause : errno);
    return ok;
}

struct Output {
    std::string path;
    std::vector<std::uint8_t> bytes;
    std::string temporary;
};

// Writes every output under a temporary name, then renames them all; on any failure removes
// what it wrote, so that no output is left half made.
bool writeAll(std::vector<Output> &outputs, std::string &error) {
    std::error_code ignored;
    const auto undo = [&](std::size_t renamed) {
        for (std::size_t i = 0; i < outputs.size(); ++i)
            std::filesystem::remove(filePath(i < renamed ? outputs[i].path : outputs[i].temporary),
                                    ignored);
    };
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        Output &out = outputs[i];
        out.temporary = temporaryName(out.path);
        std::string cause;
        if (!writeFile(out.temporary, out.bytes, cause)) {
            undo(0);
            error = "cannot write " + out.path + ": " + cause;
            return false;
        }
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        std::error_code code;
        std::filesystem::rename(filePath(outputs[i].temporary), filePath(outputs[i].path), code);
        if (code) {
            undo(i);
            error = "cannot write " + outputs[i].path + ": " + code.message();
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> args = commandLine(argc, argv);
    StripOptions options;
    options.codePage = &kCodePages[0];
    bool topDown = false;
    bool bold = false, italic = false;
    std::string previewPath, face;
    std::vector<std::string> files;

    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string &arg = args[i];
        if (arg == "--help" || arg == "-h") {
            printHelp();
            return 0;
        }
        if (arg == "--mono") {
            options.mono = true;
        } else if (arg == "--top-down") {
            topDown = true;
        } else if (arg == "--bold" || arg == "--italic") {
            (arg == "--bold" ? bold : italic) = true;
        } else if (arg == "--size" || arg == "--codepage" || arg == "--spacing" ||
                   arg == "--first" || arg == "--last" || arg == "--preview" || arg == "--face") {
            if (i + 1 == args.size()) return fail(2, arg + " needs a value");
            const std::string &value = args[++i];
            bool ok = true;
            if (arg == "--size") {
                ok = parseNumber(value, 1, 255, options.size);
            } else if (arg == "--spacing") {
                ok = parseNumber(value, 0, 255, options.spacing);
            } else if (arg == "--first") {
                ok = parseNumber(value, 32, 255, options.first);
            } else if (arg == "--last") {
                ok = parseNumber(value, 32, 255, options.last);
            } else if (arg == "--preview") {
                previewPath = value;
            } else if (arg == "--face") {
                face = value;
            } else if ((options.codePage = findCodePage(value)) == nullptr) {
                return fail(2, "unknown code page \"" + value + "\": use " + codePageNames());
            }
            if (!ok) {
                const char *range = arg == "--size"      ? "1 to 255"
                                    : arg == "--spacing" ? "0 to 255"
                                                         : "32 to 255";
                return fail(2, arg + " takes a whole number from " + range + ", not \"" + value +
                                   "\"");
            }
        } else if (arg.size() > 1 && arg[0] == '-') {
            return fail(2, "unknown option " + arg + " (see --help)");
        } else {
            files.push_back(arg);
        }
    }
    if (files.size() != (face.empty() ? 2u : 1u))
        return fail(2, std::string(kUsage) + " (see --help)");
    if ((bold || italic) && face.empty())
        return fail(2, "--bold and --italic choose a face of an installed font (with --face)");
    if (options.first > options.last)
        return fail(2, "--first " + std::to_string(options.first) + " lies after --last " +
                           std::to_string(options.last));
    const std::string &outPath = files.back();
    if (!previewPath.empty() &&
        filePath(previewPath).lexically_normal() == filePath(outPath).lexically_normal())
        return fail(2, "the preview and the font file must be different files");

    FontSource font;
    GlyphStrip strip;
    std::string error;
    if (!(face.empty() ? readFontFile(files[0], font, error)
                       : loadInstalledFont(face, bold, italic, font, error)) ||
        !makeGlyphStrip(font, options, strip, error))
        return fail(1, error);
    if (strip.width > vell::kMaxFontWidth)
        return fail(1, "the strip would be " + std::to_string(strip.width) +
                           " columns wide, more than the library reads (" +
                           std::to_string(vell::kMaxFontWidth) + "): choose a smaller size");
    std::vector<Output> outputs{{outPath, fontBitmap(strip, topDown), {}}};
    if (!previewPath.empty()) {
        Preview preview;
        if (!renderPreview(outputs[0].bytes, *options.codePage, preview))
            return fail(1, "the library cannot read the font made (this is a bug)");
        outputs.push_back({previewPath, {}, {}});
        if (!encodePng(preview, outputs[1].bytes, error)) return fail(1, error);
    }
    if (!writeAll(outputs, error)) return fail(1, error);

    std::printf("%s: %s, codes 32 to %u (code page %s), %u rows: %u pixels per em, ascender %u, "
                "descender %u, baseline %u",
                outPath.c_str(), strip.family.c_str(), options.last, options.codePage->name,
                strip.height, strip.pixelsPerEm, strip.ascender, strip.descender, strip.baseline);
    if (strip.blanks > 0) std::printf("; %u codes without a glyph", strip.blanks);
    std::printf("\n");
    return 0;
}
