// How the module's one export is marked.
#pragma once

// Everything is compiled hidden. On Windows a definition file names the export (cmake/roundup.def).
#ifdef _WIN32
#define ROUNDUP_EXPORT
#else
#define ROUNDUP_EXPORT __attribute__((visibility("default")))
#endif
