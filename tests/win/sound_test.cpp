// The sound object against Wine's DirectSound on a PulseAudio null sink: settings, the disabled
// state, wave files and voices.
#include "sound_fixture.h"

#include <vector>

namespace {

using vtest::readTestValue;
using vtest::SoundTest;
using vtest::writeTestDword;
using vtest::writeTestValue;

const char kZeroText[] = "{00000000-0000-0000-0000-000000000000}";
const char kUnknownDevice[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}";

std::string dword(DWORD v) {
    return std::string(reinterpret_cast<const char *>(&v), 4);
}

std::string constructionLog() {
    return vtest::constructionLog("DirectSound", vtest::soundDevices());
}

// ---- the device and its settings ---------------------------------------------------------------

TEST_F(SoundTest, FirstRunOpensTheDefaultDeviceAndSavesTheDefaults) {
    VELL_OPEN_SOUND_OR_SKIP();
    EXPECT_EQ(sound->dwDisable, 0u);
    EXPECT_EQ(sound->dwVolume, 5u);
    EXPECT_TRUE(IsEqualGUID(sound->guidDevice, GUID_NULL));
    EXPECT_EQ(sound->getVolume(), 100);
    EXPECT_FALSE(sound->isPlaying());
    sound->Update();

    vtest::expectDeviceList(sound->lpDeviceList, vtest::soundDevices());
    const std::string expected = constructionLog();

    EXPECT_EQ(closeAndReadLog(),
              expected + "De-initializing DirectSound:\n"
                         "  Waiting for DirectSound to stop playing...\ndone.\ndone.\n");
    EXPECT_EQ(readTestValue("TDirectSound::dwDisable")->data, dword(0));
    EXPECT_EQ(readTestValue("TDirectSound::dwDisable")->type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(readTestValue("TDirectSound::dwVolume")->data, dword(5));
    EXPECT_EQ(readTestValue("TDirectSound::guidDevice")->data, std::string(kZeroText, 39));
}

TEST_F(SoundTest, VolumeScaleThroughTheObject) {
    TDirectSound &ds = open(); // the scale itself is tested natively; this is the wiring
    boxes->clear();
    // The rule's own examples. Run by the i686 build, they catch x87 arithmetic (10 gave 5001).
    const std::pair<int, unsigned> examples[] = {
        {100, 0}, {50, 1506}, {10, 5000}, {2, 8495}, {1, 10000}};
    for (auto [volume, attenuation] : examples) {
        ds.setVolume(volume);
        EXPECT_EQ(ds.dwVolume, attenuation) << "volume " << volume;
        EXPECT_EQ(ds.getVolume(), volume);
    }
    ds.setVolume(0);
    EXPECT_EQ(ds.getVolume(), 1);
    ds.setVolume(150);
    EXPECT_EQ(ds.getVolume(), 100);
}

TEST_F(SoundTest, SettingsPersistAcrossConstructions) {
    open().setVolume(50);
    boxes->clear();
    sound.reset();
    EXPECT_EQ(readTestValue("TDirectSound::dwVolume")->data, dword(1506));
    EXPECT_EQ(open().getVolume(), 50);
    boxes->clear();
}

TEST_F(SoundTest, StoredVolumeBeyondSilenceReadsAsSilence) {
    ASSERT_TRUE(writeTestDword("TDirectSound::dwVolume", 20000));
    TDirectSound &ds = open();
    boxes->clear();
    EXPECT_EQ(ds.dwVolume, 20000u); // kept as stored...
    EXPECT_EQ(ds.getVolume(), 1);   // ...and read as 10000
}

TEST_F(SoundTest, SettingsOfTheWrongTypeTakeTheSafeSide) {
    ASSERT_TRUE(writeTestValue("TDirectSound::dwVolume", REG_SZ, "0"));
    ASSERT_TRUE(writeTestValue("TDirectSound::dwDisable", REG_BINARY, std::string(4, '\0')));
    TDirectSound &ds = open();
    EXPECT_EQ(ds.dwVolume, 5u);
    EXPECT_EQ(ds.dwDisable, 1u); // a switch of another type means off
    EXPECT_EQ(ds.lpDS, nullptr);
}

TEST_F(SoundTest, DisabledFromTheRegistry) {
    ASSERT_TRUE(writeTestDword("TDirectSound::dwDisable", 1));
    TDirectSound &ds = open();
    EXPECT_EQ(ds.lpDS, nullptr);
    EXPECT_EQ(ds.Init(), 0);
    EXPECT_EQ(ds.Exit(), 1);
    ASSERT_TRUE(vtest::writeFile("tone.wav",
                                 vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.1, 8000)))));
    EXPECT_EQ(ds.newSound("tone.wav", 2), nullptr);
    EXPECT_EQ(ds.playSound(nullptr), 0);

    const GUID other = {0x1, 0x2, 0x3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(ds.setDevice(other), 0); // stored all the same
    char text[39];
    GUID2str(other, text);

    // Exit logs nothing while disabled.
    EXPECT_EQ(closeAndReadLog(), constructionLog() + "De-initializing DirectSound:\ndone.\n");
    EXPECT_EQ(readTestValue("TDirectSound::dwDisable")->data, dword(1));
    EXPECT_EQ(readTestValue("TDirectSound::guidDevice")->data, std::string(text, 39));
}

