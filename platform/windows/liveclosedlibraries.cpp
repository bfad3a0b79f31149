#include "platform/windows/liveclosedlibraries.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "platform/closedstandins.h"
#include "platform/threading.h"
#include "platform/windows/liveareas.h"
#include "platform/windows/wintext.h"
#include "utility/log.h"

namespace roundup {

namespace {

// A library and the one function that is called of it.
template <class Function>
class ClosedFunction {
  public:
    ClosedFunction(const wchar_t* library, const char* name) noexcept : m_library(library), m_name(name) {}

    // The function, or null when the library or the function is absent; looked up once.
    Function Find(const std::u16string& folder) {
        const std::lock_guard guard(m_lock);
        if (m_looked) return m_function;
        m_looked = true;
        const std::u16string path = folder + FromWide(m_library);
        // What the library itself needs is looked for beside it as well.
        const HMODULE module = ::LoadLibraryExW(ToWide(path.c_str()), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (module != nullptr) m_function = GetProcedure<Function>(module, m_name);
        if (m_function == nullptr) m_error = ::GetLastError();
        return m_function;
    }
    // Why there is none; behind Find.
    Win32Error Error() const noexcept { return m_error; }

  private:
    const wchar_t* const m_library;
    const char* const m_name;
    // No std::call_once: it needs the run-time library's own storage of threads, which outlives an unloaded module.
    Mutex m_lock;
    bool m_looked = false;  // guarded by m_lock, as the two below
    Function m_function = nullptr;
    Win32Error m_error = kErrorSuccess;
};

std::u16string HostFolder() {
    std::u16string path(MAX_PATH, u'\0');
    for (;;) {
        const auto room = static_cast<DWORD>(path.size());
        const DWORD length = ::GetModuleFileNameW(nullptr, ToWide(path.data()), room);
        if (length < room) {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2);
    }
    return path.substr(0, path.rfind(u'\\') + 1);
}

class LiveClosedLibraries final : public IClosedLibraries {
  public:
    explicit LiveClosedLibraries(std::u16string folder)
        : m_folder(folder.empty() ? HostFolder() : std::move(folder) + u'\\') {}

    IHearthRuntime* OpenHearthRuntime() override {
        const OpenRuntime open = m_openRuntime.Find(m_folder);
        return open != nullptr ? open() : nullptr;
    }

    IProbeIO* GetProbeIO() override {
        const GetFileObject get = m_getFileObject.Find(m_folder);
        return get != nullptr ? get() : MakeFileObject(CurrentMachine().Files());
    }

    bool ExpandPathMask(const char16_t* path, std::u16string& expanded, std::int32_t mode) override {
        const ExpandMask expand = m_expandMask.Find(m_folder);
        if (expand == nullptr) {
            // Who reads the log wants to know by whose rules masks were expanded.
            if (!m_maskNoted.test_and_set()) TraceLine(u"Loadd %S err=%u", "Pathmill.dll", m_expandMask.Error());
            return ExpandFirstMatch(CurrentMachine().Files(), path, expanded);
        }
        expanded.clear();
        wchar_t* found = nullptr;
        expand(ToWide(path), &found, mode);
        if (found == nullptr) return false;
        expanded = CopyWide(found);
        // An owned string: a block of the plain allocation, which every C runtime of the system takes from the heap of
        // the process, and whose holder frees it.
        ::HeapFree(::GetProcessHeap(), 0, found);
        return !expanded.empty();
    }

  private:
    using OpenRuntime = IHearthRuntime* (*)();
    using GetFileObject = IProbeIO* (*)();
    // The output is an owned string: the pointer to its block, null when there is no text.
    using ExpandMask = void (*)(const wchar_t* path, wchar_t** expanded, int mode);

    const std::u16string m_folder;  // with the separator
    ClosedFunction<OpenRuntime> m_openRuntime{L"Hearthlib.dll", "OpenHearthRuntime"};
    ClosedFunction<GetFileObject> m_getFileObject{L"Sysprobe.dll", "GetProbeIO"};
    ClosedFunction<ExpandMask> m_expandMask{L"Pathmill.dll", "ExpandPathMask"};
    std::atomic_flag m_maskNoted;
};

}  // namespace

std::unique_ptr<IClosedLibraries> MakeClosedLibrariesOf(std::u16string folder) {
    return std::make_unique<LiveClosedLibraries>(std::move(folder));
}

std::unique_ptr<IClosedLibraries> MakeLiveClosedLibraries() { return MakeClosedLibrariesOf({}); }

}  // namespace roundup
