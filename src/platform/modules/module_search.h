#ifndef QNLIB_SRC_PLATFORM_MODULES_MODULE_SEARCH_H
#define QNLIB_SRC_PLATFORM_MODULES_MODULE_SEARCH_H

#include "platform/types.h"

#include <string>
#include <vector>

// How the platform's name of a module finds a shared object. docs/modules.md tells it to users.

namespace qn_platform
{

/// A module's name as a caller gives it, in UTF-8 and with slashes.
struct Module_Name
{
    std::string m_Folder; ///< up to and with the last slash; empty for a plain name
    std::string m_Base;   ///< behind it, without ".dll" or a dot at the end
    bool m_bWhole; ///< the base is a whole file name: the name ended with a dot, ".so" or ".so.<version>"
};

/// Throws std::bad_alloc. A text that UTF-8 cannot express gives an empty name, which no module has.
Module_Name Read_Module_Name(LPCWSTR text);

/// What to hand to the loader for a name, in this order. An entry without a slash is for the loader's own
/// search.
std::vector<std::string> Module_Candidates(const Module_Name& name);

/// The first loaded module of that name, without regard to ASCII case; null if there is none.
HMODULE Find_Loaded_Module(const Module_Name& name);

} // namespace qn_platform

#endif
