#include "platform/windows/liveareas.h"
#include "platform/windows/winhandle.h"

namespace roundup {

namespace {

using Names = std::vector<std::u16string>;

// Blocks of the network management calls.
struct NetBlockPolicy {
    using Type = BYTE*;
    static Type None() noexcept { return nullptr; }
    static void Close(Type block) noexcept { ::NetApiBufferFree(block); }
};
using NetBlock = WinHandle<NetBlockPolicy>;

// Adds name(entry) for each entry that the call gives, over as many calls as it takes. call: block, entries, place.
template <class Entry, class Call, class Name>
Win32Error Collect(Names& names, Call call, Name name) {
    DWORD_PTR resume = 0;
    for (;;) {
        NetBlock block;
        DWORD count = 0;
        const NET_API_STATUS status = call(block.Out(), &count, &resume);
        if (status != NERR_Success && status != ERROR_MORE_DATA) return status;
        const auto* entries = reinterpret_cast<const Entry*>(block.Get());
        for (DWORD i = 0; i < count; ++i) names.push_back(CopyWide(name(entries[i])));
        if (status == NERR_Success) return kErrorSuccess;
        if (count == 0) return status;  // more is promised and none comes
    }
}

// The identifier in an entry; null for kinds that have none where the simple ones have it.
PSID IdentifierOf(void* entry) {
    switch (static_cast<ACE_HEADER*>(entry)->AceType) {
        case ACCESS_ALLOWED_ACE_TYPE:
        case ACCESS_DENIED_ACE_TYPE:
        case ACCESS_ALLOWED_CALLBACK_ACE_TYPE:
        case ACCESS_DENIED_CALLBACK_ACE_TYPE:
            return &static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart;
        default:
            return nullptr;
    }
}

// list may be null: everybody is allowed then, and nobody named.
void AddAccounts(PACL list, Names& accounts) {
    if (list == nullptr) return;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!::GetAce(list, i, &entry)) continue;
        const PSID identifier = IdentifierOf(entry);
        if (identifier == nullptr) continue;
        wchar_t name[260] = {};
        wchar_t domain[260] = {};
        DWORD nameLength = 260;
        DWORD domainLength = 260;
        SID_NAME_USE use = SidTypeUnknown;
        if (::LookupAccountSidW(nullptr, identifier, name, &nameLength, domain, &domainLength, &use)) {
            accounts.push_back(CopyWide(name));
        }
    }
}

class LiveSecurity final : public ISecurity {
  public:
    Win32Error GetLocalGroups(Names& groups) override {
        groups.clear();
        return Collect<LOCALGROUP_INFO_1>(
            groups,
            [](BYTE** block, DWORD* count, DWORD_PTR* resume) {
                DWORD total = 0;
                return ::NetLocalGroupEnum(nullptr, 1, block, MAX_PREFERRED_LENGTH, count, &total, resume);
            },
            [](const LOCALGROUP_INFO_1& group) { return group.lgrpi1_name; });
    }

    Win32Error GetGroupMembers(const char16_t* group, Names& members) override {
        members.clear();
        return Collect<LOCALGROUP_MEMBERS_INFO_3>(
            members,
            [group](BYTE** block, DWORD* count, DWORD_PTR* resume) {
                DWORD total = 0;
                return ::NetLocalGroupGetMembers(nullptr, ToWide(group), 3, block, MAX_PREFERRED_LENGTH, count, &total,
                                                 resume);
            },
            [](const LOCALGROUP_MEMBERS_INFO_3& member) { return member.lgrmi3_domainandname; });
    }

    Win32Error GetFileAccounts(const char16_t* path, Names& accounts) override {
        accounts.clear();
        PACL list = nullptr;
        LocalBlock<PSECURITY_DESCRIPTOR> descriptor;
        const DWORD error = ::GetNamedSecurityInfoW(ToWide(path), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                                    nullptr, &list, nullptr, descriptor.Out());
        if (error == ERROR_SUCCESS) AddAccounts(list, accounts);
        return error;
    }

    Win32Error GetKeyAccounts(KeyHandle key, Names& accounts) override {
        accounts.clear();
        PACL list = nullptr;
        LocalBlock<PSECURITY_DESCRIPTOR> descriptor;
        const auto handle = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(key));
        const DWORD error = ::GetSecurityInfo(handle, SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                              &list, nullptr, descriptor.Out());
        if (error == ERROR_SUCCESS) AddAccounts(list, accounts);
        return error;
    }
};

}  // namespace

std::unique_ptr<ISecurity> MakeLiveSecurity() { return std::make_unique<LiveSecurity>(); }

}  // namespace roundup
