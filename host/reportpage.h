// The fixed parts of the page of a report.
#pragma once

namespace roundup::host {

// Up to the table: everything behind <title>, which the caller writes.
extern const char* const kReportHead;
extern const char* const kReportTail;

}  // namespace roundup::host
