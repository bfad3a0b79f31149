// Link files on a machine that is not live.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>

#include "platform/recorded/links/linkfile.h"
#include "tests/support/linkwriter.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class LinksTest : public MachineTest {
  protected:
    ShellLink Read(const LinkWriter& link) {
        builder.File(u"C:\\x.lnk", link.Write());
        ShellLink read;
        EXPECT_TRUE(Start().Shell().ReadLink(u"C:\\x.lnk", read));
        return read;
    }
};

TEST_F(LinksTest, TargetOfEachForm_IsTheFirstThatExists) {
    builder.File(u"C:\\List\\\u00E4 \u4E2D.exe").File(u"C:\\Local\\a.exe").File(u"C:\\Windows\\env.exe");
    const struct {
        LinkWriter link;
        std::u16string_view target;
    } cases[] = {
        {{.idListPath = u"C:\\List\\\u00E4 \u4E2D.exe", .localPath = "C:\\Local\\a.exe"},
         u"C:\\List\\\u00E4 \u4E2D.exe"},
        {{.idListPath = u"C:\\List\\gone.exe", .localPath = "C:\\Local\\", .suffix = "a.exe"}, u"C:\\Local\\a.exe"},
        {{.idListPath = u"C:\\List\\gone.exe", .localPath = "C:\\Local\\a.exe", .moreFlags = 0x100},
         u"C:\\List\\gone.exe"},
        {{.localPath = "C:\\L\xE4.exe"}, u"C:\\L\u00E4.exe"},
        {{.localPath = "C:\\?.exe", .wideLocalPath = u"C:\\\u4E2D.exe"}, u"C:\\\u4E2D.exe"},
        {{.share = "\\\\HOST\\Share", .suffix = "a\\b.exe"}, u"\\\\HOST\\Share\\a\\b.exe"},
        {{.localPath = "C:\\gone.exe", .environmentPath = u"%windir%\\env.exe"}, u"C:\\Windows\\env.exe"},
        {{.localPath = "C:\\Local\\a.exe", .environmentPath = u"%windir%\\env.exe", .moreFlags = 0x2000000},
         u"C:\\Windows\\env.exe"},
        {{.description = u"opens nothing"}, u""},
    };
    for (const auto& [link, target] : cases) EXPECT_EQ(Read(link).path, target);
    builder.Short(u"C:\\Local\\a.exe", u"C:\\Local\\A~1.EXE");
    EXPECT_EQ(Read({.localPath = "C:\\Local\\a.exe"}).path, u"C:\\Local\\A~1.EXE");
    EXPECT_EQ(Read({.iconPath = u"plain.ico", .environmentIcon = u"%windir%\\env.exe"}).iconPath,
              u"C:\\Windows\\env.exe");
    EXPECT_EQ(Read({.description = u"\u00E4", .iconPath = u"one.ico", .unicode = false}).iconPath, u"one.ico");
}

TEST_F(LinksTest, AdvertisedLink_TellsProductFeatureAndComponent) {
    constexpr std::u16string_view kProduct = u"{12345678-9ABC-DEF0-1122-334455667788}";
    const std::u16string whole = LinkWriter::Descriptor(kProduct, u"Main", kProduct);
    const struct {
        std::u16string descriptor;
        bool advertised;
        std::u16string_view feature, component;
    } cases[] = {
        {whole, true, u"Main", kProduct},
        {LinkWriter::Descriptor(kProduct, u"", kProduct), true, u"", kProduct},
        {LinkWriter::Descriptor(kProduct, u"Only", u""), true, u"Only", u""},
        {whole.substr(0, 19), false, u"", u""},
        {whole.substr(0, 24), false, u"", u""},
        {whole.substr(0, whole.size() - 1), false, u"", u""},
        {u"~~~~~" + whole.substr(5), false, u"", u""},  // above 32 bits
        {u"\u4E2D" + whole.substr(1), false, u"", u""},
        {u"", false, u"", u""},
    };
    for (const auto& each : cases) {
        builder.File(u"C:\\x.lnk", LinkWriter{.descriptor = each.descriptor}.Write());
        char16_t product[39] = {}, feature[39] = {}, component[39] = {};
        EXPECT_EQ(Start().Installer().GetShortcutTarget(u"C:\\x.lnk", product, feature, component),
                  each.advertised ? kErrorSuccess : kErrorFunctionFailed);
        EXPECT_EQ(std::u16string_view(product), each.advertised ? kProduct : u"");
        EXPECT_EQ(std::u16string_view(feature), each.feature);
        EXPECT_EQ(std::u16string_view(component), each.component);
    }
}

// Every cut, and every 32-bit field made huge: what is read must lie within the file, whatever it says.
TEST_F(LinksTest, DamagedLink_IsNoneOrHasLessInIt) {
    const LinkWriter link{.idListPath = u"C:\\List\\a.exe",
                          .localPath = "C:\\a.exe",
                          .wideLocalPath = u"C:\\a.exe",
                          .share = "\\\\HOST\\s",
                          .suffix = "b",
                          .description = u"d",
                          .environmentPath = u"%x%"};
    const std::string whole = link.Write();
    std::size_t read = 0;
    const auto parse = [&](const std::string& bytes) {
        LinkFile file;
        const bool good = ParseLinkFile(ByteView(std::as_bytes(std::span(bytes))), file);
        read += good ? 1 : 0;
        return good;
    };
    for (std::size_t size = 0; size < whole.size(); ++size) parse(whole.substr(0, size));
    // A link may end anywhere behind its texts: in the block, and in the zeros that end the list.
    EXPECT_EQ(read, 4U + 8 + 260 + 520);
    for (std::size_t at = 76; at + 4 <= whole.size(); ++at) {
        std::string damaged = whole;
        for (const std::uint32_t value : {0xFFFFFFFFU, 0xFFFFU, 0U, 1U}) {
            std::memcpy(damaged.data() + at, &value, 4);
            parse(damaged);
        }
    }
    std::string other = whole;
    other[4] = 2;
    EXPECT_FALSE(parse(other));
}

TEST_F(LinksTest, LinksOfRealMachines_AreReadWhole) {
    const std::filesystem::path folder = std::string(ROUNDUP_SHARED_DATA) + "/links";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no links in " ROUNDUP_SHARED_DATA;
    std::ifstream file(folder / "example.lnk", std::ios::binary);
    builder.File(u"C:\\x.lnk", std::string(std::istreambuf_iterator<char>(file), {}));
    ShellLink link;
    ASSERT_TRUE(Start().Shell().ReadLink(u"C:\\x.lnk", link));
    EXPECT_EQ(link.path, u"C:\\Windows\\system32\\migwiz\\migwiz.exe");
    EXPECT_EQ(link.workingDirectory, u"%windir%\\system32\\migwiz");
    EXPECT_EQ(link.description, u"@%windir%\\system32\\migwiz\\wet.dll,-590");
    EXPECT_EQ(link.iconPath, u"%windir%\\system32\\migwiz\\migwiz.exe");
}

}  // namespace
}  // namespace roundup
