// Fuzzes the TGA loader with arbitrary bytes under the sanitizers: it must never read past the
// input or write past a plane, and must leave a whole image or an empty one and a line saying why.
// The image is then blended at the position of the header's origin field, never past its target.
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
    const bool warned = log == "TBitmap::TBitmap(char*) - Picture has unknown alpha channel! "
                               "Ignoring alpha channel!\n";
    if (loaded != (log.empty() || warned)) std::abort(); // a failure says why, in one line
    if (!loaded && (image.width || image.height || image.rgb || image.alpha)) std::abort();

    std::uint16_t target[16][16] = {}; // whatever lands outside it is an overflow for ASan
    const vell::PixelTarget t = {reinterpret_cast<std::uint8_t *>(target), 32, 16, 16};
    const auto x = std::int16_t(size > 9 ? data[8] | data[9] << 8 : 0);
    const auto y = std::int16_t(size > 11 ? data[10] | data[11] << 8 : 0);
    vell::blendImage(t, x, y, vell::paintSources(image, -1, -1), size > 3 ? data[3] : 255, mode);
    vell::freePlanes(image);
    return 0;
}
