// Surface helpers of the display (Windows side), defined in Surfaces.cpp and shared by the
// display, image and text files.
#ifndef VELL_SURFACES_H
#define VELL_SURFACES_H

#include "VellBase.h"

namespace vell {

// IDirectDrawSurface2, 57805885-6EEC-11CF-9441-A82303C10E27.
extern const GUID kIIDSurface2;

// Queries surface for IDirectDrawSurface2 into out and releases surface either way: the queried
// interface keeps the surface alive. out is null on failure.
template <class Surface> HRESULT querySurface2(Surface *surface, IDirectDrawSurface2 *&out) {
    out = nullptr;
    void *queried = nullptr;
    const HRESULT hr = surface->QueryInterface(kIIDSurface2, &queried);
    surface->Release();
    if (SUCCEEDED(hr)) out = static_cast<IDirectDrawSurface2 *>(queried);
    return hr;
}

// Width and height of a surface (zeros when it cannot be described).
void surfaceSize(IDirectDrawSurface2 *surface, DWORD &width, DWORD &height);

} // namespace vell

#endif
