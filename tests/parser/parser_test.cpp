#include "lib_parser.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace
{

/// An argument vector as a program receives it, with the program's name in front.
class Arguments
{
public:
    Arguments(std::initializer_list<const wchar_t*> texts)
    {
        m_Texts.push_back(L"-number");
        m_Texts.insert(m_Texts.end(), texts.begin(), texts.end());
        for (Lib_String& strText : m_Texts)
        {
            m_Pointers.push_back(strText.Get_Buffer(0));
        }
    }
    int Count() const { return static_cast<int>(m_Pointers.size()); }
    wchar_t** Vector() { return m_Pointers.data(); }

private:
    std::vector<Lib_String> m_Texts;
    std::vector<wchar_t*> m_Pointers;
};

std::uintptr_t Number(const Lib_Parser_Param& param)
{
    return reinterpret_cast<std::uintptr_t>(param.Get_Param());
}

const Lib_String& Text(const Lib_Parser_Param& param) { return *static_cast<Lib_String*>(param.Get_Param()); }

class Parser : public testing::Test
{
protected:
    bool Parse(std::initializer_list<const wchar_t*> texts)
    {
        Arguments arguments(texts);
        return Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), 4, &m_Number, &m_Text, &m_Flag,
                                        &m_Bytes);
    }

    Lib_Parser_Param m_Number{L"-number", PARAM_TYPE_DWORD, L"7", L"n", L"A number", true};
    Lib_Parser_Param m_Text{L"/Text", PARAM_TYPE_STRING, L"none", L"", L"A text", true};
    Lib_Parser_Param m_Flag{L"-f", PARAM_TYPE_FLAG, L"", L"", L"A flag", true};
    Lib_Parser_Param m_Bytes{L"bytes", PARAM_TYPE_HEX_BYTES, L"", L"hex", L"Bytes", true};
    Lib_Parser_Param m_Required{L"-key", PARAM_TYPE_STRING, L"x", L"key", L"A key", false};
};

/// What a help call writes to standard output, without the carriage returns of a text stream.
template <class... Params>
std::string Help(int nParams, Params... params)
{
    testing::internal::CaptureStdout();
    Lib_Parser::Print_Help(nParams, params...);
    std::string text = testing::internal::GetCapturedStdout();
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

std::string Program_Name()
{
    const std::string path = testing::internal::GetArgvs()[0];
    return path.substr(path.find_last_of("/\\") + 1);
}

} // namespace

TEST_F(Parser, Loads_The_Defaults_Without_Arguments)
{
    for (int nCount : {-1, 0, 1})
    {
        EXPECT_TRUE(Lib_Parser::Parse_Params(nCount, nullptr, 2, &m_Number, &m_Text));
        EXPECT_EQ(7U, Number(m_Number));
        EXPECT_TEXT_EQ(L"none", Text(m_Text));
        EXPECT_FALSE(m_Number.Is_Set() || m_Text.Is_Set());
        EXPECT_FALSE(Lib_Parser::Parse_Params(nCount, nullptr, 2, &m_Number, &m_Required));
    }
    EXPECT_TRUE(Parse({})) << "the program's own name is no argument";
    EXPECT_EQ(7U, Number(m_Number));
}

TEST_F(Parser, Reads_Every_Kind_Of_Parameter)
{
    EXPECT_TRUE(Parse({L"-NUMBER", L"0x1F", L"-F", L"/tEXT", L"Mixed Case", L"bytes", L"0aFF"}));
    EXPECT_EQ(31U, Number(m_Number));
    EXPECT_TEXT_EQ(L"Mixed Case", Text(m_Text));
    EXPECT_TRUE(static_cast<Lib_Buffer*>(m_Bytes.Get_Param())->Is_Equals("\x0a\xff", 2));
    EXPECT_TRUE(m_Number.Is_Set() && m_Text.Is_Set() && m_Flag.Is_Set() && m_Bytes.Is_Set());
}

TEST_F(Parser, Takes_A_Value_Whatever_It_Looks_Like)
{
    EXPECT_TRUE(Parse({L"-f"}));
    EXPECT_TRUE(Parse({L"/text", L"-f"}));
    EXPECT_TEXT_EQ(L"-f", Text(m_Text));
    EXPECT_FALSE(m_Flag.Is_Set());
    EXPECT_EQ(1U, Number(m_Flag)) << "a flag keeps its value from one command line to the next";
    EXPECT_TRUE(Parse({L"/text", L"", L"-number", L"1", L"-number", L"2"}));
    EXPECT_TRUE(Text(m_Text).Is_Empty());
    EXPECT_EQ(2U, Number(m_Number)) << "the later value counts";
}

