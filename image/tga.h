// The loader of uncompressed true-colour TGA files (platform-free). It reads from any source of
// bytes and reports each problem as one finished log line; opening the file is the caller's part.
//
// Accepted: image type 2 without colour map, 24 or 32 bits per pixel (blue, green, red and at 32
// bits a fourth byte), alpha bits 0 or 8 in the descriptor (8 only at 32 bits), rows top-down when
// descriptor bit 5 is set and bottom-up otherwise. Every pixel is packed into 16 bits by the
// graphics mode (packRGB); the fourth byte becomes the alpha plane when the file has 8 alpha bits.
#ifndef VELL_TGA_H
#define VELL_TGA_H

#include "image/planes.h"

#include <cstddef>
#include <cstdint>

namespace vell {

// A source of bytes. read copies up to size bytes into buffer and returns how many it copied:
// fewer only at the end of the data or on a read error. size is the number of bytes the source
// holds from where the loader starts reading.
struct ByteReader {
    std::size_t (*read)(void *context, void *buffer, std::size_t size);
    void *context;
    std::uint64_t size;
};

// Where the loader's log lines go, each as one finished text.
struct LogSink {
    void (*line)(void *context, const char *text);
    void *context;
};

// Which planes the loader keeps (the planes argument; any other value keeps both).
enum : std::uint32_t { kKeepAlphaOnly = 1, kKeepColourOnly = 2 };

// Loads a TGA image into image (which is overwritten, not freed). On failure it logs one line and
// leaves image empty: 0 x 0 without planes. Returns true when the file was read, also when it
// gave no plane (alpha only asked of a file without alpha) or no pixel (a width or height of 0).
bool loadTga(ByteReader &in, std::uint32_t graphicsMode, std::uint32_t planes, ImagePlanes &image,
             const LogSink &log);

// The same from size bytes in memory.
bool loadTga(const std::uint8_t *data, std::size_t size, std::uint32_t graphicsMode,
             std::uint32_t planes, ImagePlanes &image, const LogSink &log);

} // namespace vell

#endif
