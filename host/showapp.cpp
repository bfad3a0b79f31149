#include "host/appfields.h"
#include "host/applist.h"
#include "host/origin.h"
#include "host/textout.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

constexpr std::size_t kLabelWidth = 22;

std::string Readable(const AppField& field, const CApp& app) {
    const std::string name = field.name;
    if (name == "size" || name == "iconSize") {
        const std::int64_t bytes = std::get<std::int64_t>(field.read(app));
        if (bytes <= 0) return {};
        return ReadableSize(static_cast<std::uint64_t>(bytes)) + " (" + std::to_string(bytes) + " bytes)";
    }
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

}  // namespace

bool WriteApp(const Found& found, const Layout& layout) {
    const CApp& app = *found.app;
    std::string text;
    const auto add = [&](const std::string& label, const std::string& value) {
        if (value.empty()) return;
        const std::string head = Fit(label, kLabelWidth);
        text += (layout.colour ? "\x1b[2m" + head + "\x1b[0m" : head) + value + "\n";
    };
    for (const AppField& field : kAppFields) {
        if (std::string(field.name) == "flags") {
            add(field.label, FlagWords(app.GetFlags()));
        } else {
            add(field.label, Readable(field, app));
        }
    }
    for (const RefPtr<IApp>& sub : app.SubApps) {
        add("Sub-application", NameOf(*sub) + Because(*sub));
    }
    if (found.parent != nullptr) add("Part of", NameOf(*found.parent) + Because(app));
    add("Found in", OriginWords(app.dwOrigins));
    return WriteOut(text);
}

}  // namespace roundup::host
