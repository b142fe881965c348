/* Prints the width at which the library computes here. */
#include <stdio.h>

#include "dsplib/sp_simd.h"

int main(void) {
    printf("%d\n", sp_simd_lanes());
    return 0;
}
