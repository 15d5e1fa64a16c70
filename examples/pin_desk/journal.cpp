#include "journal.h"

#include "text_output.h"

#include <lib_datetime.h>
#include <lib_services.h>
#include <stdexcept>
#include <string>

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

/// A desk that was ended in the middle of a line has left a part of it.
bool ends_Within_Line(std::FILE* pFile)
{
    return std::fseek(pFile, -1, SEEK_END) == 0 && std::fgetc(pFile) != '\n';
}

} // namespace

Journal::Journal()
{
    Lib_String strPath = pinCacheDirectory() + L"\\pin_desk.journal";
    try
    {
        createPinCacheDirectory();
        m_pFile.reset(Open_For_Appending(strPath));
    }
    catch (const std::runtime_error&)
    {
        // Without the directory there is no file, as is told below.
    }
    if (m_pFile == nullptr)
    {
        strPath.Replace(L'\\', L'/'); // both systems take that
        Lib_Buffer Text = To_Utf8(L"the journal " + strPath + L" cannot be opened");
        throw std::runtime_error(
            std::string(static_cast<const char*>(Text.Get_Ptr()), static_cast<std::size_t>(Text.Get_Size())));
    }
    std::setvbuf(m_pFile.get(), nullptr, _IONBF, 0); // so a line is one write
}

bool Journal::Add(const Lib_String& strLine)
{
    const wchar_t* pStart = ends_Within_Line(m_pFile.get()) ? L"\n" : L"";
    Lib_Buffer Line = To_Utf8(pStart + write_Time(Lib_DateTime::Get_Current()) + L" " + strLine + L"\n");
    const auto nSize = static_cast<std::size_t>(Line.Get_Size());
    return std::fseek(m_pFile.get(), 0, SEEK_END) == 0 &&
           std::fwrite(Line.Get_Ptr(), 1, nSize, m_pFile.get()) == nSize;
}
