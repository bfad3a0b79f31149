// Roundup: what a host compiles against. It needs no header of the tree but utility/ikvobject.h, which comes with it.
//
// The module exports one function, GetImp. A host keeps this order:
//
//     IRoundupProc* roundup = GetImp();          null: no memory, or no machine to look at
//     roundup->Init();
//     roundup->SetObserver(&observer);           before or after Init
//     roundup->LoadApps(0);                      OnProgress(10) ... OnProgress(100)
//     roundup->EnumApps();                       OnAppInfo(record) for each that is still there
//     roundup->UnInstallApp(record);             OnUnInstallDone(record, exit code)
//     roundup->Uninit();
//     roundup->Release();
//
// LoadApps, EnumApps and UnInstallApp may come any number of times. Calls in another order do no harm: each operation
// says what it answers then.
//
// The classes cross the module boundary as they are: a host is built by a compiler with the Itanium C++ ABI, such as
// those of MinGW-w64 and Linux, as C++17 or later. docs/abi.md, which comes with the header, has the layout of tables
// and records, and a way for the compilers of another ABI.
//
// Threads: calls on one IRoundupProc come from one thread at a time; the host sees to that, also for those that an
// observer makes on the thread of an OnUnInstallDone. The observer is called on the thread that is inside LoadApps or
// EnumApps, and OnUnInstallDone on a thread of its own for each uninstall, so that these calls can overlap each other
// and everything else. An observer may call the facade from inside its operations; but LoadApps from inside OnProgress
// answers -1. Counts may be changed from every thread.
//
// Ownership: objects end with Release, never with delete. The records belong to the facade: a pointer to one is good
// until the next LoadApps, Uninit or the last Release of the facade, whichever comes first, and its count may go up and
// down in pairs without effect on that. The record of an uninstall that runs stays good, with the texts and the icon
// that it has, until its OnUnInstallDone has returned, also across LoadApps. The observer belongs to the host; the
// facade holds one reference to it between SetObserver and the next SetObserver, Uninit or its own end. While
// uninstalls run the host keeps the observer and the module itself in place until each OnUnInstallDone has come; none
// comes behind Uninit, the last Release or SetObserver(null), and the process goes on alone.
//
// Errors are return values; no operation throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "utility/ikvobject.h"

