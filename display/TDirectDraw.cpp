// The display object: device list, opening and closing the display, the device choice in the
// registry, and the error texts and boxes.
#include "VellBase.h"

#include "base/DeviceList.h"
#include "base/ErrorBox.h"
#include "base/Registry.h"
#include "display/ddraw_errors.h"
#include "display/graphics_mode.h"
#include "display/Surfaces.h"

#include <cstring>

#ifdef _WIN64
static_assert(sizeof(TDirectDraw) == 74, "TDirectDraw must stay byte-packed");
static_assert(sizeof(structDeviceInfo) == 40, "structDeviceInfo must stay byte-packed");
#else
static_assert(sizeof(TDirectDraw) == 50, "TDirectDraw must be 50 bytes on 32-bit Windows");
static_assert(sizeof(structDeviceInfo) == 28,
              "structDeviceInfo must be 28 bytes on 32-bit Windows");
static_assert(sizeof(DDSURFACEDESC) == 108, "the 32-bit surface description is 108 bytes");
#endif

namespace {

const char kRegistryValue[] = "TDirectDraw::guidDevice";

BOOL WINAPI enumerateDevice(GUID *guid, LPSTR description, LPSTR driverName, LPVOID context) {
    vell::enumerateDevice(static_cast<TDirectDraw *>(context), guid, description, driverName);
    return TRUE; // go on
}

} // namespace

TDirectDraw::TDirectDraw(TVellBase *base, unsigned long mode) {
    lpBase = base;
    hWnd = base->hWnd;
    dwMode = mode;
    lpPrimary = nullptr;
    lpBack = nullptr;
    lpDD = nullptr;
    // Defined before Init: painting refuses mode 0 should the display not open.
    dwGraphicsMode = vell::kModeNone;
    wWhite = 0;
    std::memset(&guidDevice, 0, sizeof guidDevice);

    lpBase->DebugOut("Initializing DirectDraw:\n");
    lpDeviceList = nullptr;
    DirectDrawEnumerateA(enumerateDevice, this);
    LoadRegistry();
    Init();
    lpBase->DebugOut("done.\n");
}

TDirectDraw::~TDirectDraw() {
    lpBase->DebugOut("De-initializing DirectDraw:\n");
    Exit();
    SaveRegistry();
    vell::freeDevices(lpDeviceList);
    lpBase->DebugOut("done.\n");
}

int TDirectDraw::Init() {
    lpDD = nullptr;
    lpPrimary = nullptr;
    lpBack = nullptr;

    IDirectDraw *dd = nullptr;
    HRESULT hr = DirectDrawCreate(&guidDevice, &dd, nullptr);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to initialize DirectDraw(tm)!");
    lpDD = dd;

    const bool fullScreen = dwMode == 1;
    hr = lpDD->SetCooperativeLevel(hWnd,
                                   fullScreen ? DDSCL_EXCLUSIVE | DDSCL_FULLSCREEN : DDSCL_NORMAL);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to set cooperative level of DirectDraw(tm)!");

    if (fullScreen) {
        hr = lpDD->SetDisplayMode(640, 480, 16);
        if (FAILED(hr)) return ErrorMessage(hr, "Unable to set display mode!");
    }

    DDSURFACEDESC desc;
    std::memset(&desc, 0, sizeof desc);
    desc.dwSize = sizeof desc;
    desc.dwFlags = DDSD_CAPS;
    desc.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    if (fullScreen) {
        desc.dwFlags |= DDSD_BACKBUFFERCOUNT;
        desc.ddsCaps.dwCaps |= DDSCAPS_FLIP | DDSCAPS_COMPLEX;
        desc.dwBackBufferCount = 1;
    }
    IDirectDrawSurface *surface = nullptr;
    hr = lpDD->CreateSurface(&desc, &surface, nullptr);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to create primary surface!");
    hr = vell::querySurface2(surface, lpPrimary);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to query interface of primary surface!");

    lpPrimary->GetSurfaceDesc(&desc);
    const vell::DisplayFormat format = vell::displayFormat(
        desc.ddpfPixelFormat.dwRGBBitCount, desc.ddpfPixelFormat.dwGBitMask, fullScreen);
    dwGraphicsMode = format.mode;
    wWhite = format.white;
    if (!fullScreen) return 1;

    DDSCAPS caps = {DDSCAPS_BACKBUFFER};
    IDirectDrawSurface2 *attached = nullptr;
    hr = lpPrimary->GetAttachedSurface(&caps, &attached);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to get back surface!");
    hr = vell::querySurface2(attached, lpBack);
    if (FAILED(hr)) return ErrorMessage(hr, "Unable to query interface of back surface!");
    return 1;
}

int TDirectDraw::Exit() {
    lpBase->DebugOut("  Releasing DirectDraw interfaces:\n");
    if (lpPrimary != nullptr) {
        lpPrimary->Release(); // the back buffer belongs to its flipping chain and goes with it
        lpPrimary = nullptr;
    }
    lpBack = nullptr;
    if (lpDD != nullptr) {
        lpDD->Release();
        lpDD = nullptr;
    }
    lpBase->DebugOut("  done.\n");
    return 1;
}

void TDirectDraw::LoadRegistry() {
    vell::loadGuid(lpBase->hKey, kRegistryValue, guidDevice);
}

void TDirectDraw::SaveRegistry() {
    vell::saveGuid(lpBase->hKey, kRegistryValue, guidDevice);
}

int TDirectDraw::setDevice(_GUID guid) {
    Exit();
    guidDevice = guid;
    return Init();
}

int TDirectDraw::RestoreAll() {
    return 0;
}

void TDirectDraw::getErrorString(int hr, char *lpszError) {
    if (lpszError != nullptr) vell::directDrawErrorText(hr, lpszError);
}

bool TDirectDraw::ErrorMessage(int hr, const char *lpszText) {
    char codeText[512];
    getErrorString(hr, codeText);
    return vell::showErrorBox(hWnd, "DirectDraw", lpszText, codeText); // the handle copied at birth
}
