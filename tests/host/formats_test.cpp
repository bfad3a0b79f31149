// The tables of the documents against the constants of the code: a reader of stored bytes has only docs/formats.md, and
// one of a log only docs/troubleshooting.md.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
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

// What the groups of the expression match, place after place.
std::vector<std::vector<std::string>> Matches(const std::string& text, const std::string& expression) {
    const std::regex pattern(expression);
    std::vector<std::vector<std::string>> found;
    for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at) {
        found.emplace_back(std::next(at->begin()), at->end());
    }
    return found;
}

std::vector<std::uint32_t> Magics(const std::string& heading) {
    std::vector<std::uint32_t> magics;
    for (const auto& match : Matches(Section(heading), "magic 0x([0-9A-F]{8})")) {
        magics.push_back(static_cast<std::uint32_t>(std::stoul(match[0], nullptr, 16)));
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
    const std::string section = Section("The record of an application");
    const auto rows = Matches(section, "\\| (\\d+) \\| (\\d+) \\| `(\\w+)` \\|");
    ASSERT_EQ(rows.size(), std::size(fields));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_THAT(rows[i],
                    ElementsAre(std::to_string(fields[i].offset), std::to_string(fields[i].size), fields[i].name));
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
    for (const auto& match : Matches(section, "\\| 0x(\\w+) \\| `(\\w+)` \\|")) {
        told[match[1]] = std::stoull(match[0], nullptr, 16);
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
    const std::string section = Section("The store of a gathered application");
    for (const auto& row : Matches(section.substr(section.find("| Type |")), "\n\\| (\\d[\\d, ]*) \\|")) {
        for (const auto& number : Matches(row[0], "(\\d+)")) {
            told.insert(static_cast<std::uint32_t>(std::stoul(number[0])));
        }
    }
    EXPECT_EQ(told, known);
}

TEST(Formats, Codes_AreThoseOfTheResults) {
    std::map<std::string, SmallCode> told;
    for (const auto& row : Matches(Document("troubleshooting.md"), "\\| 0x(\\w\\w) \\| (\\d+) \\| `(\\w+)` \\|")) {
        const unsigned long code = std::stoul(row[0], nullptr, 16);
        EXPECT_EQ(row[1], std::to_string(code));
        told[row[2]] = static_cast<SmallCode>(code);
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
