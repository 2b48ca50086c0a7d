// The texts of DirectDraw result codes (platform-free).
#ifndef VELL_DDRAW_ERRORS_H
#define VELL_DDRAW_ERRORS_H

#include "base/error_text.h"

namespace vell {

extern const ErrorEntry kDirectDrawErrors[];
extern const std::size_t kDirectDrawErrorCount;

// The text for hr, or "Unknown HRESULT(0x........)"; out holds at least kErrorTextSize bytes.
inline void directDrawErrorText(std::int32_t hr, char *out) {
    formatErrorText(kDirectDrawErrors, kDirectDrawErrorCount, hr, out, kErrorTextSize);
}

} // namespace vell

#endif
