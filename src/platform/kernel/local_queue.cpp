#include "platform/kernel/local_queue.h"

#include "platform/kernel/futex.h"
#include "platform/kernel/local_objects.h"
#include "platform/kernel/local_state.h"

#include <mutex>

namespace qn_platform::kernel
{

namespace
{

/// Who holds the dispatcher's lock; guarded by it.
constinit Dispatcher_Lock* g_pHolder = nullptr;

void unlink(Wait_Node& node)
{
    auto& queue = node.object->queue;
    (node.previous == nullptr ? queue.first : node.previous->next) = node.next;
    (node.next == nullptr ? queue.last : node.next->previous) = node.previous;
}

bool can_Take_All(const Queued_Wait& wait)
{
    for (unsigned int i = 0; i < wait.count; ++i)
    {
        if (!Can_Take(*wait.nodes[i].object, wait.thread))
        {
            return false;
        }
    }
    return true;
}

void give_All(Queued_Wait& wait)
{
    wait.result.index = 0;
    for (unsigned int i = 0; i < wait.count; ++i)
    {
        if (Give(*wait.nodes[i].object, wait.thread) && !wait.result.abandoned)
        {
            wait.result = {wait.nodes[i].index, true};
        }
    }
}

/// Serves the wait, whose node has the available object. After the bell its memory may be gone.
void satisfy(Queued_Wait& wait, const Wait_Node& node)
{
    if (wait.mode == Wait_Mode::All)
    {
        give_All(wait);
    }
    else
    {
        wait.result.index = node.index;
        wait.result.abandoned = wait.mode == Wait_Mode::Any && Give(*node.object, wait.thread);
    }
    wait.Leave_Queues();
    wait.thread.bell.fetch_add(1, std::memory_order_release);
}

Wait_Node* get_Next_Of_Other_Wait(const Wait_Node& node)
{
    Wait_Node* pNext = node.next;
    while (pNext != nullptr && pNext->wait == node.wait)
    {
        pNext = pNext->next;
    }
    return pNext;
}

} // namespace

Dispatcher_Lock::Dispatcher_Lock()
{
    g_Dispatcher.lock();
    g_pHolder = this;
}

Dispatcher_Lock::~Dispatcher_Lock()
{
    g_Dispatcher.unlock();
    for (unsigned int i = 0; i < m_nBells; ++i)
    {
        Futex_Wake_One(*m_Bells[i]);
    }
}

void Dispatcher_Lock::Wake_Afterwards(const std::atomic<std::uint32_t>& bell)
{
    if (g_pHolder->m_nBells == MOST_BELLS)
    {
        Futex_Wake_One(bell);
        return;
    }
    g_pHolder->m_Bells[g_pHolder->m_nBells++] = &bell;
}

void Queued_Wait::Queue_On(Object& object, int index)
{
    Wait_Node& node = nodes[count++];
    node = {&object, this, object.queue.last, nullptr, index};
    (object.queue.last == nullptr ? object.queue.first : object.queue.last->next) = &node;
    object.queue.last = &node;
}

void Queued_Wait::Leave_Queues()
{
    for (unsigned int i = 0; i < count; ++i)
    {
        unlink(nodes[i]);
        Let_Go(*nodes[i].object);
    }
}

void Queued_Wait::Sleep(Deadline& deadline) const
{
    while (!deadline.Is_Now() && thread.bell.load(std::memory_order_acquire) == bell &&
           Futex_Wait(thread.bell, bell, deadline.Get_Time()))
    {
    }
}

Taken Queued_Wait::Finish()
{
    if (thread.bell.load(std::memory_order_acquire) == bell)
    {
        const Dispatcher_Lock lock;
        if (!result)
        {
            Leave_Queues();
        }
    }
    for (unsigned int i = 0; i < count && result && mode != Wait_Mode::Look; ++i)
    {
        if (mode == Wait_Mode::All || nodes[i].index == result.index)
        {
            Receive(*nodes[i].object, thread);
        }
    }
    return result;
}

void Serve(Object& object)
{
    // The object is not looked at again after its last waiter was served: the references may be gone.
    for (Wait_Node* pNode = object.queue.first; pNode != nullptr && Is_Available(object);)
    {
        Queued_Wait& wait = *pNode->wait;
        Wait_Node* const pNext = get_Next_Of_Other_Wait(*pNode);
        if (wait.mode != Wait_Mode::All || can_Take_All(wait))
        {
            const std::atomic<std::uint32_t>& bell = wait.thread.bell;
            satisfy(wait, *pNode);
            Dispatcher_Lock::Wake_Afterwards(bell);
        }
        pNode = pNext;
    }
}

} // namespace qn_platform::kernel
