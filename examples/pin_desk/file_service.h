#ifndef PIN_DESK_FILE_SERVICE_H
#define PIN_DESK_FILE_SERVICE_H

#include "byte_source.h"
#include "options.h"

/// Serves the requests of a file, up to the limit, and prints the report. Each client has a thread of his
/// own. Sessions are served side by side; within a session a request is not begun before the ones of other
/// clients that stand in front of it are answered. The report is in the file's order, and the same each time.
/// When a stop signal comes, no more lines are read, and the report is about those before. False when reading
/// fails.
bool Serve_File(Byte_Source& Source, const Options& options, const Desk_Rules& Rules);

#endif
