#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/app/recordformat.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

using Bytes = std::vector<std::byte>;

Bytes FromHex(std::string_view hex) {
    Bytes bytes;
    std::string digits;
    for (const char c : hex) {
        if (c == ' ' || c == '\n') continue;
        digits += c;
        if (digits.size() < 2) continue;
        bytes.push_back(static_cast<std::byte>(std::stoi(digits, nullptr, 16)));
        digits.clear();
    }
    return bytes;
}

// The inner record: 128 bytes.
constexpr std::string_view kPart =
    "41505000 80000000 04000000 50000000 04000000 4B000000 "
    "0000000000000000 0000000000000000 00000000000000000000000000000000 0000000000000000 "
    "00000000 00000000 00000000 00000000 00000000 "  // five texts
    "00000000 00000000 00000000 00000000 "           // icon, files, directories, sub-applications
    "00000000 00000000 00000000 00000000 00000000 00000000 00000000";
std::string WholeRecord() {
    return std::string(
               "41505000 7B010000 "
               "06000000 480069000000 "                              // name "Hi"
               "06000000 6B0031000000 "                              // key "k1"
               "0100000000000000 0008000000000000 "                  // gathered 1, estimated 2048
               "000102030405060708090A0B0C0D0E0F "                   // code
               "0103000000000000 "                                   // flags 0x301
               "00000000 02000000 0000 00000000 00000000 00000000 "  // null, empty, null, null, null
               "03000000 AABBCC "                                    // icon
               "02000000 "                                           // files
               "46494C15 0A000000 43003A005C0061000000 00000000 0500000000000000 02000000 01000000 "
               "46494C15 0A000000 43003A005C0062000000 04000000 73000000 0600000000000000 00000000 80000000 "
               "AECBCCEA 04000000 61000000 "              // alias "a"
               "01000000 0A000000 43003A005C0064000000 "  // directory
               "01000000 ") +
           std::string(kPart) + " 04000000 64000000 00000000 00000000 00000000 00000000 00000000 04000000 70000000";
}

class AppRecordTest : public MachineTest {
  protected:
    AppRecordTest() { Start(); }

    static RefPtr<CApp> Named(std::u16string_view name, std::u16string_view key) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszName = OwnedString(name);
        app->pwszKeyString = OwnedString(key);
        return app;
    }
    static std::unique_ptr<CWFYFile> File(std::u16string_view path, std::int64_t size, std::uint32_t type,
                                          std::uint32_t flags) {
        auto file = std::make_unique<CWFYFile>();
        file->pwszPath = OwnedString(path);
        file->llSize = size;
        file->dwType = type;
        file->dwFlags = flags;
        return file;
    }
    // The application whose record is WholeRecord.
    static RefPtr<CApp> Whole() {
        RefPtr<CApp> app = Named(u"Hi", u"k1");
        app->llGatheredSize = 1;
        app->llEstimatedSize = 2048;
        for (std::uint8_t i = 0; i < 16; ++i) app->ProductCode.bytes[i] = i;
        app->qwFlags = 0x301;
        app->pwszVersion = OwnedString(u"");
        app->pIconData = std::make_unique<std::byte[]>(3);
        app->dwIconDataSize = 3;
        std::memcpy(app->pIconData.get(), "\xAA\xBB\xCC", 3);
        app->MakeGathered().Files.push_back(File(u"C:\\a", 5, FileType::kOrdinary, FileFlags::k64BitImage));
        app->Gathered().Files[0]->pwszShortPath = OwnedString(u"");  // of a file, empty and null are stored alike
        app->MakeGathered().Files.push_back(File(u"C:\\b", 6, FileType::kConfig, FileFlags::kStaysOnDisk));
        app->Gathered().Files[1]->pwszShortPath = OwnedString(u"s");
        app->Gathered().Files[1]->SetAlias(u"a");
        app->MakeGathered().Directories.Add(u"C:\\d");
        app->SubApps.push_back(Named(u"P", u"K"));
        app->pwszInstallDate = OwnedString(u"d");
        app->pwszParentKeyName = OwnedString(u"p");
        app->pwszParentDisplayName = OwnedString(u"not stored");
        app->MakeGathered().FilePaths.Add(u"C:\\a");
        return app;
    }
    static Bytes Write(const CApp& app) {
        Bytes bytes(std::max<std::size_t>(app.GetSize(), 0x100000));
        std::uint32_t count = 0;
        const auto rc = app.Serialize(bytes.data(), static_cast<std::uint32_t>(bytes.size()), count);
        EXPECT_TRUE(Succeeded(rc));
        bytes.resize(count);
        return bytes;
    }
    static SmallCode Read(CApp& app, const Bytes& bytes, std::uint32_t* count = nullptr) {
        std::uint32_t consumed = 0;
        // A copy of the exact size, so that a sanitizer sees the first byte that is read too many.
        const Bytes exact(bytes);
        const auto rc = app.ReSerialize(exact.data(), static_cast<std::uint32_t>(exact.size()), consumed);
        if (count != nullptr) *count = consumed;
        return Small(rc);
    }
};

