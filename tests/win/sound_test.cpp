// The sound object against Wine's DirectSound on a PulseAudio null sink: its settings in the
// registry, the off switch, wave files, and its voices: their format, position and volume.
#include "harness.h"

#include <cmath>

using namespace vtest;
using SoundTest = vtest::VellTest;

const std::string kFormat = format(22050, 1, 16);

// The samples of a 440 Hz tone, 22050 a second, 16 bits each.
std::string tone(double seconds, double amplitude) {
    std::string samples;
    for (int i = 0; i < seconds * 22050; ++i)
        samples +=
            little(std::int16_t(amplitude * std::sin(2 * 3.14159265358979 * 440 * i / 22050)), 2);
    return samples;
}

// What the sound object keeps in its key: "switch volume device".
std::string kept() {
    return readValue("TDirectSound::dwDisable") + " " + readValue("TDirectSound::dwVolume") + " " +
           readValue("TDirectSound::guidDevice");
}

TEST_F(SoundTest, VolumeIsKeptInTheRegistry) {
    // The scale itself is sound_core_test's, built in here too: on the i686 build it catches x87
    // arithmetic (10 gave 5001). Here the object's own use of it, both ways.
    openSound().setVolume(50);
    sound.reset();
    EXPECT_EQ(readValue("TDirectSound::dwVolume"), "1506");
    ASSERT_TRUE(writeValue("TDirectSound::dwVolume", little(20000, 4), REG_DWORD)); // hand-edited
    EXPECT_EQ(openSound().getVolume(), 1);
    sound.reset();
    EXPECT_EQ(readValue("TDirectSound::dwVolume"), "20000");
    boxes.clear(); // a machine without sound shows its box once
}

TEST_F(SoundTest, SwitchedOffInTheRegistryOrByASwitchOfAnotherType) {
    for (DWORD type : {REG_DWORD, REG_BINARY}) {
        ASSERT_TRUE(writeValue("TDirectSound::dwDisable", std::string("\1\0\0\0", 4), type));
        ASSERT_TRUE(writeValue("TDirectSound::dwVolume", "0")); // of another type: the default
        TDirectSound &ds = openSound();
        EXPECT_EQ(ds.Init(), 0);
        EXPECT_EQ(ds.Exit(), 1);
        EXPECT_EQ(ds.setDevice(vtest::kOther), 0); // stored all the same
        const std::string opening = vtest::expectDeviceList(ds.lpDeviceList, true);
        EXPECT_EQ(closeAndReadLog(), opening + "De-initializing DirectSound:\ndone.\n");
        EXPECT_EQ(kept(), std::string("1 5 ") + vtest::kOtherGuid);
    }
}

TEST_F(SoundTest, DeviceThatCannotBeOpenedSwitchesSoundOffForGood) {
    ASSERT_TRUE(writeValue("TDirectSound::guidDevice", vtest::kOtherGuid));
    EXPECT_EQ(openSound().dwDisable, 1u);
    expectBox("DirectSound", "ERROR: Unable to initialize DirectSound!\n\nInvalid parameter!",
              window);
    sound.reset();
    EXPECT_EQ(kept(), std::string("1 5 ") + vtest::kOtherGuid);
    EXPECT_EQ(openSound().lpDS, nullptr); // and the next run shows nothing
    base->hWnd = vtest::createWindow();   // boxes belong to the window of the moment
    EXPECT_FALSE(sound->ErrorMessage(static_cast<int>(0x88780078), "Something failed."));
    expectBox("DirectSound", "Something failed.\n\nNo sound driver is available for use!",
              base->hWnd);
    DestroyWindow(base->hWnd);
}

