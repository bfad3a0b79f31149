// The database server: one machine with two engines and a server of another kind.
#include "appcenter/app/app.h"
#include "appcenter/sqlserverstruct/sqlservergather.h"
#include "appcenter/sqlserverstruct/sqlserverlocation.h"
#include "platform/machine.h"
#include "tests/appcenter/rules_support.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

constexpr const char16_t* kCacheFile = u"C:\\ProgramData\\WFY_SQLSERVER_2019_cache";
constexpr std::u16string_view kServer = u"HKLM\\SOFTWARE\\Microsoft\\Microsoft SQL Server\\";
constexpr std::u16string_view kControl = u"HKLM\\SYSTEM\\CurrentControlSet\\";

// The layout of the cache file, written by hand.
class Bytes {
  public:
    Bytes& Number(std::uint32_t number) {
        for (int i = 0; i < 4; ++i) m_bytes.push_back(static_cast<char>(number >> (8 * i)));
        return *this;
    }
    Bytes& Text(std::u16string text) {
        text.push_back(u'\0');
        Number(static_cast<std::uint32_t>(text.size() * 2));
        m_bytes += WideBytes(text);
        return *this;
    }
    std::string Closed() { return Number(static_cast<std::uint32_t>(m_bytes.size() + 4)).m_bytes; }

  private:
    std::string m_bytes;
};