TEST_F(AppRecordTest, Record_HasTheBytesOfTheFormat) {
    const Bytes expected = FromHex(WholeRecord());
    RefPtr<CApp> app = Whole();
    EXPECT_EQ(app->GetSize(), expected.size());
    EXPECT_EQ(Write(*app), expected);
}

TEST_F(AppRecordTest, Record_ReadsBackWhole) {
    const Bytes bytes = FromHex(WholeRecord());
    RefPtr<CApp> app = RefPtr<CApp>::Adopt(new CApp);
    std::uint32_t count = 0;
    ASSERT_EQ(Read(*app, bytes, &count), SmallCode::Success);
    EXPECT_EQ(count, bytes.size());
    EXPECT_EQ(Write(*app), bytes);
    EXPECT_TRUE(app->IsGathered());
    EXPECT_TRUE(app->pwszInstallLoc.IsNull());
    EXPECT_FALSE(app->pwszVersion.IsNull()) << "a lone terminator is an empty text, not a null one";
    EXPECT_EQ(app->Gathered().pConfigFile, app->Gathered().Files[1].get());
    EXPECT_EQ(app->Gathered().pIndexFile, nullptr);
    EXPECT_TRUE(app->Gathered().FilePaths.empty());
    EXPECT_TRUE(app->pwszParentDisplayName.IsNull());
}

// Older records end before some of the last seven texts.
TEST_F(AppRecordTest, RecordThatEndsInItsTail_ReadsWithTheRestNull) {
    RefPtr<CApp> source = Named(u"n", u"k");
    source->pwszInstallDate = OwnedString(u"d");
    for (std::uint32_t missing = 1; missing <= 7; ++missing) {
        Bytes bytes = Write(*source);
        bytes.resize(bytes.size() - 4 * missing - (missing == 7 ? 4 : 0));
        const auto total = static_cast<std::uint32_t>(bytes.size());
        std::memcpy(bytes.data() + 4, &total, 4);
        CApp app;
        EXPECT_EQ(Read(app, bytes), SmallCode::Success) << missing;
        EXPECT_EQ(app.pwszInstallDate.IsNull(), missing == 7) << missing;
    }
}

// Every cut either hits the end of a tail text that the length does not cover, or fails: nothing reads past the end.
TEST_F(AppRecordTest, TruncatedRecord_FailsAtEveryByte) {
    const Bytes bytes = FromHex(WholeRecord());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        CApp app;
        EXPECT_EQ(Read(app, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
                  SmallCode::BadArgument)
            << size;
        Bytes shortened(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        const auto total = static_cast<std::uint32_t>(size);
        if (size >= 8) std::memcpy(shortened.data() + 4, &total, 4);
        CApp other;
        const SmallCode code = Read(other, shortened);
        EXPECT_TRUE(code == SmallCode::BadArgument || (code == SmallCode::Success && size > bytes.size() - 40)) << size;
    }
}

// The objects of temporary files delete what they name; a record that breaks off must not reach the disk, wherever in
// the nest its files are. One that is whole owns them.
TEST_F(AppRecordTest, TemporaryFilesOfARecord_GoOnlyWithAWholeOne) {
    RefPtr<CApp> source = Named(u"n", u"k");
    for (const std::u16string_view name : {u"first", u"second"}) {
        source->SubApps.push_back(Named(name, name));
        auto* const sub = dynamic_cast<CApp*>(source->SubApps.back().Get());
        sub->MakeGathered().Files.push_back(File(u"C:\\Temp\\a.cfg", 1, FileType::kConfig, FileFlags::kStaysOnDisk));
    }
    Bytes bytes = Write(*source);
    // The flags of both files, now without the mark that they stay.
    const Bytes kept = FromHex("00000000 80000000");
    for (auto at = bytes.begin(); (at = std::search(at, bytes.end(), kept.begin(), kept.end())) != bytes.end();) {
        at[4] = std::byte{0};
    }
    builder.File(u"C:\\Temp\\a.cfg", "x");
    IFileSystem& files = Start().Files();
    const auto isThere = [&files] { return files.GetAttributes(u"C:\\Temp\\a.cfg") != kInvalidAttributes; };
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        CApp app;
        EXPECT_EQ(Read(app, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size))),
                  SmallCode::BadArgument);
    }
    Bytes broken = bytes;
    broken[broken.size() - 4] = std::byte{0xFF};
    {
        CApp app;
        EXPECT_EQ(Read(app, broken), SmallCode::BadArgument) << "the last text";
    }
    EXPECT_TRUE(isThere());
    {
        CApp app;
        EXPECT_EQ(Read(app, bytes), SmallCode::Success);
        EXPECT_TRUE(isThere());
        EXPECT_EQ(Write(app), bytes) << "the mark was for the time of reading";
    }
    EXPECT_FALSE(isThere());
}

