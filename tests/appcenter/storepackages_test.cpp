// Store packages: the source that finds them, the object, its gather and its stored form.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "appcenter/appx/appx.h"
#include "appcenter/appx/packageversion.h"
#include "appcenter/enumappx/loadappx.h"
#include "tests/appcenter/catalogue_support.h"

namespace roundup {
namespace {

constexpr std::u16string_view kRepository =
    u"HKCU\\Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository\\";
constexpr std::u16string_view kApps = u"C:\\Program Files\\WindowsApps\\";

std::string Manifest(const std::string& version, const std::string& publisher = "CN=Otter",
                     const char* logo = "a\\Logo.png") {
    return "<Package><Identity Name=\"x\" Publisher=\"" + publisher + "\" Version=\"" + version +
           "\" ProcessorArchitecture=\"x64\"/><Dependencies><PackageDependency Name=\"Otter.Frame\" "
           "MinVersion=\"2.0.0.0\"/>"
           "<PackageDependency Name=\"Otter.Lost\"/></Dependencies><Applications><Application>"
           "<uap:VisualElements Square150x150Logo=\"" +
           logo +
           "\" BackgroundColor=\"#80FF00\"/>"
           "</Application></Applications></Package>";
}

class StorePackagesTest : public CatalogueTest {
  protected:
    // A package as the repository and its folder have it.
    void Package(std::u16string_view full, std::u16string_view family, std::string_view manifest,
                 std::u16string_view parent = kApps) {
        const std::u16string key = Under(std::u16string(kRepository) + u"Packages\\", full);
        const std::u16string root = Under(parent, full);
        builder.Text(key, u"DisplayName", std::u16string(u"Name of ").append(full))
            .Text(key, u"PackageRootFolder", root)
            .Text(key, u"PackageID", full)
            .Qword(Under(std::u16string(kRepository) + u"Families\\" + std::u16string(family) + u"\\", full),
                   u"InstallTime", 133513056000000000)  // 2 February 2024, noon
            .File(root + u"\\AppxManifest.xml", manifest)
            .File(root + u"\\a\\Logo.scale-200.png", "PNG");
    }
    std::u16string KeyOf(std::u16string_view full) { return Under(std::u16string(kRepository) + u"Packages\\", full); }

    std::vector<const CAppx*> Packages(CAppManager& manager) {
        std::vector<const CAppx*> packages;
        for (const RefPtr<IApp>& app : manager.Packages()) packages.push_back(dynamic_cast<const CAppx*>(app.Get()));
        return packages;
    }
    std::vector<std::string> FullNames(CAppManager& manager) {
        std::vector<std::string> names;
        for (const CAppx* package : Packages(manager)) {
            const std::u16string_view name = package->m_wzPackageFullName;
            names.emplace_back(name.begin(), name.end());
        }
        return names;
    }
};

TEST_F(StorePackagesTest, CompletePackage_HasAllItsFields) {
    Package(u"Otter.Notes_1.2.3.4_x64__abc", u"Otter.Notes_abc", Manifest("1.2.3.4"));
    builder.Folder(std::u16string(kApps) + u"Otter.Notes_1.2.3.4_neutral_de_abc")
        .Folder(std::u16string(kApps) + u"Otter.Notes_1.2.3.5_x64__abc")
        .Folder(u"C:\\Users\\User\\AppData\\Local\\Packages\\Otter.Notes_abc");
    CAppManager& manager = Load();
    ASSERT_EQ(Packages(manager).size(), 1U);
    const CAppx& package = *Packages(manager).front();
    EXPECT_EQ(package.m_wzInstallDate.View(), u"20240202");
    EXPECT_EQ(package.m_wzPackageName.View(), u"Otter.Notes");
    EXPECT_EQ(package.m_wzPublisherId.View(), u"abc");
    EXPECT_EQ(package.m_wzPublisher.View(), u"CN=Otter");
    EXPECT_EQ(package.m_ullVersion, 0x0001000200030004U);
    EXPECT_EQ(package.m_wzPackagesFolder.View(), u"C:\\Program Files\\WindowsApps");
    EXPECT_EQ(package.GetEstimatedSize(), static_cast<std::int64_t>(Manifest("1.2.3.4").size() + 3));
    ASSERT_EQ(package.ExtraFolder.size(), 1U);
    EXPECT_EQ(package.ExtraFolder.begin()->View(), u"Otter.Notes_1.2.3.4_neutral_de_abc");
    ASSERT_EQ(package.DataFolder.size(), 1U);
    ASSERT_EQ(package.Dependency.size(), 1U);
    EXPECT_EQ(package.Dependency[0].minVersion, 0x0002000000000000U);
    // The logo is there under a qualified name; the colour stands in front of it.
    ASSERT_EQ(package.GetIconDataSize(), 7U);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(package.GetIconData()), 7),
              std::string("\x00\xFF\x80\x00PNG", 7));
    AppRecordEx record{};
    package.FillAppInfo(record);
    EXPECT_EQ(record.qwFlags, AppFlags::kStorePackage | AppFlags::k64Bit);
    EXPECT_TRUE(package.IsSame(record));
}

