// Alpha planes of text images: reduced from a supersampled rendering, or copied from glyphs.
#include "image/text_image.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(TextImage, ReductionCountsExactWhiteOnly) {
    constexpr std::uint16_t kWhite = 0xFFFF;
    // A 2-pixel-wide image at each factor: the left block all white, the right one white in one
    // word and near-white (not ink) in the others.
    const struct {
        unsigned factor;
        std::uint8_t left, right;
    } cases[] = {{1, 255, 255}, {2, 255, 64}, {3, 252, 28}, {4, 255, 16}, {17, 0, 0}};
    for (const auto &c : cases) {
        const unsigned f = c.factor, pitchWords = 2 * f + 3; // rows padded
        std::vector<std::uint16_t> rendering(pitchWords * f, 0x1234);
        for (unsigned v = 0; v < f; ++v)
            for (unsigned u = 0; u < 2 * f; ++u)
                rendering[v * pitchWords + u] = u < f || (u == f && v == 0) ? kWhite : 0xFFDF;
        std::uint8_t alpha[2] = {};
        vell::reduceRendering(reinterpret_cast<const std::uint8_t *>(rendering.data()),
                              2 * pitchWords, kWhite, f, 2, 1, alpha);
        EXPECT_EQ(alpha[0], c.left) << "factor " << f;
        EXPECT_EQ(alpha[1], c.right) << "factor " << f;
    }
}

TEST(TextImage, GlyphsAreCopiedLineBelowLine) {
    // Characters 32 ' ' (2 wide), 33 '!' (1 wide), 34 '"' (3 wide) in a 2-row plane of stride 8.
    const std::uint8_t plane[] = {1, 2, 3, 4, 5, 6, 0, 0, 11, 12, 13, 14, 15, 16, 0, 0};
    const vell::FontCell cells[] = {{0, 2}, {2, 1}, {3, 3}};
    const vell::GlyphFont font = {plane, 8, 2, cells, 3};
    const auto *text = reinterpret_cast<const unsigned char *>("! \r#\n\"\"\n!");
    ASSERT_EQ(vell::textLines(text), 3u);
    std::vector<std::uint8_t> alpha(4 * 6, 0xEE);
    vell::copyGlyphs(font, text, 4, 6, alpha.data());
    const std::vector<std::uint8_t> want = {
        3,  1,  2,  0,  // "! ": '\r' and '#' (not in the font) take no room
        13, 11, 12, 0,  //
        4,  5,  6,  4,  // '""' is wider than the plane: cut at its edge
        14, 15, 16, 14, //
        3,  0,  0,  0,  // right of a shorter line: 0
        13, 0,  0,  0};
    EXPECT_EQ(alpha, want);
}

} // namespace
