#include "host/packagefields.h"

#include <memory>

#include "appcenter/appx/packageversion.h"
#include "utility/casemap.h"

namespace roundup::host {

std::string DottedVersion(std::uint64_t version) {
    return std::to_string(VersionMajor(version)) + "." + std::to_string(VersionMinor(version)) + "." +
           std::to_string(VersionBuild(version)) + "." + std::to_string(VersionRevision(version));
}

std::uint64_t RecordFlags(const CAppx& package) {
    const auto record = std::make_unique<AppRecordEx>();
    package.FillAppInfo(*record);
    return record->qwFlags;
}

const char* PackageBitness(const CAppx& package) {
    const std::u16string_view architecture = package.m_wzArchitecture;
    if (EqualsNoCase(architecture, u"x64") || EqualsNoCase(architecture, u"arm64")) return "64";
    if (EqualsNoCase(architecture, u"x86") || EqualsNoCase(architecture, u"arm")) return "32";
    return "";
}

}  // namespace roundup::host
