// The files that are kept of a machine, and the rule files of the package analysis: whatever stands in them, reading
// ends, lists are in order, and every text is one of the file. The first byte says what the rest is.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "msianalyzer/exclusiveconfigfileanalyzer.h"
#include "msianalyzer/installedcomponents.h"
#include "msianalyzer/readconfig.h"
#include "msianalyzer/typelibinformation.h"
#include "tests/support/machinebuilder.h"
#include "utility/sysinfo.h"

namespace {

using namespace roundup;

void Check(bool holds) {
    if (!holds) std::abort();
}

void ReadComponents(std::size_t size) {
    const auto components = GetInstalledComponents().Components();
    std::size_t texts = 0;
    for (const std::u16string_view component : components) {
        Check(GetInstalledComponents().Contains(component));
        texts += sizeof(std::uint32_t) + component.size() * sizeof(char16_t);
    }
    Check(texts <= size && std::is_sorted(components.begin(), components.end()));
}

void ReadReferrers() {
    const CTypeLibInformation interfaces(CTypeLibInformation::Kind::Interfaces);
    for (const bool view64 : {false, true}) {
        std::size_t found = 0;
        for (const auto& [library, info] : interfaces.Entries(view64)) {
            CTypeLibInformation::Identifiers ids;
            interfaces.AddReferrers(ids, library, info.version, view64);
            Check(ids.contains(info.path.substr(info.path.find(u'\\') + 1)));
            if (++found == 100) break;  // one library may have them all
        }
    }
}

void ReadRules() {
    const std::u16string path = std::u16string(GetExeFolder()) + u"\\Config\\a.EXC";
    CReadConfig file;
    if (Succeeded(file.Open(path.c_str()))) {
        for (std::u16string_view line; Succeeded(file.ReadLine(line));) {
            Check(line.size() <= 4095 && line.find_first_of(std::u16string_view(u"\n\0", 2)) == line.npos);
        }
    }
    // Formatted text needs a product, so the entries of folders are left alone.
    CExclusiveConfigFileAnalyzer rules(nullptr);
    if (Succeeded(rules.ParseFile(path.c_str()))) Check(Succeeded(rules.LoadReg()));
    Check(!rules.IsRegExcluded(kHkeyLocalMachine, u""));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    constexpr const char16_t* kFiles[] = {u"cache\\Components.ini", u"cache\\1TypeLib.ini", u"Config\\a.EXC"};
    MachineBuilder builder;
    builder.HostFile(kFiles[data[0] % 3], bytes);
    const std::unique_ptr<Machine> machine = builder.Build();
    const MachineScope scope(*machine);
    switch (data[0] % 3) {
        case 0:
            ReadComponents(bytes.size());
            break;
        case 1:
            ReadReferrers();
            break;
        default:
            ReadRules();
            break;
    }
    return 0;
}
