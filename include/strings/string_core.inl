// The core that Lib_StringA and Lib_StringW have alike: one block of text, shared until somebody writes.
// Included in the body of either class, where Lib_Char is its character type and Lib_Self the class itself.
//
// A block is one allocation: the header below and, directly behind it, the text with its NUL. Blocks fit
// exactly: a new one is as long as the text it must hold at that moment, so repeated appending copies each
// time unless Get_Buffer reserved room before. Nothing but Get_Buffer, Format, which keeps what it reserved,
// and shortening in place leaves spare capacity, and Free_Extra gives it back.
//
//   m_nRef_Count   the block is
//   1              private: its one holder writes in place
//   2 or more      shared: a writer takes a private copy first
//   -1             locked by Lock_Buffer: its one holder writes in place, copies of the string get a block
//                  of their own; or the class's shared empty block, which is static and never freed
//
// Threads: counts change by atomic operations with full ordering, so strings that share a block may be
// read, copied, written and destroyed on different threads. One string object needs its caller's lock as
// soon as one thread writes to it.
//
// Failed allocation: std::bad_alloc leaves every operation. Get_Buffer, Lock_Buffer, Release_Buffer,
// Free_Extra, operator+= and every edit leave the string as it was; the assignments have given up the old
// block by then and leave the string empty.

struct Data
{
    std::atomic<int> m_nRef_Count;
    unsigned long long m_nLength;       ///< characters in use, the NUL not counted
    unsigned long long m_nAlloc_Length; ///< characters the block can hold, the NUL not counted

    Lib_Char* Get_Text() noexcept { return reinterpret_cast<Lib_Char*>(this + 1); }
    bool Is_Shared() const noexcept { return m_nRef_Count.load(std::memory_order_acquire) > 1; }
    bool Is_Locked() const noexcept { return m_nRef_Count.load(std::memory_order_acquire) < 0; }
};

/// Characters in use.
unsigned long long Get_Length() const noexcept { return get_Data()->m_nLength; }

/// Characters the block can hold.
unsigned long long Get_Alloc_Length() const noexcept { return get_Data()->m_nAlloc_Length; }

bool Is_Empty() const noexcept { return get_Data()->m_nLength == 0; }

/// A writable buffer for at least `nLength` characters that begins with the present text, valid until the
/// next operation that may replace the block. A private or locked block that is large enough is handed out
/// as it is; otherwise the string moves to a new block of the larger of `nLength` and its text, and a lock
/// ends. The length doesn't change: Release_Buffer sets it after writing, and is the next call on the string.
/// A string without a block that is asked for 0 gives a place that holds only the NUL and isn't written to.
Lib_Char* Get_Buffer(unsigned long long nLength);

/// Get_Buffer, and the length becomes `nLength` with a NUL at its end; this also cuts a longer text.
Lib_Char* Get_Buffer_Set_Length(unsigned long long nLength);

/// Ends direct writing: the length becomes `nLength`, or with all ones the number of characters before the
/// first NUL. A lock stays. `nLength` is taken on trust: it must not exceed the capacity, which is
/// Get_Length() where the block is shared, since the string detaches first and a detached copy has no spare
/// room. So what was written behind the old length is lost when the string was copied since Get_Buffer.
void Release_Buffer(unsigned long long nLength = ~0ULL);

/// Makes the block private and locks it: from then on copies of the string take copies of its text, and
/// the pointer stays good until the string must grow, Free_Extra gives room back, or the block is given up.
/// A string without a block isn't locked, and the place that it gives isn't written to.
Lib_Char* Lock_Buffer();

/// Ends a lock. Call it only after Lock_Buffer on the same string: it would falsify the count of a shared
/// block.
void Unlock_Buffer() noexcept;

/// Moves the text to a block of its exact length unless it fits already; detaches, and ends a lock.
void Free_Extra();

/// Makes the string empty. A locked block stays and stays locked, and so does the capacity of a string
/// that is empty already; any other block is given up.
void Empty() noexcept;

/// Gives up the block, whatever its state.
void Flush() noexcept
{
    if (m_pChars != nullptr && m_pChars != &s_Empty.m_chEnd)
    {
        drop_Holder(reinterpret_cast<Data*>(m_pChars) - 1);
        init();
    }
}
