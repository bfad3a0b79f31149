// The scans of the machine: what each of them reads, and what its query finds.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/apppathcache.h"
#include "appcenter/appreggather/classcache.h"
#include "appcenter/appreggather/comcache.h"
#include "appcenter/appreggather/commonfilescache.h"
#include "appcenter/appreggather/datafoldercache.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/servicecache.h"
#include "appcenter/appreggather/softwarekeycache.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

template <class Set>
std::string Join(const Set& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : " ") + Narrow(name);
    return text;
}

class ScansTest : public MachineTest {
  public:
    // Default values below SOFTWARE\Classes of the machine.
    ScansTest& Class(std::u16string_view path, std::u16string_view value) {
        builder.Text(u"HKLM\\SOFTWARE\\Classes\\" + std::u16string(path), u"", value);
        return *this;
    }
    template <class Query>
    RegGatherResults Ask(std::initializer_list<std::u16string_view> files, Query query) {
        CApp app;
        for (const std::u16string_view file : files) app.MakeGathered().FilePaths.Add(file);
        RegGatherResults results;
        query(app, results);
        return results;
    }
    static std::vector<NameToken> Tokens(std::initializer_list<std::u16string_view> words) {
        std::vector<NameToken> tokens;
        for (const std::u16string_view word : words) tokens.emplace_back(word);
        return tokens;
    }
};

TEST_F(ScansTest, ComItems_AreAllThatIsLinkedToAFileAndNothingElse) {
    Class(u"CLSID\\{C1}\\InprocServer32", u"C:\\App\\srv.dll")
        .Class(u"CLSID\\{C1}\\LocalServer32", u"C:\\App\\two.exe");
    Class(u"CLSID\\{C1}\\ProgID", u"App.One").Class(u"CLSID\\{C1}\\TypeLib", u"{T1}");
    // Registered in both views: the 32-bit one comes first and is the one that counts.
    Class(u"Wow6432Node\\CLSID\\{C3}\\ProgID", u"App.Three32").Class(u"Wow6432Node\\CLSID\\{C3}\\TypeLib", u"{t1}");
    Class(u"CLSID\\{C3}\\ProgID", u"App.Three64").Class(u"CLSID\\{C3}\\InprocServer32", u"C:\\App\\three.dll");
    // An in-process server that names no file hides the local one.
    builder.Key(u"HKLM\\SOFTWARE\\Classes\\CLSID\\{C2}\\InprocServer32");
    Class(u"CLSID\\{C2}\\LocalServer32", u"C:\\App\\two.exe");
    Class(u"CLSID\\{C5}\\LocalServer32", u"\"c:\\APP\\srv.dll\" /serve");
    Class(u"TypeLib\\{T1}\\1.0\\0\\win32", u"C:\\Lib\\t1.tlb")
        .Class(u"TypeLib\\{T1}\\2.0\\0\\win32", u"C:\\App\\two.exe");
    Class(u"TypeLib\\{T2}\\1.0\\9\\win64", u"C:\\Lib\\t1.tlb");
    builder.Key(u"HKLM\\SOFTWARE\\Classes\\TypeLib\\{T3}").Key(u"HKLM\\SOFTWARE\\Classes\\TypeLib\\{T4}\\1.0");
    Class(u"Interface\\{I1}\\ProxyStubClsid32", u"{C1}");
    Class(u"Interface\\{I2}\\TypeLib", u"{T2}").Class(u"Interface\\{I2}\\ProxyStubClsid", u"{C9}");
    Class(u"Interface\\{I2}\\ProxyStubClsid32", u"{C2}");
    Class(u"Interface\\{I3}\\ProxyStubClsid32", u"{C9}").Class(u"Interface\\{I3}\\TypeLib", u"{T9}");
    Class(u"Interface\\{I4}\\TypeLib", u"{T9}").Class(u"Interface\\{I5}\\ProxyStubClsid32", u"{C2}");
    Start();
    const CComCache cache;
    const auto query = [&](const CApp& app, RegGatherResults& results) { cache.FindComItems(app, results); };
    // One file, which is looked up among those of the machine, and many, among which those are looked up.
    for (const RegGatherResults& found : {Ask({u"C:\\App\\srv.dll"}, query),
                                          Ask({u"C:\\App\\srv.dll", u"C:\\1", u"C:\\2", u"C:\\3", u"C:\\4"}, query)}) {
        EXPECT_EQ(Join(found.ClassIds), "{C1} {C3} {C5}");
        EXPECT_EQ(Join(found.ProgIds), "App.One App.Three32");
        EXPECT_EQ(Join(found.TypeLibIds), "{T1} {T2}");
        EXPECT_EQ(Join(found.InterfaceIds), "{I1} {I2} {I3} {I4}");
    }
    const RegGatherResults none = Ask({u"C:\\App\\two.exe", u"C:\\App\\three.dll"}, query);
    EXPECT_EQ(Join(none.ClassIds) + Join(none.TypeLibIds) + Join(none.InterfaceIds), "");
}

