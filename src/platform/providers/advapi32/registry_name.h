#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_REGISTRY_NAME_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_REGISTRY_NAME_H

#include "platform/types.h"

#include <cstddef>
#include <string>
#include <string_view>

// Names and paths of the registry as the store keeps them: any 16-bit units, unpaired surrogates among them.

namespace qn_advapi32
{

using qn_platform::DWORD;
using qn_platform::LPCWSTR;

using Text = std::u16string;
using Text_View = std::u16string_view;

inline constexpr std::size_t MOST_COMPONENT = 255;
inline constexpr std::size_t MOST_VALUE_NAME = 16383;
inline constexpr std::size_t MOST_CLASS_NAME = 255;
inline constexpr std::size_t MOST_DEPTH = 512;

inline constexpr char16_t SEPARATOR = u'\\';

/// The capital of a unit: units with the same one match.
char16_t Fold(char16_t unit);

/// The order in which a store lists names: that of their bytes. Below, at or above 0.
int Compare_Stored(Text_View left, Text_View right);

/// A name, or the names of a path with one backslash between two of them. Folding keeps the length, so the
/// same place in both texts is the same unit.
struct Name
{
    Text plain;
    Text folded;
};

/// Null counts as empty. 87 for more than `most` units.
DWORD Read_Name(LPCWSTR text, std::size_t most, Name& name);

/// Drops backslashes that say nothing. 161 for one in front, 87 for a component that is too long.
DWORD Read_Path(LPCWSTR text, Name& path);

/// One component of a path after the other.
class Path_Walk
{
public:
    explicit Path_Walk(const Name& path) : m_Path(path) {}

    /// False behind the last one.
    bool Next();

    Text_View Get_Plain() const { return Text_View(m_Path.plain).substr(m_nStart, m_nLength); }
    Text_View Get_Folded() const { return Text_View(m_Path.folded).substr(m_nStart, m_nLength); }

    bool Is_Last() const { return m_nNext >= m_Path.folded.size(); }

    /// What is behind this component.
    Name Get_Rest() const;

private:
    const Name& m_Path;
    std::size_t m_nStart = 0;
    std::size_t m_nLength = 0;
    std::size_t m_nNext = 0;
};

} // namespace qn_advapi32

#endif
