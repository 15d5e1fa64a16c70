// Long random sequences of operations over a pool of strings, each held against a plain model of blocks and
// their holders: content, capacity, lock and sharing of every string after every step.

#include "string_probe.h"

#include <memory>

using namespace test_support;

namespace
{

/// A string as a block that its holders share; none stands for the shared empty block. Every block has the
/// capacity that the string's contract promises.
template <class Char>
class Model
{
public:
    Model() = default;
    Model(const Model& source)
    {
        if (source.Is_Locked())
            m_pBlock = New_Block(source.Up_To_Nul());
        else
            m_pBlock = source.m_pBlock;
    }
    Model& operator=(const Model& source)
    {
        if (this == &source)
            return *this;
        if (source.m_pBlock != nullptr && !Is_Locked() && !source.Is_Locked())
            m_pBlock = source.m_pBlock;
        else
            Assign(Units<Char>(source.Text()));
        return *this;
    }

    const Units<Char>& Text() const { return m_pBlock != nullptr ? m_pBlock->m_Text : s_None; }
    std::size_t Capacity() const { return m_pBlock != nullptr ? m_pBlock->m_nCapacity : 0; }
    bool Is_Locked() const { return m_pBlock != nullptr && m_pBlock->m_bLocked; }
    bool Is_Shared() const { return m_pBlock.use_count() > 1; }
    bool Shares_With(const Model& other) const { return m_pBlock == other.m_pBlock; }
    int Get_Holders() const
    {
        return m_pBlock == nullptr || Is_Locked() ? -1 : static_cast<int>(m_pBlock.use_count());
    }
    Units<Char> Up_To_Nul() const
    {
        return Units<Char>(Text().begin(), std::find(Text().begin(), Text().end(), Char(0)));
    }

    void Assign(const Units<Char>& text)
    {
        if (Is_Shared() || text.size() > Capacity())
            m_pBlock = New_Block(text);
        else if (m_pBlock != nullptr)
            m_pBlock->m_Text = text;
    }
    void Append(const Units<Char>& text)
    {
        Units<Char> whole = Text();
        whole.insert(whole.end(), text.begin(), text.end());
        if (!text.empty())
            Assign(whole);
    }
    void Detach()
    {
        if (Is_Shared())
            m_pBlock = New_Block(Text());
    }
    /// An edit in place, or in a new block that fits when there is no room.
    void Edit(const Units<Char>& text)
    {
        Detach();
        Assign(text);
    }
    void Get_Buffer(std::size_t nLength)
    {
        if (!Is_Shared() && nLength <= Capacity())
            return;
        Units<Char> text = Text();
        m_pBlock = New_Block(Units<Char>(std::max(nLength, text.size())));
        if (m_pBlock != nullptr)
            m_pBlock->m_Text = text;
    }
    void Lock()
    {
        Get_Buffer(0);
        if (m_pBlock != nullptr)
            m_pBlock->m_bLocked = true;
    }
    void Unlock()
    {
        if (m_pBlock != nullptr)
            m_pBlock->m_bLocked = false;
    }
    void Free_Extra()
    {
        if (Text().size() != Capacity())
            m_pBlock = New_Block(Text());
    }
    void Empty()
    {
        if (Is_Locked())
            m_pBlock->m_Text.clear();
        else if (!Text().empty())
            Flush();
    }
    void Flush() { m_pBlock = nullptr; }

private:
    struct Block
    {
        Units<Char> m_Text;
        std::size_t m_nCapacity;
        bool m_bLocked;
    };

    static std::shared_ptr<Block> New_Block(const Units<Char>& text)
    {
        return text.empty() ? nullptr : std::make_shared<Block>(Block{text, text.size(), false});
    }

