#include "host/appfields.h"

#include <memory>

#include "host/textout.h"
#include "utility/formattext.h"
#include "utility/guid.h"
#include "utility/pathchecksum.h"

namespace roundup::host {

namespace {

using Value = AppField::Value;

template <OwnedString CApp::*kMember>
Value TextOf(const CApp& app) {
    return Utf8(app.*kMember);
}

Value CodeOf(const CApp& app) {
    const Guid& code = *app.GetCode();
    return code.IsNil() ? std::string() : Utf8(FormatGuid(code, GuidForm::Braced));
}

Value FlagsOf(const CApp& app) { return static_cast<std::int64_t>(app.GetFlags()); }
Value SizeOf(const CApp& app) { return app.GetEstimatedSize(); }
Value IconSizeOf(const CApp& app) { return std::int64_t{app.GetIconDataSize()}; }
Value IconChecksumOf(const CApp& app) { return IconChecksum(app); }

}  // namespace

const std::array<AppField, 21> kAppFields = {{
    {"name", "Name", TextOf<&CApp::pwszName>},
    {"publisher", "Publisher", TextOf<&CApp::pwszPublisher>},
    {"installDate", "Installed", TextOf<&CApp::pwszInstallDate>},
    {"key", "Key", TextOf<&CApp::pwszKeyString>},
    {"version", "Version", TextOf<&CApp::pwszVersion>},
    {"code", "Code", CodeOf},
    {"flags", "Flags", FlagsOf},
    {"size", "Size", SizeOf},
    {"installLocation", "Location", TextOf<&CApp::pwszInstallLoc>},
    {"realInstallLocation", "Real location", TextOf<&CApp::pwszRealInstallLoc>},
    {"originalInstallLocation", "Location as recorded", TextOf<&CApp::pwszOriginalInstallLoc>},
    {"installSource", "Installed from", TextOf<&CApp::pwszInstallSource>},
    {"package", "Cached package", TextOf<&CApp::pwszMsiPath>},
    {"uninstallProgram", "Uninstall program", TextOf<&CApp::pwszUnInstallProgram>},
    {"iconProgram", "Icon from", TextOf<&CApp::pwszIconProgram>},
    {"iconSize", "Icon size", IconSizeOf},
    {"iconChecksum", "Icon checksum", IconChecksumOf},
    {"type", "Suite", TextOf<&CApp::pwszType>},
    {"typeDescription", "Suite version", TextOf<&CApp::pwszTypeDes>},
    {"parentKey", "Parent key", TextOf<&CApp::pwszParentKeyName>},
    {"parentName", "Parent", TextOf<&CApp::pwszParentDisplayName>},
}};

std::string IconChecksum(const IApp& app) {
    const std::uint32_t size = app.GetIconDataSize();
    if (app.GetIconData() == nullptr || size == 0) return {};
    return Utf8(FormatText(u"%016I64X", PathChecksum(app.GetIconData(), size)));
}

const char* Bitness(std::uint64_t flags) { return (flags & AppFlags::k64Bit) != 0 ? "64" : "32"; }

}  // namespace roundup::host
