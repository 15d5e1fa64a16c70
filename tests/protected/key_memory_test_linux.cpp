#include "lib_platform.h"
#include "protected_probe.h"
#include "sanitizers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string_view>
#include <thread>
#include <vector>

#include <unistd.h>

// Where the key and plain bytes are not.

using namespace test_support;

namespace
{

struct Mapping
{
    unsigned long begin;
    unsigned long end;
    std::string access;
    bool named;
    bool in_dumps;
};

std::vector<Mapping> Mappings()
{
    std::vector<Mapping> mappings;
    std::ifstream maps("/proc/self/smaps");
    for (std::string line; std::getline(maps, line);)
    {
        Mapping mapping{};
        char access[8] = {};
        int end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx %4s %*s %*s %*s%n", &mapping.begin, &mapping.end, access,
                        &end) == 3)
        {
            mapping.access = access;
            mapping.named = line.find_first_not_of(' ', static_cast<std::size_t>(end)) != line.npos;
            mappings.push_back(mapping);
        }
        else if (line.starts_with("VmFlags:"))
            mappings.back().in_dumps = line.find(" dd") == line.npos;
    }
    return mappings;
}

/// The page of the key, which nothing else looks like. The key is used where it lies, so that no test makes
/// a copy of it that it then finds.
std::string_view Find_Key(const std::vector<Mapping>& mappings)
{
    std::string_view key;
    for (const Mapping& mapping : mappings)
        if (!mapping.in_dumps && !mapping.named && mapping.access == "r--p" &&
            mapping.end - mapping.begin == static_cast<unsigned long>(getpagesize()))
        {
            EXPECT_TRUE(key.empty()) << "two pages look like the key's";
            key = {reinterpret_cast<const char*>(mapping.begin), 64};
        }
    return key;
}

/// A schedule for enciphering begins with its key, and one for deciphering ends with the key's first half.
bool Holds_A_Part_Of(std::string_view key, const std::string& memory)
{
    for (std::size_t at = 0; at < key.size(); at += 16)
        if (memory.find(key.substr(at, 16)) != memory.npos)
            return true;
    return false;
}

void Use_The_Cipher()
{
    Lib_Protected_Buffer buffer(Lib_Buffer(5000));
    buffer.Append(Lib_Buffer(70000));
    buffer.Make_Reverse();
    EXPECT_EQ(75000u, Lib_Buffer(buffer).Get_Size());
}

} // namespace

// What is searched is what a core dump would hold.
TEST(Key_Memory, Is_Left_Out_Of_Dumps_And_Has_No_Copy)
{
    if (With_Address_Sanitizer || With_Thread_Sanitizer)
        GTEST_SKIP() << "a sanitizer's address space";
    Use_The_Cipher();
    std::thread(Use_The_Cipher).join();
    const std::vector<Mapping> mappings = Mappings();
    const std::string_view key = Find_Key(mappings);
    ASSERT_FALSE(key.empty());
    EXPECT_NE(std::string(64, '\0'), key);
    std::ifstream memory("/proc/self/mem", std::ios::binary);
    for (const Mapping& mapping : mappings)
    {
        if (!mapping.in_dumps || mapping.access[0] != 'r')
            continue;
        std::string content(mapping.end - mapping.begin, '\0');
        memory.seekg(static_cast<std::streamoff>(mapping.begin));
        memory.read(content.data(), static_cast<std::streamsize>(content.size()));
        memory.clear();
        EXPECT_FALSE(Holds_A_Part_Of(key, content)) << std::hex << mapping.begin << ' ' << mapping.access;
    }
}

TEST(Key_Memory, Leaves_Nothing_Plain_In_An_Image)
{
    const std::string secret = "83920175 is the number of a card";
    Open_Buffer buffer;
    const auto Expect_Hidden = [&](const char* operation)
    {
        SCOPED_TRACE(operation);
        const std::string image = To_Text(buffer.m_Image);
        ASSERT_GE(image.size(), secret.size());
        for (std::size_t at = 0; at + 4 <= secret.size(); at += 4)
        {
            EXPECT_EQ(image.npos, image.find(secret.substr(at, 4)));
            EXPECT_EQ(image.npos, image.find(std::string(secret.rbegin(), secret.rend()).substr(at, 4)));
        }
        EXPECT_NE(0, std::memcmp(image.data() + 1, "\0\0\0\0\0\0\0", 7)) << "the length is plain";
    };
    buffer = To_Buffer(secret);
    Expect_Hidden("assignment");
    buffer.Append(To_Buffer(secret));
    Expect_Hidden("append");
    buffer.Make_Reverse();
    Expect_Hidden("reverse");
    buffer.Attach_Copy(secret.data(), secret.size());
    Expect_Hidden("replacement");

    // Another length, another first block.
    const Open_Buffer shorter(secret.size() - 1, secret.data());
    EXPECT_NE(0, std::memcmp(shorter.m_Image.Get_Ptr(), buffer.m_Image.Get_Ptr(), 16));
}
