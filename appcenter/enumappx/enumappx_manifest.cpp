// What the manifests of packages tell, and the choice of a package's logo.
#include "appcenter/enumappx/enumappx.h"
#include "appcenter/enumappx/indirecttext.h"
#include "appcenter/enumappx/logosearch.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"

namespace roundup {
namespace {

// Stands in for a colour that is missing or given by name.
constexpr const char16_t* kDefaultColor = u"#026fdc";

const ManifestNode* Descend(const ManifestNode& from, std::initializer_list<const char16_t*> names) {
    const ManifestNode* node = &from;
    for (const char16_t* name : names) {
        node = node->FindChild(name);
        if (node == nullptr) return nullptr;
    }
    return node;
}

bool TakeAttribute(const ManifestNode& node, const char16_t* name, std::u16string& target) {
    const ManifestAttribute* const found = node.FindAttribute(name);
    if (found != nullptr) target = found->value;
    return found != nullptr;
}

// The element that tells how an application looks; its name depends on the version of Windows that it was made for.
const ManifestNode* VisualElements(const ManifestNode& application) {
    for (const char16_t* name : {u"uap:VisualElements", u"VisualElements"}) {
        if (const ManifestNode* const found = application.FindChild(name)) return found;
    }
    ManifestNode::Iterator at = 0;
    return application.FirstChild(at);
}

}  // namespace

std::u16string ResolveIndirect(std::u16string text) {
    if (!text.starts_with(u'@')) return text;
    char16_t resolved[512] = {};
    if (!CurrentMachine().Shell().LoadIndirectString(text.c_str(), resolved, 512)) return {};
    return resolved;
}

const ManifestDocument& CEnumAppx::Manifest(const std::u16string& folder) {
    if (!m_hasManifest || folder != m_manifestFolder) {
        m_manifestFolder = folder;
        m_hasManifest = true;
        // A manifest that cannot be read is an empty document.
        (void)m_manifest.Load(std::u16string(folder).append(u"\\AppxManifest.xml").c_str());
    }
    return m_manifest;
}

void CEnumAppx::ReadVisualElements(const std::u16string& folder, std::u16string& logo, std::u16string& color) {
    const ManifestNode* const application = Descend(Manifest(folder), {u"Package", u"Applications", u"Application"});
    const ManifestNode* const visual = application != nullptr ? VisualElements(*application) : nullptr;
    if (visual == nullptr) return;
    std::u16string name;
    const bool hasLogo = TakeAttribute(*visual, u"Square150x150Logo", name) || TakeAttribute(*visual, u"Logo", name);
    TakeAttribute(*visual, u"BackgroundColor", color);
    if (hasLogo) logo = std::u16string(folder).append(u"\\").append(name);
}

void CEnumAppx::ReadDependencies(const std::u16string& folder, std::vector<PackageDependencyRecord>& list) {
    list.clear();
    const ManifestNode* const parent = Descend(Manifest(folder), {u"Package", u"Dependencies"});
    if (parent == nullptr) return;
    ManifestNode::Iterator at = 0;
    for (const ManifestNode* node = parent->FindFirstChild(u"PackageDependency", at); node != nullptr;
         node = parent->FindNextChild(u"PackageDependency", at)) {
        PackageDependencyRecord dependency;
        const bool named = TakeAttribute(*node, u"Name", dependency.Name);
        const bool versioned = TakeAttribute(*node, u"MinVersion", dependency.MinVersion);
        TakeAttribute(*node, u"Publisher", dependency.Publisher);
        if (named && versioned) list.push_back(std::move(dependency));
    }
}

void CEnumAppx::ReadIdentity(const std::u16string& folder, std::u16string& publisher, std::u16string& architecture,
                             std::u16string& version) {
    if (folder.empty()) return;
    const ManifestNode* const identity = Descend(Manifest(folder), {u"Package", u"Identity"});
    if (identity == nullptr) return;
    TakeAttribute(*identity, u"ProcessorArchitecture", architecture);
    TakeAttribute(*identity, u"Version", version);
    TakeAttribute(*identity, u"Publisher", publisher);
}

void CEnumAppx::ResolveVisuals(PackageRecord& record) {
    const auto reference = PackageToIconReference.find(record.PackageID);
    if (reference != PackageToIconReference.end()) record.IconReference = reference->second;
    if (record.IconReference.starts_with(u'@')) record.Icon = ResolveIndirect(record.IconReference);
    std::u16string logo;
    ReadVisualElements(record.PackageRootFolder, logo, record.BackgroundColor);
    if (!record.BackgroundColor.starts_with(u'#')) record.BackgroundColor = kDefaultColor;
    if (record.Icon.empty()) record.Icon = std::move(logo);
    record.Icon = ResolveIndirect(std::move(record.Icon));
    if (record.Icon.empty() || PathExists(record.Icon.c_str())) return;
    record.Icon = FindLogoFile(record.Icon);
}

}  // namespace roundup
