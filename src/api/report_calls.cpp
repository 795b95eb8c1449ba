#include "engine/reports.h"
#include "lumo.h"

int GenerateSummaryReport(const char *from, const char *to) {
  return lumo::GenerateSummaryReport(from, to);
}

int GenerateReport(const char *from, const char *to) {
  return lumo::GenerateReport(from, to);
}

const char *GetReportPtr(void) {
  return lumo::GetReportPtr();
}
