#include "platform/windows/liveareas.h"
#include "platform/windows/winhandle.h"

namespace roundup {

namespace {

HANDLE RawOf(std::uint64_t handle) { return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(handle)); }

// With its sign, so that INVALID_HANDLE_VALUE is kInvalidFile in a process of either width.
std::uint64_t HandleOf(HANDLE handle) { return static_cast<std::uint64_t>(reinterpret_cast<std::intptr_t>(handle)); }

Win32Error CodeOf(BOOL succeeded) { return succeeded ? kErrorSuccess : ::GetLastError(); }

std::uint64_t SizeOf(DWORD attributes, DWORD high, DWORD low) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return 0;
    return (static_cast<std::uint64_t>(high) << 32) | low;
}

void Fill(const WIN32_FIND_DATAW& found, FindData& data) {
    data.attributes = found.dwFileAttributes;
    data.size = SizeOf(found.dwFileAttributes, found.nFileSizeHigh, found.nFileSizeLow);
    static_assert(sizeof data.name == sizeof found.cFileName);
    std::char_traits<char16_t>::copy(data.name, FromWide(found.cFileName), MAX_PATH);
}

class LiveFiles final : public IFileSystem {
  public:
    LiveFiles() {
        // In every process, so never unloaded.
        const HMODULE kernel = ::GetModuleHandleW(L"Kernel32.dll");
        m_disable = GetProcedure<Disable>(kernel, "Wow64DisableWow64FsRedirection");
        m_revert = GetProcedure<Revert>(kernel, "Wow64RevertWow64FsRedirection");
    }

    std::uint32_t GetAttributes(const char16_t* path) override { return ::GetFileAttributesW(ToWide(path)); }

    Win32Error GetInfo(const char16_t* path, FileInfo& info) override {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!::GetFileAttributesExW(ToWide(path), GetFileExInfoStandard, &data)) return ::GetLastError();
        info.attributes = data.dwFileAttributes;
        info.size = SizeOf(data.dwFileAttributes, data.nFileSizeHigh, data.nFileSizeLow);
        return kErrorSuccess;
    }

    Win32Error FindFirst(const char16_t* pattern, FindHandle& find, FindData& data) override {
        WIN32_FIND_DATAW found;
        // Without the short names, which nobody sees: they cost a look-up for each entry.
        const HANDLE handle =
            ::FindFirstFileExW(ToWide(pattern), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, 0);
        find = HandleOf(handle);
        if (handle == INVALID_HANDLE_VALUE) return ::GetLastError();
        Fill(found, data);
        return kErrorSuccess;
    }

    Win32Error FindNext(FindHandle find, FindData& data) override {
        WIN32_FIND_DATAW found;
        if (!::FindNextFileW(RawOf(find), &found)) return ::GetLastError();
        Fill(found, data);
        return kErrorSuccess;
    }

    void FindClose(FindHandle find) override {
        if (find != kInvalidFile) ::FindClose(RawOf(find));
    }

    Win32Error Open(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                    FileHandle& file) override {
        const HANDLE handle =
            ::CreateFileW(ToWide(path), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
        file = HandleOf(handle);
        return handle != INVALID_HANDLE_VALUE ? kErrorSuccess : ::GetLastError();
    }

    Win32Error Read(FileHandle file, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        DWORD moved = 0;
        const BOOL succeeded = ::ReadFile(RawOf(file), buffer, size, &moved, nullptr);
        done = moved;
        return CodeOf(succeeded);
    }

    Win32Error Write(FileHandle file, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        DWORD moved = 0;
        const BOOL succeeded = ::WriteFile(RawOf(file), buffer, size, &moved, nullptr);
        done = moved;
        return CodeOf(succeeded);
    }

    Win32Error GetSize(FileHandle file, std::uint64_t& size) override {
        LARGE_INTEGER bytes{};
        const BOOL succeeded = ::GetFileSizeEx(RawOf(file), &bytes);
        if (succeeded) size = static_cast<std::uint64_t>(bytes.QuadPart);
        return CodeOf(succeeded);
    }

    Win32Error SetPosition(FileHandle file, std::uint64_t position) override {
        LARGE_INTEGER distance;
        distance.QuadPart = static_cast<LONGLONG>(position);
        return CodeOf(::SetFilePointerEx(RawOf(file), distance, nullptr, FILE_BEGIN));
    }

    Win32Error SetEnd(FileHandle file) override { return CodeOf(::SetEndOfFile(RawOf(file))); }

    void Close(FileHandle file) override {
        if (file != kInvalidFile) ::CloseHandle(RawOf(file));
    }

    Win32Error Delete(const char16_t* path) override { return CodeOf(::DeleteFileW(ToWide(path))); }

    Win32Error CreateDirectory(const char16_t* path) override {
        return CodeOf(::CreateDirectoryW(ToWide(path), nullptr));
    }

    std::uint32_t GetLongPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return ::GetLongPathNameW(ToWide(path), ToWide(buffer), size);
    }

    std::uint32_t GetShortPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return ::GetShortPathNameW(ToWide(path), ToWide(buffer), size);
    }

    std::uint32_t GetFullPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return ::GetFullPathNameW(ToWide(path), size, ToWide(buffer), nullptr);
    }

    Win32Error GetVolumeFileSystem(const char16_t* root, char16_t* name, std::uint32_t size) override {
        return CodeOf(::GetVolumeInformationW(ToWide(root), nullptr, 0, nullptr, nullptr, nullptr, ToWide(name), size));
    }

    Win32Error ReadReparsePoint(const char16_t* path, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        const OwnedFile file(::CreateFileW(ToWide(path), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                           FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        done = 0;
        if (!file) return ::GetLastError();
        DWORD moved = 0;
        const BOOL succeeded =
            ::DeviceIoControl(file.Get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, buffer, size, &moved, nullptr);
        // The owner's closing of the file may come before a caller asks for the thread's last error.
        const Win32Error error = CodeOf(succeeded);
        done = moved;
        return error;
    }

    bool DisableRedirection(void*& state) override {
        return m_disable != nullptr && m_revert != nullptr && m_disable(&state) != FALSE;
    }

    void RevertRedirection(void* state) override {
        if (m_revert != nullptr) m_revert(state);
    }

  private:
    using Disable = BOOL(WINAPI*)(PVOID*);
    using Revert = BOOL(WINAPI*)(PVOID);

    Disable m_disable = nullptr;
    Revert m_revert = nullptr;
};

}  // namespace

std::unique_ptr<IFileSystem> MakeLiveFiles() { return std::make_unique<LiveFiles>(); }

}  // namespace roundup
