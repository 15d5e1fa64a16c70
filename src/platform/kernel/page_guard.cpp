#include "platform/kernel/page_guard.h"

#include "platform/kernel/named_registry.h"

#include <cerrno>
#include <csignal>

#include <sys/mman.h>

namespace qn_platform::kernel
{

namespace
{

struct sigaction g_Former; // written before the handler is in place

/// The page of an object that an address is in; null for any other address. Async-signal-safe.
void* find_Page(const void* address)
{
    const char* const pAddress = static_cast<const char*>(address);
    for (const Named_Object* pObject = First_Named_Object(); pObject != nullptr; pObject = pObject->next)
    {
        char* const pPage = reinterpret_cast<char*>(pObject->page.load(std::memory_order_acquire));
        if (pPage != nullptr && pAddress >= pPage && pAddress < pPage + NAMED_PAGE_SIZE)
        {
            return pPage;
        }
    }
    return nullptr;
}

void call_Former(int signal, siginfo_t* information, void* context)
{
    if ((g_Former.sa_flags & SA_SIGINFO) != 0)
    {
        g_Former.sa_sigaction(signal, information, context);
    }
    else if (g_Former.sa_handler != SIG_DFL && g_Former.sa_handler != SIG_IGN)
    {
        g_Former.sa_handler(signal);
    }
    else
    {
        ::signal(signal, SIG_DFL); // the instruction faults again, and that ends the process
    }
}

void on_Bus_Error(int signal, siginfo_t* information, void* context)
{
    const int nSaved = errno;
    void* const pPage = information->si_code == BUS_ADRERR ? find_Page(information->si_addr) : nullptr;
    if (pPage == nullptr || ::mmap(pPage, NAMED_PAGE_SIZE, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED)
    {
        call_Former(signal, information, context);
    }
    errno = nSaved;
}

bool install()
{
    struct sigaction action = {};
    action.sa_sigaction = on_Bus_Error;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESTART;
    sigemptyset(&action.sa_mask);
    return ::sigaction(SIGBUS, nullptr, &g_Former) == 0 && ::sigaction(SIGBUS, &action, nullptr) == 0;
}

} // namespace

void Guard_Pages()
{
    [[maybe_unused]] static const bool bInstalled = install();
    Unblock_Faults();
}

void Unblock_Faults()
{
    sigset_t faults;
    sigemptyset(&faults);
    sigaddset(&faults, SIGBUS);
    pthread_sigmask(SIG_UNBLOCK, &faults, nullptr);
}

} // namespace qn_platform::kernel
