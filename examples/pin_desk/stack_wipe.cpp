#include "stack_wipe.h"

#include <cstddef>

void Wipe_Stack()
{
    constexpr std::size_t DEPTH = 32768; // bytes; deciphering goes deepest, by less than half of this
    volatile unsigned long long below[DEPTH / sizeof(unsigned long long)];
    for (volatile unsigned long long& word : below)
        word = 0;
}
