// The package repository of a real machine, walked whole, on a volume made of its hives.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "appcenter/enumappx/enumappx.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/machinetest.h"
#include "tests/support/priwriter.h"
#include "tests/support/tempfolder.h"
#include "utility/utf.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

class StoreHiveTest : public MachineTest {
  protected:
    void SetUp() override {
        for (const auto& [hive, place] :
             {std::pair("SYSTEM_B", "Windows/System32/config/SYSTEM"),
              std::pair("NTUSER-WIN7.DAT", "Windows/System32/config/SOFTWARE"),
              std::pair("NTUSER-WIN7.DAT", "Users/Ann/NTUSER.DAT"),
              std::pair("UsrClass.dat", "Users/Ann/AppData/Local/Microsoft/Windows/UsrClass.dat")}) {
            const std::string source = std::string(ROUNDUP_SHARED_DATA "/hives/") + hive + ".xz";
            if (!fs::exists(source)) GTEST_SKIP() << "no " << source;
            const fs::path target = m_folder.Path() / place;
            fs::create_directories(target.parent_path());
            ASSERT_EQ(std::system(("xz -dc '" + source + "' > '" + target.string() + "'").c_str()), 0);
        }
    }
    std::vector<PackageRecord> Walk() {
        OpenOptions options;
        options.folder = m_folder.Text();
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        if (!machine) {
            ADD_FAILURE() << error.Text();
            return {};
        }
        Start(std::move(machine));
        std::vector<PackageRecord> records;
        const CEnumAppx repository;
        repository.CopyRecords(records);
        return records;
    }

    TempFolder m_folder;
};

TEST_F(StoreHiveTest, RealRepository_IsWalkedWhole) {
    // One of the packages gets what the hives lack of it.
    const std::string folder = "Program Files/WindowsApps/Microsoft.Messaging_3.37.23004.0_x64__8wekyb3d8bbwe/";
    m_folder.Write(folder + "resources.pri",
                   PriWriter{.languages = {u"en-US"}, .items = {{"AppStoreName", {u"Talk"}}}}.Write());
    m_folder.Write(folder + "AppxManifest.xml",
                   "<Package><Identity Publisher=\"CN=p\" Version=\"3.37.23004.0\"/></Package>");
    const std::vector<PackageRecord> records = Walk();
    // 29 of the 85 packages lie in the system's own folder of applications.
    ASSERT_EQ(records.size(), 56U);
    std::size_t named = 0;
    for (const PackageRecord& record : records) {
        const std::string id = ToUtf8(record.PackageID);
        EXPECT_FALSE(id.empty());
        EXPECT_TRUE(record.PackageRootFolder.starts_with(u"C:\\")) << id;
        EXPECT_NE(record.OSMinVersion + record.OSMaxVersionTested, 0U) << id;
        EXPECT_EQ(record.Family.find(u"__"), std::u16string::npos) << id;
        EXPECT_FALSE(record.DisplayName.starts_with(u'@')) << id;
        if (!record.DisplayName.empty()) ++named;
        if (!record.Family.starts_with(u"Microsoft.Messaging_")) continue;
        EXPECT_EQ(record.DisplayName, u"Talk");
        EXPECT_EQ(record.Publisher, u"CN=p");
        EXPECT_NE(record.InstallTime, 0U);
    }
    EXPECT_GT(named, 20U);
}

}  // namespace
}  // namespace roundup
