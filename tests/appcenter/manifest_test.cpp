// The reader of package manifests, and what is taken from them.
#include "appcenter/enumappx/manifest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "appcenter/enumappx/manifesttext.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using namespace std::string_literals;

std::string Narrow(std::u16string_view text) { return ToUtf8(text); }

// The tree on one line: name[attribute=value ...](text or children); comments as "!text".
std::string Shape(const ManifestNode& node) {
    std::string shape;
    for (const ManifestNode* child : node.children) {
        if (!shape.empty()) shape += ' ';
        shape += (child->kind == ManifestNodeKind::Comment ? "!" : "") + Narrow(child->name);
        for (const ManifestAttribute& each : child->attributes) {
            shape += "[" + Narrow(each.name) + "=" + Narrow(each.value) + "]";
        }
        const std::string inner = child->HasChildren() ? Shape(*child) : Narrow(child->text);
        if (!inner.empty()) shape += "(" + inner + ")";
    }
    return shape;
}

TEST(ManifestDocument, Tags_MakeTheTree) {
    const struct {
        const char16_t* text;
        const char* shape;  // null: does not parse
    } cases[] = {
        {u"<?xml version=\"1.0\"?><a><b>text</b><c x=\"1\" y='2' z=\"3\"/></a>", "a(b(text) c[x=1][y=3])"},
        {u"<a><!--<b>--><c/></a>", "a(!<b> c)"},
        {u"<!DOCTYPE x>", "!CTYPE"},
        {u"<a\n\tx=\"1\"\r\n\ty=\"&amp;\"></b>", "a[x=1][y=&amp;]"},
        {u"<a x=\"open></a>", "a"},
        {u"<a/b=\"1\"/>", "a"},
        {u"<a><b/>tail</a>", "a(b)"},
        {u"<a> kept </a>", "a( kept )"},
        {u"<a><b></a>", nullptr},
        {u"</a>", nullptr},
        {u"<a/></a>", nullptr},
        {u"<!x>", nullptr},
        {u"<!-->later--></a>", nullptr},
        {u"<a></a><>ignored behind an empty tag<b>", "a"},
    };
    for (const auto& each : cases) {
        ManifestDocument document;
        const bool parsed = document.Parse(each.text);
        ASSERT_EQ(parsed, each.shape != nullptr) << Narrow(each.text);
        if (parsed) {
            EXPECT_EQ(Shape(document), each.shape) << Narrow(each.text);
        }
    }
}

TEST(ManifestDocument, DeepAndLongInput_EndsWithoutARecursion) {
    std::u16string deep;
    for (int i = 0; i < 100'000; ++i) deep += u"<a>";
    for (int i = 0; i < 100'000; ++i) deep += u"</a>";
    ManifestDocument document;
    EXPECT_TRUE(document.Parse(deep));
    EXPECT_FALSE(document.Parse(deep.substr(0, deep.size() - 1)));
    EXPECT_FALSE(document.HasChildren());
    EXPECT_FALSE(document.Parse(u"<" + std::u16string(3'000'000, u'x')) && document.HasChildren());
}

TEST(DecodeManifest, EncodingIsToldByTheMark) {
    const std::u16string wanted = u"<a\u00E4\u8A9E/>";
    const struct {
        std::string bytes;
        bool decodes;
        std::u16string_view text;
    } cases[] = {
        {"<a\xC3\xA4\xE8\xAA\x9E/>", true, wanted},
        {"\xEF\xBB\xBF<a\xC3\xA4\xE8\xAA\x9E/>", true, wanted},
        {"\xFF\xFE<\0a\0\xE4\0\x9E\x8A/\0>\0"s, true, wanted},
        {"\xFE\xFF\0<\0a\0\xE4\x8A\x9E\0/\0>"s, true, wanted},
        {"<a\xE4/>", false, {}},
        {"\xEF\xBB\xBF<a\xE4/>", true, u"<a"},
        {"<a/>\xF0\x9F\xA6\xA6<b/>", true, u"<a/>"},
        {"\xFF\xFE<"s, true, {}},
    };
    for (const auto& each : cases) {
        std::u16string text;
        const auto bytes = std::as_bytes(std::span(each.bytes));
        EXPECT_EQ(DecodeManifest(bytes, text), each.decodes) << each.bytes;
        if (each.decodes) {
            EXPECT_EQ(text, each.text) << each.bytes;
        }
        for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
            if (DecodeManifest(bytes.first(cut), text)) ManifestDocument().Parse(text);
        }
    }
}

TEST(ManifestDocument, RealManifests_TellTheirIdentity) {
    const std::filesystem::path folder = std::filesystem::path(ROUNDUP_SHARED_DATA) / "manifests";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no real manifests here";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        std::u16string text;
        ManifestDocument document;
        ASSERT_TRUE(DecodeManifest(std::as_bytes(std::span(bytes)), text) && document.Parse(text)) << entry.path();
        const ManifestNode* const package = document.FindChild(u"Package");
        ASSERT_NE(package, nullptr) << entry.path();
        const ManifestNode* const identity = package->FindChild(u"Identity");
        ASSERT_NE(identity, nullptr) << entry.path();
        for (const char16_t* name : {u"Name", u"Version", u"Publisher"}) {
            EXPECT_NE(identity->FindAttribute(name), nullptr) << entry.path();
        }
        EXPECT_NE(package->FindChild(u"Applications"), nullptr) << entry.path();
    }
}

}  // namespace
}  // namespace roundup
