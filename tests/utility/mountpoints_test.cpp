#include "utility/mountpoints.h"

#include <string>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class MountPointsTest : public MachineTest {
  protected:
    static std::u16string Resolve(const std::u16string& path) {
        FixedText<520> target(u"untouched");
        const bool resolved = ResolveMountPoints(path.c_str(), target);
        return (resolved ? u"+" : u"-") + std::u16string(target.View());
    }
};

TEST_F(MountPointsTest, Path_FollowsEveryMountPointInIt) {
    builder.Folder(u"D:\\real\\sub").Folder(u"D:\\deep\\er").Folder(u"E:\\fat\\x").Volume(u'E', u"FAT32");
    builder.Reparse(u"C:\\link", u"D:\\real").Reparse(u"C:\\a\\long\\way\\down", u"D:\\r");
    builder.Reparse(u"D:\\r", u"D:\\deep").Reparse(u"D:\\real\\sub\\next", u"D:\\deep\\er");
    builder.Reparse(u"C:\\self", u"C:\\self").Reparse(u"C:\\up\\down", u"C:\\up").Reparse(u"C:\\in", u"C:\\in\\side");
    builder.Reparse(u"C:\\ping", u"C:\\pong").Reparse(u"C:\\pong", u"C:\\ping").Reparse(u"E:\\fat\\l", u"D:\\real");
    builder.Folder(u"C:\\linked").Reparse(u"C:\\a\\long\\way\\in", u"D:\\r\\er").Reparse(u"C:\\in2", u"D:\\r\\er");
    builder.Reparse(u"C:\\root", u"C:\\");
    Start();
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"c:\\LINK\\sub\\file.txt", u"+D:\\real\\sub\\file.txt"},
        {u"C:\\link\\sub\\next\\x", u"+D:\\deep\\er\\x"},
        {u"C:\\a\\long\\way\\down\\er", u"+D:\\deep\\er"},  // the target is shorter than what it replaces
        // The search goes on from its position: what the target has in front of that is not looked at.
        {u"C:\\a\\long\\way\\in\\x", u"+D:\\r\\er\\x"},
        {u"C:\\a\\long\\way\\in", u"+D:\\r\\er"},
        {u"C:\\in2\\x", u"+D:\\deep\\er\\x"},
        {u"C:\\linked\\x", u"-untouched"},
        {u"E:\\fat\\l\\x", u"-untouched"},
        {u"C:\\self\\x", u"-untouched"},
        {u"C:\\in\\x", u"-untouched"},
        {u"C:\\root\\x", u"-untouched"},
        {u"C:\\ping\\x", u"-untouched"},
        {u"", u"-untouched"},
    };
    for (const auto& [path, result] : cases) {
        EXPECT_EQ(Resolve(path), result) << std::string(path, path + std::u16string_view(path).size());
    }
}

TEST_F(MountPointsTest, Chain_EndsBehind63) {
    for (int i = 0; i < 64; ++i) {
        const auto name = [](int number) {
            const std::string digits = std::to_string(number);
            return u"C:\\m" + std::u16string(digits.begin(), digits.end());
        };
        builder.Reparse(name(i), name(i + 1));
    }
    builder.Folder(u"C:\\m64");
    Start();
    EXPECT_EQ(Resolve(u"C:\\m1\\x"), u"+C:\\m64\\x");
    EXPECT_EQ(Resolve(u"C:\\m0\\x"), u"-untouched");
}

TEST_F(MountPointsTest, ResultThatDoesNotFit_IsNotCut) {
    const std::u16string target = u"D:\\" + std::u16string(200, u'd');
    builder.Reparse(u"C:\\m", target);
    Start();
    EXPECT_EQ(Resolve(u"C:\\m\\" + std::u16string(315, u'x')), u"+" + target + u"\\" + std::u16string(315, u'x'));
    EXPECT_EQ(Resolve(u"C:\\m\\" + std::u16string(316, u'x')), u"-untouched");
    EXPECT_EQ(Resolve(u"C:\\m\\" + std::u16string(600, u'x')), u"-untouched");
    char16_t small[204] = u"untouched";
    EXPECT_TRUE(ResolveMountPoints(u"C:\\m", small, 204));
    EXPECT_FALSE(ResolveMountPoints(u"C:\\m", small, 203));
    EXPECT_EQ(std::u16string_view(small), target);
}

}  // namespace
}  // namespace roundup
