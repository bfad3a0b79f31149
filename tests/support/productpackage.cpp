#include "tests/support/productpackage.h"

#include "utility/guid.h"

namespace roundup {

PackageWriter ProductTables() {
    PackageWriter package;
    package.CodePage(1252).WideReferences();
    package.Table("Property", {"Property s72*", "Value l0"})
        .Table("Icon", {"Name s72*", "Data v0"})
        .Table("MIME", {"ContentType s64*", "Extension_ s255", "CLSID s38"})
        .Table("File", {"File s72*", "Component_ s72", "FileName l255", "FileSize i4", "Attributes i2"})
        .Table("Class", {"CLSID s38*", "Context s32*", "Component_ s72*", "ProgId_Default s255", "Description l255",
                         "AppId_ s38", "FileTypeMask s255", "Icon_ s72", "IconIndex i2", "DefInprocHandler s32",
                         "Argument s255", "Feature_ s38", "Attributes i2"})
        .Table("AppId", {"AppId s38*", "RemoteServerName s255", "LocalService s255", "ServiceParameters s255",
                         "DllSurrogate s255", "ActivateAtStorage i2", "RunAsInteractiveUser i2"})
        .Table("ProgId",
               {"ProgId s255*", "ProgId_Parent s255", "Class_ s38", "Description l255", "Icon_ s72", "IconIndex i2"})
        .Table("IniFile", {"IniFile s72*", "FileName l255", "DirProperty s72", "Section l96", "Key l128", "Value l255",
                           "Action i2", "Component_ s72"})
        .Table("SelfReg", {"File_ s72*", "Cost i2"})
        .Table("Feature", {"Feature s38*"})
        .Table("TypeLib", {"LibID s38*", "Language i2*", "Component_ s72*", "Version i4", "Description l128",
                           "Directory_ s72", "Feature_ s38", "Cost i4"})
        .Table("Component", {"Component s72*", "ComponentId s38", "Directory_ s72", "Attributes i2", "KeyPath s72"})
        .Table("Registry", {"Registry s72*", "Root i2", "Key l255", "Name l255", "Value l0", "Component_ s72"})
        .Table("Shortcut",
               {"Shortcut s72*", "Directory_ s72", "Name l128", "Component_ s72", "Target s72", "Arguments s255",
                "Description l255", "Hotkey i2", "Icon_ s72", "IconIndex i2", "ShowCmd i2", "WkDir s72"})
        .Table("Extension", {"Extension s255*", "Component_ s72*", "ProgId_ s255", "MIME_ s64", "Feature_ s38"})
        .Table("Directory", {"Directory s72*", "Directory_Parent s72", "DefaultDir l255"})
        .Table("CustomAction", {"Action s72*", "Type i2", "Source s72", "Target s255"})
        .Table("HelpNamespace", {"NamespaceKey s0*", "NamespaceName s0", "File_Collection s72", "Description s0"})
        .Table("ServiceInstall",
               {"ServiceInstall s72*", "Name s255", "DisplayName l255", "ServiceType i4", "StartType i4",
                "ErrorControl i4", "LoadOrderGroup s255", "Dependencies s255", "StartName s255", "Password s255",
                "Arguments s255", "Component_ s72", "Description l255"})
        .Table("PublishComponent", {"ComponentId s38*"})
        .Table("FeatureComponents", {"Feature_ s38*", "Component_ s72*"})
        .Table("InstallExecuteSequence", {"Action s72*", "Condition s255", "Sequence i2"})
        .Table("MsiAssembly", {"Component_ s72*", "Attributes i2"})
        .Table("MsiAssemblyName", {"Component_ s72*", "Name s255*", "Value s255"});
    return package;
}

void InstallComponent(MachineBuilder& builder, std::u16string_view product, std::u16string_view component,
                      std::u16string_view path) {
    const auto packed = [](std::u16string_view code) {
        return std::u16string(GuidText(ParseGuid(code, GuidForm::Braced), GuidForm::Packed).View());
    };
    const std::u16string books = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18";
    builder.Text(books + u"\\Components\\" + packed(component), packed(product), path);
}

}  // namespace roundup
