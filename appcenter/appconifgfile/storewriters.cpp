#include "appcenter/appconifgfile/storewriters.h"

#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appconifgfile/appconfigstore.h"
#include "appcenter/appfile/appfile.h"
#include "appcenter/appreggather/appreggather.h"
#include "utility/formattext.h"
#include "utility/iremoverepeatreg.h"
#include "utility/log.h"
#include "utility/reg.h"
#include "utility/shortcutscanner.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

// Ends the records of this unit, where those of the package analyzer end in 64 bits.
constexpr std::uint32_t kEndMark = 0xFFFFFFFFU;

// A registry has 512 levels of keys at the most.
constexpr std::size_t kDeepestKey = 512;

struct RecordFlags {
    static constexpr std::uint32_t kView64 = 0x1;
    static constexpr std::uint32_t kRedirected = 0x2;
};

// The numbers of predefined roots are negative 32-bit ones in 64 bits.
constexpr KeyHandle RootHandle(std::uint32_t root) noexcept {
    return static_cast<KeyHandle>(static_cast<std::int64_t>(static_cast<std::int32_t>(root)));
}

class RegistryWriter {
  public:
    RegistryWriter(CAppConfigStore& store, IRemoveRepeatReg* filter) : m_store(store), m_filter(filter) {}

    ResultCode Item(const RuleRegItem& item) {
        const bool isValue = item.path.View().find(u"\\\\") != std::u16string_view::npos;
        for (const bool view64 : {false, true}) {
            if (view64 && !Is64BitOS()) break;
            const ResultCode rc = isValue ? Value(item, view64) : Key(item, view64);
            if (Failed(rc)) return Pass(rc);
        }
        return kSuccess;
    }

  private:
    struct Level {
        std::size_t length;  // of the path
        std::unique_ptr<CWFYRegKey> key;
    };

    bool IsSeen(const RuleRegItem& item, const char16_t* path, bool view64) const {
        return m_filter != nullptr && m_filter->IsItemSeen(item.root, path, view64, item.bRedirection != 0) != 0;
    }

    ResultCode Value(const RuleRegItem& item, bool view64) {
        if (IsSeen(item, item.path.Text(), view64)) return kSuccess;
        const std::u16string_view text = item.path;
        const std::size_t split = text.find(u"\\\\");
        const std::u16string key(text.substr(0, split));
        const std::u16string name(text.substr(split + 2));
        CWFYRegKey open;
        if (Failed(open.Open(RootHandle(item.root), key.c_str(), view64, false))) return kSuccess;
        RegValueBlock value;
        if (Failed(open.QueryValue(name.c_str(), value))) return kSuccess;
        return Write(item, text, name, value.Type(), value.Data(), view64);
    }

    // Depth first, parents before children, without recursion.
    ResultCode Key(const RuleRegItem& item, bool view64) {
        m_path.assign(item.path.View());
        m_levels.clear();
        if (auto rc = Enter(item, view64); Failed(rc)) return Pass(rc);
        OwnedString name;
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            m_path.resize(level.length);
            const ResultCode rc = level.key->EnumKey(name);
            if (Small(rc) == SmallCode::NoMoreItems && Failed(rc)) {
                m_levels.pop_back();
                continue;
            }
            if (Failed(rc)) continue;
            m_path.append(u"\\").append(name.View());
            if (auto entered = Enter(item, view64); Failed(entered)) return Pass(entered);
        }
        return kSuccess;
    }

    // The key at the path with its values, unless it was seen or cannot be opened; it becomes the deepest level.
    ResultCode Enter(const RuleRegItem& item, bool view64) {
        if (IsSeen(item, m_path.c_str(), view64)) return kSuccess;
        if (m_levels.size() == kDeepestKey) {
            TraceLine(u"registry key too deep: %s", m_path.c_str());
            return kSuccess;
        }
        auto key = std::make_unique<CWFYRegKey>();
        if (Failed(key->Open(RootHandle(item.root), m_path.c_str(), view64, false))) return kSuccess;
        if (auto rc = Write(item, m_path, {}, 0, {}, view64); Failed(rc)) return Pass(rc);
        RegValueView value;
        for (;;) {
            const ResultCode rc = key->EnumValueView(value);
            if (Failed(rc) && Small(rc) == SmallCode::NoMoreItems) break;
            if (Failed(rc)) continue;
            const ResultCode written = Write(item, m_path, value.Name(), value.Type(), value.Data(), view64);
            if (Failed(written)) return Pass(written);
        }
        m_levels.push_back({m_path.size(), std::move(key)});
        return kSuccess;
    }

    ResultCode Write(const RuleRegItem& item, std::u16string_view text, std::u16string_view name, std::uint32_t type,
                     std::span<const std::byte> data, bool view64) {
        m_record.Clear();
        m_record.Qword(RootHandle(item.root));
        m_record.String(text);
        m_record.String(name);
        m_record.Dword(type);
        m_record.Dword(static_cast<std::uint32_t>(data.size()));
        m_record.Bytes(data.data(), data.size());
        m_record.Dword((view64 ? RecordFlags::kView64 : 0) | (item.bRedirection != 0 ? RecordFlags::kRedirected : 0));
        return m_store.Write(m_record);
    }

    CAppConfigStore& m_store;
    IRemoveRepeatReg* const m_filter;
    std::u16string m_path;
    std::vector<Level> m_levels;
    StoreRecord m_record;
};

