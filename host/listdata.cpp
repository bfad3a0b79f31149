// The listings for programs: JSON and CSV. Texts are whole here. The CSV has the columns of an application; a store
// package fills those of them that it has.

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/appjson.h"
#include "host/applist.h"
#include "host/textout.h"

namespace roundup::host {

namespace {

// Quoted where RFC 4180 asks for it.
std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

std::string CsvRecord(const CApp& app, const std::string& index, std::size_t level) {
    std::string line = index + "," + std::to_string(level);
    for (const AppField& field : kAppFields) {
        const AppField::Value value = field.read(app);
        const auto* text = std::get_if<std::string>(&value);
        line += "," + (text != nullptr ? CsvField(*text) : std::to_string(std::get<std::int64_t>(value)));
    }
    return line + "\r\n";
}

// The columns of an application that a package does not have stay empty.
std::string CsvPackage(const CAppx& package, std::size_t index) {
    const std::pair<const char*, std::string> known[] = {
        {"name", Utf8(package.m_wzDisplayName)},
        {"installDate", Utf8(package.m_wzInstallDate)},
        {"key", Utf8(package.m_wzPackageFullName)},
        {"version", std::to_string(package.m_ullVersion)},
        {"flags", std::to_string(package.GetFlags())},
        {"size", std::to_string(package.GetEstimatedSize())},
        {"installLocation", Utf8(package.m_wzInstallLocal)},
        {"realInstallLocation", Utf8(package.m_wzRealInstallLocal)},
        {"iconSize", std::to_string(package.GetIconDataSize())},
        {"iconChecksum", IconChecksum(package)},
    };
    std::string line = std::to_string(index) + ",0";
    for (const AppField& field : kAppFields) {
        line += ",";
        for (const auto& [name, value] : known) {
            if (std::string_view(name) == field.name) line += CsvField(value);
        }
    }
    return line + "\r\n";
}

}  // namespace

bool WriteJson(const std::vector<NumberedApp>& apps) {
    bool written = true;
    const auto sink = [&](std::string_view text) { written = WriteOut(text) && written; };
    const auto writeKind = [&](std::int32_t appx) {
        bool first = true;
        for (const NumberedApp& one : apps) {
            if (one.app->IsAppx() != appx) continue;
            if (!first) sink(",");
            first = false;
            WriteAppJson(*one.app, one.index, sink);
        }
    };
    sink("{\"applications\":[");
    writeKind(0);
    sink("],\"packages\":[");
    writeKind(1);
    sink("]}\n");
    return written;
}

bool WriteJsonLines(const std::vector<NumberedApp>& apps) {
    bool written = true;
    const auto sink = [&](std::string_view text) { written = WriteOut(text) && written; };
    for (const NumberedApp& one : apps) {
        WriteAppJson(*one.app, one.index, sink);
        sink("\n");
    }
    return written;
}

bool WriteCsv(const std::vector<NumberedApp>& apps) {
    std::string head = "index,level";
    for (const AppField& field : kAppFields) head += std::string(",") + field.name;
    bool written = WriteOut(head + "\r\n");
    struct Waiting {
        const CApp* app;
        std::string index;
        std::size_t level;
    };
    std::vector<Waiting> waiting;
    for (const NumberedApp& one : apps) {
        if (const auto* package = dynamic_cast<const CAppx*>(one.app)) {
            written = WriteOut(CsvPackage(*package, one.index)) && written;
            continue;
        }
        const auto* root = dynamic_cast<const CApp*>(one.app);
        if (root != nullptr) waiting.push_back({root, std::to_string(one.index), 0});
        while (!waiting.empty()) {
            const Waiting next = std::move(waiting.back());
            waiting.pop_back();
            written = WriteOut(CsvRecord(*next.app, next.index, next.level)) && written;
            for (std::size_t k = next.app->SubApps.size(); k > 0; --k) {
                waiting.push_back({static_cast<const CApp*>(next.app->SubApps[k - 1].Get()), "", next.level + 1});
            }
        }
    }
    return written;
}

}  // namespace roundup::host
