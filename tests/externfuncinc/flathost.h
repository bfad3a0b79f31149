// A host that knows the module by its slots alone, and keeps to nothing.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "externfuncinc/roundup.h"

namespace roundup {

// The classes of docs/abi.md: no virtual base, the operations in the order of the slots.
struct FlatApp {
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
    virtual void NotForHosts2() = 0;
    virtual void NotForHosts3() = 0;
    virtual void NotForHosts4() = 0;
    virtual _tagAppInfo* GetAppInfo() = 0;
    virtual const std::uint8_t* GetAppIconData() = 0;
    virtual std::uint32_t GetAppIconSize() = 0;

  protected:
    ~FlatApp() = default;
};
struct FlatRoundup {
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
    virtual void NotForHosts2() = 0;
    virtual void NotForHosts3() = 0;
    virtual void NotForHosts4() = 0;
    virtual std::int64_t Init() = 0;
    virtual std::int64_t Uninit() = 0;
    virtual void SetObserver(IRoundupObserver* observer) = 0;
    virtual std::int64_t LoadApps(std::uint8_t unused) = 0;
    virtual std::int64_t EnumApps() = 0;
    virtual std::uint8_t SaveContendProc() = 0;
    virtual std::int64_t UnInstallApp(FlatApp* app) = 0;

  protected:
    ~FlatRoundup() = default;
};

class FlatObserver final : public IRoundupObserver {
  public:
    std::vector<FlatApp*> apps;
    std::vector<std::uint32_t> percents;
    std::int32_t references = 1;

    std::uint32_t AddRef() override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t Release() override { return static_cast<std::uint32_t>(--references); }
    void OnAppInfo(IRmxApp* app) override { apps.push_back(reinterpret_cast<FlatApp*>(app)); }
    std::uint8_t OnProgress(std::uint32_t percent) override {
        percents.push_back(percent);
        return 1;
    }
    void OnUnInstallDone(IRmxApp*, std::uint32_t) override { ADD_FAILURE() << "nothing was started"; }
};

// Everything that a host may get wrong with a module of its own, whose machine has an application of that key. All
// facades have ended afterwards.
inline void MisuseModule(IRoundupProc* (*getImp)(), std::u16string_view key) {
    const auto make = [&] { return reinterpret_cast<FlatRoundup*>(getImp()); };
    FlatObserver observer;
    FlatRoundup* const idle = make();
    ASSERT_NE(idle, nullptr);
    const auto expectIdle = [&](const char* when) {
        EXPECT_EQ(idle->LoadApps(0), 0) << when;
        EXPECT_EQ(idle->EnumApps(), 0) << when;
        EXPECT_EQ(idle->UnInstallApp(nullptr), -1) << when;
        EXPECT_EQ(idle->UnInstallApp(reinterpret_cast<FlatApp*>(&observer)), -1) << when;
        EXPECT_EQ(idle->SaveContendProc(), 0) << when;
        EXPECT_TRUE(observer.percents.empty() && observer.apps.empty()) << when;
    };
    expectIdle("made");
    idle->SetObserver(nullptr);
    idle->Init();
    expectIdle("armed, without an observer");
    idle->Uninit();
    idle->Uninit();
    idle->SetObserver(&observer);
    idle->Init();
    expectIdle("armed behind its end");

    FlatRoundup* const facade = make();
    ASSERT_NE(facade, nullptr);
    ASSERT_NE(facade, idle);
    facade->SetObserver(&observer);
    facade->Init();
    facade->Init();
    EXPECT_EQ(facade->LoadApps(0), 0);
    EXPECT_EQ(facade->LoadApps(255), 0);
    ASSERT_FALSE(observer.percents.empty());
    EXPECT_EQ(observer.percents.front(), 10U);
    EXPECT_EQ(observer.percents.back(), 100U);
    EXPECT_EQ(facade->EnumApps(), 0);
    bool found = false;
    for (FlatApp* const app : observer.apps) {
        _tagAppInfo* const info = app->GetAppInfo();
        EXPECT_EQ(reinterpret_cast<char*>(info), reinterpret_cast<char*>(app) + sizeof(void*));
        EXPECT_EQ(app->GetAppIconData() == nullptr, app->GetAppIconSize() == 0);
        found = found || key == info->wzKeyString;
        EXPECT_EQ(app->AddRef(), 2U);
        for (std::uint32_t left = 2; left-- > 0;) EXPECT_EQ(app->Release(), left);
        app->Release();
        EXPECT_EQ(app->GetAppInfo(), info) << "records do not end with their count";
    }
    ASSERT_TRUE(found);
    EXPECT_EQ(facade->UnInstallApp(nullptr), -1);
    EXPECT_EQ(facade->UnInstallApp(reinterpret_cast<FlatApp*>(&observer)), -1) << "no record";
    EXPECT_EQ(idle->UnInstallApp(observer.apps.front()), -1) << "another facade's record";

    observer.percents.clear();
    observer.apps.clear();
    for (FlatRoundup* const ended : {facade, idle}) {
        EXPECT_EQ(ended->AddRef(), 2U);
        for (std::uint32_t left = 2; left-- > 0;) EXPECT_EQ(ended->Release(), left);
        EXPECT_EQ(ended->Release(), 0U) << "once too often";
        ended->Init();
        ended->SetObserver(&observer);
        EXPECT_EQ(ended->LoadApps(0), 0);
        EXPECT_EQ(ended->EnumApps(), 0);
        EXPECT_EQ(ended->Uninit(), 0);
    }
    EXPECT_TRUE(observer.percents.empty() && observer.apps.empty());
    EXPECT_EQ(observer.references, 1);
}

}  // namespace roundup
