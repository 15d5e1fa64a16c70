#include "lib_platform.h"
#include "long_texts.h"

QN_STRING_TABLE({7, L"seven"}, {254, DIGITS_254}, {255, DIGITS_255}, {600, DIGITS_600});
