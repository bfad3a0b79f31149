// The books of Windows Installer and its cached packages as a source of a load.
#include "appcenter/appeunm/productsource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "tests/appcenter/catalogue_support.h"
#include "tests/support/packagewriter.h"
#include "utility/guid.h"
#include "utility/sysinfo.h"
#include "utility/utf.h"

namespace roundup {
namespace {

constexpr std::u16string_view kBooks = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
constexpr std::u16string_view kMachine = u"S-1-5-18";
constexpr std::u16string_view kNotes = u"{11111111-5E1F-4C0D-9A66-0123456789AB}";
constexpr std::u16string_view kPlotter = u"{22222222-5E1F-4C0D-9A66-0123456789AB}";
constexpr std::u16string_view kPatch = u"{33333333-5E1F-4C0D-9A66-0123456789AB}";

std::u16string Packed(std::u16string_view code) {
    return std::u16string(GuidText(ParseGuid(code, GuidForm::Braced), GuidForm::Packed).View());
}

std::string Package(const char* code, const char* name, const char* version) {
    PackageWriter package;
    package.Table("Property", {"Property s72*", "Value l0"});
    if (code != nullptr) package.Row("Property", {"ProductCode", code});
    package.Row("Property", {"ProductName", name}).Row("Property", {"ProductVersion", version});
    return package.Write();
}

class GoOn final : public IContinue {
  public:
    std::uint8_t IsContinue() const noexcept override { return left-- > 0 ? 1 : 0; }
    mutable std::atomic<int> left{1'000'000};
};

class ProductSourceTest : public CatalogueTest {
  protected:
    static std::u16string Branch(std::u16string_view user, std::u16string_view rest) {
        return std::u16string(kBooks).append(user).append(u"\\").append(rest);
    }
    std::u16string Product(std::u16string_view user, std::u16string_view code, std::u16string_view package) {
        const std::u16string product = Branch(user, u"Products\\" + Packed(code));
        builder.Text(product + u"\\InstallProperties", u"LocalPackage", package);
        return product;
    }
    void Patch(const std::u16string& product, std::u16string_view user, std::u16string_view code, bool cached) {
        builder.Text(product + u"\\Patches\\" + Packed(code), u"DisplayName", u"Patch")
            .MultiText(product + u"\\Patches", u"AllPatches", {Packed(code)});
        const std::u16string key = Branch(user, u"Patches\\" + Packed(code));
        builder.Key(key);
        if (cached) builder.Text(key, u"LocalPackage", u"C:\\Windows\\Installer\\p.msp");
    }
    // The install list as "name code-digit version" texts.
    std::vector<std::string> Read(const GoOn& goOn) {
        Start();
        m_list.clear();
        { const ProductEnumerator source(goOn, m_list); }
        std::vector<std::string> texts;
        for (const RefPtr<IApp>& each : m_list) {
            const auto& app = static_cast<const CApp&>(*each);
            texts.push_back(ToUtf8(app.pwszName.View()) + " " +
                            ToUtf8(GuidText(app.ProductCode, GuidForm::Braced).View()).substr(1, 1) + " " +
                            ToUtf8(app.pwszVersion.View()));
        }
        return texts;
    }
    std::vector<std::string> Read() { return Read(GoOn()); }
    const CApp& At(std::size_t index) { return static_cast<const CApp&>(*m_list.at(index)); }
    void TearDown() override {
        m_list.clear();
        CatalogueTest::TearDown();
    }

