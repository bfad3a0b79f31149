#include "appcenter/appadapterconfig/configlisting.h"

#include <algorithm>
#include <utility>

#include "utility/fileinfo.h"
#include "utility/filesearch.h"

namespace roundup {
namespace {

// Separators lead out of the folder, a colon into a stream of a file, and "~" may stand in a short name.
bool MayLieElsewhere(std::u16string_view name) noexcept {
    return std::ranges::any_of(name, [](char16_t c) { return c == u'\\' || c == u'/' || c == u':' || c == u'~'; });
}

}  // namespace

ConfigListing::ConfigListing(std::u16string folder) : m_folder(std::move(folder)) {
    if (m_folder.empty()) return;
    const FsRedirectGuard guard;
    FileSearch search(PathOf(u"*").c_str());
    while (search.Next()) {
        m_names.emplace(search.Name());
        m_stems.emplace(search.Name().substr(0, search.Name().rfind(u'.')));
    }
}

bool ConfigListing::MayHave(std::u16string_view nameWithoutExtension) const {
    if (m_folder.empty()) return false;
    return (!m_stems.empty() && m_stems.contains(nameWithoutExtension)) || MayLieElsewhere(nameWithoutExtension);
}

bool ConfigListing::Has(std::u16string_view name) const {
    if (m_names.contains(name)) return true;
    return !m_folder.empty() && MayLieElsewhere(name) && PathExists(PathOf(name).c_str(), true);
}

std::u16string ConfigListing::PathOf(std::u16string_view name) const {
    return std::u16string(m_folder).append(u"\\").append(name);
}

}  // namespace roundup
