#include "host/appfields.h"
#include "host/applist.h"
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

}  // namespace

bool WriteApp(const CApp& app, std::optional<std::size_t> index, const Layout& layout) {
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
        add("Sub-application", Printable(sub->GetName() != nullptr ? sub->GetName() : u""));
    }
    if (!index) add("Place", "below another application");
    return WriteOut(text);
}

}  // namespace roundup::host
