// Owners of what the platform hands out, one policy for each way of giving it back.
#pragma once

#include "platform/windows/wintext.h"

namespace roundup {

// A policy names the handle's type, the value that stands for none, and how one is given back.
template <class Policy>
class WinHandle {
  public:
    using Type = typename Policy::Type;

    WinHandle() noexcept : m_handle(Policy::None()) {}
    explicit WinHandle(Type handle) noexcept : m_handle(handle) {}
    WinHandle(WinHandle&& other) noexcept : m_handle(other.Release()) {}
    WinHandle& operator=(WinHandle&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    WinHandle(const WinHandle&) = delete;
    WinHandle& operator=(const WinHandle&) = delete;
    ~WinHandle() { Reset(); }

    explicit operator bool() const noexcept { return m_handle != Policy::None(); }
    Type Get() const noexcept { return m_handle; }
    // For calls that answer through a pointer; what was owned before is given back.
    Type* Out() noexcept {
        Reset();
        return &m_handle;
    }
    Type Release() noexcept {
        const Type handle = m_handle;
        m_handle = Policy::None();
        return handle;
    }
    void Reset(Type handle = Policy::None()) noexcept {
        if (m_handle != Policy::None()) Policy::Close(m_handle);
        m_handle = handle;
    }

  private:
    Type m_handle;
};

// Processes, threads, mutexes: none is null.
struct KernelHandlePolicy {
    using Type = HANDLE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type handle) noexcept { ::CloseHandle(handle); }
};
using KernelHandle = WinHandle<KernelHandlePolicy>;

// Files: none is INVALID_HANDLE_VALUE.
struct FileHandlePolicy {
    using Type = HANDLE;
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type handle) noexcept { ::CloseHandle(handle); }
};
using OwnedFile = WinHandle<FileHandlePolicy>;

struct ModulePolicy {
    using Type = HMODULE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type module) noexcept { ::FreeLibrary(module); }
};
using OwnedModule = WinHandle<ModulePolicy>;

// Blocks that the platform allocated with LocalAlloc for its caller.
template <class T>
struct LocalPolicy {
    using Type = T;
    static Type None() noexcept { return nullptr; }
    static void Close(Type block) noexcept { ::LocalFree(block); }
};
template <class T>
using LocalBlock = WinHandle<LocalPolicy<T>>;

}  // namespace roundup
