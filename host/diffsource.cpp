#include "host/diffsource.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "host/appjson.h"
#include "host/catalogue.h"
#include "host/complain.h"
#include "host/machinechoice.h"
#include "host/program.h"
#include "host/terminal.h"

namespace roundup::host {

namespace {

using Json = nlohmann::json;

std::string Text(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

DiffEntry EntryOf(const Json& object, bool package) {
    DiffEntry entry;
    entry.package = package;
    entry.key = Text(object, "key");
    entry.identity = package ? Text(object, "family") : entry.key;
    entry.name = Text(object, "name");
    entry.publisher = Text(object, "publisher");
    entry.version = Text(object, "version");
    entry.installDate = Text(object, "installDate");
    entry.installLocation = Text(object, "installLocation");
    const auto size = object.find("size");
    if (size != object.end() && size->is_number()) entry.size = size->get<std::int64_t>();
    return entry;
}

// Each object in front of those below it, without recursion: a forest may be deep.
bool Collect(const Json& list, bool package, std::vector<DiffEntry>& entries) {
    if (!list.is_array()) return false;
    std::vector<const Json*> waiting;
    const auto push = [&waiting](const Json& array) {
        for (auto at = array.rbegin(); at != array.rend(); ++at) waiting.push_back(&*at);
    };
    push(list);
    while (!waiting.empty()) {
        const Json& object = *waiting.back();
        waiting.pop_back();
        if (!object.is_object()) return false;
        entries.push_back(EntryOf(object, package));
        const auto below = object.find("subApplications");
        if (below != object.end() && below->is_array()) push(*below);
    }
    return true;
}

int ReadMachine(const Options& options, const std::string& folder, std::vector<DiffEntry>& entries) {
    Options one = options;
    one.machine = folder;
    std::string message;
    const std::unique_ptr<Machine> machine = ChooseMachine(one, message);
    if (machine == nullptr) return Complain(message);
    const MachineScope scope(*machine);
    Catalogue catalogue;
    if (const int status = LoadCatalogue(one, catalogue); status != kExitSuccess) return status;
    std::string text;
    for (std::size_t i = 0; i < catalogue.Apps().size(); ++i) {
        const IApp& app = *catalogue.Apps()[i];
        text = "[";
        WriteAppJson(app, i, [&text](std::string_view part) { text += part; });
        (void)Collect(Json::parse(text + "]"), app.IsAppx() != 0, entries);
    }
    return kExitSuccess;
}

}  // namespace

bool ParseCatalogueJson(const std::string& text, std::vector<DiffEntry>& entries) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object() || !json.contains("applications") || !json.contains("packages")) return false;
    return Collect(json["applications"], false, entries) && Collect(json["packages"], true, entries);
}

int ReadDiffSource(const Options& options, const std::string& path, std::vector<DiffEntry>& entries) {
    const std::filesystem::path place(std::u8string(path.begin(), path.end()));
    std::error_code ignored;
    if (std::filesystem::is_directory(place, ignored)) return ReadMachine(options, path, entries);
    std::ifstream file(place, std::ios::binary);
    if (!file) return Complain("'" + path + "' is no machine and cannot be read");
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!ParseCatalogueJson(text, entries)) return Complain("'" + path + "' is not the JSON of a list");
    return kExitSuccess;
}

}  // namespace roundup::host
