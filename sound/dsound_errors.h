// The texts of DirectSound result codes (platform-free).
#ifndef VELL_DSOUND_ERRORS_H
#define VELL_DSOUND_ERRORS_H

#include "base/error_text.h"

namespace vell {

extern const ErrorEntry kDirectSoundErrors[];
extern const std::size_t kDirectSoundErrorCount;

// The longest DirectSound text with its terminating zero: callers' buffers hold at least this.
constexpr std::size_t kSoundErrorTextSize = 87;

inline void directSoundErrorText(std::int32_t hr, char *out) {
    formatErrorText(kDirectSoundErrors, kDirectSoundErrorCount, hr, out, kSoundErrorTextSize);
}

} // namespace vell

#endif
