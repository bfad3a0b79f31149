// Stand-ins for the closed libraries on a machine that is not live.
#pragma once

#include "platform/closedlibraries.h"
#include "platform/filesystem.h"

namespace roundup {

// The file object is a plain stream over the machine's files; a path with masks becomes the first existing path, in
// the order of names, that they match. There is no runtime recogniser.
class RecordedClosedLibraries final : public IClosedLibraries {
  public:
    explicit RecordedClosedLibraries(IFileSystem& files) noexcept : m_files(files) {}

    IHearthRuntime* OpenHearthRuntime() override { return nullptr; }
    IProbeIO* GetProbeIO() override;
    bool ExpandPathMask(const char16_t* path, std::u16string& expanded, std::int32_t mode) override;

  private:
    IFileSystem& m_files;
};

}  // namespace roundup
