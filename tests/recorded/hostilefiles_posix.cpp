// Sources that try to reach out of their folder.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "platform/recorded/openmachine.h"
#include "tests/support/machinefiles.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

class HostileFiles : public MachineTest {
  protected:
    HostileFiles() : m_root(m_folder.Path() / "machine"), m_c(m_root / "drives" / "c") {
        m_folder.Write("secret/key.txt", "secret");
        m_folder.Write("machine/machine.ini", "");
        m_folder.Write("machine/drives/c/real/file.txt", "inside");
        m_folder.Write("machine/drives/d/other.txt", "drive d");
    }
    IFileSystem& OpenFiles() {
        OpenOptions options;
        options.folder = m_root.string();
        options.hostFolder = m_folder.Text();
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        EXPECT_TRUE(machine) << error.Text();
        return Start(std::move(machine)).Files();
    }
    void Link(const fs::path& target, const fs::path& place) { fs::create_symlink(target, place); }

    TempFolder m_folder;
    const fs::path m_root;
    const fs::path m_c;
};

TEST_F(HostileFiles, Links_AreFollowedInsideOfTheSourceAlone) {
    struct Case {
        const char* name;
        fs::path target;
        std::uint32_t attributes;
        const char* content;
    };
    const Case cases[] = {
        {"in", "real/file.txt", 0x420, "inside"},
        {"drive", "../d/other.txt", 0x420, "drive d"},
        {"folder", "real", 0x410, "error 5"},
        {"chain", "in", 0x420, "inside"},
        {"out", "../../../secret/key.txt", 0x420, "error 1920"},
        {"outfolder", m_folder.Path() / "secret", 0x420, "error 1920"},
        {"passwd", "/etc/passwd", 0x420, "error 1920"},
        {"self", "self", 0x420, "error 1920"},
        {"ping", "pong", 0x420, "error 1920"},
        {"pong", "ping", 0x420, "error 1920"},
        {"dangling", "real/none", 0x420, "error 2"},
        {"case", "REAL/FILE.TXT", 0x420, "error 2"},
    };
    for (const Case& one : cases) Link(one.target, m_c / one.name);
    IFileSystem& files = OpenFiles();
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const std::u16string path = u"C:\\" + fs::path(one.name).u16string();
        FileInfo info{0, 1};
        EXPECT_EQ(files.GetInfo(path.c_str(), info), kErrorSuccess);
        EXPECT_EQ(info.attributes, one.attributes);
        EXPECT_EQ(info.size, 0U);
        EXPECT_EQ(ReadFile(files, path), one.content);
    }
    EXPECT_EQ(ReadFile(files, u"C:\\folder\\FILE.txt"), "inside");
    EXPECT_EQ(ReadFile(files, u"C:\\outfolder\\key.txt"), "error 1920");
    EXPECT_EQ(ReadFile(files, u"C:\\self\\x"), "error 1920");
    EXPECT_EQ(ReadFile(files, u"C:\\..\\..\\..\\secret\\key.txt"), "error 3");
    EXPECT_EQ(ReadFile(files, u"\\\\?\\C:\\..\\..\\..\\secret\\key.txt"), "error 3");
    FindHandle find = kInvalidFile;
    FindData data;
    EXPECT_EQ(files.FindFirst(u"C:\\outfolder\\*", find, data), kErrorCannotAccessFile);
    std::uint32_t done = 0;
    unsigned char reparse[512];
    EXPECT_EQ(files.ReadReparsePoint(u"C:\\passwd", reparse, sizeof reparse, done), kErrorCannotAccessFile);
    ASSERT_EQ(files.ReadReparsePoint(u"C:\\drive", reparse, sizeof reparse, done), kErrorSuccess);
    EXPECT_EQ(reparse[0], 0x0C);
}

TEST_F(HostileFiles, FolderExchangedForALink_IsNotFollowed) {
    IFileSystem& files = OpenFiles();
    m_folder.Write("machine/drives/c/real/later.txt", "0123456789");
    ASSERT_EQ(ReadFile(files, u"C:\\real\\file.txt"), "inside");
    FileInfo info;
    ASSERT_EQ(files.GetInfo(u"C:\\real\\file.txt", info), kErrorSuccess);
    fs::rename(m_c / "real", m_c / "moved");
    Link(m_folder.Path() / "secret", m_c / "real");
    m_folder.Write("secret/file.txt", "secret");
    m_folder.Write("secret/later.txt", "secret");
    ASSERT_EQ(files.GetInfo(u"C:\\real\\later.txt", info), kErrorSuccess);
    EXPECT_EQ(info.size, 10U) << "of the folder that was asked before";
    EXPECT_EQ(ReadFile(files, u"C:\\real\\file.txt"), "error 1920");
    fs::remove(m_c / "real");
    fs::create_directory(m_c / "real");
    Link(m_folder.Path() / "secret" / "key.txt", m_c / "real" / "file.txt");
    EXPECT_EQ(ReadFile(files, u"C:\\real\\file.txt"), "error 1920");
}

