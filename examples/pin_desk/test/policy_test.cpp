// pin_desk_policy_test PROGRAM: the user's policy and journal, as his desks keep to them. Each test runs in a
// process and a home of its own: a process looks once where the store is.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <lib_services.h>
#include <regex>
#include <string>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const wchar_t* KEY = L"Software\\Vorel Co\\Quillon\\pin_desk";

std::string strProgram;
std::filesystem::path Home;
int nFaults = 0;

struct Result
{
    int m_nCode = -1;
    std::string m_strOutput;

    bool Has(const std::string& strText) const { return m_strOutput.find(strText) != std::string::npos; }
};

void expect(bool bRight, const std::string& strWhat, const std::string& strSeen = "")
{
    if (bRight)
        return;
    std::fprintf(stderr, "policy_test: not so: %s; seen: %s\n", strWhat.c_str(), strSeen.c_str());
    ++nFaults;
}

/// Runs shell commands in the home, where $P is the program.
Result run(const std::string& strCommands)
{
    Result result;
    std::FILE* pOutput = popen(("exec 2>&1; " + strCommands).c_str(), "r");
    if (pOutput == nullptr)
        return result;
    for (int ch = std::fgetc(pOutput); ch != EOF; ch = std::fgetc(pOutput))
        result.m_strOutput += static_cast<char>(ch);
    const int nStatus = pclose(pOutput);
    result.m_nCode = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 128;
    return result;
}

void expect_Run(const std::string& strCommands, int nCode, const std::string& strText)
{
    const Result result = run(strCommands);
    expect(result.m_nCode == nCode && result.Has(strText), strCommands + " says: " + strText,
           std::to_string(result.m_nCode) + " " + result.m_strOutput);
}

std::string read_File(const std::filesystem::path& path)
{
    std::ifstream File(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(File), {}};
}

bool is_Empty(const char* pFolder)
{
    return !std::filesystem::exists(Home / pFolder) || std::filesystem::is_empty(Home / pFolder);
}

// ---- The policy -------------------------------------------------------------------------------------------

void test_Tries()
{
    expect_Run("$P -policy", 0, "Nothing is set.\n");
    expect_Run("$P -in requests", 0, "PIN wrong, 2 tries left");
    expect(is_Empty("data") && is_Empty("state"), "a plain run leaves nothing in the home");
    expect_Run("$P -set TRIES=1", 0, "tries = 1\n");
    unsigned long ulTries = 0;
    expect(Lib_Reg_Read_DWord(HKEY_CURRENT_USER, KEY, L"tries", ulTries, nullptr) && ulTries == 1,
           "the policy is in the registry");
    expect_Run("$P -in requests", 0, "PIN wrong, blocked");
    expect_Run("$P -in requests -tries 9", 0, "PIN wrong, 8 tries left");
    expect_Run("$P -set tries=99 && $P -set expire=999999 && $P -policy", 0, "expire = 999999\ntries = 99\n");
}

/// A desk on a socket, since all of a file is served at once.
void test_Expiry()
{
    const std::string strServe =
        ": >log; $P -serve s -journal OPTION >>log & "
        "while ! grep -q 'serves on' log; do sleep 0.05; done; "
        "{ echo op=store card=1 owner=A pin=7351; UNTIL; echo op=check card=1 pin=7351; } | $P -ask s; "
        "kill $!; wait $!";
    const auto with = [&](const char* pOption, const char* pUntil)
    {
        return std::regex_replace(std::regex_replace(strServe, std::regex("OPTION"), pOption),
                                  std::regex("UNTIL"), pUntil);
    };
    expect_Run("$P -set expire=1", 0, "expire = 1\n");
    expect_Run(with("", "while ! grep -q 'has expired' log; do sleep 0.05; done"), 0,
               "refused: the PIN has expired");
    expect_Run(with("-expire 0", "sleep 1.3"), 0, "done: PIN right");
    const std::string strJournal = read_File(Home / "state/Vorel Co/Quillon/pin_desk.journal");
    expect(strJournal.find("the PIN of 1 has expired\n") < strJournal.find("the PIN has expired\n") &&
               strJournal.find("the PIN has expired\n") < strJournal.find("PIN right\n") &&
               strJournal.find("PIN right\n") != std::string::npos &&
               strJournal.find("7351") == std::string::npos,
           "both desks have appended to the journal, without PINs", strJournal);
}

