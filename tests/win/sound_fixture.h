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
    // Opens the device, or skips the test when this machine has no sound server.
    TDirectSound &openOrSkip() {
        open();
        if (sound->lpDS == nullptr) {
            boxes->clear();
            skipped = true;
        }
        return *sound;
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
