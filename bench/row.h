#ifndef QNLIB_BENCH_ROW_H
#define QNLIB_BENCH_ROW_H

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

/// One work item, measured for the library and for each peer. A work is a function object that does the
/// item once and returns its result, whose destruction is measured too: everybody pays for the memory that
/// the result takes. What the work reads it holds itself.
class Row
{
public:
    static constexpr const char* Ours = "qnLib";

    /// How a row's time is taken: that of this thread's processor, or by the clock where others work as well.
    enum class Time
    {
        Processor,
        Clock
    };

    /// `dMark` is the ratio of the best peer's time to ours that the row should reach; 0 for none.
    Row(std::string strName, double dMark, Time time = Time::Processor);

    /// A mark against one peer, in a line of its own.
    const Row& Mark_Against(const std::string& strWho, double dMark) const;

    template <class Work>
    const Row& Add(const std::string& strWho, Work work) const
    {
        auto* pBenchmark =
            benchmark::RegisterBenchmark((m_strName + '/' + strWho).c_str(),
                                         [work = std::move(work)](benchmark::State& state) mutable
                                         {
                                             for (auto _ : state)
                                                 do_Once(work);
                                         });
        if (m_Time == Time::Clock)
            pBenchmark->UseRealTime();
        return *this;
    }

private:
    template <class Work>
    static void do_Once(Work& work)
    {
        Work* pWork = &work;
        benchmark::DoNotOptimize(pWork); // it may be another one, for all the compiler knows
        auto result = (*pWork)();
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
    }

    std::string m_strName;
    Time m_Time;
};

/// The files of this folder, each with the rows of its topic.
void Add_Basic_Rows();
void Add_Search_Rows();
void Add_Edit_Rows();
void Add_Format_Rows();
void Add_Conversion_Rows();
void Add_Secret_Rows();
void Add_Kernel_Rows();
void Add_Date_Rows();
void Add_Environment_Rows();
void Add_Thread_Rows();
void Add_Registry_Rows();

#endif
