// Dates: broken down, set, asked of the system, written and read.

#include <lib_datetime.h>

#include "peers.h"
#include "row.h"

#include <array>
#include <chrono>
#include <ctime>

#if defined(QNLIB_BENCH_QT)
#include <QDateTime>
#include <QLocale>
#endif
#if defined(QNLIB_BENCH_ICU)
#include <unicode/ucal.h>
#include <unicode/udat.h>
#endif

namespace
{

constexpr std::size_t Count = 256;
constexpr std::time_t First = 1000000000;
constexpr std::time_t Step = 7654321;

/// Moments of some sixty years, each used once in turn, so that no branch is learnt by heart.
template <class Value>
class Turn
{
public:
    template <class Make>
    explicit Turn(Make make)
    {
        for (std::size_t i = 0; i < Count; ++i)
            m_Values[i] = make(First + static_cast<std::time_t>(i) * Step);
    }

    const Value& Next() { return m_Values[m_nNext++ % Count]; }

private:
    std::array<Value, Count> m_Values;
    std::size_t m_nNext = 0;
};

std::tm to_Fields(std::time_t nTime)
{
    std::tm Fields{};
    gmtime_r(&nTime, &Fields);
    return Fields;
}

#if defined(QNLIB_BENCH_ICU)
/// A calendar or format that stays open, as its users keep them.
UCalendar* open_Calendar()
{
    UErrorCode error = U_ZERO_ERROR;
    return ucal_open(u"UTC", -1, "en_US", UCAL_GREGORIAN, &error);
}

UDateFormat* open_Format()
{
    UErrorCode error = U_ZERO_ERROR;
    return udat_open(UDAT_MEDIUM, UDAT_SHORT, "en_US", u"UTC", -1, nullptr, 0, &error);
}
#endif

/// The aims: within twice the time of the C++ library's calendar, and ahead of all others.
void add_Marks(const Row& row)
{
    row.Mark_Against("C++ library", 0.5);
    for (const char* pWho : {"gmtime_r", "timegm", "Qt", "ICU"})
        row.Mark_Against(pWho, 1.0);
}

void add_Break_Down()
{
    Row row("break a date down into its fields", 0);
    add_Marks(row);
    row.Add(Row::Ours,
            [turn = Turn<Lib_DateTime>([](std::time_t nTime) { return Lib_DateTime(nTime); })]() mutable
            {
                std::tm Fields{};
                turn.Next().To_tm(Fields);
                return Fields;
            });
    row.Add("C++ library",
            [turn = Turn<std::time_t>([](std::time_t nTime) { return nTime; })]() mutable
            {
                using namespace std::chrono;
                const sys_seconds Time{seconds(turn.Next())};
                const auto Day = floor<days>(Time);
                const year_month_day Date(Day);
                const hh_mm_ss Clock(Time - Day);
                std::tm Fields{};
                Fields.tm_year = static_cast<int>(Date.year()) - 1900;
                Fields.tm_mon = static_cast<int>(static_cast<unsigned>(Date.month())) - 1;
                Fields.tm_mday = static_cast<int>(static_cast<unsigned>(Date.day()));
                Fields.tm_wday = static_cast<int>(weekday(Day).c_encoding());
                Fields.tm_yday = static_cast<int>((Day - sys_days(Date.year() / January / 1)).count());
                Fields.tm_hour = static_cast<int>(Clock.hours().count());
                Fields.tm_min = static_cast<int>(Clock.minutes().count());
                Fields.tm_sec = static_cast<int>(Clock.seconds().count());
                return Fields;
            });
    row.Add("gmtime_r", [turn = Turn<std::time_t>([](std::time_t nTime) { return nTime; })]() mutable
            { return to_Fields(turn.Next()); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [turn = Turn<QDateTime>([](std::time_t nTime)
                                    { return QDateTime::fromSecsSinceEpoch(nTime, Qt::UTC); })]() mutable
            {
                const QDateTime& When = turn.Next();
                const QDate Date = When.date();
                const QTime Time = When.time();
                std::tm Fields{};
                Date.getDate(&Fields.tm_year, &Fields.tm_mon, &Fields.tm_mday);
                Fields.tm_wday = Date.dayOfWeek();
                Fields.tm_yday = Date.dayOfYear();
                Fields.tm_hour = Time.hour();
                Fields.tm_min = Time.minute();
                Fields.tm_sec = Time.second();
                return Fields;
            });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [pCalendar = open_Calendar(),
             turn = Turn<std::time_t>([](std::time_t nTime) { return nTime; })]() mutable
            {
                UErrorCode error = U_ZERO_ERROR;
                ucal_setMillis(pCalendar, static_cast<double>(turn.Next()) * 1000, &error);
                std::tm Fields{};
                Fields.tm_year = ucal_get(pCalendar, UCAL_YEAR, &error);
                Fields.tm_mon = ucal_get(pCalendar, UCAL_MONTH, &error);
                Fields.tm_mday = ucal_get(pCalendar, UCAL_DAY_OF_MONTH, &error);
                Fields.tm_wday = ucal_get(pCalendar, UCAL_DAY_OF_WEEK, &error);
                Fields.tm_yday = ucal_get(pCalendar, UCAL_DAY_OF_YEAR, &error);
                Fields.tm_hour = ucal_get(pCalendar, UCAL_HOUR_OF_DAY, &error);
                Fields.tm_min = ucal_get(pCalendar, UCAL_MINUTE, &error);
                Fields.tm_sec = ucal_get(pCalendar, UCAL_SECOND, &error);
                return Fields;
            });
#endif
}

void add_Set()
{
    Row row("set a date by its fields", 0);
    add_Marks(row);
    row.Add(Row::Ours,
            [turn = Turn<std::tm>(to_Fields)]() mutable
            {
                const std::tm& Fields = turn.Next();
                Lib_DateTime When;
                When.Set_Date_Time(Fields.tm_year + 1900, Fields.tm_mon + 1, Fields.tm_mday, Fields.tm_hour,
                                   Fields.tm_min, Fields.tm_sec);
                return When;
            });
    row.Add("C++ library",
            [turn = Turn<std::tm>(to_Fields)]() mutable
            {
                using namespace std::chrono;
                const std::tm& Fields = turn.Next();
                const year_month_day Date(year(Fields.tm_year + 1900),
                                          month(static_cast<unsigned>(Fields.tm_mon + 1)),
                                          day(static_cast<unsigned>(Fields.tm_mday)));
                sys_seconds Time{};
                if (Date.ok())
                    Time = sys_days(Date) + hours(Fields.tm_hour) + minutes(Fields.tm_min) +
                           seconds(Fields.tm_sec);
                return Time;
            });
    row.Add("timegm",
            [turn = Turn<std::tm>(to_Fields)]() mutable
            {
                std::tm Fields = turn.Next();
                return timegm(&Fields);
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [turn = Turn<std::tm>(to_Fields)]() mutable
            {
                const std::tm& Fields = turn.Next();
                return QDateTime(QDate(Fields.tm_year + 1900, Fields.tm_mon + 1, Fields.tm_mday),
                                 QTime(Fields.tm_hour, Fields.tm_min, Fields.tm_sec), Qt::UTC);
            });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [pCalendar = open_Calendar(), turn = Turn<std::tm>(to_Fields)]() mutable
            {
                const std::tm& Fields = turn.Next();
                UErrorCode error = U_ZERO_ERROR;
                ucal_setDateTime(pCalendar, Fields.tm_year + 1900, Fields.tm_mon, Fields.tm_mday,
                                 Fields.tm_hour, Fields.tm_min, Fields.tm_sec, &error);
                return ucal_getMillis(pCalendar, &error);
            });
#endif
}

void add_Current()
{
    Row row("the current time", 0); // no aim: most of it is the reading of the clock
    row.Add(Row::Ours, [] { return Lib_DateTime::Get_Current(); });
    row.Add("gmtime_r",
            []
            {
                // std::time reads a coarser clock than all the others here.
                timespec Now{};
                clock_gettime(CLOCK_REALTIME, &Now);
                return to_Fields(Now.tv_sec);
            });
    row.Add("C++ library",
            []
            {
                const auto Time = std::chrono::system_clock::now();
                return std::pair(std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(Time)),
                                 Time);
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [] { return QDateTime::currentDateTimeUtc(); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add("ICU",
            [pCalendar = open_Calendar()]
            {
                UErrorCode error = U_ZERO_ERROR;
                ucal_setMillis(pCalendar, ucal_getNow(), &error);
                return ucal_get(pCalendar, UCAL_YEAR, &error);
            });
#endif
}

void add_Format()
{
    Row row("write a date and time, short form", 1.0);
    row.Add(Row::Ours,
            [turn = Turn<Lib_DateTime>([](std::time_t nTime) { return Lib_DateTime(nTime); })]() mutable
            { return turn.Next().Format(0, 0x409, false); });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt",
            [locale = QLocale(QLocale::English, QLocale::UnitedStates),
             turn = Turn<QDateTime>([](std::time_t nTime)
                                    { return QDateTime::fromSecsSinceEpoch(nTime, Qt::UTC); })]() mutable
            { return locale.toString(turn.Next(), QStringLiteral("M/d/yyyy h:mm:ss AP")); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add(
        "ICU",
        [pFormat = open_Format(), turn = Turn<std::time_t>([](std::time_t nTime) { return nTime; })]() mutable
        {
            UErrorCode error = U_ZERO_ERROR;
            std::array<char16_t, 64> Text;
            const int32_t nLength = udat_format(pFormat, static_cast<double>(turn.Next()) * 1000, Text.data(),
                                                static_cast<int32_t>(Text.size()), nullptr, &error);
            return std::u16string(Text.data(), static_cast<std::size_t>(nLength));
        });
#endif
}

void add_Parse()
{
    Row row("read a date and time", 1.0);
    row.Add(Row::Ours,
            [turn = Turn<Lib_String>([](std::time_t nTime)
                                     { return Lib_DateTime(nTime).Format(0, 0x409, false); })]() mutable
            {
                Lib_DateTime When;
                When.Parse_Date_Time(turn.Next(), 0, 0x409, false);
                return When;
            });
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [locale = QLocale(QLocale::English, QLocale::UnitedStates),
                   turn = Turn<QString>(
                       [](std::time_t nTime)
                       {
                           return QLocale(QLocale::English, QLocale::UnitedStates)
                               .toString(QDateTime::fromSecsSinceEpoch(nTime, Qt::UTC),
                                         QStringLiteral("M/d/yyyy h:mm:ss AP"));
                       })]() mutable
            { return locale.toDateTime(turn.Next(), QStringLiteral("M/d/yyyy h:mm:ss AP")); });
#endif
#if defined(QNLIB_BENCH_ICU)
    row.Add(
        "ICU",
        [pFormat = open_Format(),
         turn = Turn<std::u16string>(
             [pWriter = open_Format()](std::time_t nTime)
             {
                 UErrorCode error = U_ZERO_ERROR;
                 std::array<char16_t, 64> Text;
                 const int32_t nLength = udat_format(pWriter, static_cast<double>(nTime) * 1000, Text.data(),
                                                     static_cast<int32_t>(Text.size()), nullptr, &error);
                 return std::u16string(Text.data(), static_cast<std::size_t>(nLength));
             })]() mutable
        {
            const std::u16string& strText = turn.Next();
            UErrorCode error = U_ZERO_ERROR;
            return udat_parse(pFormat, strText.data(), static_cast<int32_t>(strText.size()), nullptr, &error);
        });
#endif
}

} // namespace

void Add_Date_Rows()
{
    add_Break_Down();
    add_Set();
    add_Current();
    add_Format();
    add_Parse();
}
