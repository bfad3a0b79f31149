#include "utility/log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/machinefiles.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"
#include "utility/result.h"
#include "utility/utf.h"

namespace roundup {
namespace {

constexpr std::size_t kTail = 0x400000;

std::u16string LogPath() {
    char16_t folder[260] = {};
    char16_t host[260] = {};
    CurrentMachine().System().GetTempFolder(folder, 260);
    CurrentMachine().System().GetHostExecutable(host, 260);
    FixedText<260> path;
    log_detail::NameFile(folder, host, path);
    return std::u16string(path);
}

std::string ReadLog() {
    const std::string bytes = ReadFile(CurrentMachine().Files(), LogPath());
    return bytes == "error 2" ? "" : bytes;
}

std::u16string Units(std::string_view bytes) {
    std::u16string text(bytes.size() / 2, u'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * 2);
    return text;
}

// The messages of the log, each checked for its stamp and its tag, behind the mark and the memory line.
std::vector<std::u16string> Messages(std::u16string_view text) {
    constexpr std::u16string_view kHead = u"\uFEFFComputer information: ullTotalPhys = ";
    EXPECT_TRUE(text.starts_with(kHead));
    std::vector<std::u16string> messages;
    for (std::size_t at = text.find(u"\r\n"); at + 2 < text.size();) {
        const std::size_t start = at + 2;
        at = text.find(u"\r\n", start);
        const std::u16string_view line = text.substr(start, at - start);
        std::u16string shape(line.substr(0, 24));
        for (char16_t& c : shape) c = c >= u'0' && c <= u'9' ? u'0' : c;
        EXPECT_EQ(shape, u"0000-00-00 00:00:00:000(");
        const std::size_t tag = line.find(u"): [ITL]");
        EXPECT_NE(tag, line.npos) << ToUtf8(line);
        if (tag == line.npos || at == text.npos) break;
        messages.emplace_back(line.substr(tag + 8));
    }
    return messages;
}

using Log = MachineTest;
using Lines = std::vector<std::u16string>;

TEST(LogName, HostNameThatIsAPieceOfTheProducts_SharesItsFile) {
    const std::pair<std::u16string_view, std::u16string_view> rows[] = {
        {u"C:\\P\\Wayferry.exe", u"morrowWayferry.log"},
        {u"ferry", u"morrowWayferry.log"},
        {u"", u"morrowWayferry.log"},
        {u"C:\\P\\Wayferry2.exe", u"morrowWayferry_Wayferry2.log"},
        {u"C:/my.folder/tool", u"morrowWayferry_tool.log"},
    };
    for (const auto& [executable, name] : rows) {
        FixedText<260> path;
        log_detail::NameFile(u"C:\\T\\", executable, path);
        EXPECT_EQ(path.View(), std::u16string(u"C:\\T\\").append(name));
    }
    // A relative path, or one that was cut, would name a file somewhere else.
    for (const std::u16string& folder : {std::u16string(), std::u16string(236, u'd') + u"\\"}) {
        FixedText<260> path(u"before");
        log_detail::NameFile(folder, u"C:\\P\\tool.exe", path);
        EXPECT_TRUE(path.IsEmpty());
    }
}

TEST_F(Log, FileAroundEightMebibytes_IsCutToItsTailOnlyAboveTheLimit) {
    for (const std::size_t size : {0x800000U, 0x800001U, 0x800002U}) {
        Start();
        std::string old(size, '\0');
        for (std::size_t i = 0; i < size; ++i) old[i] = static_cast<char>('A' + (i / 2) % 23 * (1 - i % 2));
        old.replace(0, 2, "\xFF\xFE");
        ASSERT_EQ(WriteFile(CurrentMachine().Files(), LogPath(), kCreateAlways, old), kErrorSuccess);
        TraceLine(u"new");
        const std::string log = ReadLog();
        if (size == 0x800000U) {
            EXPECT_EQ(log.compare(0, size, old), 0);
            EXPECT_EQ(Units(log.substr(size)).substr(24).ends_with(u"[ITL]new\r\n"), true);
            continue;
        }
        const std::u16string text = Units(log);
        ASSERT_EQ(text.front(), u'\uFEFF');
        EXPECT_EQ(text.find(u'\uFEFF', 1), text.npos);
        const std::size_t head = 2 * (text.find(u"\r\n") + 2);
        // At an odd size the cut still falls between two units.
        EXPECT_EQ(log.compare(head, kTail, old, (size - kTail) & ~std::size_t{1}, kTail), 0);
        const std::u16string line = Units(log.substr(head + kTail));
        EXPECT_LT(line.size(), 60U);
        EXPECT_TRUE(line.ends_with(u"[ITL]new\r\n"));
    }
}

TEST_F(Log, OtherProcessOnTheSameFile_KeepsItsLines) {
    const TempFolder folder;
    builder.RealTempFolder(folder.Text());
    Start();
    TraceLine(u"one");
    {
        const std::unique_ptr<Machine> other = builder.Build();
        const MachineScope scope(*other);
        TraceLine(u"a longer line of the other");
    }
    TraceLine(u"three");
    EXPECT_EQ(Messages(Units(ReadLog())), (Lines{u"one", u"a longer line of the other", u"three"}));
    Stop();
}

TEST_F(Log, FullDisk_ChangesNothingForTheCaller) {
    for (const std::uint64_t limit : {0U, 1U, 150U, 300U}) {
        builder.WriteLimit(limit);
        Start();
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(Small(Fail(SmallCode::BadData)), SmallCode::BadData);
        }
        EXPECT_LE(ReadLog().size(), limit);
    }
}

TEST_F(Log, FileThatCannotBeOpened_CostsOneDebugTextALine) {
    Start();
    const std::u16string path = LogPath();
    std::vector<std::u16string> debug;
    builder.File(path, "").DenyFile(path).DebugText(debug);
    Start();
    TraceLine(u"one");
    TraceLine(u"two");
    EXPECT_EQ(debug, (Lines{u"[ITL]open file fail=0x5\r\n", u"[ITL]open file fail=0x5\r\n"}));
    Stop();
}

TEST_F(Log, ManyThreads_WriteWholeLines) {
    Start();
    std::vector<std::thread> threads;
    std::atomic<int> ready{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i, &ready] {
            for (++ready; ready < 4;) std::this_thread::yield();
            for (int k = 0; k < 500; ++k) TraceLine(u"%d:%s", i, std::u16string(20, static_cast<char16_t>(u'a' + i)));
        });
    }
    for (std::thread& thread : threads) thread.join();
    const Lines messages = Messages(Units(ReadLog()));
    EXPECT_EQ(messages.size(), 2000U);
    for (const std::u16string& message : messages) {
        const auto letter = static_cast<char16_t>(u'a' + (message[0] - u'0'));
        EXPECT_EQ(message.substr(1), u":" + std::u16string(20, letter));
    }
}

