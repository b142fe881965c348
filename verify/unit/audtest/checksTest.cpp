#define CHECK_CASES check_cases_in_cpp
#include "checkCases.h"

#include <string>

#include "harnessFixture.h"

extern "C" int check_cases_in_c(int index, int* line, const char** report, int* passed);

namespace {

class Checks : public HarnessTest {
  protected:
    void expectReports(int (*makeCase)(int, int*, const char**, int*)) {
        audunittest_set_context("a_test");
        const std::string file = std::string(__FILE__).replace(std::string(__FILE__).rfind('/') + 1,
                                                               std::string::npos, "checkCases.h");
        int line = 0;
        int passed = -1;
        int cases = 0;
        for (const char* report = ""; makeCase(cases, &line, &report, &passed) != 0; ++cases) {
            SCOPED_TRACE("checkCases.h:" + std::to_string(line));
            const bool shouldPass = *report == '\0';
            EXPECT_EQ(passed, shouldPass ? 1 : 0);
            EXPECT_EQ(output(), shouldPass ? ""
                                           : "\nFailed: " + file + ":" + std::to_string(line) +
                                                 " in a_test: " + report + "\n");
            expectCounts(1, shouldPass ? 0 : 1);
            audunittest_reset();
        }
        EXPECT_GT(cases, 40);
    }
};

TEST_F(Checks, ReportWhatTurnedOutToBeTrueInC) {
    expectReports(check_cases_in_c);
}

TEST_F(Checks, ReportWhatTurnedOutToBeTrueInCpp) {
    expectReports(check_cases_in_cpp);
}

}  // namespace
