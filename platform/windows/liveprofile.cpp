#include "platform/windows/liveareas.h"
#include "platform/windows/wintext.h"

namespace roundup {

namespace {

class LiveProfile final : public IProfile {
  public:
    std::uint32_t GetString(const char16_t* section, const char16_t* key, const char16_t* fallback, char16_t* buffer,
                            std::uint32_t size, const char16_t* path) override {
        return ::GetPrivateProfileStringW(ToWide(section), ToWide(key), ToWide(fallback), ToWide(buffer), size,
                                          ToWide(path));
    }

    bool WriteString(const char16_t* section, const char16_t* key, const char16_t* value,
                     const char16_t* path) override {
        return ::WritePrivateProfileStringW(ToWide(section), ToWide(key), ToWide(value), ToWide(path)) != FALSE;
    }
};

}  // namespace

std::unique_ptr<IProfile> MakeLiveProfile() { return std::make_unique<LiveProfile>(); }

}  // namespace roundup