TEST_F(ScansTest, ClassItems_FollowCommandsAndClassIdsAndReadNoHandledNameAgain) {
    constexpr std::u16string_view kCommand = u"\"C:\\App\\app.exe\" \"%1\"";
    Class(u".one", u"App.Doc").Class(u".one\\PersistentHandler", u"{C8}");
    Class(u".two\\PersistentHandler", u"{C1}").Class(u".three", u"").Class(u".three\\PersistentHandler", u"{C1}");
    Class(u".four", u"X").Class(u".five", u"X").Class(u".five\\PersistentHandler", u"{C7}");
    for (const char16_t* const name : {u".four", u".five"}) {
        builder.Text(std::u16string(u"HKLM\\SOFTWARE\\Classes\\") + name + u"\\OpenWithProgIds", u"App.Doc", u"");
    }
    Class(u"App.Doc\\shell\\open\\command", kCommand).Class(u"App.Id\\CLSID", u"{C1}");
    builder.Key(u"HKLM\\SOFTWARE\\Classes\\App.Cmd\\shell\\open\\command");
    Class(u"App.Cmd\\CLSID", u"{C1}").Class(u"App.Shadow\\shell\\open\\command", kCommand);
    const std::u16string handlers = u"*\\shellex\\ContextMenuHandlers\\";
    Class(handlers + u"AppMenu", u"{C1}").Class(handlers + u"App.Shadow", u"{C7}").Class(handlers + u"Denied", u"{C1}");
    Class(handlers + u"Later", u"{C1}");
    builder.DenyKey(u"HKLM\\SOFTWARE\\Classes\\" + handlers + u"Denied");
    builder.Text(u"HKCU\\Software\\Classes\\App.Doc\\shell\\open\\command", u"", u"C:\\App\\two.exe");
    builder.Text(u"HKCU\\Software\\Classes\\App.User\\shell\\open\\command", u"", u"C:\\App\\app.exe");
    Start();
    const CClassCache cache;
    const RegGatherResults found = Ask({u"C:\\App\\app.exe"}, [&](const CApp& app, RegGatherResults& results) {
        results.ClassIds.Add(u"{c1}");
        cache.FindClassItems(app, results);
    });
    EXPECT_EQ(Join(found.ClassNames), "App.Doc App.Id App.User AppMenu");
    EXPECT_EQ(Join(found.ExtensionNames), ".five .one .three");
    const auto query = [&](const CApp& app, RegGatherResults& results) { cache.FindClassItems(app, results); };
    EXPECT_EQ(Join(Ask({u"C:\\App\\two.exe"}, query).ClassNames), "");
}

TEST_F(ScansTest, ServicesAndAppPaths_AreThoseOfTheFilesOutsideOfTheSystem) {
    const auto service = [&](std::u16string_view name, std::u16string_view path) {
        builder.ExpandText(u"HKLM\\SYSTEM\\CurrentControlSet\\services\\" + std::u16string(name), u"ImagePath", path);
    };
    service(u"One", u"\"C:\\App\\svc.exe\" -run");
    service(u"Two", u"%SystemDrive%\\App\\svc.exe");
    service(u"Driver", u"C:\\App\\drv.SYS");
    service(u"Host", u"%SystemRoot%\\System32\\svchost.exe");
    service(u"Host32", u"C:\\Windows\\SysWOW64\\svchost.exe");
    const std::u16string paths = u"\\Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\";
    builder.Text(u"HKLM" + paths + u"one.exe", u"", u"C:\\App\\svc.exe").Key(u"HKLM" + paths + u"empty.exe");
    builder.Text(u"HKLM" + paths + u"two.exe", u"", u"C:\\App\\svc.exe");
    builder.Text(u"HKCU" + paths + u"user.exe", u"", u"C:\\App\\drv.sys");
    Start();
    const auto query = [](bool drivers) {
        return [drivers](const CApp& app, RegGatherResults& results) {
            ProcessWide<CServiceCache>().FindServices(app, results, drivers);
            ProcessWide<CAppPathCache>().FindAppPaths(app, results);
        };
    };
    const std::initializer_list<std::u16string_view> files = {u"c:\\app\\svc.exe", u"C:\\App\\drv.sys",
                                                              u"C:\\Windows\\System32\\svchost.exe",
                                                              u"C:\\Windows\\SysWOW64\\svchost.exe"};
    EXPECT_EQ(Join(Ask(files, query(false)).ServiceNames), "One Two");
    EXPECT_EQ(Join(Ask(files, query(true)).ServiceNames), "Driver One Two");
    EXPECT_EQ(Join(Ask(files, query(true)).AppPathNames), "one.exe user.exe");
}

