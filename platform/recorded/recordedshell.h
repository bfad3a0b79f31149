// The shell of a machine that is not live.
#pragma once

#include "platform/recorded/environment.h"
#include "platform/recorded/icons/recordedicons.h"
#include "platform/recorded/links/linkfile.h"
#include "platform/recorded/machinesettings.h"
#include "platform/recorded/shellfolders.h"
#include "platform/shell.h"

namespace roundup {

// Special folders, command lines, indirect texts and links are answered here, icons by RecordedIcons.
class RecordedShell final : public IShell {
  public:
    RecordedShell(const MachineSettings& settings, const ShellFolders& folders, std::u16string hostExecutable,
                  const Environment& environment, IFileSystem& files, IRegistry& registry);

    bool GetFolderPath(std::uint32_t number, char16_t (&path)[260]) override;
    bool GetSpecialFolderPath(std::uint32_t number, char16_t (&path)[260]) override;
    bool SplitCommandLine(const char16_t* text, std::vector<std::u16string>& arguments) override;
    bool LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) override;
    bool ReadLink(const char16_t* path, ShellLink& link) override;
    void EnterApartment() override {}
    void LeaveApartment() override {}

    void ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) override {
        m_icons.ExtractIcons(path, index, large, small);
    }
    IconHandle GetFileIcon(const char16_t* path) override { return m_icons.GetFileIcon(path); }
    void DestroyIcon(IconHandle icon) override { m_icons.DestroyIcon(icon); }
    bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) override {
        return m_icons.GetIconBitmaps(icon, bitmaps);
    }
    bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) override {
        return m_icons.GetBitmapShape(bitmap, shape);
    }
    bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) override {
        return m_icons.GetBitmapBits(bitmap, header, bits, size);
    }
    void DeleteBitmap(BitmapHandle bitmap) override { m_icons.DeleteBitmap(bitmap); }

  private:
    std::u16string LinkTarget(const LinkFile& link) const;

    const MachineSettings& m_settings;
    const ShellFolders& m_folders;
    const std::u16string m_hostExecutable;
    const Environment& m_environment;
    IFileSystem& m_files;
    IRegistry& m_registry;
    RecordedIcons m_icons;
};

}  // namespace roundup
