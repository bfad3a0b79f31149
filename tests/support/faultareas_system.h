// The shell and the system of FaultInjectingMachine.
#pragma once

#include "tests/support/faultareas.h"

namespace roundup::fault {

class Shell final : public Area<IShell> {
  public:
    using Area::Area;
    bool GetFolderPath(std::uint32_t number, char16_t (&path)[260]) override {
        return Tell(&IShell::GetFolderPath, number, path);
    }
    bool GetSpecialFolderPath(std::uint32_t number, char16_t (&path)[260]) override {
        return Tell(&IShell::GetSpecialFolderPath, number, path);
    }
    bool SplitCommandLine(const char16_t* text, std::vector<std::u16string>& arguments) override {
        return Tell(&IShell::SplitCommandLine, text, arguments);
    }
    void ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) override {
        large = small = 0;
        if (gate.Next() == 0) inner.ExtractIcons(path, index, large, small);
        held += (large != 0) + (small != 0);
    }
    IconHandle GetFileIcon(const char16_t* path) override {
        const IconHandle icon = gate.Next() != 0 ? 0 : inner.GetFileIcon(path);
        held += icon != 0;
        return icon;
    }
    void DestroyIcon(IconHandle icon) override { Take(&IShell::DestroyIcon, icon); }
    bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) override {
        if (gate.Next() != 0 || !inner.GetIconBitmaps(icon, bitmaps)) return false;
        held += (bitmaps.mask != 0) + (bitmaps.color != 0);
        return true;
    }
    bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) override {
        return Tell(&IShell::GetBitmapShape, bitmap, shape);
    }
    bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) override {
        return Tell(&IShell::GetBitmapBits, bitmap, header, bits, size);
    }
    void DeleteBitmap(BitmapHandle bitmap) override { Take(&IShell::DeleteBitmap, bitmap); }
    bool LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) override {
        return Tell(&IShell::LoadIndirectString, source, buffer, size);
    }
    bool ReadLink(const char16_t* path, ShellLink& link) override { return Tell(&IShell::ReadLink, path, link); }
    void EnterApartment() override { inner.EnterApartment(); }
    void LeaveApartment() override { inner.LeaveApartment(); }
};

class System final : public Area<ISystem> {
  public:
    using Area::Area;
    // What a system cannot fail to tell is not counted.
    std::uint16_t GetNativeArchitecture() override { return inner.GetNativeArchitecture(); }
    std::uint32_t GetProcessorCount() override { return inner.GetProcessorCount(); }
    LocalTime GetTime() override { return inner.GetTime(); }
    std::uint32_t GetThreadNumber() override { return inner.GetThreadNumber(); }
    Win32Error GetLastFailure() override { return inner.GetLastFailure(); }
    void WriteDebugText(const char16_t* text) override { inner.WriteDebugText(text); }
    void WriteOutput(const char16_t* text) override { inner.WriteOutput(text); }

    bool GetVersion(OsVersionInfo& version) override { return Tell(&ISystem::GetVersion, version); }
    bool GetNtVersionNumbers(std::uint32_t& major, std::uint32_t& minor, std::uint32_t& build) override {
        return Tell(&ISystem::GetNtVersionNumbers, major, minor, build);
    }
    bool GetMemoryStatus(MemoryStatus& status) override { return Tell(&ISystem::GetMemoryStatus, status); }
    std::uint32_t GetEnvironment(const char16_t* name, char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::GetEnvironment, name, buffer, size);
    }
    std::uint32_t ExpandEnvironment(const char16_t* source, char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::ExpandEnvironment, source, buffer, size);
    }
    std::uint32_t GetComputerName(char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::GetComputerName, buffer, size);
    }
    std::uint32_t GetHostExecutable(char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::GetHostExecutable, buffer, size);
    }
    std::uint32_t GetTempFolder(char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::GetTempFolder, buffer, size);
    }
    std::uint32_t GetWindowsFolder(char16_t* buffer, std::uint32_t size) override {
        return Tell(&ISystem::GetWindowsFolder, buffer, size);
    }
    bool CreateGuid(std::uint8_t (&guid)[16]) override { return Tell(&ISystem::CreateGuid, guid); }
    MutexHandle OpenMutex(const char16_t* name, bool initialOwner) override {
        const MutexHandle mutex = gate.Next() != 0 ? 0 : inner.OpenMutex(name, initialOwner);
        held += mutex != 0;
        return mutex;
    }
    bool LockMutex(MutexHandle mutex, std::uint32_t milliseconds) override {
        return Tell(&ISystem::LockMutex, mutex, milliseconds);
    }
    void UnlockMutex(MutexHandle mutex) override { inner.UnlockMutex(mutex); }
    void CloseMutex(MutexHandle mutex) override { Take(&ISystem::CloseMutex, mutex); }
};

}  // namespace roundup::fault
