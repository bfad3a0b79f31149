// The table. Where a line holds all columns it is one line an application. On a narrow terminal it is two, so that
// names and keys stay whole as far as possible: what tells applications apart on the first, publisher and key below.

#include <algorithm>
#include <array>

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/applist.h"
#include "host/packagefields.h"
#include "host/textout.h"

namespace roundup::host {

namespace {

enum Column : std::size_t { kName, kPublisher, kVersion, kDate, kSize, kBits, kKey, kColumns };
using Row = std::array<std::string, kColumns>;

Row MakeHeads() { return {"NAME", "PUBLISHER", "VERSION", "INSTALLED", "SIZE", "BITS", "KEY"}; }

constexpr std::size_t kGap = 2;
constexpr std::size_t kWidestName = 60;
constexpr std::size_t kWidestPublisher = 40;
constexpr std::size_t kWidestVersion = 18;
constexpr std::size_t kNarrowestName = 24;
constexpr std::size_t kNarrowestPublisher = 16;

constexpr const char* kBold = "\x1b[1m";
constexpr const char* kDim = "\x1b[2m";
constexpr const char* kPlain = "\x1b[0m";

Row RowOf(const Catalogue::Listed& listed) {
    const _tagAppInfo& record = *listed.record;
    Row row;
    row[kName] = Printable(record.wzName);
    row[kPublisher] = Printable(record.wzPublisher);
    if (const auto* app = dynamic_cast<const CApp*>(listed.app)) row[kVersion] = Printable(app->pwszVersion);
    row[kDate] = ReadableDate(record.wzInstallDate);
    row[kSize] = record.qwSize == 0 || record.bFramework != 0 ? "" : ReadableSize(record.qwSize);
    row[kBits] = Bitness(record.qwFlags);
    if (const auto* package = dynamic_cast<const CAppx*>(listed.app)) {
        row[kVersion] = DottedVersion(package->m_ullVersion);
        row[kBits] = PackageBitness(*package);
    }
    row[kKey] = Printable(record.wzKeyString);
    return row;
}

bool AlignsRight(std::size_t column) { return column == kSize || column == kBits; }

std::string Joined(const Row& row, const std::array<std::size_t, kColumns>& widths,
                   std::initializer_list<std::size_t> columns) {
    std::string line;
    for (const std::size_t column : columns) {
        if (!line.empty()) line.append(kGap, ' ');
        line += Fit(row[column], widths[column], AlignsRight(column));
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::array<std::size_t, kColumns> NaturalWidths(const std::vector<Row>& rows) {
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column) {
            widths[column] = std::max(widths[column], Columns(row[column]));
        }
    }
    return widths;
}

std::size_t Sum(const std::array<std::size_t, kColumns>& widths) {
    std::size_t sum = kGap * (kColumns - 1);
    for (const std::size_t width : widths) sum += width;
    return sum;
}

// Takes columns from the name and the publisher, in turn, until the line fits; false when it cannot.
bool ShrinkToFit(std::array<std::size_t, kColumns>& widths, std::size_t width) {
    const auto shrink = [&](Column column, std::size_t least) {
        const std::size_t sum = Sum(widths);
        if (sum <= width || widths[column] <= least) return;
        widths[column] -= std::min(sum - width, widths[column] - least);
    };
    shrink(kName, kWidestName);
    shrink(kPublisher, kWidestPublisher);
    shrink(kVersion, kWidestVersion);
    shrink(kPublisher, kNarrowestPublisher);
    shrink(kName, kNarrowestName);
    return Sum(widths) <= width;
}

std::string Styled(const std::string& line, const char* style, bool colour) {
    return colour ? style + line + kPlain + "\n" : line + "\n";
}

std::string OneLineTable(const std::vector<Row>& rows, const std::array<std::size_t, kColumns>& widths, bool colour) {
    std::string text;
    for (const Row& row : rows) {
        const std::string line = Joined(row, widths, {kName, kPublisher, kVersion, kDate, kSize, kBits, kKey});
        text += &row == rows.data() ? Styled(line, kBold, colour) : line + "\n";
    }
    return text;
}

std::string TwoLineTable(const std::vector<Row>& rows, std::array<std::size_t, kColumns> widths, std::size_t width,
                         bool colour) {
    widths[kVersion] = std::min(widths[kVersion], kWidestVersion);
    const std::size_t tail = widths[kVersion] + widths[kDate] + widths[kSize] + widths[kBits] + 4 * kGap;
    widths[kName] = width > tail ? width - tail : 1;
    constexpr std::size_t kIndent = 2;
    const std::size_t below = width > kIndent + kGap ? width - kIndent - kGap : 1;
    // The key is what other commands take: the publisher gives way to it, down to a third.
    widths[kKey] = std::min(widths[kKey], below - std::min(below / 3, widths[kPublisher]));
    widths[kPublisher] = below - widths[kKey];
    std::string text;
    for (const Row& row : rows) {
        const bool head = &row == rows.data();
        text += Styled(Joined(row, widths, {kName, kVersion, kDate, kSize, kBits}), head ? kBold : "", colour);
        const std::string second = std::string(kIndent, ' ') + Joined(row, widths, {kPublisher, kKey});
        text += Styled(second, head ? kBold : kDim, colour);
    }
    return text;
}

}  // namespace

std::string TotalText(const std::string& total, const Layout& layout) {
    return Styled(layout.width ? Cut(total, *layout.width) : total, kDim, layout.colour);
}

bool WriteTable(const std::vector<Catalogue::Listed>& records, const std::string& total, const Layout& layout) {
    std::vector<Row> rows = {MakeHeads()};
    rows.reserve(records.size() + 1);
    for (const Catalogue::Listed& listed : records) rows.push_back(RowOf(listed));
    std::array<std::size_t, kColumns> widths = NaturalWidths(rows);
    if (!layout.width || ShrinkToFit(widths, *layout.width)) {
        return WriteOut(OneLineTable(rows, widths, layout.colour) + TotalText(total, layout));
    }
    return WriteOut(TwoLineTable(rows, NaturalWidths(rows), *layout.width, layout.colour) + TotalText(total, layout));
}

}  // namespace roundup::host
