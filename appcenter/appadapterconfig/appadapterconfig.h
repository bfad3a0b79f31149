// An adapter file (.INCEX) as it was parsed: the rules of a family of applications, with placeholders in their paths.
//
// The format is described in docs/rules.md.
#pragma once

#include <string_view>
#include <vector>

#include "appcenter/appadapterconfig/ruleitems.h"
#include "utility/ownedstring.h"
#include "utility/result.h"
#include "utility/stringcontainers.h"

namespace roundup {

// One member of the family.
struct AdapterProgram {
    OwnedString pwszName;
    CStringSet Dirs;
    CStringMap Versions;  // from an application's key to the version word that stands in its paths
};

// Parsed once, then read-only; whoever shares one guards the parse. Paths keep their token and placeholder as text.
class CAppAdapterConfig {
  public:
    // Reads the file. bParsed is set when no keyword failed and the file has a VERSION and a program or a component
    // directory; otherwise the contents are empty afterwards. GeneralFailure, logged, for a file that cannot be read,
    // an unknown keyword, a keyword out of its place and want of memory; a file that merely lacks something is no
    // failure. location is what "[App]" in ACTION lines becomes.
    ResultCode Parse(const char16_t* path, std::u16string_view location);
    // The same for the text of a file.
    ResultCode ParseText(std::u16string_view text, std::u16string_view location);

    bool bParsed = false;
    OwnedString pwszVersion;  // the placeholder word
    std::vector<AdapterProgram> Programs;
    CStringSet ComponentDirs;
    CStringSet ComponentDirsEx;
    std::vector<RuleRegItem> ComponentRegs;
    CStringSet ComponentDeleteFiles;
    CStringSet ComponentFiles;
    CStringSet HideAppNames;
    CStringSet HideAppKeys;
    CStringSet SubAppNames;
    CStringSet SubAppKeys;
    CStringSet Actions;
    bool bAppendProc = false;
};

}  // namespace roundup
