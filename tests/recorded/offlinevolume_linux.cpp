// Offline volumes: a Windows put together from real hives, one of which gets the list of profiles written into it.
#include <hivex.h>

#include <algorithm>
#include <cstdlib>

#include "platform/recorded/openmachine.h"
#include "tests/support/hivelogwriter.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

class OfflineVolume : public MachineTest {
  protected:
    void SetUp() override {
        for (const char* name : {"SYSTEM_B", "NTUSER-WIN7.DAT"}) {
            if (!fs::exists(std::string(ROUNDUP_SHARED_DATA) + "/hives/" + name + ".xz")) {
                GTEST_SKIP() << "no hives in " ROUNDUP_SHARED_DATA;
            }
        }
        Unpack("SYSTEM_B", "windows/system32/Config/SYSTEM");
        Unpack("NTUSER-WIN7.DAT", "windows/system32/Config/Software");
        AddProfile("S-1-5-21-1-2-3-1001", "C:\\Users\\Ann");
        Unpack("NTUSER-WIN7.DAT", "Users/Ann/ntuser.dat");
        Unpack("NTUSER-WIN7.DAT", "Users/Default/NTUSER.DAT");
        m_folder.Write("volume/Users/Public/desktop.ini", "");
        m_folder.Write("volume/Users/Leftover/file.txt", "no hive, no user");
    }
    void Unpack(const std::string& name, const fs::path& relative) {
        const fs::path place = m_folder.Path() / "volume" / relative;
        fs::create_directories(place.parent_path());
        const std::string command = "xz -dc '" ROUNDUP_SHARED_DATA "/hives/" + name + ".xz' > '" + place.string() + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    // Writes the entry to the hive that stands for SOFTWARE.
    void AddProfile(const char* sid, const std::string& path) {
        const std::string file = (m_folder.Path() / "volume/windows/system32/Config/Software").string();
        hive_h* hive = hivex_open(file.c_str(), HIVEX_OPEN_WRITE);
        ASSERT_NE(hive, nullptr);
        hive_node_h node = hivex_root(hive);
        for (const char* name : {"Microsoft", "Windows NT", "CurrentVersion", "ProfileList", sid}) {
            const hive_node_h child = hivex_node_get_child(hive, node, name);
            node = child != 0 ? child : hivex_node_add_child(hive, node, name);
        }
        std::string wide;
        for (const char c : path + '\0') wide.append(1, c).append(1, '\0');
        char key[] = "ProfileImagePath";
        hive_set_value value{key, hive_t_expand_string, wide.size(), wide.data()};
        EXPECT_EQ(hivex_node_set_value(hive, node, &value, 0), 0);
        EXPECT_EQ(hivex_commit(hive, nullptr, 0), 0);
        hivex_close(hive);
    }
    Machine* Open(const std::string& user = {}) {
        OpenOptions options;
        options.folder = m_folder.Text() + "/volume";
        options.user = user;
        options.debug = [this](std::u16string_view text) { m_notes += text; };
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        m_message = machine ? std::string() : error.Text().substr(options.folder.size());
        return machine ? &Start(std::move(machine)) : nullptr;
    }

    TempFolder m_folder;
    std::string m_message;
    std::u16string m_notes;
};

TEST_F(OfflineVolume, OnlyUser_IsTheOneShown) {
    Machine* machine = Open();
    ASSERT_NE(machine, nullptr) << m_message;
    char16_t path[260] = {};
    ASSERT_TRUE(machine->Shell().GetFolderPath(40, path));
    EXPECT_EQ(std::u16string_view(path), u"C:\\Users\\Ann");
    EXPECT_EQ(machine->Files().GetAttributes(u"C:\\Windows\\System32\\config\\SOFTWARE"), 0x20U);
    for (const char16_t* key : {u"S-1-5-21-1-2-3-1001\\Software\\Microsoft", u"S-1-5-21-1-2-3-1001"}) {
        KeyHandle opened = 0;
        EXPECT_EQ(machine->Registry().OpenKey(kHkeyUsers, key, kKeyRead, opened), kErrorSuccess);
        machine->Registry().CloseKey(opened);
    }
    for (const auto& [root, key] : {std::pair(kHkeyCurrentUser, u"Software\\Microsoft\\Windows"),
                                    std::pair(kHkeyLocalMachine, u"SYSTEM\\CurrentControlSet\\Services")}) {
        KeyHandle opened = 0;
        EXPECT_EQ(machine->Registry().OpenKey(root, key, kKeyRead, opened), kErrorSuccess);
        machine->Registry().CloseKey(opened);
    }
}

// What the descriptors of real hives name, and whether it has a name here; there is no SAM.
TEST_F(OfflineVolume, KeysOfTheHives_NameTheAccountsOfTheirAccessLists) {
    Machine* machine = Open();
    ASSERT_NE(machine, nullptr) << m_message;
    KeyHandle key = 0;
    ASSERT_EQ(machine->Registry().OpenKey(kHkeyLocalMachine, u"SYSTEM\\Select", kKeyRead, key), kErrorSuccess);
    std::vector<std::u16string> names;
    EXPECT_EQ(machine->Security().GetKeyAccounts(key, names), kErrorSuccess);
    for (const char16_t* name : {u"SYSTEM", u"Administrators"}) {
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << names.size();
    }
    machine->Registry().CloseKey(key);
    EXPECT_EQ(machine->Security().GetLocalGroups(names), kErrorSuccess);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(machine->Security().GetFileAccounts(u"C:\\Users\\Ann\\ntuser.dat", names), kErrorSuccess);
    EXPECT_EQ(machine->Security().GetFileAccounts(u"C:\\Absent", names), kErrorFileNotFound);
}

// The hive lost a page that the log beside it has; names of both are as somebody wrote them.
TEST_F(OfflineVolume, HiveWhoseWriteHasNotEnded_IsReadWithTheLogBesideIt) {
    const fs::path place = "volume/windows/system32/Config/Software";
    std::string hive = m_folder.Read(place);
    std::uint32_t blocks = 0;
    std::memcpy(&blocks, hive.data() + 40, sizeof blocks);
    const std::string page = hive.substr(4096, 4096);
    hive.replace(4096, 4096, 4096, '\0');
    SetHiveHeader(hive, 2, 1, 0);
    m_folder.Write(place, hive);
    EXPECT_EQ(Open(), nullptr);
    m_notes.clear();
    m_folder.Write(place.string() + ".log1", HiveLog(hive, 1, 6, HiveLogEntry(1, blocks, {{0, page}})));
    EXPECT_NE(Open(), nullptr) << m_message;
    EXPECT_NE(m_notes.find(u"Software: completed from its logs\n"), m_notes.npos);
    EXPECT_NE(m_notes.find(u"SYSTEM: a write to it had not ended, and no log has the rest\n"), m_notes.npos);
}

TEST_F(OfflineVolume, SeveralUsers_MustBeChosenFrom) {
    Unpack("NTUSER-WIN7.DAT", "Users/Bob/NTUSER.DAT");
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(m_message, ": there are several users, choose one of them: Ann, Bob");
    EXPECT_EQ(Open("Carl"), nullptr);
    EXPECT_EQ(m_message, ": there is no user \"Carl\" here, only: Ann, Bob");
    ASSERT_NE(Open("bob"), nullptr) << m_message;
    char16_t path[260] = {};
    ASSERT_TRUE(CurrentMachine().Shell().GetFolderPath(40, path));
    EXPECT_EQ(std::u16string_view(path), u"C:\\Users\\Bob");
}

TEST_F(OfflineVolume, MissingParts_AreNamed) {
    fs::remove_all(m_folder.Path() / "volume/Users/Ann");
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(m_message, ": there is no profile of a user in Users");
    Unpack("NTUSER-WIN7.DAT", "Users/Ann/ntuser.dat");
    fs::remove(m_folder.Path() / "volume/windows/system32/Config/SYSTEM");
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(m_message, ": there is no hive Windows/System32/config/SYSTEM");
    m_folder.Write("volume/windows/system32/Config/SYSTEM", "no hive");
    EXPECT_EQ(Open(), nullptr);
    EXPECT_TRUE(m_message.starts_with("/windows/system32/Config/SYSTEM: offset 0x0: ")) << m_message;
}

}  // namespace
}  // namespace roundup
