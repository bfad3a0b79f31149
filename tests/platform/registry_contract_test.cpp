#include <algorithm>

#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

using Names = std::vector<std::u16string>;
using namespace std::literals;

// Works below a key of the user that it makes itself. The seam deletes no keys, so the values are cleared at the start.
class RegistryContract : public ContractTest {
  protected:
    void SetUp() override {
        m_registry = &StartKind().Registry();
        ASSERT_EQ(m_registry->CreateKey(kHkeyCurrentUser, u"Software\\RoundupContract", kKeyAllAccess, m_base), 0U);
        const Names values = Values(m_base);
        for (const std::u16string& name : values) EXPECT_EQ(m_registry->DeleteValue(m_base, name.c_str()), 0U);
    }
    void TearDown() override { m_registry->CloseKey(m_base); }

    KeyHandle Make(const char16_t* name) {
        KeyHandle key = 0;
        EXPECT_EQ(m_registry->CreateKey(m_base, name, kKeyAllAccess, key), kErrorSuccess);
        return key;
    }
    Names SubKeys(KeyHandle key) {
        Names names;
        char16_t name[256];
        Win32Error error = kErrorSuccess;
        for (std::uint32_t i = 0; error == kErrorSuccess; ++i) {
            std::uint32_t length = 256;
            error = m_registry->EnumKey(key, i, name, length);
            if (error == kErrorSuccess) names.emplace_back(name, length);
        }
        EXPECT_EQ(error, kErrorNoMoreItems);
        return names;
    }
    Names Values(KeyHandle key) {
        Names names;
        char16_t name[260];
        Win32Error error = kErrorSuccess;
        for (std::uint32_t i = 0; error == kErrorSuccess; ++i) {
            std::uint32_t length = 260, type = 0, size = 0;
            error = m_registry->EnumValue(key, i, name, length, type, nullptr, size);
            if (error == kErrorSuccess) names.emplace_back(name, length);
        }
        EXPECT_EQ(error, kErrorNoMoreItems);
        return names;
    }

    IRegistry* m_registry = nullptr;
    KeyHandle m_base = 0;
};

TEST_P(RegistryContract, OpenKey_TellsWhyItFailsAndGivesNoHandle) {
    m_registry->CloseKey(Make(u"Deep\\Er"));
    struct Case {
        KeyHandle parent;
        const char16_t* subKey;
        Win32Error error;
    };
    const Case cases[] = {{m_base, u"deep\\ER", 0},     {m_base, u"", 0},
                          {m_base, nullptr, 0},         {kHkeyCurrentUser, u"Software\\ROUNDUPcontract\\Deep", 0},
                          {kHkeyUsers, u"", 0},         {m_base, u"Absent", 2},
                          {m_base, u"Absent\\Deep", 2}, {kHkeyLocalMachine, u"NoSuchTree\\x", 2},
                          {0, u"Software", 6}};
    for (const std::uint32_t view : {0U, kKeyWow64Key64, kKeyWow64Key32}) {
        for (const Case& one : cases) {
            SCOPED_TRACE(::testing::PrintToString(one.subKey != nullptr ? one.subKey : u"(null)"));
            KeyHandle key = 99;
            EXPECT_EQ(m_registry->OpenKey(one.parent, one.subKey, kKeyRead | view, key), one.error);
            EXPECT_EQ(key != 0, one.error == 0);
            m_registry->CloseKey(key);
        }
    }
    // Closing a root, or nothing, leaves the root usable.
    m_registry->CloseKey(kHkeyCurrentUser);
    m_registry->CloseKey(0);
    KeyHandle key = 0;
    EXPECT_EQ(m_registry->OpenKey(kHkeyCurrentUser, u"Software", kKeyRead, key), kErrorSuccess);
    m_registry->CloseKey(key);
}

