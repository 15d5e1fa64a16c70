// The free comparison operators of Lib_StringA and Lib_StringW, which serve derived classes too. Included
// in the public section of either class. They go through the virtual Compare of the string operand, the
// left one of two, and the virtual cast of the right one, so a derived class changes them by overriding
// these; and they take over their order: an empty string comes after every other, null counts as empty.

friend bool operator==(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) == 0; }
friend bool operator==(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) == 0; }

friend bool operator!=(const Lib_Self& left, const Lib_Self& right) { return left.Compare(right) != 0; }
friend bool operator!=(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) != 0; }
friend bool operator!=(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) != 0; }

friend bool operator<(const Lib_Self& left, const Lib_Self& right) { return left.Compare(right) < 0; }
friend bool operator<(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) < 0; }
friend bool operator<(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) > 0; }

friend bool operator<=(const Lib_Self& left, const Lib_Self& right) { return left.Compare(right) < 1; }
friend bool operator<=(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) < 1; }
friend bool operator<=(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) >= 0; }

friend bool operator>(const Lib_Self& left, const Lib_Self& right) { return left.Compare(right) > 0; }
friend bool operator>(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) > 0; }
friend bool operator>(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) < 0; }

friend bool operator>=(const Lib_Self& left, const Lib_Self& right) { return left.Compare(right) >= 0; }
friend bool operator>=(const Lib_Self& left, const Lib_Char* pRight) { return left.Compare(pRight) >= 0; }
friend bool operator>=(const Lib_Char* pLeft, const Lib_Self& right) { return right.Compare(pLeft) < 1; }