namespace roundup {

// A unit of UTF-16. Hosts see the native wide type where it has 16 bits, as on Windows; the module itself and what
// links its code into one program see the same bytes as char16_t and are built with ROUNDUP_TEXT_CHAR16.
#ifdef ROUNDUP_TEXT_CHAR16
using WideChar = char16_t;
#else
using WideChar = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;
#endif

// Size of a text in a record, its terminating zero included. A longer text is cut to 259 units, never inside a
// surrogate pair.
inline constexpr std::size_t kAppInfoTextSize = 260;

// Bits of qwFlags, the module's own. Others may be set, and mean nothing to a host.
inline constexpr std::uint64_t kAppInfo64Bit = 0x1;             // a 64-bit application
inline constexpr std::uint64_t kAppInfoNotTopLevel = 0x2;       // belongs to another one, not to be shown on its own
inline constexpr std::uint64_t kAppInfoWindowsInstaller = 0x4;  // installed by Windows Installer
inline constexpr std::uint64_t kAppInfo32BitImages = 0x8;       // has images of 32 bits
inline constexpr std::uint64_t kAppInfoCurrentUser = 0x100;     // the entry lives in HKEY_CURRENT_USER
inline constexpr std::uint64_t kAppInfo64BitView = 0x200;       // the entry was read through the 64-bit view

// The record of one application, byte for byte: packed, little-endian, texts zero-terminated UTF-16. What an
// application does not have is empty or 0.
#pragma pack(push, 1)
struct _RoundupAppInfo_ {
    WideChar wzName[kAppInfoTextSize] = {};  // as it is shown; several applications may have one name
    WideChar wzPublisher[kAppInfoTextSize] = {};
    WideChar wzInstallDate[kAppInfoTextSize] = {};     // as the registry has it: usually eight digits, year month day
    WideChar wzKeyString[kAppInfoTextSize] = {};       // name of the Uninstall key; full name of a store package
    WideChar wzRealInstallLoc[kAppInfoTextSize] = {};  // with mount points resolved
    WideChar wzInstallLoc[kAppInfoTextSize] = {};      // folder, as the entry or the package names it
    std::uint64_t qwFlags = 0;                         // 0 for a store package
    std::uint64_t qwSize = 0;                          // bytes; 0 when it is not known
    std::uint8_t bFramework = 0;                       // 1 for a store package that is a framework
};

struct _tagAppInfo : _RoundupAppInfo_ {
    std::uint32_t dwReserved = 0;  // always 0
};
#pragma pack(pop)

static_assert(sizeof(WideChar) == 2);
static_assert(offsetof(_RoundupAppInfo_, wzName) == 0);
static_assert(offsetof(_RoundupAppInfo_, wzPublisher) == 520);
static_assert(offsetof(_RoundupAppInfo_, wzInstallDate) == 1040);
static_assert(offsetof(_RoundupAppInfo_, wzKeyString) == 1560);
static_assert(offsetof(_RoundupAppInfo_, wzRealInstallLoc) == 2080);
static_assert(offsetof(_RoundupAppInfo_, wzInstallLoc) == 2600);
static_assert(offsetof(_RoundupAppInfo_, qwFlags) == 3120);
static_assert(offsetof(_RoundupAppInfo_, qwSize) == 3128);
static_assert(offsetof(_RoundupAppInfo_, bFramework) == 3136);
// The reserved word has the four bytes between the two sizes, 3137 to 3140, to itself.
static_assert(sizeof(_RoundupAppInfo_) == 3137 && sizeof(_tagAppInfo) == 3141);

// One application. Hosts depend on the order of the operations.
class IRmxApp : public virtual IKvObject, public _tagAppInfo {
  public:
    // The record inside this object; never null. Stays the same until the object goes.
    virtual _tagAppInfo* GetAppInfo() = 0;
    // The icon as an icon file of one image (for a store package: four bytes of background colour, then its logo
    // file), and its size in bytes. The bytes belong to the application and stay as long as this object. Null and 0
    // without an icon.
    virtual const std::uint8_t* GetAppIconData() = 0;
    virtual std::uint32_t GetAppIconSize() = 0;
};

// Written by the host, which also keeps its count. The order of the operations is fixed. They throw nothing.
class IRoundupObserver {
  public:
    // The answers are ignored.
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;
    // Two operations that are the host's own: the module never calls them.
    virtual void HostOperation2() {}
    virtual void HostOperation3() {}
    // Once per application that is still present, in catalogue order, from EnumApps and on its thread.
    virtual void OnAppInfo(IRmxApp* app) = 0;
    // From LoadApps and on its thread: 10 to 95 while the catalogue is made, 98, then 100; a load that fails or is
    // cancelled ends with 100 alone. Answer 0 to cancel, anything else to go on; the answers to 98 and 100 are ignored.
    virtual std::uint8_t OnProgress(std::uint32_t percent) = 0;
    // When an uninstall has ended, with the exit code of its process, on a thread of its own; with exit code 0 and on
    // the thread inside UnInstallApp when there was nothing to run.
    virtual void OnUnInstallDone(IRmxApp* app, std::uint32_t exitCode) = 0;

  protected:
    ~IRoundupObserver() = default;
};

// The facade. Hosts depend on the order of the operations.
class IRoundupProc : public virtual IKvObject {
  public:
    // Arms the object; one that was closed with Uninit stays unarmed. Always 0.
    virtual std::int64_t Init() = 0;
    // Drops the catalogue, the observer and the records. Harmless when repeated. Always 0.
    virtual std::int64_t Uninit() = 0;
    // Releases the former observer and adds a reference to the new one; null leaves the object without one and does
    // not touch the records.
    virtual void SetObserver(IRoundupObserver* observer) = 0;
    // Builds the catalogue and the records anew; the former records are gone, whatever comes of it. unused has no
    // effect. 0; -1 when the load failed or was cancelled. Without Init or an observer it does nothing and answers 0.
    virtual std::int64_t LoadApps(std::uint8_t unused) = 0;
    // Hands the records of the last load to OnAppInfo, without those whose application has gone since. Always 0.
    virtual std::int64_t EnumApps() = 0;
    // Does nothing. Always 0, which says that it failed.
    virtual std::uint8_t SaveContendProc() = 0;
    // Starts the uninstall of one of this object's records. 0 when it was started, or ended at once since there was
    // nothing to run; the outcome comes through OnUnInstallDone. -1, and no call, for null, without Init or an
    // observer, when the application has gone, when no command can be had, when the process could not be started.
    virtual std::int64_t UnInstallApp(IRmxApp* app) = 0;
};

}  // namespace roundup

// A new facade with one reference, which is the caller's; every call makes one of its own. Null when memory is short,
// and on a system other than Windows when the environment names no machine that can be read: ROUNDUP_MACHINE is the
// folder of the machine, ROUNDUP_HOST the host folder and ROUNDUP_USER the user, both optional. May be called from
// every thread.
extern "C" roundup::IRoundupProc* GetImp();
