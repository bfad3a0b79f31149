// A library with the exports of the three closed ones, as a host ships them beside its executable.
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "platform/closedlibraries.h"

namespace {

class Runtime final : public roundup::IHearthRuntime {
  public:
    std::uint32_t AddRef() override { return ++m_count; }
    std::uint32_t Release() override {
        const std::uint32_t left = --m_count;
        if (left == 0) delete this;
        return left;
    }
    bool ClassifyApp(roundup::IApp*, roundup::RuntimeRecord* record) override {
        record->kind = 6;
        record->year = 2008;
        record->opaque[sizeof record->opaque - 1] = 9;
        return true;
    }
    std::uint8_t CheckApp(void* argument, roundup::RuntimeRecord*, std::uint32_t* out) override {
        *out = *static_cast<std::uint32_t*>(argument) + 1;
        return 3;
    }
    void AddRuntimeRules(roundup::IApp*, roundup::CAppRuleSet*) override {}

  private:
    ~Runtime() = default;
    std::uint32_t m_count = 1;
};

// Holds what is written, and gives it back.
class FileObject final : public roundup::IProbeIO {
  public:
    std::uint32_t Reserved0() override { std::abort(); }
    std::uint32_t Release() override {
        delete this;
        return 0;
    }
    std::int64_t Open(const char16_t* path, std::uint32_t access, std::uint32_t share,
                      std::uint32_t disposition) override {
        if (path[0] == u'?') return -1;
        return 0x100000000 + access + share + disposition;
    }
    std::int32_t Read(std::int64_t zero, void* buffer, std::uint32_t size, std::uint32_t* done) override {
        *done = size < m_size ? size : m_size;
        std::memcpy(buffer, m_bytes, *done);
        return zero == 0 ? 0 : -1;
    }
    std::int32_t Write(std::int64_t zero, const void* buffer, std::uint32_t size, std::uint32_t* done) override {
        *done = m_size = size < sizeof m_bytes ? size : static_cast<std::uint32_t>(sizeof m_bytes);
        std::memcpy(m_bytes, buffer, m_size);
        return zero == 0 ? 0 : -1;
    }
    std::uint32_t Reserved5() override { std::abort(); }
    std::uint32_t Reserved6() override { std::abort(); }
    void Close(std::int64_t) override { m_size = 0; }

  private:
    ~FileObject() = default;
    char m_bytes[16] = {};
    std::uint32_t m_size = 0;
};

}  // namespace

extern "C" __declspec(dllexport) roundup::IHearthRuntime* OpenHearthRuntime() { return new Runtime; }

extern "C" __declspec(dllexport) roundup::IProbeIO* GetProbeIO() { return new FileObject; }

// "found" before the path; no text for a path that begins with "?".
extern "C" __declspec(dllexport) void ExpandPathMask(const wchar_t* path, wchar_t** expanded, int mode) {
    if (path[0] == L'?' || mode != 1) return;
    constexpr wchar_t kFound[] = L"found ";
    *expanded = static_cast<wchar_t*>(std::malloc((std::wcslen(kFound) + std::wcslen(path) + 1) * sizeof(wchar_t)));
    if (*expanded != nullptr) std::wcscat(std::wcscpy(*expanded, kFound), path);
}