// The sound device open; sounds made with `load` are deleted after the test.
class DeviceTest : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        if (openSound().lpDS != nullptr) return;
        // Where tools/test.sh started a sound server the device must open; its box says why not.
        ASSERT_FALSE(vtest::soundExpected()) << "the sound device did not open";
        boxes.clear();
        GTEST_SKIP() << "no sound device here (is PulseAudio running?)";
    }
    void TearDown() override {
        for (structDirectSoundBuffer *s : loaded)
            if (sound) sound->deleteSound(s);
        SoundTest::TearDown();
    }
    // A sound from a file of these bytes; the file must be closed again afterwards.
    structDirectSoundBuffer *load(const std::string &bytes, int voices = 1) {
        std::ofstream("sound.wav", std::ios::binary) << bytes; // closed at once
        structDirectSoundBuffer *s = sound->newSound("sound.wav", voices);
        EXPECT_TRUE(DeleteFileA("sound.wav")) << "the file was left open";
        if (s != nullptr) loaded.push_back(s);
        return s;
    }
    std::vector<structDirectSoundBuffer *> loaded;
};

TEST_F(DeviceTest, FirstRunOpensTheDefaultDeviceAndSavesTheDefaults) {
    const std::string opening = vtest::expectDeviceList(sound->lpDeviceList, true);
    EXPECT_EQ(sound->setDevice(GUID_NULL), 1);
    EXPECT_EQ(sound->Exit(), 1);
    EXPECT_EQ(sound->lpDS, nullptr); // and not released twice by the destructor
    EXPECT_EQ(load(riff(kFormat + chunk("data", tone(0.1, 1000)))), nullptr); // closed: no sound
    const std::string closing = "  Waiting for DirectSound to stop playing...\ndone.\n";
    EXPECT_EQ(closeAndReadLog(),
              opening + closing + closing + "De-initializing DirectSound:\n" + closing + "done.\n");
    EXPECT_EQ(kept(), "0 5 {00000000-0000-0000-0000-000000000000}");
}

// Files that are no sounds, or whose sizes lie, are refused and closed; a data chunk longer than
// the file gives a buffer of the declared size holding the file's samples, never a read past the
// file, and a size beyond what the platform makes is refused.
TEST_F(DeviceTest, HostileFilesAreRefusedOrReadNoFurtherThanTheyGo) {
    const std::string data = chunk("data", std::string(64, 5)), samples(64, 5);
    const std::pair<const char *, std::string> cases[] = {
        {"data before fmt", riff(data + kFormat)},
        {"empty data", riff(kFormat + chunk("data", ""))},
        {"no fmt", riff(data)},
        {"not WAVE", riff(kFormat + data, "AVI ")},
        {"not RIFF", "This is a text file, not a sound.\n"},
        {"truncated header", riff(kFormat + data).substr(0, 10)},
        {"fmt longer than the file", riff(format(22050, 1, 16, 4000))},
        {"data of 2 GiB", riff(kFormat + chunk("data", samples, 0x7FFFFFFF))},
        {"data of 4 GiB", riff(kFormat + chunk("data", samples, 0xFFFFFFF0))},
    };
    for (const auto &[what, bytes] : cases)
        EXPECT_EQ(load(bytes), nullptr) << what;
    EXPECT_EQ(load(riff(kFormat + data), 0), nullptr); // no voice
    EXPECT_EQ(sound->newSound("no such file.wav", 1), nullptr);
    EXPECT_EQ(sound->newSound(nullptr, 1), nullptr);

    structDirectSoundBuffer *s = load(riff(kFormat + chunk("data", samples, 100000)));
    ASSERT_NE(s, nullptr);
    void *p = nullptr, *q = nullptr;
    DWORD n = 0, m = 0;
    ASSERT_EQ(s->lpdsBuffer[0]->Lock(0, 0, &p, &n, &q, &m, DSBLOCK_ENTIREBUFFER), DS_OK);
    EXPECT_EQ(n, 100000u);
    EXPECT_EQ(std::string(static_cast<char *>(p), 64), samples);
    s->lpdsBuffer[0]->Unlock(p, n, q, m);
    // "Falsche Größe" (the wrong size), in code page 1252
    EXPECT_NE(closeAndReadLog().find("Falsche Gr\xF6\xDF\x65\n"), std::string::npos);
}

