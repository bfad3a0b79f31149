// The three closed libraries that the system works with when they are there. Hosts may ship them beside their
// executable; the order of each interface's operations is theirs.
#pragma once

#include <cstdint>
#include <string>

namespace roundup {

class IApp;
class CAppRuleSet;

// What ClassifyApp tells of a runtime library. 4,168 bytes, of which the first two words are known.
struct RuntimeRecord {
    std::uint32_t kind = 0;  // two records whose kKindBit agrees stand for the same kind of runtime
    std::uint32_t year = 0;  // such as 2008
    std::uint8_t opaque[4160] = {};
    static constexpr std::uint32_t kKindBit = 2;
};
static_assert(sizeof(RuntimeRecord) == 4168);

// Recognises runtime libraries. Counted; any thread, one call at a time.
class IHearthRuntime {
  public:
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
    // True when the application is a runtime library it knows; fills record.
    virtual bool ClassifyApp(IApp* app, RuntimeRecord* record) = 0;
    // argument is the host's own and passed through; record may be null.
    virtual std::uint8_t CheckApp(void* argument, RuntimeRecord* record, std::uint32_t* out) = 0;
    virtual void AddRuntimeRules(IApp* app, CAppRuleSet* ruleSet) = 0;

  protected:
    ~IHearthRuntime() = default;
};

// A counted file object that serves one file at a time. The first argument of Read, Write and Close is always 0.
class IProbeIO {
  public:
    virtual std::uint32_t Reserved0() = 0;
    virtual std::uint32_t Release() = 0;
    // Access, sharing and disposition as in CreateFileW. -1 on failure.
    virtual std::int64_t Open(const char16_t* path, std::uint32_t access, std::uint32_t share,
                              std::uint32_t disposition) = 0;
    // 0 on success, with the bytes moved in done.
    virtual std::int32_t Read(std::int64_t zero, void* buffer, std::uint32_t size, std::uint32_t* done) = 0;
    virtual std::int32_t Write(std::int64_t zero, const void* buffer, std::uint32_t size, std::uint32_t* done) = 0;
    virtual std::uint32_t Reserved5() = 0;
    virtual std::uint32_t Reserved6() = 0;
    virtual void Close(std::int64_t zero) = 0;

  protected:
    ~IProbeIO() = default;
};

class IClosedLibraries {
  public:
    IClosedLibraries() = default;
    IClosedLibraries(const IClosedLibraries&) = delete;
    IClosedLibraries& operator=(const IClosedLibraries&) = delete;
    virtual ~IClosedLibraries() = default;

    // A new counted object, or null when the library is absent.
    virtual IHearthRuntime* OpenHearthRuntime() = 0;
    virtual IProbeIO* GetProbeIO() = 0;
    // The real path behind a path with masks; false, or an empty text, when there is none. mode is 1.
    virtual bool ExpandPathMask(const char16_t* path, std::u16string& expanded, std::int32_t mode) = 0;
};

}  // namespace roundup
