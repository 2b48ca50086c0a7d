// Calls into the installed DLL: a GUID to text and back.
#include "VellBase.h"

#include <cstdio>
#include <cstring>

int main() {
    const char text[] = "{01234567-89AB-CDEF-0123-456789ABCDEF}";
    GUID guid;
    str2GUID(text, &guid);
    char back[40] = {};
    GUID2str(guid, back);
    std::printf("%s\n", back);
    return std::strcmp(text, back) == 0 ? 0 : 1;
}