// What a text holds behind a zero is not seen by the platform, and must not be seen by the system either.
TEST_F(AppRecordTest, TextWithAZeroInside_EndsThere) {
    Bytes bytes = Write(*Named(u"na", u"key"));
    bytes[8 + 4 + 2] = std::byte{0};
    CApp app;
    EXPECT_EQ(Read(app, bytes), SmallCode::Success);
    EXPECT_EQ(app.pwszName.Length(), 1U);
}

TEST_F(AppRecordTest, BrokenFields_AreRefused) {
    const std::tuple<const char*, std::size_t, std::uint32_t> cases[] = {
        {"magic", 0, 0x00505042},
        {"no length", 4, 0},
        {"length past the buffer", 4, 0x17C},
        {"null name", 8, 0},
        {"name past the end", 8, 0xFFFFFFFE},
        {"name without terminator", 8, 4},
        {"icon past the end", 90, 0xFFFFFFFF},
        {"more files than bytes", 97, 0xFFFFFFFF},
    };
    for (const auto& [what, at, word] : cases) {
        Bytes bytes = FromHex(WholeRecord());
        std::memcpy(bytes.data() + at, &word, sizeof word);
        CApp app;
        EXPECT_EQ(Read(app, bytes), SmallCode::BadArgument) << what;
    }
}

// Stored records nest as deep as the limit, and one level more neither writes nor reads.
TEST_F(AppRecordTest, NestingDepth_IsBoundedOnBothSides) {
    RefPtr<CApp> top = Named(u"0", u"0");
    for (std::uint32_t depth = 0; depth < kMaxSubAppDepth; ++depth) {
        RefPtr<CApp> above = Named(u"n", u"k");
        above->SubApps.push_back(std::move(top));
        top = std::move(above);
    }
    Bytes bytes = Write(*top);
    EXPECT_EQ(bytes.size(), top->GetSize());
    CApp app;
    EXPECT_EQ(Read(app, bytes), SmallCode::Success);

    RefPtr<CApp> above = Named(u"n", u"k");
    above->SubApps.push_back(std::move(top));
    EXPECT_EQ(above->GetSize(), 0U);
    std::uint32_t count = 0;
    Bytes buffer(0x100000);
    EXPECT_EQ(Small(above->Serialize(buffer.data(), 0x100000, count)), SmallCode::GeneralFailure);

    const Bytes part = FromHex(kPart);
    Bytes deeper(part.begin(), part.end() - 28);
    const std::uint32_t one = 1;
    std::memcpy(deeper.data() + deeper.size() - 4, &one, 4);
    const auto total = static_cast<std::uint32_t>(deeper.size() + bytes.size());
    std::memcpy(deeper.data() + 4, &total, 4);
    deeper.insert(deeper.end(), bytes.begin(), bytes.end());
    CApp other;
    EXPECT_EQ(Read(other, deeper), SmallCode::BadArgument);
}

TEST_F(AppRecordTest, SmallBuffer_FailsAtEverySizeAndWritesNothingBehindIt) {
    RefPtr<CApp> app = Whole();
    const std::uint32_t size = app->GetSize();
    for (std::uint32_t room = 0; room <= size; ++room) {
        Bytes buffer(size + 1, std::byte{0xEE});
        std::uint32_t count = 0;
        const auto rc = app->Serialize(buffer.data(), room, count);
        EXPECT_EQ(Small(rc), room < size ? SmallCode::GeneralFailure : SmallCode::Success) << room;
        EXPECT_LE(count, room);
        EXPECT_EQ(buffer[room], std::byte{0xEE}) << room;
    }
}

}  // namespace
}  // namespace roundup
