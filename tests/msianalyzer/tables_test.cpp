// Tables of installer databases, loaded from packages that the tests write.
#include "msianalyzer/tables/featurecomponentstable.h"
#include "msianalyzer/tables/filetable.h"
#include "msianalyzer/tables/propertytable.h"
#include "tests/support/machinetest.h"
#include "tests/support/packagewriter.h"

namespace roundup {
namespace {

class Tables : public MachineTest {
  protected:
    InstallerHandle Open(const PackageWriter& package) {
        builder.File(u"C:\\a.msi", package.Write());
        InstallerHandle database = 0;
        EXPECT_EQ(Start().Installer().OpenDatabase(u"C:\\a.msi", database), kErrorSuccess);
        return database;
    }
    // The keys of an index in its order.
    static std::u16string Keys(const RowIndex& index) {
        std::u16string keys;
        for (const RowIndex::Entry& entry : index) (keys += entry.key) += u';';
        return keys;
    }
};

TEST_F(Tables, Files_StandUnderTheirThreeKeys) {
    PackageWriter package;
    package.Table("File",
                  {"File s72*", "Component_ s72", "FileName s255", "FileSize i4", "Version s72", "Attributes i2"});
    package.Row("File", {"fz", "c1", "ONE~1.TXT|One long.txt", 70000, "1.0", 512});
    package.Row("File", {"fa", "c2", "short.txt", {}, {}, {}});
    package.Row("File", {"fm", "c1", "TWO~1.TXT|One long.txt", 3, {}, -1});
    package.Row("File", {"fn", {}, "bar|", 3, {}, 0});
    const InstallerHandle database = Open(package);
    CFileTableAnalyzer files;
    for (int pass = 0; pass < 2; ++pass) {  // a second load replaces the first
        ASSERT_TRUE(Succeeded(files.Analyze(database)));
        EXPECT_EQ(Keys(files.GetRows()), u"fa;fm;fn;fz;");
        EXPECT_EQ(Keys(files.GetRowIndex()), u"c1;c1;c2;");
        EXPECT_EQ(Keys(files.GetSecondRows()), u"One long.txt;One long.txt;short.txt;");
    }
    const auto* row = static_cast<const CFileTableRow*>(files.GetRows().Find(u"fz"));
    EXPECT_EQ(row->component, u"c1");
    EXPECT_EQ(row->fileName, u"ONE~1.TXT|One long.txt");
    EXPECT_EQ(row->fileSize, 70000);
    EXPECT_EQ(row->attributes, 512U);
    EXPECT_EQ(files.GetSecondRows().Find(u"One long.txt"), row);
    EXPECT_EQ(files.GetRowIndex().Range(u"c1")[0].row, row);
    EXPECT_EQ(files.GetRows().Find(u"FZ"), nullptr);
}

TEST_F(Tables, Filter_KeepsEachKeyOnce) {
    PackageWriter package;
    package.Table("Property", {"Property s72*", "Value l0"});
    for (const char* value : {"first", "second"}) package.Row("Property", {"ProductCode", value});
    package.Row("Property", {"Other", "x"}).Row("Property", {"ProductName", "Tool"});
    const InstallerHandle database = Open(package);
    CPropertyTableAnalyzer all;
    all.SetFilter(nullptr, u"ProductCode");
    CPropertyTableAnalyzer some;
    some.SetFilter(u"ProductCode", u"ProductName", u"", u"Other");
    ASSERT_TRUE(Succeeded(all.Analyze(database)));
    ASSERT_TRUE(Succeeded(some.Analyze(database)));
    EXPECT_EQ(Keys(all.GetRows()), u"Other;ProductCode;ProductCode;ProductName;");
    EXPECT_EQ(Keys(some.GetRows()), u"ProductCode;ProductName;");
    EXPECT_EQ(static_cast<const CPropertyTableRow*>(some.GetRows().Find(u"ProductCode"))->value, u"first");
}

// Whatever a table is made of: one that does not fit is empty, one that cannot be read is a failure, nothing else.
TEST_F(Tables, TablesThatDoNotFit_AreEmpty) {
    CFeatureComponentsTableAnalyzer table;
    EXPECT_TRUE(Failed(CEnumMsiDatabase().Fetch(nullptr, nullptr)));
    for (const auto& columns : {std::initializer_list<std::string_view>{"Feature_ s38*"},
                                std::initializer_list<std::string_view>{"feature_ s38*", "Component_ s72*"}}) {
        PackageWriter package;
        package.Table("FeatureComponents", columns);
        ASSERT_TRUE(Succeeded(table.Analyze(Open(package))));
        EXPECT_TRUE(table.GetRows().IsEmpty());
    }
    PackageWriter numbers;
    numbers.Table("FeatureComponents", {"Feature_ i2*", "Component_ i4*"}).Row("FeatureComponents", {7, -8});
    ASSERT_TRUE(Succeeded(table.Analyze(Open(numbers))));
    EXPECT_EQ(static_cast<const CFeatureComponentsTableRow*>(table.GetRows().Find(u"7"))->component, u"-8");
    EXPECT_TRUE(Succeeded(table.Analyze(0)));
    EXPECT_TRUE(table.GetRows().IsEmpty());
}

}  // namespace
}  // namespace roundup
