#include "zor_frame.h"

uint32_t GCD(uint32_t a, uint32_t b)
{
    uint32_t dividend = a >= b ? a : b;
    uint32_t divisor = a >= b ? b : a;
    for (uint32_t rest = dividend % divisor; rest != 0; rest = dividend % divisor) {
        dividend = divisor;
        divisor = rest;
    }
    return divisor;
}
