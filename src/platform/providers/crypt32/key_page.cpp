#include "platform/providers/crypt32/key_page.h"

#include "platform/modules.h"

#include <atomic>
#include <cerrno>

#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

namespace qn_crypt32
{

namespace
{

std::atomic<unsigned char*> key_page{nullptr};

std::size_t page_Size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

bool fill(unsigned char* target, std::size_t size)
{
    while (size != 0)
    {
        const ssize_t got = qn_crypt32_system_calls.get_random(target, size, 0);
        if (got <= 0 && !(got < 0 && errno == EINTR))
        {
            return false;
        }
        if (got > 0)
        {
            target += got;
            size -= static_cast<std::size_t>(got);
        }
    }
    return true;
}

/// A page that a core dump would hold is no place for a key; one that may be swapped out must do.
bool make_Key(unsigned char* page)
{
    if (qn_crypt32_system_calls.advise(page, page_Size(), MADV_DONTDUMP) != 0)
    {
        return false;
    }
    qn_crypt32_system_calls.lock(page, page_Size());
    return fill(page, KEY_SIZE) && qn_crypt32_system_calls.protect(page, page_Size(), PROT_READ) == 0;
}

/// A child inherits the page, but not that it is locked.
void lock_In_Child() { qn_crypt32_system_calls.lock(key_page.load(), page_Size()); }

} // namespace

const unsigned char* Get_Key()
{
    unsigned char* known = key_page.load(std::memory_order_acquire);
    if (known != nullptr)
    {
        return known;
    }
    void* const page = qn_crypt32_system_calls.map(nullptr, page_Size(), PROT_READ | PROT_WRITE,
                                                   MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED)
    {
        qn_platform::SetLastError(qn_platform::ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    auto* const made = static_cast<unsigned char*>(page);
    if (!make_Key(made))
    {
        qn_crypt32_system_calls.unmap(page, page_Size());
        qn_platform::SetLastError(qn_platform::ERROR_GEN_FAILURE);
        return nullptr;
    }
    // Of threads that come together the first one's key counts.
    if (!key_page.compare_exchange_strong(known, made, std::memory_order_acq_rel))
    {
        qn_crypt32_system_calls.unmap(page, page_Size());
        return known;
    }
    pthread_atfork(nullptr, nullptr, lock_In_Child);
    return made;
}

} // namespace qn_crypt32

extern "C"
{
    constinit qn_crypt32::System_Calls qn_crypt32_system_calls{::mmap,  ::munmap,   ::madvise,
                                                               ::mlock, ::mprotect, ::getrandom};
}
