#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_LOOKUP_CACHE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_LOOKUP_CACHE_H

#include "platform/providers/advapi32/connection.h"

#include <functional>
#include <unordered_map>
#include <vector>

// What was found in one state of a store: callers open a key, ask for a size and read, over and over.

namespace qn_advapi32
{

struct Value
{
    bool m_bExists = false;
    DWORD m_nType = 0;
    std::vector<BYTE> m_Data;
};

/// A key or a value of a list. All of its text and bytes lie in one piece: there are thousands of these.
class Listed
{
public:
    Listed() = default;
    Listed(Text_View folded, Text_View name, Text_View class_name);

    /// `data` is null for a value that is too large for the list.
    Listed(Text_View folded, Text_View name, DWORD type, DWORD size, const BYTE* data);

    Text_View Get_Folded() const { return Text_View(m_strUnits).substr(0, m_nFolded); }
    Text_View Get_Name() const { return Text_View(m_strUnits).substr(m_nFolded, m_nName); }

    // Of a key.
    Text_View Get_Class() const { return Text_View(m_strUnits).substr(m_nFolded + m_nName); }

    // Of a value.
    DWORD Get_Type() const { return m_nType; }
    DWORD Get_Size() const { return m_nSize; }
    bool Has_Data() const { return m_bHas_Data; }
    const BYTE* Get_Data() const
    {
        return reinterpret_cast<const BYTE*>(m_strUnits.data() + m_nFolded + m_nName);
    }

    /// What it needs, about, in bytes.
    std::size_t Get_Room() const { return sizeof *this + m_strUnits.size() * sizeof(char16_t); }

private:
    Text m_strUnits; ///< folded, name, and the class or the data
    unsigned int m_nFolded = 0;
    unsigned int m_nName = 0;
    DWORD m_nType = 0;
    DWORD m_nSize = 0;
    bool m_bHas_Data = false;
};

enum class List_Kind
{
    keys,
    values
};

/// A run of entries of one list.
struct Listing
{
    Id m_nKey = NO_KEY;
    List_Kind m_Kind = List_Kind::keys;
    DWORD m_nFirst = 0;
    bool m_bAt_End = false; ///< there is nothing behind
    std::vector<Listed> m_Entries;
    std::size_t m_nSize = 0; ///< of the entries, about, in bytes

    DWORD Get_End() const { return m_nFirst + static_cast<DWORD>(m_Entries.size()); }
};

class Lookup_Cache
{
public:
    static constexpr std::size_t MOST_KEPT = 1024;  ///< bytes of a value that is kept
    static constexpr std::size_t MOST_LISTED = 256; ///< of one in a list

    void Clear();

    /// The key at a path below another, NO_KEY for none; null when it was not looked for.
    const Id* Find_Key(Id base, Text_View folded) const;
    void Keep_Key(Id base, const Text& folded, Id found);

    const Value* Find_Value(Id key, Text_View folded) const;
    void Keep_Value(Id key, Text_View folded, bool exists, DWORD type, const BYTE* data, std::size_t size);

    /// A small value among those listed: who goes through a list asks for each one by its name next.
    const Listed* Find_Listed_Value(Id key, Text_View folded) const;

    /// The list that has the entry at `index`, or that ends before it.
    Listing* Find_Listing(Id key, List_Kind kind, DWORD index);

    /// Behind what is known of the list, or in its place.
    Listing& Keep_Listing(Listing listing);

private:
    struct Place
    {
        Id m_nKey;
        Text m_strFolded;
    };
    struct Place_View
    {
        Id m_nKey;
        Text_View m_Folded;
        Place_View(Id key, Text_View folded) : m_nKey(key), m_Folded(folded) {}
        Place_View(const Place& place) : m_nKey(place.m_nKey), m_Folded(place.m_strFolded) {}
        bool operator==(const Place_View&) const = default;
    };
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(const Place_View& place) const
        {
            return std::hash<Text_View>()(place.m_Folded) ^
                   static_cast<std::size_t>(place.m_nKey) * 0x9E3779B97F4A7C15u;
        }
    };
    struct Same
    {
        using is_transparent = void;
        bool operator()(const Place_View& left, const Place_View& right) const { return left == right; }
    };

    static bool st_Append(Listing& listing, Listing& more);

    /// Everything goes when it becomes too much.
    void make_Room(std::size_t size);

    std::unordered_map<Place, Id, Hash, Same> m_Keys;
    std::unordered_map<Place, Value, Hash, Same> m_Values;
    std::vector<Listing> m_Listings;
    std::size_t m_nNext_Listing = 0;
    std::size_t m_nSize = 0; ///< about, in bytes
};

} // namespace qn_advapi32

#endif
