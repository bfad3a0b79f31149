// What Windows Installer keeps in its own books about a product: its keys below "Installer", below "UserData" and
// below "Uninstall", its cached files, its side-by-side assemblies.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "msianalyzer/datafile.h"
#include "msianalyzer/msiaction.h"
#include "platform/registry.h"
#include "utility/result.h"

namespace roundup {

class CMSIAnalyzer;
class CSaveRegistry2DataFile;
class CWFYRegKey;

// A side-by-side assembly. Ordered by prefix, then by version.
class CWin32Assembly {
  public:
    CWin32Assembly(std::u16string namePrefix, std::u16string_view fullVersion)
        : prefix(std::move(namePrefix)), version(fullVersion) {}
    virtual ~CWin32Assembly() = default;
    CWin32Assembly(const CWin32Assembly&) = default;
    CWin32Assembly& operator=(const CWin32Assembly&) = default;
    friend bool operator<(const CWin32Assembly& a, const CWin32Assembly& b) noexcept {
        return a.prefix != b.prefix ? a.prefix < b.prefix : a.version < b.version;
    }

    std::u16string prefix;   // architecture, name and token, such as u"x86_vendor.tool_0123456789abcdef"
    std::u16string version;  // such as u"9.0.21022.8"
};

// Lives for one row of the install sequence. Keys that do not exist are normal here. The records of the exports of
// UserData and Uninstall keys are relative to the handle of a key that was open meanwhile; the type of their items
// tells which key that was. Used by one thread.
class CInstallDetails {
  public:
    CInstallDetails() = default;
    CInstallDetails(const CInstallDetails&) = delete;
    CInstallDetails& operator=(const CInstallDetails&) = delete;
    ~CInstallDetails() = default;

    // One of the actions RegisterProduct, ProcessComponents, RegisterProgIdInfo, PublishComponents and
    // MsiPublishAssemblies; small code 3 for another one, 2 without an analyzer. The first failure of a step ends it.
    ResultCode Execute(const CMSIAnalyzer* analyzer, MsiAction action);

  private:
    using TextSet = std::set<std::u16string, std::less<>>;
    using Step = ResultCode (CInstallDetails::*)(bool view64);
    using UserExport = ResultCode (CInstallDetails::*)(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64);

    bool Is64Bit() const noexcept { return m_bits == 64; }
    // Bytes: a file with the end alone is not handed over.
    static constexpr std::uint64_t kThreshold = 9;

    ResultCode Run(MsiAction action);
    // In the 32-bit view, then, on a machine that has it, in the 64-bit view.
    ResultCode InBothViews(Step step);
    // For each account: the key below its books, in that view, is given to save.
    ResultCode ForEachUser(std::u16string_view part, bool view64, std::uint32_t type, UserExport save);
    // The names of the subkeys; a key that does not exist has none.
    static ResultCode AddSubkeys(KeyHandle parent, std::u16string_view path, bool view64, TextSet& names);
    // A code in braces as the installer's keys have it; small code 0xA for what is none.
    static ResultCode PackCode(std::u16string_view code, std::u16string& packed);
    // Empty when the platform does not tell.
    static std::u16string WindowsFolder();
    // Reports the folder, and the files in it and below.
    ResultCode ReportTree(std::u16string_view folder, std::u16string_view mask) const;

    // installdetailsproduct.cpp: RegisterProduct.
    ResultCode RegisterProduct();
    ResultCode ExportUserProducts(bool view64);
    ResultCode ExportUninstall(bool view64);
    ResultCode ExportUserPatches(bool view64);
    ResultCode SaveUserProduct(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64);
    ResultCode SaveUserPatches(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64);
    ResultCode ReportCacheFolder() const;
    ResultCode ReportDownload() const;

    // installdetailsinstaller.cpp: the keys of the product below "Installer".
    ResultCode ExportInstallerKeys(KeyHandle root, std::u16string_view key, bool view64);
    ResultCode ExportCode(KeyHandle root, std::u16string_view key, std::u16string_view code, bool view64);
    ResultCode ReportProductIcon(KeyHandle root, std::u16string_view key, std::u16string_view code) const;
    ResultCode ExportPatchKeys(KeyHandle root, std::u16string_view key, bool view64);
    ResultCode ExportComponentKeys(KeyHandle root, std::u16string_view key, bool published, bool view64);

    // installdetailscomponents.cpp: ProcessComponents, PublishComponents, RegisterProgIdInfo.
    ResultCode ExportUserComponents(bool view64);
    ResultCode SaveUserComponents(CSaveRegistry2DataFile& save, CWFYRegKey& key, bool view64);
    ResultCode PublishComponents();
    ResultCode ExportProgIds();

    // installdetailsassemblies.cpp: MsiPublishAssemblies.
    ResultCode PublishAssemblies();
    void ReadAssemblies();
    void AddAssembly(std::u16string_view component);
    ResultCode ExportWinners();
    ResultCode ReportManifests() const;

    const CMSIAnalyzer* m_analyzer = nullptr;
    CDataFile m_dataFile;
    TextSet m_userIds;  // security identifiers
    TextSet m_patches;  // packed codes of the product's patches
    std::set<CWin32Assembly> m_assemblies;
    TextSet m_winners;  // subkeys of the Winners key
    std::uint32_t m_bits = 32;
};

}  // namespace roundup
