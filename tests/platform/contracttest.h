// What the interfaces of the seam promise, asked of every kind of machine that a test can make.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/livemachine.h"
#include "platform/recorded/openmachine.h"
#include "tests/support/machinefiles.h"
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {

enum class MachineKind { InMemory, RecordedFolder, Live };

class ContractTest : public MachineTest, public ::testing::WithParamInterface<MachineKind> {
  protected:
    Machine& StartKind() {
        if (GetParam() == MachineKind::InMemory) return Start();
        if (GetParam() == MachineKind::Live) return Start(OpenLiveMachine());
        builder.WriteTo(m_folder.Text() + "/machine");
        OpenOptions options;
        options.folder = m_folder.Text() + "/machine";
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        if (!machine) throw std::runtime_error(error.Text());
        return Start(std::move(machine));
    }
    // In the folder that all machines of this computer share, so under a name that no other test has.
    std::u16string TempPath(const char16_t* name) {
        char16_t folder[300] = {};
        (void)CurrentMachine().System().GetTempFolder(folder, 300);
        return folder + m_folder.Path().filename().u16string() + name;
    }

  private:
    TempFolder m_folder;
};

inline std::string KindName(const ::testing::TestParamInfo<MachineKind>& info) {
    constexpr const char* kNames[] = {"InMemory", "RecordedFolder", "Live"};
    return kNames[static_cast<int>(info.param)];
}

// For tests that bring along what they ask for: the live machine too, where there is one.
inline std::vector<MachineKind> AllMachineKinds() {
    std::vector<MachineKind> kinds{MachineKind::InMemory, MachineKind::RecordedFolder};
    if (OpenLiveMachine() != nullptr) kinds.push_back(MachineKind::Live);
    return kinds;
}

}  // namespace roundup
