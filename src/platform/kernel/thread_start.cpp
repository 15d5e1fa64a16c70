#include "platform/kernel/thread_start.h"

#include "platform/kernel/object_pool.h"
#include "platform/kernel/thread_record.h"
#include "platform/kernel/thread_state.h"
#include "platform/system_calls.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>

#include <pthread.h>

namespace qn_platform::kernel
{

namespace
{

/// What a new thread finds: its own for as long as it has not been let go.
struct Start
{
    Thread_Work work;
    Object* object;
    Thread_State* state;
    Thread_Record* record;
};

/// How it goes on from Wait_For_Launch is in the state; from Released and Cancelled on, the object is there
/// as long as the thread, which has a reference in its record.
void run_Procedure(const Start& start)
{
    Thread_Record& self = *start.record;
    const Launch launch = start.state->Wait_For_Launch();
    if (launch == Launch::Forsaken)
    {
        delete start.state;
        return;
    }
    self.object = start.object;
    self.state = start.state;
    if (launch == Launch::Cancelled)
    {
        self.exit_code = start.state->Get_Cancel_Code();
    }
    else
    {
        const unsigned int code = start.work.procedure(start.work.argument);
        if (g_pCurrent_Thread == &self) // in a child that the procedure forked it is another thread's
        {
            self.exit_code = code;
        }
    }
}

void* run(void* argument)
{
    const std::unique_ptr<Start> start(static_cast<Start*>(argument));
    Adopt_Thread_Record(*start->record);
    start->state->Tell_Id(start->record->id);
    run_Procedure(*start);
    End_Unwatched_Thread(*start->record);
    return nullptr;
}

/// A thread that nobody joins.
class Attributes
{
public:
    Attributes() : m_nError(pthread_attr_init(&m_Attributes)) {}
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    ~Attributes()
    {
        if (m_nError == 0)
        {
            pthread_attr_destroy(&m_Attributes);
        }
    }

    int Set(const Thread_Work& work)
    {
        if (m_nError != 0)
        {
            return m_nError;
        }
        pthread_attr_setdetachstate(&m_Attributes, PTHREAD_CREATE_DETACHED);
        return work.stack_size != 0 ? set_Stack_Size(work) : 0;
    }

    const pthread_attr_t* Get() const { return &m_Attributes; }

private:
    int set_Stack_Size(const Thread_Work& work)
    {
        std::size_t nSize = 0;
        pthread_attr_getstacksize(&m_Attributes, &nSize);
        nSize = work.stack_may_be_less ? LEAST_STACK : nSize;
        return pthread_attr_setstacksize(&m_Attributes, std::max(nSize, round_Up(work.stack_size)));
    }

    static constexpr std::size_t LEAST_STACK = 64 * 1024;
    static constexpr std::size_t round_Up(std::size_t size)
    {
        return (size + LEAST_STACK - 1) / LEAST_STACK * LEAST_STACK;
    }

    pthread_attr_t m_Attributes;
    int m_nError;
};

int create(Start& start)
{
    Attributes attributes;
    const int nError = attributes.Set(start.work);
    pthread_t thread;
    return nError != 0 ? nError : system_calls.create_thread(&thread, attributes.Get(), run, &start);
}

} // namespace

int Start_Thread(Object& object, const Thread_Work& work)
{
    Thread_State& state = Get_Thread_State(object);
    std::unique_ptr<Start> start(new (std::nothrow) Start{work, &object, &state, nullptr});
    if (start == nullptr || (start->record = Reserve_Thread_Record()) == nullptr)
    {
        return ENOMEM;
    }
    state.Set_Suspended(work.suspended);
    Object_Reference of_thread = work.suspended ? Object_Reference() : Share(object);
    const int nError = create(*start);
    if (nError != 0)
    {
        state.Set_Suspended(false);
        Give_Back_Thread_Record(*start->record);
        return nError;
    }
    start.release();
    of_thread.Detach();
    return 0;
}

} // namespace qn_platform::kernel
