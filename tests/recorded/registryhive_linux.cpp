// Hives of real machines where they lie, and what is left of them when they are damaged.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"
#include "tests/recorded/registryreading.h"
#include "tests/support/hivelogwriter.h"
#include "tests/support/tempfolder.h"

namespace roundup {

namespace {

namespace fs = std::filesystem;

struct Counts {
    std::size_t keys = 0;
    std::size_t values = 0;
    std::size_t errors = 0;
};

// Visits every key below, depth first; a circle would be a walk of more keys than a hive of that size can hold.
void Walk(IRegistry& registry, KeyHandle parent, const char16_t* path, Counts& counts) {
    if (++counts.keys > 200000) return;
    const OpenedKey key(registry, parent, path);
    if (key.Error() != kErrorSuccess) {
        ++counts.errors;
        return;
    }
    counts.values += key.ValueNames().size();
    for (const std::u16string& name : key.Subkeys()) Walk(registry, key.Get(), name.c_str(), counts);
}

class RegistryHiveTest : public testing::Test {
  protected:
    // Unpacks a real hive; empty when it is not there.
    std::string Unpack(const std::string& name) {
        const std::string packed = std::string(ROUNDUP_SHARED_DATA) + "/hives/" + name + ".xz";
        const std::string file = (m_folder / name).string();
        if (!fs::exists(packed)) return {};
        const std::string command = "xz -dc '" + packed + "' > '" + file + "'";
        return std::system(command.c_str()) == 0 ? file : std::string();
    }
    std::string Read(const std::string& file) { return m_temp.Read(file); }
    std::string Write(const std::string& bytes) {
        m_temp.Write("changed", bytes);
        return m_temp.Text() + "/changed";
    }

    SourceStatus Mount(const std::string& file, std::u16string_view path) {
        return MountHive(m_store, {file}, path, m_state);
    }

