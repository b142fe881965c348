#include "stubTests.h"

namespace stubTests {

std::vector<unsigned> errors(EighteenTests.size());
std::function<void()> effect = [] {};
std::vector<std::size_t> called;

void reset() {
    errors.assign(EighteenTests.size(), 0);
    called.clear();
}

}  // namespace stubTests

namespace voxloc_tests {

namespace {

unsigned run(unsigned (*stub)()) {
    std::size_t i = 0;
    while (EighteenTests[i].run != stub) i++;
    stubTests::called.push_back(i);
    stubTests::effect();
    return stubTests::errors[i];
}

}  // namespace

#define DEFINE_STUB(function, ...) \
    unsigned function() {          \
        return run(function);      \
    }
VERIFY_EIGHTEEN_TESTS(DEFINE_STUB)

}  // namespace voxloc_tests