TEST_F(StorePackagesTest, BrokenEntries_AreLeftOutAndTheOthersStay) {
    Package(u"Good_1.0.0.0_x64__p", u"Good_p", Manifest("1.0.0.0"));
    // No family entry: the key's own name is the family.
    builder.Text(KeyOf(u"NoBar"), u"DisplayName", u"n")
        .Text(KeyOf(u"NoBar"), u"PackageRootFolder", u"C:\\x\\NoBar")
        .Text(KeyOf(u"NoBar"), u"PackageID", u"NoBar");
    Package(u"Gone_1.0.0.0_x64__p", u"Gone_p", Manifest("1.0.0.0"));
    builder.Text(KeyOf(u"Gone_1.0.0.0_x64__p"), u"PackageRootFolder", u"C:\\Nowhere\\Gone_1.0.0.0_x64__p");
    Package(u"Moved_1.0.0.0_x64__p", u"Moved_p", Manifest("1.0.0.0"));
    builder.Text(KeyOf(u"Moved_1.0.0.0_x64__p"), u"PackageRootFolder", u"C:\\Program Files\\WindowsApps\\Other");
    Package(u"Nameless_1.0.0.0_x64__p", u"Nameless_p", Manifest("1.0.0.0"));
    builder.Text(KeyOf(u"Nameless_1.0.0.0_x64__p"), u"DisplayName", u"@{lost?ms-resource://x}");
    Package(u"Sys_1.0.0.0_x64__p", u"Sys_p", Manifest("1.0.0.0"), u"C:\\Windows\\SystemApps\\");
    Package(u"Cased_1.0.0.0_x64__p", u"Cased_p", Manifest("1.0.0.0"), u"C:\\WINDOWS\\SystemApps\\");
    Package(u"Other_1.0.0.0_x64__p", u"Otter_p", "<Package/>");
    Package(u"Long_1.0.0.0_x64__p", std::u16string(258, u'L') + u"_p", Manifest("1.0.0.0"));
    for (const char16_t* full : {u"Other_1.0.0.0_x64__p", u"Long_1.0.0.0_x64__p"}) {
        builder.Dword(KeyOf(full), u"Framework", 1);  // of which no more is asked than these names
    }
    builder.Key(KeyOf(u"Empty"));
    EXPECT_EQ(FullNames(Load()), (std::vector<std::string>{"Cased_1.0.0.0_x64__p", "Good_1.0.0.0_x64__p"}));
}

TEST_F(StorePackagesTest, FilterFile_HidesPackagesButNoFrameworks) {
    Package(u"A_1.0.0.0_x64__p", u"A_p", Manifest("1.0.0.0", "CN=x, O=Microsoft Corporation, C=US"));
    Package(u"B_1.0.0.0_x64__p", u"B_p", Manifest("1.0.0.0"));
    Package(u"F_1.0.0.0_x64__p", u"F_p", Manifest("1.0.0.0", "O=Microsoft Corporation"));
    builder.Dword(KeyOf(u"F_1.0.0.0_x64__p"), u"Framework", 1);
    const std::string a = "A_1.0.0.0_x64__p", b = "B_1.0.0.0_x64__p", f = "F_1.0.0.0_x64__p";
    const struct {
        const char* file;
        std::vector<std::string> left;
    } cases[] = {
        {"[key]\r\nB_p=1\r\nF_p=1\r\n", {a, f}},
        {"[config]\r\ntype=1\r\n[key]\r\nB_p=1\r\n", {b, f}},
        {"[config]\r\ntype=2x\r\n[key]\r\nB_p=1\r\n", {a, b, f}},
    };
    for (const auto& each : cases) {
        builder.HostFile(u"Config\\Compatibility\\innerappx.ini", each.file);
        EXPECT_EQ(FullNames(Load()), each.left) << each.file;
    }
}

