#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_PLACE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_STORE_PLACE_H

#include "platform/types.h"

#include <string>

#include <sys/types.h>

namespace qn_advapi32
{

using qn_platform::DWORD;

/// Where a store lies, who may read it, and how the way there is made.
class Store_Place
{
public:
    /// The user's: qnlib/ in his data folder, readable by him alone. Without a home the folder is empty.
    static Store_Place User();

    /// The machine's, written by its owner and readable by everybody.
    static Store_Place Machine();

    /// No place: a store that is nowhere and cannot be written.
    static Store_Place Nowhere() { return {}; }

    bool Is_Nowhere() const { return m_bNowhere; }
    const std::string& Get_File() const { return m_strFile; }

    /// Whether there is a file now: 0, 2 if not, 3 without a home, 5 when one may not look.
    DWORD Find() const;

    /// Makes folders and an empty file as far as they are missing.
    DWORD Make() const;

    /// Whether this user may write the store, or make it: 0 or 5, 19, 3.
    DWORD Check_Writable() const;

private:
    Store_Place() = default;
    Store_Place(const std::string& folder, mode_t folder_mode, mode_t file_mode);

    bool m_bNowhere = true;
    std::string m_strFolder;
    std::string m_strFile;
    mode_t m_nFolder_Mode = 0;
    mode_t m_nFile_Mode = 0;
};

} // namespace qn_advapi32

#endif
