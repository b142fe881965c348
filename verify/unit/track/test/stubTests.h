/** The eighteen tests replaced by stubs, to look at what registers and calls them. */
#ifndef VERIFY_TRACK_TEST_STUB_TESTS_H
#define VERIFY_TRACK_TEST_STUB_TESTS_H

#include <functional>
#include <string>
#include <vector>

namespace stubTests {

struct Stub {
    std::string function;  // the test function
    std::string name;      // what it is registered as
    int line;              // of its reports
    std::string runText;   // the wording of its progress lines
    std::string endText;
    unsigned errors;  // what the stub returns
};

/** In the order of registration. */
extern std::vector<Stub> stubs;

/** What every stub does. */
extern std::function<void()> effect;

/** The test functions called since the last clear, in order. */
extern std::vector<std::string> called;

}  // namespace stubTests

#endif