void test_Refusals()
{
    for (const char* pText :
         {"tries", "tries=", "tries=0", "tries=100", "tries=+3", "tries=1x", "tries=4294967299", "expire=-1",
          "expire=1000000", "=3", "colour=3", "tries=3=3"})
        expect_Run(std::string("$P -set ") + pText, 2,
                   "-set takes expire=0 to expire=999999, or tries=1 to tries=99.\n");
    expect_Run("$P -set", 2, "-set needs a value.\n");
    expect_Run("$P -policy -set tries=1", 2, "-set and -policy are two tasks.\n");
    expect_Run("$P -set tries=1 -set expire=1", 2, "-set is there twice, and sets one value a call.\n");
    expect(is_Empty("data"), "what is refused is not written");
}

void expect_Damage(const char* pWhat)
{
    const Result result = run("$P -in requests -tries 9");
    expect(result.m_nCode == 6 && result.Has("no good: tries is no number from 1 to 99.\n") &&
               !result.Has("stored"),
           pWhat, result.m_strOutput);
    expect_Run("$P -policy", 0, "tries is no number from 1 to 99\n");
}

void test_Damaged_Values()
{
    Lib_Reg_Write_DWord(HKEY_CURRENT_USER, KEY, L"tries", 100, nullptr);
    expect_Damage("a number out of range");
    unsigned char aBytes[8] = {2};
    for (const unsigned long nSize : {0UL, 3UL, 8UL})
    {
        Lib_Reg_Write(HKEY_CURRENT_USER, KEY, L"tries", REG_DWORD, nSize, aBytes, nullptr);
        expect_Damage("a number of another size");
    }
    Lib_Reg_Write(HKEY_CURRENT_USER, KEY, L"tries", REG_SZ, 4, aBytes, nullptr);
    expect_Damage("a text that has the size of a number");

    Lib_String strLong;
    for (int i = 0; i < 300; ++i)
        strLong += L"b";
    Lib_Reg_Write_DWord(HKEY_CURRENT_USER, KEY, L"a", 1, nullptr);
    Lib_Reg_Write_DWord(HKEY_CURRENT_USER, KEY, strLong, 1, nullptr);
    expect_Run("$P -set tries=2 && $P -policy", 0,
               "\"a\" is no setting of the desk\na value with a name that is too long\ntries = 2\n");
    expect_Run("$P -in requests", 0, "PIN wrong, 1 try left");
}

void test_Damaged_Store()
{
    std::filesystem::create_directories(Home / "data/qnlib");
    std::ofstream(Home / "data/qnlib/registry.db") << std::string(5000, 'x');
    expect_Run("$P -in requests", 6, "the user's policy is no good: it cannot be read: ");
    expect_Run("$P -serve s", 6, "the user's policy is no good: it cannot be read: ");
    expect_Run("$P -policy", 5, "The policy cannot be read: ");
    expect_Run("$P -set tries=1", 5, "The policy cannot be written: ");
    expect(read_File(Home / "data/qnlib/registry.db") == std::string(5000, 'x'), "the file is left alone");
}

// ---- The journal ------------------------------------------------------------------------------------------

