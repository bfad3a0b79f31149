// The shell of the live machine: folders, command lines, texts and apartments. Icons are LiveIcons', links
// ReadShellLink's.

#include <algorithm>
#include <iterator>
#include <memory>

#include "platform/windows/liveicons.h"
#include "platform/windows/shelllinkreader.h"

// The order matters: windows.h comes first.
// clang-format off
#include "platform/windows/winhandle.h"
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
// clang-format on

namespace roundup {

namespace {

// How many EnterApartment of the thread found it in an apartment of another kind, which the host chose. They entered
// nothing, and as many LeaveApartment must leave nothing: the host's apartment is not ours to end. Within a thread they
// are always the innermost ones, since the kind cannot change while a pair is open.
//
// A slot of the system's, since the thread-local variables of the run-time library leave handles behind in a process
// that unloads the module.
class RefusedCount {
  public:
    RefusedCount() noexcept : m_slot(::TlsAlloc()) {}
    RefusedCount(const RefusedCount&) = delete;
    RefusedCount& operator=(const RefusedCount&) = delete;
    ~RefusedCount() { ::TlsFree(m_slot); }

    std::uintptr_t Get() const noexcept { return reinterpret_cast<std::uintptr_t>(::TlsGetValue(m_slot)); }
    void Set(std::uintptr_t count) const noexcept { ::TlsSetValue(m_slot, reinterpret_cast<void*>(count)); }

  private:
    const DWORD m_slot;
};

bool CopyPath(const wchar_t (&found)[MAX_PATH], char16_t (&path)[260]) {
    std::copy(std::begin(found), std::end(found), ToWide(path));
    return true;
}

bool FolderPath(std::uint32_t number, DWORD type, char16_t (&path)[260]) {
    wchar_t found[MAX_PATH] = {};
    const HRESULT result = ::SHGetFolderPathW(nullptr, static_cast<int>(number), nullptr, type, found);
    return SUCCEEDED(result) && CopyPath(found, path);
}

class LiveShell final : public LiveIcons {
  public:
    bool GetFolderPath(std::uint32_t number, char16_t (&path)[260]) override {
        return FolderPath(number, SHGFP_TYPE_CURRENT, path);
    }
    bool GetDefaultFolderPath(std::uint32_t number, char16_t (&path)[260]) override {
        return FolderPath(number, SHGFP_TYPE_DEFAULT, path);
    }
    bool GetSpecialFolderPath(std::uint32_t number, char16_t (&path)[260]) override {
        wchar_t found[MAX_PATH] = {};
        return ::SHGetSpecialFolderPathW(nullptr, found, static_cast<int>(number), FALSE) && CopyPath(found, path);
    }

    bool SplitCommandLine(const char16_t* text, std::vector<std::u16string>& arguments) override {
        int count = 0;
        const LocalBlock<wchar_t**> parts(::CommandLineToArgvW(ToWide(text), &count));
        if (!parts) return false;
        arguments.clear();
        arguments.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) arguments.emplace_back(FromWide(parts.Get()[i]));
        return true;
    }

    bool LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) override {
        return SUCCEEDED(::SHLoadIndirectString(ToWide(source), ToWide(buffer), size, nullptr));
    }

    bool ReadLink(const char16_t* path, ShellLink& link) override { return ReadShellLink(path, link); }

    void EnterApartment() override {
        if (FAILED(::CoInitialize(nullptr))) m_refused.Set(m_refused.Get() + 1);
    }
    void LeaveApartment() override {
        if (const std::uintptr_t refused = m_refused.Get(); refused != 0) {
            m_refused.Set(refused - 1);
        } else {
            ::CoUninitialize();
        }
    }

  private:
    const RefusedCount m_refused;
};

}  // namespace

std::unique_ptr<IShell> MakeLiveShell() { return std::make_unique<LiveShell>(); }

}  // namespace roundup
