#include "appcenter/appreggather/softwarekeycache.h"

#include <algorithm>
#include <span>

#include "appcenter/appreggather/noisewords.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/formattext.h"

namespace roundup {

namespace {

constexpr std::u16string_view kMaker = u"Microsoft";

constexpr std::u16string_view kSkippedTopKeys[] = {
    u"Classes", u"Clients", u"Licenses", u"Policies", u"RegisteredApplications", u"Wow6432Node"};

// What the platform itself keeps below its maker's key.
constexpr std::u16string_view kSkippedOfMaker[] = {
    u".NETCompactFramework",
    u".NETFramework",
    u"Active Setup",
    u"ActiveMovie",
    u"AD7Metrics",
    u"ADs",
    u"Advanced INF Setup",
    u"ALG",
    u"AntiPhishing",
    u"AppEnv",
    u"ASF Stream Descriptor File",
    u"ASP.NET",
    u"ASP.NET MVC 2",
    u"Assistance",
    u"AudioCompressionManager",
    u"BidInterface",
    u"Calc",
    u"CaretTracking",
    u"CEStudio",
    u"COM3",
    u"Command Processor",
    u"Connect to a Network Projector",
    u"CoreCon",
    u"Cryptography",
    u"CTF",
    u"DataAccess",
    u"DataFactory",
    u"Dependency Walker",
    u"DevDiv",
    u"Device Emulator",
    u"DevStudio",
    u"DExplore",
    u"Dfrg",
    u"DFS",
    u"Direct3D",
    u"DirectDraw",
    u"DirectInput",
    u"DirectMusic",
    u"DirectPlay",
    u"DirectPlay8",
    u"DirectPlayNATHelp",
    u"DirectShow",
    u"DirectX",
    u"DownloadManager",
    u"Driver Signing",
    u"DRM",
    u"DVR",
    u"DXP",
    u"EnterpriseCertificates",
    u"errlook",
    u"EventSystem",
    u"Exchange",
    u"Fax",
    u"Feeds",
    u"FlashConfig",
    u"FSharp",
    u"FTH",
    u"FTP",
    u"Function Discovery",
    u"Fusion",
    u"GDIPlus",
    u"GenericBootstrapper",
    u"GPUPipeline",
    u"Help",
    u"HTMLHelp",
    u"IAM",
    u"IdentityCRL",
    u"IdentityStore",
    u"IIS Extensions",
    u"IMAPI",
    u"IME",
    u"IMEJP",
    u"IMEKR",
    u"IMETC",
    u"Intelligent Search",
    u"Internet Account Manager",
    u"Internet Connection Wizard",
    u"Internet Domains",
    u"Internet Explorer",
    u"Internet Mail and News",
    u"IsoBurn",
    u"Java VM",
    u"Jet",
    u"Keyboard",
    u"Machine Debug Manager",
    u"MediaCenterPeripheral",
    u"MediaPlayer",
    u"MessengerService",
    u"MFC 3.0 Samples",
    u"Microsoft Management Console",
    u"Microsoft SDKs",
    u"Microsoft SQL Native Client",
    u"Microsoft SQL Server",
    u"Microsoft SQL Server 2005 Redist",
    u"Microsoft SQL Server 2008 Redist",
    u"Microsoft SQL Server Compact Edition",
    u"Microsoft SQL Server Redist",
    u"Microsoft Sync Framework",
    u"Microsoft Sync Services",
    u"Microsoft Sync Services ADO",
    u"Migwiz",
    u"MMC",
    u"Mobile",
    u"MS Design Tools",
    u"MSBuild",
    u"MSDAIPP",
    u"MSDE",
    u"MSDN",
    u"MSDTC",
    u"MSEnvCommunityContent",
    u"MSF",
    u"MSLicensing",
    u"MSMQ",
    u"MSN Apps",
    u"MSOSOAP",
    u"MSSQLServer",
    u"Multimedia",
    u"NapServer",
    u"NET Framework Setup",
    u"NetSh",
    u"NetShow",
    u"Network",
    u"NetworkAccessProtection",
    u"Non-Driver Signing",
    u"Notepad",
    u"ODBC",
    u"Ole",
    u"Outlook Express",
    u"PCHealth",
    u"PeerNet",
    u"PLA",
    u"Platform Builder",
    u"PowerShell",
    u"Print",
    u"Protected Storage System Provider",
    u"RADAR",
    u"Ras",
    u"RAS AutoDial",
    u"RAS Phonebook",
    u"Reliability Analysis",
    u"Remote Assistance",
    u"Remote Debugger Autolaunch",
    u"RemovalTools",
    u"RendezvousApps",
    u"RFC1156Agent",
    u"Router",
    u"Rpc",
    u"SchedulingAgent",
    u"Schema Library",
    u"Security Center",
    u"Sensors",
    u"Shared",
    u"Shared Tools",
    u"Shared Tools Location",
    u"SideShow",
    u"Silverlight",
    u"SNAC",
    u"Software",
    u"SourceSafe",
    u"Speech",
    u"Spy++",
    u"SQMClient",
    u"Sync Framework",
    u"Sysprep",
    u"SystemCertificates",
    u"TableTextService",
    u"TabletTip",
    u"Tcpip",
    u"TeamFoundationServer",
    u"Terminal Server Client",
    u"TermServLicensing",
    u"TIP Shared",
    u"TMM",
    u"TPG",
    u"Tpm",
    u"Tracing",
    u"Transaction Server",
    u"TV System Services",
    u"uDRM",
    u"Updates",
    u"UPnP Device Host",
    u"VBA",
    u"VBExpress",
    u"VCSExpress",
    u"Virtual Machine",
    u"VMware Player",
    u"VS 64bit Prerequisite Setup",
    u"VSA",
    u"VSCommon",
    u"VSTA Runtime Setup",
    u"VSTAHost",
    u"VSTO Designtime Setup",
    u"vsto runtime Setup",
    u"VSTO_DT",
    u"VSWCU",
    u"VWDExpress",
    u"WAB",
    u"WBEM",
    u"Web Designer Tools",
    u"Web Folders",
    u"Web Service Providers",
    u"wfs",
    u"WIMMount",
    u"Windbg",
    u"Windows",
    u"Windows CE Services",
    u"Windows CE Tools",
    u"Windows Defender",
    u"Windows Desktop Search",
    u"Windows Error Reporting",
    u"Windows Mail",
    u"Windows Media",
    u"Windows Media Device Manager",
    u"Windows Media Foundation",
    u"Windows Media Player NSS",
    u"Windows Messaging Subsystem",
    u"Windows NT",
    u"Windows Photo Viewer",
    u"Windows Portable Devices",
    u"Windows Script",
    u"Windows Script Host",
    u"Windows Search",
    u"Windows Sidebar",
    u"Wisp",
    u"Workspaces",
    u"WwanSvc",
};
static_assert(std::size(kSkippedOfMaker) == 226);

constexpr std::u16string_view kMakerPrefix = u"Microsoft\\";

// Both lists are in that order.
bool IsOneOf(std::u16string_view name, std::span<const std::u16string_view> names) noexcept {
    return std::ranges::binary_search(
        names, name, [](std::u16string_view a, std::u16string_view b) { return CompareNoCase(a, b) < 0; });
}

}  // namespace

CSoftwareKeyCache::CSoftwareKeyCache() {
    ForEachHive([this](KeyHandle root, bool view64) { AtBoundary([&] { ScanHive(root, view64); }, [] {}); });
    m_entries.PutInOrder();
}

void CSoftwareKeyCache::ScanHive(KeyHandle root, bool view64) {
    CWFYRegKey software;
    if (Failed(software.Open(root, u"Software", view64, false))) return;
    SubKeyReader reader(software, view64);
    ForEachSubKey(software, [&](std::u16string_view key) {
        if (IsOneOf(key, kSkippedTopKeys)) return true;
        if (!EqualsNoCase(key, kMaker)) return AddKey(reader, key, key, 0);
        AtBoundary([&] { ScanMaker(software, view64); }, [] {});
        return true;
    });
}

void CSoftwareKeyCache::ScanMaker(const CWFYRegKey& software, bool view64) {
    CWFYRegKey maker;
    if (Failed(maker.Open(software.GetKeyHandle(), kMaker.data(), view64, false))) return;
    SubKeyReader reader(maker, view64);
    std::u16string entryName;
    ForEachSubKey(maker, [&](std::u16string_view key) {
        if (IsOneOf(key, kSkippedOfMaker)) return true;
        entryName.assign(kMakerPrefix).append(key);
        return AddKey(reader, key, entryName, 1);
    });
}

bool CSoftwareKeyCache::AddKey(SubKeyReader& reader, std::u16string_view key, std::u16string_view entryName,
                               std::uint32_t level) {
    // An entry that another hive made has its name as a word, so such a name never has an entry.
    if (IsNoiseWord(key)) return false;
    bool isNew = false;
    ScanEntry& entry = m_entries.At(entryName, level, isNew);
    if (isNew) ScanEntries::AddWord(entry, key);
    if (Failed(reader.Open(key, {}))) return true;
    ForEachSubKey(reader.Key(), [&](std::u16string_view word) {
        ScanEntries::AddWord(entry, word);
        return true;
    });
    return true;
}

void CSoftwareKeyCache::FindSoftwareKey(const std::vector<NameToken>& tokens, RegGatherResults& results) const {
    const WordIndex& words = m_entries.Words(results.bMicrosoft);
    std::vector<std::uint64_t> scores(m_entries.All().size());
    for (const NameToken& token : tokens) {
        words.ForEachAlike(token.pwszText,
                           [&](std::uint32_t place, std::size_t shared) { scores[words.At(place).entry] += shared; });
    }
    const auto best = std::ranges::max_element(scores);  // the first of the greatest
    if (best == scores.end() || *best == 0) return;
    results.pwszSoftwareKey = m_entries.All()[static_cast<std::size_t>(best - scores.begin())].pwszName.Get();
}

}  // namespace roundup