TEST_F(Log, Checks_TellConditionLastErrorLineAndFile) {
    Start();
    EXPECT_EQ(CurrentMachine().Files().GetAttributes(u"C:\\not there"), kInvalidAttributes);
    const unsigned line = __LINE__ + 1;
    const ResultCode made = Fail(SmallCode::BadArgument, 0x1'0000'002AU);
    const ResultCode win32 = FailWin32(kErrorAccessDenied);
    EXPECT_EQ(Pass(win32), win32);
    Skip(made);
    SkipIf(7);
    EXPECT_EQ(made.Value(), (std::uint64_t{line} << 16) | 2);
    EXPECT_EQ(win32.Value(), (std::uint64_t{5} << 32) | (std::uint64_t{line + 1} << 16) | 0x21);
    const unsigned codes[] = {(line << 16) | 2, ((line + 1) << 16) | 0x21};
    const Lines messages = Messages(Units(ReadLog()));
    ASSERT_EQ(messages.size(), 5U);
    EXPECT_EQ(messages[0], FormatText(u"B(c=0x2A, e=2, l=%d) var=0x%X, log_test.cpp", line, codes[0]));
    const auto withoutError = [&](std::size_t i) {
        const std::size_t at = messages[i].find(u"e=");
        return messages[i].substr(0, at) + messages[i].substr(messages[i].find(u", l="));
    };
    EXPECT_EQ(withoutError(1), FormatText(u"B(c=0x1, , l=%d) var=0x%X, log_test.cpp", line + 1, codes[1]));
    EXPECT_EQ(withoutError(2), FormatText(u"B(c=0x%X, , l=%d) log_test.cpp", codes[1], line + 2));
    EXPECT_EQ(withoutError(3), FormatText(u"C(c=0x%X, , l=%d) log_test.cpp", codes[0], line + 3));
    EXPECT_EQ(withoutError(4), FormatText(u"C(c=0x7, , l=%d) log_test.cpp", line + 4));
}

}  // namespace
}  // namespace roundup
