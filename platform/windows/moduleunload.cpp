// What the run-time library keeps of the thread that unloads the module.
//
// The thread library that is linked in opens an event and a handle of each thread that it did not start, such as the
// host's, when that thread first waits for another one. It closes them when the thread ends, but not when the module
// goes before. So the end of the thread is told to it as far as this copy of it is concerned.
#include <windows.h>

// The library's own notice of threads, in the table of callbacks (winpthreads, thread.c).
extern "C" const PIMAGE_TLS_CALLBACK __xl_f;  // NOLINT(bugprone-reserved-identifier)

namespace {

// reserved is null when the module is unloaded, and not when the whole process ends.
void NTAPI OnUnload(void* module, DWORD reason, void* reserved) {
    if (reason == DLL_PROCESS_DETACH && reserved == nullptr) __xl_f(module, DLL_THREAD_DETACH, nullptr);
}

}  // namespace

// Callbacks run in the order of their sections' names: this one in front of the library's. The module's link asks for
// it.
extern "C" {
extern const PIMAGE_TLS_CALLBACK roundup_on_unload;
[[gnu::section(".CRT$XLE"), gnu::used]] const PIMAGE_TLS_CALLBACK roundup_on_unload = OnUnload;
}
