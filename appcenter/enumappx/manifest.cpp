#include "appcenter/enumappx/manifest.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "appcenter/enumappx/manifesttext.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

constexpr std::uint32_t kLargestManifest = 8U << 20;
constexpr std::size_t kNone = std::u16string_view::npos;

// Manifests in use part attributes by line ends and tabs as well.
bool IsBlank(char16_t unit) noexcept { return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n'; }

}  // namespace

const ManifestNode* ManifestNode::FindChild(const char16_t* wanted) const {
    Iterator at = 0;
    return FindFirstChild(wanted, at);
}

const ManifestNode* ManifestNode::FindFirstChild(const char16_t* wanted, Iterator& at) const {
    at = kNone;
    return FindNextChild(wanted, at);
}

const ManifestNode* ManifestNode::FindNextChild(const char16_t* wanted, Iterator& at) const {
    for (++at; at < children.size(); ++at) {
        if (std::u16string_view(children[at]->name) == wanted) return children[at];
    }
    return nullptr;
}

const ManifestNode* ManifestNode::FirstChild(Iterator& at) const {
    at = 0;
    return children.empty() ? nullptr : children.front();
}

const ManifestAttribute* ManifestNode::FindAttribute(const char16_t* wanted) const {
    const auto found = std::ranges::find(attributes, std::u16string_view(wanted),
                                         [](const ManifestAttribute& each) { return std::u16string_view(each.name); });
    return found != attributes.end() ? &*found : nullptr;
}

// Goes from tag to tag. Names and texts stay where they stand in the buffer and are ended by zeros written over the
// character behind them, each as soon as nothing looks at that character any more.
class ManifestDocument::Parser {
  public:
    explicit Parser(ManifestDocument& document)
        : m_document(document), m_buffer(document.m_buffer), m_current(&document) {}

    bool Run() {
        for (std::size_t begin = 0; NextTag(begin);) {
            if (!ReadTag()) return false;
            begin = m_cursor;
        }
        return m_depth == 0;
    }

  private:
    // The next tag is [m_tag, m_end), between its brackets, and the cursor behind it; false when there is no more.
    bool NextTag(std::size_t from) {
        const std::size_t open = m_buffer.find(u'<', from);
        if (open == kNone) return false;
        m_tag = open + 1;
        if (m_buffer.size() - m_tag > 6 && m_buffer.compare(m_tag, 3, u"!--") == 0) {
            const std::size_t close = m_buffer.find(u"-->", m_tag);
            if (close == kNone) return false;
            m_end = close + 2;
        } else {
            m_end = m_buffer.find(u'>', m_tag);
            if (m_end == kNone || m_end == m_tag) return false;
        }
        m_cursor = m_end + 1;
        return true;
    }

    bool ReadTag() {
        switch (m_buffer[m_tag]) {
            case u'!':
                return AddComment();
            case u'/':
                return CloseElement();
            case u'?':
                return true;
            default:
                OpenElement();
                return true;
        }
    }

    bool AddComment() {
        if (m_end - m_tag < 5) return false;
        ManifestNode& comment = AddNode(ManifestNodeKind::Comment);
        comment.name = Text(m_tag + 3, m_end - 2);
        return true;
    }

    bool CloseElement() {
        if (m_depth == 0) return false;
        if (m_current->kind == ManifestNodeKind::Element && m_current->children.empty()) {
            m_current->text = Text(m_content, m_tag - 1);
        }
        m_current = m_current->parent;
        --m_depth;
        return true;
    }

    void OpenElement() {
        ManifestNode& element = AddNode(ManifestNodeKind::Element);
        const std::size_t nameEnd = EndOfName(m_tag, false);
        const bool closed = nameEnd < m_end && IsBlank(m_buffer[nameEnd]) ? ReadAttributes(element, nameEnd)
                                                                          : m_buffer[nameEnd] == u'/';
        element.name = Text(m_tag, nameEnd);
        if (closed) return;
        m_current = &element;
        m_content = m_cursor;
        ++m_depth;
    }

    // True when the tag closes itself: when the last attempt at a name ends at a "/".
    bool ReadAttributes(ManifestNode& element, std::size_t at) {
        for (;;) {
            while (at < m_end && IsBlank(m_buffer[at])) ++at;
            const std::size_t nameEnd = EndOfName(at, true);
            const char16_t behindName = m_buffer[nameEnd];
            const std::size_t open = Find(u'"', nameEnd);
            if (open == kNone) return behindName == u'/';
            const std::size_t close = Find(u'"', open + 1);
            if (close == kNone) return false;
            element.attributes.push_back({Text(at, nameEnd), Text(open + 1, close)});
            at = close + 1;
        }
    }

    // Where the name that begins there ends: inside the tag, or at its ">".
    std::size_t EndOfName(std::size_t at, bool ofAttribute) const {
        while (at < m_end && !IsBlank(m_buffer[at]) && m_buffer[at] != u'/' && !(ofAttribute && m_buffer[at] == u'=')) {
            ++at;
        }
        return at;
    }

    std::size_t Find(char16_t unit, std::size_t from) const {
        const std::size_t found = std::u16string_view(m_buffer).substr(0, m_end).find(unit, from);
        return found;
    }

    ManifestNode& AddNode(ManifestNodeKind kind) {
        ManifestNode& node = m_document.m_nodes.emplace_back();
        node.kind = kind;
        node.parent = m_current;
        m_current->children.push_back(&node);
        return node;
    }

    const char16_t* Text(std::size_t begin, std::size_t end) {
        m_buffer[end] = u'\0';
        return m_buffer.data() + begin;
    }

    ManifestDocument& m_document;
    std::u16string& m_buffer;
    ManifestNode* m_current;
    std::size_t m_depth = 0;
    std::size_t m_tag = 0;
    std::size_t m_end = 0;
    std::size_t m_cursor = 0;
    std::size_t m_content = 0;  // behind the last start tag that stayed open
};

bool ManifestDocument::Load(const char16_t* path) {
    std::vector<std::byte> bytes;
    std::u16string content;
    if (ReadWholeFile(path, kLargestManifest, bytes) && DecodeManifest(bytes, content))
        return Parse(std::move(content));
    Clear();
    return false;
}

bool ManifestDocument::Parse(std::u16string content) {
    Clear();
    m_buffer = std::move(content);
    if (Parser(*this).Run()) return true;
    Clear();
    return false;
}

void ManifestDocument::Clear() {
    children.clear();
    m_nodes.clear();
    m_buffer = std::u16string();
}

}  // namespace roundup
