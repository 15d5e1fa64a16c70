# Doxygen's input filter: puts the .inl parts of a class body where the header includes them.
/^#include ".*\.inl"/ {
    split($0, quoted, "\"")
    part = "include/" quoted[2]
    while ((getline line < part) > 0) print line
    close(part)
    next
}
{ print }
