#include "host/listfilter.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "appcenter/app/app.h"
#include "host/textout.h"
#include "utility/casemap.h"
#include "utility/pathtext.h"
#include "utility/utf.h"
#include "utility/wildcard.h"

namespace roundup::host {

namespace {

class TextPattern {
  public:
    explicit TextPattern(const std::optional<std::string>& text) : m_open(!text) {
        if (!text) return;
        m_pattern = FromUtf8(*text);
        if (m_pattern.find_first_of(u"*?") == std::u16string::npos) m_pattern = u"*" + m_pattern + u"*";
        Fold(m_pattern);
    }
    bool Fits(const char16_t* text) const {
        if (m_open) return true;
        std::u16string folded = text != nullptr ? text : u"";
        Fold(folded);
        return WildMatch(folded, m_pattern, true);
    }

  private:
    static void Fold(std::u16string& text) { std::transform(text.begin(), text.end(), text.begin(), ToLower); }

    const bool m_open;
    std::u16string m_pattern;
};

Kind KindOf(const IApp& app) {
    if (app.IsAppx() != 0) return Kind::Package;
    const auto* entry = dynamic_cast<const CApp*>(&app);
    const bool patch = entry != nullptr && EndsWithNoCase(entry->pwszMsiPath.View(), u".msp");
    if (patch || (app.GetFlags() & AppFlags::kNotTopLevel) != 0) return Kind::Update;
    return (app.GetFlags() & AppFlags::kWindowsInstaller) != 0 ? Kind::Msi : Kind::App;
}

std::uint64_t SizeOf(const IApp& app) {
    return app.GetEstimatedSize() > 0 ? static_cast<std::uint64_t>(app.GetEstimatedSize()) : 0;
}

std::u16string_view TextOf(const char16_t* text) { return text != nullptr ? text : u""; }

class Sieve {
  public:
    explicit Sieve(const ListFilter& filter)
        : m_filter(filter),
          m_name(filter.name),
          m_publisher(filter.publisher),
          m_since(FromUtf8(filter.since.value_or(""))) {}

    // Without recursion: a forest may be deep.
    bool LetsThrough(const IApp& root) {
        std::vector<const IApp*> waiting{&root};
        while (!waiting.empty()) {
            const IApp& app = *waiting.back();
            waiting.pop_back();
            if (Fits(app)) return true;
            m_below.clear();
            app.GetSubApps(m_below);
            waiting.insert(waiting.end(), m_below.begin(), m_below.end());
        }
        return false;
    }

  private:
    bool Fits(const IApp& app) const {
        const std::u16string_view date = TextOf(app.GetInstallDate());
        const bool dated = date.size() == 8 && std::all_of(date.begin(), date.end(), IsDigit);
        return m_name.Fits(app.GetName()) && m_publisher.Fits(app.GetPublisher()) &&
               (!m_filter.kind || KindOf(app) == *m_filter.kind) &&
               (!m_filter.largerThan || SizeOf(app) > *m_filter.largerThan) &&
               (!m_filter.since || (dated && date >= m_since));
    }
    static bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }

    const ListFilter& m_filter;
    const TextPattern m_name;
    const TextPattern m_publisher;
    const std::u16string m_since;
    std::vector<IApp*> m_below;
};

// The largest and the newest stand first.
bool StandsBefore(const IApp& a, const IApp& b, SortBy by) {
    switch (by) {
        case SortBy::Name:
            return CompareNoCase(TextOf(a.GetName()), TextOf(b.GetName())) < 0;
        case SortBy::Publisher:
            return CompareNoCase(TextOf(a.GetPublisher()), TextOf(b.GetPublisher())) < 0;
        case SortBy::Size:
            return SizeOf(a) > SizeOf(b);
        case SortBy::Date:
            return TextOf(a.GetInstallDate()) > TextOf(b.GetInstallDate());
    }
    return false;
}

template <class T, std::size_t N>
std::optional<T> Choice(const std::pair<std::string_view, T> (&names)[N], const std::string& text) {
    for (const auto& [name, value] : names) {
        if (name == text) return value;
    }
    return std::nullopt;
}

std::string Counted(std::size_t shown, std::size_t all, const char* what) {
    const std::string number =
        shown == all ? std::to_string(all) : std::to_string(shown) + " of " + std::to_string(all);
    return number + " " + what + (all == 1 ? "" : "s");
}

}  // namespace

