#include "host/appjson.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/packagefields.h"
#include "host/textout.h"

namespace roundup::host {

namespace {

nlohmann::ordered_json Position(std::optional<std::size_t> index) {
    return index ? nlohmann::ordered_json(*index) : nlohmann::ordered_json(nullptr);
}

// The members in front of the sub-applications, without the closing brace.
std::string Members(const CApp& app, std::optional<std::size_t> index) {
    nlohmann::ordered_json members;
    members["index"] = Position(index);
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

std::string PackageJson(const CAppx& package, std::optional<std::size_t> index) {
    nlohmann::ordered_json json;
    json["index"] = Position(index);
    json["name"] = Utf8(package.m_wzDisplayName);
    json["installDate"] = Utf8(package.m_wzInstallDate);
    json["key"] = Utf8(package.m_wzPackageFullName);
    json["family"] = Utf8(package.m_wzPackageFamilyName);
    json["version"] = std::to_string(package.m_ullVersion);
    json["architecture"] = Utf8(package.m_wzArchitecture);
    json["framework"] = package.m_bIsFramework != 0;
    json["recordFlags"] = RecordFlags(package);
    json["size"] = package.GetEstimatedSize();
    json["installLocation"] = Utf8(package.m_wzInstallLocal);
    json["realInstallLocation"] = Utf8(package.m_wzRealInstallLocal);
    json["iconSize"] = package.GetIconDataSize();
    json["iconChecksum"] = IconChecksum(package);
    json["dependencies"] = nlohmann::ordered_json::array();
    for (const PackageDependency& needed : package.Dependency) {
        json["dependencies"].push_back(
            {{"name", Utf8(needed.name)}, {"minVersion", std::to_string(needed.minVersion)}});
    }
    return json.dump();
}

void WriteForestJson(const CApp& app, std::optional<std::size_t> index, const JsonSink& sink) {
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

}  // namespace

void WriteAppJson(const IApp& app, std::optional<std::size_t> index, const JsonSink& sink) {
    if (const auto* package = dynamic_cast<const CAppx*>(&app)) {
        sink(PackageJson(*package, index));
    } else if (const auto* entry = dynamic_cast<const CApp*>(&app)) {
        WriteForestJson(*entry, index, sink);
    }
}

}  // namespace roundup::host
