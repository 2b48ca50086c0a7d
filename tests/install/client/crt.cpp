// The start-up of the Microsoft-ABI test client: the little of Visual Studio's static runtime it
// needs (the entry point, the floating-point marker and the /GS cookie), since only its DLLs
// (ucrtbase, vcruntime140) exist here. The client has no global objects to construct.
#include <stdint.h>
#include <stdlib.h>

extern "C" {
int _fltused = 0x9875;
uintptr_t __security_cookie = (uintptr_t)0x2B992DDFA232ull;

#if defined(_M_IX86)
void __fastcall __security_check_cookie(uintptr_t cookie) {
#else
void __cdecl __security_check_cookie(uintptr_t cookie) {
#endif
    if (cookie != __security_cookie) _exit(99); // the stack was overwritten
}

int main();
void mainCRTStartup() {
    exit(main());
}
}
