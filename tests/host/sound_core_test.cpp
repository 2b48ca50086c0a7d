// The volume scale: the library's 0 to 100 against the platform's attenuation.
#include "sound/volume.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(Volume, ScaleAndItsEnds) {
    const std::pair<unsigned long, std::uint32_t> points[] = {{100, 0},  {50, 1506},     {10, 5000},
                                                              {2, 8495}, {1, 10000},     {0, 10000},
                                                              {101, 0},  {0xFFFFFFFF, 0}};
    for (auto [volume, attenuation] : points)
        EXPECT_EQ(vell::volumeToAttenuation(volume), attenuation) << "volume " << volume;
    for (unsigned long v = 1; v <= 100; ++v) // and back: 0 reads as 1, 101 and more as 100
        EXPECT_EQ(vell::attenuationToVolume(vell::volumeToAttenuation(v)), static_cast<int>(v));
    // Read back: ceil(10 ^ ((10000 - attenuation) / 5000)); 5 is the registry default, 20000 only a
    // hand-edited registry holds (it counts as 10000), 1000 gives ceil(63.096).
    const std::pair<std::uint32_t, int> back[] = {{0, 100}, {5, 100}, {1000, 64}, {20000, 1}};
    for (auto [attenuation, volume] : back)
        EXPECT_EQ(vell::attenuationToVolume(attenuation), volume) << "attenuation " << attenuation;
}

} // namespace
