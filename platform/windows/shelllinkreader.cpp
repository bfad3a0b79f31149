#include "platform/windows/shelllinkreader.h"

// The order matters: windows.h comes first.
// clang-format off
#include "platform/windows/winhandle.h"
#include <objbase.h>
#include <shlobj.h>
// clang-format on

namespace roundup {

namespace {

template <class Interface>
struct InterfacePolicy {
    using Type = Interface*;
    static Type None() noexcept { return nullptr; }
    static void Close(Type object) noexcept { object->Release(); }
};
template <class Interface>
using OwnedInterface = WinHandle<InterfacePolicy<Interface>>;

// Room for each text, in characters with the terminator.
constexpr int kPathRoom = 520;
constexpr int kDescriptionRoom = 1024;

// The text that get writes into a buffer of room characters; empty when it fails.
template <int room, class Get>
std::u16string TextOf(Get get) {
    wchar_t buffer[room] = {};
    return SUCCEEDED(get(buffer)) ? CopyWide(buffer) : std::u16string();
}

}  // namespace

bool ReadShellLink(const char16_t* path, ShellLink& link) {
    OwnedInterface<IShellLinkW> object;
    if (FAILED(::CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                  reinterpret_cast<void**>(object.Out())))) {
        return false;
    }
    OwnedInterface<IPersistFile> file;
    if (FAILED(object.Get()->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(file.Out())))) return false;
    if (FAILED(file.Get()->Load(ToWide(path), 0))) return false;

    IShellLinkW& shown = *object.Get();
    WIN32_FIND_DATAW data{};
    int iconIndex = 0;
    WORD hotkey = 0;
    int showCommand = 1;
    ShellLink read;
    read.path = TextOf<kPathRoom>([&](wchar_t* text) { return shown.GetPath(text, kPathRoom, &data, SLGP_SHORTPATH); });
    read.workingDirectory =
        TextOf<kPathRoom>([&](wchar_t* text) { return shown.GetWorkingDirectory(text, kPathRoom); });
    read.description =
        TextOf<kDescriptionRoom>([&](wchar_t* text) { return shown.GetDescription(text, kDescriptionRoom); });
    read.arguments = TextOf<kPathRoom>([&](wchar_t* text) { return shown.GetArguments(text, kPathRoom); });
    read.iconPath =
        TextOf<kPathRoom>([&](wchar_t* text) { return shown.GetIconLocation(text, kPathRoom, &iconIndex); });
    (void)shown.GetHotkey(&hotkey);
    (void)shown.GetShowCmd(&showCommand);
    read.iconIndex = iconIndex;
    read.hotkey = hotkey;
    read.showCommand = showCommand;
    link = std::move(read);
    return true;
}

}  // namespace roundup
