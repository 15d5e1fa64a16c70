#include "report.h"

#include "row.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace
{

struct Announced_Row
{
    std::string m_strName;
    double m_dMark;
};

std::vector<Announced_Row>& announced_Rows()
{
    static std::vector<Announced_Row> rows;
    return rows;
}

std::string to_Text(double dNanoseconds)
{
    char text[32];
    if (dNanoseconds < 1000)
        std::snprintf(text, sizeof(text), "%.1f ns", dNanoseconds);
    else
        std::snprintf(text, sizeof(text), "%.2f us", dNanoseconds / 1000);
    return text;
}

} // namespace

Row::Row(std::string strName, double dMark) : m_strName(std::move(strName))
{
    Report::Announce_Row(m_strName, dMark);
}

void Report::Announce_Row(const std::string& strName, double dMark)
{
    announced_Rows().push_back({strName, dMark});
}

bool Report::ReportContext(const Context& context)
{
    PrintBasicContext(&std::cerr, context);
    std::cerr << "Measuring; the table follows at the end." << std::endl;
    return true;
}

void Report::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs)
    {
        if (run.error_occurred || run.run_type != Run::RT_Iteration)
            continue;
        const std::string& strName = run.run_name.function_name;
        const std::size_t nSlash = strName.rfind('/');
        auto& times = m_Times[strName.substr(0, nSlash)];
        const double dTime = run.GetAdjustedCPUTime();
        const auto [place, bNew] = times.emplace(strName.substr(nSlash + 1), dTime);
        place->second = std::min(place->second, dTime);
    }
}

void Report::Finalize()
{
    std::printf("%-50s %10s   %-18s %10s  %6s  %4s\n", "row", Row::Ours, "best peer", "its time", "ratio",
                "mark");
    for (const Announced_Row& row : announced_Rows())
        print_Row(row.m_strName, row.m_dMark);
    std::printf(
        "\nTimes are the fastest of all repetitions. The ratio is the best peer's time to ours; a `<` "
        "stands where it\nis below the mark.\n");
}

void Report::print_Row(const std::string& strName, double dMark) const
{
    const auto row = m_Times.find(strName);
    if (row == m_Times.end() || row->second.count(Row::Ours) == 0)
        return;
    const double dOurs = row->second.at(Row::Ours);
    const std::pair<const std::string, double>* pBest = nullptr;
    for (const auto& entry : row->second)
        if (entry.first != Row::Ours && (pBest == nullptr || entry.second < pBest->second))
            pBest = &entry;
    if (pBest == nullptr)
    {
        std::printf("%-50s %10s   %-18s\n", strName.c_str(), to_Text(dOurs).c_str(), "(none)");
        return;
    }
    const double dRatio = pBest->second / dOurs;
    std::printf("%-50s %10s   %-18s %10s  %6.2f  %4.1f%s\n", strName.c_str(), to_Text(dOurs).c_str(),
                pBest->first.c_str(), to_Text(pBest->second).c_str(), dRatio, dMark,
                dRatio < dMark ? " <" : "");
    if (m_bAll)
        for (const auto& [strWho, dTime] : row->second)
            std::printf("    %-20s %10s\n", strWho.c_str(), to_Text(dTime).c_str());
}
