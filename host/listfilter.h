// Which applications a listing shows, and in which order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "appcenter/app/iapp.h"

namespace roundup::host {

enum class Kind : std::uint8_t { App, Msi, Package, Update };
enum class SortBy : std::uint8_t { Name, Publisher, Size, Date };

// What is not set lets every application through.
struct ListFilter {
    // UTF-8. With "*" or "?" in it a pattern for the whole text, else a part of it; case does not matter.
    std::optional<std::string> name = {};
    std::optional<std::string> publisher = {};
    std::optional<Kind> kind = {};
    std::optional<std::uint64_t> largerThan = {};  // bytes
    std::optional<std::string> since = {};         // "20240301", the day itself included; an unknown day never fits
    std::optional<SortBy> sort = {};               // the order of the catalogue when it is not set

    bool IsOpen() const noexcept { return !name && !publisher && !kind && !largerThan && !since; }
};

// An application of the top level and its position in the host's record array.
struct NumberedApp {
    const IApp* app;
    std::size_t index;
};

// Those that fit, or below which one hangs that does; sorted, with equals in the order of the catalogue.
std::vector<NumberedApp> SelectApps(const std::vector<const IApp*>& apps, const ListFilter& filter);

// "12 applications, 2 packages, 1.21 GB" of those that are shown, without what hangs below them; "3 of 12 ..." when
// the filter left some out.
std::string TotalLine(const std::vector<NumberedApp>& shown, const std::vector<const IApp*>& all);

// By the names of the command line; nothing for any other text.
std::optional<Kind> ParseKind(const std::string& text);
std::optional<SortBy> ParseOrder(const std::string& text);
// "10M" or "1.5 GB" as bytes: K, M, G and T are powers of 1,024. Nothing for any other text.
std::optional<std::uint64_t> ParseSize(const std::string& text);
// "2024-03-01" or "20240301" as eight digits. Nothing for what is no day of the calendar.
std::optional<std::string> ParseDay(const std::string& text);

}  // namespace roundup::host
