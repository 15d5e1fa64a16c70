#ifndef QNLIB_SRC_DATETIME_ZONES_H
#define QNLIB_SRC_DATETIME_ZONES_H

namespace qn_calendar
{

/// The local time of a value. False, with nothing written, for a value that the platform refuses, such as one
/// before 1601.
bool Find_Local(double dtValue, double& dtLocal);

} // namespace qn_calendar

#endif
