// Fuzzes the TGA loader with arbitrary bytes under the sanitizers: it must never read past the
// input or write past a plane, must leave either a whole image or an empty one, and the image
// must paint (at the position the header's origin field gives) without leaving its target.
#include "image/compose.h"
#include "image/tga.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string log;
    const vell::LogSink sink = {
        [](void *out, const char *line) { *static_cast<std::string *>(out) += line; }, &log};
    const std::uint32_t mode = size > 17 ? data[17] >> 6 : 2; // layouts 0..3 by two spare bits
    vell::ImagePlanes image;
    const bool loaded = vell::loadTga(data, size, mode, size > 0 ? data[0] % 4 : 0, image, sink);
    const bool empty = image.width == 0 && image.height == 0 && !image.rgb && !image.alpha;
    const bool warned = log == "TBitmap::TBitmap(char*) - Picture has unknown alpha channel! "
                               "Ignoring alpha channel!\n";
    if (loaded != (log.empty() || warned)) std::abort(); // a failure says why, in one line
    if (!loaded && !empty) std::abort();

    std::uint16_t target[18][20] = {}; // a 16 x 16 target inside a frame that must stay 0
    const vell::PixelTarget t = {reinterpret_cast<std::uint8_t *>(&target[1][2]), 40, 16, 16};
    const auto x = std::int16_t(size > 9 ? data[8] | data[9] << 8 : 0);
    const auto y = std::int16_t(size > 11 ? data[10] | data[11] << 8 : 0);
    vell::blendImage(t, x, y, vell::paintSources(image, -1, -1), size > 3 ? data[3] : 255, mode);
    for (int row = 0; row < 18; ++row)
        for (int col = 0; col < 20; ++col)
            if ((row == 0 || row == 17 || col < 2 || col >= 18) && target[row][col] != 0)
                std::abort();
    vell::freePlanes(image);
    return 0;
}
