// What registries do whatever their source: order, names, sizes, errors, handles, access, threads.
#include "platform/recorded/registry/registrystore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <set>
#include <thread>
#include <tuple>

#include "platform/recorded/registry/recordedregistry.h"
#include "tests/recorded/registryreading.h"

namespace roundup {

namespace {

constexpr Win32Error kErrorBadPathName = 161;
constexpr Win32Error kErrorKeyDeleted = 1018;

std::u16string Number(std::size_t number) {
    const std::string digits = std::to_string(number);
    return std::u16string(digits.begin(), digits.end());
}

class RegistryStoreTest : public testing::Test {
  protected:
    RegistryStoreTest() { m_store.CreateKey(u"HKLM\\SOFTWARE\\T"); }

    std::u16string Path(std::u16string_view name) { return u"HKLM\\SOFTWARE\\T\\" + std::u16string(name); }
    Win32Error OpenError(const char16_t* path, std::uint32_t access = kKeyRead) {
        return OpenedKey(m_registry, kHkeyLocalMachine, path, access).Error();
    }

    RegistryStore m_store;
    RecordedRegistry m_registry{m_store};
};

TEST_F(RegistryStoreTest, ManyRandomChangesBeforeAndAfterSettling_LeaveWhatASortedSetHolds) {
    std::mt19937 random(7);
    std::set<std::u16string> expected;
    Names values;
    for (const int names : {12, 300, 500}) {
        {
            const OpenedKey key(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T", kKeyReadWrite);
            for (int step = 0; step < 2000; ++step) {
                const std::u16string name = Number(random() % static_cast<unsigned>(names));
                if (random() % 3 == 0) {
                    EXPECT_EQ(m_store.DeleteKey(Path(name)), expected.erase(name) == 1);
                    const Win32Error deleted = m_registry.DeleteValue(key.Get(), name.c_str());
                    EXPECT_EQ(deleted, std::erase(values, name) == 1 ? kErrorSuccess : kErrorFileNotFound);
                } else {
                    m_store.CreateKey(Path(name + u"\\Below"));
                    expected.insert(name);
                    m_registry.SetValue(key.Get(), name.c_str(), kRegBinary, name.data(), 2);
                    if (std::find(values.begin(), values.end(), name) == values.end()) values.push_back(name);
                }
                if (step % 100 == 0) {
                    ASSERT_EQ(key.Subkeys(), Names(expected.begin(), expected.end()));
                    ASSERT_EQ(key.ValueNames(), values);
                }
            }
        }
        m_store.Settle();
        const OpenedKey key(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T");
        ASSERT_EQ(key.Subkeys(), Names(expected.begin(), expected.end()));
        ASSERT_EQ(key.ValueNames(), values);
        for (const std::u16string& name : expected) {
            EXPECT_EQ(OpenError((u"SOFTWARE\\T\\" + name + u"\\below").c_str()), kErrorSuccess);
        }
    }
}

TEST_F(RegistryStoreTest, AMillionLevels_AreMadeWalkedAndDeletedWithoutOverflowingTheStack) {
    std::u16string path = u"HKLM\\SOFTWARE\\T";
    for (int i = 0; i < 1000000; ++i) path += u"\\d";
    m_store.CreateKey(path);
    EXPECT_EQ(OpenError(path.c_str() + 5), kErrorSuccess);
    m_store.CreateKey(u"HKU\\other");
    m_store.SetUser(u"other");
    EXPECT_TRUE(m_store.DeleteKey(u"HKLM\\SOFTWARE\\T\\d"));
    EXPECT_EQ(OpenError(path.c_str() + 5), kErrorFileNotFound);
}

TEST_F(RegistryStoreTest, Paths_AreTakenAsTheKernelTakesThem) {
    m_store.CreateKey(Path(u"Sub\\Deep"));
    const std::pair<const char16_t*, Win32Error> rows[] = {
        {u"software\\t\\SUB\\deep", kErrorSuccess},     {u"SOFTWARE\\T\\Sub\\", kErrorSuccess},
        {u"SOFTWARE\\T\\\\Sub\\\\Deep", kErrorSuccess}, {u"\\SOFTWARE\\T", kErrorBadPathName},
        {u"SOFTWARE\\T\\Sub ", kErrorFileNotFound},     {nullptr, kErrorSuccess},
    };
    for (const auto& [path, error] : rows) {
        EXPECT_EQ(OpenError(path), error) << (path != nullptr ? Shown(path) : "null");
    }
}

TEST_F(RegistryStoreTest, DeniedAndReadOnlyKeys_GiveError5WhereTheyAreAsked) {
    m_store.CreateKey(Path(u"Denied\\Below"));
    m_store.SetAccess(Path(u"Denied"), KeyAccess::Denied);
    m_store.CreateKey(Path(u"ReadOnly\\Below"));
    m_store.SetAccess(Path(u"ReadOnly"), KeyAccess::ReadOnly);
    constexpr std::uint32_t kMaximumAllowed = 0x02000000;
    const std::tuple<const char16_t*, std::uint32_t, Win32Error> rows[] = {
        {u"SOFTWARE\\T\\Denied", kKeyRead, kErrorAccessDenied},
        {u"SOFTWARE\\T\\Denied\\Below", kKeyReadWrite, kErrorSuccess},
        {u"SOFTWARE\\T\\ReadOnly", kMaximumAllowed, kErrorSuccess},
        {u"SOFTWARE\\T\\ReadOnly", kKeyReadWrite, kErrorAccessDenied},
        {u"SOFTWARE\\T\\ReadOnly\\Below", kKeyAllAccess, kErrorSuccess},
        {u"SOFTWARE\\T", kKeyRead | kKeyWow64Key32 | kKeyWow64Key64, kErrorInvalidParameter},
    };
    for (const auto& [path, access, error] : rows) EXPECT_EQ(OpenError(path, access), error) << Shown(path);
    KeyHandle made = 0;
    EXPECT_EQ(m_registry.CreateKey(kHkeyLocalMachine, u"SOFTWARE\\T\\ReadOnly\\New", kKeyAllAccess, made),
              kErrorAccessDenied);
    EXPECT_EQ(made, 0U);
    const OpenedKey reading(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T");
    EXPECT_EQ(m_registry.SetValue(reading.Get(), u"x", kRegSz, nullptr, 0), kErrorAccessDenied);
    EXPECT_EQ(m_registry.DeleteValue(reading.Get(), u"x"), kErrorAccessDenied);
    const OpenedKey writing(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T", kKeySetValue);
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    EXPECT_EQ(m_registry.QueryValue(writing.Get(), u"x", type, nullptr, size), kErrorAccessDenied);
    EXPECT_EQ(reading.Subkeys(), (Names{u"Denied", u"ReadOnly"}));
}

TEST_F(RegistryStoreTest, Handles_AreNeverUsedTwiceAndStaleOnesGiveError6) {
    std::set<KeyHandle> seen;
    RecordedRegistry other(m_store);
    KeyInfo info;
    for (int i = 0; i < 2000; ++i) {
        for (RecordedRegistry* registry : {&m_registry, &other}) {
            KeyHandle key = 0;
            ASSERT_EQ(registry->OpenKey(kHkeyLocalMachine, u"SOFTWARE", kKeyRead, key), kErrorSuccess);
            EXPECT_TRUE(seen.insert(key).second);
            registry->CloseKey(key);
            registry->CloseKey(key);
            EXPECT_EQ(registry->QueryInfo(key, info), kErrorInvalidHandle);
        }
    }
    const KeyHandle stale = *seen.begin();
    std::uint32_t number = 1;
    EXPECT_EQ(m_registry.SetValue(stale, u"x", kRegSz, nullptr, 0), kErrorInvalidHandle);
    char16_t name[1];
    for (const KeyHandle bad : {KeyHandle{0}, KeyHandle{1}, KeyHandle{0xFFFFFFFF80000004U}, ~KeyHandle{0}, stale}) {
        EXPECT_EQ(m_registry.EnumKey(bad, 0, name, number), kErrorInvalidHandle);
    }
    m_registry.CloseKey(kHkeyLocalMachine);
    EXPECT_EQ(m_registry.QueryInfo(kHkeyLocalMachine, info), kErrorSuccess);
}

TEST_F(RegistryStoreTest, KeyDeletedWhileOpen_GivesError1018) {
    m_store.SetText(Path(u"Gone\\Below"), u"v", u"text");
    const OpenedKey gone(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T\\Gone\\Below", kKeyReadWrite);
    m_store.DeleteKey(Path(u"Gone"));
    KeyInfo info;
    EXPECT_EQ(m_registry.QueryInfo(gone.Get(), info), kErrorKeyDeleted);
    EXPECT_EQ(m_registry.SetValue(gone.Get(), u"v", kRegSz, nullptr, 0), kErrorKeyDeleted);
    m_store.CreateKey(Path(u"Gone\\Below"));
    EXPECT_EQ(m_registry.QueryInfo(gone.Get(), info), kErrorKeyDeleted);
}

TEST_F(RegistryStoreTest, ReadersAndWritersOnSeveralThreads_SeeWholeValuesAlways) {
    const OpenedKey shared(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T", kKeyReadWrite);
    const std::string one(40, '1');
    const std::string two(80, '2');
    m_registry.SetValue(shared.Get(), u"v", kRegBinary, one.data(), 40);
    std::atomic<bool> stop = false;
    std::atomic<int> torn = 0;
    const auto read = [&] {
        while (!stop.load()) {
            const std::string bytes = shared.Value(u"v").second;
            if (!bytes.empty() && bytes != one && bytes != two) ++torn;
            const OpenedKey key(m_registry, kHkeyLocalMachine, u"SOFTWARE\\T");
            for (const std::u16string& name : key.Subkeys()) torn += name.size() != 7 || !name.starts_with(u"Sub1");
        }
    };
    std::thread readers[] = {std::thread(read), std::thread(read)};
    for (std::size_t i = 0; i < 400; ++i) {
        const std::string& bytes = i % 2 == 0 ? two : one;
        m_registry.SetValue(shared.Get(), u"v", kRegBinary, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        KeyHandle key = 0;
        m_registry.CreateKey(shared.Get(), (u"Sub" + Number(1000 + i * 7 % 400)).c_str(), kKeyAllAccess, key);
        m_registry.CloseKey(key);
        if (i % 5 == 0) m_store.DeleteKey(Path(u"Sub" + Number(1000 + i)));
    }
    stop = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(torn.load(), 0);
}

}  // namespace

}  // namespace roundup
