// The tables of the documents against the constants of the code: a reader of stored bytes has only docs/formats.md, and
// one of a log only docs/troubleshooting.md.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "appcenter/app/apprecord.h"
#include "appcenter/app/recordformat.h"
#include "appcenter/appconifgfile/appconfigstore.h"
#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "externfuncinc/roundup.h"
#include "host/storereader.h"
#include "msianalyzer/cachefile.h"
#include "utility/result.h"

namespace roundup {
namespace {

using testing::ElementsAre;

std::string Document(const char* name) {
    const std::ifstream file(std::string(ROUNDUP_SOURCE_DIR) + "/docs/" + name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// What stands below a heading of formats.md, up to the next one.
std::string Section(const std::string& heading) {
    static const std::string document = Document("formats.md");
    const std::size_t start = document.find("\n## " + heading + "\n");
    EXPECT_NE(start, std::string::npos) << heading;
    return start == std::string::npos ? "" : document.substr(start, document.find("\n## ", start + 1) - start);
}

// The rows of the tables in a text, cell by cell, without what marks a cell as code.
std::vector<std::vector<std::string>> Rows(const std::string& text) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("| ")) continue;
        std::vector<std::string>& cells = rows.emplace_back();
        for (std::size_t start = 1, end = 0; (end = line.find('|', start)) != std::string::npos; start = end + 1) {
            std::string cell = line.substr(start, end - start);
            std::erase_if(cell, [](char c) { return c == ' ' || c == '`'; });
            cells.push_back(cell);
        }
    }
    return rows;
}

bool IsHex(const std::string& cell) { return cell.starts_with("0x"); }

std::uint64_t Number(const std::string& cell) { return std::stoull(cell, nullptr, 0); }

std::vector<std::uint32_t> Magics(const std::string& heading) {
    constexpr std::string_view kMark = "magic 0x";
    const std::string section = Section(heading);
    std::vector<std::uint32_t> magics;
    for (std::size_t at = 0; (at = section.find(kMark, at)) != std::string::npos; at += kMark.size()) {
        magics.push_back(static_cast<std::uint32_t>(std::stoul(section.substr(at + kMark.size(), 8), nullptr, 16)));
    }
    return magics;
}

TEST(Formats, Record_StandsAsTheHeaderHasIt) {
    struct Field {
        const char* name;
        std::size_t offset;
        std::size_t size;
    };
#define FIELD(name) \
    { #name, offsetof(_RoundupAppInfo_, name), sizeof(_RoundupAppInfo_::name) }
    const Field fields[] = {FIELD(wzName),           FIELD(wzPublisher),
                            FIELD(wzInstallDate),    FIELD(wzKeyString),
                            FIELD(wzRealInstallLoc), FIELD(wzInstallLoc),
                            FIELD(qwFlags),          FIELD(qwSize),
                            FIELD(bFramework),       {"dwReserved", 3137, sizeof(_tagAppInfo::dwReserved)}};
#undef FIELD
    const auto rows = Rows(Section("The record of an application"));
    const auto first = std::ranges::find_if(rows, [](const auto& row) { return row[0] == "0"; });
    ASSERT_GE(rows.end() - first, std::ssize(fields));
    for (std::size_t i = 0; i < std::size(fields); ++i) {
        const std::vector<std::string>& row = first[static_cast<std::ptrdiff_t>(i)];
        EXPECT_EQ(row[2], fields[i].name);
        EXPECT_EQ(Number(row[0]), fields[i].offset) << row[2];
        EXPECT_EQ(Number(row[1]), fields[i].size) << row[2];
    }
    const std::map<std::string, std::uint64_t> flags{
        {"k64Bit", AppFlags::k64Bit},
        {"kNotTopLevel", AppFlags::kNotTopLevel},
        {"kWindowsInstaller", AppFlags::kWindowsInstaller},
        {"k32BitImages", AppFlags::k32BitImages},
        {"kCurrentUser", AppFlags::kCurrentUser},
        {"k64BitView", AppFlags::k64BitView},
    };
    std::map<std::string, std::uint64_t> told;
    for (const auto& row : rows) {
        if (IsHex(row[0])) told[row[1]] = Number(row[0]);
    }
    EXPECT_EQ(told, flags);
}

TEST(Formats, Magics_AreThoseOfTheCode) {
    EXPECT_THAT(Magics("The stored application"), ElementsAre(kAppMagic, kFileMagic, kAliasMagic));
    EXPECT_THAT(Magics("The stored store package"), ElementsAre(kPackageMagic));
    EXPECT_THAT(Magics("The store of a gathered application"), ElementsAre(StoreIndexEntry::kMagic));
    EXPECT_THAT(Magics("The cache of the database server"), ElementsAre(kSqlServerCacheMagic));
    EXPECT_THAT(Magics("What is kept of the machine between processes"),
                ElementsAre(kComponentsMagic, kReferrersMagic));
}

// Each type that the reader knows stands in one row, and no other does.
TEST(Formats, TypesOfRecords_AreThoseThatTheReaderKnows) {
    std::multiset<std::uint32_t> known;
    for (std::uint32_t type = 0; type < 256; ++type) {
        std::vector<host::StoreItem> items;
        if (host::ReadStoreRecord(type, {}, items)) known.insert(type);
    }
    std::multiset<std::uint32_t> told;
    bool isTable = false;
    for (const auto& row : Rows(Section("The store of a gathered application"))) {
        if (isTable) {
            std::istringstream numbers(row[0]);
            for (std::string number; std::getline(numbers, number, ',');) {
                told.insert(static_cast<std::uint32_t>(Number(number)));
            }
        }
        isTable = isTable || row[0] == "Type";
    }
    EXPECT_EQ(told, known);
}

TEST(Formats, Codes_AreThoseOfTheResults) {
    std::map<std::string, SmallCode> told;
    for (const auto& row : Rows(Document("troubleshooting.md"))) {
        if (!IsHex(row[0])) continue;
        EXPECT_EQ(Number(row[0]), Number(row[1]));
        told[row[2]] = static_cast<SmallCode>(Number(row[0]));
    }
    const std::map<std::string, SmallCode> codes{
#define CODE(name) {#name, SmallCode::name}
        CODE(GeneralFailure),   CODE(BadArgument),      CODE(BadData),      CODE(OpenFailure),
        CODE(BufferAllocation), CODE(ShortRead),        CODE(NoMoreItems),  CODE(BadHandle),
        CODE(ObjectAllocation), CODE(ShortWrite),       CODE(Cancelled),    CODE(ObjectMissing),
        CODE(NotAvailable),     CODE(InstallerFailure), CODE(PathNotFound), CODE(Win32Failure),
#undef CODE
    };
    EXPECT_EQ(told, codes);
}

}  // namespace
}  // namespace roundup
