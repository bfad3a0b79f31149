// A small reader of the XML that package manifests are written in, and of nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace roundup {

// Texts are zero-terminated, never null, and belong to the document, as the nodes do.
struct ManifestAttribute {
    const char16_t* name = u"";
    const char16_t* value = u"";  // as it stands between the quotes, entities included
};

enum class ManifestNodeKind : std::uint32_t { Element = 1, Comment = 2 };

class ManifestNode {
  public:
    // Where a walk over the children stands.
    using Iterator = std::size_t;

    bool HasChildren() const noexcept { return !children.empty(); }
    // Names compare exactly. Null when there is none.
    const ManifestNode* FindChild(const char16_t* wanted) const;
    const ManifestNode* FindFirstChild(const char16_t* wanted, Iterator& at) const;
    const ManifestNode* FindNextChild(const char16_t* wanted, Iterator& at) const;
    // Of any name; comments are children.
    const ManifestNode* FirstChild(Iterator& at) const;
    const ManifestAttribute* FindAttribute(const char16_t* wanted) const;

    const char16_t* name = u"";  // of an element with its prefix; of a comment what it says
    const char16_t* text = u"";  // of an element without children, what stands between its tags
    ManifestNodeKind kind = ManifestNodeKind::Element;
    std::vector<ManifestAttribute> attributes;
    ManifestNode* parent = nullptr;
    std::vector<ManifestNode*> children;
};

// The document is the node above the topmost elements. One thread at a time.
class ManifestDocument : public ManifestNode {
  public:
    ManifestDocument() = default;
    ManifestDocument(const ManifestDocument&) = delete;
    ManifestDocument& operator=(const ManifestDocument&) = delete;

    // Reads and parses the file. False, and the document empty, when it cannot be read, has more than 8 MiB, is in no
    // known encoding, or leaves an element open or closes one too many.
    bool Load(const char16_t* path);
    // The same with the text of a manifest.
    bool Parse(std::u16string content);

  private:
    class Parser;

    void Clear();

    std::u16string m_buffer;
    // Every node of the tree: nothing walks down the tree to free it, however deep it is.
    std::deque<ManifestNode> m_nodes;
};

}  // namespace roundup
