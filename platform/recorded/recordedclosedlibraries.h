// The closed libraries on a machine that is not live: stand-ins alone.
#pragma once

#include "platform/closedlibraries.h"
#include "platform/closedstandins.h"
#include "platform/filesystem.h"

namespace roundup {

// There is no runtime recogniser; the others work on the machine's files.
class RecordedClosedLibraries final : public IClosedLibraries {
  public:
    explicit RecordedClosedLibraries(IFileSystem& files) noexcept : m_files(files) {}

    IHearthRuntime* OpenHearthRuntime() override { return nullptr; }
    IProbeIO* GetProbeIO() override { return MakeFileObject(m_files); }
    bool ExpandPathMask(const char16_t* path, std::u16string& expanded, std::int32_t) override {
        return ExpandFirstMatch(m_files, path, expanded);
    }

  private:
    IFileSystem& m_files;
};

}  // namespace roundup
