/** The page without a run, made by scripts/page; the build embeds it. */
#ifndef VOXLOC_APP_PAGE_REPORT_PAGE_H
#define VOXLOC_APP_PAGE_REPORT_PAGE_H

#include <string_view>

extern const std::string_view ReportPage;

#endif
