// Keeps a package that has brought down the process from doing so for ever.
#pragma once

#include <cstdint>

#include "utility/locks.h"
#include "utility/ownedstring.h"

namespace roundup {

enum class CrashKind : std::uint32_t { Enum = 1, Analyze = 2 };

// Counts in an ini file of the cache folder, for each package, the attempts to read it that have started and not ended.
// The count is on disk before an attempt starts, so it survives the process: section "Crash", the package's full path,
// a decimal number, which no entry and an unreadable file give as 0. Keys are never removed.
//
//     run     found   N   what becomes of it
//     first   0       1   read, and the process dies
//     second  1       2   read, and the process dies
//     later   2       3   not read; the 2 stays
//
// Without the folder reads give 0 and writes fail, so every package is read, with no protection. Every thread may call;
// each operation holds the lock for its own length alone, so the attempts at one package are made one after the other.
class CrashGuard {
  public:
    explicit CrashGuard(CrashKind kind);
    CrashGuard(const CrashGuard&) = delete;
    CrashGuard& operator=(const CrashGuard&) = delete;
    virtual ~CrashGuard() = default;

    // The number of the attempt that would start now: the stored value plus 1, and never less. 0 for a null or empty
    // path, and when the cache folder is not known.
    std::uint32_t GetRetryCount(const char16_t* packagePath);
    // False when nothing could be written, and where GetRetryCount answers 0.
    bool SetRetryCount(const char16_t* packagePath, std::uint32_t number);
    // For those who test what a crash does: "test\TestAppCrash.ini" of the cache folder has a section for each kind
    // ("enum", "analyze"), and a key that is the package's file name, with a value other than 0, ends the process here.
    void TestCrashHook(const char16_t* packagePath) const;

    // The attempts of a package that are made at most.
    static constexpr std::uint32_t kMostAttempts = 2;

  private:
    CriticalSection m_lock;
    // Constant after construction.
    OwnedString m_path;  // null when the cache folder is not known
    const CrashKind m_kind;
};

// The process's guard of a kind; every number but 1 is Analyze's. Good until the machine's scope ends.
CrashGuard& GetCrashGuard(std::uint32_t kind);

// One attempt at a package, which ends with the object. Who reads a package asks first:
//
//     const PackageAttempt attempt(GetCrashGuard(1), path);
//     if (!attempt.IsAllowed()) continue;
class PackageAttempt {
  public:
    // packagePath must outlive the object. Does not return when the test file asks for a crash.
    PackageAttempt(CrashGuard& guard, const char16_t* packagePath);
    PackageAttempt(const PackageAttempt&) = delete;
    PackageAttempt& operator=(const PackageAttempt&) = delete;
    ~PackageAttempt();

    // False for a package that has brought down too many processes already.
    bool IsAllowed() const noexcept { return m_number <= CrashGuard::kMostAttempts; }

  private:
    CrashGuard& m_guard;
    const char16_t* m_packagePath;
    const std::uint32_t m_number;
};

}  // namespace roundup
