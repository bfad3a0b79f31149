#include "appcenter/appreggather/datafoldercache.h"

#include <algorithm>
#include <utility>

#include "appcenter/appreggather/folderscan.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "utility/boundary.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

constexpr Csidl kFolders[] = {Csidl::AppData,        Csidl::CommonAppData, Csidl::LocalAppData, Csidl::MyPictures,
                              Csidl::Personal,       Csidl::MyMusic,       Csidl::MyVideo,      Csidl::CommonDocuments,
                              Csidl::CommonPictures, Csidl::CommonMusic,   Csidl::CommonVideo};
constexpr std::u16string_view kSkipped[] = {u"Microsoft Help"};
constexpr std::u16string_view kSkippedOfMaker[] = {u"Windows", u"Windows NT", u"Windows Defender"};
constexpr FolderScanRules kRules = {kSkipped, u"Microsoft", kSkippedOfMaker, false};

}  // namespace

CDataFolderCache::CDataFolderCache() {
    for (const Csidl folder : kFolders) {
        AtBoundary([&] { ScanFolder(GetSpecialFolder(folder), kRules, m_entries); }, [] {});
    }
    m_entries.PutInOrder();
}

void CDataFolderCache::FindDataFolders(const std::vector<NameToken>& tokens, RegGatherResults& results) const {
    const WordIndex& words = m_entries.Words(results.bMicrosoft);
    // Entry, then place: of two spellings of one name, the first entry's counts.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> hits;
    for (const NameToken& token : tokens) {
        words.ForEachEqual(token.pwszText,
                           [&](std::uint32_t place) { hits.emplace_back(words.At(place).entry, place); });
    }
    std::ranges::sort(hits);
    for (const auto& [number, place] : hits) {
        const ScanEntry& entry = m_entries.All()[number];
        results.DataFolderNames.Add(entry.dwLevel != 0 ? entry.pwszName.View() : words.At(place).word);
    }
}

}  // namespace roundup
