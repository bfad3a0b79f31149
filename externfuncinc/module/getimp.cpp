// The module's entry: its one export, and the machine that it looks at.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "externfuncinc/export.h"
#include "externfuncinc/externfunc.h"
#include "platform/livemachine.h"
#include "platform/recorded/openmachine.h"
#include "platform/threading.h"
#include "utility/boundary.h"
#include "utility/utf.h"

namespace roundup {
namespace {

// The module's machine, which stays its own until it is unloaded: the one that the environment names, else the live
// one, where the platform has it.
class ModuleMachine {
  public:
    // True when there is a current machine. One that could not be opened is tried again at the next call.
    bool Provide() {
        const std::lock_guard guard(m_lock);
        if (HasCurrentMachine()) return true;
        m_machine = OpenLiveMachine();
        const std::string folder = Variable("ROUNDUP_MACHINE");
        if (!folder.empty()) m_machine = Open(folder);
        if (m_machine == nullptr) return false;
        m_scope.emplace(*m_machine);
        return true;
    }

  private:
    std::unique_ptr<Machine> Open(const std::string& folder) {
        OpenOptions options;
        options.folder = folder;
        options.hostFolder = Variable("ROUNDUP_HOST");
        options.user = Variable("ROUNDUP_USER");
        options.output = [](std::u16string_view text) {
            const std::string bytes = ToUtf8(text);
            std::fwrite(bytes.data(), 1, bytes.size(), stdout);
        };
        SourceError error;
        std::unique_ptr<Machine> machine = OpenRecordedMachine(options, error);
        // There is no log without a machine, and the caller learns no more than that there is none.
        if (machine == nullptr) std::fprintf(stderr, "roundup: %s\n", error.Text().c_str());
        return machine;
    }

    // UTF-8. The run-time library of Windows has the environment in a code page, the platform has it whole.
    std::string Variable(const char* name) {
        if (m_machine != nullptr) {
            char16_t value[1024] = {};
            const std::uint32_t length = m_machine->System().GetEnvironment(FromUtf8(name).c_str(), value, 1024);
            return length < 1024 ? ToUtf8({value, length}) : std::string();
        }
        const char* const value = std::getenv(name);
        return value != nullptr ? value : "";
    }

    Mutex m_lock;
    std::unique_ptr<Machine> m_machine;   // guarded by m_lock
    std::optional<MachineScope> m_scope;  // guarded by m_lock; ends before the machine
};

bool ProvideMachine() {
    static ModuleMachine machine;
    return machine.Provide();
}

}  // namespace
}  // namespace roundup

extern "C" ROUNDUP_EXPORT roundup::IRoundupProc* GetImp() {
    const bool provided = roundup::AtBoundary([] { return roundup::ProvideMachine(); }, [] { return false; });
    return provided ? roundup::CreateRoundup() : nullptr;
}
