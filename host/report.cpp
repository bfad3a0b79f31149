#include "host/report.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "appcenter/app/app.h"
#include "appcenter/appx/appx.h"
#include "host/appfields.h"
#include "host/packagefields.h"
#include "host/reportpage.h"
#include "host/textout.h"
#include "utility/formattext.h"

namespace roundup::host {

namespace {

// Larger icons would make the page heavy for a picture of one line's height.
constexpr std::uint32_t kLargestIcon = 64 * 1024;

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string Text(const char16_t* text) { return Escaped(Printable(text != nullptr ? text : u"")); }

// RFC 4648.
std::string Base64(const std::byte* data, std::size_t size) {
    constexpr const char* kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (std::size_t i = 0; i < size; i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (i + k < size ? std::to_integer<std::uint32_t>(data[i + k]) : 0);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k > size ? '=' : kDigits[group >> (18 - 6 * k) & 0x3F];
        }
    }
    return text;
}

std::string Icon(const IApp& app) {
    const std::byte* data = app.GetIconData();
    std::uint32_t size = data != nullptr ? app.GetIconDataSize() : 0;
    // A store package has the background colour, four bytes, and its logo as it lies in the package's folder.
    std::string style;
    std::string type = "image/x-icon";
    if (app.IsAppx() != 0 && size > sizeof(std::uint32_t)) {
        std::uint32_t colour = 0;
        std::memcpy(&colour, data, sizeof colour);
        style = " style=\"background:" + Utf8(FormatText(u"#%06x", colour & 0xFFFFFF)) + "\"";
        type = "image/png";
        data += sizeof colour;
        size -= static_cast<std::uint32_t>(sizeof colour);
    }
    if (size == 0 || size > kLargestIcon) return {};
    return "<img alt=\"\"" + style + " src=\"data:" + type + ";base64," + Base64(data, size) + "\">";
}

std::uint64_t SizeOf(const IApp& app) {
    return app.GetEstimatedSize() > 0 && app.IsFramework() == 0 ? static_cast<std::uint64_t>(app.GetEstimatedSize())
                                                                : 0;
}

std::string SizeCell(std::uint64_t size, std::uint64_t largest) {
    std::string cell = "<td class=\"size\" data-value=\"" + std::to_string(size) + "\">";
    if (size == 0) return cell + "</td>";
    const std::string share =
        std::to_string(static_cast<unsigned>(static_cast<double>(size) * 100 / static_cast<double>(largest)));
    return cell + ReadableSize(size) + "<i aria-hidden=\"true\" style=\"width:" + share + "%\"></i></td>";
}

struct Row {
    const IApp* app;
    std::size_t level;
};

std::string MakeRow(const Row& row, std::uint64_t largest) {
    const IApp& app = *row.app;
    std::string version, bits, key;
    if (const auto* entry = dynamic_cast<const CApp*>(&app)) {
        version = Text(entry->pwszVersion.Get());
        bits = Bitness(app.GetFlags());
        key = Text(entry->pwszKeyString.Get());
    } else if (const auto* package = dynamic_cast<const CAppx*>(&app)) {
        version = DottedVersion(package->m_ullVersion);
        bits = PackageBitness(*package);
        key = Text(package->m_wzPackageFullName.Get());
    }
    const std::string date = app.GetInstallDate() != nullptr ? Escaped(ReadableDate(app.GetInstallDate())) : "";
    // Nobody sees an indentation beyond the page.
    const std::size_t indent = std::min<std::size_t>(row.level, 20);
    std::string html = "<tr><th scope=\"row\"";
    if (indent != 0) html += " style=\"padding-left:" + std::to_string(1 + indent) + "rem\"";
    html += ">" + Icon(app) + Text(app.GetName()) + "</th><td>" + Text(app.GetPublisher()) + "</td><td>" + version;
    html += "</td><td class=\"date\">" + date + "</td>" + SizeCell(SizeOf(app), largest) + "<td>" + bits +
            "</td><td class=\"key\">" + key;
    return html + "</td></tr>\n";
}

// Without recursion: a forest may be deep.
std::vector<Row> RowsOf(const IApp& root) {
    std::vector<Row> rows;
    std::vector<Row> waiting{{&root, 0}};
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const Row row = waiting.back();
        waiting.pop_back();
        rows.push_back(row);
        below.clear();
        row.app->GetSubApps(below);
        for (std::size_t i = below.size(); i > 0; --i) waiting.push_back({below[i - 1], row.level + 1});
    }
    return rows;
}

}  // namespace

std::string MakeReport(const std::vector<NumberedApp>& apps, const std::string& title, const std::string& total) {
    std::vector<std::vector<Row>> groups;
    std::uint64_t largest = 1;
    for (const NumberedApp& one : apps) {
        groups.push_back(RowsOf(*one.app));
        for (const Row& row : groups.back()) largest = std::max(largest, SizeOf(*row.app));
    }
    const std::string heading = Escaped(title);
    std::string page =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
        "style-src 'unsafe-inline'; script-src 'unsafe-inline'\">\n"
        "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
        heading + "</title>";
    page += kReportHead;
    page += "<main>\n<h1>" + heading + "</h1>\n<p>" + Escaped(total) + "</p>\n";
    page +=
        "<div class=\"bar\" id=\"tools\" hidden><label>Search <input type=\"search\" id=\"search\"></label>"
        "<span id=\"count\" role=\"status\"></span></div>\n<table>\n<thead><tr>";
    for (const char* head : {"Name", "Publisher", "Version", "Installed", "Size", "Bits", "Key"}) {
        page += std::string("<th scope=\"col\">") + head + "</th>";
    }
    page += "</tr></thead>\n";
    for (const std::vector<Row>& group : groups) {
        page += "<tbody>\n";
        for (const Row& row : group) page += MakeRow(row, largest);
        page += "</tbody>\n";
    }
    return page + kReportTail;
}

bool WriteReport(const std::string& file, const std::string& page) {
    std::ofstream stream(std::filesystem::path(std::u8string(file.begin(), file.end())), std::ios::binary);
    stream << page;
    stream.close();
    return !stream.fail();
}

}  // namespace roundup::host
