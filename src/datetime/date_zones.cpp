#include "datetime/date_time.h"

#include "datetime/zones.h"

// Between the value and the platform's forms of a time, by which zones are changed.

namespace
{

using Convert_Zone = decltype(&FileTimeToLocalFileTime);

bool to_File_Time(double dtValue, FILETIME& Result)
{
    SYSTEMTIME Fields{};
    return VariantTimeToSystemTime(dtValue, &Fields) && SystemTimeToFileTime(&Fields, &Result);
}

bool change_Zone(double dtValue, Convert_Zone convert, double& dtResult)
{
    FILETIME From{};
    FILETIME To{};
    SYSTEMTIME Fields{};
    return to_File_Time(dtValue, From) && convert(&From, &To) && FileTimeToSystemTime(&To, &Fields) &&
           SystemTimeToVariantTime(&Fields, &dtResult);
}

} // namespace

Lib_DateTime::operator _FILETIME() const
{
    FILETIME Result{};
    return to_File_Time(m_dtValue, Result) ? Result : FILETIME{};
}

bool qn_calendar::Find_Local(double dtValue, double& dtLocal)
{
    return change_Zone(dtValue, FileTimeToLocalFileTime, dtLocal);
}

double Lib_DateTime::to_Local(double dtValue)
{
    double dtResult = 0.0;
    return qn_calendar::Find_Local(dtValue, dtResult) ? dtResult : 0.0;
}

double Lib_DateTime::to_System(double dtValue)
{
    double dtResult = 0.0;
    return change_Zone(dtValue, LocalFileTimeToFileTime, dtResult) ? dtResult : 0.0;
}
