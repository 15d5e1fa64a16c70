#ifndef QNLIB_TEST_GUARDED_TEXT_H
#define QNLIB_TEST_GUARDED_TEXT_H

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include <sys/mman.h>

namespace test_support
{

// A copy of a text that ends where its page does, before a page that may not be touched: whoever reads a unit
// too much, or before the page, dies. One pair of pages serves all copies of the program, one at a time.
template <class Unit>
class Guarded_Copy
{
public:
    explicit Guarded_Copy(const std::vector<Unit>& text)
        : m_pText(reinterpret_cast<Unit*>(Guard()) - text.size()), m_nSize(text.size())
    {
        std::copy(text.begin(), text.end(), m_pText);
    }

    const Unit* Get() const { return m_pText; }
    int Size() const { return static_cast<int>(m_nSize); }

private:
    static constexpr std::size_t ROOM = 65536;

    static char* Guard()
    {
        static char* const guard = []
        {
            void* const pages =
                mmap(nullptr, 2 * ROOM, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (pages == MAP_FAILED || mprotect(static_cast<char*>(pages) + ROOM, ROOM, PROT_NONE) != 0)
            {
                throw std::bad_alloc();
            }
            return static_cast<char*>(pages) + ROOM;
        }();
        return guard;
    }

    Unit* m_pText;
    std::size_t m_nSize;
};

} // namespace test_support

#endif
