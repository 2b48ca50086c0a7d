// The master volume's two scales (platform-free).
//
// Clients speak of volume on a logarithmic scale from 0 to 100: 100 is full volume, every halving
// of the number lowers the level by 5000 * log10(2), about 1505 hundredths of a decibel (15 dB),
// and 1 (like 0) is -100 dB. The platform wants an attenuation in hundredths of a decibel from 0
// (full) to 10000 (silence).
#ifndef VELL_VOLUME_H
#define VELL_VOLUME_H

#include <cstdint>

namespace vell {

constexpr std::uint32_t kSilence = 10000; // -100 dB, the platform's quietest

// 0 gives 10000; over 100 gives 0; otherwise 10000 - trunc(10000 * log10(volume) * 0.5).
std::uint32_t volumeToAttenuation(unsigned long volume);

// The inverse: 0 gives 100; otherwise ceil(10 ^ ((10000 - attenuation) * 0.0001 * 2)). An
// attenuation beyond 10000 (only a hand-edited registry holds one) counts as 10000, which reads 1.
// volumeToAttenuation followed by this gives back every volume from 1 to 100 exactly.
int attenuationToVolume(std::uint32_t attenuation);

} // namespace vell

#endif
