// Rule files for test machines, and rule sets as text.
#pragma once

#include <sstream>
#include <string>
#include <string_view>

#include "appcenter/appadapterconfig/appruleset.h"
#include "tests/support/machinetest.h"
#include "utility/utf.h"

namespace roundup {

// The characters as bytes, little-endian.
inline std::string WideBytes(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

class RulesTest : public MachineTest {
  protected:
    // A file of the Config folder with its mark.
    void Config(std::u16string_view name, std::u16string_view text) {
        builder.HostFile(std::u16string(u"Config\\").append(name), WideBytes(std::u16string(u"\uFEFF").append(text)));
    }
    void ConfigBytes(std::u16string_view name, std::string_view bytes) {
        builder.HostFile(std::u16string(u"Config\\").append(name), bytes);
    }
};

// Everything in the set, one item a word group: "+dir C:\x; -file C:\y; hide Tool", included before excluded.
inline std::string Describe(const CAppRuleSet& rules) {
    std::ostringstream text;
    const auto separator = [&] { return text.tellp() == std::streampos(0) ? "" : "; "; };
    const auto regs = [&](const char* name, const RuleRegItems& items) {
        for (const RuleRegItem& item : items) {
            text << separator() << name << ' ' << (item.root & 0xF) << (item.bRedirection != 0 ? "R " : " ")
                 << ToUtf8(item.path);
        }
    };
    const auto texts = [&](const char* name, const RuleTexts& list) {
        for (const OwnedString& item : list) text << separator() << name << ' ' << ToUtf8(item);
    };
    regs("+reg", rules.IncludedRegs);
    texts("+file", rules.IncludedFiles);
    texts("+dir", rules.IncludedDirectories);
    regs("-reg", rules.ExcludedRegs);
    texts("-file", rules.ExcludedFiles);
    texts("-dir", rules.ExcludedDirectories);
    texts("action", rules.Actions);
    texts("hide", rules.HideNames);
    texts("hidekey", rules.HideKeys);
    texts("sub", rules.SubAppNames);
    texts("subkey", rules.SubAppKeys);
    if (rules.bAppendProc) text << separator() << "proc";
    return text.str();
}

}  // namespace roundup
