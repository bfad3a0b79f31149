#include "platform/recorded/openmachine.h"

#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

class OpenMachine : public MachineTest {
  protected:
    // The machine, or null with the message in m_message.
    Machine* Open(const std::string& relative = "machine", const std::string& user = {}) {
        OpenOptions options;
        options.folder = (m_folder.Path() / relative).generic_string();
        options.user = user;
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        m_message = machine ? std::string() : error.Text();
        // Where the folder lies does not matter.
        const std::string prefix = m_folder.Text() + "/";
        if (m_message.starts_with(prefix)) m_message.erase(0, prefix.size());
        return machine ? &Start(std::move(machine)) : nullptr;
    }
    std::u16string Folder(std::uint32_t number) {
        char16_t path[260] = {};
        return CurrentMachine().Shell().GetFolderPath(number, path) ? path : u"none";
    }
    std::u16string Variable(const char16_t* name) {
        char16_t text[260] = {};
        return CurrentMachine().System().GetEnvironment(name, text, 260) != 0 ? text : u"none";
    }
    void WritePrefix(const std::string& arch) {
        m_folder.Write(
            "prefix/system.reg",
            "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n#arch=" + arch +
                "\n\n"
                "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion] 1\n#time=1\n"
                "\"CurrentBuildNumber\"=\"7601\"\n\"CurrentVersion\"=\"6.1\"\n\"SystemRoot\"=\"C:\\\\windows\"\n\n"
                "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion\\\\ProfileList\\\\S-1-5-21-0-0-0-1000] 1\n"
                "\"ProfileImagePath\"=\"C:\\\\users\\\\ann\"\n\n"
                "[Software\\\\Microsoft\\\\Windows NT\\\\CurrentVersion\\\\ProfileList] 1\n"
                "\"Public\"=str(2):\"C:\\\\users\\\\Public\"\n\n"
                "[System\\\\CurrentControlSet\\\\Control\\\\ComputerName\\\\ComputerName] 1\n"
                "\"ComputerName\"=\"BOX\"\n\n"
                "[System\\\\CurrentControlSet\\\\Control\\\\Session Manager\\\\Environment] 1\n"
                "\"Base\"=\"C:\\\\base\"\n\"Path\"=str(2):\"%SystemRoot%\"\n\"NUMBER_OF_PROCESSORS\"=\"6\"\n");
        m_folder.Write("prefix/user.reg",
                       "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\User\\\\S-1-5-21-0-0-0-1000\n\n"
                       "[Environment] 1\n\"Path\"=\"C:\\\\mine\"\n\"Tool\"=str(2):\"%Base%\\\\tool\"\n"
                       "\"TEMP\"=\"C:\\\\elsewhere\"\n\n"
                       "[Volatile Environment] 1\n\"USERNAME\"=\"ann\"\n\"USERPROFILE\"=\"C:\\\\users\\\\ann\"\n");
        m_folder.Write("prefix/drive_c/windows/notepad.exe", "MZ");
        std::filesystem::create_directories(m_folder.Path() / "prefix/dosdevices");
    }

    TempFolder m_folder;
    std::string m_message;
};

TEST_F(OpenMachine, FolderThatIsNoMachine_NamesWhatWasLookedFor) {
    m_folder.Write("machine/Windows/System32/readme.txt", "no hives");
    const std::string none =
        ": is no machine: it has neither machine.ini (recorded folder), nor system.reg and drive_c (Wine prefix), nor "
        "Windows/System32/config/SOFTWARE (offline Windows volume)";
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(m_message, "machine" + none);
    EXPECT_EQ(Open("absent"), nullptr);
    EXPECT_EQ(m_message, "absent: there is no such folder, or it cannot be opened");
    m_folder.Write("machine/system.reg", "");
    EXPECT_EQ(Open(), nullptr);
    EXPECT_EQ(m_message, "machine" + none);
    EXPECT_FALSE(std::filesystem::exists(m_folder.Path() / "absent"));
}

TEST_F(OpenMachine, RecordedFolder_KnowsOneUser) {
    m_folder.Write("machine/machine.ini", "[system]\nuser=Ann\n");
    EXPECT_NE(Open("machine", "ANN"), nullptr);
    EXPECT_EQ(Folder(40), u"C:\\Users\\Ann");
    EXPECT_EQ(Open("machine", "Bob"), nullptr);
    EXPECT_EQ(m_message, "machine: there is no user \"Bob\" here, only \"Ann\"");
}

TEST_F(OpenMachine, WinePrefix_SpeaksForItself) {
    WritePrefix("win64");
    Machine* machine = Open("prefix");
    ASSERT_NE(machine, nullptr) << m_message;
    OsVersionInfo version;
    ASSERT_TRUE(machine->System().GetVersion(version));
    EXPECT_EQ(version.major * 10 + version.minor, 61U);
    EXPECT_EQ(version.build, 7601U);
    EXPECT_EQ(machine->System().GetNativeArchitecture(), kArchitectureAmd64);
    EXPECT_EQ(machine->System().GetProcessorCount(), 6U);
    EXPECT_EQ(Folder(36), u"C:\\windows");
    EXPECT_EQ(Folder(28), u"C:\\users\\ann\\AppData\\Local");
    EXPECT_EQ(Variable(u"Tool"), u"C:\\base\\tool");
    EXPECT_EQ(Variable(u"PATH"), u"C:\\windows;C:\\mine");
    EXPECT_EQ(Variable(u"TEMP"), u"C:\\users\\ann\\AppData\\Local\\Temp");
    EXPECT_EQ(machine->Files().GetAttributes(u"C:\\Windows\\NOTEPAD.EXE"), 0x20U);
    EXPECT_EQ(Open("prefix", "bob"), nullptr);
    EXPECT_EQ(m_message, "prefix: there is no user \"bob\" here, only \"ann\"");
}

TEST_F(OpenMachine, WinePrefixOf32Bits_HasOneView) {
    WritePrefix("win32");
    Machine* machine = Open("prefix");
    ASSERT_NE(machine, nullptr) << m_message;
    EXPECT_EQ(machine->System().GetNativeArchitecture(), kArchitectureIntel);
    EXPECT_EQ(Folder(42), u"C:\\Program Files");
}

}  // namespace
}  // namespace roundup
