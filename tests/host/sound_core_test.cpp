// The volume scale: the library's 0 to 100 against the platform's attenuation.
#include "sound/volume.h"

#include <gtest/gtest.h>

namespace {

TEST(Volume, ScaleAndItsEnds) {
    const struct {
        unsigned long volume;
        std::uint32_t attenuation;
        int readBack;
    } points[] = {{100, 0, 100}, {50, 1506, 50}, {10, 5000, 10}, {2, 8495, 2},
                  {1, 10000, 1}, {0, 10000, 1},  {101, 0, 100},  {0xFFFFFFFF, 0, 100}};
    for (const auto &p : points) {
        EXPECT_EQ(vell::volumeToAttenuation(p.volume), p.attenuation) << "volume " << p.volume;
        EXPECT_EQ(vell::attenuationToVolume(p.attenuation), p.readBack) << "volume " << p.volume;
    }
    for (unsigned long v = 1; v <= 100; ++v)
        EXPECT_EQ(vell::attenuationToVolume(vell::volumeToAttenuation(v)), static_cast<int>(v));
    EXPECT_EQ(vell::attenuationToVolume(5), 100);   // the registry default
    EXPECT_EQ(vell::attenuationToVolume(20000), 1); // beyond silence: hand-edited
}

} // namespace