TEST_F(StorePackagesTest, WindowsOtherThan10_HasNoPackages) {
    Package(u"A_1.0.0.0_x64__p", u"A_p", Manifest("1.0.0.0"));
    EXPECT_EQ(FullNames(Load()).size(), 1U);
    builder.Version(11, 0, 22000);
    EXPECT_TRUE(FullNames(Load()).empty());
}

// Lets so many questions pass.
class GoesOnFor : public IContinue {
  public:
    explicit GoesOnFor(int times) : m_left(times) {}
    std::uint8_t IsContinue() const noexcept override { return m_left-- > 0 ? 1 : 0; }

  private:
    mutable std::atomic<int> m_left;
};

TEST_F(StorePackagesTest, CancelledLoad_KeepsThePackagesSoFar) {
    for (const char16_t* full : {u"A_1.0.0.0_x64__p", u"B_1.0.0.0_x64__p", u"C_1.0.0.0_x64__p"}) {
        Package(full, std::u16string(1, full[0]) + u"_p", Manifest("1.0.0.0"));
    }
    Start();
    for (const int times : {0, 1, 2, 3, 4}) {
        AppList packages;
        {
            const GoesOnFor goOn(times);
            const CLoadAppx source(goOn, packages);
        }
        EXPECT_EQ(packages.size(), static_cast<std::size_t>(std::min(times, 3)));
    }
}

TEST_F(StorePackagesTest, ClassIcon_WinsWhenItsFileIsThere) {
    Package(u"A_1.0.0.0_x64__p", u"A_p", Manifest("1.0.0.0", "CN=x", "gone\\none.png"));
    const std::u16string classKey = u"HKCU\\Software\\Classes\\AppX123\\Application";
    builder.Text(classKey, u"ApplicationIcon", u"@{A_1.0.0.0_x64__p?ms-resource://A/Logo}")
        .String(u"@{A_1.0.0.0_x64__p?ms-resource://A/Logo}", u"C:\\Icons\\class.png")
        .File(u"C:\\Icons\\class.png", "ICON");
    EXPECT_EQ(Packages(Load()).front()->m_wzIcon.View(), u"C:\\Icons\\class.png");
}

TEST_F(StorePackagesTest, Gather_TakesOwnExtraAndDataFoldersAndEndsInJunctions) {
    Package(u"A_1.0.0.0_x64__p", u"A_p", Manifest("1.0.0.0"));
    const std::u16string data = u"C:\\Users\\User\\AppData\\Local\\Packages\\A_p";
    builder.File(std::u16string(kApps) + u"A_1.0.0.0_neutral_de_p\\text.pri", "12345")
        .File(data + u"\\Settings\\s.dat", "1")
        .Reparse(data + u"\\zloop", data);
    CAppManager& manager = Load();
    auto* const package = static_cast<CAppx*>(manager.Packages().front().Get());
    ASSERT_TRUE(Succeeded(package->Gather(nullptr, nullptr)));
    const auto holds = [&](std::u16string_view end) {
        return std::ranges::any_of(package->m_listFiles, [&](const auto& file) {
            return file->dwType == FileType::kStorePackage && file->pwszPath.View().ends_with(end);
        });
    };
    EXPECT_TRUE(holds(u"\\AppxManifest.xml") && holds(u"_neutral_de_p\\text.pri") && holds(u"\\Settings\\s.dat"));
    EXPECT_GT(package->GetGatheredSize(), package->GetEstimatedSize());
    const std::size_t files = package->m_listFiles.size();
    const std::int64_t size = package->GetGatheredSize();
    // The links were walked: a second gather passes over them, and adds to the size.
    package->UnGather();
    ASSERT_TRUE(Succeeded(package->Gather(nullptr, nullptr)));
    EXPECT_LT(package->m_listFiles.size(), files);
    EXPECT_GT(package->GetGatheredSize(), size);
    // An extra folder that has gone ends the extra folders, and is the result.
    package->UnGather();
    ASSERT_TRUE(package->ExtraFolder.Add(u"A_0"));
    EXPECT_EQ(Small(package->Gather(nullptr, nullptr)), SmallCode::GeneralFailure);
    EXPECT_TRUE(!holds(u"_neutral_de_p\\text.pri") && holds(u"\\Settings\\s.dat"));
}

