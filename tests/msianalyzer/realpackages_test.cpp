// Packages that nobody here wrote, through the whole analysis, on machines that have every component of them.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/tables/componenttable.h"
#include "msianalyzer/tables/featurecomponentstable.h"
#include "msianalyzer/tables/filetable.h"
#include "msianalyzer/tables/propertytable.h"
#include "tests/support/itemlog.h"
#include "tests/support/machinetest.h"
#include "tests/support/productpackage.h"
#include "utility/iremoverepeatreg.h"
#include "utility/kvobject.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using Texts = std::vector<std::string>;

class NoFilter final : public CKvObject<IRemoveRepeatReg> {
  public:
    std::int32_t IsKeySeen(const std::uint32_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsValueSeen(const std::uint32_t*, const char16_t*, const char16_t*, bool) override { return 0; }
    std::int32_t IsItemSeen(std::uint32_t, const char16_t*, bool, bool) override { return 0; }
    std::int32_t IsDirectorySeen(const char16_t*) override { return 0; }
};

class RealPackages : public MachineTest {
  protected:
    ResultCode Open(CMSIAnalyzer& analyzer) {
        return analyzer.Open(u"C:\\a.msi", nullptr, &ItemLog::OnItem, &log, m_filter.Get());
    }
    // Installs each component with a key file, with all of its files, in a folder of its own; answers what an
    // analysis is to report: each file once for each feature that has its component.
    Texts InstallAll(const CMSIAnalyzer& package) {
        const auto* code = static_cast<const CPropertyTableRow*>(package.Rows(MsiTable::Property).Find(u"ProductCode"));
        const std::u16string product(code->value);
        Texts expected;
        for (const RowIndex::Entry& entry : package.Rows(MsiTable::Component)) {
            const auto& component = RowOf<CComponentTableRow>(entry);
            const CFileTableRow* key = nullptr;
            if (Failed(package.FindFile(component.keyPath, key)) || component.componentId.empty()) continue;
            const std::u16string folder = std::u16string(u"C:\\Real\\").append(component.component).append(u"\\");
            InstallComponent(builder, product, component.componentId,
                             folder + std::u16string(GetLongName(key->fileName)));
            for (const RowIndex::Entry& file : package.RowsByParent(MsiTable::File).Range(component.component)) {
                const auto& row = RowOf<CFileTableRow>(file);
                const std::u16string path = folder + std::u16string(GetLongName(row.fileName));
                builder.File(path, "x");
                for (const RowIndex::Entry& feature : package.Rows(MsiTable::FeatureComponents)) {
                    if (RowOf<CFeatureComponentsTableRow>(feature).component != component.component) continue;
                    expected.push_back("file " + ToUtf8(path) + " " + std::to_string(row.fileSize));
                }
            }
        }
        return expected;
    }

    ItemLog log;

  private:
    const RefPtr<NoFilter> m_filter = RefPtr<NoFilter>::Adopt(new NoFilter);
};

TEST_F(RealPackages, FilesOfAllFeatures_AreReported) {
    const auto folder = std::filesystem::path(ROUNDUP_SHARED_DATA) / "msi";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no shared data";
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        SCOPED_TRACE(file.path().string());
        std::ifstream stream(file.path(), std::ios::binary);
        builder = MachineBuilder();
        builder.File(u"C:\\a.msi", std::string(std::istreambuf_iterator<char>(stream), {}));
        Start();
        Texts expected;
        {
            CMSIAnalyzer package;
            ASSERT_TRUE(Succeeded(Open(package)));
            // A patch is a database too, and names no product.
            if (file.path().extension() == ".msp") {
                EXPECT_EQ(Small(package.Analyze()), SmallCode::GeneralFailure);
                continue;
            }
            ASSERT_TRUE(Succeeded(package.LoadTables()));
            expected = InstallAll(package);
        }
        EXPECT_GT(expected.size(), 1U);
        Start();
        log.lines.clear();
        CMSIAnalyzer analyzer;
        ASSERT_TRUE(Succeeded(Open(analyzer)));
        EXPECT_TRUE(Succeeded(analyzer.Analyze()));
        Texts files;
        for (const std::string& line : log.lines) {
            EXPECT_FALSE(line.ends_with(" broken") || line.ends_with(" unreadable")) << line;
            if (line.starts_with("file C:\\Real\\")) files.push_back(line);
        }
        EXPECT_THAT(files, testing::UnorderedElementsAreArray(expected));
    }
}

}  // namespace
}  // namespace roundup