TEST_F(ScansTest, SoftwareKey_IsTheFirstBestOfWhatStandsBeforeANoiseWord) {
    builder.Key(u"HKLM\\SOFTWARE\\Wow6432Node\\Acme").Key(u"HKLM\\SOFTWARE\\Wow6432Node\\Setup\\Inner");
    builder.Key(u"HKLM\\SOFTWARE\\Wow6432Node\\Zeta").Key(u"HKLM\\SOFTWARE\\Yonder\\Gizm");
    builder.Key(u"HKCU\\Software\\Acme\\Gadget")
        .Key(u"HKCU\\Software\\Xi\\Gadget")
        .Key(u"HKCU\\Software\\Policies\\Pol");
    builder.Key(u"HKLM\\SOFTWARE\\Microsoft\\Kit\\Gadget").Key(u"HKLM\\SOFTWARE\\Microsoft\\direct3d\\Gadget");
    builder.Key(u"HKLM\\SOFTWARE\\Microsoft\\Update").Key(u"HKLM\\SOFTWARE\\Microsoft\\Zone");
    Start();
    const struct {
        std::initializer_list<std::u16string_view> tokens;
        std::uint32_t microsoft;
        std::string_view key;
    } cases[] = {
        {{u"Zeta", u"Setup", u"Inner", u"Pol"}, 0, ""},
        {{u"Gizmo"}, 0, "Yonder"},
        {{u"gadget"}, 0, "Acme"},
        {{u"gadget", u"x"}, 0, "Xi"},
        {{u"Acm", u"Yo"}, 0, "Acme"},
        {{u"Acm", u"Yo", u"Yo"}, 0, "Yonder"},
        {{u"gadget", u"Zone", u"direct"}, 1, "Microsoft\\Kit"},
        {{u"Zone"}, 1, ""},
        {{}, 0, ""},
    };
    for (const auto& c : cases) {
        RegGatherResults results;
        results.bMicrosoft = c.microsoft;
        ProcessWide<CSoftwareKeyCache>().FindSoftwareKey(Tokens(c.tokens), results);
        EXPECT_EQ(results.pwszSoftwareKey != nullptr ? Narrow(results.pwszSoftwareKey) : "", c.key);
    }
}

TEST_F(ScansTest, Folders_ThatCannotBeListedOrLeadElsewhereAreToldApart) {
    const std::u16string roaming = u"C:\\Users\\User\\AppData\\Roaming\\";
    const std::u16string common = u"C:\\Program Files\\Common Files\\";
    for (const std::u16string& root : {roaming, common}) {
        for (const char16_t* const name : {u"Alpha", u"Opaque", u"Zeta", u"Link", u"Web Folders", u"Microsoft Help"}) {
            builder.Folder(root + name + u"\\Inner" + name);
        }
        const std::u16string group = root + (root == roaming ? u"Microsoft\\" : u"microsoft shared\\");
        for (const char16_t* const name : {u"Kit", u"Locked", u"Mine", u"System", u"Windows"}) {
            builder.Folder(group + name + u"\\Part" + name);
        }
        builder.DenyFile(root + u"Opaque").DenyFile(group + u"Locked").Reparse(root + u"Link", u"C:\\Elsewhere");
    }
    Start();
    const auto tokens =
        Tokens({u"alpha", u"InnerAlpha", u"Opaque", u"Zeta", u"Link", u"InnerLink", u"Web Folders", u"Kit",
                u"Microsoft Help", u"PartKit", u"Locked", u"Mine", u"System", u"Windows", u"KI"});
    std::string found;
    for (const std::uint32_t microsoft : {0U, 1U}) {
        RegGatherResults results;
        results.bMicrosoft = microsoft;
        ProcessWide<CDataFolderCache>().FindDataFolders(tokens, results);
        ProcessWide<CCommonFilesCache>().FindCommonFolders(tokens, results);
        found += Join(results.DataFolderNames) + " / " + Join(results.CommonFolderNames) + "\n";
    }
    EXPECT_EQ(found,
              "Alpha InnerAlpha Opaque Web Folders Zeta / Alpha Microsoft Help Opaque\n"
              "Microsoft\\Kit Microsoft\\Locked / Kit Locked\n");
}

