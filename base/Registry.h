// Device choices in the base object's registry key, as the GUID text form.
#ifndef VELL_REGISTRY_H
#define VELL_REGISTRY_H

#include "VellBase.h"

namespace vell {

// The all-zero GUID, then the stored text if there is one that fits 128 bytes (its type is not
// examined; a text of exactly 128 bytes without its zero is read too). A null key reads nothing.
void loadGuid(HKEY key, const char *name, GUID &guid);

// REG_SZ, the 38 characters counted without their terminating zero. Failures pass silently.
void saveGuid(HKEY key, const char *name, const GUID &guid);

} // namespace vell

#endif
