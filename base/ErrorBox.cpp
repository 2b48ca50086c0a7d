#include "base/ErrorBox.h"

#include "base/error_text.h"

namespace vell {

bool showErrorBox(HWND owner, const char *caption, const char *text, const char *codeText) {
    char message[1024];
    composeErrorMessage(text, codeText, message, sizeof message);
    MessageBoxA(owner, message, caption, MB_OK | MB_ICONERROR);
    return false;
}

} // namespace vell
