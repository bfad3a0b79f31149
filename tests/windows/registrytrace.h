// The calls that a load makes of the registry, written down and made again with nothing else done.
#pragma once

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/overlaymachine.h"

namespace roundup {

// Passes every call on and writes down those that read, in the order in which they came, whichever thread made them.
class RegistryTrace final : public IRegistry {
  public:
    explicit RegistryTrace(IRegistry& behind) : m_behind(behind) {}

    Win32Error OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        const Win32Error error = m_behind.OpenKey(parent, subKey, access, key);
        Add({Kind::Open, parent, key, subKey != nullptr ? subKey : u"", access});
        return error;
    }
    void CloseKey(KeyHandle key) override {
        Add({Kind::Close, key});
        m_behind.CloseKey(key);
    }
    Win32Error QueryInfo(KeyHandle key, KeyInfo& info) override {
        Add({Kind::Info, key});
        return m_behind.QueryInfo(key, info);
    }
    Win32Error EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) override {
        Add({Kind::EnumKey, key, 0, {}, index});
        return m_behind.EnumKey(key, index, name, length);
    }
    Win32Error EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length, std::uint32_t& type,
                         void* data, std::uint32_t& size) override {
        Add({Kind::EnumValue, key, 0, {}, index});
        return m_behind.EnumValue(key, index, name, length, type, data, size);
    }
    Win32Error QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                          std::uint32_t& size) override {
        Add({Kind::Query, key, 0, name != nullptr ? name : u""});
        return m_behind.QueryValue(key, name, type, data, size);
    }
    Win32Error CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        return m_behind.CreateKey(parent, subKey, access, key);
    }
    Win32Error SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                        std::uint32_t size) override {
        return m_behind.SetValue(key, name, type, data, size);
    }
    Win32Error DeleteValue(KeyHandle key, const char16_t* name) override { return m_behind.DeleteValue(key, name); }

    std::size_t Count() const { return m_calls.size(); }

    // The same calls once more. Handles are those that the calls give this time.
    void Replay() {
        Handles now;
        for (const Call& call : m_calls) Make(call, now);
    }

  private:
    enum class Kind { Open, Close, Info, EnumKey, EnumValue, Query };
    struct Call {
        Kind kind;
        KeyHandle key;
        KeyHandle opened = 0;
        std::u16string name = {};
        std::uint32_t number = 0;  // access or index
    };

    void Add(Call call) {
        const std::lock_guard guard(m_lock);
        m_calls.push_back(std::move(call));
    }

    // Those open at a time, as they were and as they are: few, so that finding one costs next to nothing.
    using Handles = std::vector<std::pair<KeyHandle, KeyHandle>>;

    void Make(const Call& call, Handles& now) {
        const auto known = std::find_if(now.begin(), now.end(), [&](const auto& one) { return one.first == call.key; });
        const KeyHandle key = known != now.end() ? known->second : call.key;
        KeyHandle opened = 0;
        std::uint32_t length = 260, type = 0, size = sizeof m_data;
        char16_t name[260];
        KeyInfo info;
        switch (call.kind) {
            case Kind::Open:
                (void)m_behind.OpenKey(key, call.name.c_str(), call.number, opened);
                if (opened != 0) now.emplace_back(call.opened, opened);
                break;
            case Kind::Close:
                m_behind.CloseKey(key);
                if (known != now.end()) now.erase(known);
                break;
            case Kind::Info:
                (void)m_behind.QueryInfo(key, info);
                break;
            case Kind::EnumKey:
                (void)m_behind.EnumKey(key, call.number, name, length);
                break;
            case Kind::EnumValue:
                (void)m_behind.EnumValue(key, call.number, name, length, type, m_data, size);
                break;
            case Kind::Query:
                (void)m_behind.QueryValue(key, call.name.c_str(), type, m_data, size);
                break;
        }
    }

    IRegistry& m_behind;
    std::mutex m_lock;
    std::vector<Call> m_calls;  // guarded by m_lock until the load has ended
    std::uint8_t m_data[65536] = {};
};

// Another machine, with a trace in front of its registry.
class TracedMachine final : public OverlayMachine {
  public:
    explicit TracedMachine(Machine& behind) : OverlayMachine(behind), trace(behind.Registry()) {}
    IRegistry& Registry() override { return trace; }

    RegistryTrace trace;
};

}  // namespace roundup
