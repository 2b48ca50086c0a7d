// The message box of a device failure, shared by the display and the sound object.
#ifndef VELL_ERROR_BOX_H
#define VELL_ERROR_BOX_H

#include "VellBase.h"

namespace vell {

// Shows "<text>\n\n<codeText>" (cut short to 1023 characters) with an OK button and the error
// icon, owned by owner, and returns false for the caller to hand on as its own failure.
bool showErrorBox(HWND owner, const char *caption, const char *text, const char *codeText);

} // namespace vell

#endif
