/* A sample program: writes its own name and ends. Built without a runtime library, so that it stays at a few
 * kilobytes; PROGRAM_NAME is its name in ASCII. */
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

void start(void) {
    static const char text[] = PROGRAM_NAME "\r\n";
    DWORD written;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, sizeof text - 1, &written, NULL);
    ExitProcess(0);
}
