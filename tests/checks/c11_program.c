/* A program in C against the finished library: calls a function and reads a table. */
#include <stdio.h>
#include <string.h>

#include "tarvo.h"

int main(void)
{
    const uint8_t bytes[2] = {0x12, 0x34};
    if (get_word(bytes) != 0x1234) {
        puts("get_word gives another number");
        return 1;
    }
    if (strcmp(month[11], "Dec") != 0) {
        puts("the table of months ends otherwise");
        return 1;
    }
    return 0;
}
