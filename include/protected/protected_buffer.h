#ifndef QNLIB_PROTECTED_PROTECTED_BUFFER_H
#define QNLIB_PROTECTED_PROTECTED_BUFFER_H

#include "foundation/buffer.h"

/// Bytes that stay enciphered for as long as they lie in the object. Between operations it holds an
/// enciphered image and nothing else; plain bytes are in temporaries during an operation, and in the plain
/// buffer that the caller takes out. Cipher and key are the platform's (CryptProtectMemory for this process),
/// so an image means nothing in another process.
///
/// Nothing is wiped: temporaries, images and buffers are released with their content in place.
///
/// The image is the length in 8 bytes (little-endian), the plain bytes, and a filler up to the next multiple
/// of 16, all enciphered at once. An empty object has no image.
///
/// No operation reports or throws anything. When memory is exhausted, the platform refuses its cipher, or the
/// image would have 4 GiB, then
/// - an operation that replaces the content leaves the object empty (a copy from another protected buffer: as
///   it was),
/// - Append and Make_Reverse leave it as it was, but empty if the new image is there and cannot be
///   enciphered,
/// - taking the content out gives an empty buffer, and a comparison that reads the content is false.
/// In no case does a plain image stay in the object, and a length in a damaged image counts only as far as
/// the image reaches. An image of a wrong size, no multiple of 16, counts as empty.
///
/// A pointer that is given with a size is readable for that size; null goes with 0.
///
/// Several threads may read one object; who changes it needs it alone. Images are the process's, not the
/// thread's.
class LIB_API Lib_Protected_Buffer
{
public:
    Lib_Protected_Buffer() noexcept = default;

    /// A copy of the image, with no cipher at work.
    Lib_Protected_Buffer(const Lib_Protected_Buffer& Source) noexcept = default;

    /// Enciphers the plain bytes, which stay the caller's.
    Lib_Protected_Buffer(const Lib_Buffer& Plain) noexcept;
    Lib_Protected_Buffer(unsigned long long nSize, const void* pData) noexcept;

    virtual ~Lib_Protected_Buffer();

    /// Copies the image.
    Lib_Protected_Buffer& operator=(const Lib_Protected_Buffer& Source) noexcept;

    /// Releases the image and enciphers the plain bytes.
    Lib_Protected_Buffer& operator=(const Lib_Buffer& Plain) noexcept;

    /// The plain bytes, in a buffer that is the caller's to deal with.
    operator Lib_Buffer() const noexcept;

    /// Whether the images are equal. Equal plain bytes may have different images (the filler is enciphered
    /// too), so only copies may be counted on to be equal. Nor may equal secrets be counted on to look
    /// different: the cipher gives the same bytes the same image.
    bool operator==(const Lib_Protected_Buffer& Other) const noexcept;

    /// Whether the plain bytes are equal.
    bool operator==(const Lib_Buffer& Plain) const noexcept;
    bool Is_Equals(const void* pData, unsigned long long nSize) const noexcept;

    /// The order of Lib_Buffer::operator< for the plain bytes.
    bool operator<(const Lib_Buffer& Plain) const noexcept;

    /// Puts plain bytes behind the content, which is deciphered and enciphered whole.
    void Append(const Lib_Buffer& Plain) noexcept;
    void Append(const void* pData, unsigned long long nSize) noexcept;

    /// Releases the image and enciphers a copy of nSize bytes at pData; a size of 0 leaves the object empty.
    void Attach_Copy(const void* pData, unsigned long long nSize) noexcept;

    /// Reverses the order of the plain bytes.
    void Make_Reverse() noexcept;

    /// Releases the image.
    void Flush() noexcept;

protected:
    static constexpr unsigned long long Block_Size = 16;

    /// All the same as Flush.
    void flush() noexcept;
    void init() noexcept;

    /// A zero-filled block of nSize bytes, NULL for 0 and when memory is exhausted; and its release.
    void* alloc(unsigned long long nSize) const noexcept;
    void free(void* pBlock) const noexcept;

    /// Makes Image the plain image of Plain, re-using its block when that has the right size: then the filler
    /// is what the block held. Without memory Image stays as it is. The two must not be the same.
    static void st_Prepare_Buffer_To_Encipher(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept;

    /// Makes Image the enciphered image of Plain; an empty Plain empties it. Image is empty when the cipher
    /// is refused, and as it was when there is no memory or the image would have 4 GiB. The two must not be
    /// the same.
    static void st_Encipher_Data(const Lib_Buffer& Plain, Lib_Buffer& Image) noexcept;

    /// Makes Plain the plain bytes of an image; an empty Image empties it. An Image whose size is no multiple
    /// of 16, or which cannot be deciphered, or whose length reaches beyond it, leaves Plain as it was, and
    /// so does want of memory. The two may be the same.
    static void st_Decipher_Data(const Lib_Buffer& Image, Lib_Buffer& Plain) noexcept;

    /// The last step of it: takes the plain bytes out of a deciphered image. Fewer than 8 bytes, a length
    /// that reaches beyond them, and want of memory leave Plain as it was. The two may be the same.
    static void st_Extract_Data_From_Deciphered_Buffer(const Lib_Buffer& Deciphered,
                                                       Lib_Buffer& Plain) noexcept;

    Lib_Buffer m_Image;
};

#endif
