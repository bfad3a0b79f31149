#include "host/findapp.h"

#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

// What the command line asks for, as UTF-16.
struct Wanted {
    explicit Wanted(const Options& options) : key(FromUtf8(options.key)) {
        if (options.name) name = FromUtf8(*options.name);
    }
    bool Fits(const CApp& app) const {
        return EqualsNoCase(app.pwszKeyString, key) && (!name || EqualsNoCase(app.pwszName, *name));
    }
    std::u16string key;
    std::optional<std::u16string> name;
};

// The first one below a root, without recursion: a forest may be deep.
const CApp* FindBelow(const IApp& root, const Wanted& wanted) {
    std::vector<const IApp*> waiting{&root};
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const IApp* next = waiting.back();
        waiting.pop_back();
        const auto* app = dynamic_cast<const CApp*>(next);
        if (app != nullptr && next != &root && wanted.Fits(*app)) return app;
        below.clear();
        next->GetSubApps(below);
        waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
    return nullptr;
}

}  // namespace

Found FindApp(const std::vector<const IApp*>& apps, const Options& options) {
    const Wanted wanted(options);
    for (std::size_t i = 0; i < apps.size(); ++i) {
        const auto* app = dynamic_cast<const CApp*>(apps[i]);
        if (app != nullptr && wanted.Fits(*app)) return {app, i, app};
    }
    for (const IApp* root : apps) {
        if (const CApp* app = FindBelow(*root, wanted)) return {app, std::nullopt, root};
    }
    return {};
}

std::string NotFoundMessage(const Options& options) {
    return "no application has the key '" + options.key + "'" +
           (options.name ? " and the name '" + *options.name + "'" : "");
}

}  // namespace roundup::host
