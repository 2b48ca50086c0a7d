// Fuzzes the GUID text reader with arbitrary bytes: it must never read past the text's terminating
// zero (the input is copied into a buffer of exactly its length plus one), and whatever it reads
// must survive a round trip through the writer.
#include "base/guid_text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::unique_ptr<char[]> text(new char[size + 1]);
    std::memcpy(text.get(), data, size);
    text[size] = '\0';

    unsigned char bytes[vell::kGuidBytes];
    vell::parseGuidText(text.get(), bytes);

    char formatted[vell::kGuidTextLength + 1];
    vell::formatGuidText(bytes, formatted);
    if (std::strlen(formatted) != vell::kGuidTextLength) std::abort();

    unsigned char again[vell::kGuidBytes];
    vell::parseGuidText(formatted, again);
    if (std::memcmp(bytes, again, sizeof bytes) != 0) std::abort();
    return 0;
}
