// Reads arbitrary bytes as the stored form of a store package; what reads must write the same facts again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "appcenter/appx/appx.h"
#include "tests/support/machinebuilder.h"

namespace {

using namespace roundup;

// The machine is there for the log.
struct Fixture {
    std::unique_ptr<Machine> machine = MachineBuilder().Build();
    MachineScope scope{*machine};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Fixture fixture;
    CAppx package;
    std::uint32_t count = 0;
    const auto* const bytes = reinterpret_cast<const std::byte*>(data);
    if (Failed(package.ReSerialize(bytes, static_cast<std::uint32_t>(size), count))) return 0;
    if (count > size) std::abort();
    for (const auto& file : package.m_listFiles) {
        // An empty path is read but never written.
        if (file->pwszPath.IsEmpty()) return 0;
    }
    std::vector<std::byte> first(package.GetSize());
    if (Failed(package.Serialize(first.data(), static_cast<std::uint32_t>(first.size()), count))) std::abort();
    CAppx again;
    if (Failed(again.ReSerialize(first.data(), static_cast<std::uint32_t>(first.size()), count))) std::abort();
    if (again.GetSize() != first.size()) std::abort();
    return 0;
}
