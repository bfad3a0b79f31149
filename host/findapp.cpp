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
Found FindBelow(const IApp& root, const Wanted& wanted) {
    struct Waiting {
        const IApp* app;
        const IApp* parent;
    };
    std::vector<Waiting> waiting{{&root, nullptr}};
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const Waiting next = waiting.back();
        waiting.pop_back();
        const auto* app = dynamic_cast<const CApp*>(next.app);
        if (app != nullptr && next.parent != nullptr && wanted.Fits(*app))
            return {app, std::nullopt, next.parent, &root};
        below.clear();
        next.app->GetSubApps(below);
        for (std::size_t i = below.size(); i > 0; --i) waiting.push_back({below[i - 1], next.app});
    }
    return {};
}

}  // namespace

Found FindApp(const std::vector<const IApp*>& apps, const Options& options) {
    const Wanted wanted(options);
    for (std::size_t i = 0; i < apps.size(); ++i) {
        const auto* app = dynamic_cast<const CApp*>(apps[i]);
        if (app != nullptr && wanted.Fits(*app)) return {app, i, nullptr, app};
    }
    for (const IApp* root : apps) {
        const Found found = FindBelow(*root, wanted);
        if (found.app != nullptr) return found;
    }
    return {};
}

std::string NotFoundMessage(const Options& options) {
    return "no application has the key '" + options.key + "'" +
           (options.name ? " and the name '" + *options.name + "'" : "");
}

}  // namespace roundup::host
