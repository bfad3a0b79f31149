#include "appcenter/appadapterconfig/folderlisting.h"

#include <algorithm>
#include <utility>

#include "platform/machine.h"
#include "utility/fileinfo.h"

namespace roundup {
namespace {

class Search {
  public:
    Search(IFileSystem& files, const std::u16string& pattern) : m_files(files) {
        m_found = files.FindFirst(pattern.c_str(), m_find, m_data) == kErrorSuccess;
        m_open = m_found;
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ~Search() {
        if (m_open) m_files.FindClose(m_find);
    }
    bool HasEntry() const noexcept { return m_found; }
    std::u16string_view Name() const noexcept { return m_data.name; }
    void Next() { m_found = m_files.FindNext(m_find, m_data) == kErrorSuccess; }

  private:
    IFileSystem& m_files;
    FindHandle m_find = kInvalidFile;
    FindData m_data;
    bool m_found = false;
    bool m_open = false;
};

// Separators lead out of the folder, a colon into a stream of a file, and "~" may stand in a short name.
bool MayLieElsewhere(std::u16string_view name) noexcept {
    return std::ranges::any_of(name, [](char16_t c) { return c == u'\\' || c == u'/' || c == u':' || c == u'~'; });
}

}  // namespace

ConfigListing::ConfigListing(std::u16string folder) : m_folder(std::move(folder)) {
    if (m_folder.empty()) return;
    const FsRedirectGuard guard;
    Search search(CurrentMachine().Files(), PathOf(u"*"));
    for (; search.HasEntry(); search.Next()) {
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
