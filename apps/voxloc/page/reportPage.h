/** The page without a run, made by scripts/page; the build embeds it. */
#ifndef VOXLOC_APP_PAGE_REPORT_PAGE_H
#define VOXLOC_APP_PAGE_REPORT_PAGE_H

#include <cstddef>

extern const unsigned char ReportPage[];
extern const std::size_t ReportPageSize;

#endif
