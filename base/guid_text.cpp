#include "base/guid_text.h"

#include <cstdio>
#include <cstring>

namespace vell {

void formatGuidText(const unsigned char bytes[kGuidBytes], char *text) {
    const unsigned char *b = bytes;
    std::snprintf(text, kGuidTextLength + 1,
                  "{%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X}", b[0],
                  b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13],
                  b[14], b[15]);
}

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isScanfSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The value "%X" reads from a field of at most two characters (fewer when the text ends), or 0
// when it reads none. Within two characters the number can only be two digits, one digit then
// anything, or one blank or '+' then one digit ('-' never begins a pair: it is a separator). A "0x"
// prefix followed by nothing reads as 0, as the digit 0 alone would.
unsigned readPair(const char *p, std::size_t len) {
    std::size_t i = 0;
    if (len > 0 && (isScanfSpace(p[0]) || p[0] == '+')) i = 1;
    unsigned value = 0;
    for (; i < len; ++i) {
        const int d = hexDigit(p[i]);
        if (d < 0) break;
        value = value * 16 + static_cast<unsigned>(d);
    }
    return value;
}

} // namespace

void parseGuidText(const char *text, unsigned char bytes[kGuidBytes]) {
    unsigned char out[kGuidBytes] = {};
    if (text != nullptr) {
        std::size_t n = 0;
        const char *p = text;
        while (n < kGuidBytes && *p != '\0') {
            if (*p == '-' || *p == '{' || *p == '}') {
                ++p;
                continue;
            }
            const std::size_t len = p[1] == '\0' ? 1 : 2;
            out[n++] = static_cast<unsigned char>(readPair(p, len) & 0xFFu);
            p += len;
        }
    }
    std::memcpy(bytes, out, kGuidBytes);
}

} // namespace vell
