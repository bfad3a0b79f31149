// Identifiers, access lists and values of the SAM as bytes.
#include <gtest/gtest.h>

#include "platform/recorded/openmachine.h"
#include "platform/recorded/security/offlineaccounts.h"
#include "platform/recorded/security/samvalues.h"
#include "platform/recorded/security/wellknownaccounts.h"
#include "tests/support/machinetest.h"
#include "utility/utf.h"

namespace roundup {
namespace {

std::string Little(std::uint32_t number, int bytes = 4) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(number >> (8 * i)));
    return text;
}

std::string SidBytes(std::uint8_t authority, const std::vector<std::uint32_t>& parts) {
    std::string bytes{1, static_cast<char>(parts.size()), 0, 0, 0, 0, 0, static_cast<char>(authority)};
    for (const std::uint32_t part : parts) bytes += Little(part);
    return bytes;
}

std::string Entry(std::uint8_t kind, const std::string& rest) {
    const auto size = static_cast<std::uint32_t>(rest.size() + 8);
    return Little(kind, 2) + Little(size, 2) + Little(0xF003F) + rest;
}

std::string Descriptor(std::uint32_t count, const std::string& entries, std::uint32_t control = 0x8004) {
    const auto size = static_cast<std::uint32_t>(entries.size() + 8);
    return Little(1, 2) + Little(control, 2) + Little(0) + Little(0) + Little(0) + Little(20) + Little(2, 2) +
           Little(size, 2) + Little(count) + entries;
}

std::string Shown(const std::vector<Sid>& sids) {
    std::string text;
    for (const Sid& sid : sids) text += (text.empty() ? "" : " ") + ToUtf8(sid.Text());
    return text;
}

ByteView View(const std::string& bytes) { return ByteView(std::as_bytes(std::span(bytes))); }

std::string AliasValue(std::uint32_t offset, std::uint32_t size, std::uint32_t count, const std::string& data) {
    return std::string(0x28, '\0') + Little(offset) + Little(size) + Little(count) + data;
}

const std::string kSystem = SidBytes(5, {18});
const std::string kUsers = SidBytes(5, {32, 545});

TEST(SecurityDescriptor, ListsWhatItsEntriesNameAndEndsAtDamage) {
    const std::string two = Entry(0, kUsers) + Entry(1, kSystem);
    const struct {
        const char* what;
        std::string bytes;
        const char* sids;
    } rows[] = {
        {"allowed and denied", Descriptor(2, two), "S-1-5-32-545 S-1-5-18"},
        {"object entries name nobody here", Descriptor(3, Entry(5, kUsers) + two), "S-1-5-32-545 S-1-5-18"},
        {"fewer than counted", Descriptor(9, two), "S-1-5-32-545 S-1-5-18"},
        {"no list", Descriptor(2, two, 0x8000), ""},
        {"absolute", Descriptor(2, two, 0x0004), ""},
        {"an entry of no size", Descriptor(2, Entry(0, kSystem) + Little(0) + two), "S-1-5-18"},
        {"too many parts", Descriptor(1, Entry(0, SidBytes(5, std::vector<std::uint32_t>(16, 7)))), ""},
        {"an identifier that leaves its entry", Descriptor(2, Entry(0, kUsers.substr(0, 12)) + two), "S-1-5-32-545"},
        {"a large authority", Descriptor(1, Entry(0, std::string("\1\1\1\2\3\4\5\6", 8) + Little(9))),
         "S-1-0x010203040506-9"},
    };
    for (const auto& row : rows) EXPECT_EQ(Shown(ReadAccessList(View(row.bytes))), row.sids) << row.what;
    const std::string whole = Descriptor(2, two);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_EQ(Shown(ReadAccessList(View(whole.substr(0, size)))), "") << "cut at " << size;
    }
}

