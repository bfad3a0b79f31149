// What the catalogue learns of a package, and the suites of product codes.
#include <cstring>

#include "msianalyzer/imsiproductinfo.h"
#include "msianalyzer/suitecode.h"
#include "tests/support/iconfiles.h"
#include "tests/support/machinefiles.h"
#include "tests/support/machinetest.h"
#include "tests/support/packagewriter.h"
#include "utility/utf.h"

namespace roundup {
namespace {

constexpr const char* kCode = "{90140000-003A-0000-0000-0000000FF1CE}";

class ProductInfo : public MachineTest {
  protected:
    PackageWriter Package(const char* iconName) const {
        PackageWriter package;
        package.Table("Property", {"Property s72*", "Value l0"}).Row("Property", {"ProductCode", kCode});
        package.Row("Property", {"ProductName", "Tool"}).Row("Property", {"ProductName", "Second"});
        if (iconName != nullptr) package.Row("Property", {"ARPPRODUCTICON", iconName});
        package.Table("Icon", {"Name s72*", "Data v0"});
        return package;
    }
    ResultCode Open(const PackageWriter& package) {
        builder.File(u"C:\\a.msi", package.Write());
        Start();
        info.reset(CreateMSIProductInfo());
        return info->Open(u"C:\\a.msi");
    }
    void TearDown() override { info.reset(); }
    // Files left in the folder of temporary files.
    static std::size_t FilesLeft() {
        char16_t temp[260] = {};
        (void)CurrentMachine().System().GetTempFolder(temp, 260);
        return List(CurrentMachine().Files(), (std::u16string(temp) + u"WAY-FERRY\\*.exe").c_str()).size();
    }

    ProductInfoPtr info;
};

TEST_F(ProductInfo, Properties_AreThoseOfThePackage) {
    ASSERT_TRUE(Succeeded(Open(Package(nullptr))));
    OwnedString text;
    EXPECT_TRUE(Succeeded(info->GetProductName(&text)));
    EXPECT_EQ(text.View(), u"Tool");
    EXPECT_TRUE(Succeeded(info->GetProductVersion(&text)));
    EXPECT_FALSE(text.IsNull());
    EXPECT_TRUE(text.IsEmpty());
    std::uint32_t number = 99;
    EXPECT_TRUE(Succeeded(info->GetReserved1(&number)));
    EXPECT_EQ(number, 0U);
    EXPECT_TRUE(Succeeded(info->GetSuiteFlags(&number)));
    EXPECT_EQ(number, 13U);
    EXPECT_EQ(Small(info->GetProductCode(nullptr)), SmallCode::BadArgument);
    Ignore(info->Close(), u"it always succeeds");
    EXPECT_EQ(Small(info->GetProductCode(&text)), SmallCode::ObjectMissing);
    EXPECT_EQ(Small(info->GetSuiteFlags(&number)), SmallCode::ObjectMissing);
    EXPECT_EQ(Small(info->Open(nullptr)), SmallCode::BadArgument);
    EXPECT_EQ(Small(info->Open(u"C:\\absent.msi")), SmallCode::InstallerFailure);
}

TEST_F(ProductInfo, IconWithoutBytes_FailsTheWholePackage) {
    PackageWriter package = Package("i");
    package.Row("Icon", {"i", PackageWriter::Blob{""}});
    EXPECT_EQ(Small(Open(package)), SmallCode::InstallerFailure);
    OwnedString text;
    EXPECT_EQ(Small(info->GetProductName(&text)), SmallCode::ObjectMissing);
}

TEST_F(ProductInfo, Icons_ComePlainOrOutOfImages) {
    struct Case {
        const char* property;
        std::string bytes;
        bool same;  // the bytes are handed out as they are
        SmallCode result;
    };
    const Case cases[] = {{"i", std::string("\0\0\1\0 plain", 10), true, SmallCode::Success},
                          {"i", "MZ is no image", false, SmallCode::GeneralFailure},
                          {"i,3", "M", true, SmallCode::Success},
                          {"other", "plain", false, SmallCode::GeneralFailure},
                          {nullptr, "plain", false, SmallCode::GeneralFailure}};
    for (const Case& test : cases) {
        PackageWriter package = Package(test.property);
        package.Row("Icon", {"i", PackageWriter::Blob{test.bytes}});
        ASSERT_TRUE(Succeeded(Open(package)));
        std::unique_ptr<std::byte[]> data;
        std::uint32_t size = 99;
        EXPECT_EQ(Small(info->GetProductIcon(&data, &size)), test.result) << test.bytes;
        EXPECT_EQ(size, test.same ? test.bytes.size() : 0U);
        EXPECT_EQ(data != nullptr, test.same);
        EXPECT_TRUE(!test.same || std::memcmp(data.get(), test.bytes.data(), size) == 0);
        EXPECT_EQ(FilesLeft(), 0U);
    }
}

// The second icon of a program, blue; the first one is red.
TEST_F(ProductInfo, IconOfAnImage_IsTheOneOfItsIndex) {
    const auto plain = [](std::uint32_t color) {
        return MakeBitmap(
            {}, [color](std::uint32_t, std::uint32_t) { return color; },
            [](std::uint32_t, std::uint32_t) { return false; });
    };
    PackageWriter package = Package("i.exe,1");
    const std::string program = MakeProgram({{1, u"", {plain(0xFF0000)}}, {2, u"", {plain(0x0000FF)}}}, false);
    package.Row("Icon", {"i.exe", PackageWriter::Blob{program}});
    ASSERT_TRUE(Succeeded(Open(package)));
    std::unique_ptr<std::byte[]> data;
    std::uint32_t size = 0;
    ASSERT_TRUE(Succeeded(info->GetProductIcon(&data, &size)));
    constexpr std::size_t kPixels = 22 + 40;  // behind the headers of file and bitmap
    constexpr std::size_t kImage = 32 * 32 * 4;
    ASSERT_EQ(size, kPixels + kImage + 32 * 4);
    const std::string bytes(reinterpret_cast<const char*>(data.get()), size);
    EXPECT_EQ(bytes.substr(0, 8), std::string("\0\0\1\0\1\0\x20\x20", 8));
    for (std::size_t at = kPixels; at < kPixels + kImage; at += 4) {
        ASSERT_EQ(bytes.substr(at, 3), std::string("\xFF\0\0", 3)) << at;
    }
    EXPECT_EQ(FilesLeft(), 0U);
}

TEST(SuiteCode, Codes_AreClassifiedByVersionAndProduct) {
    struct Case {
        const char16_t* code;
        std::uint32_t suite;
    };
    const Case cases[] = {
        {u"{90110409-6000-11D3-8CFE-0150048383C9}", 1},  {u"{903a0409-6000-11d3-8cfe-0150048383c9}", 11},
        {u"{901D0409-6000-11D3-8CFE-0150048383C9}", 0},  {u"{90120000-10D7-0000-0000-0000000FF1CE}", 2},
        {u"{90140000-003a-0000-0000-0000000ff1ce}", 13}, {u"{90140000-0057-0409-1000-0000000FF1CE}", 8},
        {u"{90160000-000F-0000-0000-0000000FF1CE}", 17}, {u"{90110000-0011-0000-0000-0000000FF1CE}", 0},
        {u"{90140000-0011-0000-0000-0000000FF1CE", 0},   {u"{9011040", 0}};
    for (const Case& test : cases) EXPECT_EQ(ClassifySuiteCode(test.code), test.suite) << ToUtf8(test.code);
}

}  // namespace
}  // namespace roundup
