// Builds RIFF/WAVE files for the sound tests, well-formed or not.
#ifndef VELL_TEST_WAVE_FILE_H
#define VELL_TEST_WAVE_FILE_H

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace vtest {

// 16-bit samples as little-endian bytes.
inline std::string sampleBytes(const std::vector<std::int16_t> &samples) {
    std::string bytes(samples.size() * 2, '\0');
    for (std::size_t i = 0; i < samples.size(); ++i) {
        bytes[2 * i] = static_cast<char>(samples[i] & 0xFF);
        bytes[2 * i + 1] = static_cast<char>((samples[i] >> 8) & 0xFF);
    }
    return bytes;
}

// A sine tone at 22050 samples per second.
inline std::vector<std::int16_t> tone(double hertz, double seconds, double amplitude) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * 22050));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(
            amplitude * std::sin(2 * 3.14159265358979 * hertz * static_cast<double>(i) / 22050));
    return samples;
}

inline std::string le32(std::uint32_t v) {
    return std::string{static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF),
                       static_cast<char>((v >> 16) & 0xFF), static_cast<char>((v >> 24) & 0xFF)};
}

// One chunk: identifier, declared size (by default the payload's) and payload, padded to even.
inline std::string chunk(const std::string &id, const std::string &payload,
                         std::int64_t declared = -1) {
    std::string c =
        id + le32(static_cast<std::uint32_t>(declared < 0 ? payload.size() : declared)) + payload;
    if (payload.size() % 2) c += '\0';
    return c;
}

// The "fmt " payload of PCM with the given rate, channels and bits.
inline std::string pcmFormat(std::uint32_t rate = 22050, std::uint16_t channels = 1,
                             std::uint16_t bits = 16) {
    const std::uint16_t align = static_cast<std::uint16_t>(channels * bits / 8);
    std::string f;
    auto le16 = [&](std::uint16_t v) {
        f += static_cast<char>(v & 0xFF);
        f += static_cast<char>(v >> 8);
    };
    le16(1);
    le16(channels);
    f += le32(rate);
    f += le32(rate * align);
    le16(align);
    le16(bits);
    return f;
}

// A whole RIFF file of the given form type around the given chunks.
inline std::string riff(const std::string &chunks, const std::string &form = "WAVE") {
    return "RIFF" + le32(static_cast<std::uint32_t>(4 + chunks.size())) + form + chunks;
}

inline std::string waveFile(const std::string &samples) {
    return riff(chunk("fmt ", pcmFormat()) + chunk("data", samples));
}

} // namespace vtest

#endif
