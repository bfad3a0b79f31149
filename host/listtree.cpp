#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/applist.h"
#include "host/packagefields.h"
#include "host/textout.h"

namespace roundup::host {

namespace {

// One application and the place of its line in the picture.
struct Node {
    const IApp* app;
    std::string stem;  // what stands in front of the line's own branch
    bool root;
    bool last;
};

std::string Details(const IApp& app) {
    std::string details;
    const auto add = [&](const std::string& text) {
        if (text.empty()) return;
        if (!details.empty()) details += ", ";
        details += text;
    };
    if (const auto* entry = dynamic_cast<const CApp*>(&app)) add(Printable(entry->pwszVersion));
    if (const auto* package = dynamic_cast<const CAppx*>(&app)) add(DottedVersion(package->m_ullVersion));
    if (app.GetPublisher() != nullptr) add(Printable(app.GetPublisher()));
    // The size of a framework says nothing.
    if (app.GetEstimatedSize() > 0 && app.IsFramework() == 0)
        add(ReadableSize(static_cast<std::uint64_t>(app.GetEstimatedSize())));
    return details;
}

std::string Line(const Node& node, const Layout& layout) {
    const std::string branch = node.root ? "" : node.stem + (node.last ? "└── " : "├── ");
    const std::string name = Printable(node.app->GetName() != nullptr ? node.app->GetName() : u"");
    const std::string details = Details(*node.app);
    std::string text = branch + name;
    if (layout.width) text = Cut(text, *layout.width);
    if (details.empty()) return text + "\n";
    const std::size_t used = Columns(text) + 2;
    if (layout.width && used >= *layout.width) return text + "\n";
    const std::string rest = layout.width ? Cut(details, *layout.width - used) : details;
    return text + "  " + (layout.colour ? "\x1b[2m" + rest + "\x1b[0m" : rest) + "\n";
}

}  // namespace

bool WriteTree(const std::vector<NumberedApp>& apps, const std::string& total, const Layout& layout) {
    std::vector<Node> waiting;
    for (std::size_t i = apps.size(); i > 0; --i) waiting.push_back({apps[i - 1].app, "", true, true});
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const Node node = std::move(waiting.back());
        waiting.pop_back();
        if (!WriteOut(Line(node, layout))) return false;
        below.clear();
        node.app->GetSubApps(below);
        std::string stem = node.root ? "" : node.stem + (node.last ? "    " : "│   ");
        // Nothing of a stem beyond the line's end is ever seen, and a chain of parents may be long.
        if (layout.width && Columns(stem) > *layout.width) stem = Cut(stem, *layout.width);
        for (std::size_t i = below.size(); i > 0; --i) {
            waiting.push_back({below[i - 1], stem, false, i == below.size()});
        }
    }
    return WriteOut(TotalText(total, layout));
}

}  // namespace roundup::host
