/**
 * Every check of audunittest_checks.h, passing and failing. Included once as C and once as C++,
 * after CHECK_CASES is defined as the name of the function that holds them there.
 */
#include <limits.h>
#include <math.h>

#include "audunittest/audunittest_checks.h"

/* Makes the case of this index; gives its line, what it should report ("" where it should pass) and
 * the check's own result. Returns 0 where there is no such case. */
int CHECK_CASES(int index, int* line, const char** report, int* passed);

#define CASE(check, text)  \
    if (index-- == 0) {    \
        *line = __LINE__;  \
        *report = (text);  \
        *passed = (check); \
        return 1;          \
    }

int CHECK_CASES(int index, int* line, const char** report, int* passed) {
    int found = 7;
    const float eighth = 0.125f;
    CASE(AUDUNITTEST_INT(-3, ==, -3), "")
    CASE(AUDUNITTEST_INT(-3, ==, 4), "-3 != 4")
    CASE(AUDUNITTEST_INT(4, ==, -3), "4 != -3")
    CASE(AUDUNITTEST_INT(-3, !=, 4), "")
    CASE(AUDUNITTEST_INT(-3, !=, -3), "-3 == -3")
    CASE(AUDUNITTEST_INT(LONG_MIN, <, -1), "")
    CASE(AUDUNITTEST_INT(4, <, 4), "4 >= 4")
    CASE(AUDUNITTEST_INT(4, <=, 4), "")
    CASE(AUDUNITTEST_INT(4, <=, -3), "4 > -3")
    CASE(AUDUNITTEST_INT(4, >, -3), "")
    CASE(AUDUNITTEST_INT(4, >, 4), "4 <= 4")
    CASE(AUDUNITTEST_INT(4, >=, 4), "")
    CASE(AUDUNITTEST_INT(-3, >=, 4), "-3 < 4")
    CASE(AUDUNITTEST_INT(7, &, 1), "7 (compared in an unknown way) 1")
    CASE(AUDUNITTEST_INT(found++, ==, 8), "7 != 8") /* 8 != 8 if it were evaluated twice */
    CASE(AUDUNITTEST_UINT(ULONG_MAX / 2 + 1, >, 1u), "")
    CASE(AUDUNITTEST_UINT(4000000000u, ==, 1u), "4000000000 != 1")
    CASE(AUDUNITTEST_UINT(1u, >=, 4000000000u), "1 < 4000000000")
    CASE(AUDUNITTEST_DOUBLE(eighth, ==, 0.125), "")
    CASE(AUDUNITTEST_DOUBLE(eighth, <, -1e10), "0.125000 >= -10000000000.000000")
    CASE(AUDUNITTEST_DOUBLE(0.0, !=, -0.0), "0.000000 == -0.000000")
    CASE(AUDUNITTEST_DOUBLE((double)NAN, !=, (double)NAN), "")
    CASE(AUDUNITTEST_DOUBLE((double)NAN, ==, 1.0), "nan != 1.000000")
    CASE(AUDUNITTEST_DOUBLE((double)NAN, <, 1.0), "nan not < 1.000000")
    CASE(AUDUNITTEST_DOUBLE(1.0, <=, (double)NAN), "1.000000 not <= nan")
    CASE(AUDUNITTEST_DOUBLE((double)NAN, >, 1.0), "nan not > 1.000000")
    CASE(AUDUNITTEST_DOUBLE((double)NAN, >=, 1.0), "nan not >= 1.000000")
    CASE(AUDUNITTEST_NEAR(1.0, 1.5, 0.5), "")
    CASE(AUDUNITTEST_NEAR(1.5f, 1.0f, 0.5f), "")
    CASE(AUDUNITTEST_NEAR(1.0, 1.5, 0.25), "1.000000 is not within 0.25 of 1.500000")
    CASE(AUDUNITTEST_NEAR(1.5, 1.0, 1e-9), "1.500000 is not within 1e-09 of 1.000000")
    CASE(AUDUNITTEST_NEAR((double)NAN, 1.0, 9.0), "nan is not within 9 of 1.000000")
    CASE(AUDUNITTEST_NEAR(1.0, (double)NAN, 9.0), "1.000000 is not within 9 of nan")
    CASE(AUDUNITTEST_NEAR(1.0, 2.0, (double)NAN), "1.000000 is not within nan of 2.000000")
    CASE(AUDUNITTEST_NEAR((double)INFINITY, (double)INFINITY, 0.0), "")
    CASE(AUDUNITTEST_NEAR((double)INFINITY, 1.0, 9.0), "inf is not within 9 of 1.000000")
    CASE(AUDUNITTEST_STRING("one", ==, "one"), "")
    CASE(AUDUNITTEST_STRING("one", ==, "on"), "one != on")
    CASE(AUDUNITTEST_STRING("b", <, "a"), "b >= a")
    CASE(AUDUNITTEST_STRING(NULL, ==, NULL), "")
    CASE(AUDUNITTEST_STRING(NULL, ==, ""), "(null) != ")
    CASE(AUDUNITTEST_STRING("a", <=, NULL), "a > (null)")
    CASE(AUDUNITTEST_TRUE(found == 7), "")
    CASE(AUDUNITTEST_TRUE(found % 7), "found % 7 is false")
    CASE(AUDUNITTEST_TRUE(found), "") /* any value but zero */
    CASE(AUDUNITTEST_FALSE(found == 8), "")
    CASE(AUDUNITTEST_FALSE(found), "found is true")
    return 0;
}
