#include "appcenter/appadapterconfig/rulefile.h"

#include <utility>

#include "appcenter/appadapterconfig/ruletext.h"

namespace roundup {
namespace {

constexpr RuleWord<RuleKeyword> kKeywords[] = {
    {u"REG:", RuleKeyword::Reg},
    {u"DIR:", RuleKeyword::Dir},
    {u"FILE:", RuleKeyword::File},
    {u"REGDIR:", RuleKeyword::RegDir},
    {u"REGX:", RuleKeyword::RegX},
    {u"ACTION:", RuleKeyword::Action},
    {u"HIDEAPPNAME:", RuleKeyword::HideAppName},
    {u"HIDEAPPKEY:", RuleKeyword::HideAppKey},
    {u"SUBAPPNAME:", RuleKeyword::SubAppName},
    {u"SUBAPPKEY:", RuleKeyword::SubAppKey},
    {u"APPENDPROC:", RuleKeyword::AppendProc},
};

}  // namespace

RuleFile::RuleFile(OwnedString text) : m_text(std::move(text)) {
    RuleTextLines lines(m_text);
    for (std::u16string_view line; lines.Next(line);) {
        const RuleWord<RuleKeyword>* word = TakeWord(line, kKeywords);
        if (word != nullptr) m_lines.push_back({word->value, line});
    }
}

}  // namespace roundup
