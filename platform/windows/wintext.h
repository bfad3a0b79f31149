// The Windows headers, and the one place where their wchar_t meets the char16_t of everything else.
#pragma once

#include <windows.h>
// What builds on it must come behind it.
#include <aclapi.h>
#include <lm.h>
#include <objbase.h>
#include <winioctl.h>

#include <cstdint>
#include <string>

// Names of the seam that the headers would turn into others.
#undef CreateDirectory
#undef GetComputerName
#undef OpenMutex
#undef GetObject

namespace roundup {

// Both are UTF-16 in 16-bit units here; only their types differ. The texts are handed to the platform or come from it,
// so no compiler sees one object written as one type and read as the other.
static_assert(sizeof(wchar_t) == sizeof(char16_t) && alignof(wchar_t) == alignof(char16_t));

inline const wchar_t* ToWide(const char16_t* text) noexcept { return reinterpret_cast<const wchar_t*>(text); }
inline wchar_t* ToWide(char16_t* text) noexcept { return reinterpret_cast<wchar_t*>(text); }
inline const char16_t* FromWide(const wchar_t* text) noexcept { return reinterpret_cast<const char16_t*>(text); }
inline char16_t* FromWide(wchar_t* text) noexcept { return reinterpret_cast<char16_t*>(text); }

// A copy; null counts as empty.
inline std::u16string CopyWide(const wchar_t* text) { return text != nullptr ? FromWide(text) : std::u16string(); }

// For what Wine answers in its own way (docs/wine.md).
inline bool IsWine() noexcept {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

// Calls that a system may lack are looked up when they are needed: GetProcedure<decltype(&Name)>(module, "Name").
template <class Function>
Function GetProcedure(HMODULE module, const char* name) noexcept {
    static_assert(sizeof(Function) == sizeof(FARPROC));
    // By way of a function without a signature, which every function pointer may be cast to and from.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace roundup
