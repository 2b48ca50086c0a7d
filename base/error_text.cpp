#include "base/error_text.h"

#include <cstdio>
#include <cstring>

namespace vell {

const char *findErrorText(const ErrorEntry *table, std::size_t count, std::int32_t code) {
    for (std::size_t i = 0; i < count; ++i)
        if (table[i].code == code) return table[i].text;
    return nullptr;
}

void formatErrorText(const ErrorEntry *table, std::size_t count, std::int32_t code, char *out,
                     std::size_t size) {
    if (out == nullptr || size == 0) return;
    if (const char *text = findErrorText(table, count, code))
        std::snprintf(out, size, "%s", text);
    else
        std::snprintf(out, size, "Unknown HRESULT(0x%08x)", static_cast<std::uint32_t>(code));
}

void composeErrorMessage(const char *callerText, const char *codeText, char *out,
                         std::size_t size) {
    if (out == nullptr || size == 0) return;
    std::snprintf(out, size, "%s\n\n%s", callerText != nullptr ? callerText : "",
                  codeText != nullptr ? codeText : "");
}

} // namespace vell
