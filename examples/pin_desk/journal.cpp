#include "journal.h"

#include "text_output.h"

#include <lib_datetime.h>
#include <lib_services.h>
#include <stdexcept>

namespace
{

/// One form for all, whatever locale a desk prints in.
Lib_String write_Time(const Lib_DateTime& When)
{
    Lib_String strText;
    strText.Format(L"%04d-%02d-%02dT%02d:%02d:%02dZ", When.Get_Year(), When.Get_Month(), When.Get_Day(),
                   When.Get_Hour(), When.Get_Minute(), When.Get_Second());
    return strText;
}

} // namespace

Journal::Journal() : m_pFile(Open_For_Appending(createPinCacheDirectory() + L"\\pin_desk.journal"))
{
    if (m_pFile == nullptr)
        throw std::runtime_error("the journal cannot be opened");
    std::setvbuf(m_pFile.get(), nullptr, _IONBF, 0); // so a line is one write
}

bool Journal::Add(const Lib_String& strLine)
{
    Lib_Buffer Line = To_Utf8(write_Time(Lib_DateTime::Get_Current()) + L" " + strLine);
    Line.Append("\n", 1);
    const auto nSize = static_cast<std::size_t>(Line.Get_Size());
    return std::fwrite(Line.Get_Ptr(), 1, nSize, m_pFile.get()) == nSize;
}
