// Installer databases of recorded machines, as shipped by others.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/support/machinetest.h"

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
