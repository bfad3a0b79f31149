// Logs of hives: which of them continue a hive, in what order, and those that do not.
#include "platform/recorded/registry/hivelogs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "tests/support/hivelogwriter.h"

namespace roundup {
namespace {

constexpr std::uint32_t kPage = 4096;
constexpr std::uint32_t kNewLog = 6;
constexpr std::uint32_t kOldLog = 1;

// Two pages of blocks, all 'a'; the write with the number 7 has ended, that with 8 has begun.
std::string Hive() {
    std::string hive = "regf" + std::string(kPage - 4, '\0') + std::string(2 * kPage, 'a');
    PutNumber(hive, 40, 2 * kPage);
    SetHiveHeader(hive, 8, 7, 0);
    return hive;
}

std::string Entry(std::uint32_t number, std::uint32_t page, char fill, std::uint32_t pages = 2) {
    return HiveLogEntry(number, pages * kPage, {{page * kPage, std::string(kPage, fill)}});
}

std::string NewLog(const std::string& entries) { return HiveLog(Hive(), 8, kNewLog, entries); }

std::string OldLog(std::uint32_t number) {
    std::string bits(2, '\0');
    bits[0] = 0x02;
    bits[1] = 0x01;
    std::string rest = "DIRT" + bits;
    rest.resize(512);
    return HiveLog(Hive(), number, kOldLog, rest + std::string(512, 'x') + std::string(512, 'y'));
}

// The pages of the hive with the logs applied, a letter each; "-" when they tell nothing.
std::string Pages(const std::string& hive, const std::vector<std::string>& logs) {
    std::vector<std::span<const std::byte>> views;
    std::ranges::transform(logs, std::back_inserter(views), BytesOf);
    const auto whole = ReplayHiveLogs(BytesOf(hive), views);
    if (!whole) return "-";
    EXPECT_FALSE(IsHiveDirty(*whole));
    std::string letters;
    for (std::size_t at = kPage; at < whole->size(); at += kPage) letters += static_cast<char>((*whole)[at]);
    return letters;
}

TEST(HiveLogs, Hash_IsThePublishedOne) {
    constexpr std::uint64_t kSeed = 0x004FB61A001BDBCC;
    const std::string byte("\xAF");
    const std::string bytes("\xE7\x0F");
    EXPECT_EQ(MarvinHash({}, kSeed), 0x30ED35C100CD3C7DU);
    EXPECT_EQ(MarvinHash(BytesOf(byte), kSeed), 0x48E73FC77D75DDC1U);
    EXPECT_EQ(MarvinHash(BytesOf(bytes), kSeed), 0xB5F6E1FC485DBFF8U);
}

TEST(HiveLogs, LogsThatContinueTheHive_AreAppliedInTheirOrder) {
    std::string changed = NewLog(Entry(7, 0, 'b'));
    changed[512 + 60] = 'z';
    std::string lying = Entry(7, 5, 'b');
    const struct {
        const char* what;
        std::vector<std::string> logs;
        const char* pages;
    } cases[] = {
        {"no log", {}, "-"},
        {"the last write", {NewLog(Entry(7, 0, 'b'))}, "ba"},
        {"a later one over it", {NewLog(Entry(7, 0, 'b') + Entry(8, 0, 'c'))}, "ca"},
        {"two logs, the later first", {NewLog(Entry(8, 0, 'c')), NewLog(Entry(7, 0, 'b') + Entry(6, 1, 'o'))}, "ca"},
        {"what the hive has already", {NewLog(Entry(5, 0, 'o') + Entry(6, 0, 'o') + Entry(7, 1, 'b'))}, "ab"},
        {"a hive that grows", {NewLog(Entry(7, 2, 'b', 3))}, "aab"},
        {"remains behind the last", {NewLog(Entry(7, 0, 'b') + Entry(3, 1, 'o'))}, "ba"},
        {"a gap inside", {NewLog(Entry(7, 0, 'b')), NewLog(Entry(9, 1, 'c'))}, "ba"},
        {"a gap in front", {NewLog(Entry(9, 0, 'b'))}, "-"},
        {"older writes alone", {NewLog(Entry(6, 0, 'b'))}, "-"},
        {"a changed entry", {changed}, "-"},
        {"a page behind the blocks", {NewLog(lying)}, "-"},
        {"blocks that no hive has", {NewLog(Entry(7, 0, 'b', 0x80000))}, "-"},
        {"blocks that the log does not have", {NewLog(Entry(7, 2, 'b', 4))}, "-"},
        {"a log cut short", {NewLog(Entry(7, 0, 'b')).substr(0, 4000)}, "-"},
        {"no log at all", {"", "HvLE", std::string(9000, 'x')}, "-"},
        {"the old form", {OldLog(7)}, "ay"},
        {"the old form, told during the write", {OldLog(8)}, "ay"},
        {"the old form of another time", {OldLog(6)}, "-"},
        {"the old form cut short", {OldLog(7).substr(0, 1600)}, "-"},
    };
    for (const auto& one : cases) EXPECT_EQ(Pages(Hive(), one.logs), one.pages) << one.what;
    std::string clean = Hive();
    SetHiveHeader(clean, 8, 8, 0);
    EXPECT_EQ(Pages(clean, {NewLog(Entry(8, 0, 'b'))}), "-");
}

}  // namespace
}  // namespace roundup
