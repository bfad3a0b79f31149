// Which key each of the two views shows under a path.
#include <gtest/gtest.h>

#include "platform/recorded/registry/recordedregistry.h"
#include "tests/recorded/registryreading.h"

namespace roundup {

namespace {

std::u16string Seen(IRegistry& registry, KeyHandle root, const std::u16string& path, std::uint32_t view) {
    const OpenedKey key(registry, root, path.c_str(), kKeyRead | view);
    return key.Error() == kErrorSuccess ? key.Text(u"Mark") : u"absent";
}

void Mark(RegistryStore& store, const std::u16string& path, std::u16string_view mark) {
    ASSERT_TRUE(store.SetText(path, u"Mark", mark));
}

// Keys by their paths below SOFTWARE, of every depth and next to each other; a decoy stands where the other kind of key
// would be looked for.
struct ViewRow {
    const char16_t* path;
    bool isShared;
};

constexpr ViewRow kMachineRows[] = {
    {u"Clients", true},
    {u"Microsoft\\Cryptography\\Calais\\Readers", true},
    {u"Microsoft\\Notepad\\DefaultFonts", true},
    {u"Microsoft\\Windows\\CurrentVersion\\App Paths", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Control Panel\\Cursors\\Schemes", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Fonts", true},
    {u"Vendor", false},
    {u"Microsoft", false},
    {u"Microsoft\\Cryptography\\Calais", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Uninstall", false},
};

class RegistryViewsTest : public testing::Test {
  protected:
    std::u16string Machine(const std::u16string& path, std::uint32_t view) {
        return Seen(m_registry, kHkeyLocalMachine, path, view);
    }
    std::u16string User(const std::u16string& path, std::uint32_t view) {
        return Seen(m_registry, kHkeyCurrentUser, path, view);
    }

    RegistryStore m_store;
    RecordedRegistry m_registry{m_store};
};

TEST_F(RegistryViewsTest, MachineKeysOfEveryDepth_AreSharedOrHeldApart) {
    for (const ViewRow& row : kMachineRows) {
        for (const std::u16string below : {u"", u"\\Deep\\Deeper"}) {
            Mark(m_store, u"HKLM\\SOFTWARE\\" + (row.path + below), u"native");
            Mark(m_store, u"HKLM\\SOFTWARE\\Wow6432Node\\" + (row.path + below), u"below Wow6432Node");
        }
    }
    for (const ViewRow& row : kMachineRows) {
        SCOPED_TRACE(Shown(row.path));
        for (const std::u16string below : {u"", u"\\Deep\\Deeper"}) {
            const std::u16string path = row.path + below;
            EXPECT_EQ(Machine(u"SOFTWARE\\" + path, kKeyWow64Key64), u"native");
            EXPECT_EQ(Machine(u"software\\" + path, kKeyWow64Key32), row.isShared ? u"native" : u"below Wow6432Node");
            EXPECT_EQ(Machine(u"SOFTWARE\\WOW6432NODE\\" + path, kKeyWow64Key64), u"below Wow6432Node");
            EXPECT_EQ(Machine(u"SOFTWARE\\WOW6432NODE\\" + path, kKeyWow64Key32), u"below Wow6432Node");
        }
    }
}

TEST_F(RegistryViewsTest, SharedKeyWithoutWow6432Node_IsSeenInBothViewsAndOpensTheWayToIt) {
    Mark(m_store, u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\a.exe", u"shared");
    Mark(m_store, u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\A", u"native");
    const std::u16string version = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
    EXPECT_EQ(Machine(version + u"\\App Paths\\a.exe", kKeyWow64Key32), u"shared");
    EXPECT_EQ(Machine(u"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\App Paths\\a.exe", kKeyWow64Key64),
              u"shared");
    EXPECT_EQ(Machine(version + u"\\Uninstall\\A", kKeyWow64Key32), u"absent");
    const OpenedKey way(m_registry, kHkeyLocalMachine, version.c_str(), kKeyRead | kKeyWow64Key32);
    EXPECT_EQ(way.Error(), kErrorSuccess);
    EXPECT_EQ(way.Subkeys(), Names{u"App Paths"});
}

TEST_F(RegistryViewsTest, Classes_AreSharedButForFiveKeysOfTheMachineAndOfTheUser) {
    for (const std::u16string root : {u"HKLM\\SOFTWARE\\Classes\\", u"HKCU\\Software\\Classes\\"}) {
        for (const char16_t* key : {u"CLSID", u"DirectShow", u"Interface", u"Media Type", u"MediaFoundation", u".txt",
                                    u"TypeLib", u"AppID", u"Installer\\Products"}) {
            Mark(m_store, root + key + u"\\x", u"native");
            Mark(m_store, root + u"Wow6432Node\\" + key + u"\\x", u"wow");
        }
    }
    for (const KeyHandle root : {kHkeyLocalMachine, kHkeyCurrentUser}) {
        for (const std::u16string key : {u"CLSID", u"DirectShow", u"Interface", u"media type", u"MediaFoundation"}) {
            EXPECT_EQ(Seen(m_registry, root, u"Software\\Classes\\" + key + u"\\x", kKeyWow64Key32), u"wow");
            EXPECT_EQ(Seen(m_registry, root, u"Software\\Classes\\" + key + u"\\x", kKeyWow64Key64), u"native");
            EXPECT_EQ(Seen(m_registry, root, u"Software\\Classes\\Wow6432Node\\" + key + u"\\x", kKeyWow64Key64),
                      u"wow");
            EXPECT_EQ(Seen(m_registry, kHkeyClassesRoot, key + u"\\x", kKeyWow64Key32), u"wow");
        }
        for (const std::u16string key : {u".txt", u"TypeLib", u"AppID", u"Installer\\Products"}) {
            EXPECT_EQ(Seen(m_registry, root, u"Software\\Classes\\" + key + u"\\x", kKeyWow64Key32), u"native");
        }
    }
    // The machine's Wow6432Node\Classes is the same key as Classes\Wow6432Node, in either view.
    for (const std::uint32_t view : {kKeyWow64Key64, kKeyWow64Key32}) {
        EXPECT_EQ(Machine(u"SOFTWARE\\Wow6432Node\\Classes\\CLSID\\x", view), u"wow");
        EXPECT_EQ(Machine(u"SOFTWARE\\Wow6432Node\\Classes\\.txt\\x", view), u"wow");
    }
}

TEST_F(RegistryViewsTest, SoftwareInThe32BitView_ListsItsOwnKeysAndTheSharedOnes) {
    for (const char16_t* key : {u"Classes", u"Only64", u"Policies", u"Microsoft\\OLE", u"Microsoft\\Only64",
                                u"Wow6432Node\\Vendor", u"Wow6432Node\\Microsoft\\Only32", u"Wow6432Node\\Clients"}) {
        m_store.CreateKey(std::u16string(u"HKLM\\SOFTWARE\\") + key);
    }
    const auto list = [this](const char16_t* path, std::uint32_t view) {
        return OpenedKey(m_registry, kHkeyLocalMachine, path, kKeyRead | view).Subkeys();
    };
    EXPECT_EQ(list(u"SOFTWARE", kKeyWow64Key32), (Names{u"Classes", u"Microsoft", u"Policies", u"Vendor"}));
    EXPECT_EQ(list(u"SOFTWARE\\Microsoft", kKeyWow64Key32), (Names{u"OLE", u"Only32"}));
    EXPECT_EQ(list(u"SOFTWARE", kKeyWow64Key64),
              (Names{u"Classes", u"Microsoft", u"Only64", u"Policies", u"Wow6432Node"}));
    EXPECT_EQ(list(u"SOFTWARE\\Wow6432Node", kKeyWow64Key64),
              (Names{u"Clients", u"Microsoft", u"Policies", u"Vendor"}));
}

TEST_F(RegistryViewsTest, HandleRemembersItsView_AndAFlagOverridesIt) {
    Mark(m_store, u"HKLM\\SOFTWARE\\Vendor\\App", u"native");
    Mark(m_store, u"HKLM\\SOFTWARE\\Wow6432Node\\Vendor\\App", u"wow");
    Mark(m_store, u"HKLM\\SOFTWARE\\Classes\\CLSID\\x", u"native");
    Mark(m_store, u"HKLM\\SOFTWARE\\Classes\\Wow6432Node\\CLSID\\x", u"wow");
    const OpenedKey software(m_registry, kHkeyLocalMachine, u"SOFTWARE", kKeyRead | kKeyWow64Key32);
    EXPECT_EQ(Seen(m_registry, software.Get(), u"Vendor\\App", 0), u"wow");
    EXPECT_EQ(Seen(m_registry, software.Get(), u"Classes\\CLSID\\x", 0), u"wow");
    const OpenedKey classes(m_registry, kHkeyLocalMachine, u"SOFTWARE\\Classes", kKeyRead | kKeyWow64Key32);
    EXPECT_EQ(Seen(m_registry, classes.Get(), u"CLSID\\x", 0), u"wow");
    EXPECT_EQ(Seen(m_registry, classes.Get(), u"CLSID\\x", kKeyWow64Key64), u"native");
}

TEST_F(RegistryViewsTest, KeysMadeThroughTheViews_StandWhereWindowsKeepsThem) {
    const std::tuple<KeyHandle, const char16_t*, const char16_t*> rows[] = {
        {kHkeyLocalMachine, u"SOFTWARE\\New\\Deep", u"HKLM\\SOFTWARE\\Wow6432Node\\New\\Deep"},
        {kHkeyLocalMachine, u"SOFTWARE\\Microsoft\\OLE\\New", u"HKLM\\SOFTWARE\\Microsoft\\OLE\\New"},
        {kHkeyLocalMachine, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\New",
         u"HKLM\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\New"},
        {kHkeyLocalMachine, u"SOFTWARE\\Classes\\CLSID\\New", u"HKLM\\SOFTWARE\\Classes\\Wow6432Node\\CLSID\\New"},
        {kHkeyLocalMachine, u"SOFTWARE\\Wow6432Node\\Classes\\New", u"HKLM\\SOFTWARE\\Classes\\Wow6432Node\\New"},
        {kHkeyLocalMachine, u"SYSTEM\\New", u"HKLM\\SYSTEM\\New"},
        {kHkeyCurrentUser, u"Software\\New", u"HKU\\S-1-5-21-0-0-0-1000\\Software\\New"},
        {kHkeyCurrentUser, u"Software\\Classes\\CLSID\\New", u"HKCU\\Software\\Classes\\Wow6432Node\\CLSID\\New"},
        {kHkeyClassesRoot, u".new\\shell", u"HKLM\\SOFTWARE\\Classes\\.new\\shell"},
        {kHkeyClassesRoot, u"Interface\\New", u"HKLM\\SOFTWARE\\Classes\\Wow6432Node\\Interface\\New"},
        {kHkeyCurrentConfig, u"Software\\New",
         u"HKLM\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\Software\\New"},
    };
    for (const auto& [root, path, stored] : rows) {
        SCOPED_TRACE(Shown(path));
        KeyHandle key = 0;
        EXPECT_FALSE(m_store.HasKey(stored));
        ASSERT_EQ(m_registry.CreateKey(root, path, kKeyAllAccess | kKeyWow64Key32, key), kErrorSuccess);
        EXPECT_TRUE(m_store.HasKey(stored));
        m_registry.CloseKey(key);
        EXPECT_EQ(m_registry.OpenKey(root, path, kKeyRead | kKeyWow64Key32, key), kErrorSuccess);
        m_registry.CloseKey(key);
    }
}

TEST_F(RegistryViewsTest, ClassesRoot_IsTheUsersClassesOverTheMachines) {
    Mark(m_store, u"HKLM\\SOFTWARE\\Classes\\.both", u"machine");
    m_store.SetText(u"HKLM\\SOFTWARE\\Classes\\.both", u"Rest", u"machine");
    m_store.CreateKey(u"HKLM\\SOFTWARE\\Classes\\.both\\b");
    m_store.CreateKey(u"HKLM\\SOFTWARE\\Classes\\.both\\c");
    Mark(m_store, u"HKCU\\Software\\Classes\\.both", u"user");
    m_store.CreateKey(u"HKCU\\Software\\Classes\\.both\\a");
    m_store.CreateKey(u"HKCU\\Software\\Classes\\.both\\C");
    Mark(m_store, u"HKLM\\SOFTWARE\\Classes\\.machine", u"machine");
    Mark(m_store, u"HKCU\\Software\\Classes\\.user", u"user");

    EXPECT_EQ(OpenedKey(m_registry, kHkeyClassesRoot, u"").Subkeys(), (Names{u".both", u".machine", u".user"}));
    const OpenedKey both(m_registry, kHkeyClassesRoot, u".BOTH", kKeyReadWrite);
    EXPECT_EQ(both.Text(u"Mark"), u"user");
    EXPECT_EQ(both.Text(u"Rest"), u"machine");
    EXPECT_EQ(both.ValueNames(), (Names{u"Mark", u"Rest"}));
    EXPECT_EQ(both.Subkeys(), (Names{u"a", u"b", u"C"}));

    // A value goes to the user's key when there is one, else to the machine's.
    m_registry.SetValue(both.Get(), u"New", kRegSz, u"x", 4);
    const OpenedKey machine(m_registry, kHkeyClassesRoot, u".machine", kKeyReadWrite);
    m_registry.SetValue(machine.Get(), u"New", kRegSz, u"y", 4);
    EXPECT_EQ(OpenedKey(m_registry, kHkeyCurrentUser, u"Software\\Classes\\.both").Text(u"New"), u"x");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyLocalMachine, u"SOFTWARE\\Classes\\.both").Text(u"New"), u"-");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyLocalMachine, u"SOFTWARE\\Classes\\.machine").Text(u"New"), u"y");
    EXPECT_EQ(both.ValueNames(), (Names{u"Mark", u"New", u"Rest"}));
}

TEST_F(RegistryViewsTest, SymbolicLinks_LeadToTheirTargetOrNowhereButNeverInCircles) {
    Mark(m_store, u"HKLM\\SYSTEM\\ControlSet001\\Services\\Tool", u"target");
    m_store.SetLink(u"HKLM\\SYSTEM\\CurrentControlSet", u"\\Registry\\Machine\\System\\ControlSet001");
    m_store.SetLink(u"HKLM\\SYSTEM\\Nowhere", u"\\Registry\\Machine\\System\\Missing");
    m_store.SetLink(u"HKLM\\SYSTEM\\Self", u"\\Registry\\Machine\\System\\Self");
    m_store.SetLink(u"HKLM\\SYSTEM\\A", u"\\Registry\\Machine\\System\\B\\B\\B\\B");
    m_store.SetLink(u"HKLM\\SYSTEM\\B", u"\\Registry\\Machine\\System\\A\\A\\A\\A");
    m_store.SetLink(u"HKLM\\SYSTEM\\Outside", u"\\Device\\Harddisk0");
    EXPECT_EQ(Machine(u"SYSTEM\\CurrentControlSet\\Services\\Tool", 0), u"target");
    for (const char16_t* key :
         {u"SYSTEM\\Nowhere", u"SYSTEM\\Self", u"SYSTEM\\A", u"SYSTEM\\A\\X", u"SYSTEM\\Outside"}) {
        EXPECT_EQ(Machine(key, 0), u"absent");
        KeyHandle made = 0;
        EXPECT_EQ(m_registry.CreateKey(kHkeyLocalMachine, key, kKeyAllAccess, made), kErrorFileNotFound);
    }
    EXPECT_EQ(OpenedKey(m_registry, kHkeyLocalMachine, u"SYSTEM").Subkeys().size(), 7U);
}

TEST_F(RegistryViewsTest, UserOfTheMachine_IsSeenUnderBothRootsAndTakesItsKeysAlong) {
    Mark(m_store, u"HKCU\\Software\\Vendor", u"current");
    Mark(m_store, u"HKU\\S-1-5-21-7\\Software\\Vendor", u"recorded");
    Mark(m_store, u"HKU\\S-1-5-21-7\\Software\\Other", u"recorded");
    m_store.SetUser(u"S-1-5-21-7");
    EXPECT_EQ(m_store.UserSid(), u"S-1-5-21-7");
    EXPECT_EQ(User(u"Software\\Vendor", 0), u"current");
    EXPECT_EQ(User(u"Software\\Other", 0), u"recorded");
    EXPECT_EQ(Seen(m_registry, kHkeyUsers, u"S-1-5-21-7\\Software\\Vendor", 0), u"current");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyUsers, u"").Subkeys(), Names{u"S-1-5-21-7"});
    m_store.SetUser(u"S-1-5-21-8");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyUsers, u"").Subkeys(), Names{u"S-1-5-21-8"});
    Mark(m_store, u"HKU\\S-1-5-21-8_Classes\\.x", u"class");
    EXPECT_EQ(User(u"Software\\Classes\\.x", 0), u"class");
}

}  // namespace

}  // namespace roundup
