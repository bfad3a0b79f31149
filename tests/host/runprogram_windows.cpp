// By the run-time library alone: what is spawned inherits its descriptors 1 and 2 and its environment.
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>

#include "tests/host/runprogram.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// The library joins the arguments with blanks and quotes nothing.
std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : text) {
        if (c == '"') quoted.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + "\"";
}

// Keys have characters that no code page of one byte holds.
std::wstring Wide(const std::string& text) {
    const std::u16string units = FromUtf8(text);
    return {units.begin(), units.end()};
}

// While it lives, a descriptor of this process writes to a file.
class Redirected {
  public:
    Redirected(int descriptor, const std::string& path) : m_descriptor(descriptor), m_former(_dup(descriptor)) {
        const int file = _open(path.c_str(), _O_CREAT | _O_WRONLY | _O_TRUNC | _O_BINARY, _S_IREAD | _S_IWRITE);
        _dup2(file, descriptor);
        _close(file);
    }
    ~Redirected() {
        _dup2(m_former, m_descriptor);
        _close(m_former);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

  private:
    const int m_descriptor;
    const int m_former;
};

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    const TempFolder folder;
    std::vector<std::string> settings = {"ROUNDUP_MACHINE=", "ROUNDUP_HOST=", "TMPDIR=" + folder.Text()};
    settings.insert(settings.end(), environment.begin(), environment.end());
    for (const std::string& setting : settings) _putenv(setting.c_str());
    std::vector<std::wstring> quoted = {Wide(Quoted(ROUNDUP_PROGRAM))};
    for (const std::string& argument : arguments) quoted.push_back(Wide(Quoted(argument)));
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& argument : quoted) pointers.push_back(argument.c_str());
    pointers.push_back(nullptr);
    ProgramRun run;
    std::fflush(nullptr);
    {
        const Redirected output(1, folder / "out"), error(2, folder / "err");
        run.status = static_cast<int>(_wspawnv(_P_WAIT, Wide(ROUNDUP_PROGRAM).c_str(), pointers.data()));
    }
    for (const std::string& setting : settings) _putenv(setting.substr(0, setting.find('=') + 1).c_str());
    run.output = folder.Read("out");
    run.error = folder.Read("err");
    return run;
}

}  // namespace roundup
