// The benchmark program. Its arguments are those of Google Benchmark (--help), and --all for the times of
// every peer. What stands first in the list below holds unless an argument says otherwise.

#include "report.h"
#include "row.h"

#include <algorithm>
#include <string_view>
#include <vector>

int main(int nArguments, char** ppArguments)
{
    // Repetitions of all works take turns, so that a busy moment of the machine doesn't strike one of them
    // alone.
    static char repetitions[] = "--benchmark_repetitions=9";
    static char min_time[] = "--benchmark_min_time=0.01";
    static char interleaved[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments{ppArguments[0], repetitions, min_time, interleaved};
    arguments.insert(arguments.end(), ppArguments + 1, ppArguments + nArguments);
    const auto all =
        std::remove_if(arguments.begin(), arguments.end(),
                       [](const char* pArgument) { return std::string_view(pArgument) == "--all"; });
    const bool bAll = all != arguments.end();
    arguments.erase(all, arguments.end());
    int nCount = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);

    benchmark::Initialize(&nCount, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(nCount, arguments.data()))
        return 1;
    Add_Basic_Rows();
    Add_Search_Rows();
    Add_Edit_Rows();
    Add_Format_Rows();
    Add_Conversion_Rows();
    Add_Secret_Rows();
    Add_Kernel_Rows();
    Add_Date_Rows();
    Add_Environment_Rows();
    Add_Thread_Rows();
    Add_Registry_Rows();
    Report report(bAll);
    const bool bAny = benchmark::RunSpecifiedBenchmarks(&report) != 0;
    benchmark::ClearRegisteredBenchmarks(); // ends the threads and processes that some works started
    benchmark::Shutdown();
    return bAny ? 0 : 1;
}
