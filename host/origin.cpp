#include "host/origin.h"

#include <array>
#include <utility>

namespace roundup::host {

namespace {

constexpr std::array<std::pair<std::uint32_t, const char*>, 5> kPlaces = {{
    {AppOrigin::kMachine32, "Uninstall key of the machine, 32-bit view"},
    {AppOrigin::kMachine64, "Uninstall key of the machine, 64-bit view"},
    {AppOrigin::kUser32, "Uninstall key of the user, 32-bit view"},
    {AppOrigin::kUser64, "Uninstall key of the user, 64-bit view"},
    {AppOrigin::kInstaller, "books of Windows Installer"},
}};

}  // namespace

std::string OriginWords(std::uint32_t origins) {
    std::string words;
    for (const auto& [bit, place] : kPlaces) {
        if ((origins & bit) != 0) words += (words.empty() ? "" : "; ") + std::string(place);
    }
    return words;
}

std::string LinkWords(LinkReason reason) {
    switch (reason) {
        case LinkReason::None:
            break;
        case LinkReason::Code:
            return "by product code";
        case LinkReason::ParentName:
            return "by parent name";
        case LinkReason::Location:
            return "by location";
        case LinkReason::DependencyKey:
            return "by dependency key";
        case LinkReason::Suite:
            return "by suite";
        case LinkReason::Source:
            return "by install source";
        case LinkReason::Runtime:
            return "by kind of runtime";
        case LinkReason::Rule:
            return "by rule file";
        case LinkReason::SharedComponent:
            return "by shared component";
        case LinkReason::CompatibilityList:
            return "by compatibility list";
    }
    return {};
}

}  // namespace roundup::host
