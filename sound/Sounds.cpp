// Sounds: wave files loaded into a sample buffer with duplicated voices, played in rotation.
#include "VellBase.h"

#include "sound/volume.h"

#include <mmsystem.h>

#include <cstdlib>
#include <cstring>

#ifndef _WIN64
static_assert(sizeof(DSBUFFERDESC1) == 20, "the DirectX 3 buffer description is 20 bytes");
#endif

namespace {

// "Falsche Größe\n": the log, like every text of the library, is in the ANSI code page (1252).
const char kWrongSize[] = "Falsche Gr\xF6\xDF"
                          "e\n";

// A multimedia file and the scratch block of its "fmt " chunk, both let go however newSound ends.
struct WaveFile {
    HMMIO file = nullptr;
    void *format = nullptr;
    ~WaveFile() {
        if (file != nullptr) mmioClose(file, 0);
        std::free(format);
    }
};

} // namespace

structDirectSoundBuffer *TDirectSound::newSound(const char *lpszFileName, int nBuffers) {
    if (dwDisable != 0) return nullptr;
    // Without a first voice, or without an open device, there is nothing to make.
    if (nBuffers < 1 || lpDS == nullptr || lpszFileName == nullptr) return nullptr;

    WaveFile wave;
    wave.file = mmioOpenA(const_cast<char *>(lpszFileName), nullptr, MMIO_ALLOCBUF);
    if (wave.file == nullptr) return nullptr;

    MMCKINFO riff = {};
    riff.fccType = mmioFOURCC('W', 'A', 'V', 'E');
    if (mmioDescend(wave.file, &riff, nullptr, MMIO_FINDRIFF) != 0) return nullptr;

    MMCKINFO chunk = {};
    chunk.ckid = mmioFOURCC('f', 'm', 't', ' ');
    if (mmioDescend(wave.file, &chunk, &riff, MMIO_FINDCHUNK) != 0) return nullptr;
    // The file's own format is read past, not used: every sound is 22050 Hz 16-bit mono.
    wave.format = std::malloc(chunk.cksize > 0 ? chunk.cksize : 1);
    if (wave.format == nullptr) return nullptr;
    if (mmioRead(wave.file, static_cast<HPSTR>(wave.format), static_cast<LONG>(chunk.cksize)) !=
        static_cast<LONG>(chunk.cksize))
        lpBase->DebugOut("%s", kWrongSize);
    mmioAscend(wave.file, &chunk, 0);

    // Searched from behind "fmt ": a "data" chunk in front of it is not found.
    chunk.ckid = mmioFOURCC('d', 'a', 't', 'a');
    if (mmioDescend(wave.file, &chunk, &riff, MMIO_FINDCHUNK) != 0) return nullptr;
    const DWORD sampleBytes = chunk.cksize;
    if (sampleBytes == 0) return nullptr;

    WAVEFORMATEX format;
    std::memset(&format, 0, sizeof format);
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = 1;
    format.nSamplesPerSec = 22050;
    format.wBitsPerSample = 16;
    format.nBlockAlign = 2;
    format.nAvgBytesPerSec = 44100;

    DSBUFFERDESC1 desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    desc.dwFlags = DSBCAPS_CTRLDEFAULT;
    desc.dwBufferBytes = sampleBytes;
    desc.lpwfxFormat = &format;

    auto *sound =
        static_cast<structDirectSoundBuffer *>(std::malloc(sizeof(structDirectSoundBuffer)));
    if (sound == nullptr) {
        lpBase->DebugOut("newBuffer==NULL");
        return nullptr;
    }
    sound->lpdsBuffer = static_cast<IDirectSoundBuffer **>(
        std::calloc(static_cast<std::size_t>(nBuffers), sizeof(IDirectSoundBuffer *)));
    if (sound->lpdsBuffer == nullptr) {
        lpBase->DebugOut("newBuffer->lpdsBuffer==NULL");
        std::free(sound);
        return nullptr;
    }

    IDirectSoundBuffer *buffer = nullptr;
    if (FAILED(lpDS->CreateSoundBuffer(reinterpret_cast<const DSBUFFERDESC *>(&desc), &buffer,
                                       nullptr))) {
        std::free(sound->lpdsBuffer);
        std::free(sound);
        return nullptr;
    }

    void *region1 = nullptr, *region2 = nullptr;
    DWORD bytes1 = 0, bytes2 = 0;
    if (SUCCEEDED(buffer->Lock(0, 0, &region1, &bytes1, &region2, &bytes2, DSBLOCK_ENTIREBUFFER))) {
        if (bytes1 > sampleBytes) bytes1 = sampleBytes;
        mmioRead(wave.file, static_cast<HPSTR>(region1), static_cast<LONG>(bytes1));
        buffer->SetPan(0);
        buffer->SetVolume(0);
        buffer->Unlock(region1, bytes1, region2, bytes2);
    }

    sound->lpdsBuffer[0] = buffer;
    sound->iNext = 0;
    int voices = 1;
    while (voices < nBuffers &&
           SUCCEEDED(lpDS->DuplicateSoundBuffer(buffer, &sound->lpdsBuffer[voices])))
        ++voices;
    if (voices < nBuffers) sound->lpdsBuffer[voices] = nullptr;
    sound->nBuffers = voices;
    return sound;
}

