#include "fuzz_input.h"
#include "lib_platform.h"
#include "protected_probe.h"

#include <cstring>
#include <string>

// Damaged images: any bytes as an image, as a deciphered image, and a good image with some bytes changed, all
// through the operations for derived classes. And a run of operations against a plain model.

using namespace test_support;

namespace
{

/// What a deciphered image holds, if anything.
std::string extract_Model(const std::string& strImage, const std::string& strBefore)
{
    unsigned long long nLength = 0;
    if (strImage.size() < sizeof(nLength))
        return strBefore;
    std::memcpy(&nLength, strImage.data(), sizeof(nLength));
    return nLength <= strImage.size() - sizeof(nLength) ? strImage.substr(sizeof(nLength), nLength)
                                                        : strBefore;
}

void check_Deciphered(const std::string& strImage)
{
    Lib_Buffer Plain = To_Buffer("before");
    Open_Buffer::st_Extract_Data_From_Deciphered_Buffer(To_Buffer(strImage), Plain);
    FUZZ_CHECK(To_Text(Plain) == extract_Model(strImage, "before"));
}

void check_Image(const std::string& strImage)
{
    Lib_Buffer Plain = To_Buffer("before");
    Open_Buffer::st_Decipher_Data(To_Buffer(strImage), Plain);
    std::string strExpected = "before";
    if (strImage.empty())
        strExpected.clear();
    else if (strImage.size() % 16 == 0)
    {
        std::string strCopy = strImage;
        FUZZ_CHECK(CryptUnprotectMemory(strCopy.data(), static_cast<DWORD>(strCopy.size()), 0));
        strExpected = extract_Model(strCopy, "before");
    }
    FUZZ_CHECK(To_Text(Plain) == strExpected);

    Open_Buffer Object;
    Object.m_Image = To_Buffer(strImage);
    Object.Append("tail", 4);
    Object.Make_Reverse();
    const Lib_Buffer Content(Object);
    FUZZ_CHECK(Content.Get_Size() == 0 || Object == Content);
}

/// A deciphered image, a good one but for its length, is as good as what it holds.
void check_Enciphered(std::string strImage)
{
    strImage.resize(strImage.size() / 16 * 16);
    std::string strTurned = strImage;
    FUZZ_CHECK(strTurned.empty() ||
               CryptProtectMemory(strTurned.data(), static_cast<DWORD>(strTurned.size()), 0));
    Lib_Buffer Plain = To_Buffer("before");
    Open_Buffer::st_Decipher_Data(To_Buffer(strTurned), Plain);
    FUZZ_CHECK(To_Text(Plain) == (strImage.empty() ? "" : extract_Model(strImage, "before")));
}

void check_Operations(Fuzz_Input& Input)
{
    Open_Buffer Object;
    std::string strModel;
    while (Input.Get_Left() != 0 && strModel.size() < 4096)
    {
        const unsigned int nOperation = Input.Take_Choice(7);
        std::string strPart(Input.Take_Choice(64), '\0');
        for (char& byte : strPart)
            byte = static_cast<char>(Input.Take_Byte());
        switch (nOperation)
        {
        case 0:
            Object = To_Buffer(strPart);
            strModel = strPart;
            break;
        case 1:
            Object.Attach_Copy(strPart.data(), strPart.size());
            strModel = strPart;
            break;
        case 2:
            Object.Make_Reverse();
            strModel.assign(std::string(strModel.rbegin(), strModel.rend()));
            break;
        case 3:
            Object = Open_Buffer(Object);
            break;
        default:
            Object.Append(strPart.data(), strPart.size());
            strModel += strPart;
        }
        FUZZ_CHECK(To_Text(Object) == strModel);
        FUZZ_CHECK(Object.m_Image.Get_Size() ==
                   (strModel.empty() ? 0 : (strModel.size() + 8 + 15) / 16 * 16));
        FUZZ_CHECK((Object < To_Buffer(strPart)) == (To_Buffer(strModel) < To_Buffer(strPart)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const unsigned int nWay = Input.Take_Choice(4);
    const std::string strRest(reinterpret_cast<const char*>(Input.Get_Data()), Input.Get_Left());
    switch (nWay)
    {
    case 0:
        check_Deciphered(strRest);
        break;
    case 1:
        check_Image(strRest);
        break;
    case 2:
        check_Enciphered(strRest);
        break;
    default:
        check_Operations(Input);
    }
    return 0;
}
