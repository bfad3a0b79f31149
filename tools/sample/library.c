/* A sample library with one export, built without a runtime library. */
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

__declspec(dllexport) DWORD WINAPI SampleAnswer(void) { return 42; }

BOOL WINAPI start(HINSTANCE module, DWORD reason, LPVOID reserved) {
    (void)module;
    (void)reason;
    (void)reserved;
    return TRUE;
}
