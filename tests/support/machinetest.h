// The fixture of tests that need a machine.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "tests/support/machinebuilder.h"

namespace roundup {

// A test fills the builder and calls Start, which makes the machine current until the test ends or Start is called
// again; every object that lives as long as the process starts fresh with it.
class MachineTest : public ::testing::Test {
  protected:
    ~MachineTest() override { Stop(); }

    Machine& Start() { return Start(builder.Build()); }
    Machine& Start(std::unique_ptr<Machine> machine) {
        Stop();
        m_machine = std::move(machine);
        m_scope.emplace(*m_machine);
        return *m_machine;
    }
    void Stop() {
        m_scope.reset();
        m_machine.reset();
    }

    MachineBuilder builder;

  private:
    std::unique_ptr<Machine> m_machine;
    std::optional<MachineScope> m_scope;
};

}  // namespace roundup
