#ifndef QNLIB_TEST_PROTECTED_PROBE_H
#define QNLIB_TEST_PROTECTED_PROBE_H

#include "byte_text.h"
#include "lib_protected.h"

// A protected buffer that shows its image and the operations for derived classes.
namespace test_support
{

class Open_Buffer : public Lib_Protected_Buffer
{
public:
    using Lib_Protected_Buffer::alloc;
    using Lib_Protected_Buffer::flush;
    using Lib_Protected_Buffer::free;
    using Lib_Protected_Buffer::init;
    using Lib_Protected_Buffer::Lib_Protected_Buffer;
    using Lib_Protected_Buffer::m_Image;
    using Lib_Protected_Buffer::operator=;
    using Lib_Protected_Buffer::st_Decipher_Data;
    using Lib_Protected_Buffer::st_Encipher_Data;
    using Lib_Protected_Buffer::st_Extract_Data_From_Deciphered_Buffer;
    using Lib_Protected_Buffer::st_Prepare_Buffer_To_Encipher;
};

} // namespace test_support

#endif
