// The device list shared by the display and the sound object: records appended in enumeration
// order, each bracketed in the log by "  Enumerating %s:\n" and "  done.\n".
#ifndef VELL_DEVICE_LIST_H
#define VELL_DEVICE_LIST_H

#include "VellBase.h"

namespace vell {

// Appends a record with own copies of the texts; a null GUID (the primary device) is all zeros.
void appendDevice(structDeviceInfo *&list, const GUID *guid, const char *description,
                  const char *driverName);
void freeDevices(structDeviceInfo *&list);

// The body of both enumeration callbacks; Owner has lpBase and lpDeviceList.
template <class Owner>
void enumerateDevice(Owner *owner, const GUID *guid, const char *description,
                     const char *driverName) {
    owner->lpBase->DebugOut("  Enumerating %s:\n", description != nullptr ? description : "");
    appendDevice(owner->lpDeviceList, guid, description, driverName);
    owner->lpBase->DebugOut("  done.\n");
}

} // namespace vell

#endif
