#include "host/appjson.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "host/appfields.h"

namespace roundup::host {

namespace {

// The members in front of the sub-applications, without the closing brace.
std::string Members(const CApp& app, std::optional<std::size_t> index) {
    nlohmann::ordered_json members;
    members["index"] = index ? nlohmann::ordered_json(*index) : nlohmann::ordered_json(nullptr);
    for (const AppField& field : kAppFields) {
        const AppField::Value value = field.read(app);
        if (const auto* text = std::get_if<std::string>(&value)) {
            members[field.name] = *text;
        } else {
            members[field.name] = std::get<std::int64_t>(value);
        }
    }
    std::string text = members.dump();
    text.pop_back();
    return text;
}

}  // namespace

void WriteAppJson(const CApp& app, std::optional<std::size_t> index, const JsonSink& sink) {
    struct Level {
        const CApp* app;
        std::size_t next;
    };
    std::vector<Level> open;
    const auto enter = [&](const CApp& entered, std::optional<std::size_t> position) {
        sink(Members(entered, position));
        sink(",\"subApplications\":[");
        open.push_back({&entered, 0});
    };
    enter(app, index);
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next == level.app->SubApps.size()) {
            sink("]}");
            open.pop_back();
            continue;
        }
        if (level.next > 0) sink(",");
        // Below an application stand applications of its kind alone.
        enter(static_cast<const CApp&>(*level.app->SubApps[level.next++].Get()), std::nullopt);
    }
}

}  // namespace roundup::host