// Words as folders and keys have them, and what a comparison of each with each finds.
class WordReference {
  public:
    using Words = std::set<std::u16string, CStringLess>;
    std::map<std::u16string, Words, CStringLess> entries[2];

    static std::size_t Alike(std::u16string_view a, std::u16string_view b) {
        const std::size_t n = std::min(a.size(), b.size());
        return EqualsNoCase(a.substr(0, n), b.substr(0, n)) ? n : 0;
    }
    Words DataFolders(const std::vector<NameToken>& tokens, std::uint32_t level) const {
        Words found;
        for (const auto& [name, words] : entries[level]) {
            for (const std::u16string& word : words) {
                for (const NameToken& token : tokens) {
                    if (EqualsNoCase(word, token.pwszText)) found.insert(level != 0 ? u"Microsoft\\" + name : word);
                }
            }
        }
        return found;
    }
    Words CommonFolders(const std::vector<NameToken>& tokens, std::uint32_t level) const {
        Words found;
        const auto hits = [&](const std::u16string& word) {
            return std::ranges::any_of(tokens, [&](const NameToken& token) {
                return std::min(word.size(), token.pwszText.Length()) > 2 ? Alike(word, token.pwszText) != 0
                                                                          : EqualsNoCase(word, token.pwszText);
            });
        };
        for (const auto& [name, words] : entries[level]) {
            if (const auto hit = std::ranges::find_if(words, hits); hit != words.end()) found.insert(*hit);
        }
        return found;
    }
    std::u16string SoftwareKey(const std::vector<NameToken>& tokens, std::uint32_t level) const {
        std::u16string best;
        std::size_t most = 0;
        for (const auto& [name, words] : entries[level]) {
            std::size_t score = 0;
            for (const std::u16string& word : words) {
                for (const NameToken& token : tokens) score += Alike(word, token.pwszText);
            }
            if (score > most) best = level != 0 ? u"Microsoft\\" + name : name, most = score;
        }
        return best;
    }
};

TEST_F(ScansTest, WordQueries_FindWhatAComparisonOfEachWithEachFinds) {
    std::mt19937 random(20);
    const auto below = [&](std::size_t bound) { return random() % bound; };
    const auto word = [&] {
        std::u16string text;
        for (std::size_t i = 1 + below(5); i != 0; --i) text += u"aAbc"[below(4)];
        return text;
    };
    for (int round = 0; round < 60; ++round) {
        builder = {};
        WordReference reference;
        for (std::size_t i = 0; i < 25; ++i) {
            const std::size_t level = below(2);
            const std::u16string name = word();
            const auto [entry, isNew] = reference.entries[level].try_emplace(name);
            if (!isNew) continue;
            entry->second.insert(name);
            const std::u16string hive = below(2) != 0 ? u"HKCU\\Software\\" : u"HKLM\\SOFTWARE\\Wow6432Node\\";
            const std::u16string bases[] = {
                hive + (level != 0 ? u"Microsoft\\" : u"") + name,
                u"C:\\ProgramData\\" + std::u16string(level != 0 ? u"Microsoft\\" : u"") + name,
                u"C:\\Program Files\\Common Files\\" + std::u16string(level != 0 ? u"microsoft shared\\" : u"") + name};
            builder.Key(bases[0]).Folder(bases[1]).Folder(bases[2]);
            for (std::size_t left = below(4); left != 0; --left) {
                const std::u16string inner = word();
                if (!entry->second.insert(inner).second) continue;
                builder.Key(bases[0] + u"\\" + inner).Folder(bases[1] + u"\\" + inner).Folder(bases[2] + u"\\" + inner);
            }
        }
        Start();
        for (int query = 0; query < 20; ++query) {
            std::vector<NameToken> tokens;
            for (std::size_t i = below(5); i != 0; --i) tokens.emplace_back(word());
            RegGatherResults found;
            found.bMicrosoft = static_cast<std::uint32_t>(below(2));
            ProcessWide<CDataFolderCache>().FindDataFolders(tokens, found);
            ProcessWide<CCommonFilesCache>().FindCommonFolders(tokens, found);
            ProcessWide<CSoftwareKeyCache>().FindSoftwareKey(tokens, found);
            ASSERT_EQ(Join(found.DataFolderNames), Join(reference.DataFolders(tokens, found.bMicrosoft))) << round;
            ASSERT_EQ(Join(found.CommonFolderNames), Join(reference.CommonFolders(tokens, found.bMicrosoft))) << round;
            ASSERT_EQ(found.pwszSoftwareKey != nullptr ? Narrow(found.pwszSoftwareKey) : "",
                      Narrow(reference.SoftwareKey(tokens, found.bMicrosoft)))
                << round;
        }
    }
}

}  // namespace
}  // namespace roundup
