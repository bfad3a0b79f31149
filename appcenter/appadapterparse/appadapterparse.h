// One adapter: the rules of a family of applications, from "%s\Config\%s.INCEX" beside the host.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "appcenter/appadapterconfig/appadapterconfig.h"
#include "appcenter/appadapterparse/iappadapterparse.h"
#include "utility/kvobject.h"
#include "utility/locks.h"
#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

class CApp;

// The file is parsed at the first application that matches, whose location is what "[App]" in its ACTION lines means
// from then on, and kept. A file that could not be parsed is tried again with the next load.
class CAppAdapterParse final : public CKvObject<IAppAdapterParse> {
  public:
    explicit CAppAdapterParse(std::u16string_view name) noexcept : m_name(name) {}

    ResultCode ApplyTo(IApp* app, CAppRuleSet* ruleSet) override;
    bool IsMatch(IApp* app) const override;

  private:
    ResultCode EnsureParsed(std::u16string_view location);
    ResultCode ApplyParsed(CApp& app, CAppRuleSet& rules);
    ResultCode CollectDirs(CApp& app, CStringVec& directories) const;
    ResultCode CollectPlain(const CApp& app, CStringVec& directories) const;
    ResultCode CollectFamily(CApp& app, CStringVec& directories) const;
    ResultCode ExpandPaths(std::u16string_view word, const CStringSet& paths, CStringVec& expanded) const;

    const OwnedString m_name;
    CriticalSection m_lock;
    // Guarded by m_lock.
    std::unique_ptr<CAppAdapterConfig> m_config;
    std::uint32_t m_triedIn = 0;  // generation of the rule files in which the last parse gave nothing
    ResultCode m_tried;           // what that parse answered
};

}  // namespace roundup
