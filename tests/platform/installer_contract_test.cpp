// Installer databases: what msi.dll answers, whoever reads them.
#include <map>
#include <thread>

#include "tests/platform/contracttest.h"
#include "tests/support/packagewriter.h"
#include "utility/utf.h"

namespace roundup {
namespace {

class InstallerContract : public ContractTest {
  protected:
    // The package is written to the machine's temporary folder, which every kind of machine has.
    InstallerHandle Open(const std::string& bytes) {
        CloseAll();
        Machine& machine = installer == nullptr ? StartKind() : CurrentMachine();
        m_path = TempPath(u"installercontract.msi");
        EXPECT_EQ(WriteFile(machine.Files(), m_path.c_str(), kCreateAlways, bytes), kErrorSuccess);
        installer = &machine.Installer();
        InstallerHandle database = 0;
        EXPECT_EQ(installer->OpenDatabase(m_path.c_str(), database), kErrorSuccess);
        return Keep(database);
    }
    InstallerHandle Run(InstallerHandle database, const char16_t* query) {
        InstallerHandle view = 0;
        EXPECT_EQ(installer->OpenView(database, query, view), kErrorSuccess);
        EXPECT_EQ(installer->ExecuteView(view), kErrorSuccess);
        return Keep(view);
    }
    InstallerHandle Next(InstallerHandle view) {
        InstallerHandle record = 0;
        const Win32Error error = installer->FetchRecord(view, record);
        EXPECT_EQ(error, record != 0 ? kErrorSuccess : kErrorNoMoreItems);
        return Keep(record);
    }
    std::u16string Text(InstallerHandle record, std::uint32_t column) const {
        std::u16string buffer(100000, u'#');
        std::uint32_t length = 100000;
        EXPECT_EQ(installer->GetString(record, column, buffer.data(), length), kErrorSuccess);
        EXPECT_EQ(buffer[length], u'\0');
        return buffer.substr(0, length);
    }
    std::u16string All(InstallerHandle database, const char16_t* query) {
        std::u16string texts;
        const InstallerHandle view = Run(database, query);
        for (InstallerHandle row = Next(view); row != 0; row = Next(view)) {
            texts += Text(row, 1) + u';';
            Close(row);
        }
        Close(view);
        return texts;
    }
    void Close(InstallerHandle handle) {
        installer->CloseHandle(handle);
        std::erase(m_open, handle);
    }
    void TearDown() override {
        CloseAll();
        if (!m_path.empty()) (void)CurrentMachine().Files().Delete(m_path.c_str());
    }

    IInstaller* installer = nullptr;

  private:
    InstallerHandle Keep(InstallerHandle handle) {
        if (handle != 0) m_open.push_back(handle);
        return handle;
    }
    // What is open keeps the file open.
    void CloseAll() {
        for (const InstallerHandle handle : m_open) installer->CloseHandle(handle);
        m_open.clear();
    }

