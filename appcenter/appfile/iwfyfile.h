// One gathered file, as those see it who do not own it.
#pragma once

#include <cstdint>

namespace roundup {

// What a gathered path is. The numbers are stored in records; every number that is not named here stands for a data
// file of the package analyzer.
struct FileType {
    static constexpr std::uint32_t kConfig = 0;    // the ".cfg" file of the application's store
    static constexpr std::uint32_t kIndex = 1;     // its ".idx" file
    static constexpr std::uint32_t kOrdinary = 2;  // a file of the application
    static constexpr std::uint32_t kPackage = 3;   // its cached installer package
    static constexpr std::uint32_t kFirstData = 4;
    static constexpr std::uint32_t kDirectory = 13;  // no file, but a directory
    static constexpr std::uint32_t kLastData = 17;
    static constexpr std::uint32_t kStorePackage = 18;      // a file of a store package
    static constexpr std::uint32_t kUnnamed = 0xFFFFFFFFU;  // a temporary file without a type of its own
};

// Stored in records.
struct FileFlags {
    static constexpr std::uint32_t k64BitImage = 0x1;
    static constexpr std::uint32_t k32BitImage = 0x8;
    static constexpr std::uint32_t kStaysOnDisk = 0x80;  // even when its type says that it is temporary
};

// The order of the operations is fixed. Texts are the object's own and may be null.
class IWFYFile {
  public:
    IWFYFile() = default;
    IWFYFile(const IWFYFile&) = delete;
    IWFYFile& operator=(const IWFYFile&) = delete;
    virtual ~IWFYFile() = default;

    virtual const char16_t* GetPath() const = 0;
    virtual const char16_t* GetAlias() const = 0;
    // Frees the old alias first. False when memory is short.
    virtual bool SetAlias(const char16_t* alias) = 0;
    // Bytes.
    virtual std::int64_t GetSize() const = 0;
    virtual std::uint32_t GetType() const = 0;
    virtual std::uint32_t GetFlags() const = 0;
};

}  // namespace roundup
