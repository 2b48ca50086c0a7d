#include "sound/volume.h"

#include <cmath>

namespace vell {

std::uint32_t volumeToAttenuation(unsigned long volume) {
    if (volume > 100) return 0;
    if (volume == 0) return kSilence;
    const double t = 10000.0 * (std::log10(static_cast<double>(volume)) * 0.5);
    return kSilence - static_cast<std::uint32_t>(t); // truncated toward zero
}

int attenuationToVolume(std::uint32_t attenuation) {
    if (attenuation == 0) return 100;
    if (attenuation > kSilence) attenuation = kSilence;
    const double y = static_cast<double>(kSilence - attenuation) * 0.0001 * 2.0;
    return static_cast<int>(std::ceil(std::pow(10.0, y)));
}

} // namespace vell