std::vector<NumberedApp> SelectApps(const std::vector<const IApp*>& apps, const ListFilter& filter) {
    Sieve sieve(filter);
    std::vector<NumberedApp> shown;
    for (std::size_t i = 0; i < apps.size(); ++i) {
        if (filter.IsOpen() || sieve.LetsThrough(*apps[i])) shown.push_back({apps[i], i});
    }
    if (filter.sort) {
        std::stable_sort(shown.begin(), shown.end(), [&](const NumberedApp& a, const NumberedApp& b) {
            return StandsBefore(*a.app, *b.app, *filter.sort);
        });
    }
    return shown;
}

std::string TotalLine(const std::vector<NumberedApp>& shown, const std::vector<const IApp*>& all) {
    const auto packages = [](const IApp* app) { return app->IsAppx() != 0; };
    const auto allPackages = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), packages));
    std::size_t shownPackages = 0;
    std::uint64_t size = 0;
    for (const NumberedApp& one : shown) {
        shownPackages += packages(one.app) ? 1U : 0U;
        // The size of a framework says nothing.
        if (one.app->IsFramework() == 0) size += SizeOf(*one.app);
    }
    std::string line = Counted(shown.size() - shownPackages, all.size() - allPackages, "application");
    if (allPackages != 0) line += ", " + Counted(shownPackages, allPackages, "package");
    return line + ", " + ReadableSize(size);
}

std::optional<Kind> ParseKind(const std::string& text) {
    constexpr std::pair<std::string_view, Kind> kNames[] = {
        {"app", Kind::App}, {"msi", Kind::Msi}, {"package", Kind::Package}, {"update", Kind::Update}};
    return Choice(kNames, text);
}

std::optional<SortBy> ParseOrder(const std::string& text) {
    constexpr std::pair<std::string_view, SortBy> kNames[] = {
        {"name", SortBy::Name}, {"publisher", SortBy::Publisher}, {"size", SortBy::Size}, {"date", SortBy::Date}};
    return Choice(kNames, text);
}

std::optional<std::uint64_t> ParseSize(const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, fault] = std::from_chars(text.data(), end, number);
    if (fault != std::errc() || !(number >= 0)) return std::nullopt;
    std::string unit(rest, end);
    unit.erase(0, unit.find_first_not_of(' ') == std::string::npos ? unit.size() : unit.find_first_not_of(' '));
    for (char& c : unit) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 0x20 : c);
    if (!unit.empty() && unit != "B" && unit.back() == 'B') unit.pop_back();
    constexpr std::string_view kUnits = "BKMGT";
    const std::size_t power = unit.empty() ? 0 : kUnits.find(unit);
    if (unit.size() > 1 || power == std::string_view::npos) return std::nullopt;
    const double bytes = std::ldexp(number, static_cast<int>(10 * power));
    if (bytes >= 0x1p63) return std::nullopt;
    return static_cast<std::uint64_t>(bytes);
}

std::optional<std::string> ParseDay(const std::string& text) {
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '-' && text.size() == 10 && (i == 4 || i == 7)) continue;
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        digits += text[i];
    }
    if (digits.size() != 8) return std::nullopt;
    const std::chrono::year_month_day day(std::chrono::year(std::stoi(digits.substr(0, 4))),
                                          std::chrono::month(static_cast<unsigned>(std::stoi(digits.substr(4, 2)))),
                                          std::chrono::day(static_cast<unsigned>(std::stoi(digits.substr(6, 2)))));
    return day.ok() ? std::optional(digits) : std::nullopt;
}

}  // namespace roundup::host