TEST_P(RegistryContract, EnumKey_GoesByUpperCasedNamesInTheirOwnSpelling) {
    const KeyHandle order = Make(u"Order");
    // Between Z and a lie the characters that tell the two orders apart.
    for (const char16_t* name : {u"b", u"_x", u"A", u"[y]", u"z", u"\u00E4", u"\u00DC", u"{0}", u"C^", u"CA"}) {
        m_registry->CloseKey(Make((u"Order\\"s + name).c_str()));
    }
    const Names expected = {u"A", u"b", u"CA", u"C^", u"z", u"[y]", u"_x", u"{0}", u"\u00E4", u"\u00DC"};
    EXPECT_EQ(SubKeys(order), expected);
    KeyInfo info;
    EXPECT_EQ(m_registry->QueryInfo(order, info), kErrorSuccess);
    EXPECT_EQ(info.subKeys, expected.size());
    EXPECT_EQ(info.longestSubKey, 3U);
    EXPECT_EQ(info.values, 0U);
    char16_t small[3] = u"k";
    std::uint32_t length = 3;
    EXPECT_EQ(m_registry->EnumKey(order, 5, small, length), kErrorMoreData);
    EXPECT_EQ(small[0], u'k');
    length = 3;
    EXPECT_EQ(m_registry->EnumKey(order, 6, small, length), kErrorSuccess);
    EXPECT_EQ(std::u16string_view(small, length), u"_x");
    length = 3;
    EXPECT_EQ(m_registry->EnumKey(order, 99, small, length), kErrorNoMoreItems);
    m_registry->CloseKey(order);
    // A handle's number may come again for another key: what was kept of the first must be gone.
    const KeyHandle other = Make(u"Other\\Only");
    EXPECT_EQ(SubKeys(other), Names{});
    m_registry->CloseKey(other);
}

TEST_P(RegistryContract, Values_KeepTypeBytesAndOrder) {
    struct Case {
        const char16_t* name;
        std::uint32_t type;
        std::string_view bytes;
    };
    const Case cases[] = {{u"text", kRegSz, "a\0b\0\0\0"sv},
                          {u"", kRegSz, "d\0\0\0"sv},
                          {u"bare", kRegBinary, "\x01\x02\x03"sv},
                          {u"number", kRegDword, "\x2A\0\0\0"sv},
                          {u"long", kRegQword, "12345678"sv},
                          {u"none", kRegNone, ""sv},
                          {u"list", kRegMultiSz, "a\0\0\0b\0\0\0\0\0"sv}};
    Names expected;
    for (const Case& one : cases) {
        expected.emplace_back(one.name);
        EXPECT_EQ(m_registry->SetValue(m_base, one.name, one.type, one.bytes.data(),
                                       static_cast<std::uint32_t>(one.bytes.size())),
                  kErrorSuccess);
    }
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.name));
        std::uint32_t type = 99, size = 0;
        EXPECT_EQ(m_registry->QueryValue(m_base, one.name, type, nullptr, size), kErrorSuccess);
        EXPECT_EQ(type, one.type);
        EXPECT_EQ(size, one.bytes.size());
        std::string bytes(16, '#');
        size = 16;
        EXPECT_EQ(m_registry->QueryValue(m_base, one.name, type, bytes.data(), size), kErrorSuccess);
        EXPECT_EQ(bytes.substr(0, size), one.bytes);
        size = 2;
        EXPECT_EQ(m_registry->QueryValue(m_base, one.name, type, bytes.data(), size),
                  one.bytes.size() > 2 ? kErrorMoreData : kErrorSuccess);
        EXPECT_EQ(size, one.bytes.size());
    }
    Names listed = Values(m_base);
    std::sort(listed.begin(), listed.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(m_registry->DeleteValue(m_base, u"TEXT"), kErrorSuccess);
    EXPECT_EQ(m_registry->DeleteValue(m_base, u"TEXT"), kErrorFileNotFound);
    std::uint32_t type = 0, size = 0;
    EXPECT_EQ(m_registry->QueryValue(m_base, u"text", type, nullptr, size), kErrorFileNotFound);
    EXPECT_EQ(m_registry->QueryValue(m_base, nullptr, type, nullptr, size), kErrorSuccess);
}

TEST_P(RegistryContract, ReadAccess_DoesNotWrite) {
    KeyHandle key = 0;
    ASSERT_EQ(m_registry->OpenKey(m_base, u"", kKeyRead, key), kErrorSuccess);
    EXPECT_EQ(m_registry->SetValue(key, u"x", kRegDword, "1234", 4), kErrorAccessDenied);
    EXPECT_EQ(m_registry->DeleteValue(key, u"x"), kErrorAccessDenied);
    KeyHandle below = 0;
    EXPECT_EQ(m_registry->CreateKey(key, u"Deep\\Er", kKeyRead, below), kErrorSuccess);
    m_registry->CloseKey(below);
    m_registry->CloseKey(key);
}

INSTANTIATE_TEST_SUITE_P(Machines, RegistryContract, ::testing::ValuesIn(AllMachineKinds()), KindName);

}  // namespace
}  // namespace roundup