TEST_F(Parser, Stops_At_An_Unknown_Argument)
{
    for (const wchar_t* pUnknown : {L"-numbe", L"-number=3", L""})
    {
        EXPECT_FALSE(Parse({L"-f", L"-number", L"5", pUnknown, L"/text", L"late"}));
        EXPECT_EQ(5U, Number(m_Number));
        EXPECT_TRUE(m_Flag.Is_Set());
        EXPECT_TEXT_EQ(L"none", Text(m_Text));
    }
}

TEST_F(Parser, Fails_For_A_Required_Parameter_Only)
{
    EXPECT_TRUE(Parse({L"-f", L"-number"})) << "the value of an optional one may be missing at the end";
    EXPECT_FALSE(m_Number.Is_Set());
    EXPECT_EQ(7U, Number(m_Number));

    Arguments missing({L"-f", L"-key"}), given({L"-key", L"-key"});
    EXPECT_FALSE(Lib_Parser::Parse_Params(missing.Count(), missing.Vector(), 2, &m_Required, &m_Flag));
    EXPECT_TRUE(Lib_Parser::Parse_Params(given.Count(), given.Vector(), 2, &m_Flag, &m_Required));
    EXPECT_TEXT_EQ(L"-key", Text(m_Required));
}

TEST_F(Parser, Serves_All_Parameters_Of_One_Name_And_Ends)
{
    Lib_Parser_Param second(L"-F", PARAM_TYPE_FLAG, L"", L"", L"", true);
    Lib_Parser_Param other_text(L"/TEXT", PARAM_TYPE_STRING, L"", L"", L"", true);
    Arguments arguments({L"-f", L"/text", L"both"});
    EXPECT_TRUE(Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), 4, &m_Flag, &second, &m_Text,
                                         &other_text));
    EXPECT_TRUE(m_Flag.Is_Set() && second.Is_Set());
    EXPECT_TEXT_EQ(L"both", Text(m_Text));
    EXPECT_TEXT_EQ(L"both", Text(other_text));
}

TEST_F(Parser, Passes_Over_What_Is_Null)
{
    Lib_Parser_Param* pNone = nullptr;
    Arguments arguments({L"-number", L"3", L"-f"});
    EXPECT_TRUE(
        Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), 4, pNone, &m_Number, pNone, &m_Flag));
    EXPECT_EQ(3U, Number(m_Number));
    arguments.Vector()[2] = nullptr;
    EXPECT_TRUE(Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), 2, &m_Number, &m_Flag));
    EXPECT_EQ(0U, Number(m_Number)) << "a null value counts as an empty text";
    arguments.Vector()[1] = nullptr;
    EXPECT_FALSE(Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), 2, &m_Number, &m_Flag));
    EXPECT_TRUE(Lib_Parser::Parse_Params(arguments.Count(), nullptr, 1, &m_Number));
    EXPECT_FALSE(Lib_Parser::Parse_Params(arguments.Count(), arguments.Vector(), -1));
    EXPECT_EQ(Help(0), Help(-1));
    EXPECT_EQ(Help(1, &m_Flag), Help(2, pNone, &m_Flag));
}

TEST_F(Parser, Prints_The_Usage_Three_Parameters_A_Line_And_Every_Text_Literally)
{
    // The runtime of Windows cannot write the euro sign in the "C" locale.
    const bool bEuro = !test_support::Windows_Target;
    Lib_Parser_Param percent(L"-%s", PARAM_TYPE_STRING, L"%d", L"%n", bEuro ? L"100% of \x20ac" : L"100% of",
                             true);
    const std::string start = "Usage:\n" + Program_Name();
    EXPECT_EQ(start + "\n\n", Help(0));
    EXPECT_EQ(start +
                  " [-number <n>] [-f] -key <key>\n\t [-%s <%n>]\n\n"
                  "-number\t- A number. Default value is \"7\".\n"
                  "-f\t- A flag.\n"
                  "-key\t- A key. This parameter is not optional. No default value is available.\n"
                  "-%s\t- 100% of" +
                  (bEuro ? " \xe2\x82\xac" : "") + ". Default value is \"%d\".\n",
              Help(4, &m_Number, &m_Flag, &m_Required, &percent));
    EXPECT_EQ(std::string::npos, Help(3, &m_Number, &m_Flag, &m_Required).find("\t ["));
}
