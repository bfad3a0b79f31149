// The ini files of a machine that is not live.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/filesystem.h"
#include "platform/profile.h"
#include "platform/recorded/initext.h"
#include "platform/recorded/mappedfolder.h"
#include "platform/threading.h"

namespace roundup {

// Reads and writes through the machine's files. A file name without a folder is looked for in the Windows folder.
class RecordedProfile final : public IProfile {
  public:
    RecordedProfile(IFileSystem& files, std::u16string windowsFolder);
    // The real folder that other processes write ini files in at the same time; null for none. Before the first write.
    void ShareWriters(MappedFolder* folder) noexcept { m_shared = folder; }

    std::uint32_t GetString(const char16_t* section, const char16_t* key, const char16_t* fallback, char16_t* buffer,
                            std::uint32_t size, const char16_t* path) override;
    bool WriteString(const char16_t* section, const char16_t* key, const char16_t* value,
                     const char16_t* path) override;

  private:
    std::u16string PathOf(const char16_t* path) const;
    Win32Error ReadFile(const std::u16string& path, std::string& bytes);
    bool WriteFile(const std::u16string& path, std::string_view bytes);

    IFileSystem& m_files;
    const std::u16string m_windowsFolder;
    MappedFolder* m_shared = nullptr;
    Mutex m_writing;  // a write reads the file, changes it and writes it back
};

}  // namespace roundup
