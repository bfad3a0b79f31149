// The module's entry: its one export, and the machine that it looks at.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "externfuncinc/export.h"
#include "externfuncinc/externfunc.h"
#include "platform/machine.h"
#include "platform/recorded/openmachine.h"
#include "utility/boundary.h"
#include "utility/utf.h"

namespace roundup {
namespace {

// The machine of the environment, which stays the module's until it is unloaded.
class EnvironmentMachine {
  public:
    // True when there is a current machine: the live one, where the platform has it, or the one that is opened here.
    // One that could not be opened is tried again at the next call.
    bool Provide() {
        const std::lock_guard guard(m_lock);
        if (HasCurrentMachine()) return true;
        OpenOptions options;
        options.folder = Variable("ROUNDUP_MACHINE");
        options.hostFolder = Variable("ROUNDUP_HOST");
        options.user = Variable("ROUNDUP_USER");
        if (options.folder.empty()) return false;
        options.output = [](std::u16string_view text) {
            const std::string bytes = ToUtf8(text);
            std::fwrite(bytes.data(), 1, bytes.size(), stdout);
        };
        SourceError error;
        m_machine = OpenRecordedMachine(options, error);
        if (m_machine == nullptr) {
            // There is no log without a machine, and the caller learns no more than that there is none.
            std::fprintf(stderr, "roundup: %s\n", error.Text().c_str());
            return false;
        }
        m_scope.emplace(*m_machine);
        return true;
    }

  private:
    static std::string Variable(const char* name) {
        const char* const value = std::getenv(name);
        return value != nullptr ? value : "";
    }

    std::mutex m_lock;
    std::unique_ptr<Machine> m_machine;   // guarded by m_lock
    std::optional<MachineScope> m_scope;  // guarded by m_lock; ends before the machine
};

bool ProvideMachine() {
    static EnvironmentMachine machine;
    return machine.Provide();
}

}  // namespace
}  // namespace roundup

extern "C" ROUNDUP_EXPORT roundup::IRoundupProc* GetImp() {
    const bool provided = roundup::AtBoundary([] { return roundup::ProvideMachine(); }, [] { return false; });
    return provided ? roundup::CreateRoundup() : nullptr;
}