TEST_F(DeviceTest, VoicesThatCannotPlayAreLogged) {
    // The primary buffer plays only looping: a voice that refuses to start. A missing voice is
    // logged as "!" and the first one tried instead.
    DSBUFFERDESC desc = {sizeof desc, DSBCAPS_PRIMARYBUFFER, 0, 0, nullptr, {}};
    IDirectSoundBuffer *primary = nullptr;
    ASSERT_EQ(sound->lpDS->CreateSoundBuffer(&desc, &primary, nullptr), DS_OK);
    IDirectSoundBuffer *voices[] = {primary, nullptr};
    structDirectSoundBuffer record = {voices, 1, 2};
    EXPECT_EQ(sound->playSound(&record), 0);
    EXPECT_EQ(record.iNext, 0);
    primary->Release();
    EXPECT_NE(closeAndReadLog().find("!TDirectSound::playSound (...) DSERR_INVALIDPARAM\n"),
              std::string::npos);
}

// Voices take turns; deleting the sound stops them (Wine now and then keeps a voice released while
// it plays, samples and all, until the device closes).
TEST_F(DeviceTest, VoicesRotateAndStopWhenTheSoundIsDeleted) {
    structDirectSoundBuffer *s = load(riff(kFormat + chunk("data", tone(1, 1000))), 3);
    ASSERT_NE(s, nullptr);
    ASSERT_EQ(s->nBuffers, 3);
    for (int next : {1, 2, 0, 1}) {
        EXPECT_EQ(sound->playSound(s), 1);
        EXPECT_EQ(s->iNext, next);
    }
    sound->dwVolume = 20000; // beyond silence, as a hand-edited registry may have it
    s->iNext = 7;            // out of range: voice 0
    EXPECT_EQ(sound->playSound(s), 1);
    EXPECT_EQ(s->iNext, 1);
    IDirectSoundBuffer *voice = s->lpdsBuffer[0];
    LONG volume = 0;
    voice->GetVolume(&volume);
    EXPECT_EQ(volume, -10000);
    voice->AddRef(); // kept past the deletion, to be asked
    loaded.clear();
    sound->deleteSound(s);
    DWORD status = DSBSTATUS_PLAYING;
    EXPECT_EQ(voice->GetStatus(&status), DS_OK);
    EXPECT_EQ(status & DSBSTATUS_PLAYING, 0u);
    voice->Release();
}
// Whatever the header says, the samples play as 22050 Hz 16-bit mono, at the master volume; with
// one voice, playing the sound again while it sounds goes on instead of starting it over. (That it
// is heard is the switch test's and the demo's: they record what plays.)
TEST_F(DeviceTest, SamplesPlayAs22050HzMonoAndASoundingVoiceGoesOn) {
    structDirectSoundBuffer *s = load(riff(format(44100, 2, 8) + chunk("data", tone(1, 10000))));
    ASSERT_NE(s, nullptr);
    IDirectSoundBuffer *voice = s->lpdsBuffer[0];
    WAVEFORMATEX f = {};
    ASSERT_EQ(voice->GetFormat(&f, sizeof f, nullptr), DS_OK);
    EXPECT_EQ(std::to_string(f.nSamplesPerSec) + " Hz, " + std::to_string(f.nChannels) + "x" +
                  std::to_string(f.wBitsPerSample),
              "22050 Hz, 1x16");
    sound->setVolume(50);
    EXPECT_EQ(sound->playSound(s), 1);
    Sleep(200);
    DWORD before = 0, after = 0;
    voice->GetCurrentPosition(&before, nullptr);
    EXPECT_EQ(sound->playSound(s), 1);
    voice->GetCurrentPosition(&after, nullptr);
    EXPECT_GT(before, 0u);
    EXPECT_GE(after, before) << "started over";
    LONG volume = 0;
    voice->GetVolume(&volume);
    EXPECT_EQ(volume, -1506);
}
