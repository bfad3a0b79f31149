#include "appcenter/msicrash/msicrash.h"

#include <cstdlib>
#include <limits>
#include <string_view>

#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fixedtext.h"
#include "utility/formattext.h"
#include "utility/ininumber.h"
#include "utility/result.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

constexpr char16_t kSection[] = u"Crash";

struct KindTexts {
    const char16_t* file;
    const char16_t* testSection;
};

constexpr KindTexts kEnumTexts = {u"EnumRetry.ini", u"enum"};
constexpr KindTexts kAnalyzeTexts = {u"AnalyzeRetry.ini", u"analyze"};

constexpr const KindTexts& TextsOf(CrashKind kind) noexcept {
    return kind == CrashKind::Enum ? kEnumTexts : kAnalyzeTexts;
}

class EnumGuard final : public CrashGuard {
  public:
    EnumGuard() : CrashGuard(CrashKind::Enum) {}
};
class AnalyzeGuard final : public CrashGuard {
  public:
    AnalyzeGuard() : CrashGuard(CrashKind::Analyze) {}
};

// Where the test file is looked for; empty when the cache folder is not known.
struct TestFile {
    TestFile() {
        FixedText<260> folder;
        if (GetCacheFolder(folder)) FormatText(path, u"%s\\test\\TestAppCrash.ini", folder);
    }
    FixedText<520> path;
};

bool IsEmpty(const char16_t* text) noexcept { return text == nullptr || *text == u'\0'; }

}  // namespace

CrashGuard::CrashGuard(CrashKind kind) : m_kind(kind) {
    FixedText<260> folder;
    if (!GetCacheFolder(folder)) {
        Ignore(Fail(SmallCode::GeneralFailure), u"packages are read without protection");
        return;
    }
    if (!m_path.Assign(FormatText(u"%s\\%s", folder, TextsOf(kind).file))) {
        Ignore(Fail(SmallCode::ObjectAllocation), u"packages are read without protection");
    }
}

std::uint32_t CrashGuard::GetRetryCount(const char16_t* packagePath) {
    if (m_path.IsEmpty() || IsEmpty(packagePath)) return 0;
    const LockGuard guard(m_lock);
    const std::uint32_t stored = ReadIniNumber(kSection, packagePath, 0, m_path.Text());
    // The number behind the last one would be 0, and stand for no protection.
    return stored == std::numeric_limits<std::uint32_t>::max() ? stored : stored + 1;
}

bool CrashGuard::SetRetryCount(const char16_t* packagePath, std::uint32_t number) {
    if (m_path.IsEmpty() || IsEmpty(packagePath)) return false;
    FixedText<16> text;
    FormatText(text, u"%u", number);
    const LockGuard guard(m_lock);
    return CurrentMachine().Profile().WriteString(kSection, packagePath, text.Text(), m_path.Text());
}

void CrashGuard::TestCrashHook(const char16_t* packagePath) const {
    if (IsEmpty(packagePath)) return;
    const TestFile& file = ProcessWide<TestFile>();
    if (file.path.IsEmpty()) return;
    const std::u16string_view path = packagePath;
    const char16_t* const name = packagePath + (path.rfind(u'\\') + 1);
    if (ReadIniNumber(TextsOf(m_kind).testSection, name, 0, file.path.Text()) != 0) std::abort();
}

CrashGuard& GetCrashGuard(std::uint32_t kind) {
    if (kind == static_cast<std::uint32_t>(CrashKind::Enum)) return ProcessWide<EnumGuard>();
    return ProcessWide<AnalyzeGuard>();
}

PackageAttempt::PackageAttempt(CrashGuard& guard, const char16_t* packagePath)
    : m_guard(guard), m_packagePath(packagePath), m_number(guard.GetRetryCount(packagePath)) {
    if (!IsAllowed()) return;
    m_guard.SetRetryCount(packagePath, m_number);
    m_guard.TestCrashHook(packagePath);
}

// A failure to read is no crash: the count goes back to what it was, whatever came of the package.
PackageAttempt::~PackageAttempt() {
    if (!IsAllowed()) return;
    AtBoundary([this] { m_guard.SetRetryCount(m_packagePath, m_number - 1); }, [] {});
}

}  // namespace roundup
