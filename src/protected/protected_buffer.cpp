#include "protected/protected_buffer.h"

#include "foundation/alloc.h"
#include "foundation/copy_bytes.h"
#include "lib_platform.h"

#include <cstring>
#include <limits>

namespace
{

constexpr unsigned long long Length_Size = sizeof(unsigned long long);
constexpr unsigned long long Block = CRYPTPROTECTMEMORY_BLOCK_SIZE;

/// The size of the image of nPlain bytes; 0 if it cannot be counted.
unsigned long long image_Size(unsigned long long nPlain) noexcept
{
    if (nPlain > std::numeric_limits<unsigned long long>::max() - Length_Size - Block)
        return 0;
    return (nPlain + Length_Size + Block - 1) / Block * Block;
}

bool fits_The_Cipher(unsigned long long nImage) noexcept
{
    return nImage <= std::numeric_limits<DWORD>::max();
}

/// Gives an image its size. A new block is zeros but for what it is about to be filled with anyway.
bool resize(Lib_Buffer& Image, unsigned long long nImage) noexcept
{
    if (Image.Get_Size() != 0)
    {
        Image.Set_Size(nImage);
    }
    else if (auto* pImage = static_cast<unsigned char*>(Lib_Alloc(false, nImage)))
    {
        std::memset(pImage + nImage - Block, 0, Block);
        Image.Attach(pImage, nImage);
    }
    return Image.Get_Size() == nImage;
}

bool prepare(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept
{
    const unsigned long long nPlain = Plain.Get_Size();
    const unsigned long long nImage = image_Size(nPlain);
    if (nImage == 0 || !resize(Image, nImage))
        return false;
    // Both targets have the low byte first.
    auto* pImage = static_cast<unsigned char*>(Image.Get_Ptr());
    std::memcpy(pImage, &nPlain, Length_Size);
    copy_Bytes(pImage + Length_Size, Plain.Get_Ptr(), nPlain);
    return true;
}

void encipher(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept
{
    if (Plain.Get_Size() == 0)
    {
        Image.Flush();
        return;
    }
    if (!fits_The_Cipher(image_Size(Plain.Get_Size())) || !prepare(Plain, Image))
        return;
    if (!CryptProtectMemory(Image.Get_Ptr(), static_cast<DWORD>(Image.Get_Size()),
                            CRYPTPROTECTMEMORY_SAME_PROCESS))
        Image.Flush();
}

/// False if the length reaches beyond the image, or there is no memory.
bool extract(const Lib_Buffer& Deciphered, Lib_Buffer& Plain) noexcept
{
    if (Deciphered.Get_Size() < Length_Size)
        return false;
    const auto* pImage = static_cast<const unsigned char*>(Deciphered.Get_Ptr());
    unsigned long long nPlain = 0;
    std::memcpy(&nPlain, pImage, Length_Size);
    if (nPlain > Deciphered.Get_Size() - Length_Size)
        return false;
    if (Plain.Get_Size() == nPlain)
        copy_Bytes(Plain.Get_Ptr(), pImage + Length_Size, nPlain);
    else // all bytes are replaced, so none needs to be kept
        Plain.Attach_Copy(pImage + Length_Size, nPlain);
    return Plain.Get_Size() == nPlain;
}

/// False if the content cannot be had. An image of a wrong size has none, and leaves Plain alone.
bool decipher(const Lib_Buffer& Image, Lib_Buffer& Plain) noexcept
{
    if (Image.Get_Size() == 0)
    {
        Plain.Flush();
        return true;
    }
    if (Image.Get_Size() % Block != 0)
        return true;
    if (!fits_The_Cipher(Image.Get_Size()))
        return false;
    Lib_Buffer Copy; // deciphered in its own block
    Copy = Image;
    return Copy.Get_Size() != 0 &&
           CryptUnprotectMemory(Copy.Get_Ptr(), static_cast<DWORD>(Copy.Get_Size()),
                                CRYPTPROTECTMEMORY_SAME_PROCESS) &&
           extract(Copy, Plain);
}

} // namespace

Lib_Protected_Buffer::Lib_Protected_Buffer(const Lib_Buffer& Plain) noexcept
{
    static_assert(Block_Size == Block);
    encipher(Plain, m_Image);
}

Lib_Protected_Buffer::Lib_Protected_Buffer(unsigned long long nSize, const void* pData) noexcept
{
    Attach_Copy(pData, nSize);
}

Lib_Protected_Buffer::~Lib_Protected_Buffer() { flush(); }

Lib_Protected_Buffer& Lib_Protected_Buffer::operator=(const Lib_Protected_Buffer& Source) noexcept
{
    m_Image = Source.m_Image;
    return *this;
}

Lib_Protected_Buffer& Lib_Protected_Buffer::operator=(const Lib_Buffer& Plain) noexcept
{
    flush();
    encipher(Plain, m_Image);
    return *this;
}

Lib_Protected_Buffer::operator Lib_Buffer() const noexcept
{
    Lib_Buffer Plain;
    decipher(m_Image, Plain);
    return Plain;
}

bool Lib_Protected_Buffer::operator==(const Lib_Protected_Buffer& Other) const noexcept
{
    return m_Image == Other.m_Image;
}

bool Lib_Protected_Buffer::operator==(const Lib_Buffer& Plain) const noexcept
{
    return Is_Equals(Plain.Get_Ptr(), Plain.Get_Size());
}

bool Lib_Protected_Buffer::Is_Equals(const void* pData, unsigned long long nSize) const noexcept
{
    Lib_Buffer Plain;
    return decipher(m_Image, Plain) && Plain.Is_Equals(pData, nSize);
}

bool Lib_Protected_Buffer::operator<(const Lib_Buffer& Plain) const noexcept
{
    Lib_Buffer Mine;
    return decipher(m_Image, Mine) && Mine < Plain;
}

void Lib_Protected_Buffer::Append(const Lib_Buffer& Plain) noexcept
{
    Lib_Buffer Content;
    if (!decipher(m_Image, Content))
        return;
    const unsigned long long nBefore = Content.Get_Size();
    Content.Append(Plain);
    if (Content.Get_Size() - nBefore == Plain.Get_Size())
        encipher(Content, m_Image);
}

void Lib_Protected_Buffer::Append(const void* pData, unsigned long long nSize) noexcept
{
    Lib_Buffer Plain;
    Plain.Attach_Copy(pData, nSize);
    if (Plain.Get_Size() == nSize)
        Append(Plain);
}

void Lib_Protected_Buffer::Attach_Copy(const void* pData, unsigned long long nSize) noexcept
{
    flush();
    Lib_Buffer Plain;
    Plain.Attach_Copy(pData, nSize);
    encipher(Plain, m_Image);
}

void Lib_Protected_Buffer::Make_Reverse() noexcept
{
    Lib_Buffer Content;
    if (!decipher(m_Image, Content))
        return;
    const void* pBefore = Content.Get_Ptr();
    Content.Make_Reverse(); // in a new block, unless there is no memory for it
    if (Content.Get_Size() == 0 || Content.Get_Ptr() != pBefore)
        encipher(Content, m_Image);
}

void Lib_Protected_Buffer::Flush() noexcept { flush(); }

void Lib_Protected_Buffer::flush() noexcept { m_Image.Flush(); }

void Lib_Protected_Buffer::init() noexcept { flush(); }

void* Lib_Protected_Buffer::alloc(unsigned long long nSize) const noexcept { return Lib_Alloc(true, nSize); }

void Lib_Protected_Buffer::free(void* pBlock) const noexcept { Lib_Free(pBlock); }

void Lib_Protected_Buffer::st_Prepare_Buffer_To_Encipher(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept
{
    prepare(Plain, Image);
}

void Lib_Protected_Buffer::st_Encipher_Data(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept
{
    encipher(Plain, Image);
}

void Lib_Protected_Buffer::st_Decipher_Data(const Lib_Buffer& Image, Lib_Buffer& Plain) noexcept
{
    decipher(Image, Plain);
}

void Lib_Protected_Buffer::st_Extract_Data_From_Deciphered_Buffer(const Lib_Buffer& Deciphered,
                                                                  Lib_Buffer& Plain) noexcept
{
    extract(Deciphered, Plain);
}
