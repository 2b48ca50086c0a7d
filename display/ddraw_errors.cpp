#include "display/ddraw_errors.h"

namespace vell {

namespace {
constexpr std::int32_t code(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}
} // namespace

// Matched by exact value; the names in the comments are the DirectDraw headers' own.
const ErrorEntry kDirectDrawErrors[] = {
    {code(0x80004001), "Operation not supported!"},        // DDERR_UNSUPPORTED
    {code(0x80004005), "Generic DirectDraw(tm) failure!"}, // DDERR_GENERIC
    {code(0x8007000E), "Out of memory!"},                  // DDERR_OUTOFMEMORY
    {code(0x80070057), "Invalid parameters!"},             // DDERR_INVALIDPARAMS
    {code(0x88760028),
     "Support for requested function/object\nis currently not available!"}, // CURRENTLYNOTAVAIL
    {code(0x88760037), "DirectDraw(tm) has encountered an exception!"},     // DDERR_EXCEPTION
    {code(0x8876005F), "Incompatible primary!"},     // DDERR_INCOMPATIBLEPRIMARY
    {code(0x88760064), "Invalid caps!"},             // DDERR_INVALIDCAPS
    {code(0x88760082), "Invalid object!"},           // DDERR_INVALIDOBJECT
    {code(0x88760091), "Invalid pixel format!"},     // DDERR_INVALIDPIXELFORMAT
    {code(0x887600D4), "No cooperative level set!"}, // DDERR_NOCOOPERATIVELEVELSET
    {code(0x887600DE), "Your current display driver does not\nsupport DirectDraw(tm)!\nPlease "
                       "contact your card manufacturer\nto get the latest drivers."}, // NODDSUPPORT
    {code(0x887600E1), "Exclusive mode not set!"},       // DDERR_NOEXCLUSIVEMODE
    {code(0x887600E6), "No flipping hardware present!"}, // DDERR_NOFLIPHW
    {code(0x8876017C), "Out of video memory!"},          // DDERR_OUTOFVIDEOMEMORY
    {code(0x887601AE), "Surface busy, already locked!"}, // DDERR_SURFACEBUSY
    {code(0x887601C2), "Surface lost!"},                 // DDERR_SURFACELOST
    {code(0x8876021C), "Was still drawing!"},            // DDERR_WASSTILLDRAWING
    {code(0x88760231),
     "Not a valid DirectDraw(tm) driver!\n(Wrong GUID!)"},          // INVALIDDIRECTDRAWGUID
    {code(0x88760232), "DirectDraw(tm) has already been created!"}, // DIRECTDRAWALREADYCREATED
    {code(0x88760233), "No DirectDraw(tm) hardware!"},              // DDERR_NODIRECTDRAWHW
    {code(0x88760234), "Primary surface already exists!"},          // PRIMARYSURFACEALREADYEXISTS
    {code(0x88760235), "Software emulation not available!"},        // DDERR_NOEMULATION
    {code(0x8876023A), "Window handle subclassed!"},                // DDERR_HWNDSUBCLASSED
    {code(0x8876023B), "Window handle already set!"},               // DDERR_HWNDALREADYSET
    {code(0x88760245), "Exclusive mode already set!"},              // DDERR_EXCLUSIVEMODEALREADYSET
    {code(0x8876024E), "Display mode not supported!"},              // DDERR_UNSUPPORTEDMODE
    {code(0x88760250), "Wrong type of surface!"},                   // DDERR_INVALIDSURFACETYPE
    {code(0x8876026C), "DC has already been created!"},             // DDERR_DCALREADYCREATED
};
const std::size_t kDirectDrawErrorCount = sizeof kDirectDrawErrors / sizeof kDirectDrawErrors[0];

} // namespace vell
