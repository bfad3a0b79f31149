// What is kept on disk of the machine's components and type libraries: written once, believed, and read whatever it is.
#include <gmock/gmock.h>

#include "msianalyzer/installedcomponents.h"
#include "msianalyzer/typelibinformation.h"
#include "tests/support/machinetest.h"
#include "tests/support/productpackage.h"
#include "utility/sysinfo.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

using testing::ElementsAre;
using Names = std::vector<std::u16string_view>;

std::string Number(std::uint32_t number) { return {reinterpret_cast<const char*>(&number), sizeof number}; }
std::string Text(std::u16string text) {
    text += u'\0';
    const std::string bytes(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return Number(static_cast<std::uint32_t>(bytes.size())) + bytes;
}
std::string WithHeader(std::uint32_t magic, const std::string& rest) {
    return Number(magic) + Number(static_cast<std::uint32_t>(8 + rest.size())) + rest;
}

class Caches : public MachineTest {
  protected:
    // The file as it is now; "absent" without one.
    static std::string CacheFile(std::u16string_view name) {
        FixedText<260> folder;
        std::vector<std::byte> bytes;
        (void)GetCacheFolder(folder);
        const std::u16string path = std::u16string(folder.View()).append(u"\\").append(name);
        if (!ReadWholeFile(path.c_str(), 1 << 20, bytes)) return "absent";
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    // A machine that has nothing but that file.
    void StartWith(std::u16string_view name, const std::string& bytes) {
        builder = MachineBuilder();
        builder.HostFile(std::u16string(u"cache\\").append(name), bytes);
        Start();
    }
    static Names Components() {
        const auto components = GetInstalledComponents().Components();
        return {components.begin(), components.end()};
    }
    static std::vector<std::u16string> Referrers(bool interfaces, std::u16string_view version, bool view64) {
        CTypeLibInformation::Identifiers ids;
        (interfaces ? GetInterfacesOfTypeLib : GetClassesOfTypeLib)(ids, u"{L1}", version, view64);
        return {ids.begin(), ids.end()};
    }
};

constexpr std::u16string_view kA = u"{AAAAAAAA-0000-0000-0000-000000000001}";
constexpr std::u16string_view kB = u"{BBBBBBBB-0000-0000-0000-000000000001}";

TEST_F(Caches, Components_AreEnumeratedOnceAndBelievedFromThenOn) {
    InstallComponent(builder, kB, kB, u"C:\\b");
    InstallComponent(builder, kB, kA, u"C:\\a");
    Start();
    EXPECT_THAT(Components(), ElementsAre(kA, kB));
    EXPECT_EQ(CacheFile(u"Components.ini"), "absent");  // the folder is not made
    builder.HostFolder(u"cache");
    Start();
    EXPECT_TRUE(GetInstalledComponents().Contains(kA));
    EXPECT_FALSE(GetInstalledComponents().Contains(u"{aaaaaaaa-0000-0000-0000-000000000001}"));
    const std::string file = CacheFile(u"Components.ini");
    EXPECT_EQ(file, WithHeader(0x00606001, Text(std::u16string(kA)) + Text(std::u16string(kB))));
    builder.HostFile(u"cache\\Components.ini", WithHeader(0x00606001, Text(u"other")));
    Start();
    EXPECT_THAT(Components(), ElementsAre(u"other"));
    builder = MachineBuilder();
    builder.HostFolder(u"cache");
    Start();
    EXPECT_THAT(Components(), ElementsAre());
    EXPECT_EQ(CacheFile(u"Components.ini"), WithHeader(0x00606001, ""));
    builder.WriteLimit(4);  // what could not be written whole is not left behind
    Start();
    EXPECT_THAT(Components(), ElementsAre());
    EXPECT_EQ(CacheFile(u"Components.ini"), "absent");
}

TEST_F(Caches, BrokenComponents_GiveWhatStandsBeforeTheFault) {
    const std::string two = Text(u"one") + Text(u"two");
    const std::string whole = WithHeader(0x00606001, two);
    struct Case {
        std::string bytes;
        std::size_t components;
    };
    const Case cases[] = {
        {WithHeader(0x00606002, two), 0},
        {Number(0x00606001) + Number(0) + two, 0},
        {Number(0x00606001) + Number(8 + 12) + two, 1},         // less than there is
        {Number(0x00606001) + Number(0xFFFFFFFF) + two, 2},     // more
        {WithHeader(0x00606001, Text(u"one") + Number(0)), 1},  // a text of no length
        {WithHeader(0x00606001, Text(u"one") + Number(0xFFFFFFFE) + "ab"), 1},
        {WithHeader(0x00606001, Text(u"one") + Number(3) + std::string("a\0b", 3) + Text(u"two")), 3},
        {WithHeader(0x00606001, two + two), 2},
    };
    for (const Case& test : cases) {
        StartWith(u"Components.ini", test.bytes);
        EXPECT_EQ(Components().size(), test.components) << &test - cases;
        EXPECT_EQ(CacheFile(u"Components.ini"), test.bytes) << "the file is believed, not mended";
    }
    for (std::size_t size = 0; size < whole.size(); ++size) {
        StartWith(u"Components.ini", whole.substr(0, size));
        EXPECT_EQ(Components().size(), size < 8 + 12 ? 0U : 1U) << size;
    }
}

TEST_F(Caches, Referrers_AreFoundByLibraryVersionAndView) {
    const std::u16string classes = u"HKLM\\SOFTWARE\\Classes\\";
    const auto refer = [&](const char16_t* key, const char16_t* version) {
        const std::u16string path = classes + key + u"\\TypeLib";
        builder.Text(path, u"", u"{L1}");
        if (version != nullptr) builder.Text(path, u"Version", version);
    };
    builder.HostFolder(u"cache").Text(classes + u"Interface\\{I0}", u"", u"no library");
    refer(u"Interface\\{I2}", u"2.0");
    refer(u"Interface\\{I1}", u"1.0");
    refer(u"Interface\\{I3}", nullptr);
    builder.Text(classes + u"Interface\\{I4}\\TypeLib", u"Version", u"1.0");
    refer(u"Wow6432Node\\Interface\\{W1}", u"1.0");
    refer(u"CLSID\\{C1}", u"1.0");
    Start();
    const auto check = [] {
        EXPECT_THAT(Referrers(true, u"0.0", true), ElementsAre(u"{I1}", u"{I2}"));
        EXPECT_THAT(Referrers(true, u"1.0", true), ElementsAre(u"{I1}"));
        EXPECT_THAT(Referrers(true, u"1", true), ElementsAre());
        EXPECT_THAT(Referrers(true, u"0.0", false), ElementsAre(u"{W1}"));
    };
    check();
    EXPECT_THAT(Referrers(false, u"1.0", true), ElementsAre(u"{C1}"));
    EXPECT_THAT(Referrers(false, u"0.0", false), ElementsAre());
    const std::string head = Number(1) + Number(64);
    const std::string group32 = Number(0) + Text(u"{L1}") + Number(1) + Text(u"1.0") + Text(u"Interface\\{W1}");
    const std::string group64 = Number(1) + Text(u"{L1}") + Number(2) + Text(u"1.0") + Text(u"Interface\\{I1}") +
                                Text(u"2.0") + Text(u"Interface\\{I2}");
    const std::string whole = WithHeader(0x00606002, head + group32 + group64);
    EXPECT_EQ(CacheFile(u"1TypeLib.ini"), whole);
    StartWith(u"1TypeLib.ini", whole);
    check();
    // Cut at every byte: the groups that are whole, and of the last one the referrers that are.
    for (std::size_t size = 0; size < whole.size(); ++size) {
        StartWith(u"1TypeLib.ini", whole.substr(0, size));
        EXPECT_EQ(Referrers(true, u"0.0", false).size(), size >= 16 + group32.size() ? 1U : 0U) << size;
        const std::size_t last = Text(u"2.0").size() + Text(u"Interface\\{I2}").size();
        EXPECT_EQ(Referrers(true, u"0.0", true).size(), size >= whole.size() - last ? 1U : 0U) << size;
    }
    StartWith(u"1TypeLib.ini", WithHeader(0x00606002, head + Number(2) + group32.substr(4)));
    EXPECT_THAT(Referrers(true, u"0.0", true), ElementsAre());
    StartWith(u"1TypeLib.ini", WithHeader(0x00606001, head + group32));
    EXPECT_THAT(Referrers(true, u"0.0", false), ElementsAre());

    builder = MachineBuilder();
    builder.HostFolder(u"cache").Architecture(kArchitectureIntel);
    refer(u"CLSID\\{C1}", u"1.0");
    Start();
    EXPECT_THAT(Referrers(false, u"0.0", false), ElementsAre(u"{C1}"));
    EXPECT_EQ(CacheFile(u"0TypeLib.ini"), WithHeader(0x00606002, Number(0) + Number(32) + Number(0) + Text(u"{L1}") +
                                                                     Number(1) + Text(u"1.0") + Text(u"CLSID\\{C1}")));
}

}  // namespace
}  // namespace roundup
