// The installer service's answers from a recorded registry, and handles that are none.
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

constexpr const char16_t* kProduct = u"{12345678-ABCD-EF01-2345-6789ABCDEF01}";
constexpr const char16_t* kComponent = u"{00112233-4455-6677-8899-AABBCCDDEEFF}";
constexpr const char16_t* kOther = u"{00112233-4455-6677-8899-AABBCCDDEE00}";
const std::u16string kPackedProduct = u"87654321DCBA10FE32547698BADCFE10";
const std::u16string kPackedComponent = u"33221100554477668899AABBCCDDEEFF";
const std::u16string kUsers = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
const std::u16string kSystem = kUsers + u"S-1-5-18";
const std::u16string kUser = kUsers + u"S-1-5-21-1-2-3-1001";

class InstallerTest : public MachineTest {
  protected:
    struct Path {
        std::int32_t state;
        std::u16string text;
        std::uint32_t length;
    };
    static Path ComponentPath(const char16_t* product = kProduct, const char16_t* component = kComponent) {
        char16_t buffer[260] = {};
        std::uint32_t length = 260;
        const std::int32_t state = CurrentMachine().Installer().GetComponentPath(product, component, buffer, length);
        return {state, buffer, length};
    }
    static std::pair<Win32Error, std::u16string> Info(const char16_t* property, const char16_t* product = kProduct) {
        char16_t buffer[64] = {};
        std::uint32_t length = 64;
        const Win32Error error = CurrentMachine().Installer().GetProductInfo(product, property, buffer, length);
        return {error, buffer};
    }
};

TEST_F(InstallerTest, Components_AreThoseOfEveryUserUnpacked) {
    builder.Key(kSystem + u"\\Components\\" + kPackedComponent);
    builder.Key(kSystem + u"\\Components\\no code").Key(kUser + u"\\Products\\" + kPackedProduct);
    builder.Key(kUser + u"\\Components\\00000000000000000000000000000001");
    builder.Key(
        u"HKLM\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18"
        u"\\Components\\00000000000000000000000000000002");
    IInstaller& installer = Start().Installer();
    char16_t component[39] = {};
    ASSERT_EQ(installer.EnumComponent(0, component), kErrorSuccess);
    EXPECT_EQ(std::u16string_view(component), kComponent);
    ASSERT_EQ(installer.EnumComponent(1, component), kErrorSuccess);
    EXPECT_EQ(std::u16string_view(component), u"{00000000-0000-0000-0000-000000000010}");
    EXPECT_EQ(installer.EnumComponent(2, component), kErrorNoMoreItems);
}

TEST_F(InstallerTest, ComponentPath_TellsWhetherTheFileIsThere) {
    struct Case {
        const char16_t* value;
        std::int32_t state;
        const char16_t* path;
    };
    const Case cases[] = {{u"C:\\Tool\\tool.exe", kInstallStateLocal, u"C:\\Tool\\tool.exe"},
                          {u"C?\\Tool\\tool.exe", kInstallStateLocal, u"C:\\Tool\\tool.exe"},
                          {u"C:\\Tool\\", kInstallStateLocal, u"C:\\Tool\\"},
                          {u"C:\\Tool\\gone.exe", kInstallStateAbsent, u"C:\\Tool\\gone.exe"},
                          {u"02:\\SOFTWARE\\Tool\\", kInstallStateLocal, u"02:\\SOFTWARE\\Tool\\"},
                          {u"", kInstallStateAbsent, u""}};
    for (const Case& test : cases) {
        MachineBuilder one;
        one.File(u"C:\\Tool\\tool.exe").Key(kSystem + u"\\Components\\" + kPackedComponent);
        one.Text(kUser + u"\\Components\\" + kPackedComponent, kPackedProduct, test.value);
        Start(one.Build());
        const Path path = ComponentPath();
        EXPECT_EQ(path.state, test.state);
        EXPECT_EQ(path.text, test.path);
        EXPECT_EQ(path.length, path.text.size());
        EXPECT_EQ(ComponentPath(kOther).state, kInstallStateUnknown);
        EXPECT_EQ(ComponentPath(kProduct, kOther).state, kInstallStateUnknown);
        EXPECT_EQ(ComponentPath(u"no code").state, kInstallStateUnknown);
        EXPECT_EQ(ComponentPath(nullptr).state, kInstallStateUnknown);
    }
}

TEST_F(InstallerTest, ProductInfo_PrefersTheUsersEntry) {
    const std::u16string userKey = u"HKCU\\Software\\Microsoft\\Installer\\Products\\" + kPackedProduct;
    const std::u16string machineKey = u"HKLM\\SOFTWARE\\Classes\\Installer\\Products\\" + kPackedProduct;
    builder.Dword(machineKey, u"Assignment", 1).Text(machineKey, u"ProductName", u"Tool");
    builder.Text(machineKey, u"PackageCode", kPackedProduct)
        .Text(machineKey + u"\\SourceList", u"PackageName", u"t.msi");
    builder.Text(kSystem + u"\\Products\\" + kPackedProduct + u"\\InstallProperties", u"DisplayVersion", u"1.2");
    Start();
    using Answer = std::pair<Win32Error, std::u16string>;
    EXPECT_EQ(Info(u"AssignmentType"), Answer(kErrorSuccess, u"1"));
    EXPECT_EQ(Info(u"ProductName"), Answer(kErrorSuccess, u"Tool"));
    EXPECT_EQ(Info(u"PackageCode"), Answer(kErrorSuccess, kProduct));
    EXPECT_EQ(Info(u"PackageName"), Answer(kErrorSuccess, u"t.msi"));
    EXPECT_EQ(Info(u"VersionString"), Answer(kErrorSuccess, u"1.2"));
    EXPECT_EQ(Info(u"LocalPackage"), Answer(kErrorSuccess, u""));
    EXPECT_EQ(Info(u"Nonsense").first, kErrorUnknownProperty);
    EXPECT_EQ(Info(u"AssignmentType", kOther).first, kErrorUnknownProduct);
    EXPECT_EQ(Info(u"AssignmentType", u"no code").first, kErrorInvalidParameter);
    builder.Dword(userKey, u"Assignment", 0);
    Start();
    EXPECT_EQ(Info(u"AssignmentType"), Answer(kErrorSuccess, u"0"));
}

}  // namespace
}  // namespace roundup
