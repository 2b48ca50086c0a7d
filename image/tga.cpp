// The TGA loader (platform-free).
#include "image/tga.h"

#include "image/pixel_format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace vell {

namespace {

constexpr std::size_t kHeaderSize = 18;

// One log line of the loader, which reports as the file constructor of TBitmap.
void say(const LogSink &log, const char *format, ...) __attribute__((format(printf, 2, 3)));
void say(const LogSink &log, const char *format, ...) {
    char text[256] = "TBitmap::TBitmap(char*) - ";
    const std::size_t prefix = std::strlen(text);
    va_list args;
    va_start(args, format);
    std::vsnprintf(text + prefix, sizeof text - prefix, format, args);
    va_end(args);
    log.line(log.context, text);
}

bool readExactly(ByteReader &in, void *buffer, std::size_t size) {
    return in.read(in.context, buffer, size) == size;
}

// A file that ends before its pixels do is refused, never loaded in part: the caller gets either
// the whole picture or an empty image, and learns why from one line.
bool truncated(const LogSink &log, ImagePlanes &image) {
    freePlanes(image);
    say(log, "File too short: picture data missing!\n");
    return false;
}

} // namespace

bool loadTga(ByteReader &in, std::uint32_t graphicsMode, std::uint32_t planes, ImagePlanes &image,
             const LogSink &log) {
    image = {};
    std::uint8_t header[256]; // the header, and then the image ID field (at most 255 bytes)
    if (!readExactly(in, header, kHeaderSize)) return truncated(log, image);
    const unsigned idLength = header[0], mapType = header[1], imageType = header[2];
    const std::uint32_t width = header[12] | header[13] << 8, height = header[14] | header[15] << 8;
    const unsigned depth = header[16], descriptor = header[17];

    if (mapType == 1) {
        say(log, "Wrong file type: Picture has a color table!");
        return false;
    }
    if (imageType != 2) {
        say(log, "Wrong file type: Picture has compression and/or isn't stored in TrueColor "
                 "format!\n");
        return false;
    }
    if (depth != 24 && depth != 32) {
        say(log, "Wrong file type: Picture has %d and not 24/32 bits color depth!\n", int(depth));
        return false;
    }
    const unsigned alphaBits = descriptor & 0x0F;
    const bool hasAlpha = alphaBits == 8;
    if (alphaBits != 0 && !hasAlpha)
        say(log, "Picture has unknown alpha channel! Ignoring alpha channel!\n");
    if (hasAlpha && depth == 24) {
        say(log, "Wrong file type: Picture must have depth of 32 with or 24 without alpha "
                 "channel!\n");
        return false;
    }
    // Refused before anything is allocated: a plane of 2^32 bytes or more, and a file that cannot
    // hold the pixels its header announces (so a forged header costs no memory).
    if (!planesFit(width, height)) {
        say(log, "Picture is too large (%u x %u pixels)!\n", unsigned(width), unsigned(height));
        return false;
    }
    const std::size_t pixelBytes = depth / 8, rowBytes = pixelBytes * width;
    if (kHeaderSize + idLength + std::uint64_t(rowBytes) * height > in.size)
        return truncated(log, image);
    // A picture without pixels gives an empty image: no plane of 0 bytes is asked of malloc.
    if (width == 0 || height == 0) return true;

    image.width = width;
    image.height = height;
    if (planes != kKeepAlphaOnly) {
        image.rgb = static_cast<std::uint16_t *>(std::malloc(std::size_t(width) * 2 * height));
        if (image.rgb == nullptr) {
            image = {};
            say(log, "Not enough memory for RGB data!\n");
            return false;
        }
    }
    if (hasAlpha && planes != kKeepColourOnly) {
        image.alpha = static_cast<std::uint8_t *>(std::malloc(std::size_t(width) * height));
        if (image.alpha == nullptr) {
            freePlanes(image);
            say(log, "Not enough memory for alpha channel!\n");
            return false;
        }
    }
    if (idLength != 0 && !readExactly(in, header, idLength)) return truncated(log, image);

    auto *row = static_cast<std::uint8_t *>(std::malloc(rowBytes));
    if (row == nullptr) {
        freePlanes(image);
        say(log, "Not enough memory for import!\n");
        return false;
    }
    // Descriptor bit 5 set: the first stored row is the top one. Bit 4 (right-to-left) is not
    // looked at: the stored pixels of a row always fill it from the left.
    const bool topDown = (descriptor & 0x20) != 0;
    for (std::uint32_t stored = 0; stored < height; ++stored) {
        if (!readExactly(in, row, rowBytes)) {
            std::free(row);
            return truncated(log, image);
        }
        const std::size_t first = std::size_t(topDown ? stored : height - 1 - stored) * width;
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint8_t *p = row + x * pixelBytes; // blue, green, red[, fourth byte]
            if (image.rgb != nullptr)
                image.rgb[first + x] = packRGB(graphicsMode, p[2], p[1], p[0]);
            if (image.alpha != nullptr) image.alpha[first + x] = p[3];
        }
    }
    std::free(row);
    return true;
}

namespace {
struct Memory {
    const std::uint8_t *data;
    std::size_t left;
};
std::size_t readMemory(void *context, void *buffer, std::size_t size) {
    auto *memory = static_cast<Memory *>(context);
    if (size > memory->left) size = memory->left;
    if (size != 0) std::memcpy(buffer, memory->data, size);
    memory->data += size;
    memory->left -= size;
    return size;
}
} // namespace

bool loadTga(const std::uint8_t *data, std::size_t size, std::uint32_t graphicsMode,
             std::uint32_t planes, ImagePlanes &image, const LogSink &log) {
    Memory memory = {data, size};
    ByteReader in = {readMemory, &memory, size};
    return loadTga(in, graphicsMode, planes, image, log);
}

} // namespace vell