TEST(SamValues, MembersEndWithTheirBytes) {
    const std::string data = "name" + kUsers + kSystem;
    const auto size = static_cast<std::uint32_t>(kUsers.size() + kSystem.size());
    EXPECT_EQ(Shown(ReadAliasMembers(View(AliasValue(4, size, 2, data)))), "S-1-5-32-545 S-1-5-18");
    EXPECT_EQ(Shown(ReadAliasMembers(View(AliasValue(4, size, 0xFFFFFFFF, data)))), "S-1-5-32-545 S-1-5-18");
    EXPECT_EQ(Shown(ReadAliasMembers(View(AliasValue(4, size, 1, data)))), "S-1-5-32-545");
    EXPECT_EQ(Shown(ReadAliasMembers(View(AliasValue(0xFFFFFFFF, size, 2, data)))), "");
    EXPECT_EQ(Shown(ReadAliasMembers(View(AliasValue(4, size + 1, 2, data)))), "");
    EXPECT_EQ(Shown(ReadAliasMembers(View("short"))), "");
}

// A SAM as a machine keeps it: numbers of accounts are the types of their default values.
class OfflineAccountsTest : public MachineTest {
  protected:
    static constexpr std::u16string_view kDomains = u"HKLM\\SAM\\SAM\\Domains\\";
    void Name(std::u16string_view place, std::uint32_t number) {
        builder.Value(std::u16string(kDomains).append(place), u"", number, {});
    }
    static std::string Find(OfflineAccounts& accounts, const std::string& bytes) {
        const auto name = accounts.Find(*ReadSid(View(bytes), 0));
        return name ? ToUtf8(name->domain) + "\\" + ToUtf8(name->account) : "-";
    }
};

TEST_F(OfflineAccountsTest, GroupsAndMembersHaveTheirNames) {
    Name(u"Builtin\\Aliases\\Names\\Benutzer", 545);
    Name(u"Builtin\\Aliases\\Names\\Admins", 544);
    Name(u"Account\\Aliases\\Names\\SQLUser$HOST", 1001);
    Name(u"Account\\Users\\Names\\Ann", 1002);
    const std::string sql = SidBytes(5, {80, 956008885, 3418522649, 1831038044, 1853292631, 2271478464});
    const std::string ann = SidBytes(5, {21, 1, 2, 3, 1002});
    const std::string gone = SidBytes(5, {21, 1, 2, 3, 1003});
    const std::string data = sql + ann + gone + SidBytes(1, {0});
    builder.Binary(std::u16string(kDomains) + u"Account", u"V", "front" + SidBytes(5, {21, 1, 2, 3}))
        .Binary(std::u16string(kDomains) + u"Account\\Aliases\\000003E9", u"C",
                AliasValue(0, static_cast<std::uint32_t>(data.size()), 4, data))
        .Key(u"HKLM\\SYSTEM\\CurrentControlSet\\Services\\TrustedInstaller");
    OfflineAccounts accounts(Start().Registry(), u"HOST");

    EXPECT_EQ(accounts.Groups(), (std::vector<std::u16string>{u"Admins", u"Benutzer", u"SQLUser$HOST"}));
    std::vector<std::u16string> members;
    ASSERT_TRUE(accounts.Members(u"sqluser$host", members));
    EXPECT_EQ(members, (std::vector<std::u16string>{u"NT SERVICE\\TrustedInstaller", u"HOST\\Ann",
                                                    u"S-1-5-21-1-2-3-1003", u"Everyone"}));
    EXPECT_FALSE(accounts.Members(u"Benutzer", members)) << "a group without its value";
    EXPECT_FALSE(accounts.Members(u"nobody", members));
    EXPECT_EQ(Find(accounts, kUsers), "BUILTIN\\Benutzer");
    EXPECT_EQ(Find(accounts, SidBytes(5, {32, 551})), "BUILTIN\\Backup Operators");
    EXPECT_EQ(Find(accounts, kSystem), "NT AUTHORITY\\SYSTEM");
    EXPECT_EQ(Find(accounts, SidBytes(5, {80, 1, 2, 3, 4, 5})), "-");
}

}  // namespace
}  // namespace roundup
