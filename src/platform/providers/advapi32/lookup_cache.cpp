#include "platform/providers/advapi32/lookup_cache.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qn_advapi32
{

namespace
{

constexpr std::size_t MOST_SIZE = 1 << 20;
constexpr std::size_t ENTRY_SIZE = 128; ///< about what a table needs for one
constexpr std::size_t MOST_LISTINGS = 4;
constexpr std::size_t MOST_LISTED_SIZE = 512 << 10; ///< of one listing that grows

bool is_Before(const Listed& entry, Text_View folded)
{
    return Compare_Stored(entry.Get_Folded(), folded) < 0;
}

} // namespace

Listed::Listed(Text_View folded, Text_View name, Text_View class_name)
    : m_nFolded(static_cast<unsigned int>(folded.size())), m_nName(static_cast<unsigned int>(name.size()))
{
    m_strUnits.reserve(folded.size() + name.size() + class_name.size());
    m_strUnits.append(folded).append(name).append(class_name);
}

Listed::Listed(Text_View folded, Text_View name, DWORD type, DWORD size, const BYTE* data)
    : m_nFolded(static_cast<unsigned int>(folded.size())), m_nName(static_cast<unsigned int>(name.size())),
      m_nType(type), m_nSize(size), m_bHas_Data(data != nullptr || size == 0)
{
    const std::size_t bytes = data != nullptr ? size : 0;
    const std::size_t units = (bytes + 1) / sizeof(char16_t);
    m_strUnits.reserve(folded.size() + name.size() + units);
    m_strUnits.append(folded).append(name).append(units, u'\0');
    std::copy_n(data, bytes, reinterpret_cast<BYTE*>(m_strUnits.data() + folded.size() + name.size()));
}

void Lookup_Cache::Clear()
{
    m_Keys.clear();
    m_Values.clear();
    m_Listings.clear();
    m_nNext_Listing = 0;
    m_nSize = 0;
}

void Lookup_Cache::make_Room(std::size_t size)
{
    if (m_nSize + size + ENTRY_SIZE > MOST_SIZE)
        Clear();
    m_nSize += size + ENTRY_SIZE;
}

const Id* Lookup_Cache::Find_Key(Id base, Text_View folded) const
{
    const auto found = m_Keys.find(Place_View(base, folded));
    return found != m_Keys.end() ? &found->second : nullptr;
}

void Lookup_Cache::Keep_Key(Id base, const Text& folded, Id found)
{
    make_Room(folded.size() * sizeof(char16_t));
    m_Keys.insert_or_assign(Place{base, folded}, found);
}

const Value* Lookup_Cache::Find_Value(Id key, Text_View folded) const
{
    const auto found = m_Values.find(Place_View(key, folded));
    return found != m_Values.end() ? &found->second : nullptr;
}

void Lookup_Cache::Keep_Value(Id key, Text_View folded, bool exists, DWORD type, const BYTE* data,
                              std::size_t size)
{
    make_Room(folded.size() * sizeof(char16_t) + size);
    m_Values.insert_or_assign(Place{key, Text(folded)}, Value{exists, type, {data, data + size}});
}

const Listed* Lookup_Cache::Find_Listed_Value(Id key, Text_View folded) const
{
    for (const Listing& listing : m_Listings)
    {
        if (listing.m_nKey != key || listing.m_Kind != List_Kind::values)
            continue;
        const auto found =
            std::lower_bound(listing.m_Entries.begin(), listing.m_Entries.end(), folded, is_Before);
        const bool same = found != listing.m_Entries.end() && found->Get_Folded() == folded;
        return same && found->Has_Data() ? &*found : nullptr;
    }
    return nullptr;
}

Listing* Lookup_Cache::Find_Listing(Id key, List_Kind kind, DWORD index)
{
    for (Listing& listing : m_Listings)
    {
        const bool covers = index >= listing.m_nFirst && (index < listing.Get_End() || listing.m_bAt_End);
        const bool next = index == listing.Get_End();
        if (listing.m_nKey == key && listing.m_Kind == kind && (covers || next))
            return &listing;
    }
    return nullptr;
}

/// Whether the entries go on where those of the other end.
bool Lookup_Cache::st_Append(Listing& listing, Listing& more)
{
    if (listing.Get_End() != more.m_nFirst || listing.m_nSize + more.m_nSize > MOST_LISTED_SIZE)
        return false;
    std::move(more.m_Entries.begin(), more.m_Entries.end(), std::back_inserter(listing.m_Entries));
    listing.m_bAt_End = more.m_bAt_End;
    listing.m_nSize += more.m_nSize;
    return true;
}

Listing& Lookup_Cache::Keep_Listing(Listing listing)
{
    for (Listing& other : m_Listings)
    {
        if (other.m_nKey == listing.m_nKey && other.m_Kind == listing.m_Kind)
            return st_Append(other, listing) ? other : other = std::move(listing);
    }
    if (m_Listings.size() < MOST_LISTINGS)
        return m_Listings.emplace_back(std::move(listing));
    m_nNext_Listing = (m_nNext_Listing + 1) % MOST_LISTINGS;
    return m_Listings[m_nNext_Listing] = std::move(listing);
}

} // namespace qn_advapi32
