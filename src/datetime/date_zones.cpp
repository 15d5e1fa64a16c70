#include "datetime/date_time.h"

// Between the value and the platform's forms of a time, by which zones are changed.

namespace
{

using Convert_Zone = decltype(&FileTimeToLocalFileTime);

bool to_File_Time(double dtValue, FILETIME& Result)
{
    SYSTEMTIME Fields{};
    return VariantTimeToSystemTime(dtValue, &Fields) && SystemTimeToFileTime(&Fields, &Result);
}

double change_Zone(double dtValue, Convert_Zone convert)
{
    FILETIME From{};
    FILETIME To{};
    SYSTEMTIME Fields{};
    double dtResult = 0.0;
    const bool bDone = to_File_Time(dtValue, From) && convert(&From, &To) &&
                       FileTimeToSystemTime(&To, &Fields) && SystemTimeToVariantTime(&Fields, &dtResult);
    return bDone ? dtResult : 0.0;
}

} // namespace

Lib_DateTime::operator _FILETIME() const
{
    FILETIME Result{};
    return to_File_Time(m_dtValue, Result) ? Result : FILETIME{};
}

double Lib_DateTime::to_Local(double dtValue) { return change_Zone(dtValue, FileTimeToLocalFileTime); }

double Lib_DateTime::to_System(double dtValue) { return change_Zone(dtValue, LocalFileTimeToFileTime); }