TEST_F(StorePackagesTest, Record_ComesBackAsItWasAndEveryCutFails) {
    Package(u"A_1.0.0.0_x64__p", u"A_p", Manifest("1.0.0.0"));
    CAppManager& manager = Load();
    auto* const package = static_cast<CAppx*>(manager.Packages().front().Get());
    ASSERT_TRUE(Succeeded(package->Gather(nullptr, nullptr)));
    std::vector<std::byte> bytes(package->GetSize());
    const auto size = static_cast<std::uint32_t>(bytes.size());
    std::uint32_t count = 0;
    ASSERT_TRUE(Succeeded(package->Serialize(bytes.data(), size, count)));
    EXPECT_EQ(count, size);

    CAppx again;
    ASSERT_TRUE(Succeeded(again.ReSerialize(bytes.data(), size, count)));
    EXPECT_EQ(count, size);
    std::vector<std::byte> second(again.GetSize());
    ASSERT_TRUE(Succeeded(again.Serialize(second.data(), size, count)));
    EXPECT_EQ(second, bytes);
    for (std::uint32_t cut = 0; cut < size; ++cut) {
        CAppx broken;
        EXPECT_NE(Small(broken.ReSerialize(bytes.data(), cut, count)), SmallCode::Success) << cut;
        EXPECT_EQ(Small(package->Serialize(second.data(), cut, count)), SmallCode::GeneralFailure) << cut;
    }
}

TEST(PackageVersion, Texts_ArePackedOrZero) {
    EXPECT_EQ(PackVersion(u"10.0.19041.5"), 0x000A00004A610005U);
    EXPECT_EQ(PackVersion(u"1.2.3.4.5"), 0U);
    EXPECT_EQ(PackVersion(u"1..3.4"), 0x0001000000000000U);
    EXPECT_EQ(PackVersion(u"0.65537.0.0"), 0x0001000100000000U);
}

TEST(CAppx, DependencyAndSystemVersion_FollowTheNumbers) {
    CAppx app;
    app.Dependency.push_back({OwnedString(u"Otter.Frame"), 5});
    const auto frame = RefPtr<CAppx>::Adopt(new CAppx);
    (void)AssignString(frame->m_wzPackageName, u"otter.frame");
    frame->m_ullVersion = 5;
    EXPECT_FALSE(app.DependsOn(frame.Get()));
    frame->m_bIsFramework = 1;
    EXPECT_TRUE(app.DependsOn(frame.Get()));
    frame->m_ullVersion = 4;
    EXPECT_FALSE(app.DependsOn(frame.Get()));
    EXPECT_FALSE(app.DependsOn(nullptr));

    OsVersionInfo version;
    version.major = 10;
    version.build = 19045;
    EXPECT_EQ(app.CheckSystemVersion(version), 1U);
    app.m_dwDeviceMinVersion = PackVersion(u"10.0.19045.0");
    app.m_dwDeviceMaxVersionTested = PackVersion(u"10.0.22000.0");
    EXPECT_EQ(app.CheckSystemVersion(version), 0U);
    version.build = 19044;
    EXPECT_EQ(app.CheckSystemVersion(version), 2U);
    version.major = 6;
    EXPECT_EQ(frame->CheckSystemVersion(version), 0U);
    EXPECT_EQ(app.CheckSystemVersion(version), 2U);
}

}  // namespace
}  // namespace roundup
