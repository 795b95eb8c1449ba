// engine/reports.h: the shift's reports, from the transaction log.
#pragma once

namespace lumo {

// From and to are time stamps as records carry them, compared as bytes; both ends are left out. Each returns
// the report's length in bytes, or ERR_REPORT_RANGE and the previous report stays.
int GenerateSummaryReport(const char *from, const char *to);
int GenerateReport(const char *from, const char *to);
const char *GetReportPtr();  // until the next report; null before the first

}  // namespace lumo
