// One gathered file, owner of the temporary files among them.
#pragma once

#include <cstdint>

#include "appcenter/appfile/iwfyfile.h"
#include "utility/ownedstring.h"

namespace roundup {

// The life of a temporary file's object is the life of the file on disk: the destructor deletes it. One thread at a
// time.
class CWFYFile : public IWFYFile {
  public:
    ~CWFYFile() override;

    const char16_t* GetPath() const override { return pwszPath.Get(); }
    const char16_t* GetAlias() const override { return pwszAlias.Get(); }
    bool SetAlias(const char16_t* alias) override;
    std::int64_t GetSize() const override { return llSize; }
    std::uint32_t GetType() const override { return dwType; }
    std::uint32_t GetFlags() const override { return dwFlags; }

    // True when the destructor deletes the file at the path.
    bool IsTemporary() const noexcept;

    OwnedString pwszPath;
    OwnedString pwszAlias;
    OwnedString pwszShortPath;
    std::int64_t llSize = 0;  // bytes
    std::uint32_t dwType = FileType::kOrdinary;
    std::uint32_t dwFlags = 0;  // FileFlags
};

}  // namespace roundup
