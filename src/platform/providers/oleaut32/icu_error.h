#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_ICU_ERROR_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_OLEAUT32_ICU_ERROR_H

#include <unicode/utypes.h>

#include <new>

namespace qn_oleaut32
{

/// Whether a call of ICU was good. Throws std::bad_alloc when memory was short for it: what it left out then
/// must not be taken for what the locale lacks.
inline bool Is_Good(UErrorCode error)
{
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(error);
}

} // namespace qn_oleaut32

#endif
