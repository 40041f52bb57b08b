#include "vanxml/DocumentStatistics.h"

#include <algorithm>
#include <memory>

#include "vancorexml/main/parser/AttributeMap.h"
#include "vanxml/EventParse.h"

namespace {

class StatisticsCounter : public SAXInterface {
public:
    explicit StatisticsCounter(DocumentStatistics& statistics) : m_statistics(statistics) {}

    void StartElement(const VString& name, const AttributeMap& attributes) override
    {
        ++m_statistics.elements;
        ++m_statistics.elementNames[name];
        m_statistics.attributes += attributes.size();
        for (const auto& attribute : attributes)
            ++m_statistics.attributeNames[attribute.first];
        m_statistics.depth = std::max(m_statistics.depth, ++m_depth);
    }

    void EndElement() override { --m_depth; }

    void Characters(const VString& text) override
    {
        if (!IsBlankText(text))
            m_statistics.text += CountUtf8Bytes(text);
    }

private:
    DocumentStatistics& m_statistics;
    std::uint64_t m_depth = 0;
};

void AddCounts(NameCounts& counts, const NameCounts& others)
{
    for (const auto& [name, count] : others)
        counts[name] += count;
}

std::size_t SizeOf(const NameCounts& counts)
{
    std::size_t size = 0;
    for (const auto& [name, count] : counts)
        size += 2 * name.View().size() + 64;
    return size;
}

}  // namespace

void DocumentStatistics::Add(const DocumentStatistics& other)
{
    bytes += other.bytes;
    elements += other.elements;
    attributes += other.attributes;
    depth = std::max(depth, other.depth);
    text += other.text;
    AddCounts(elementNames, other.elementNames);
    AddCounts(attributeNames, other.attributeNames);
}

std::size_t DocumentStatistics::Size() const
{
    return SizeOf(elementNames) + SizeOf(attributeNames);
}

std::string CountContents(SourceDocument& source, DocumentStatistics& statistics)
{
    statistics.bytes = source.Source().Size();
    return ParseEvents(source, std::make_shared<StatisticsCounter>(statistics));
}

std::vector<std::pair<VString, std::uint64_t>> SortByFrequency(const NameCounts& counts)
{
    std::vector<std::pair<VString, std::uint64_t>> names(counts.begin(), counts.end());
    std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    return names;
}
