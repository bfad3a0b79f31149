// Reads arbitrary bytes as the stored form of an application; what reads must write the same facts again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "appcenter/app/app.h"
#include "tests/support/machinebuilder.h"

namespace {

using namespace roundup;

// The machine is there for the log and for the temporary files that a record may name: it has none.
struct Fixture {
    std::unique_ptr<Machine> machine = MachineBuilder().Build();
    MachineScope scope{*machine};
};

// Descends no deeper than the reader did.
bool HasFileWithoutPath(const CApp& app) {
    for (const auto& file : app.Gathered().Files) {
        if (file->pwszPath.IsEmpty()) return true;
    }
    for (const auto& sub : app.SubApps) {
        if (HasFileWithoutPath(dynamic_cast<const CApp&>(*sub))) return true;
    }
    return false;
}

std::vector<std::byte> Write(const CApp& app) {
    std::vector<std::byte> bytes(app.GetSize());
    std::uint32_t count = 0;
    const auto rc = app.Serialize(bytes.data(), static_cast<std::uint32_t>(bytes.size()), count);
    if (Failed(rc) || count != bytes.size()) std::abort();
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fixture fixture;
    const auto* const bytes = reinterpret_cast<const std::byte*>(data);
    CApp app;
    std::uint32_t count = 0;
    if (Failed(app.ReSerialize(bytes, static_cast<std::uint32_t>(size), count))) return 0;
    if (count > size) std::abort();
    // An empty name, or an empty path of a file, is read but never written.
    if (app.GetSize() == 0 || HasFileWithoutPath(app)) return 0;
    const std::vector<std::byte> first = Write(app);
    CApp again;
    if (Failed(again.ReSerialize(first.data(), static_cast<std::uint32_t>(first.size()), count))) std::abort();
    if (Write(again) != first) std::abort();
    return 0;
}
