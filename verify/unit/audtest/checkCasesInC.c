#define CHECK_CASES check_cases_in_c
#include "checkCases.h"
