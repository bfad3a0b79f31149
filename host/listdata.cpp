// The listings for programs: JSON and CSV. Texts are whole here.

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

}  // namespace

bool WriteJson(const std::vector<const IApp*>& apps) {
    bool written = WriteOut("{\"applications\":[");
    bool first = true;
    for (std::size_t i = 0; i < apps.size(); ++i) {
        const auto* app = dynamic_cast<const CApp*>(apps[i]);
        if (app == nullptr) continue;
        if (!first) written = WriteOut(",") && written;
        first = false;
        WriteAppJson(*app, i, [&](std::string_view text) { written = WriteOut(text) && written; });
    }
    return WriteOut("],\"packages\":[]}\n") && written;
}

bool WriteCsv(const std::vector<const IApp*>& apps) {
    std::string head = "index,level";
    for (const AppField& field : kAppFields) head += std::string(",") + field.name;
    bool written = WriteOut(head + "\r\n");
    struct Waiting {
        const CApp* app;
        std::string index;
        std::size_t level;
    };
    std::vector<Waiting> waiting;
    for (std::size_t i = 0; i < apps.size(); ++i) {
        const auto* root = dynamic_cast<const CApp*>(apps[i]);
        if (root != nullptr) waiting.push_back({root, std::to_string(i), 0});
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
