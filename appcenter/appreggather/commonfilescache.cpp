#include "appcenter/appreggather/commonfilescache.h"

#include <algorithm>

#include "appcenter/appreggather/folderscan.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "utility/boundary.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

constexpr std::u16string_view kSkipped[] = {u"System",     u"Services", u"WMI", u"WF", u"Web Server Extensions",
                                            u"Web Folders"};
constexpr std::u16string_view kSkippedOfMaker[] = {u"System", u"Services"};
constexpr FolderScanRules kRules = {kSkipped, u"microsoft shared", kSkippedOfMaker, true};

constexpr std::size_t kLongestToBeEqual = 2;  // characters

}  // namespace

CCommonFilesCache::CCommonFilesCache() {
    for (const Csidl folder : {Csidl::ProgramFilesCommon, Csidl::ProgramFilesCommonX86}) {
        AtBoundary([&] { ScanFolder(GetSpecialFolder(folder), kRules, m_entries); }, [] {});
    }
    m_entries.PutInOrder();
}

void CCommonFilesCache::FindCommonFolders(const std::vector<NameToken>& tokens, RegGatherResults& results) const {
    const WordIndex& words = m_entries.Words(results.bMicrosoft);
    std::vector<std::uint32_t> first(m_entries.All().size(), WordIndex::kNone);  // of each entry
    for (const NameToken& token : tokens) {
        words.ForEachAlike(token.pwszText, [&](std::uint32_t place, std::size_t length) {
            const WordIndex::Place& at = words.At(place);
            if (length <= kLongestToBeEqual && at.word.size() != token.dwLength) return;
            first[at.entry] = std::min(first[at.entry], place);
        });
    }
    for (const std::uint32_t place : first) {
        if (place != WordIndex::kNone) results.CommonFolderNames.Add(words.At(place).word);
    }
}

}  // namespace roundup
