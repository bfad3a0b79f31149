#include <nlohmann/json.hpp>

#include "appcenter/appx/appx.h"
#include "host/gather.h"
#include "host/storereader.h"
#include "host/textout.h"
#include "utility/stringcontainers.h"

namespace roundup::host {

namespace {

using Json = nlohmann::ordered_json;

std::string TextOf(const char16_t* text) { return Utf8(text != nullptr ? text : u""); }

Json FileJson(const IWFYFile& file, std::u16string_view shortPath) {
    return {{"path", TextOf(file.GetPath())},
            {"shortPath", Utf8(shortPath)},
            {"size", file.GetSize()},
            {"type", file.GetType()},
            {"flags", file.GetFlags()}};
}

template <class Texts>
Json Array(const Texts& texts) {
    Json array = Json::array();
    for (const OwnedString& text : texts) array.push_back(Utf8(text));
    return array;
}

Json Head(const IApp& app, const OwnedString& key) {
    return {{"key", Utf8(key)},
            {"name", TextOf(app.GetName())},
            {"flags", app.GetFlags()},
            {"size", app.GetEstimatedSize()},
            {"gatheredSize", app.GetGatheredSize()}};
}

Json StoreJson(const CApp& app) {
    Json store = Json::array();
    StorePair pair;
    if (!ReadStorePair(app, pair)) return store;
    for (const StoreEntry& entry : pair.entries) {
        store.push_back({{"type", entry.type}, {"offset", entry.offset}, {"size", entry.size}});
    }
    return store;
}

Json Members(const CApp& app) {
    Json json = Head(app, app.pwszKeyString);
    json["files"] = Json::array();
    for (const std::unique_ptr<CWFYFile>& file : app.Gathered().Files) {
        json["files"].push_back(FileJson(*file, file->pwszShortPath));
    }
    json["directories"] = Array(app.Gathered().Directories);
    json["systemDirectories"] = Array(app.Gathered().SystemDirectories);
    json["store"] = StoreJson(app);
    return json;
}

// A package hands its directories out with its files.
Json PackageMembers(CAppx& package) {
    Json json = Head(package, package.m_wzPackageFullName);
    std::vector<IWFYFile*> files;
    CStringVec directories;
    package.GetFilesAndDirectories(files, directories);
    json["files"] = Json::array();
    for (const IWFYFile* file : files) {
        const auto* own = dynamic_cast<const CWFYFile*>(file);
        json["files"].push_back(FileJson(*file, own != nullptr ? own->pwszShortPath.View() : std::u16string_view()));
    }
    json["directories"] = Array(directories);
    json["systemDirectories"] = json["store"] = json["subApplications"] = Json::array();
    return json;
}

// Without the closing brace, and with result in front of the others when it is the first.
std::string Opened(const CApp& app, const std::uint32_t* result) {
    std::string text = Members(app).dump();
    text.pop_back();
    if (result != nullptr) text = "{\"result\":" + std::to_string(*result) + "," + text.substr(1);
    return text + ",\"subApplications\":[";
}

// Without recursion: a forest may be deep.
std::string TreeJson(const CApp& root, std::uint32_t result) {
    struct Level {
        const CApp* app;
        std::size_t next;
    };
    std::string json = Opened(root, &result);
    std::vector<Level> open{{&root, 0}};
    while (!open.empty()) {
        Level& level = open.back();
        if (level.next == level.app->SubApps.size()) {
            json += "]}";
            open.pop_back();
            continue;
        }
        if (level.next > 0) json += ",";
        const auto& sub = static_cast<const CApp&>(*level.app->SubApps[level.next++].Get());
        json += Opened(sub, nullptr);
        open.push_back({&sub, 0});
    }
    return json;
}

}  // namespace

std::string GatherJson(IApp& app, std::uint32_t result) {
    if (const auto* entry = dynamic_cast<const CApp*>(&app)) return TreeJson(*entry, result) + "\n";
    auto* package = dynamic_cast<CAppx*>(&app);
    if (package == nullptr) return "{}\n";
    Json json{{"result", result}};
    json.update(PackageMembers(*package));
    return json.dump() + "\n";
}

}  // namespace roundup::host
