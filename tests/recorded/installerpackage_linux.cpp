// Installer databases of recorded machines, made by the tools of the system and as shipped by others.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

std::string ReadWhole(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class InstallerDatabase : public MachineTest {
  protected:
    InstallerHandle Open(const std::string& bytes) {
        builder.File(u"C:\\a.msi", bytes);
        installer = &Start().Installer();
        InstallerHandle database = 0;
        EXPECT_EQ(installer->OpenDatabase(u"C:\\a.msi", database), kErrorSuccess);
        return database;
    }
    InstallerHandle Run(InstallerHandle database, const char16_t* query) const {
        InstallerHandle view = 0;
        EXPECT_EQ(installer->OpenView(database, query, view), kErrorSuccess);
        EXPECT_EQ(installer->ExecuteView(view), kErrorSuccess);
        return view;
    }
    InstallerHandle Next(InstallerHandle view) const {
        InstallerHandle record = 0;
        const Win32Error error = installer->FetchRecord(view, record);
        EXPECT_EQ(error, record != 0 ? kErrorSuccess : kErrorNoMoreItems);
        return record;
    }
    std::u16string Text(InstallerHandle record, std::uint32_t column) const {
        char16_t buffer[260] = {};
        std::uint32_t length = 260;
        EXPECT_EQ(installer->GetString(record, column, buffer, length), kErrorSuccess);
        EXPECT_EQ(length, std::u16string_view(buffer).size());
        return buffer;
    }

    IInstaller* installer = nullptr;
};

TEST_F(InstallerDatabase, Fields_AnswerByTheirKind) {
    if (std::system("command -v msibuild > /dev/null") != 0) GTEST_SKIP() << "no msibuild";
    const TempFolder folder;
    const std::string file = folder.Text() + "/a.msi";
    const std::string icon(20000, 'x');
    std::ofstream(folder.Text() + "/Icon.one", std::ios::binary) << icon << "end";
    const std::string command =
        "msibuild '" + file +
        "' -q \"CREATE TABLE \\`T\\` (\\`K\\` CHAR(72) NOT NULL, \\`S\\` SHORT, "
        "\\`L\\` LONG, \\`N\\` CHAR(0) PRIMARY KEY \\`K\\`)\" "
        "-q \"INSERT INTO \\`T\\` (\\`K\\`, \\`S\\`, \\`L\\`, \\`N\\`) VALUES ('one', 12, 70000, '8 Größe')\" "
        "-q \"INSERT INTO \\`T\\` (\\`K\\`, \\`S\\`, \\`L\\`, \\`N\\`) VALUES ('two', -1, 0, '42')\" "
        "-q \"INSERT INTO \\`T\\` (\\`K\\`) VALUES ('void')\" -a Icon.one '" +
        folder.Text() + "/Icon.one'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    const InstallerHandle database = Open(ReadWhole(file));
    const InstallerHandle view = Run(database, u"SELECT * FROM `T`");
    installer->CloseHandle(database);  // the view keeps what it stands on
    std::map<std::u16string, InstallerHandle> rows;
    while (const InstallerHandle record = Next(view)) rows[Text(record, 1)] = record;
    EXPECT_EQ(Next(view), 0U);
    installer->CloseHandle(view);
    ASSERT_EQ(rows.size(), 3U);

    EXPECT_EQ(installer->GetInteger(rows[u"one"], 2), 12);
    EXPECT_EQ(installer->GetInteger(rows[u"one"], 3), 70000);
    EXPECT_EQ(Text(rows[u"one"], 3), u"70000");
    EXPECT_EQ(Text(rows[u"one"], 4), u"8 Größe");
    EXPECT_EQ(installer->GetDataSize(rows[u"one"], 3), 4U);
    EXPECT_EQ(installer->GetDataSize(rows[u"one"], 4), 7U);
    EXPECT_EQ(installer->GetInteger(rows[u"one"], 1), kNullInteger);
    EXPECT_EQ(installer->GetInteger(rows[u"two"], 2), -1);
    EXPECT_EQ(installer->GetInteger(rows[u"two"], 3), 0);
    EXPECT_EQ(installer->GetInteger(rows[u"two"], 4), 42);
    for (const std::uint32_t column : {2U, 3U, 4U, 5U, 1000U, UINT32_MAX}) {
        EXPECT_EQ(Text(rows[u"void"], column), u"") << column;
        EXPECT_EQ(installer->GetInteger(rows[u"void"], column), kNullInteger) << column;
        EXPECT_EQ(installer->GetDataSize(rows[u"void"], column), 0U) << column;
    }
    char16_t small[4] = u"zzz";
    std::uint32_t length = 3;
    EXPECT_EQ(installer->GetString(rows[u"one"], 1, small, length), kErrorMoreData);
    EXPECT_EQ(length, 3U);
    EXPECT_EQ(std::u16string_view(small), u"on");
    EXPECT_EQ(installer->ReadStream(rows[u"one"], 1, small, length), kErrorInvalidDatatype);
    EXPECT_EQ(installer->ReadStream(rows[u"one"], 5, small, length), kErrorInvalidParameter);

    InstallerHandle again = 0;
    ASSERT_EQ(installer->OpenDatabase(u"C:\\a.msi", again), kErrorSuccess);
    const InstallerHandle stream = Next(Run(again, u"SELECT `Name`, `Data` FROM `_Streams` WHERE `Name` = 'Icon.one'"));
    ASSERT_NE(stream, 0U);
    EXPECT_EQ(installer->GetDataSize(stream, 2), icon.size() + 3);
    std::string bytes;
    for (std::uint32_t size = 7001;; size = 7001) {
        char part[7001];
        ASSERT_EQ(installer->ReadStream(stream, 2, part, size), kErrorSuccess);
        if (size == 0) break;
        bytes.append(part, size);
    }
    EXPECT_TRUE(bytes == icon + "end");
}

TEST_F(InstallerDatabase, ShippedPackage_AnswersFromSeveralThreads) {
    const auto path = std::filesystem::path(ROUNDUP_SHARED_DATA) / "msi/putty-0.68-installer.msi";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no shared data";
    const InstallerHandle database = Open(ReadWhole(path));
    InstallerHandle view = 0;
    for (const char16_t* query : {u"SELECT * FROM `Absent`", u"SELECT `Absent` FROM `File`", u"nonsense", u""}) {
        EXPECT_EQ(installer->OpenView(database, query, view), kErrorBadQuerySyntax);
        EXPECT_EQ(view, 0U);
    }
    ASSERT_EQ(installer->OpenView(database, u"SELECT * FROM `File`", view), kErrorSuccess);
    InstallerHandle record = 0;
    EXPECT_EQ(installer->FetchRecord(view, record), kErrorFunctionFailed);  // not executed yet
    const auto read = [&] {
        int files = 0;
        std::int64_t bytes = 0;
        const InstallerHandle rows = Run(database, u"SELECT * FROM `File`");
        while (const InstallerHandle row = Next(rows)) {
            ++files;
            bytes += installer->GetInteger(row, 4);
            installer->CloseHandle(row);
        }
        const InstallerHandle icon = Next(Run(database, u"SELECT * FROM `Icon`"));
        EXPECT_EQ(Text(icon, 1), u"installericon.exe");
        EXPECT_EQ(installer->GetDataSize(icon, 2), 11478U);
        char start[6] = {};
        std::uint32_t size = 6;
        EXPECT_EQ(installer->ReadStream(icon, 2, start, size), kErrorSuccess);
        EXPECT_EQ(std::string_view(start, 6), std::string_view("\0\0\1\0\x09\0", 6));  // an .ico file of nine images
        EXPECT_EQ(files, 10);
        EXPECT_EQ(bytes, 3208629);
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back(read);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace roundup
