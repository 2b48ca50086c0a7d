// The volume scale and the DirectSound error texts.
#include "sound/dsound_errors.h"
#include "sound/volume.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace {

TEST(Volume, EveryVolumeFrom1To100RoundTrips) {
    for (unsigned long v = 1; v <= 100; ++v)
        EXPECT_EQ(vell::attenuationToVolume(vell::volumeToAttenuation(v)), static_cast<int>(v))
            << "volume " << v << " stored as " << vell::volumeToAttenuation(v);
}

TEST(Volume, KnownPoints) {
    EXPECT_EQ(vell::volumeToAttenuation(100), 0u);
    EXPECT_EQ(vell::volumeToAttenuation(50), 1506u); // about 15 dB below full
    EXPECT_EQ(vell::volumeToAttenuation(10), 5000u);
    EXPECT_EQ(vell::volumeToAttenuation(2), 8495u);
    EXPECT_EQ(vell::volumeToAttenuation(1), 10000u);
}

TEST(Volume, EndsOfTheScale) {
    EXPECT_EQ(vell::volumeToAttenuation(0), 10000u);
    EXPECT_EQ(vell::attenuationToVolume(10000), 1); // 0 reads back as 1
    EXPECT_EQ(vell::volumeToAttenuation(101), 0u);
    EXPECT_EQ(vell::volumeToAttenuation(150), 0u);
    EXPECT_EQ(vell::volumeToAttenuation(0xFFFFFFFFul), 0u);
    EXPECT_EQ(vell::attenuationToVolume(0), 100);
    EXPECT_EQ(vell::attenuationToVolume(5), 100); // the registry default
}

TEST(Volume, AttenuationBeyondSilenceCountsAsSilence) {
    EXPECT_EQ(vell::attenuationToVolume(10001), 1);
    EXPECT_EQ(vell::attenuationToVolume(20000), 1);
    EXPECT_EQ(vell::attenuationToVolume(0xFFFFFFFFu), 1);
}

TEST(Volume, ReadingIsMonotonic) {
    int previous = 100;
    for (std::uint32_t a = 0; a <= 10000; ++a) {
        const int v = vell::attenuationToVolume(a);
        ASSERT_GE(v, 1);
        ASSERT_LE(v, previous) << "attenuation " << a;
        previous = v;
    }
}

std::string soundText(std::uint32_t hr) {
    char out[vell::kSoundErrorTextSize + 8];
    std::memset(out, '#', sizeof out);
    vell::directSoundErrorText(static_cast<std::int32_t>(hr), out);
    return out;
}

TEST(DirectSoundErrors, TextsAndTemplate) {
    EXPECT_EQ(soundText(0x88780078), "No sound driver is available for use!");
    EXPECT_EQ(soundText(0x80004001), "Function not supported!");
    EXPECT_EQ(soundText(0x80070057), "Invalid parameter!");
    EXPECT_EQ(soundText(0), "Unknown HRESULT(0x00000000)");
    EXPECT_EQ(soundText(0x887601C2), "Unknown HRESULT(0x887601c2)"); // a DirectDraw code
}

TEST(DirectSoundErrors, TableIsWellFormed) {
    std::set<std::int32_t> codes;
    std::size_t longest = 0;
    for (std::size_t i = 0; i < vell::kDirectSoundErrorCount; ++i) {
        const auto &e = vell::kDirectSoundErrors[i];
        EXPECT_TRUE(codes.insert(e.code).second);
        EXPECT_EQ(std::strchr(e.text, '\n'), nullptr);
        longest = std::max(longest, std::strlen(e.text));
    }
    EXPECT_EQ(vell::kDirectSoundErrorCount, 16u);
    EXPECT_EQ(longest + 1, vell::kSoundErrorTextSize);
}

TEST(DirectSoundErrors, MessageOfTheFailedDevice) {
    char codeText[vell::kSoundErrorTextSize];
    vell::directSoundErrorText(static_cast<std::int32_t>(0x88780078), codeText);
    char message[1024];
    vell::composeErrorMessage("ERROR: Unable to initialize DirectSound!", codeText, message,
                              sizeof message);
    EXPECT_STREQ(
        message,
        "ERROR: Unable to initialize DirectSound!\n\nNo sound driver is available for use!");
}

} // namespace