TEST_F(SoundTest, DeviceThatCannotBeOpenedSwitchesSoundOffForGood) {
    ASSERT_TRUE(writeTestValue("TDirectSound::guidDevice", REG_SZ, kUnknownDevice));
    {
        TDirectSound &ds = open();
        const auto shown = boxes->take();
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].caption, "DirectSound");
        EXPECT_EQ(shown[0].text, "ERROR: Unable to initialize DirectSound!\n\nInvalid parameter!");
        EXPECT_EQ(shown[0].owner, window);
        EXPECT_EQ(ds.dwDisable, 1u);
        EXPECT_EQ(ds.lpDS, nullptr);
        sound.reset();
    }
    EXPECT_EQ(readTestValue("TDirectSound::dwDisable")->data, dword(1));
    EXPECT_EQ(readTestValue("TDirectSound::guidDevice")->data, std::string(kUnknownDevice, 39));

    // The next run opens nothing and shows nothing.
    TDirectSound &again = open();
    EXPECT_EQ(again.dwDisable, 1u);
    EXPECT_EQ(again.lpDS, nullptr);
    EXPECT_TRUE(boxes->boxes().empty());
}

TEST_F(SoundTest, SetDeviceReopens) {
    VELL_OPEN_SOUND_OR_SKIP();
    EXPECT_EQ(sound->setDevice(GUID_NULL), 1);
    EXPECT_NE(sound->lpDS, nullptr);
    EXPECT_EQ(sound->Exit(), 1);
    EXPECT_EQ(sound->lpDS, nullptr);
    EXPECT_EQ(sound->newSound("anything.wav", 1), nullptr); // closed: nothing to make it with
    EXPECT_EQ(sound->Init(), 1);
}

TEST_F(SoundTest, ErrorTextsAndTheBoxOwner) {
    TDirectSound &ds = open();
    boxes->clear();
    char text[87];
    ds.getErrorString(static_cast<int>(0x88780078), text);
    EXPECT_STREQ(text, "No sound driver is available for use!");
    ds.getErrorString(static_cast<int>(0x887601C2), text);
    EXPECT_STREQ(text, "Unknown HRESULT(0x887601c2)");

    // The owner is the base object's window as it is now.
    HWND other = vtest::createTestWindow();
    base->hWnd = other;
    EXPECT_FALSE(
        ds.ErrorMessage(static_cast<int>(0x88780078), "ERROR: Unable to initialize DirectSound!"));
    const auto shown = boxes->take();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].text,
              "ERROR: Unable to initialize DirectSound!\n\nNo sound driver is available for use!");
    EXPECT_EQ(shown[0].owner, other);
    base->hWnd = window;
    DestroyWindow(other);
}

// ---- wave files and voices -------------------------------------------------------------------

class WaveTest : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        VELL_OPEN_SOUND_OR_SKIP();
    }
    // Loads a file with these bytes; afterwards the file must be closed again (deletable).
    structDirectSoundBuffer *load(const std::string &bytes, int voices = 1) {
        EXPECT_TRUE(vtest::writeFile("sound.wav", bytes));
        structDirectSoundBuffer *s = sound->newSound("sound.wav", voices);
        EXPECT_TRUE(DeleteFileA("sound.wav")) << "the file was left open";
        return s;
    }
};

TEST_F(WaveTest, SamplesGoIntoTheFirstVoiceAsTheyAre) {
    const std::string samples = vtest::sampleBytes(vtest::tone(440, 1.0, 10000));
    ASSERT_EQ(samples.size(), 44100u);
    structDirectSoundBuffer *s = load(vtest::waveFile(samples), 3);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->nBuffers, 3);
    EXPECT_EQ(s->iNext, 0);

    WAVEFORMATEX format = {};
    ASSERT_EQ(s->lpdsBuffer[0]->GetFormat(&format, sizeof format, nullptr), DS_OK);
    EXPECT_EQ(format.nSamplesPerSec, 22050u);
    EXPECT_EQ(format.wBitsPerSample, 16);
    EXPECT_EQ(format.nChannels, 1);

    void *p1 = nullptr, *p2 = nullptr;
    DWORD n1 = 0, n2 = 0;
    ASSERT_EQ(s->lpdsBuffer[0]->Lock(0, 0, &p1, &n1, &p2, &n2, DSBLOCK_ENTIREBUFFER), DS_OK);
    EXPECT_EQ(n1, 44100u);
    EXPECT_EQ(std::string(static_cast<char *>(p1), n1), samples);
    s->lpdsBuffer[0]->Unlock(p1, n1, p2, n2);
    sound->deleteSound(s);
}

