#include "base/DeviceList.h"

#include <cstring>
#include <new>

namespace vell {

namespace {
char *copyText(const char *text) {
    if (text == nullptr) text = "";
    const std::size_t size = std::strlen(text) + 1;
    char *copy = new (std::nothrow) char[size];
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}
} // namespace

void appendDevice(structDeviceInfo *&list, const GUID *guid, const char *description,
                  const char *driverName) {
    auto *record = new (std::nothrow) structDeviceInfo();
    if (record == nullptr) return;
    if (guid != nullptr) record->guid = *guid;
    record->lpszDescription = copyText(description);
    record->lpszDriverName = copyText(driverName);
    record->lpNext = nullptr;
    structDeviceInfo **tail = &list;
    while (*tail != nullptr)
        tail = &(*tail)->lpNext;
    *tail = record;
}

void freeDevices(structDeviceInfo *&list) {
    while (list != nullptr) {
        structDeviceInfo *next = list->lpNext;
        delete[] list->lpszDescription;
        delete[] list->lpszDriverName;
        delete list;
        list = next;
    }
}

} // namespace vell