  private:
    AppList m_list;
};

using Texts = std::vector<std::string>;

TEST_F(ProductSourceTest, BooksAndPackage_MakeOneObject) {
    const std::u16string key = Product(kMachine, kNotes, u"C:\\Windows\\Installer\\a.msi") + u"\\InstallProperties";
    builder.Text(key, u"DisplayName", u"From the books")
        .Text(key, u"InstallLocation", u"C:\\Notes\\")
        .Text(key, u"InstallSource", u"D:\\setup\\")
        .Text(key, u"Publisher", u"Otter")
        .Dword(key, u"WindowsInstaller", 1)
        .Dword(key, u"SystemComponent", 1)
        .Dword(key, u"EstimatedSize", 2)
        .Folder(u"C:\\Notes")
        .File(u"C:\\Windows\\Installer\\a.msi",
              Package("{90140000-003A-0000-0000-0000000FF1CE}", "From the package", "7.1"));
    ASSERT_EQ(Read(), Texts{"From the books 1 7.1"});
    const CApp& app = At(0);
    EXPECT_EQ(app.qwFlags, AppFlags::kWindowsInstaller | AppFlags::kNotTopLevel);
    EXPECT_EQ(app.llEstimatedSize, 2048);
    EXPECT_EQ(app.pwszInstallLoc.View(), u"C:\\Notes");
    EXPECT_EQ(app.pwszOriginalInstallLoc.View(), u"C:\\Notes\\");
    EXPECT_EQ(app.pwszInstallSource.View(), u"D:\\setup");
    EXPECT_EQ(app.pwszType.View(), u"PROJECT");
    EXPECT_TRUE(app.pwszKeyString.IsNull());
}

TEST_F(ProductSourceTest, OnePackage_IsReadOnceWhateverNamesIt) {
    Product(kMachine, kNotes, u"C:\\Windows\\Installer\\A.MSI");
    Product(u"S-1-5-21-1", kPlotter, u"C:\\Windows\\Installer\\a.msi");
    // No book names these; the last two are no packages.
    builder.File(u"C:\\Windows\\Installer\\a.msi", Package(nullptr, "A", "1"))
        .File(u"C:\\Windows\\Installer\\b.msi", Package("{44444444-5E1F-4C0D-9A66-0123456789AB}", "B", "2"))
        .File(u"C:\\Windows\\Installer\\c.MSP", Package(nullptr, "no code", "3"))
        .File(u"C:\\Windows\\Installer\\d.msi", "no package")
        .File(u"C:\\Windows\\Installer\\e.txt", Package("{55555555-5E1F-4C0D-9A66-0123456789AB}", "E", "2"))
        .File(u"C:\\Windows\\Installer\\f.msi\\inside", "");
    EXPECT_EQ(Read(), (Texts{"A 1 1", "B 4 2"}));
}

TEST_F(ProductSourceTest, Patches_HaveTheirNameFromTheProductAndTheirPackageFromTheBranch) {
    const std::u16string product = Product(kMachine, kNotes, u"C:\\gone.msi");
    Patch(product, kMachine, kPatch, true);
    builder.MultiText(Branch(kMachine, u"Patches\\" + Packed(kPatch)), u"LocalPackage",
                      {u"C:\\Windows\\Installer\\p.msp", u"more"});
    EXPECT_EQ(Read(), (Texts{" 1 ", "Patch 3 "}));
    EXPECT_TRUE(At(0).RelatedCodes.contains(ParseGuid(kPatch, GuidForm::Braced)));
    EXPECT_EQ(At(1).pwszMsiPath.View(), u"C:\\Windows\\Installer\\p.msp");
}

TEST_F(ProductSourceTest, PatchWithoutPackageOrOfARefusedProduct) {
    Patch(Product(kMachine, kNotes, u"C:\\gone.msi"), kMachine, kPatch, false);
    // The same package under another account: the product is refused, its patch is not.
    Patch(Product(u"S-1-5-21-1", kNotes, u"C:\\gone.msi"), u"S-1-5-21-1", kPatch, true);
    // A product without patches, whose former one left a key behind.
    const std::u16string product = Product(kMachine, kPlotter, u"C:\\other.msi");
    Patch(product, kMachine, u"{44444444-5E1F-4C0D-9A66-0123456789AB}", true);
    builder.MultiText(product + u"\\Patches", u"AllPatches", {});
    EXPECT_EQ(Read(), (Texts{" 1 ", " 2 ", "Patch 3 "}));
}

TEST_F(ProductSourceTest, BrokenBranches_AreLeftOut) {
    Product(kMachine, kNotes, u"C:\\a.msi");
    builder.Key(Branch(u"S-1-0-0", u"Components"))
        .Key(Branch(kMachine, u"Products\\no code\\Usage"))
        .Text(Branch(kMachine, u"Products\\no code\\InstallProperties"), u"LocalPackage", u"C:\\b.msi")
        .Text(Branch(kMachine, u"Products\\zz\\InstallProperties"), u"DisplayName", u"no package")
        .DenyKey(Branch(kMachine, u"Products\\" + Packed(kPlotter) + u"\\InstallProperties"));
    EXPECT_EQ(Read(), Texts{" 1 "});
}

TEST_F(ProductSourceTest, GuiltyPackage_IsLeftAloneAndAnInnocentOneForgiven) {
    Product(kMachine, kNotes, u"C:\\a.msi");
    Product(kMachine, kPlotter, u"C:\\b.msi");
    builder.HostFile(u"cache\\EnumRetry.ini", "[Crash]\r\nC:\\a.msi=2\r\nC:\\b.msi=1\r\n");
    EXPECT_EQ(Read(), Texts{" 2 "});
    char16_t text[20] = {};
    const std::u16string file = std::u16string(GetExeFolder()) + u"\\cache\\EnumRetry.ini";
    CurrentMachine().Profile().GetString(u"Crash", u"C:\\a.msi", u"", text, 20, file.c_str());
    EXPECT_EQ(std::u16string(text), u"2");
    CurrentMachine().Profile().GetString(u"Crash", u"C:\\b.msi", u"", text, 20, file.c_str());
    EXPECT_EQ(std::u16string(text), u"1");
}

TEST_F(ProductSourceTest, CancelAtAnyQuestion_EndsWithAPartOfTheList) {
    for (int i = 0; i < 20; ++i) {
        const std::u16string code = u"{1111111" + std::u16string(1, static_cast<char16_t>(u'0' + i % 10)) +
                                    (i < 10 ? u"-5E1F" : u"-5E2F") + u"-4C0D-9A66-0123456789AB}";
        Product(kMachine, code,
                u"C:\\Windows\\Installer\\" + std::u16string(1, static_cast<char16_t>(u'a' + i)) + u".msi");
    }
    const Texts whole = Read();
    EXPECT_EQ(whole.size(), 20U);
    for (int questions = 0; questions < 50; ++questions) {
        GoOn goOn;
        goOn.left = questions;
        const Texts part = Read(goOn);
        // Each package takes a question of the walk and one of the worker.
        EXPECT_LE(part.size(), static_cast<std::size_t>(questions) / 2);
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()));
    }
}

}  // namespace
}  // namespace roundup
