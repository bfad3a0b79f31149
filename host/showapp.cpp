#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/applist.h"
#include "host/origin.h"
#include "host/packagefields.h"
#include "host/textout.h"
#include "host/why.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

constexpr std::size_t kLabelWidth = 22;

std::string SizeWords(std::int64_t bytes) {
    if (bytes <= 0) return {};
    return ReadableSize(static_cast<std::uint64_t>(bytes)) + " (" + std::to_string(bytes) + " bytes)";
}

std::string Readable(const AppField& field, const CApp& app) {
    const std::string name = field.name;
    if (name == "size" || name == "iconSize") return SizeWords(std::get<std::int64_t>(field.read(app)));
    if (name == "installDate") return ReadableDate(app.pwszInstallDate);
    const AppField::Value value = field.read(app);
    if (const auto* text = std::get_if<std::string>(&value)) return Printable(FromUtf8(*text));
    return std::to_string(std::get<std::int64_t>(value));
}

// The flags in words, as the numbers say little to a reader.
std::string FlagWords(std::uint64_t flags) {
    std::string words = std::string(Bitness(flags)) + "-bit";
    const auto add = [&](std::uint64_t bit, const char* word) {
        if ((flags & bit) != 0) words += std::string(", ") + word;
    };
    add(AppFlags::kWindowsInstaller, "Windows Installer");
    add(AppFlags::kNotTopLevel, "not a top-level entry");
    add(AppFlags::k32BitImages, "32-bit programs alone");
    add(AppFlags::kCurrentUser, "of the current user");
    add(AppFlags::k64BitView, "64-bit view");
    return words;
}

std::string NameOf(const IApp& app) { return Printable(app.GetName() != nullptr ? app.GetName() : u""); }

// Why the application hangs below another one, to be put behind a name.
std::string Because(const IApp& app) {
    const auto* entry = dynamic_cast<const CApp*>(&app);
    const std::string reason = entry != nullptr ? LinkWords(entry->eLinkReason) : "";
    return reason.empty() ? "" : " (" + reason + ")";
}

// Lines of a label and a value; what has no value has no line.
class Page {
  public:
    explicit Page(bool colour) : m_colour(colour) {}

    void Add(const std::string& label, const std::string& value) {
        if (value.empty()) return;
        const std::string head = Fit(label, kLabelWidth);
        m_text += (m_colour ? "\x1b[2m" + head + "\x1b[0m" : head) + value + "\n";
    }
    // More of the value above.
    void AddLines(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) m_text += std::string(kLabelWidth, ' ') + line + "\n";
    }
    // Where the value above comes from.
    void AddWhy(std::vector<std::string> lines) {
        for (std::string& line : lines) line.insert(0, "<- ");
        AddLines(lines);
    }
    const std::string& Text() const { return m_text; }

  private:
    const bool m_colour;
    std::string m_text;
};

void AddApp(Page& page, const CApp& app, const Found& found, bool why) {
    const FieldOrigins origins(app);
    for (const AppField& field : kAppFields) {
        const std::string value = std::string(field.name) == "flags" ? FlagWords(app.GetFlags()) : Readable(field, app);
        page.Add(field.label, value);
        if (why && !value.empty()) page.AddWhy(origins.Of(field.name, value));
    }
    for (const RefPtr<IApp>& sub : app.SubApps) {
        page.Add("Sub-application", NameOf(*sub) + Because(*sub));
    }
    if (found.parent != nullptr) page.Add("Part of", NameOf(*found.parent) + Because(app));
    page.Add("Found in", OriginWords(app.dwOrigins));
    if (why) page.AddLines(origins.Keys());
}

void AddPackage(Page& page, const CAppx& package) {
    page.Add("Name", Printable(package.m_wzDisplayName));
    page.Add("Publisher", Printable(package.m_wzPublisher));
    page.Add("Installed", ReadableDate(package.m_wzInstallDate));
    page.Add("Key", Printable(package.m_wzPackageFullName));
    page.Add("Family", Printable(package.m_wzPackageFamilyName));
    page.Add("Version", DottedVersion(package.m_ullVersion));
    page.Add("Architecture", Printable(package.m_wzArchitecture));
    page.Add("Kind", package.m_bIsFramework != 0 ? "framework for other packages" : "store package");
    page.Add("Size", package.m_bIsFramework != 0 ? "" : SizeWords(package.GetEstimatedSize()));
    page.Add("Location", Printable(package.m_wzInstallLocal));
    page.Add("Real location", Printable(package.m_wzRealInstallLocal));
    page.Add("Icon from", Printable(package.m_wzIcon));
    page.Add("Icon size", SizeWords(package.GetIconDataSize()));
    page.Add("Icon checksum", IconChecksum(package));
    for (const OwnedString& name : package.ExtraFolder) page.Add("Resources", Printable(name));
    for (const OwnedString& folder : package.DataFolder) page.Add("User's data", Printable(folder));
    for (const PackageDependency& needed : package.Dependency) {
        page.Add("Needs", Printable(needed.name) + " " + DottedVersion(needed.minVersion) + " or newer");
    }
    page.Add("Found in", "the user's repository of store packages");
}

}  // namespace

bool WriteApp(const Found& found, bool why, const Layout& layout) {
    Page page(layout.colour);
    if (const auto* package = dynamic_cast<const CAppx*>(found.app)) {
        AddPackage(page, *package);
    } else if (const auto* app = dynamic_cast<const CApp*>(found.app)) {
        AddApp(page, *app, found, why);
    }
    return WriteOut(page.Text());
}

}  // namespace roundup::host
