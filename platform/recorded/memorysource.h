// A tree of files in memory.
#pragma once

#include <map>
#include <optional>

#include "platform/recorded/filesource.h"

namespace roundup {

// Filled first, then read by any thread. Names keep the case of their first mention.
class MemorySource final : public IFileSource {
  public:
    // Folders on the way come to be with it; a file that is there already gets the new content.
    void AddFile(std::u16string_view path, std::string bytes);
    void AddFolder(std::u16string_view path);

    Win32Error List(std::u16string_view folder, std::vector<SourceEntry>& entries) override;
    Win32Error GetSize(std::u16string_view file, std::uint64_t& size) override;
    Win32Error Open(std::u16string_view file, std::unique_ptr<IFileStream>& stream) override;
    Win32Error ReadLink(std::u16string_view link, LinkTarget& target) override;

  private:
    struct FoldedLess {
        using is_transparent = void;
        bool operator()(std::u16string_view a, std::u16string_view b) const noexcept;
    };
    struct Node {
        std::optional<std::string> bytes;  // absent: a folder
        std::map<std::u16string, Node, FoldedLess> entries;
    };

    Node& Make(std::u16string_view path);
    const Node* Find(std::u16string_view path) const;

    Node m_root;
};

}  // namespace roundup
