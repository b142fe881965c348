/**
 * Conveniences over audunittest.h: checks that report by themselves, tests that register
 * themselves, and a main.
 *
 *     #include <audunittest/audunittest_checks.h>
 *
 *     AUDUNITTEST_TEST(test__sum__is_commutative) {
 *         AUDUNITTEST_INT(1 + 2, ==, 2 + 1);
 *         AUDUNITTEST_NEAR(0.1 + 0.2, 0.3, 1e-12);
 *     }
 *
 *     AUDUNITTEST_MAIN
 *
 * Every check counts as one assertion, evaluates its arguments once and is 1 when it passed and 0
 * when it failed: `if (!AUDUNITTEST_TRUE(file)) return;`. A failure reports this file and line,
 * both values, and between them what turned out to be true: where `a == b` was wanted, "a != b".
 */
#ifndef PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_CHECKS_H
#define PLATFORM_AUDIO_AUDTEST_AUDUNITTEST_CHECKS_H

#include <stdio.h>
#include <string.h>

#include "audunittest.h"

/*
 * Comparisons. `comparison` is one of == != < <= > >= and stands as itself:
 *
 *     AUDUNITTEST_UINT(length, <=, 8);
 */

/** Of signed numbers, as long. */
#define AUDUNITTEST_INT(left, comparison, right) \
    audunittest_check_int(__FILE__, __LINE__, (left), #comparison, (right))

/** Of unsigned numbers, as unsigned long. */
#define AUDUNITTEST_UINT(left, comparison, right) \
    audunittest_check_uint(__FILE__, __LINE__, (left), #comparison, (right))

/** Of floating-point numbers, as double and exactly. With a NaN only != passes. */
#define AUDUNITTEST_DOUBLE(left, comparison, right)                                        \
    audunittest_check_double(__FILE__, __LINE__, AUDUNITTEST_AS_DOUBLE(left), #comparison, \
                             AUDUNITTEST_AS_DOUBLE(right))

/** Of strings, in the order of strcmp. A null pointer equals itself and comes before any text. */
#define AUDUNITTEST_STRING(left, comparison, right) \
    audunittest_check_string(__FILE__, __LINE__, (left), #comparison, (right))

/** That two floating-point numbers are equal or at most `tolerance` apart; never with a NaN. */
#define AUDUNITTEST_NEAR(left, right, tolerance)                            \
    audunittest_check_near(__FILE__, __LINE__, AUDUNITTEST_AS_DOUBLE(left), \
                           AUDUNITTEST_AS_DOUBLE(right), AUDUNITTEST_AS_DOUBLE(tolerance))

/** That a condition holds. A failure reports its text: "found is false". */
#define AUDUNITTEST_TRUE(condition) \
    audunittest_check_bool(__FILE__, __LINE__, #condition, (condition) ? 1 : 0, 1)

/** That a condition does not hold. */
#define AUDUNITTEST_FALSE(condition) \
    audunittest_check_bool(__FILE__, __LINE__, #condition, (condition) ? 1 : 0, 0)

/** Registers `function` under its own name before main, by a start-up function `registration`. */
#define AUDUNITTEST_REGISTER(registration, function)              \
    __attribute__((constructor)) static void registration(void) { \
        audunittest_register_test(function, #function);           \
    }

/** Begins a test that registers itself; its body in braces follows. */
#define AUDUNITTEST_TEST(name)                               \
    static void name(void);                                  \
    AUDUNITTEST_REGISTER(audunittest_register__##name, name) \
    static void name(void)

/** The main of a test program, without a semicolon. */
#define AUDUNITTEST_MAIN                     \
    int main(int argc, char* argv[]) {       \
        return audunittest_main(argc, argv); \
    }

/* What follows is what the macros call. */

#ifdef __cplusplus
#define AUDUNITTEST_CAST(type, value) static_cast<type>(value)
#else
#define AUDUNITTEST_CAST(type, value) ((type)(value))
#endif

/* Explicit: compilers may warn of a float that becomes a double by itself. */
#define AUDUNITTEST_AS_DOUBLE(value) AUDUNITTEST_CAST(double, value)

/** audunittest_commandline for argc and argv just as main received them. */
static inline int audunittest_main(int argc, char* argv[]) {
    return AUDUNITTEST_CAST(
        int, audunittest_commandline(argc, AUDUNITTEST_CAST(const char* const*, argv)));
}

/** How two values lie to each other, one bit each. */
enum {
    AUDUNITTEST_LESS = 1,
    AUDUNITTEST_EQUAL = 2,
    AUDUNITTEST_GREATER = 4,
    AUDUNITTEST_UNORDERED = 8 /**< one is a NaN */
};

/**
 * Judges a comparison of values that lie to each other as `order` says. Returns null when it holds,
 * else the operator that holds in its place.
 */
static inline const char* audunittest_refuted(const char* operator_text, int order) {
    static const struct {
        const char* operator_text;
        int holds_for;
        const char* opposite;
        const char* unordered;
    } operators[] = {
        {"==", AUDUNITTEST_EQUAL, "!=", "!="},
        {"!=", AUDUNITTEST_LESS | AUDUNITTEST_GREATER | AUDUNITTEST_UNORDERED, "==", NULL},
        {"<", AUDUNITTEST_LESS, ">=", "not <"},
        {"<=", AUDUNITTEST_LESS | AUDUNITTEST_EQUAL, ">", "not <="},
        {">", AUDUNITTEST_GREATER, "<=", "not >"},
        {">=", AUDUNITTEST_GREATER | AUDUNITTEST_EQUAL, "<", "not >="},
    };
    for (unsigned i = 0; i < sizeof operators / sizeof operators[0]; i++) {
        if (strcmp(operators[i].operator_text, operator_text) != 0) continue;
        if ((operators[i].holds_for & order) != 0) return NULL;
        return order == AUDUNITTEST_UNORDERED ? operators[i].unordered : operators[i].opposite;
    }
    return "(compared in an unknown way)";
}

#define AUDUNITTEST_ORDER(left, right)         \
    ((left) < (right)    ? AUDUNITTEST_LESS    \
     : (left) > (right)  ? AUDUNITTEST_GREATER \
     : (left) == (right) ? AUDUNITTEST_EQUAL   \
                         : AUDUNITTEST_UNORDERED)

static inline int audunittest_passed(const char* file, int line) {
    audunittest_succeed_test(file, line);
    return 1;
}

static inline int audunittest_check_int(const char* file, int line, long left,
                                        const char* operator_text, long right) {
    const char* const refuted = audunittest_refuted(operator_text, AUDUNITTEST_ORDER(left, right));
    if (refuted == NULL) return audunittest_passed(file, line);
    audunittest_fail_equals_int(file, line, left, right, refuted);
    return 0;
}

static inline int audunittest_check_uint(const char* file, int line, unsigned long left,
                                         const char* operator_text, unsigned long right) {
    const char* const refuted = audunittest_refuted(operator_text, AUDUNITTEST_ORDER(left, right));
    if (refuted == NULL) return audunittest_passed(file, line);
    audunittest_fail_equals_uint(file, line, left, right, refuted);
    return 0;
}

static inline int audunittest_check_double(const char* file, int line, double left,
                                           const char* operator_text, double right) {
    const char* const refuted = audunittest_refuted(operator_text, AUDUNITTEST_ORDER(left, right));
    if (refuted == NULL) return audunittest_passed(file, line);
    audunittest_fail_equals_double(file, line, left, right, refuted);
    return 0;
}

static inline int audunittest_check_string(const char* file, int line, const char* left,
                                           const char* operator_text, const char* right) {
    const int difference =
        left != NULL && right != NULL ? strcmp(left, right) : (left != NULL) - (right != NULL);
    const char* const refuted =
        audunittest_refuted(operator_text, AUDUNITTEST_ORDER(difference, 0));
    if (refuted == NULL) return audunittest_passed(file, line);
    audunittest_fail_equals(file, line, left != NULL ? left : "(null)",
                            right != NULL ? right : "(null)", refuted);
    return 0;
}

static inline int audunittest_check_near(const char* file, int line, double left, double right,
                                         double tolerance) {
    const double distance = left < right ? right - left : left - right;
    char refuted[64];
    if (left == right || distance <= tolerance) return audunittest_passed(file, line);
    snprintf(refuted, sizeof refuted, "is not within %g of", tolerance);
    audunittest_fail_equals_double(file, line, left, right, refuted);
    return 0;
}

static inline int audunittest_check_bool(const char* file, int line, const char* text, int found,
                                         int wanted) {
    if (found == wanted) return audunittest_passed(file, line);
    audunittest_fail_equals(file, line, text, found ? "true" : "false", "is");
    return 0;
}

#endif
