// Compares two texts with DiffTrees.
#pragma once

#include <string>
#include <vector>

#include "tests/common/TestSupport.h"
#include "vanxml/TreeDiff.h"

// Two documents and their differences.
class TreeComparison {
public:
    static constexpr std::uint32_t None = TreeDifference::None;

    TreeComparison(const std::string& before, const std::string& after)
        : textA(before),
          textB(after),
          a(SourceDocument::Decode(before.data(), before.size(), "a.xml"), m_table),
          b(SourceDocument::Decode(after.data(), after.size(), "b.xml"), m_table),
          differences(DiffTrees(a, b, m_table))
    {
        EXPECT_EQ(a.Errors() + b.Errors(), "");
    }

    // Such as "changed /a/@b, moved /c[1] to /d/c".
    std::string Describe() const
    {
        std::string text;
        for (const TreeDifference& each : differences) {
            constexpr const char* kinds[] = {"changed ", "removed ", "added ", "moved "};
            text += (text.empty() ? "" : ", ") + std::string(kinds[static_cast<int>(each.kind)]);
            text += each.a != None ? a.PathOf(each.a, each.attribute) : b.PathOf(each.b, each.attribute);
            if (each.kind == TreeDifference::Kind::Moved)
                text += " to " + b.PathOf(each.b);
        }
        return text;
    }

    std::string Text(std::uint32_t number) const { return m_table.Text(number).toStdString(); }

private:
    ContentTable m_table;

public:
    const std::string textA;
    const std::string textB;
    const ComparedTree a;
    const ComparedTree b;
    const std::vector<TreeDifference> differences;
};

inline std::string DescribeDifferences(const std::string& a, const std::string& b)
{
    return TreeComparison(a, b).Describe();
}
