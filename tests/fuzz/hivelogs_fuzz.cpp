// Logs of hives: whatever they say, reading ends, and what comes out is a hive that is not dirty. Checksums and hashes
// are put right first, which no fuzzer would ever guess. The first byte says which form of log the rest is.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/recorded/registry/hivelogs.h"
#include "tests/support/hivelogwriter.h"

namespace {

using namespace roundup;

constexpr std::size_t kBlocks = 2 * 4096;

std::string Hive() {
    std::string hive = "regf" + std::string(4092 + kBlocks, '\0');
    PutNumber(hive, 40, kBlocks);
    SetHiveHeader(hive, 2, 1, 0);
    return hive;
}

// Entries stand where the lengths in them say.
void PutHashesRight(std::string& log) {
    for (std::size_t at = 512; at + 512 <= log.size();) {
        std::uint32_t size = 0;
        std::memcpy(&size, log.data() + at + 4, sizeof size);
        if (size < 512 || size % 512 != 0 || size > log.size() - at) return;
        const std::uint64_t ofPages = MarvinHash(BytesOf(log).subspan(at + 40, size - 40), kHiveLogSeed);
        std::memcpy(log.data() + at + 24, &ofPages, sizeof ofPages);
        const std::uint64_t ofHeader = MarvinHash(BytesOf(log).subspan(at, 32), kHiveLogSeed);
        std::memcpy(log.data() + at + 32, &ofHeader, sizeof ofHeader);
        at += size;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const bool newForm = data[0] % 2 == 0;
    const std::string hive = Hive();
    std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
    std::string header = hive;
    std::uint32_t blocks = 0;  // the old form has the length in its header alone
    std::memcpy(&blocks, rest.data(), std::min(rest.size(), sizeof blocks));
    if (!newForm) PutNumber(header, 40, blocks);
    std::string log =
        HiveLog(header, 1, newForm ? 6 : 1, newForm ? rest : rest.substr(std::min<std::size_t>(4, rest.size())));
    if (newForm) PutHashesRight(log);
    const std::span<const std::byte> view = BytesOf(log);
    const auto whole = ReplayHiveLogs(BytesOf(hive), {&view, 1});
    if (whole && (IsHiveDirty(*whole) || whole->size() < hive.size())) std::abort();
    return 0;
}