    static inline const Units<Char> s_None;
    std::shared_ptr<Block> m_pBlock;
};

/// Every occurrence of a part replaced; the number of them.
template <class Char>
int Replace_All(Units<Char>& text, const Units<Char>& oldPart, const Units<Char>& newPart)
{
    int nCount = 0;
    auto at = text.begin();
    while ((at = std::search(at, text.end(), oldPart.begin(), oldPart.end())) != text.end())
    {
        at = text.erase(at, at + static_cast<std::ptrdiff_t>(oldPart.size()));
        at = text.insert(at, newPart.begin(), newPart.end()) + static_cast<std::ptrdiff_t>(newPart.size());
        ++nCount;
    }
    return nCount;
}

template <class TypeParam>
class String_Sequence : public testing::Test
{
protected:
    using Char = Char_Of<TypeParam>;

    static constexpr std::size_t s_nPool = 6;

    void Step()
    {
        const std::size_t nAt = m_Random.Below(s_nPool);
        Open<TypeParam>& text = m_Strings[nAt];
        Model<Char>& model = m_Models[nAt];
        m_nOperation = m_Random.Below(20);
        if (m_nOperation < 10)
            Change_Block(text, model);
        else
            Edit(text, model);
    }

    void Check()
    {
        for (std::size_t i = 0; i < s_nPool; ++i)
        {
            ASSERT_EQ(m_Models[i].Text(), Content(m_Strings[i])) << "string " << i;
            ASSERT_EQ(m_Models[i].Capacity(), m_Strings[i].Get_Alloc_Length()) << "string " << i;
            ASSERT_EQ(m_Models[i].Get_Holders(), m_Strings[i].Get_Holders()) << "string " << i;
            ASSERT_EQ(0, m_Strings[i].Get_At(m_Strings[i].Get_Length())) << "string " << i;
            for (std::size_t j = 0; j < i; ++j)
                ASSERT_EQ(m_Models[i].Shares_With(m_Models[j]), m_Strings[i].Shares_With(m_Strings[j]));
        }
    }

    std::size_t m_nOperation = 0;

private:
    Units<Char> Random_Units(std::string_view characters)
    {
        return m_Random.Text(m_Random.Below(4) == 0 ? m_Random.Below(80) : m_Random.Below(6), characters);
    }

    static Units<Char> Ended(Units<Char> text)
    {
        text.push_back(0);
        return text;
    }

    void Change_Block(Open<TypeParam>& text, Model<Char>& model)
    {
        const std::size_t nOther = m_Random.Below(s_nPool);
        const Units<Char> units = Random_Units("ab c");
        switch (m_nOperation)
        {
        case 0:
            text = m_Strings[nOther], model = m_Models[nOther];
            return;
        case 1:
        {
            const Open<TypeParam> copy(m_Strings[nOther]);
            const Model<Char> model_Copy(m_Models[nOther]);
            std::destroy_at(&text), std::construct_at(&text, copy);
            std::destroy_at(&model), std::construct_at(&model, model_Copy);
            return;
        }
        case 2:
            text = Ended(units).data(), model.Assign(units);
            return;
        case 3:
            Append(text, model, units, nOther);
            return;
        case 4:
            Take(text, Random_Units(std::string_view("ab\0", 3)));
            model.Get_Buffer(text.Get_Length()), model.Assign(Content(text));
            return;
        case 5:
            text.Lock_Buffer(), model.Lock();
            return;
        case 6:
            if (!model.Is_Shared())
                text.Unlock_Buffer(), model.Unlock();
            return;
        case 7:
            text.Free_Extra(), model.Free_Extra();
            return;
        case 8:
            text.Empty(), model.Empty();
            return;
        default:
            nOther < 2 ? text.Flush() : void(text.Get_Buffer(10 * nOther));
            nOther < 2 ? model.Flush() : model.Get_Buffer(10 * nOther);
        }
    }

    /// A text, and what only strings of 16 bits append: a unit, also a NUL, and a string with its NULs.
    void Append(Open<TypeParam>& text, Model<Char>& model, const Units<Char>& units, std::size_t nOther)
    {
        if constexpr (sizeof(Char) == 2)
        {
            if (units.size() == 1)
            {
                const Char ch = units[0] == ' ' ? Char(0) : units[0];
                text += ch, model.Append({ch});
                return;
            }
            if (units.size() == 2)
            {
                const Units<Char> added = m_Models[nOther].Text();
                if (model.Text().size() + added.size() < 200)
                    text += m_Strings[nOther], model.Append(added);
                return;
            }
        }
        text += Ended(units).data(), model.Append(units);
    }

