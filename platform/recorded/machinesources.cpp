#include "platform/recorded/machinesources.h"

#include <algorithm>

#include "platform/recorded/registrytext.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr const char16_t* kNtCurrentVersion = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const char16_t* kComputerName = u"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName";
constexpr const char16_t* kSystemEnvironment = u"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";

// The decimal number that text begins with; nothing is taken when there is none.
std::optional<std::uint32_t> TakeNumber(std::u16string_view& text) noexcept {
    constexpr std::size_t kMostDigits = 9;
    std::uint32_t number = 0;
    std::size_t digits = 0;
    while (digits < text.size() && digits < kMostDigits && text[digits] >= u'0' && text[digits] <= u'9') {
        number = number * 10 + (text[digits++] - u'0');
    }
    text.remove_prefix(digits);
    return digits != 0 ? std::optional(number) : std::nullopt;
}

void ReadVersion(IRegistry& registry, MachineSettings::Version& version) {
    const auto major = ReadRegistryNumber(registry, kHkeyLocalMachine, kNtCurrentVersion, u"CurrentMajorVersionNumber");
    const auto minor = ReadRegistryNumber(registry, kHkeyLocalMachine, kNtCurrentVersion, u"CurrentMinorVersionNumber");
    const auto text = ReadRegistryText(registry, kHkeyLocalMachine, kNtCurrentVersion, u"CurrentVersion");
    if (major) {
        version.major = *major;
        version.minor = minor.value_or(0);
    } else if (text) {
        // Before Windows 10 the text "6.1" is all there is.
        std::u16string_view rest = *text;
        if (const auto number = TakeNumber(rest)) version.major = *number;
        if (!rest.empty()) rest.remove_prefix(1);
        version.minor = TakeNumber(rest).value_or(0);
    }
    for (const char16_t* name : {u"CurrentBuildNumber", u"CurrentBuild"}) {
        const auto build = ReadRegistryText(registry, kHkeyLocalMachine, kNtCurrentVersion, name);
        std::u16string_view rest = build ? std::u16string_view(*build) : std::u16string_view();
        if (const auto number = TakeNumber(rest)) {
            version.build = *number;
            return;
        }
    }
}

}  // namespace

std::optional<std::string> FindBelow(HostFolder& folder, std::initializer_list<std::string_view> names, SourceKind kind,
                                     std::string path) {
    std::size_t left = names.size();
    for (const std::string_view name : names) {
        const SourceKind wanted = --left == 0 ? kind : SourceKind::Folder;
        std::vector<HostEntry> entries;
        if (folder.List(path, entries) != kErrorSuccess) return std::nullopt;
        const std::u16string folded = FromUtf8(name);
        const std::string* found = nullptr;
        for (const HostEntry& entry : entries) {
            if (entry.kind != wanted || !EqualsNoCase(FromUtf8(entry.name), folded)) continue;
            const bool better = found == nullptr || entry.name == name || (*found != name && entry.name < *found);
            if (better) found = &entry.name;
        }
        if (found == nullptr) return std::nullopt;
        path.append(path.empty() ? "" : "/").append(*found);
    }
    return path;
}

SourceStatus ReadWhole(HostFolder& folder, const std::string& path, std::uint64_t most, std::string& bytes) {
    const std::string file = folder.Path() + "/" + path;
    std::unique_ptr<IFileStream> stream;
    std::uint64_t size = 0;
    if (folder.OpenFile(path, HostOpen::Read, stream) != kErrorSuccess || stream->GetSize(size) != kErrorSuccess) {
        return SourceError{file, SourceError::Place::None, 0, "cannot be read"};
    }
    if (size > most) return SourceError{file, SourceError::Place::None, 0, "is too large"};
    bytes.resize(static_cast<std::size_t>(size));
    std::uint32_t done = 0;
    if (stream->ReadAt(0, bytes.data(), static_cast<std::uint32_t>(size), done) != kErrorSuccess) {
        return SourceError{file, SourceError::Place::None, 0, "cannot be read"};
    }
    bytes.resize(done);
    return std::nullopt;
}

void ReadSystemSettings(IRegistry& registry, MachineSettings& settings) {
    ReadVersion(registry, settings.version);
    const auto computer = ReadRegistryText(registry, kHkeyLocalMachine, kComputerName, u"ComputerName");
    if (computer && !computer->empty()) settings.computer = *computer;
    const auto processors = ReadRegistryText(registry, kHkeyLocalMachine, kSystemEnvironment, u"NUMBER_OF_PROCESSORS");
    std::u16string_view rest = processors ? std::u16string_view(*processors) : std::u16string_view();
    if (const auto number = TakeNumber(rest); number && *number != 0) settings.processors = *number;
    const auto architecture =
        ReadRegistryText(registry, kHkeyLocalMachine, kSystemEnvironment, u"PROCESSOR_ARCHITECTURE");
    if (architecture && EqualsNoCase(*architecture, u"x86")) settings.architecture = kArchitectureIntel;
}

SourceError WrongUser(const std::string& folder, const std::string& asked, std::u16string_view known) {
    return {folder, SourceError::Place::None, 0,
            "there is no user \"" + asked + "\" here, only \"" + ToUtf8(known) + "\""};
}

}  // namespace roundup