class SqlServerTest : public RulesTest {
  protected:
    static std::u16string Path(std::u16string_view start, std::u16string_view rest) {
        return std::u16string(start).append(rest);
    }
    void Engine(std::u16string_view id, std::u16string_view sqlPath) {
        builder.Text(Path(kServer, id) + u"\\Setup", u"SQLPath", sqlPath)
            .Text(Path(kServer, id) + u"\\Setup", u"SQLBinRoot", Path(sqlPath, u"\\Binn\\"))
            .Text(Path(kServer, id) + u"\\Setup", u"DataDir", u"C:\\Never")
            .Text(Path(kServer, id) + u"\\Setup", u"SQLDataRoot", Path(sqlPath, u"\\Data"))
            .Text(Path(kServer, id) + u"\\CPE", u"ErrorDumpDir", Path(sqlPath, u"\\LOG\\"))
            .Text(Path(kServer, id) + u"\\SQLServerAgent", u"ErrorLogFile", Path(sqlPath, u"\\LOG\\AGENT.OUT"))
            .Text(Path(kServer, id) + u"\\SQLServerAgent", u"WorkingDirectory", Path(sqlPath, u"\\JOBS"));
    }
    void SetUp() override {
        builder.Key(Path(kServer, u"Services"))
            .Text(Path(kServer, u"Services\\Agent"), u"GroupPrefix", u"SQLAgentUser$")
            .Text(Path(kServer, u"Services\\Plain"), u"GroupPrefix", u"no dollar")
            .Text(Path(kServer, u"Services\\Server"), u"GroupPrefix", u"SQLServerUser$OLDHOST+$MSSQL")
            .Text(Path(kServer, u"Instance Names\\OLAP"), u"CUBES", u"MSAS15.CUBES")
            .Key(Path(kServer, u"MSAS15.CUBES\\Setup"))
            .Key(Path(kServer, u"MSAS15.CUBES\\CPE"))
            .Text(Path(kServer, u"Instance Names\\SQL"), u"MAIN", u"MSSQL15.MAIN")
            .Text(Path(kServer, u"Instance Names\\SQL"), u"OTHER", u"MSSQL15.OTHER")
            .Text(Path(kServer, u"Instance Names\\SQL"), u"", u"ends the section")
            .Text(Path(kServer, u"Instance Names\\SQL"), u"LATE", u"MSSQL15.MAIN");
        Engine(u"MSSQL15.MAIN", u"D:\\Sql\\MSSQL15.MAIN\\MSSQL");
        Engine(u"MSSQL15.OTHER", u"E:\\NoDot");
        builder.Volume(u'D', u"NTFS")
            .Folder(u"C:\\ProgramData")
            .Folder(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL\\DATA")
            .Reparse(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL\\Linked", u"D:\\Sql")
            .File(u"D:\\SR\\loose.bin")
            .File(u"C:\\Windows\\System32\\perf-mainctr.dll")
            .Folder(u"C:\\Windows\\System32\\main")
            .Folder(u"C:\\Windows\\Inf\\MSSQL$MAIN")
            .Key(Path(kControl, u"services\\Spooler"))
            .Key(Path(kControl, u"services\\mssql$MAIN"))
            .Text(Path(kControl, u"services\\Helper"), u"ImagePath", u"C:\\microsoft sql server\\h.exe")
            .Text(Path(kControl, u"services\\eventlog\\application\\Writer"), u"EventMessageFile",
                  u"C:\\Microsoft SQL Server\\m.dll")
            .Text(Path(kControl, u"Control\\Session Manager\\Environment"), u"Path",
                  u"C:\\Windows;C:\\SQL server\\Tools;;C:\\SQL Server\\Behind;C:\\SQL Server\\Last")
            .Group(u"Users", {u"RECORDED\\Ann"})
            .Group(u"SQLUser$HOST$MAIN", {u"NT SERVICE\\MSSQL$MAIN", u"RECORDED\\Ann"})
            .Group(u"SQLZ$", {u"RECORDED\\Ann"})
            .Accounts(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL", {u"SYSTEM", u"sqlwriter", u"MSSQL$MAIN", u"sqlwriter"})
            .Accounts(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL\\DATA", {u"Users"})
            .Accounts(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL\\Linked", {u"MSSQL$MAIN"})
            .Accounts(u"D:\\SR\\loose.bin", {u"host$"})
            .Key(u"HKLM\\SOFTWARE\\Microsoft\\MAIN\\MSSQLServer\\SuperSocketNetLib")
            .Accounts(u"MACHINE\\SOFTWARE\\Microsoft\\MAIN\\MSSQLServer\\SuperSocketNetLib", {u"MSSQL$MAIN"});
    }
    static RefPtr<CApp> App(std::u16string_view key) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        EXPECT_TRUE(app->pwszKeyString.Assign(key) && app->pwszName.Assign(key));
        return app;
    }
    // The rules, or the small code.
    static std::string RulesOf(std::u16string_view key) {
        CAppRuleSet rules;
        const ResultCode rc = AddSqlServerRules(*App(key), rules);
        return Failed(rc) ? std::to_string(static_cast<int>(Small(rc))) : Describe(rules);
    }
    static std::string CacheFile() {
        std::vector<std::byte> bytes;
        EXPECT_TRUE(ReadWholeFile(kCacheFile, 1 << 20, bytes));
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
};

TEST_F(SqlServerTest, TwoEngines_BringRulesOnceAndTheCacheFile) {
    Start();
    EXPECT_EQ(
        RulesOf(u"Microsoft SQL Server 2019"),
        R"(+reg 2 SYSTEM\CurrentControlSet\services\Helper; +reg 2 SYSTEM\CurrentControlSet\services\mssql$MAIN; )"
        R"(+reg 2 SYSTEM\CurrentControlSet\services\eventlog\application\Writer; )"
        R"(+file C:\Windows\System32\perf-mainctr.dll; +file C:\ProgramData\WFY_SQLSERVER_2019_cache; )"
        R"(+dir D:\Sql\MSSQL15.MAIN; +dir C:\Windows\Inf\mssql$MAIN; +dir D:\Sql\MSSQL15.MAIN\MSSQL\Data; )"
        R"(+dir D:\Sql\MSSQL15.MAIN\MSSQL\Binn; +dir D:\Sql\MSSQL15.MAIN\MSSQL; )"
        R"(+dir D:\Sql\MSSQL15.MAIN\MSSQL\LOG; +dir D:\Sql\MSSQL15.MAIN\MSSQL\LOG\AGENT.OUT; )"
        R"(+dir D:\Sql\MSSQL15.MAIN\MSSQL\JOBS; +dir D:\SR; +dir E:\NoDot; +dir E:\NoDot\Data; )"
        R"(+dir E:\NoDot\Binn; +dir E:\NoDot\LOG; +dir E:\NoDot\LOG\AGENT.OUT; +dir E:\NoDot\JOBS)");
    Bytes expected;
    expected.Number(0x01025689).Text(u"OLDHOST").Text(u"RECORDED").Number(2);
    expected.Text(u"MAIN").Text(u"MSSQL15.MAIN").Text(u"D:\\Sql\\MSSQL15.MAIN");
    expected.Text(u"OTHER").Text(u"MSSQL15.OTHER").Text(u"E:\\NoDot");
    expected.Number(2).Text(u"SQLUser$HOST$MAIN").Text(u"SQLZ$");
    expected.Number(3).Text(u"SYSTEM\\CurrentControlSet\\services\\Helper");
    expected.Text(u"SYSTEM\\CurrentControlSet\\services\\mssql$MAIN");
    expected.Text(u"SYSTEM\\CurrentControlSet\\services\\eventlog\\application\\Writer");
    expected.Number(2).Text(u"D:\\SR\\loose.bin").Number(1).Text(u"host$");
    expected.Text(u"D:\\Sql\\MSSQL15.MAIN\\MSSQL").Number(2).Text(u"MSSQL$MAIN").Text(u"sqlwriter");
    expected.Number(1).Text(u"SOFTWARE\\Microsoft\\MAIN\\MSSQLServer\\SuperSocketNetLib").Number(1).Text(u"MSSQL$MAIN");
    expected.Number(2).Text(u"NT SERVICE\\MSSQL$MAIN").Text(u"SQLUser$HOST$MAIN").Text(u"RECORDED\\Ann").Text(u"SQLZ$");
    expected.Number(1).Text(u"C:\\SQL server\\Tools");
    EXPECT_EQ(CacheFile(), expected.Closed());
}

TEST_F(SqlServerTest, VersionsAndMissingParts_DecideWhatComes) {
    builder.Folder(u"C:\\SR");
    Start();
    EXPECT_EQ(RulesOf(u"Microsoft SQL Server 2005"), "1");
    EXPECT_EQ(CSqlServerGather::GetSqlServerVersion(*App(u"Server 2012, 2008 R2")), 20082U);
    EXPECT_EQ(CSqlServerGather::GetSqlServerVersion(*App(u"2008 r2 of 2012 and 2014")), 2014U);
    EXPECT_EQ(CurrentMachine().Files().GetAttributes(kCacheFile), kInvalidAttributes);
    EXPECT_NE(RulesOf(u"SQL 2019").find("+dir C:\\SR;"), std::string::npos) << "the system drive's folder comes first";

    // A later instance that fails is the result, and no rule comes of those before it.
    builder.Text(Path(kServer, u"Instance Names\\Z"), u"BROKEN", u"MSSQL15.GONE");
    Start();
    EXPECT_EQ(RulesOf(u"SQL 2019"), "1");
    // One that succeeds behind it makes up for it.
    builder.Text(Path(kServer, u"Instance Names\\ZZ"), u"MAIN", u"MSSQL15.MAIN");
    Start();
    EXPECT_NE(RulesOf(u"SQL 2019"), "1");
    // A cache file that finds no room leaves out its rule alone.
    builder.WriteLimit(16);
    Start();
    const std::string rules = RulesOf(u"SQL 2019");
    EXPECT_NE(rules.find("+dir E:\\NoDot;"), std::string::npos);
    EXPECT_EQ(rules.find("_cache"), std::string::npos);
}

TEST_F(SqlServerTest, LocationOnAnotherDrive_RemembersTheInstance) {
    Start();
    const struct {
        std::u16string_view key;
        std::u16string_view location;
        std::u16string_view original;
        std::u16string_view expected;
        std::uint64_t flags;
    } rows[] = {
        {u"Microsoft SQL Server 2019", u"C:\\Tools", u"", u"D:\\Sql\\MSSQL15.MAIN", 0},
        {u"Microsoft SQL Server 2019", u"", u"C:\\Was", u"D:\\Sql\\MSSQL15.MAIN", 0},
        {u"Microsoft SQL Server 2019", u"d:\\Tools", u"D:\\Was", u"E:\\NoDot", 0},
        {u"Microsoft SQL Server 2019", u"C:\\Tools", u"D:\\Was", u"D:\\Was", 0},
        {u"Microsoft SQL Server 2005", u"C:\\Tools", u"", u"", 0},
        {u"SQL Server 2019", u"C:\\Tools", u"", u"", 0},
        {u"Microsoft SQL Server 2019", u"C:\\Tools", u"", u"", AppFlags::kNotTopLevel},
    };
    for (const auto& row : rows) {
        const RefPtr<CApp> app = App(row.key);
        app->qwFlags = row.flags;
        ASSERT_TRUE(app->pwszInstallLoc.Assign(row.location) && app->pwszOriginalInstallLoc.Assign(row.original));
        CorrectSqlServerLocation(*app);
        EXPECT_EQ(app->pwszOriginalInstallLoc.View(), row.expected) << &row - rows;
    }
}

}  // namespace
}  // namespace roundup
