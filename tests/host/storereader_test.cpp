// The reader of store pairs: each type of record, and records that lie.
#include "host/storereader.h"

#include <gtest/gtest.h>

#include "appcenter/appconifgfile/appconfigstore.h"
#include "msianalyzer/itemcallback.h"
#include "utility/utf.h"

namespace roundup::host {
namespace {

std::span<const std::byte> Bytes(const StoreRecord& record) { return {record.Data(), record.Size()}; }

// A record of the shape: s text "t1", "t2", ..., d and q numbers 1, 2, ...; b two bytes of data with their size.
StoreRecord Make(std::string_view fields) {
    StoreRecord record;
    std::uint32_t number = 0;
    for (const char field : fields) {
        ++number;
        if (field == 's') record.String(u"t" + FromUtf8(std::to_string(number)));
        if (field == 'd') record.Dword(number);
        if (field == 'q') record.Qword(number);
        if (field == 'e') record.Dword(0xFFFFFFFF);
        if (field == 'b') {
            record.Dword(2);
            record.Bytes("xy", 2);
        }
    }
    return record;
}

std::string Describe(const std::vector<StoreItem>& items) {
    std::string text;
    for (const StoreItem& item : items) {
        if (item.root != 0) {
            text += std::to_string(item.root) + " " + ToUtf8(item.key) + " " + ToUtf8(item.name) + " " +
                    std::to_string(item.valueType) + " " + std::to_string(item.data.size()) + " " +
                    std::to_string(item.flags);
        }
        for (const std::u16string& one : item.texts) text += ToUtf8(one) + " ";
        for (const std::uint32_t one : item.numbers) text += std::to_string(one) + " ";
        text += ";";
    }
    return text;
}

// Every record cut at each byte must be refused, and none may bring more than the whole one does.
TEST(StoreReader, RecordsOfEveryType_AreReadWholeAndRefusedWhenCut) {
    const struct {
        std::uint32_t type;
        std::string_view fields;
        std::string_view items;
    } cases[] = {
        {ItemType::kRegistry, "qssdbdqssdbde", "1 t2 t3 4 2 6;7 t8 t9 10 2 12;"},
        {ItemType::kRegistry, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kUninstallRegistry, "dssdbde", "1 t2 t3 4 2 6;"},
        {ItemType::kUninstallRegistry, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kUninstallRegistry, "e", ""},
        {ItemType::kProductRegistry, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kComponentRegistry, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kPatchRegistry, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kSideBySide, "qssdbdee", "1 t2 t3 4 2 6;"},
        {ItemType::kShortcut, "ssssssde", "t1 t2 t3 t4 t5 t6 7 ;"},
        {ItemType::kService, "ssdddssssssse", "t1 t2 t6 t7 t8 t9 t10 t11 t12 3 4 5 ;"},
        {ItemType::kSelfRegistration, "sssse", "t1 t2 ;t3 t4 ;"},
        {ItemType::kIni, "sssse", "t1 t2 t3 t4 ;"},
        {ItemType::kDriver, "ssse", "t1 t2 t3 ;"},
        {ItemType::kHelpNamespace, "ssse", "t1 t2 t3 ;"},
    };
    for (const auto& one : cases) {
        const StoreRecord record = Make(one.fields);
        std::vector<StoreItem> items;
        EXPECT_TRUE(ReadStoreRecord(one.type, Bytes(record), items)) << one.type << one.fields;
        EXPECT_EQ(Describe(items), one.items) << one.type << one.fields;
        // What the analysis wrote of type 4 is a record of the store's own when the half of its end mark is gone.
        const bool halves = one.type == ItemType::kRegistry && one.fields.ends_with("ee");
        for (std::size_t size = 1; size < record.Size() - (halves ? 4 : 0); ++size) {
            std::vector<StoreItem> some;
            EXPECT_FALSE(ReadStoreRecord(one.type, Bytes(record).first(size), some)) << one.type << " at " << size;
            EXPECT_LE(some.size(), items.size());
        }
    }
    std::vector<StoreItem> items;
    EXPECT_FALSE(ReadStoreRecord(5, Bytes(Make("e")), items));
    EXPECT_FALSE(ReadStoreRecord(ItemType::kDriver, Bytes(Make("sssee")), items));
}

TEST(StoreReader, Entries_NeedTheirMarkAndStayInsideOfTheData) {
    StoreIndexEntry entry[2];
    entry[0].type = 4;
    entry[0].size = 3;
    entry[1].offset = 0xFFFFFFFFFFFFFFF0U;
    entry[1].size = 0x20;
    const auto index = std::as_bytes(std::span(entry));
    StorePair pair;
    ASSERT_TRUE(ReadStoreIndex(index, pair.entries));
    pair.data.resize(3);
    EXPECT_EQ(pair.Record(pair.entries[0]).size(), 3U);
    EXPECT_TRUE(pair.Record(pair.entries[1]).empty());
    EXPECT_FALSE(ReadStoreIndex(index.first(47), pair.entries));
    entry[1].magic = 0;
    EXPECT_FALSE(ReadStoreIndex(index, pair.entries));
}

}  // namespace
}  // namespace roundup::host
