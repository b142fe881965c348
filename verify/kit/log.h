/** The event log of a call, read back from standard error. */
#ifndef VERIFY_KIT_LOG_H
#define VERIFY_KIT_LOG_H

#include <algorithm>
#include <string>

#include "gtest/gtest.h"

namespace kit {

template <class Call>
std::string logOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/** text with every number that has a decimal point replaced by N. */
inline std::string withoutDecimals(const std::string& text) {
    const std::string digits = "0123456789";
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t first = at + (text[at] == '-' ? 1 : 0);
        const std::size_t point = text.find_first_not_of(digits, first);
        if (point != std::string::npos && point > first && text[point] == '.') {
            result += 'N';
            at = std::min(text.find_first_not_of(digits, point + 1), text.size());
        } else {
            const std::size_t end = std::max(std::min(point, text.size()), at + 1);
            result += text.substr(at, end - at);
            at = end;
        }
    }
    return result;
}

}  // namespace kit

#endif
