#include "host/diff.h"

#include <array>
#include <map>
#include <nlohmann/json.hpp>

#include "host/complain.h"
#include "host/diffsource.h"
#include "host/textout.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

using Json = nlohmann::ordered_json;

std::u16string Folded(const std::string& text) {
    std::u16string folded = FromUtf8(text);
    for (char16_t& unit : folded) unit = ToUpper(unit);
    return folded;
}

std::u16string IdentityOf(const DiffEntry& entry) { return (entry.package ? u"p" : u"a") + Folded(entry.identity); }
std::u16string TitleOf(const DiffEntry& entry) {
    return (entry.package ? u"p" : u"a") + Folded(entry.name) + u'\n' + Folded(entry.publisher);
}

struct ComparedText {
    const char* name;
    std::string DiffEntry::*member;
};
constexpr std::array<ComparedText, 6> kCompared = {{{"key", &DiffEntry::key},
                                                    {"name", &DiffEntry::name},
                                                    {"publisher", &DiffEntry::publisher},
                                                    {"version", &DiffEntry::version},
                                                    {"installDate", &DiffEntry::installDate},
                                                    {"installLocation", &DiffEntry::installLocation}}};

std::vector<std::string> DifferingFields(const DiffEntry& from, const DiffEntry& to) {
    std::vector<std::string> fields;
    for (const ComparedText& one : kCompared) {
        if (from.*one.member != to.*one.member) fields.emplace_back(one.name);
    }
    if (from.size != to.size) fields.emplace_back("size");
    return fields;
}

// Finds for each entry of one list the first free one of the other that a text of theirs makes equal.
class Pairing {
  public:
    Pairing(const std::vector<DiffEntry>& from, const std::vector<DiffEntry>& to)
        : m_from(from), m_to(to), m_partners(from.size(), kNone), m_taken(to.size()) {}

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    void PairBy(std::u16string (*text)(const DiffEntry&)) {
        std::multimap<std::u16string, std::size_t> free;  // equal texts stay in the order of the list
        for (std::size_t i = 0; i < m_to.size(); ++i) {
            if (!m_taken[i]) free.emplace(text(m_to[i]), i);
        }
        for (std::size_t i = 0; i < m_from.size(); ++i) {
            if (m_partners[i] != kNone) continue;
            const auto found = free.find(text(m_from[i]));
            if (found == free.end()) continue;
            m_partners[i] = found->second;
            m_taken[found->second] = true;
            free.erase(found);
        }
    }
    std::size_t PartnerOf(std::size_t from) const { return m_partners[from]; }
    bool IsTaken(std::size_t to) const { return m_taken[to]; }

  private:
    const std::vector<DiffEntry>& m_from;
    const std::vector<DiffEntry>& m_to;
    std::vector<std::size_t> m_partners;
    std::vector<bool> m_taken;
};

Json EntryJson(const DiffEntry& entry) {
    Json json;
    json["kind"] = entry.package ? "package" : "application";
    for (const ComparedText& one : kCompared) json[one.name] = entry.*one.member;
    json["size"] = entry.size;
    return json;
}

bool WriteDiffJson(const CatalogueDiff& diff) {
    Json json;
    for (const char* list : {"added", "removed", "changed"}) json[list] = Json::array();
    for (const DiffEntry& entry : diff.added) json["added"].push_back(EntryJson(entry));
    for (const DiffEntry& entry : diff.removed) json["removed"].push_back(EntryJson(entry));
    for (const CatalogueDiff::Change& change : diff.changed) {
        json["changed"].push_back(
            {{"fields", change.fields}, {"from", EntryJson(change.from)}, {"to", EntryJson(change.to)}});
    }
    return WriteOut(json.dump() + "\n");
}

std::string Shown(const std::string& text) { return Printable(FromUtf8(text)); }

std::string Title(const DiffEntry& entry) {
    const std::string version = entry.version.empty() ? "" : "  " + Shown(entry.version);
    return Shown(entry.name.empty() ? entry.key : entry.name) + version;
}

std::string ChangeLine(const CatalogueDiff::Change& change) {
    std::string line = "~ " + Title(change.from);
    if (change.from.version != change.to.version) line += " -> " + Shown(change.to.version);
    std::string others;
    for (const std::string& field : change.fields) {
        if (field == "version") continue;
        others += (others.empty() ? "" : ", ") + field;
    }
    return line + (others.empty() ? "" : "  (" + others + ")") + "\n";
}

bool WriteDiffText(const CatalogueDiff& diff) {
    std::string text;
    for (const DiffEntry& entry : diff.removed) text += "- " + Title(entry) + "\n";
    for (const DiffEntry& entry : diff.added) text += "+ " + Title(entry) + "\n";
    for (const CatalogueDiff::Change& change : diff.changed) text += ChangeLine(change);
    text += std::to_string(diff.added.size()) + " added, " + std::to_string(diff.removed.size()) + " removed, " +
            std::to_string(diff.changed.size()) + " changed\n";
    return WriteOut(text);
}

}  // namespace

CatalogueDiff CompareCatalogues(const std::vector<DiffEntry>& from, const std::vector<DiffEntry>& to) {
    Pairing pairing(from, to);
    pairing.PairBy(IdentityOf);
    pairing.PairBy(TitleOf);
    CatalogueDiff diff;
    for (std::size_t i = 0; i < from.size(); ++i) {
        const std::size_t partner = pairing.PartnerOf(i);
        if (partner == Pairing::kNone) {
            diff.removed.push_back(from[i]);
        } else if (auto fields = DifferingFields(from[i], to[partner]); !fields.empty()) {
            diff.changed.push_back({from[i], to[partner], std::move(fields)});
        }
    }
    for (std::size_t i = 0; i < to.size(); ++i) {
        if (!pairing.IsTaken(i)) diff.added.push_back(to[i]);
    }
    return diff;
}

int RunDiff(const Options& options) {
    std::array<std::vector<DiffEntry>, 2> sides;
    for (std::size_t side = 0; side < sides.size(); ++side) {
        const int status = ReadDiffSource(options, options.diff[side], sides[side]);
        if (status != kExitSuccess) return status;
    }
    const CatalogueDiff diff = CompareCatalogues(sides[0], sides[1]);
    const bool written = options.format == Format::Json ? WriteDiffJson(diff) : WriteDiffText(diff);
    return written && std::fflush(stdout) == 0 ? kExitSuccess : Complain(kOutputFailed);
}

}  // namespace roundup::host
