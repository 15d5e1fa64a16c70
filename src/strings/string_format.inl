// Formatting of Lib_StringA and Lib_StringW, compiled once for each width: String names the class, Char its
// character type, print_Bounded the formatter of its width.

void String::Format(const Char* pFormat, ...)
{
    std::va_list arguments;
    va_start(arguments, pFormat);
    const End_Of_Arguments end{arguments};
    FormatV(pFormat, arguments);
}

void String::FormatV(const Char* pFormat, std::va_list arguments)
{
    if (pFormat == nullptr)
    {
        Empty();
        return;
    }
    const unsigned long long nMax_Length = Format_Estimate<Char>(pFormat, arguments).Compute();
    Char* pBuffer = Get_Buffer(nMax_Length);
    if (get_Data() != &s_Empty.m_Header)
        print_Bounded(pBuffer, nMax_Length + 1, pFormat, arguments);
    Release_Buffer();
}
