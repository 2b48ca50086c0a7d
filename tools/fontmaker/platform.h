// What the font maker does differently on Windows: its command line and file names in UTF-8
// whatever the code page, and fonts installed on the machine, found by name.
#ifndef VELL_FONTMAKER_PLATFORM_H
#define VELL_FONTMAKER_PLATFORM_H

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/fontmaker/glyph_strip.h"

namespace vell::fontmaker {

// The program's arguments (without its name), in UTF-8.
std::vector<std::string> commandLine(int argc, char **argv);

// A file name given in UTF-8.
std::filesystem::path filePath(const std::string &utf8);
std::FILE *openFile(const std::string &utf8, const char *mode);

// The file of the installed font named face (its bold or italic face where asked), through the
// platform's font interface: on Windows GDI's, which names the face it chose, so a name that no
// installed font has is refused rather than replaced. Elsewhere an error that says how to name the
// font's file instead.
bool loadInstalledFont(const std::string &face, bool bold, bool italic, FontSource &font,
                       std::string &error);

} // namespace vell::fontmaker

#endif
