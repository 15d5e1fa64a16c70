#ifndef QNLIB_FOUNDATION_LIB_RESULT_H
#define QNLIB_FOUNDATION_LIB_RESULT_H

#include "lib_api.h"
#include "strings/lib_string.h"

/// The record of a failure: a code, the source that says whose numbering the code belongs to, and a number
/// and a text for the caller's own use. A caller makes one, passes it to operations, and reads it when one of
/// them reports a failure: operations write to it only when one of their steps fails, and neither clear it
/// before nor after, so the result of the operation decides whether to look at it.
///
/// | source | the code is                                            | its text comes from       |
/// |--------|--------------------------------------------------------|---------------------------|
/// | 0      | none: a new or reset object                            | nowhere: it is empty      |
/// | 1      | the platform's: of GetLastError, or an HRESULT          | the platform              |
/// | 2      | one of the sibling module qnErr                         | that module               |
/// | others | not known                                              | nowhere: it is empty      |
///
/// One object is for one thread. What copies a string may throw std::bad_alloc; nothing else fails.
class LIB_API Lib_Result
{
public:
    /// All numbers 0, the text empty.
    Lib_Result() noexcept = default;
    Lib_Result(unsigned int nCode, unsigned int nSource) noexcept;
    Lib_Result(const Lib_Result& source) = default;
    virtual ~Lib_Result();

    Lib_Result& operator=(const Lib_Result& source);

    /// Source and code decide; additional info and error info play no part.
    bool operator==(const Lib_Result& other) const noexcept;
    bool operator!=(const Lib_Result& other) const noexcept { return !(*this == other); }

    /// Whether the code is 0, whatever the source.
    bool Is_Success() const noexcept { return m_dwResult_Code == 0; }

    unsigned int Get_Result_Code() const noexcept { return m_dwResult_Code; }
    unsigned int Get_Result_Source() const noexcept { return m_dwResult_Source; }
    void Get_Result(unsigned int& nCode, unsigned int& nSource) const noexcept;

    /// The caller's own number and text, which the library neither sets nor reads.
    unsigned int Get_Additional_Info() const noexcept { return m_dwAdditional_Info; }
    Lib_String Get_Error_Info() const { return m_strError_Info; }

    /// The message of the code in a language (a LANGID; 0 leaves the choice to the platform), with the line
    /// end that the message has. Empty for a code or language that its source does not know and for a message
    /// that has inserts. Each call for source 2 loads and frees the module qnErr; where that is missing, the
    /// program's own messages are asked. The platform's last error may change.
    Lib_String Get_Result_Text(unsigned int nLanguage) const;

    /// Sets both; additional info and error info stay.
    void Set_Result(unsigned int nCode, unsigned int nSource) noexcept;
    void Set_Result_Code(unsigned int nCode) noexcept { m_dwResult_Code = nCode; }
    void Set_Result_Source(unsigned int nSource) noexcept { m_dwResult_Source = nSource; }
    void Set_Additional_Info(unsigned int nInfo) noexcept { m_dwAdditional_Info = nInfo; }
    /// A text that is locked is copied, and if memory is short for that the error info is empty.
    void Set_Error_Info(const Lib_String& strInfo) { m_strError_Info = strInfo; }

    /// Sets source and code to 0; additional info and error info stay.
    void Reset_Result() noexcept { Set_Result(0, 0); }

private:
    unsigned int m_dwResult_Source = 0;
    unsigned int m_dwResult_Code = 0;
    unsigned int m_dwAdditional_Info = 0;
    Lib_String m_strError_Info;
};

#endif
