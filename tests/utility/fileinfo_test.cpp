#include "utility/fileinfo.h"

#include <string>
#include <tuple>

#include "tests/support/machinetest.h"
#include "utility/stringcontainers.h"

namespace roundup {
namespace {

class FileInfoTest : public MachineTest {};

// Failure's attributes have every bit set, also those that the questions are about.
TEST_F(FileInfoTest, MissingPath_IsNeitherFileNorFolder) {
    builder.File(u"C:\\a.txt", "12345").Folder(u"C:\\dir").Folder(u"D:\\real").Reparse(u"C:\\link", u"D:\\real");
    Start();
    const struct {
        const char16_t* path;
        bool exists, isFile, isReparse, found;
        std::uint64_t size;
    } cases[] = {
        {u"C:\\A.TXT", true, true, false, true, 5},   {u"C:\\dir", true, false, false, true, 0},
        {u"C:\\link", true, false, true, true, 0},    {u"C:\\none", false, false, false, false, 0},
        {u"C:\\*.txt", false, false, false, true, 0}, {u"C:\\*.doc", false, false, false, false, 0},
        {u"", false, false, false, false, 0},         {nullptr, false, false, false, false, 0},
    };
    for (const auto& c : cases) {
        for (const bool noRedirect : {false, true}) {
            EXPECT_EQ(PathExists(c.path, noRedirect), c.exists);
            EXPECT_EQ(IsFilePath(c.path, noRedirect), c.isFile);
            EXPECT_EQ(GetFileSize64(c.path, noRedirect), c.size);
        }
        EXPECT_EQ(IsReparseFolder(c.path), c.isReparse);
        EXPECT_EQ(PatternExists(c.path), c.found);
    }
}

TEST_F(FileInfoTest, IniKeys_StopAtAHundredAndAtTheLargestFile) {
    std::string many = "[s]\r\n";
    for (int i = 0; i < 150; ++i) many += "key" + std::to_string(1000 + i) + "=1\r\n";
    const std::string few = "[other]\r\nx=1\r\n[s]\r\nOne=1\r\none=2\r\nTwo\r\n;no=3\r\n";
    builder.File(u"C:\\i\\many.ini", many).File(u"C:\\i\\few.ini", few).File(u"C:\\i\\empty.ini");
    builder.File(u"C:\\i\\largest.ini", few + std::string(0x100000 - few.size(), ';'));
    builder.File(u"C:\\i\\larger.ini", few + std::string(0x100001 - few.size(), ';'));
    Start();
    const std::tuple<const char16_t*, const char16_t*, bool> cases[] = {
        {u"C:\\i", u"few.ini", true},     {u"C:\\i\\", u"few.ini", true},  {u"C:\\i", u"largest.ini", true},
        {u"C:\\i", u"larger.ini", false}, {u"C:\\i", u"empty.ini", false}, {u"C:\\i", u"none.ini", false},
    };
    for (const auto& [folder, file, found] : cases) {
        CStringSet keys;
        EXPECT_EQ(ReadIniKeys(folder, file, u"S", keys), found);
        EXPECT_EQ(keys.Contains(u"one"), found);
        EXPECT_FALSE(keys.Contains(u"x"));
    }
    CStringSet keys;
    EXPECT_TRUE(ReadIniKeys(u"C:\\i", u"many.ini", u"s", keys));
    EXPECT_EQ(keys.size(), 100U);
    EXPECT_TRUE(ReadIniKeys(u"C:\\i", u"none.ini", u"s", keys));  // what was there counts
}

}  // namespace
}  // namespace roundup
