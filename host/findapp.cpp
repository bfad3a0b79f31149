#include "host/findapp.h"

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

std::u16string_view KeyOf(const IApp& app) {
    if (const auto* package = dynamic_cast<const CAppx*>(&app)) return package->m_wzPackageFullName;
    const auto* entry = dynamic_cast<const CApp*>(&app);
    return entry != nullptr ? entry->pwszKeyString.View() : std::u16string_view();
}

// What the command line asks for, as UTF-16.
struct Wanted {
    explicit Wanted(const Options& options) : key(FromUtf8(options.key)) {
        if (options.name) name = FromUtf8(*options.name);
    }
    bool Fits(const IApp& app) const {
        return EqualsNoCase(KeyOf(app), key) && (!name || EqualsNoCase(TextOrNull(app.GetName()).View(), *name));
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
        if (next.parent != nullptr && wanted.Fits(*next.app)) return {next.app, std::nullopt, next.parent, &root};
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
        if (wanted.Fits(*apps[i])) return {apps[i], i, nullptr, apps[i]};
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