void test_Journal()
{
    const std::filesystem::path path = Home / "state/Vorel Co/Quillon/pin_desk.journal";
    constexpr const char* TORN = "2026-01-01T00:00:00Z    1  01:";
    expect_Run("umask 0; $P -in requests -journal && $P -in requests -journal -quiet -locale 0x419", 0,
               "blocked");
    struct stat Status = {};
    expect(stat(path.c_str(), &Status) == 0 && (Status.st_mode & 0777) == 0600, "only the user has it");
    const std::string strRun = "(TIME +\\d+ [^\\n]* store +1 +done +stored for Anna\n)"
                               "(TIME +\\d+ [^\\n]* check +1 +refused +PIN wrong, 2 tries left\n)"
                               "(TIME +\\d+ [^\\n]* change +1 +done [^\\n]*\n)"
                               "(TIME +4  malformed: pin is given twice\n)";
    const std::string strTime = "20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ";
    const std::regex Run(std::regex_replace("(" + strRun + "){2}", std::regex("TIME"), strTime));
    const std::string strJournal = read_File(path);
    expect(std::regex_match(strJournal, Run), "a line a request, of both runs", strJournal);
    std::ofstream(path, std::ios::trunc) << TORN;
    expect_Run("$P -in requests -journal && $P -in requests -journal", 0, "blocked");
    const std::string strAfter = read_File(path);
    expect(std::regex_match(strAfter, std::regex(std::string(TORN) + "\n[^]*")) &&
               std::regex_match(strAfter.substr(strAfter.find('\n') + 1), Run),
           "a torn line keeps to itself", strAfter);
    for (const char* pPin : {"5309", "8642", "7417"})
        expect(strJournal.find(pPin) == std::string::npos, "no PIN is in it", strJournal);
}

void test_No_Journal()
{
    const std::string strLimited = "trap '' XFSZ; ulimit -f 0; $P -in requests -journal";
    const Result result = run(strLimited);
    const std::string strNote = "*  the journal cannot be written and ends here\n";
    expect(result.m_nCode == 0 && result.Has(strNote) && result.Has("\n4 requests: 2 done") &&
               result.m_strOutput.find(strNote) == result.m_strOutput.rfind(strNote),
           "a desk without room for its journal says so once and goes on", result.m_strOutput);

    const std::filesystem::path path = Home / "state/Vorel Co/Quillon/pin_desk.journal";
    std::filesystem::remove(path);
    std::filesystem::create_symlink(Home / "requests", path);
    const std::string strFault = "pin_desk: the journal " + path.string() + " cannot be opened";
    expect_Run("$P -in requests -journal", 1, strFault);
    std::filesystem::remove_all(Home / "state");
    std::ofstream(Home / "state") << "no folder";
    expect_Run("$P -in requests -journal", 1, strFault);
}

// ---- The homes --------------------------------------------------------------------------------------------

void move_To(const std::filesystem::path& folder)
{
    Home = folder;
    setenv("P", strProgram.c_str(), 1);
    setenv("XDG_DATA_HOME", (Home / "data").c_str(), 1);
    setenv("XDG_STATE_HOME", (Home / "state").c_str(), 1);
    std::filesystem::current_path(Home);
    std::ofstream("requests") << "op=store card=1 owner=Anna pin=5309\n"
                                 "op=check card=1 pin=8642\n"
                                 "op=change card=1 pin=5309 new=7417\n"
                                 "op=check card=1 pin=7417 pin=7417\n";
}

bool run_In_Own_Home(const std::function<void()>& test)
{
    std::string strFolder = (std::filesystem::temp_directory_path() / "desk.XXXXXX").string();
    if (mkdtemp(strFolder.data()) == nullptr)
        return false;
    const pid_t nProcess = fork();
    if (nProcess == 0)
    {
        move_To(strFolder);
        test();
        _exit(nFaults == 0 ? 0 : 1);
    }
    int nStatus = -1;
    waitpid(nProcess, &nStatus, 0);
    std::filesystem::remove_all(strFolder);
    return nStatus == 0;
}

} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 2)
        return 2;
    strProgram = std::filesystem::absolute(ppArguments[1]).string();
    bool bRight = true;
    for (void (*test)() : {test_Tries, test_Expiry, test_Refusals, test_Damaged_Values, test_Damaged_Store,
                           test_Journal, test_No_Journal})
        bRight = run_In_Own_Home(test) && bRight;
    return bRight ? 0 : 1;
}
