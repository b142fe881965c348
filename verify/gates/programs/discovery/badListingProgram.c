/* A program that announces more tests than it lists. */
#include "console/console.h"

int main(void) {
    custom_printf("passes\nFound 2 tests.\n");
    return 0;
}
