// Damaged and hostile installer databases: each answers an error or rows, and nothing else happens.
#include <algorithm>
#include <cstring>

#include "platform/recorded/installer/installerdatabase.h"
#include "platform/recorded/installer/streamname.h"
#include "tests/support/machinetest.h"
#include "tests/support/packagewriter.h"

namespace roundup {
namespace {

PackageWriter Package(bool wide = false) {
    PackageWriter package;
    if (wide) package.WideSectors();
    package.Table("T", {"K s72*", "N i2", "D v0"}).Row("T", {"one", 1, PackageWriter::Blob{"small"}});
    package.Row("T", {"two", 2, PackageWriter::Blob{std::string(9000, 'x')}}).Row("T", {"three", 3, {}});
    package.Table("Big", {"K i4*"}).Stream(u"Big", std::string(6000, '\1'), true);
    return package;
}

std::size_t WordAt(const std::string& bytes, std::size_t at) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

void PutWord(std::string& bytes, std::size_t at, std::uint32_t word) {
    std::memcpy(bytes.data() + at, &word, sizeof word);
}

class InstallerDamage : public MachineTest {
  protected:
    // The rows of all tables that are asked for, and what their streams have; the first error ends a table.
    struct Reading {
        Win32Error open = kErrorSuccess;
        Win32Error view = kErrorSuccess;
        Win32Error execute = kErrorSuccess;
        std::uint32_t rows = 0;
        std::uint64_t bytes = 0;
        std::size_t longest = 0;  // of the fields
    };
    Reading Read(const std::string& bytes, std::initializer_list<const char16_t*> queries) {
        MachineBuilder one;
        one.File(u"C:\\a.msi", bytes);
        Start(one.Build());
        Reading reading;
        std::shared_ptr<InstallerDatabase> database;
        reading.open = OpenInstallerDatabase(CurrentMachine().Files(), u"C:\\a.msi", database);
        if (reading.open != kErrorSuccess) return reading;
        for (const char16_t* query : queries) {
            std::shared_ptr<InstallerView> view;
            reading.view = database->OpenView(query, view);
            if (reading.view != kErrorSuccess) continue;
            reading.execute = view->Execute();
            std::shared_ptr<InstallerRecord> record;
            // Of a million rows the first thousands are like the others.
            for (; view->Fetch(record) == kErrorSuccess; ++reading.rows) {
                if (reading.rows < 5000) ReadRow(*record, reading);
            }
        }
        return reading;
    }
    static void ReadRow(InstallerRecord& record, Reading& reading) {
        for (std::uint32_t column = 1; column <= 3; ++column) {
            char16_t text[16];
            std::uint32_t length = 16;
            (void)record.Text(column, text, length);
            (void)record.Integer(column);
            std::vector<std::byte> bytes(record.DataSize(column) + 1);
            reading.longest = std::max(reading.longest, bytes.size() - 1);
            auto size = static_cast<std::uint32_t>(bytes.size());
            if (record.ReadStream(column, bytes.data(), size) == kErrorSuccess) reading.bytes += size;
        }
    }
    Reading ReadAll(const std::string& bytes) {
        return Read(bytes, {u"SELECT * FROM `T`", u"SELECT * FROM `Big`", u"SELECT * FROM `_Streams`",
                            u"SELECT * FROM `_Columns`"});
    }
};

TEST_F(InstallerDamage, Circles_AreRefused) {
    const std::string whole = Package().Write();
    const std::size_t fat = (WordAt(whole, 76) + 1) * 512;
    // Each chain of sectors led back to its second one, in turn; the longest is that of nine thousand bytes.
    std::uint32_t circles = 0;
    for (std::uint32_t sector = 2; sector < 60; ++sector) {
        std::string broken = whole;
        if (WordAt(broken, fat + sector * 4) != sector + 1) continue;
        PutWord(broken, fat + sector * 4, sector - 1);
        const Reading reading = ReadAll(broken);
        ++circles;
        EXPECT_TRUE(reading.open != kErrorSuccess || reading.rows < 1509 || reading.bytes < 2 * 9005U) << sector;
    }
    EXPECT_GT(circles, 20U);
    const std::size_t directory = (WordAt(whole, 48) + 1) * 512;
    for (const std::size_t link : {68, 72}) {
        std::string broken = whole;
        PutWord(broken, directory + 128 + link, 1);  // an entry beside itself
        EXPECT_EQ(ReadAll(broken).open, kErrorOpenFailed);
    }
}

TEST_F(InstallerDamage, LyingTables_AnswerTheirOwnErrors) {
    const std::string four(4, '\0');
    struct Case {
        const char* what;
        PackageWriter package;
        Win32Error open;
        Win32Error view;
        Win32Error execute;
    };
    const auto columnsOf = [](std::uint16_t number, std::uint16_t type) {
        // One row: the table of text 1, a column of text 2.
        const std::uint16_t words[] = {1, static_cast<std::uint16_t>(number ^ 0x8000U), 2,
                                       static_cast<std::uint16_t>(type ^ 0x8000U)};
        PackageWriter package = Package();
        package.Stream(u"_Columns", {reinterpret_cast<const char*>(words), sizeof words}, true);
        return package;
    };
    const Case cases[] = {
        {"lengths beyond the texts", Package().Stream(u"_StringPool", four + std::string("\xFF\xFF\1\0", 4), true),
         kErrorOpenFailed, 0, 0},
        {"a long text cut off", Package().Stream(u"_StringPool", four + std::string("\0\0\1\0", 4), true),
         kErrorOpenFailed, 0, 0},
        {"no lengths", Package().Stream(u"_StringPool", "", true), kErrorOpenFailed, 0, 0},
        {"a code page of nobody", Package().Stream(u"_StringPool", std::string("\x39\x30\0\0", 4), true),
         kErrorOpenFailed, 0, 0},
        {"columns cut off", Package().Stream(u"_Columns", "abc", true), kErrorOpenFailed, 0, 0},
        {"no columns", Package().Stream(u"_Columns", "", true), kErrorSuccess, kErrorBadQuerySyntax, 0},
        {"a column missing", columnsOf(2, 0x2D00), kErrorSuccess, kErrorBadQuerySyntax, 0},
        {"a number of three bytes", columnsOf(1, 0x0103), kErrorSuccess, kErrorBadQuerySyntax, 0},
        {"the one column a number", columnsOf(1, 0x2502), kErrorSuccess, 0, 0},
        {"rows cut off", Package().Stream(u"T", "1234567", true), kErrorSuccess, 0, kErrorFunctionFailed}};
    for (const Case& test : cases) {
        const Reading reading = Read(test.package.Write(), {u"SELECT * FROM `T`"});
        EXPECT_EQ(reading.open, test.open) << test.what;
        EXPECT_EQ(reading.view, test.view) << test.what;
        EXPECT_EQ(reading.execute, test.execute) << test.what;
    }
    PackageWriter million = Package();
    million.Stream(u"Big", std::string(4000000, '\2'), true);
    EXPECT_EQ(Read(million.Write(), {u"SELECT * FROM `Big`"}).rows, 1000000U);
}

// A count of uses that is not the upper half of a long text's length stands in its place with some writers.
TEST_F(InstallerDamage, LongTexts_AreReadInBothForms) {
    PackageWriter package;
    package.Table("T", {"K s72*", "V l0"}).Row("T", {"one", std::string(70000, 'v')});
    const std::string whole = package.Write();
    const std::string entry("\0\0\1\0\x70\x11\1\0", 8);
    const std::size_t at = whole.find(entry);
    ASSERT_NE(at, std::string::npos);
    std::string other = whole;
    other[at + 2] = 3;  // used three times, as the other writers tell it
    for (const std::string& bytes : {whole, other}) {
        const Reading reading = Read(bytes, {u"SELECT * FROM `T`"});
        EXPECT_EQ(reading.rows, 1U);
        EXPECT_EQ(reading.longest, 70000U);
    }
}

}  // namespace
}  // namespace roundup
