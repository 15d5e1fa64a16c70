// The operations that Lib_StringA and Lib_StringW have alike. Included in the public section of either
// class, where Lib_Char is its character type and Lib_Self the class itself.
//
// Positions are int, counted in characters from the front, -1 for not found. Left, Right, Mid, Remove,
// Replace, Insert and Delete work on all Get_Length() characters; all others stop at the first NUL. Find,
// Insert and Delete serve texts of up to 2^31 - 1 characters. Edits work in the existing block where its
// capacity allows and take a private copy of a shared block first ("detach").
//
// A null argument where a text is wanted counts as an empty text, and a negative start as 0.

/// Order without regard to case, by the runtime's locale. In the "C" locale, where the runtime starts, A to
/// Z fold to a to z and the result is the difference of the first two differing units. An empty string
/// comes first.
int CompareNoCase(const Lib_Char* pText) const;

/// Order by the alphabet of the runtime's locale; -1, 0 or 1 unit by unit in the "C" locale, an empty
/// string first.
int Collate(const Lib_Char* pText) const;

/// Order by the alphabet without regard to case; as CompareNoCase in the "C" locale.
int CollateNoCase(const Lib_Char* pText) const;

/// Whether both texts match up to and with their first NUL.
bool operator==(const Lib_Self& other) const noexcept { return equals(other); }

/// The same against a text. A template, so that `s == text` prefers the free operator, which goes through
/// the virtual Compare.
template <class Text>
requires std::is_same_v<Text, Lib_Char>
bool operator==(const Text* pText) const noexcept { return equals(pText); }

/// The first `ch`, from nStart if given. A NUL finds the end of the text. -1 for an empty string, and when
/// nStart isn't below the length.
int Find(Lib_Char ch) const noexcept { return Find(ch, 0); }
int Find(Lib_Char ch, int nStart) const noexcept;

/// The first occurrence of a text, from nStart if given; -1 also when nStart is above the length. An empty
/// text is found where the search starts, but never in an empty Lib_StringA.
int Find(const Lib_Char* pText) const noexcept { return Find(pText, 0); }
int Find(const Lib_Char* pText, int nStart) const noexcept;

/// The first character that stands in the set.
int Find_One_Of(const Lib_Char* pSet) const noexcept;

/// The last `ch`; a NUL finds the end of the text.
int Reverse_Find(Lib_Char ch) const noexcept;

/// Slices. One that covers the whole string shares its block, others have a block of their own.
Lib_Self Left(unsigned long long nCount) const;
Lib_Self Right(unsigned long long nCount) const;
/// At most nCount characters from nFirst on, none when nFirst is above the length.
Lib_Self Mid(unsigned long long nFirst, unsigned long long nCount) const;
Lib_Self Mid(unsigned long long nFirst) const { return Mid(nFirst, ~0ULL); }

/// The leading run of characters that all stand, or none of which stands, in the set.
Lib_Self Span_Including(const Lib_Char* pSet) const;
Lib_Self Span_Excluding(const Lib_Char* pSet) const;

/// The character at an index, which must not exceed the length; the length itself reads the NUL.
Lib_Char Get_At(unsigned long long nIndex) const noexcept { return get_Text()[nIndex]; }

/// Detaches and stores a character; nIndex must be below the length, which stays.
void Set_At(unsigned long long nIndex, Lib_Char ch);

/// Insert before nIndex, which is clamped to the text. The result is the new length. The text must not lie
/// in this string; an empty one changes nothing and doesn't detach. On failed allocation the old text
/// stays.
int Insert(int nIndex, Lib_Char ch);
int Insert(int nIndex, const Lib_Char* pText);

/// Deletes nCount characters at nIndex, of which a negative one counts as 0, and as many as there are when
/// the text ends before. The result is the length that the string had before. Nothing happens, and nothing
/// is detached, for a count of 0 or less or an index at or above the length.
int Delete(int nIndex, int nCount);

/// Removes every `ch`, or every character in the range nIndex to nIndex + nCount, which may go beyond the
/// end. The result is the number removed. Both always detach.
int Remove(Lib_Char ch);
int Remove(unsigned long long nIndex, unsigned long long nCount);

/// Replaces every character; the result is their number. Detaches unless both are the same.
int Replace(Lib_Char chOld, Lib_Char chNew);

/// Replaces every occurrence of a text from left to right, without looking at what was inserted; the
/// result is their number. An empty pNew removes; an empty pOld, or no occurrence, changes nothing and
/// doesn't detach. Embedded NULs divide the text: an occurrence never spans one. On failed allocation the
/// old text stays.
int Replace(const Lib_Char* pOld, const Lib_Char* pNew);

/// Trim white space: 0x09 to 0x0D, 0x20, 0x85, 0xA0 and what CT_CTYPE1 calls space above 0xFF. The units of
/// a Lib_StringA are its bytes widened with their sign. Both always detach.
void TrimLeft();
void TrimRight();

/// Trim one character; always detach.
void Trim_Left(Lib_Char ch);
void Trim_Right(Lib_Char ch);

/// Trim the characters of a set. A null set changes nothing; an empty one too, though Trim_Right detaches.
void Trim_Left(const Lib_Char* pSet);
void Trim_Right(const Lib_Char* pSet);

/// Change the case up to the first NUL by the runtime's locale; reverse the units. All detach.
void Make_Lower();
void Make_Upper();
void Make_Reverse();

/// Replaces the text by a formatted one. The format is read twice: first to reserve an upper bound of the
/// result, then by the bounded formatter, which writes at most what was reserved. The capacity stays as
/// reserved, so Free_Extra gives a good deal back:
///
///   literal character   the number of characters from it to the end of the format (`%%`: from the second)
///   c C                 2
///   s S                 the text's length and at least 1, 6 for null; at most the precision if that isn't
///                       0; at least the width
///   d i u x X o p       32, or width + precision if that is more
///   e E g G             128, or width + precision if that is more
///   f                   the length of a print with six more decimals
///   n, others           0
///   each # flag         2
///
/// The own width is meant by s and c, the other one by S and C, 8 bits by h and 16 by l before any of them;
/// I64 marks 64-bit integers, F, L and N change nothing. A negative width by * counts as its absolute
/// value, a negative precision as none. A conversion that isn't in this list takes no argument for the
/// reserve; behind one that the formatter might read otherwise (a, ll, z, I32 ...) no further argument is
/// looked at, so the result may be cut there. The reserve also falls short, and the text is cut, for a sign
/// that `+` or a blank asks for in front of `f` without a precision, for a sign beside a precision of 32 or
/// more in an integer, for an exponent behind more than some 120 decimals, for `f` at 8 bits in a field of
/// 318 + precision characters or more, by one, and beyond 2^31 - 2 characters. It is never overrun.
///
/// On Linux text of the other width is mapped unit for unit below 256, not by the code page as the
/// constructors do it, and to `?` above; `n` writes nothing. On Windows the runtime's locale maps it, which
/// may need more room than reserved, so that the result is cut; the runtime may write through the pointer of
/// `n`, and gives an empty text for a format that it refuses and for 16-bit text that its locale can't
/// express.
///
/// Neither the format, which must not be null, nor an argument may lie in this string; a null format gives
/// an empty text. On failed allocation the old text stays. A lock stays while the block is large enough.
void Format(const Lib_Char* pFormat, ...);
void FormatV(const Lib_Char* pFormat, std::va_list arguments);
