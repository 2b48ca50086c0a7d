// The exported GUID text functions: the platform's _GUID seen as its sixteen bytes in memory.
#include "VellBase.h"

#include "base/guid_text.h"

#include <cstring>

static_assert(sizeof(_GUID) == vell::kGuidBytes, "a GUID is sixteen bytes");

void GUID2str(_GUID guid, char *text) {
    if (text == nullptr) return;
    unsigned char bytes[vell::kGuidBytes];
    std::memcpy(bytes, &guid, sizeof bytes);
    vell::formatGuidText(bytes, text);
}

void str2GUID(const char *text, _GUID *guid) {
    if (guid == nullptr) return;
    unsigned char bytes[vell::kGuidBytes];
    vell::parseGuidText(text, bytes);
    std::memcpy(guid, bytes, sizeof bytes);
}
