#include "platform/recorded/registry/wow64rules.h"

#include <algorithm>
#include <array>
#include <vector>

#include "utility/casemap.h"

namespace roundup {

namespace {

// Below HKEY_LOCAL_MACHINE\SOFTWARE, shared by both views with all that lies below. Classes has rules of its own.
constexpr std::u16string_view kSharedKeys[] = {
    u"Clients",
    u"Policies",
    u"RegisteredApplications",
    u"Microsoft\\COM3",
    u"Microsoft\\Cryptography\\Calais\\Current",
    u"Microsoft\\Cryptography\\Calais\\Readers",
    u"Microsoft\\Cryptography\\Services",
    u"Microsoft\\CTF\\SystemShared",
    u"Microsoft\\CTF\\TIP",
    u"Microsoft\\DFS",
    u"Microsoft\\Driver Signing",
    u"Microsoft\\EnterpriseCertificates",
    u"Microsoft\\EventSystem",
    u"Microsoft\\MSMQ",
    u"Microsoft\\Non-Driver Signing",
    u"Microsoft\\Notepad\\DefaultFonts",
    u"Microsoft\\OLE",
    u"Microsoft\\RAS",
    u"Microsoft\\RPC",
    u"Microsoft\\Shared Tools\\MSInfo",
    u"Microsoft\\SystemCertificates",
    u"Microsoft\\TermServLicensing",
    u"Microsoft\\Transaction Server",
    u"Microsoft\\Windows\\CurrentVersion\\App Paths",
    u"Microsoft\\Windows\\CurrentVersion\\Control Panel\\Cursors\\Schemes",
    u"Microsoft\\Windows\\CurrentVersion\\Explorer\\AutoplayHandlers",
    u"Microsoft\\Windows\\CurrentVersion\\Explorer\\DriveIcons",
    u"Microsoft\\Windows\\CurrentVersion\\Explorer\\KindMap",
    u"Microsoft\\Windows\\CurrentVersion\\Group Policy",
    u"Microsoft\\Windows\\CurrentVersion\\Policies",
    u"Microsoft\\Windows\\CurrentVersion\\PreviewHandlers",
    u"Microsoft\\Windows\\CurrentVersion\\Setup",
    u"Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations",
    u"Microsoft\\Windows NT\\CurrentVersion\\Console",
    u"Microsoft\\Windows NT\\CurrentVersion\\FontDpi",
    u"Microsoft\\Windows NT\\CurrentVersion\\FontLink",
    u"Microsoft\\Windows NT\\CurrentVersion\\FontMapper",
    u"Microsoft\\Windows NT\\CurrentVersion\\Fonts",
    u"Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes",
    u"Microsoft\\Windows NT\\CurrentVersion\\Gre_initialize",
    u"Microsoft\\Windows NT\\CurrentVersion\\Image File Execution Options",
    u"Microsoft\\Windows NT\\CurrentVersion\\LanguagePack",
    u"Microsoft\\Windows NT\\CurrentVersion\\NetworkCards",
    u"Microsoft\\Windows NT\\CurrentVersion\\Perflib",
    u"Microsoft\\Windows NT\\CurrentVersion\\Ports",
    u"Microsoft\\Windows NT\\CurrentVersion\\Print",
    u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList",
    u"Microsoft\\Windows NT\\CurrentVersion\\Time Zones",
};

constexpr std::u16string_view kRedirectedClassesKeys[] = {
    u"CLSID", u"DirectShow", u"Interface", u"Media Type", u"MediaFoundation",
};

// The shared keys as a tree by the components of their paths. Rule 0 is SOFTWARE itself.
class RuleTree {
  public:
    RuleTree() {
        m_rules.push_back({});
        for (const std::u16string_view path : kSharedKeys) Add(path);
    }

    // 0 when no shared key of that path prefix exists.
    std::uint8_t Child(std::uint8_t parent, std::u16string_view name) const noexcept {
        for (std::uint8_t i = m_rules[parent].firstChild; i != 0; i = m_rules[i].next) {
            if (m_rules[i].name.size() == name.size() && EqualsNoCase(m_rules[i].name, name)) return i;
        }
        return 0;
    }

    struct Rule {
        std::u16string_view name;
        std::uint8_t firstChild = 0;
        std::uint8_t next = 0;
    };
    const Rule& At(std::uint8_t rule) const noexcept { return m_rules[rule]; }
    bool IsShared(std::uint8_t rule) const noexcept { return m_rules[rule].firstChild == 0; }

  private:
    void Add(std::u16string_view path) {
        std::uint8_t at = 0;
        while (!path.empty()) {
            const std::size_t end = std::min(path.find(u'\\'), path.size());
            const std::u16string_view name = path.substr(0, end);
            path.remove_prefix(std::min(end + 1, path.size()));
            std::uint8_t child = Child(at, name);
            if (child == 0) {
                child = static_cast<std::uint8_t>(m_rules.size());
                m_rules.push_back({name, 0, m_rules[at].firstChild});
                m_rules[at].firstChild = child;
            }
            at = child;
        }
    }

    std::vector<Rule> m_rules;
};

const RuleTree& Rules() {
    static const RuleTree rules;
    return rules;
}

KeyRole RoleBelowSoftware(KeyRole parent, std::u16string_view name) noexcept {
    const std::uint8_t rule = Rules().Child(parent.rule, name);
    if (rule == 0) return {};
    if (Rules().IsShared(rule)) return {KeyRole::Kind::Shared, rule};
    return {parent.kind, rule};
}

}  // namespace

KeyRole RoleOfChild(KeyRole parent, std::u16string_view name) noexcept {
    using Kind = KeyRole::Kind;
    const auto when = [name](std::u16string_view wanted, Kind kind) {
        return KeyRole{EqualsNoCase(name, wanted) ? kind : Kind::Ordinary, 0};
    };
    switch (parent.kind) {
        case Kind::Machine:
            return when(u"SOFTWARE", Kind::Software);
        case Kind::Software:
            if (parent.rule == 0 && EqualsNoCase(name, u"Wow6432Node")) return {Kind::SoftwareWow, 0};
            if (parent.rule == 0 && EqualsNoCase(name, u"Classes")) return {Kind::Classes, 0};
            return RoleBelowSoftware(parent, name);
        case Kind::SoftwareWow:
            return RoleBelowSoftware(parent, name);
        case Kind::Users:
            return {Kind::User, 0};
        case Kind::User:
            return when(u"Software", Kind::UserSoftware);
        case Kind::UserSoftware:
            return when(u"Classes", Kind::Classes);
        case Kind::Classes:
            return when(u"Wow6432Node", Kind::ClassesWow);
        case Kind::ClassesWow:
        case Kind::Shared:
        case Kind::Ordinary:
            break;
    }
    return {};
}

std::uint8_t FirstRuleBelow(std::uint8_t rule) noexcept { return Rules().At(rule).firstChild; }

std::uint8_t NextRule(std::uint8_t rule) noexcept { return Rules().At(rule).next; }

std::u16string_view RuleName(std::uint8_t rule) noexcept { return Rules().At(rule).name; }

bool IsRedirectedClassesKey(std::u16string_view name) noexcept {
    return std::any_of(std::begin(kRedirectedClassesKeys), std::end(kRedirectedClassesKeys),
                       [name](std::u16string_view key) { return EqualsNoCase(key, name); });
}

}  // namespace roundup
