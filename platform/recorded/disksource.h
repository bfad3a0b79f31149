// A folder of this computer as the tree that a machine's drives are shown from.
#pragma once

#include <memory>

#include "platform/recorded/filesource.h"
#include "platform/recorded/hostfs.h"

namespace roundup {

// Names that are not UTF-8 are left out. The folder is shared with whoever else reads from the source.
class DiskSource final : public IFileSource {
  public:
    explicit DiskSource(std::shared_ptr<HostFolder> folder, bool wineShortNames = false) noexcept
        : m_folder(std::move(folder)), m_wineShortNames(wineShortNames) {}

    Win32Error List(std::u16string_view folder, std::vector<SourceEntry>& entries) override;
    Win32Error GetSize(std::u16string_view file, std::uint64_t& size) override;
    Win32Error Open(std::u16string_view file, std::unique_ptr<IFileStream>& stream) override;
    Win32Error ReadLink(std::u16string_view link, LinkTarget& target) override;
    std::vector<std::byte> ReadSecurity(std::u16string_view path) override;
    bool HasWineShortNames() const noexcept override { return m_wineShortNames; }

  private:
    const std::shared_ptr<HostFolder> m_folder;
    const bool m_wineShortNames;
};

}  // namespace roundup
