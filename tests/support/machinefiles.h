// Whole files and listings of a machine.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/filesystem.h"

namespace roundup {

// The content, however large; "error N" in place of it when the file cannot be read.
inline std::string ReadFile(IFileSystem& files, const std::u16string& path) {
    FileHandle file = kInvalidFile;
    const Win32Error error = files.Open(path.c_str(), kGenericRead, kShareRead | kShareWrite, kOpenExisting, file);
    if (error != kErrorSuccess) return "error " + std::to_string(error);
    std::uint64_t size = 0;
    std::uint32_t done = 0;
    EXPECT_EQ(files.GetSize(file, size), kErrorSuccess);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    EXPECT_EQ(files.Read(file, bytes.data(), static_cast<std::uint32_t>(size), done), kErrorSuccess);
    files.Close(file);
    bytes.resize(done);
    return bytes;
}

inline Win32Error WriteFile(IFileSystem& files, const std::u16string& path, std::uint32_t disposition,
                            std::string_view bytes) {
    FileHandle file = kInvalidFile;
    Win32Error error = files.Open(path.c_str(), kGenericWrite, kShareRead, disposition, file);
    if (error != kErrorSuccess) return error;
    std::uint32_t done = 0;
    error = files.Write(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), done);
    files.Close(file);
    return error;
}

// Names of an enumeration, in its order.
inline std::vector<std::u16string> List(IFileSystem& files, const char16_t* pattern) {
    std::vector<std::u16string> names;
    FindHandle find = kInvalidFile;
    FindData data;
    Win32Error error = files.FindFirst(pattern, find, data);
    if (error != kErrorSuccess) return names;
    for (; error == kErrorSuccess; error = files.FindNext(find, data)) names.emplace_back(data.name);
    EXPECT_EQ(error, kErrorNoMoreFiles);
    files.FindClose(find);
    return names;
}

}  // namespace roundup
