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
    EXPECT_EQ(vell::attenuationToVolume(5), 100);   // the registry default
    EXPECT_EQ(vell::attenuationToVolume(20000), 1); // beyond silence: hand-edited
}

} // namespace
