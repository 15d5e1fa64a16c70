#ifndef QNLIB_BENCH_REPORT_H
#define QNLIB_BENCH_REPORT_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Collects the fastest repetition of each work and prints a table at the end: a line a row with our time,
/// the best peer and its time, and the ratio of its time to ours; a further line for each peer that the row
/// has a mark against.
class Report : public benchmark::BenchmarkReporter
{
public:
    /// Tells of a row before any of its works is measured, and of a mark of it against one peer.
    static void Announce_Row(const std::string& strName, double dMark);
    static void Announce_Mark(const std::string& strName, const std::string& strWho, double dMark);

    /// With `bAll` each row shows every peer's time.
    explicit Report(bool bAll) : m_bAll(bAll) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    using Times = std::map<std::string, double>; ///< nanoseconds by who

    void print_Row(const std::string& strName, double dMark) const;
    void print_Mark(const std::string& strName, const std::string& strWho, double dMark) const;

    bool m_bAll;
    std::map<std::string, Times> m_Times; ///< by row
};

#endif
