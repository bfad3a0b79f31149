// What the interfaces of the seam promise, asked of every kind of machine that a test can make.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/recorded/openmachine.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {

enum class MachineKind { InMemory, RecordedFolder };

class ContractTest : public MachineTest, public ::testing::WithParamInterface<MachineKind> {
  protected:
    Machine& StartKind() {
        if (GetParam() == MachineKind::InMemory) return Start();
        builder.WriteTo(m_folder.Text() + "/machine");
        OpenOptions options;
        options.folder = m_folder.Text() + "/machine";
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        if (!machine) throw std::runtime_error(error.Text());
        return Start(std::move(machine));
    }
    std::u16string TempPath(const char16_t* name) {
        char16_t folder[300] = {};
        (void)CurrentMachine().System().GetTempFolder(folder, 300);
        return std::u16string(folder) + name;
    }

    // Whole content; the error in place of it when the file cannot be read.
    static std::string ReadFile(IFileSystem& files, const char16_t* path) {
        FileHandle file = kInvalidFile;
        const Win32Error error = files.Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, file);
        if (error != kErrorSuccess) return "error " + std::to_string(error);
        std::string bytes(1 << 16, '\0');
        std::uint32_t done = 0;
        (void)files.Read(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), done);
        files.Close(file);
        bytes.resize(done);
        return bytes;
    }
    static Win32Error WriteFile(IFileSystem& files, const char16_t* path, std::uint32_t disposition,
                                const std::string& bytes) {
        FileHandle file = kInvalidFile;
        Win32Error error = files.Open(path, kGenericWrite, kShareRead, disposition, file);
        if (error != kErrorSuccess) return error;
        std::uint32_t done = 0;
        error = files.Write(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), done);
        files.Close(file);
        return error;
    }
    // Names of an enumeration, in its order.
    static std::vector<std::u16string> List(IFileSystem& files, const char16_t* pattern) {
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

  private:
    TempFolder m_folder;
};

inline std::string KindName(const ::testing::TestParamInfo<MachineKind>& info) {
    return info.param == MachineKind::InMemory ? "InMemory" : "RecordedFolder";
}

}  // namespace roundup