    std::vector<InstallerHandle> m_open;
    std::u16string m_path;
};

TEST_P(InstallerContract, Fields_AnswerByTheirKind) {
    if (GetParam() == MachineKind::Live) GTEST_SKIP() << "Wine's service reads real packages alone as Windows does";
    const std::string icon = std::string(20000, 'x') + "end";
    PackageWriter package;
    package.Table("T", {"K s72*", "S i2", "L i4", "N l0", "D v0"});
    package.Row("T", {"one", 12, 70000, "8 Gr", PackageWriter::Blob{icon}});
    package.Row("T", {"two", -1, 0, "42", PackageWriter::Blob{"small"}});
    package.Row("T", {"void", {}, {}, {}, {}});
    package.Row("T", {"ends", -32767, INT32_MAX, "-7x", {}});
    const InstallerHandle database = Open(package.Write());
    const InstallerHandle view = Run(database, u"SELECT * FROM `T`");
    Close(database);  // the view keeps what it stands on
    std::map<std::u16string, InstallerHandle> rows;
    while (const InstallerHandle record = Next(view)) rows[Text(record, 1)] = record;
    EXPECT_EQ(Next(view), 0U);
    Close(view);
    ASSERT_EQ(rows.size(), 4U);

    struct Case {
        const char16_t* row;
        std::uint32_t column;
        const char16_t* text;
        std::int32_t number;
        std::uint32_t size;
    };
    const Case cases[] = {{u"one", 1, u"one", kNullInteger, 3},
                          {u"one", 2, u"12", 12, 4},
                          {u"one", 4, u"8 Gr", kNullInteger, 4},
                          {u"one", 5, u"", kNullInteger, 20003},
                          {u"two", 2, u"-1", -1, 4},
                          {u"two", 4, u"42", 42, 2},
                          {u"ends", 3, u"2147483647", INT32_MAX, 4},
                          {u"ends", 4, u"-7x", kNullInteger, 3},
                          {u"void", 2, u"", kNullInteger, 0},
                          {u"void", 5, u"", kNullInteger, 0}};
    for (const Case& test : cases) {
        SCOPED_TRACE(ToUtf8(test.row) + " " + std::to_string(test.column));
        const InstallerHandle row = rows[test.row];
        if (test.column != 5) {
            EXPECT_EQ(Text(row, test.column), test.text);
        }
        EXPECT_EQ(installer->GetInteger(row, test.column), test.number);
        EXPECT_EQ(installer->GetDataSize(row, test.column), test.size);
    }
    std::string bytes;
    for (std::uint32_t size = 7001;; size = 7001) {
        char part[7001];
        ASSERT_EQ(installer->ReadStream(rows[u"one"], 5, part, size), kErrorSuccess);
        if (size == 0) break;
        bytes.append(part, size);
    }
    EXPECT_TRUE(bytes == icon);
    std::uint32_t size = 3;
    char part[3];
    EXPECT_EQ(installer->ReadStream(rows[u"one"], 1, part, size), kErrorInvalidDatatype);
    EXPECT_EQ(installer->ReadStream(rows[u"one"], 6, part, size), kErrorInvalidParameter);
}

TEST_P(InstallerContract, TextWithoutRoom_IsCutAndTellsItsLength) {
    PackageWriter package;
    package.WideReferences().Table("T", {"K s72*", "V l0"});
    for (const std::size_t length : {1024, 65535, 65536, 70000}) {
        package.Row("T", {std::to_string(length), std::string(length, 'v')});
    }
    package.Row("T", {"20", "behind the long ones"});
    const InstallerHandle view = Run(Open(package.Write()), u"SELECT `K`, `V` FROM `T`");
    for (InstallerHandle row = Next(view); row != 0; row = Next(view)) {
        const std::u16string whole = Text(row, 2);
        SCOPED_TRACE(whole.size());
        EXPECT_EQ(whole.size(), static_cast<std::size_t>(installer->GetInteger(row, 1)));
        char16_t small[8] = u"#######";
        std::uint32_t length = 5;
        EXPECT_EQ(installer->GetString(row, 2, small, length), kErrorMoreData);
        EXPECT_EQ(length, whole.size());
        EXPECT_EQ(std::u16string_view(small), whole.substr(0, 4));
        std::u16string exact(whole.size() + 1, u'#');
        length = static_cast<std::uint32_t>(exact.size());
        EXPECT_EQ(installer->GetString(row, 2, exact.data(), length), kErrorSuccess);
        EXPECT_EQ(length, whole.size());
    }
}

TEST_P(InstallerContract, Texts_ComeInTheCodePageOfTheDatabase) {
    struct Case {
        std::uint32_t page;
        const char* bytes;
        const char16_t* text;
    };
    const Case cases[] = {{0, "Tool", u"Tool"},
                          {1252,
                           "Gr\xF6\xDF"
                           "e \x80",
                           u"Gr\u00F6\u00DFe \u20AC"},
                          {1251, "\xCF\xF0", u"\u041F\u0440"},
                          {1256, "\xC7", u"\u0627"},
                          {874, "\xA1", u"\u0E01"},
                          {932, "\x83\x65\xB1\\", u"\u30C6\uFF71\\"},
                          {936, "\xD6\xD0", u"\u4E2D"},
                          {949, "\xC7\xD1", u"\uD55C"},
                          {950, "\xA4\xA4", u"\u4E2D"},
                          {65001, "\xC3\xA4\xF0\x9F\x98\x80", u"\u00E4\U0001F600"}};
    for (const Case& test : cases) {
        PackageWriter package;
        package.CodePage(test.page).Table("T", {"K s72*"}).Row("T", {test.bytes});
        const InstallerHandle database = Open(package.Write());
        EXPECT_EQ(All(database, u"SELECT `K` FROM `T`"), std::u16string(test.text) + u";") << test.page;
    }
}

TEST_P(InstallerContract, Queries_AnswerTheRowsTheyAskFor) {
    if (GetParam() == MachineKind::Live) GTEST_SKIP() << "Wine's service reads real packages alone as Windows does";
    PackageWriter package;
    package.WideSectors().Table("Empty", {"K s72*"}).Table("Two Words", {"K i2*", "Group s72"});
    package.Row("Two Words", {5, "b"}).Row("Two Words", {3, "a"}).Row("Two Words", {4, "a"}).Row("Two Words", {9, {}});
    package.Stream(u"One.cab", std::string(5000, 'c'));
    const InstallerHandle database = Open(package.Write());
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"SELECT `K` FROM `Two Words`", u"5;3;4;9;"},
        {u"select `Group`, `Two Words`.`K` from `Two Words`", u"b;a;a;;"},
        {u"SELECT `K` FROM `Two Words` WHERE `Group` = 'a'", u"3;4;"},
        {u"SELECT `K` FROM `Two Words` WHERE `Group`='a' AND `K` > 3", u"4;"},
        {u"SELECT `K` FROM `Two Words` WHERE `Group` IS NULL", u"9;"},
        {u"SELECT `K` FROM `Empty`", u""},
        {u"SELECT `Name` FROM `_Tables`", u"Empty;Two Words;"},
        {u"SELECT `Name` FROM `_Columns` WHERE `Table` = 'Two Words'", u"K;Group;"},
        {u"SELECT `Name` FROM `_Streams` WHERE `Name` = 'One.cab'", u"One.cab;"}};
    for (const auto& [query, rows] : cases) EXPECT_EQ(All(database, query), rows) << ToUtf8(query);
    InstallerHandle view = 0;
    for (const char16_t* query :
         {u"SELECT * FROM `Absent`", u"SELECT `Absent` FROM `Empty`", u"SELECT `k` FROM `Empty`",
          u"SELECT FROM `Empty`", u"SELECT `K` FROM `Empty` WHERE", u"nonsense", u""}) {
        EXPECT_EQ(installer->OpenView(database, query, view), kErrorBadQuerySyntax) << ToUtf8(query);
        EXPECT_EQ(view, 0U);
    }
    ASSERT_EQ(installer->OpenView(database, u"SELECT `K` FROM `Empty`", view), kErrorSuccess);
    InstallerHandle record = 0;
    EXPECT_EQ(installer->FetchRecord(view, record), kErrorFunctionFailed);  // not executed yet
}

TEST_P(InstallerContract, OneDatabase_ServesSeveralThreads) {
    // Wine's own database is read by one thread at a time, and so does the system.
    if (GetParam() == MachineKind::Live) GTEST_SKIP();
    PackageWriter package;
    package.Table("T", {"K i4*"});
    for (int i = 1; i <= 500; ++i) package.Row("T", {i});
    const InstallerHandle database = Open(package.Write());
    const auto read = [&] {
        std::int32_t sum = 0;
        InstallerHandle view = 0;
        InstallerHandle row = 0;
        EXPECT_EQ(installer->OpenView(database, u"SELECT `K` FROM `T`", view), kErrorSuccess);
        EXPECT_EQ(installer->ExecuteView(view), kErrorSuccess);
        for (; installer->FetchRecord(view, row) == kErrorSuccess; installer->CloseHandle(row)) {
            sum += installer->GetInteger(row, 1);
        }
        installer->CloseHandle(view);
        EXPECT_EQ(sum, 125250);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(read);
    for (std::thread& thread : threads) thread.join();
}

INSTANTIATE_TEST_SUITE_P(Machines, InstallerContract, ::testing::ValuesIn(AllMachineKinds()), KindName);

}  // namespace
}  // namespace roundup
