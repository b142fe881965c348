/** The eighteen tests replaced by stubs, to look at what registers and calls them. */
#ifndef VERIFY_TRACK_TEST_STUB_TESTS_H
#define VERIFY_TRACK_TEST_STUB_TESTS_H

#include <functional>
#include <vector>

#include "eighteenTests.h"

namespace stubTests {

/** What each stub returns, in the order of the eighteen; at first 0. */
extern std::vector<unsigned> errors;

/** What every stub does. */
extern std::function<void()> effect;

/** The indices of the tests called since the last reset, in order. */
extern std::vector<std::size_t> called;

/** No errors, nothing called; the effect stays. */
void reset();

}  // namespace stubTests

#endif
