// All applications of a machine, side by side. The scans of the machine are made once for all of them.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>

#include "appcenter/app/app.h"
#include "host/complain.h"
#include "host/gather.h"
#include "host/progress.h"
#include "host/terminal.h"
#include "host/textout.h"
#include "utility/casemap.h"

namespace roundup::host {

namespace {

using Group = std::vector<std::size_t>;

// What a store is named after.
std::vector<std::u16string_view> KeysOf(const IApp& root) {
    std::vector<std::u16string_view> keys;
    std::vector<const IApp*> waiting{&root};
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const IApp& app = *waiting.back();
        waiting.pop_back();
        if (const auto* entry = dynamic_cast<const CApp*>(&app)) keys.push_back(entry->pwszKeyString.View());
        below.clear();
        app.GetSubApps(below);
        waiting.insert(waiting.end(), below.begin(), below.end());
    }
    return keys;
}

// Two trees in which a key is the same would write to one store, so they are gathered one after the other: the indices
// of the trees, in groups that have no key in common, in the order of their first members.
std::vector<Group> GroupsOf(const std::vector<const IApp*>& apps) {
    std::vector<std::size_t> leader(apps.size());  // an earlier member of the same group, or the tree itself
    const auto first = [&leader](std::size_t at) {
        while (leader[at] != at) at = leader[at] = leader[leader[at]];
        return at;
    };
    std::unordered_map<std::u16string_view, std::size_t, NoCaseHash, NoCaseEqual> owners;
    for (std::size_t i = 0; i < apps.size(); ++i) {
        leader[i] = i;
        for (const std::u16string_view key : KeysOf(*apps[i])) {
            const std::size_t a = first(owners.emplace(key, i).first->second);
            const std::size_t b = first(i);
            leader[std::max(a, b)] = std::min(a, b);
        }
    }
    std::vector<Group> members(apps.size());
    for (std::size_t i = 0; i < apps.size(); ++i) members[first(i)].push_back(i);
    std::erase_if(members, [](const Group& group) { return group.empty(); });
    return members;
}

class Gathering {
  public:
    Gathering(const Options& options, const std::vector<const IApp*>& apps)
        : m_options(options), m_apps(apps), m_groups(GroupsOf(apps)), m_results(apps.size()) {}
    Gathering(const Gathering&) = delete;
    Gathering& operator=(const Gathering&) = delete;
    ~Gathering() {
        m_stop = true;
        for (std::thread& worker : m_workers) worker.join();
    }

    void Start() {
        const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
        const std::size_t wanted = m_options.jobs != 0 ? m_options.jobs : processors;
        while (m_workers.size() < std::min(wanted, m_groups.size())) m_workers.emplace_back([this] { Work(); });
    }

    // What one tree gave, once it is there; nothing when interrupted says so first.
    struct Result {
        std::string text;
        std::string message;  // for standard error; empty when all went well
        bool done = false;
    };
    std::optional<Result> Take(std::size_t index) {
        std::unique_lock guard(m_lock);
        while (!Interrupted()) {
            if (m_results[index].done) return std::move(m_results[index]);
            m_changed.wait_for(guard, std::chrono::milliseconds(50));
        }
        return std::nullopt;
    }

  private:
    void Work() {
        for (std::size_t next = m_next++; next < m_groups.size(); next = m_next++) {
            for (const std::size_t index : m_groups[next]) {
                if (m_stop) return;
                Result result = GatherOne(Catalogue::Writable(*m_apps[index]));
                const std::lock_guard guard(m_lock);
                m_results[index] = std::move(result);
                m_changed.notify_one();
            }
        }
    }

    Result GatherOne(IApp& app) const {
        Result result;
        result.done = true;
        try {
            const ResultCode rc = app.Gather(nullptr, nullptr);
            const auto code = static_cast<std::uint32_t>(Small(rc));
            result.text = m_options.format == Format::Text ? GatherText(app) : GatherJson(app, code);
            const char16_t* const name = app.GetName();
            if (Failed(rc)) {
                result.message = "the gather of '" + Printable(name != nullptr ? name : u"") + "' failed with code " +
                                 std::to_string(code);
            }
            if (!m_options.store.empty()) KeepStores(app, m_options.store, result.message);
            app.UnGather();
        } catch (const std::exception& error) {
            result.message = error.what();
        }
        return result;
    }

    const Options& m_options;
    const std::vector<const IApp*>& m_apps;
    const std::vector<Group> m_groups;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_stop{false};
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<Result> m_results;  // guarded by m_lock
    std::vector<std::thread> m_workers;
};

// The pieces of the output around the results.
struct Frame {
    std::string_view head, between, tail;
};

Frame FrameOf(Format format) {
    if (format == Format::Json) return {"[", ",\n", "]\n"};
    return {"", format == Format::Text ? "\n" : "", ""};
}

}  // namespace

int GatherAll(const Options& options, const Catalogue& catalogue) {
    const std::vector<const IApp*>& apps = catalogue.Apps();
    const Frame frame = FrameOf(options.format);
    std::vector<std::string> messages;
    bool written = WriteOut(frame.head);
    {
        ProgressMeter progress(options.progress);
        Gathering gathering(options, apps);
        gathering.Start();
        for (std::size_t i = 0; i < apps.size() && written; ++i) {
            std::optional<Gathering::Result> result = gathering.Take(i);
            if (!result) {
                Complain("cancelled");
                return kExitCancelled;
            }
            if (options.format == Format::Json && result->text.ends_with('\n')) result->text.pop_back();
            written = (i == 0 || WriteOut(frame.between)) && WriteOut(result->text);
            if (!result->message.empty()) messages.push_back(std::move(result->message));
            progress.Show(static_cast<std::uint32_t>((i + 1) * 100 / apps.size()));
        }
    }
    if (!written || !WriteOut(frame.tail) || std::fflush(stdout) != 0) return Complain(kOutputFailed);
    for (const std::string& message : messages) Complain(message);
    std::string message;
    if (!options.store.empty() && !KeepWritten(options.store, message)) return Complain(message);
    return messages.empty() ? kExitSuccess : kExitFailure;
}

}  // namespace roundup::host
