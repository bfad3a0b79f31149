/* Prints the short form of each path of a list: shortnames LIST OUT. Both files are UTF-16LE lines; a path that does
 * not exist, or whose short form is the same, gives no line, any other one "long<TAB>short". */
#include <stdio.h>
#include <wchar.h>
#include <windows.h>

int wmain(int argc, wchar_t **argv) {
    if (argc != 3) return 2;
    FILE *in = _wfopen(argv[1], L"rb"), *out = _wfopen(argv[2], L"wb");
    if (!in || !out) return 1;
    wchar_t line[1024], brief[1024];
    while (fgetws(line, 1024, in)) {
        line[wcscspn(line, L"\r\n")] = 0;
        DWORD n = GetShortPathNameW(line, brief, 1024);
        if (n == 0 || n >= 1024 || wcscmp(line, brief) == 0) continue;
        fwprintf(out, L"%ls\t%ls\n", line, brief);
    }
    fclose(in);
    return fclose(out) != 0;
}
