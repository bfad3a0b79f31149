#include "utility/pathtext.h"

#include <string>
#include <tuple>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class PathTextTest : public MachineTest {};

std::string Narrow(std::u16string_view text) { return {text.begin(), text.end()}; }

TEST_F(PathTextTest, CleanPath_LeavesThePathAlone) {
    builder.File(u"C:\\Tool\\bin\\a.exe");
    Start();
    const struct {
        std::u16string_view text;
        std::u16string_view cleaned;
    } cases[] = {
        {u"", u""},
        {u"C:\\Tool\\", u"C:\\Tool"},
        {u"\"C:\\Tool\\a.exe\" /S \"x\"", u"C:\\Tool\\a.exe"},
        {u"\"C:\\Tool\\a.exe", u"C:\\Tool\\a.exe"},
        {u"C:\\\\\\\\Tool\\\\a.exe", u"C:\\Tool\\a.exe"},
        {u"\\\\server\\share\\", u"\\server\\share"},
        {u"C:\\None\\a.exe   /S /D=C:/x", u"C:\\None\\a.exe"},
        {u"C:/Tool//bin\\/a.exe", u"C:\\Tool\\bin\\a.exe"},
        {u"C:/Tool/bin/a.exe /S", u"C:\\Tool\\bin\\a.exe"},  // the switch goes, then the rest exists
        {u"   /S", u" "},                                    // the first character stays, blank or not
    };
    for (const auto& c : cases) {
        OwnedString text(c.text);
        CleanPath(text);
        EXPECT_EQ(text.View(), c.cleaned) << Narrow(c.text);
    }
}

TEST_F(PathTextTest, CleanPath_EndsOnHostileTexts) {
    Start();
    for (const std::size_t length : {259U, 260U, 519U, 520U, 1000000U}) {
        OwnedString slashes(std::u16string(length, u'/'));
        CleanPath(slashes);
        EXPECT_TRUE(slashes.IsEmpty());
        OwnedString backslashes(std::u16string(length, u'\\'));
        CleanPath(backslashes);
        EXPECT_TRUE(backslashes.IsEmpty());
        const std::u16string path = u"C:\\" + std::u16string(length - 3, u'x');
        OwnedString plain(path);
        CleanPath(plain);
        EXPECT_EQ(plain.View(), path);
    }
    // Thousands of cuts: the one that exists is still found, and soon.
    std::u16string cuts = u"C:\\Windows";
    while (cuts.size() < 32767) cuts += u"/x ";
    OwnedString windows(cuts);
    CleanPath(windows);
    EXPECT_EQ(windows.View(), u"C:\\Windows");
}

TEST_F(PathTextTest, ExpandPath_GivesTheLongFormOrLeavesTheString) {
    builder.File(u"C:\\Program Files\\Long Name\\a.exe").Short(u"C:\\Program Files", u"C:\\PROGRA~1");
    builder.Short(u"C:\\Program Files\\Long Name", u"C:\\Program Files\\LONGNA~1");
    builder.Environment(u"TOOLS", u"C:\\Program Files\\Long Name").Environment(u"BIG", std::u16string(600, u'b'));
    Start();
    const std::u16string tooLong = u"C:\\" + std::u16string(517, u'x');
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u"\"%TOOLS%\\a.exe\" /S", u"C:\\Program Files\\Long Name\\a.exe"},
        {u"C:\\PROGRA~1\\LONGNA~1\\a.exe", u"C:\\Program Files\\Long Name\\a.exe"},
        {u"%NONE%\\x", u"%NONE%\\x"},
        {u"%BIG%\\x", u"%BIG%\\x"},
        {u"x%TOOLS%", u"x%TOOLS%"},
        {u"\"\"", u"\"\""},
        {tooLong + u"\\", tooLong + u"\\"},
        {u"%TOOLS%\\a.exe" + std::u16string(32767, u' ') + u"/S", u"C:\\Program Files\\Long Name\\a.exe"},
    };
    for (const auto& [text, expanded] : cases) {
        OwnedString path(text);
        ExpandPath(path);
        EXPECT_EQ(path.View(), expanded) << Narrow(text.substr(0, 60));
    }
}

// A path that is cut names another file.
TEST_F(PathTextTest, LongAndShortForm_ThatDoNotFitLeaveNothing) {
    builder.File(u"C:\\Folder\\file.txt").Short(u"C:\\Folder", u"C:\\F");
    Start();
    const std::tuple<const char16_t*, std::size_t, const char16_t*, const char16_t*> cases[] = {
        {u"C:\\Folder\\file.txt", 19, u"C:\\Folder\\file.txt", u"C:\\F\\file.txt"},
        {u"C:\\Folder\\file.txt", 18, u"", u"C:\\F\\file.txt"},
        {u"C:\\F\\file.txt", 13, u"", u""},
        {u"C:\\None\\x", 9, u"", u""},
    };
    for (const auto& [source, size, longForm, shortForm] : cases) {
        char16_t target[24];
        std::fill(std::begin(target), std::end(target), u'#');
        GetLongPath(source, target, size);
        EXPECT_STREQ(Narrow(target).c_str(), Narrow(longForm).c_str()) << size;
        EXPECT_EQ(target[size], u'#');
        GetShortPath(source, target, size);
        EXPECT_STREQ(Narrow(target).c_str(), Narrow(shortForm).c_str()) << size;
        EXPECT_EQ(target[size], u'#');
    }
}

}  // namespace
}  // namespace roundup
