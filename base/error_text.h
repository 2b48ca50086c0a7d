// Texts of platform result codes, free of any Windows header. The display and the sound object
// each keep a table of their own; both format unknown codes and compose their message boxes here.
#ifndef VELL_ERROR_TEXT_H
#define VELL_ERROR_TEXT_H

#include <cstddef>
#include <cstdint>

namespace vell {

struct ErrorEntry {
    std::int32_t code;
    const char *text;
};

// The longest text any table holds, with its terminating zero; callers' buffers hold at least this.
constexpr std::size_t kErrorTextSize = 126;

// The table's text for code, or null.
const char *findErrorText(const ErrorEntry *table, std::size_t count, std::int32_t code);

// Writes the table's text for code, or "Unknown HRESULT(0x%08x)" with the code's bits in
// lower-case hexadecimal, into out (at most size bytes, always terminated when size > 0).
void formatErrorText(const ErrorEntry *table, std::size_t count, std::int32_t code, char *out,
                     std::size_t size);

// A message box text: the caller's text, a blank line, then the code's text. Cut short to fit
// size - 1 characters, never overflowing.
void composeErrorMessage(const char *callerText, const char *codeText, char *out, std::size_t size);

} // namespace vell

#endif