    void Edit(Open<TypeParam>& text, Model<Char>& model)
    {
        Units<Char> now = model.Text();
        const auto nNow = static_cast<std::ptrdiff_t>(now.size());
        const std::ptrdiff_t nFrom = static_cast<std::ptrdiff_t>(m_Random.Below(now.size() + 1));
        const std::ptrdiff_t nCount =
            static_cast<std::ptrdiff_t>(m_Random.Below(static_cast<std::size_t>(nNow - nFrom) + 1));
        const auto from = now.begin() + nFrom;
        const auto nul = std::find(now.begin(), now.end(), Char(0));
        const Units<Char> units = Random_Units("ab");
        const Units<Char> part = m_Random.Text(1 + m_Random.Below(2), "ab");
        const Char ch = m_Random.Unit("ab ");
        switch (m_nOperation)
        {
        case 10:
            now.insert(from, units.begin(), units.end());
            EXPECT_EQ(static_cast<int>(now.size()),
                      text.Insert(static_cast<int>(nFrom), Ended(units).data()));
            return units.empty() ? void() : model.Edit(now);
        case 11:
            now.insert(from, ch);
            EXPECT_EQ(static_cast<int>(now.size()), text.Insert(static_cast<int>(nFrom), ch));
            return model.Edit(now);
        case 12:
            now.erase(from, from + nCount);
            EXPECT_EQ(nNow, text.Delete(static_cast<int>(nFrom), static_cast<int>(nCount)));
            return nCount == 0 ? void() : model.Edit(now);
        case 13:
            EXPECT_EQ(static_cast<int>(std::erase(now, ch)), text.Remove(ch));
            return model.Edit(now);
        case 14:
            now.erase(from, from + nCount);
            EXPECT_EQ(nCount,
                      text.Remove(static_cast<unsigned long long>(nFrom),
                                  nFrom + nCount == nNow ? ~0ULL : static_cast<unsigned long long>(nCount)));
            return model.Edit(now);
        case 15:
        {
            const int nReplaced = Replace_All(now, part, units);
            EXPECT_EQ(nReplaced, text.Replace(Ended(part).data(), Ended(units).data()));
            return nReplaced == 0 ? void() : model.Edit(now);
        }
        case 16:
            EXPECT_EQ(std::count(now.begin(), now.end(), ch), text.Replace(ch, Char('x')));
            std::replace(now.begin(), now.end(), ch, Char('x'));
            return model.Edit(now);
        case 17:
            now.erase(now.begin(), std::find_if(now.begin(), nul, [](Char c) { return c != ' '; }));
            text.TrimLeft();
            return model.Edit(now);
        case 18:
        {
            const auto run =
                std::find_if(std::reverse_iterator(nul), now.rend(), [](Char c) { return c != ' '; }).base();
            if (run != nul)
                now.erase(run, now.end()); // and what stands behind the NUL
            text.TrimRight();
            return model.Edit(now);
        }
        default:
            std::reverse(now.begin(), nul);
            text.Make_Reverse();
            return model.Edit(now);
        }
    }

    Random_Text<Char> m_Random{7};
    Open<TypeParam> m_Strings[s_nPool];
    Model<Char> m_Models[s_nPool];
};

} // namespace

TYPED_TEST_SUITE(String_Sequence, Both_Widths);

TYPED_TEST(String_Sequence, Agrees_With_A_Plain_Model)
{
    for (int nStep = 0; nStep < 60000; ++nStep)
    {
        this->Step();
        this->Check();
        ASSERT_FALSE(this->HasFailure()) << "after step " << nStep << ", operation " << this->m_nOperation;
    }
}