    const TempFolder m_temp;
    HiveState m_state = HiveState::Whole;
    const fs::path m_folder = m_temp.Path();
    RegistryStore m_store;
    RecordedRegistry m_registry{m_store};
};

#define UNPACK_OR_SKIP(variable, name)         \
    const std::string variable = Unpack(name); \
    if ((variable).empty()) GTEST_SKIP() << "no " << name << " in " ROUNDUP_SHARED_DATA

TEST_F(RegistryHiveTest, UserHive_ShowsItsUninstallEntries) {
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    ASSERT_FALSE(Mount(file, u"HKEY_CURRENT_USER"));
    const OpenedKey uninstall(m_registry, kHkeyCurrentUser, u"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
    ASSERT_EQ(uninstall.Error(), kErrorSuccess);
    const Names entries = uninstall.Subkeys();
    ASSERT_FALSE(entries.empty());
    for (const std::u16string& entry : entries) {
        const OpenedKey key(m_registry, uninstall.Get(), entry.c_str());
        EXPECT_NE(key.Text(u"DisplayName"), u"-") << Shown(entry);
        EXPECT_NE(key.Text(u"UninstallString"), u"-") << Shown(entry);
    }
    Counts counts;
    Walk(m_registry, kHkeyCurrentUser, u"", counts);
    EXPECT_EQ(counts.keys, 2288U);
    EXPECT_EQ(counts.values, 5470U);
    EXPECT_EQ(counts.errors, 0U);
}

// Pages of a whole hive are taken out of it and put into two logs, as a Windows leaves it that was switched off.
TEST_F(RegistryHiveTest, WriteThatHasNotEnded_IsCompletedFromTheLogs) {
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    std::string hive = Read(file);
    std::uint32_t blocks = 0;
    std::memcpy(&blocks, hive.data() + 40, sizeof blocks);
    constexpr std::uint32_t kPage = 4096;
    std::string entries[2];
    for (std::uint32_t page = 0; page < 20; ++page) {
        const std::uint32_t offset = page * 7 * kPage;
        const std::string bytes = hive.substr(kPage + offset, kPage);
        entries[page / 10] += HiveLogEntry(70 + page, blocks, {{offset, bytes}});
        hive.replace(kPage + offset, kPage, kPage, '\0');
    }
    SetHiveHeader(hive, 71, 70, 0);
    m_temp.Write("dirty.LOG1", HiveLog(hive, 80, 6, entries[1]));
    m_temp.Write("dirty.LOG2", HiveLog(hive, 70, 6, entries[0]));
    const HiveFiles files{Write(hive), {m_temp / "dirty.LOG1", m_temp / "dirty.LOG2", m_temp / "gone.LOG"}};
    ASSERT_FALSE(MountHive(m_store, files, u"HKEY_CURRENT_USER", m_state));
    EXPECT_EQ(m_state, HiveState::Completed);
    Counts counts;
    Walk(m_registry, kHkeyCurrentUser, u"", counts);
    EXPECT_EQ(counts.keys, 2288U);
    EXPECT_EQ(counts.values, 5470U);

    // A real one without its logs is read as it is.
    UNPACK_OR_SKIP(copied, "UsrClass.dat");
    ASSERT_FALSE(Mount(copied, u"HKEY_CURRENT_USER"));
    EXPECT_EQ(m_state, HiveState::Incomplete);
}

TEST_F(RegistryHiveTest, TwoThreads_ReadAHiveForTheFirstTimeSideBySide) {
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    ASSERT_FALSE(Mount(file, u"HKEY_CURRENT_USER"));
    std::array<Counts, 2> counts;
    std::thread first([&] { Walk(m_registry, kHkeyCurrentUser, u"", counts[0]); });
    std::thread second([&] { Walk(m_registry, kHkeyCurrentUser, u"", counts[1]); });
    m_store.SetText(u"HKCU\\Software\\Written", u"v", u"meanwhile");
    first.join();
    second.join();
    EXPECT_GE(counts[0].keys, 2288U);
    EXPECT_GE(counts[1].keys, 2288U);
}

TEST_F(RegistryHiveTest, WhatIsNoHiveOrWasCut_IsToldWithItsOffset) {
    const auto mount = [this](const std::string& bytes) {
        const SourceStatus status = Mount(Write(bytes), u"HKLM\\SOFTWARE");
        return status ? status->Text().substr(status->file.size()) : std::string();
    };
    EXPECT_EQ(mount(""), ": is an empty file");
    EXPECT_EQ(mount("no hive at all"), ": offset 0x0: is no registry hive");
    EXPECT_EQ(mount("regf"), ": offset 0x4: a hive that ends inside of its header");
    EXPECT_NE(Mount(m_folder.string(), u"HKLM\\SOFTWARE")->Text().find("is no ordinary file"), std::string::npos);
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    const std::string whole = Read(file);
    EXPECT_EQ(mount(whole.substr(0, 0x1800)), ": offset 0x1800: a hive that ends before its last block does");
    std::string damaged = whole;
    damaged[0x1000] = 'x';
    EXPECT_EQ(mount(damaged), ": offset 0x1000: no block where one has to be");
    std::uint32_t blocks = 0;
    std::memcpy(&blocks, whole.data() + 0x28, sizeof(blocks));
    for (std::size_t length = 0; length < 0x1000 + blocks; length += 40961) {
        EXPECT_NE(mount(whole.substr(0, length)), "") << length;
    }
}

TEST_F(RegistryHiveTest, DamagedAnywhere_EndsInAMessageOrAWalkThatEnds) {
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    const std::string whole = Read(file);
    std::mt19937 random(1);
    for (int round = 0; round < 40; ++round) {
        std::string damaged = whole;
        for (unsigned change = 0; change <= random() % 4; ++change) {
            const std::size_t at = 0x1020 + (random() % (whole.size() - 0x2000)) / 4 * 4;
            // Offsets, counts and lengths that exist elsewhere make circles and overlaps; random ones do not.
            const std::size_t from = random() % 2 == 0 ? at + 4 : 0x1020 + (random() % (whole.size() - 0x2000)) / 4 * 4;
            damaged.replace(at, 4, whole, from, 4);
        }
        RegistryStore store;
        RecordedRegistry registry(store);
        if (MountHive(store, {Write(damaged)}, u"HKEY_CURRENT_USER", m_state)) continue;
        Counts counts;
        Walk(registry, kHkeyCurrentUser, u"", counts);
        EXPECT_LT(counts.keys, 5000U);
    }
}

// A key that lists the hive's root, or its own parent, as a subkey: the first key's list of subkeys is pointed back.
TEST_F(RegistryHiveTest, SubkeyListThatLeadsBackToTheRoot_IsNoCircle) {
    UNPACK_OR_SKIP(file, "NTUSER-WIN7.DAT");
    std::string bytes = Read(file);
    const auto dword = [&bytes](std::size_t at) {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes.data() + at, sizeof(value));
        return value;
    };
    constexpr std::size_t kSubkeyList = 0x20;  // in a key's cell: where the list of its subkeys is
    constexpr std::size_t kSubkeyCount = 0x18;
    const std::size_t root = 0x1000 + dword(0x24);
    const std::size_t list = 0x1000 + dword(root + kSubkeyList);
    const std::size_t child = 0x1000 + dword(list + 8);
    ASSERT_EQ(bytes.substr(child + 4, 2), "nk");
    // The child gets the root's own list: its subkeys are then itself and its siblings.
    bytes.replace(child + kSubkeyList, 4, bytes, root + kSubkeyList, 4);
    bytes.replace(child + kSubkeyCount, 4, bytes, root + kSubkeyCount, 4);
    ASSERT_FALSE(Mount(Write(bytes), u"HKEY_CURRENT_USER"));
    Counts counts;
    Walk(m_registry, kHkeyCurrentUser, u"", counts);
    EXPECT_GT(counts.keys, 100U);
    EXPECT_LE(counts.keys, 2288U);
}

}  // namespace

}  // namespace roundup
