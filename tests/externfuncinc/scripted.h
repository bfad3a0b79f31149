// A manager and an observer that do what a test tells them.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appeunm/iappmanager.h"
#include "externfuncinc/roundup.h"

namespace roundup {

// Reports the percents of a real load until one is answered with 0, and then has the applications of the test.
class ScriptedManager final : public CKvObject<CContinue<IAppManager>> {
  public:
    std::vector<RefPtr<CApp>> found;   // what the next load finds; a null one cannot be had
    std::vector<RefPtr<CApp>> loaded;  // what the last load found
    std::function<void()> duringLoad = [] {};

    std::int64_t LoadApp(std::uint8_t) override { return -1; }
    std::uint32_t GetLoadStatus() override { return 0; }
    std::uint64_t GetLoadedCount() override { return 0; }
    std::uint32_t GetCount() override { return static_cast<std::uint32_t>(loaded.size()); }
    ResultCode GetApp(IApp** app, std::uint32_t index) override {
        if (index >= loaded.size() || !loaded[index]) return FailQuiet(SmallCode::NoMoreItems);
        *app = RefPtr<CApp>(loaded[index]).Detach();
        return kSuccess;
    }
    std::int32_t HasApp(const AppRecordEx*) override { return 0; }
    std::uint8_t CheckRuntime(void*, IHearthRuntime*, std::uint32_t*) override { return 1; }
    std::int32_t HasAppOrSubApp(const AppRecordEx*) override { return 0; }
    ResultCode GetGatheredApp(const char16_t*, const char16_t*, std::uint64_t, IApp**) override {
        return FailQuiet(SmallCode::BadArgument);
    }
    IHearthRuntime** GetRuntime(IHearthRuntime** out) override { return out; }
    std::uint8_t IsContinue() const noexcept override { return CContinue::IsContinue(); }
    void Stop() noexcept override { CContinue::Stop(); }
    ResultCode LoadAppEx(ProgressCallback callback, void* context, bool) override {
        loaded.clear();
        duringLoad();
        for (const std::uint32_t percent : {10U, 20U, 40U, 50U, 60U, 70U, 80U, 90U, 95U}) {
            if (callback(percent, context) == 0) return FailQuiet(SmallCode::Cancelled);
        }
        loaded = found;
        return kSuccess;
    }
};

// Writes down what it is told, and keeps count of its references.
class ScriptedObserver final : public IRoundupObserver {
  public:
    std::vector<std::string> told;
    std::vector<IRmxApp*> records;
    std::uint32_t cancelAt = 0;  // percent that is answered with 0
    // What the host does when it is told that. A copy: the host may be told more meanwhile, which moves the texts.
    std::function<void(std::string)> callBack = [](const std::string&) {};
    std::int32_t references = 1;

    std::uint32_t AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t Release() override { return static_cast<std::uint32_t>(--references); }
    void HostOperation2() override { told.emplace_back("operation of the host's own"); }
    void HostOperation3() override { told.emplace_back("operation of the host's own"); }
    void OnAppInfo(IRmxApp* app) override {
        records.push_back(app);
        std::string name;
        for (const char16_t* c = app->GetAppInfo()->wzName; *c != 0; ++c) name += static_cast<char>(*c);
        told.push_back(name);
        callBack(name);
    }
    std::uint8_t OnProgress(std::uint32_t percent) override {
        told.push_back(std::to_string(percent));
        callBack(told.back());
        return percent == cancelAt ? 0 : 1;
    }
    void OnUnInstallDone(IRmxApp* app, std::uint32_t exitCode) override {
        records.push_back(app);
        told.push_back("done " + std::to_string(exitCode));
        callBack(told.back());
    }
    std::vector<std::string> Take() {
        records.clear();
        return std::exchange(told, {});
    }
};

}  // namespace roundup