TEST_F(WaveTest, AnyPcmHeaderIsPlayedAs22050HzMono) {
    const std::string bytes = std::string(1000, '\x11');
    structDirectSoundBuffer *s = load(vtest::riff(
        vtest::chunk("fmt ", vtest::pcmFormat(44100, 2, 8)) + vtest::chunk("data", bytes)));
    ASSERT_NE(s, nullptr);
    WAVEFORMATEX format = {};
    s->lpdsBuffer[0]->GetFormat(&format, sizeof format, nullptr);
    EXPECT_EQ(format.nSamplesPerSec, 22050u);
    EXPECT_EQ(format.nChannels, 1);
    sound->deleteSound(s);
}

TEST_F(WaveTest, FilesThatAreNotSoundsAreRefusedAndClosed) {
    const std::string data = vtest::chunk("data", std::string(100, '\x01'));
    const std::string fmt = vtest::chunk("fmt ", vtest::pcmFormat());
    struct Case {
        const char *what;
        std::string bytes;
    } cases[] = {
        {"data before fmt", vtest::riff(data + fmt)},
        {"empty data", vtest::riff(fmt + vtest::chunk("data", ""))},
        {"no data", vtest::riff(fmt)},
        {"no fmt", vtest::riff(data)},
        {"not WAVE", vtest::riff(fmt + data, "AVI ")},
        {"not RIFF", "This is a text file, not a sound.\n"},
        {"empty file", ""},
        {"truncated header", vtest::riff(fmt + data).substr(0, 10)},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(load(c.bytes), nullptr) << c.what;
    }
    EXPECT_EQ(sound->newSound("no such file.wav", 1), nullptr);
    EXPECT_EQ(sound->newSound(nullptr, 1), nullptr);
}

TEST_F(WaveTest, ShortFormatChunkIsLogged) {
    // The format chunk claims more bytes than the file has: reading it falls short.
    const std::string bytes = vtest::riff(vtest::chunk("fmt ", vtest::pcmFormat(), 4000));
    EXPECT_EQ(load(bytes), nullptr);
    EXPECT_NE(closeAndReadLog().find("Falsche Gr\xF6\xDF"
                                     "e\n"),
              std::string::npos);
}

TEST_F(WaveTest, DataChunkLongerThanTheFileIsHarmless) {
    // A hostile size: at most a sound with unfilled samples, never a read past the file.
    const std::string fmt = vtest::chunk("fmt ", vtest::pcmFormat());
    for (std::uint32_t declared : {100000u, 0x0FFFFFFFu, 0x7FFFFFFFu, 0xFFFFFFF0u}) {
        structDirectSoundBuffer *s =
            load(vtest::riff(fmt + vtest::chunk("data", std::string(64, '\x05'), declared)));
        sound->deleteSound(s);
    }
}

TEST_F(WaveTest, FewerThanOneVoiceIsRefused) {
    const std::string file = vtest::waveFile(std::string(200, '\0'));
    EXPECT_EQ(load(file, 0), nullptr);
    EXPECT_EQ(load(file, -3), nullptr);
}

TEST_F(WaveTest, VoicesRotateOnEachPlay) {
    structDirectSoundBuffer *s =
        load(vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.05, 1000))), 3);
    ASSERT_NE(s, nullptr);
    ASSERT_EQ(s->nBuffers, 3);
    const int expected[] = {1, 2, 0, 1, 2};
    for (int next : expected) {
        EXPECT_EQ(sound->playSound(s), 1);
        EXPECT_EQ(s->iNext, next);
    }
    sound->deleteSound(s);

    structDirectSoundBuffer *one =
        load(vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.05, 1000))), 1);
    ASSERT_NE(one, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(sound->playSound(one), 1);
        EXPECT_EQ(one->iNext, 0);
    }
    sound->deleteSound(one);
}

TEST_F(WaveTest, PlayTakesTheMasterVolume) {
    structDirectSoundBuffer *s =
        load(vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.05, 1000))), 2);
    ASSERT_NE(s, nullptr);
    sound->setVolume(50);
    EXPECT_EQ(sound->playSound(s), 1);
    LONG volume = 0;
    s->lpdsBuffer[0]->GetVolume(&volume);
    EXPECT_EQ(volume, -1506);
    sound->dwVolume = 20000; // as a hand-edited registry might have it
    EXPECT_EQ(sound->playSound(s), 1);
    s->lpdsBuffer[1]->GetVolume(&volume);
    EXPECT_EQ(volume, -10000);
    sound->deleteSound(s);
}

TEST_F(WaveTest, MissingVoiceFallsBackToTheFirst) {
    structDirectSoundBuffer *s =
        load(vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.05, 1000))), 2);
    ASSERT_NE(s, nullptr);
    IDirectSoundBuffer *second = s->lpdsBuffer[1];
    s->lpdsBuffer[1] = nullptr;
    s->iNext = 1;
    EXPECT_EQ(sound->playSound(s), 1); // voice 0 instead
    EXPECT_EQ(s->iNext, 1);
    s->lpdsBuffer[1] = second;
    sound->deleteSound(s);
    sound->deleteSound(nullptr);
    EXPECT_EQ(sound->playSound(nullptr), 0);
    EXPECT_NE(closeAndReadLog().find("!"), std::string::npos);
}

} // namespace
