// Links of real machines, read by our reader and by another one.
#include <gtest/gtest.h>
#include <liblnk.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>

#include "platform/recorded/links/linkfile.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using SizeOf = int (*)(liblnk_file_t*, size_t*, liblnk_error_t**);
using TextOf = int (*)(liblnk_file_t*, uint8_t*, size_t, liblnk_error_t**);

std::u16string Ask(liblnk_file_t* file, SizeOf sizeOf, TextOf textOf) {
    size_t size = 0;
    if (sizeOf(file, &size, nullptr) != 1 || size == 0) return {};
    std::string text(size, '\0');
    if (textOf(file, reinterpret_cast<uint8_t*>(text.data()), size, nullptr) != 1) return {};
    return FromUtf8(text.c_str());
}

TEST(LinkOracle, LinksOfRealMachines_SayTheSame) {
    const std::filesystem::path folder = std::string(ROUNDUP_SHARED_DATA) + "/links";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no links in " ROUNDUP_SHARED_DATA;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(stream), {});
        LinkFile link;
        ASSERT_TRUE(ParseLinkFile(ByteView(std::as_bytes(std::span(bytes))), link)) << entry.path();
        liblnk_file_t* file = nullptr;
        ASSERT_EQ(liblnk_file_initialize(&file, nullptr), 1);
        ASSERT_EQ(liblnk_file_open(file, entry.path().c_str(), liblnk_get_access_flags_read(), nullptr), 1);
        EXPECT_EQ(link.description, Ask(file, liblnk_file_get_utf8_description_size, liblnk_file_get_utf8_description));
        EXPECT_EQ(link.workingDirectory,
                  Ask(file, liblnk_file_get_utf8_working_directory_size, liblnk_file_get_utf8_working_directory));
        EXPECT_EQ(link.arguments, Ask(file, liblnk_file_get_utf8_command_line_arguments_size,
                                      liblnk_file_get_utf8_command_line_arguments));
        // The other reader knows one icon path, the one with variables if there is one.
        EXPECT_EQ(link.environmentIcon.empty() ? link.iconPath : link.environmentIcon,
                  Ask(file, liblnk_file_get_utf8_icon_location_size, liblnk_file_get_utf8_icon_location));
        EXPECT_EQ(link.localPath, Ask(file, liblnk_file_get_utf8_local_path_size, liblnk_file_get_utf8_local_path));
        EXPECT_EQ(link.environmentPath, Ask(file, liblnk_file_get_utf8_environment_variables_location_size,
                                            liblnk_file_get_utf8_environment_variables_location));
        liblnk_file_free(&file, nullptr);
    }
}

}  // namespace
}  // namespace roundup
