/** The pages without a run or a sweep, made by scripts/page; the build embeds them. */
#ifndef VOXLOC_APP_PAGE_REPORT_PAGE_H
#define VOXLOC_APP_PAGE_REPORT_PAGE_H

#include <string_view>

extern const std::string_view ReportPage;
extern const std::string_view SweepPage;

#endif
