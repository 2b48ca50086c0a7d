// Text form of a 16-byte GUID, free of any Windows header.
//
// The text lists the sixteen bytes in the order in which they lie in memory, so that writing and
// reading are exact inverses: "{00112233-4455-6677-8899-AABBCCDDEEFF}" is the GUID whose bytes are
// 00 11 22 ... FF. It is deliberately not the customary field-wise notation, in which the first
// three groups would show their bytes reversed.
#ifndef VELL_GUID_TEXT_H
#define VELL_GUID_TEXT_H

#include <cstddef>

namespace vell {

constexpr std::size_t kGuidBytes = 16;
constexpr std::size_t kGuidTextLength = 38; // without the terminating zero

// Writes the 38 characters and a terminating zero (39 bytes) to text.
void formatGuidText(const unsigned char bytes[kGuidBytes], char *text);

// Reads sixteen pairs of hexadecimal digits from text into bytes. A '{', '}' or '-' where a pair
// would begin is skipped; every other character begins a pair, and a pair is the next two
// characters whatever they are. A pair is read as scanf's "%X" would read it (so "a5", "A5" and
// "+5" are digits, and "5x" stops after the 5). Choices where the text is not a GUID:
//   - a pair without a leading hexadecimal digit gives 0;
//   - the text's terminating zero is never passed: a pair cut short by it gives the digit it has,
//     and every byte after the end of the text is 0;
//   - a null text gives the all-zero GUID.
// bytes is written in one piece at the end.
void parseGuidText(const char *text, unsigned char bytes[kGuidBytes]);

} // namespace vell

#endif