template <class Items>
void WriteItems(RegistryWriter& writer, const Items& items) {
    for (const RuleRegItem& item : items) {
        if (item.path.IsEmpty()) break;
        if (auto rc = writer.Item(item); Failed(rc)) {
            Skip(rc);
            break;
        }
    }
}

ResultCode WriteEnd(CAppConfigStore& store) { return store.Write(&kEndMark, sizeof kEndMark); }

ResultCode WriteUninstallValues(std::uint32_t root, std::u16string_view key, bool view64, CAppConfigStore& store) {
    constexpr std::u16string_view kUninstall = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
    FixedText<520> path(kUninstall);
    if (!path.Append(key)) return Fail(SmallCode::ObjectAllocation, key.size());
    CWFYRegKey open;
    if (auto rc = open.Open(RootHandle(root), path.Text(), view64, false); Failed(rc)) return PassQuiet(rc);
    StoreRecord record;
    RegValueView value;
    for (;;) {
        const ResultCode rc = open.EnumValueView(value);
        if (Failed(rc) && Small(rc) == SmallCode::NoMoreItems) return kSuccess;
        if (Failed(rc)) continue;
        record.Clear();
        record.Dword(root);
        record.String(key);
        record.String(value.Name());
        record.Dword(value.Type());
        record.Dword(static_cast<std::uint32_t>(value.Data().size()));
        record.Bytes(value.Data().data(), value.Data().size());
        record.Dword(view64 ? 1 : 0);
        if (auto written = store.Write(record); Failed(written)) return Pass(written);
    }
}

}  // namespace

void WriteRegistryRecord(const CAppRuleSet& ruleSet, const CAppRegGather& gather, CAppConfigStore& store,
                         IRemoveRepeatReg* filter) {
    if (ruleSet.IncludedRegs.empty() && gather.RegItems.empty()) return;
    store.BeginRecord(ItemType::kRegistry);
    RegistryWriter writer(store, filter);
    WriteItems(writer, ruleSet.IncludedRegs);
    WriteItems(writer, gather.RegItems);
    Ignore(WriteEnd(store), u"logged where it failed");
    store.EndRecord();
}

ResultCode WriteShortcutRecord(const std::vector<std::unique_ptr<CWFYFile>>& files, CAppConfigStore& store) {
    std::vector<const ShortcutRecord*> shortcuts;
    const ShortcutScanner& scanner = ShortcutScanner::Instance();
    for (const std::unique_ptr<CWFYFile>& file : files) scanner.FindByTarget(file->pwszPath, shortcuts);
    if (shortcuts.empty()) return kSuccess;
    store.BeginRecord(ItemType::kShortcut);
    StoreRecord record;
    for (const ShortcutRecord* shortcut : shortcuts) {
        record.Clear();
        for (const OwnedString* text : {&shortcut->linkFolder, &shortcut->linkBaseName, &shortcut->targetPath,
                                        &shortcut->arguments, &shortcut->workingDirectory, &shortcut->iconPath}) {
            record.String(*text);
        }
        record.Dword(static_cast<std::uint32_t>(shortcut->iconIndex));
        if (auto rc = store.Write(record); Failed(rc)) return Pass(rc);
    }
    if (auto rc = WriteEnd(store); Failed(rc)) return Pass(rc);
    store.EndRecord();
    return kSuccess;
}

void WriteUninstallRecord(std::u16string_view key, CAppConfigStore& store) {
    store.BeginRecord(ItemType::kUninstallRegistry);
    for (const bool view64 : {false, true}) {
        if (view64 && !Is64BitOS()) break;
        for (const std::uint32_t root : {RuleRoot::kLocalMachine, RuleRoot::kCurrentUser}) {
            Ignore(WriteUninstallValues(root, key, view64, store), u"the next root follows");
        }
    }
    Ignore(WriteEnd(store), u"logged where it failed");
    store.EndRecord();
}

}  // namespace roundup
