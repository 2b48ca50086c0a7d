// The sound object: device list, opening and closing the device, the persisted settings, the
// master volume, and the error texts and box.
#include "VellBase.h"

#include "base/DeviceList.h"
#include "base/ErrorBox.h"
#include "base/Registry.h"
#include "sound/dsound_errors.h"
#include "sound/volume.h"

#include <cstring>

#ifdef _WIN64
static_assert(sizeof(TDirectSound) == 48, "TDirectSound must stay byte-packed");
static_assert(sizeof(structDirectSoundBuffer) == 16, "structDirectSoundBuffer must stay packed");
#else
static_assert(sizeof(TDirectSound) == 36, "TDirectSound must be 36 bytes on 32-bit Windows");
static_assert(sizeof(structDirectSoundBuffer) == 12,
              "structDirectSoundBuffer must be 12 bytes on 32-bit Windows");
#endif

namespace {

const char kDisableValue[] = "TDirectSound::dwDisable";
const char kVolumeValue[] = "TDirectSound::dwVolume";
const char kDeviceValue[] = "TDirectSound::guidDevice";
constexpr DWORD kDefaultVolume = 5;

BOOL CALLBACK enumerateDevice(LPGUID guid, LPCSTR description, LPCSTR module, LPVOID context) {
    vell::enumerateDevice(static_cast<TDirectSound *>(context), guid, description, module);
    return TRUE; // go on
}

// A REG_DWORD value: true and its type when the query succeeded.
bool queryDword(HKEY key, const char *name, DWORD &value, DWORD &type) {
    DWORD size = sizeof value;
    DWORD read = 0;
    type = REG_NONE;
    if (RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE *>(&read), &size) !=
        ERROR_SUCCESS)
        return false;
    value = read;
    return true;
}

void saveDword(HKEY key, const char *name, DWORD value) {
    RegSetValueExA(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE *>(&value), sizeof value);
}

} // namespace

TDirectSound::TDirectSound(TVellBase *base) {
    lpBase = base;
    lpDS = nullptr;
    lpDeviceList = nullptr;
    dwDisable = 0;
    dwVolume = kDefaultVolume;
    std::memset(&guidDevice, 0, sizeof guidDevice);

    lpBase->DebugOut("Initializing DirectSound:\n");
    DirectSoundEnumerateA(enumerateDevice, this);
    LoadRegistry();
    Init();
    lpBase->DebugOut("done.\n");
}

TDirectSound::~TDirectSound() {
    lpBase->DebugOut("De-initializing DirectSound:\n");
    Exit();
    SaveRegistry();
    vell::freeDevices(lpDeviceList);
    lpBase->DebugOut("done.\n");
}

void TDirectSound::LoadRegistry() {
    DWORD type = REG_NONE, value = 0;
    // A switch of any other type is taken as "off": whoever wrote it meant something.
    if (!queryDword(lpBase->hKey, kDisableValue, value, type))
        dwDisable = 0;
    else
        dwDisable = type == REG_DWORD ? value : 1;

    if (queryDword(lpBase->hKey, kVolumeValue, value, type) && type == REG_DWORD)
        dwVolume = value; // taken as it is; a value beyond silence reads as silence
    else
        dwVolume = kDefaultVolume;

    vell::loadGuid(lpBase->hKey, kDeviceValue, guidDevice);
}

void TDirectSound::SaveRegistry() {
    saveDword(lpBase->hKey, kDisableValue, dwDisable);
    saveDword(lpBase->hKey, kVolumeValue, dwVolume);
    vell::saveGuid(lpBase->hKey, kDeviceValue, guidDevice);
}

int TDirectSound::Init() {
    if (dwDisable != 0) return 0;
    IDirectSound *device = nullptr;
    const HRESULT hr = DirectSoundCreate(&guidDevice, &device, nullptr);
    if (FAILED(hr)) {
        lpDS = nullptr;
        dwDisable = 1; // for good: saved at destruction, so later runs stay silent
        return ErrorMessage(hr, "ERROR: Unable to initialize DirectSound!");
    }
    lpDS = device;
    lpDS->SetCooperativeLevel(lpBase->hWnd, DSSCL_NORMAL);
    return 1;
}

int TDirectSound::Exit() {
    if (dwDisable != 0) return 1;
    lpBase->DebugOut("  Waiting for DirectSound to stop playing...\n");
    while (isPlaying()) {
    }
    if (lpDS != nullptr) {
        lpDS->Release();
        lpDS = nullptr;
    }
    lpBase->DebugOut("done.\n");
    return 1;
}

bool TDirectSound::isPlaying() {
    return false;
}

int TDirectSound::setDevice(_GUID guid) {
    Exit();
    guidDevice = guid;
    return Init();
}

int TDirectSound::getVolume() {
    return vell::attenuationToVolume(dwVolume);
}

void TDirectSound::setVolume(unsigned long volume) {
    dwVolume = vell::volumeToAttenuation(volume);
}

void TDirectSound::Update() {}

void TDirectSound::getErrorString(int hr, char *lpszError) {
    if (lpszError != nullptr) vell::directSoundErrorText(hr, lpszError);
}

bool TDirectSound::ErrorMessage(int hr, const char *lpszText) {
    char codeText[512];
    getErrorString(hr, codeText);
    return vell::showErrorBox(lpBase->hWnd, "DirectSound", lpszText, codeText); // as it is now
}