void TDirectSound::deleteSound(structDirectSoundBuffer *lpSound) {
    if (lpSound == nullptr) return;
    if (lpSound->lpdsBuffer != nullptr) {
        for (int i = 0; i < lpSound->nBuffers; ++i) {
            if (lpSound->lpdsBuffer[i] != nullptr) {
                // Stopped first: Wine now and then keeps a voice released while it plays, its
                // samples included, until the device closes.
                lpSound->lpdsBuffer[i]->Stop();
                lpSound->lpdsBuffer[i]->Release();
                lpSound->lpdsBuffer[i] = nullptr;
            }
        }
    }
    std::free(lpSound->lpdsBuffer);
    std::free(lpSound);
}

int TDirectSound::playSound(structDirectSoundBuffer *lpSound) {
    if (dwDisable != 0 || lpSound == nullptr) return 0;
    if (lpSound->lpdsBuffer == nullptr || lpSound->nBuffers < 1) return 0;
    if (lpSound->iNext < 0 || lpSound->iNext >= lpSound->nBuffers) lpSound->iNext = 0;
    if (lpSound->lpdsBuffer[lpSound->iNext] == nullptr) {
        lpBase->DebugOut("!");
        lpSound->iNext = 0;
        if (lpSound->lpdsBuffer[0] == nullptr) return 0;
    }

    IDirectSoundBuffer *voice = lpSound->lpdsBuffer[lpSound->iNext];
    // An attenuation beyond silence (a hand-edited registry) plays as silence.
    const DWORD attenuation = dwVolume > vell::kSilence ? vell::kSilence : dwVolume;
    voice->SetVolume(-static_cast<LONG>(attenuation));
    const HRESULT hr = voice->Play(0, 0, 0); // a voice still sounding goes on, not restarted
    if (hr == DS_OK) {
        // Play can accept a voice that then does not sound (its device stopped under it, say):
        // such a voice was not started, and the log says so instead of the game going quiet.
        DWORD status = 0;
        if (SUCCEEDED(voice->GetStatus(&status)) && (status & DSBSTATUS_PLAYING) == 0) {
            lpBase->DebugOut("TDirectSound::playSound (...) voice %d is not playing\n",
                             lpSound->iNext);
            return 0;
        }
        lpSound->iNext = (lpSound->iNext + 1) % lpSound->nBuffers;
        return 1;
    }
    const char *name = "unknown Error";
    switch (static_cast<unsigned long>(hr)) {
    case 0x88780046ul:
        name = "DSERR_PRIOLEVELNEEDED";
        break;
    case 0x80070057ul:
        name = "DSERR_INVALIDPARAM";
        break;
    case 0x88780032ul:
        name = "DSERR_INVALIDCALL";
        break;
    case 0x88780096ul:
        name = "DSERR_BUFFERLOST";
        break;
    default:
        break;
    }
    lpBase->DebugOut("TDirectSound::playSound (...) %s\n", name);
    return 0;
}
