#include "base/Registry.h"

#include <cstring>

namespace vell {

void loadGuid(HKEY key, const char *name, GUID &guid) {
    str2GUID("{00000000-0000-0000-0000-000000000000}", &guid);
    char buffer[129] = {}; // the value's 128 bytes and a terminating zero that always stays
    DWORD size = 128;
    if (RegQueryValueExA(key, name, nullptr, nullptr, reinterpret_cast<BYTE *>(buffer), &size) ==
        ERROR_SUCCESS)
        str2GUID(buffer, &guid);
}

void saveGuid(HKEY key, const char *name, const GUID &guid) {
    char buffer[128];
    GUID2str(guid, buffer);
    RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<BYTE *>(buffer),
                   static_cast<DWORD>(std::strlen(buffer)));
}

} // namespace vell
