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
    std::string m_strPeer; ///< empty for the best one
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

void print_Against(const std::string& strName, double dOurs, const std::string& strPeer, double dTime,
                   double dMark)
{
    const double dRatio = dTime / dOurs;
    std::printf("%-50s %10s   %-18s %10s  %6.2f", strName.c_str(), to_Text(dOurs).c_str(), strPeer.c_str(),
                to_Text(dTime).c_str(), dRatio);
    if (dMark > 0)
        std::printf("  %5.2f%s", dMark, dRatio < dMark ? " <" : "");
    std::printf("\n");
}

} // namespace

Row::Row(std::string strName, double dMark, Time time) : m_strName(std::move(strName)), m_Time(time)
{
    Report::Announce_Row(m_strName, dMark);
}

const Row& Row::Mark_Against(const std::string& strWho, double dMark) const
{
    Report::Announce_Mark(m_strName, strWho, dMark);
    return *this;
}

void Report::Announce_Row(const std::string& strName, double dMark) { Announce_Mark(strName, "", dMark); }

void Report::Announce_Mark(const std::string& strName, const std::string& strWho, double dMark)
{
    auto& rows = announced_Rows(); // its place is behind the row and its earlier marks
    const auto last = std::find_if(rows.rbegin(), rows.rend(),
                                   [&](const Announced_Row& row) { return row.m_strName == strName; });
    rows.insert(last == rows.rend() ? rows.end() : last.base(), {strName, strWho, dMark});
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
        const double dTime =
            run.run_name.time_type.empty() ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
        const auto [place, bNew] = times.emplace(strName.substr(nSlash + 1), dTime);
        place->second = std::min(place->second, dTime);
    }
}

void Report::Finalize()
{
    std::printf("%-50s %10s   %-18s %10s  %6s  %5s\n", "row", Row::Ours, "best peer", "its time", "ratio",
                "mark");
    for (const Announced_Row& row : announced_Rows())
        if (row.m_strPeer.empty())
            print_Row(row.m_strName, row.m_dMark);
        else
            print_Mark(row.m_strName, row.m_strPeer, row.m_dMark);
    std::printf(
        "\nTimes are the fastest of all repetitions. The ratio is the peer's time to ours; a `<` stands "
        "where it is\nbelow the mark. A line that begins with `...` is a mark against one peer.\n");
}

void Report::print_Row(const std::string& strName, double dMark) const
{
    const auto row = m_Times.find(strName);
    if (row == m_Times.end() || row->second.count(Row::Ours) == 0)
        return;
    const double dOurs = row->second.at(Row::Ours);
    const Times::value_type* pBest = nullptr;
    for (const auto& entry : row->second)
        if (entry.first != Row::Ours && (pBest == nullptr || entry.second < pBest->second))
            pBest = &entry;
    if (pBest == nullptr)
        std::printf("%-50s %10s   %-18s\n", strName.c_str(), to_Text(dOurs).c_str(), "(none)");
    else
        print_Against(strName, dOurs, pBest->first, pBest->second, dMark);
    if (m_bAll)
        for (const auto& [strWho, dTime] : row->second)
            std::printf("    %-20s %10s\n", strWho.c_str(), to_Text(dTime).c_str());
}

void Report::print_Mark(const std::string& strName, const std::string& strWho, double dMark) const
{
    const auto row = m_Times.find(strName);
    if (row != m_Times.end() && row->second.count(Row::Ours) != 0 && row->second.count(strWho) != 0)
        print_Against("... " + strName, row->second.at(Row::Ours), strWho, row->second.at(strWho), dMark);
}
