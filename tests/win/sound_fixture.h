// Fixture for the sound tests: a base object with its log on and a window stored in it; the sound
// object is made on demand.
#ifndef VELL_SOUND_FIXTURE_H
#define VELL_SOUND_FIXTURE_H

#include "VellBase.h"

#include "harness.h"
#include "test_strings.h"
#include "wave_file.h"

#include <optional>
#include <string>

namespace vtest {

class SoundTest : public ClientTest {
protected:
    void closeDevice() override { sound.reset(); }

    TDirectSound &open() {
        sound.emplace(&*base);
        return *sound;
    }
    // Opens the device, or skips the test when this machine has no sound server. Where
    // tools/test.sh started one (VELL_EXPECT_SOUND=1), a device that does not open is a failure.
    TDirectSound &openOrSkip() {
        open();
        if (sound->lpDS == nullptr) {
            const auto shown = boxes->take();
            if (expectSound())
                ADD_FAILURE() << "the sound device did not open: "
                              << (shown.empty() ? "(no box)" : shown[0].text);
            skipped = true;
        }
        return *sound;
    }
    static bool expectSound() {
        char value[8] = {};
        return GetEnvironmentVariableA("VELL_EXPECT_SOUND", value, sizeof value) > 0 &&
               value[0] == '1';
    }

    std::optional<TDirectSound> sound;
    bool skipped = false;
};

#define VELL_OPEN_SOUND_OR_SKIP()                                                                  \
    do {                                                                                           \
        openOrSkip();                                                                              \
        if (skipped) GTEST_SKIP() << "no sound device here (is PulseAudio running?)";              \
    } while (0)

} // namespace vtest

#endif
