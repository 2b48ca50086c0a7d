// What the sound object plays, recorded back from the null sink's monitor (the default capture
// source that tools/test.sh sets up) through DirectSound capture, and measured.
#include "sound_fixture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using vtest::SoundTest;

constexpr int kRate = 22050;
constexpr int kWindow = kRate / 100; // 10 ms

// Records 22050 Hz 16-bit mono from the default capture device.
class Recorder {
public:
    ~Recorder() {
        if (buffer_ != nullptr) buffer_->Release();
        if (capture_ != nullptr) capture_->Release();
    }
    HRESULT start(double seconds) {
        HRESULT hr = DirectSoundCaptureCreate(nullptr, &capture_, nullptr);
        if (FAILED(hr)) return hr;
        WAVEFORMATEX format = {};
        format.wFormatTag = WAVE_FORMAT_PCM;
        format.nChannels = 1;
        format.nSamplesPerSec = kRate;
        format.wBitsPerSample = 16;
        format.nBlockAlign = 2;
        format.nAvgBytesPerSec = 2 * kRate;
        DSCBUFFERDESC desc = {};
        desc.dwSize = sizeof desc;
        desc.dwBufferBytes = static_cast<DWORD>(seconds * 2 * kRate) & ~1u;
        desc.lpwfxFormat = &format;
        hr = capture_->CreateCaptureBuffer(&desc, &buffer_, nullptr);
        if (FAILED(hr)) return hr;
        hr = buffer_->Start(0);
        if (FAILED(hr)) return hr;
        // A new capture stream can take a moment to deliver, more so just after another one
        // closed: wait until 50 ms have come in, for five seconds at most.
        for (int waited = 0; waited < 5000; waited += 10) {
            DWORD captured = 0, readable = 0;
            buffer_->GetCurrentPosition(&captured, &readable);
            if (readable >= 2 * kRate / 20) return DS_OK;
            Sleep(10);
        }
        return DSERR_GENERIC;
    }
    std::vector<std::int16_t> stop() {
        std::vector<std::int16_t> samples;
        DWORD captured = 0, readable = 0;
        buffer_->GetCurrentPosition(&captured, &readable);
        void *p1 = nullptr, *p2 = nullptr;
        DWORD n1 = 0, n2 = 0;
        if (readable > 0 && SUCCEEDED(buffer_->Lock(0, readable, &p1, &n1, &p2, &n2, 0))) {
            const auto *s = static_cast<const std::int16_t *>(p1);
            samples.assign(s, s + n1 / 2);
            buffer_->Unlock(p1, n1, p2, n2);
        }
        buffer_->Stop();
        return samples;
    }

private:
    IDirectSoundCapture *capture_ = nullptr;
    IDirectSoundCaptureBuffer *buffer_ = nullptr;
};

// The loud part of a recording: where 10 ms windows exceed a quarter of the loudest one.
struct Burst {
    double seconds = 0; // from the first loud window to the last
    double rms = 0;     // over the loud windows
};

Burst measure(const std::vector<std::int16_t> &samples) {
    std::vector<double> rms;
    for (std::size_t i = 0; i + kWindow <= samples.size(); i += kWindow) {
        double sum = 0;
        for (int j = 0; j < kWindow; ++j)
            sum += double(samples[i + j]) * samples[i + j];
        rms.push_back(std::sqrt(sum / kWindow));
    }
    Burst b;
    if (rms.empty()) return b;
    const double threshold = *std::max_element(rms.begin(), rms.end()) / 4;
    std::size_t first = rms.size(), last = 0, loud = 0;
    double sum = 0;
    for (std::size_t i = 0; i < rms.size(); ++i) {
        if (rms[i] <= threshold) continue;
        first = std::min(first, i);
        last = i;
        sum += rms[i] * rms[i];
        ++loud;
    }
    if (loud == 0) return b;
    b.seconds = double(last - first + 1) * kWindow / kRate;
    b.rms = std::sqrt(sum / double(loud));
    return b;
}

class RecordTest : public SoundTest {
protected:
    void SetUp() override {
        SoundTest::SetUp();
        VELL_OPEN_SOUND_OR_SKIP();
        ASSERT_TRUE(vtest::writeFile(
            "tone.wav", vtest::waveFile(vtest::sampleBytes(vtest::tone(440, 0.5, 10000)))));
    }

    // Plays the sound once (or twice, the given milliseconds apart) while recording.
    Burst record(structDirectSoundBuffer *s, int secondPlayAfterMs = -1) {
        Recorder recorder;
        const HRESULT hr = recorder.start(3.0);
        if (FAILED(hr)) {
            ADD_FAILURE() << "cannot record: hr 0x" << std::hex << hr;
            return {};
        }
        EXPECT_EQ(sound->playSound(s), 1);
        if (secondPlayAfterMs >= 0) {
            Sleep(static_cast<DWORD>(secondPlayAfterMs));
            EXPECT_EQ(sound->playSound(s), 1);
        }
        Sleep(1500);
        return measure(recorder.stop());
    }
};

TEST_F(RecordTest, ToneComesBackAtItsLength) {
    structDirectSoundBuffer *s = sound->newSound("tone.wav", 1);
    ASSERT_NE(s, nullptr);
    const Burst b = record(s);
    std::printf("measured: %.3f s at rms %.0f\n", b.seconds, b.rms);
    EXPECT_NEAR(b.seconds, 0.5, 0.05);
    EXPECT_GT(b.rms, 1000.0);
    sound->deleteSound(s);
}

TEST_F(RecordTest, HalfTheVolumeIsAbout15DecibelsQuieter) {
    structDirectSoundBuffer *s = sound->newSound("tone.wav", 1);
    ASSERT_NE(s, nullptr);
    sound->setVolume(100);
    const Burst full = record(s);
    sound->setVolume(50);
    const Burst half = record(s);
    ASSERT_GT(half.rms, 0.0);
    const double decibels = 20 * std::log10(full.rms / half.rms);
    std::printf("measured: full rms %.0f, half rms %.0f, %.2f dB apart\n", full.rms, half.rms,
                decibels);
    EXPECT_NEAR(decibels, 15.06, 1.0) << "full rms " << full.rms << ", half rms " << half.rms;
    sound->deleteSound(s);
}

TEST_F(RecordTest, SecondVoiceOverlapsTheFirst) {
    structDirectSoundBuffer *two = sound->newSound("tone.wav", 2);
    ASSERT_NE(two, nullptr);
    // Two voices: the second play starts while the first still sounds, and the sound lasts longer.
    const Burst overlapping = record(two, 200);
    std::printf("measured: two voices %.3f s\n", overlapping.seconds);
    EXPECT_NEAR(overlapping.seconds, 0.7, 0.06);
    sound->deleteSound(two);

    // One voice: playing it again while it sounds does not restart it.
    structDirectSoundBuffer *one = sound->newSound("tone.wav", 1);
    ASSERT_NE(one, nullptr);
    EXPECT_NEAR(record(one, 200).seconds, 0.5, 0.05);
    sound->deleteSound(one);
}

} // namespace
