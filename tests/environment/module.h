#ifndef QNLIB_TESTS_ENVIRONMENT_MODULE_H
#define QNLIB_TESTS_ENVIRONMENT_MODULE_H

#include "lib_environment.h"
#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// A module with a manager: it notes each call of its callbacks, and a test can have them do something. One
/// at a time; the manager's lock guards it.
class Module
{
public:
    using Calls = std::vector<std::string>;

    Module() : Module(st_Create, st_Free, st_Prepare, st_Ready) {}

    /// With those callbacks that are not null.
    Module(void* (*pfnCreate)(Lib_Environment*, Lib_Result&), bool (*pfnFree)(void*, Lib_Result&),
           bool (*pfnPrepare)(void*), bool (*pfnReady)(void*))
        : m_pManager(new Lib_Environment_Manager(pfnCreate, pfnFree, pfnPrepare, pfnReady))
    {
        st_pModule = this;
    }
    ~Module() { Destroy_Manager(); }

    Lib_Environment_Manager* operator->() const { return m_pManager; }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// Callbacks can still reach it.
    void Destroy_Manager()
    {
        delete m_pManager;
        m_pManager = nullptr;
    }

    /// What was called since the last question: "create 1", and so on by the number of the user data.
    Calls Take_Calls() { return std::exchange(m_Calls, {}); }

    Lib_Environment* Get_Environment() const
    {
        Lib_Result result;
        return m_pManager->Get_Environment(result);
    }

    /// One user more, and whose environment that is.
    Lib_Environment* Establish() const
    {
        Lib_Result result;
        EXPECT_TRUE(m_pManager->Establish_Environment(result));
        return Get_Environment();
    }

    bool Release(Lib_Environment* pEnvironment) const
    {
        Lib_Result result;
        return m_pManager->Release_Environment(pEnvironment, result);
    }

    /// Whether another thread gets the lock: if not, this never returns.
    void Expect_Unlocked() const
    {
        std::thread(
            [this]
            {
                m_pManager->Lock();
                m_pManager->Unlock();
            })
            .join();
    }

    // What the callbacks do beside noting their call.
    std::function<void*(Lib_Environment*, Lib_Result&)> m_Create = [this](Lib_Environment*, Lib_Result&)
    { return &m_Data.emplace_back(m_Data.size() + 1); };
    std::function<bool(void*, Lib_Result&)> m_Free = [](void*, Lib_Result&) { return true; };
    std::function<bool(void*)> m_Prepare = [](void*) { return true; };
    std::function<bool(void*)> m_Ready = [](void*) { return true; };

    static void* st_Create(Lib_Environment* pEnvironment, Lib_Result& result)
    {
        void* const pData = st_pModule->m_Create(pEnvironment, result);
        st_pModule->note("create", pData);
        return pData;
    }
    static bool st_Free(void* pData, Lib_Result& result)
    {
        st_pModule->note("free", pData);
        return st_pModule->m_Free(pData, result);
    }
    static bool st_Prepare(void* pData)
    {
        st_pModule->note("prepare", pData);
        return st_pModule->m_Prepare(pData);
    }
    static bool st_Ready(void* pData)
    {
        st_pModule->note("ready", pData);
        return st_pModule->m_Ready(pData);
    }

private:
    void note(const char* pWhat, const void* pData)
    {
        const auto* const pNumber = static_cast<const std::size_t*>(pData);
        m_Calls.push_back(std::string(pWhat) + ' ' + (pNumber ? std::to_string(*pNumber) : "null"));
    }

    static inline Module* st_pModule = nullptr;
    std::deque<std::size_t> m_Data;
    Calls m_Calls;
    Lib_Environment_Manager* m_pManager;
};

#endif
