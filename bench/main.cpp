// The benchmark program. Its arguments are those of Google Benchmark (--help); what stands first in the list
// below holds unless an argument says otherwise.

#include "report.h"
#include "row.h"

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
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    benchmark::Shutdown();
    return 0;
}