TEST_F(HostileFiles, WritesThroughLinks_StayInMemory) {
    Link("real/file.txt", m_c / "in");
    Link(m_folder.Path() / "secret" / "key.txt", m_c / "out");
    IFileSystem& files = OpenFiles();
    EXPECT_EQ(WriteFile(files, u"C:\\out", kCreateAlways, "new"), kErrorCannotAccessFile);
    EXPECT_EQ(WriteFile(files, u"C:\\in", kCreateAlways, "new"), kErrorSuccess);
    EXPECT_EQ(files.Delete(u"C:\\out"), kErrorSuccess);
    EXPECT_EQ(files.CreateDirectory(u"C:\\made"), kErrorSuccess);
    EXPECT_EQ(ReadFile(files, u"C:\\real\\file.txt"), "new");
    EXPECT_EQ(m_folder.Read("machine/drives/c/real/file.txt"), "inside");
    EXPECT_EQ(m_folder.Read("secret/key.txt"), "secret");
    EXPECT_TRUE(fs::is_symlink(m_c / "out"));
    EXPECT_FALSE(fs::exists(m_c / "made"));
}

TEST_F(HostileFiles, OddEntries_AreListedOrLeftOutAndNeverBlock) {
    ASSERT_EQ(mkfifo((m_c / "pipe").c_str(), 0600), 0);
    for (const char* name : {"bad\xFFname", "back\\slash", "colon:", "star*", "tab\tname", "..\\..\\x", "Same", "same",
                             "SAME", "dots..", "\xC3\xA4"}) {
        m_folder.Write(fs::path("machine/drives/c") / name, name);
    }
    IFileSystem& files = OpenFiles();
    EXPECT_EQ(List(files, u"C:\\*"),
              (std::vector<std::u16string>{u"dots..", u"pipe", u"real", u"RoundupHost", u"SAME", u"Users", u"\u00E4"}));
    EXPECT_EQ(ReadFile(files, u"C:\\same"), "SAME");
    EXPECT_EQ(ReadFile(files, u"C:\\pipe"), "error 5");
    EXPECT_EQ(ReadFile(files, u"C:\\dots.."), "error 2");
    EXPECT_EQ(ReadFile(files, u"\\\\?\\C:\\dots.."), "dots..");
}

TEST_F(HostileFiles, FolderDeeperThanPaths_IsReached) {
    // The system takes no path of more than 4,096 bytes at once, so the folders are made step by step.
    const std::string name(200, 'd');
    int folder = open(m_c.c_str(), O_RDONLY | O_DIRECTORY);
    std::u16string path = u"C:";
    for (int depth = 0; depth < 50; ++depth) {
        ASSERT_EQ(mkdirat(folder, name.c_str(), 0700), 0);
        const int next = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
        close(folder);
        folder = next;
        path += u"\\" + std::u16string(200, u'D');
    }
    close(folder);
    IFileSystem& files = OpenFiles();
    EXPECT_EQ(files.GetAttributes(path.c_str()), 0x10U);
    EXPECT_EQ(files.GetAttributes((path + u"\\x").c_str()), kInvalidAttributes);
}

TEST_F(HostileFiles, HostFolder_IsRealIgnoresCaseAndIsClosed) {
    m_folder.Write("machine/host/Config/One.ini", "one");
    fs::create_directory(m_root / "host" / "Cache");
    Link("../../machine.ini", m_root / "host" / "Config" / "out");
    Link("One.ini", m_root / "host" / "Config" / "in");
    IFileSystem& files = OpenFiles();
    EXPECT_EQ(ReadFile(files, u"C:\\RoundupHost\\CONFIG\\one.INI"), "one");
    EXPECT_EQ(ReadFile(files, u"C:\\roundupHOST\\config\\IN"), "one");
    EXPECT_EQ(ReadFile(files, u"C:\\RoundupHost\\config\\out"), "error 1920");
    EXPECT_EQ(ReadFile(files, u"C:\\RoundupHost\\config\\..\\..\\machine.ini"), "error 2");
    EXPECT_EQ(WriteFile(files, u"C:\\RoundupHost\\cache\\new.ini", kCreateNew, "new"), kErrorSuccess);
    EXPECT_EQ(m_folder.Read("machine/host/Cache/new.ini"), "new");
    char16_t name[100] = {};
    EXPECT_NE(files.GetLongPath(u"C:\\rounduphost\\CACHE\\NEW.INI", name, 100), 0U);
    EXPECT_EQ(std::u16string_view(name), u"C:\\RoundupHost\\Cache\\new.ini");
}

TEST_F(HostileFiles, ManyThreads_FindTheSameInAFolderThatIsWrittenTo) {
    for (int i = 0; i < 200; ++i) m_folder.Write("machine/drives/c/many/file" + std::to_string(i), "x");
    IFileSystem& files = OpenFiles();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            const std::u16string own = u"C:\\many\\own" + std::u16string(1, static_cast<char16_t>(u'0' + number));
            for (int round = 0; round < 100; ++round) {
                failures += files.GetAttributes(u"C:\\MANY\\file199") != 0x20;
                failures += WriteFile(files, own, kCreateAlways, "x") != kErrorSuccess;
                failures += List(files, u"C:\\many\\file*").size() != 200;
                failures += files.Delete(own.c_str()) != kErrorSuccess;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace roundup
