// A complete host: lists the applications of the machine, saves the icon of one, uninstalls one.
//
//   samplehost                        lists them, with a number each
//   samplehost --icon NUMBER FILE     saves the icon of an application, as an .ico file
//   samplehost --uninstall NUMBER     starts its uninstall, waits for the end, and ends with its exit code
//
// On Windows it reads the machine that it runs on; elsewhere ROUNDUP_MACHINE names the folder of a machine.
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "externfuncinc/roundup.h"

using namespace roundup;

namespace {

// UTF-8 of a text of a record. A lone half of a surrogate pair, which a name may hold, becomes U+FFFD.
std::string Utf8(const WideChar* text) {
    std::string bytes;
    for (; *text != 0; ++text) {
        std::uint32_t c = static_cast<std::uint16_t>(*text);
        const std::uint32_t low = static_cast<std::uint16_t>(text[1]);
        if (c >= 0xD800 && c < 0xDC00 && low >= 0xDC00 && low < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
            ++text;
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        const std::uint32_t lead[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(lead[more] | c >> 6 * more);
        for (int i = more - 1; i >= 0; --i) bytes += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
    }
    return bytes;
}

// This one lives as long as the program, so its count decides nothing; a host that makes observers with new deletes
// itself when Release reaches 0.
class Observer final : public IRoundupObserver {
  public:
    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }

    void OnAppInfo(IRmxApp* app) override { records.push_back(app); }

    std::uint8_t OnProgress(std::uint32_t percent) override {
        std::fprintf(stderr, "%u %%\n", static_cast<unsigned>(percent));
        return 1;
    }

    // On a thread of its own, while Wait sleeps.
    void OnUnInstallDone(IRmxApp*, std::uint32_t exitCode) override {
        const std::lock_guard<std::mutex> guard(m_lock);
        m_exitCode = exitCode;
        m_ended.notify_all();
    }
    std::uint32_t Wait() {
        std::unique_lock<std::mutex> guard(m_lock);
        m_ended.wait(guard, [this] { return m_exitCode.has_value(); });
        return *m_exitCode;
    }

    std::vector<IRmxApp*> records;  // good until the next LoadApps, Uninit or the end of the facade

  private:
    std::mutex m_lock;
    std::condition_variable m_ended;
    std::optional<std::uint32_t> m_exitCode;
};

int List(const Observer& observer) {
    for (std::size_t i = 0; i < observer.records.size(); ++i) {
        const _tagAppInfo& info = *observer.records[i]->GetAppInfo();
        std::printf("%u\t%s\t%s\t%llu bytes\t%s\n", static_cast<unsigned>(i), Utf8(info.wzName).c_str(),
                    Utf8(info.wzPublisher).c_str(), static_cast<unsigned long long>(info.qwSize),
                    Utf8(info.wzInstallLoc).c_str());
    }
    return 0;
}

int SaveIcon(IRmxApp& app, const char* path) {
    const std::uint8_t* const bytes = app.GetAppIconData();
    if (bytes == nullptr) {
        std::fputs("it has no icon\n", stderr);
        return 1;
    }
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(app.GetAppIconSize()));
    return file.flush() ? 0 : 1;
}

int Uninstall(IRoundupProc& roundup, Observer& observer, IRmxApp& app) {
    if (roundup.UnInstallApp(&app) != 0) {
        std::fputs("its uninstall could not be started\n", stderr);
        return 1;
    }
    const std::uint32_t exitCode = observer.Wait();
    std::printf("uninstall ended with %u\n", static_cast<unsigned>(exitCode));
    return static_cast<int>(exitCode);
}

int Run(IRoundupProc& roundup, Observer& observer, int count, char** arguments) {
    if (roundup.LoadApps(0) != 0) {
        std::fputs("the load failed\n", stderr);
        return 1;
    }
    roundup.EnumApps();
    if (count < 3) return List(observer);
    const std::size_t number = std::strtoul(arguments[2], nullptr, 10);
    if (number >= observer.records.size()) {
        std::fputs("there is no application of that number\n", stderr);
        return 1;
    }
    IRmxApp& app = *observer.records[number];
    if (std::strcmp(arguments[1], "--icon") == 0 && count == 4) return SaveIcon(app, arguments[3]);
    if (std::strcmp(arguments[1], "--uninstall") == 0 && count == 3) return Uninstall(roundup, observer, app);
    std::fputs("usage: samplehost [--icon NUMBER FILE | --uninstall NUMBER]\n", stderr);
    return 2;
}

}  // namespace

int main(int count, char** arguments) {
    IRoundupProc* const roundup = GetImp();
    if (roundup == nullptr) {
        std::fputs("there is no machine to look at\n", stderr);
        return 1;
    }
    Observer observer;
    roundup->Init();
    roundup->SetObserver(&observer);
    const int status = Run(*roundup, observer, count, arguments);
    roundup->Uninit();
    roundup->Release();
    return status;
}
