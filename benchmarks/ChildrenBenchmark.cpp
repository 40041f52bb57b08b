// Tasks: insert and remove children of an element with many children. The reference is a std::vector that owns the same
// elements and knows each position.
#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Tasks.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMElement.h"

namespace {

constexpr std::size_t Standing = 10000;  // the children that stay
constexpr int Operations = 100000;       // insertions, and as many removals

enum class Place { Front, Back, BeforeSibling };

// The children of an element of a document.
class Elements {
public:
    explicit Elements(Place place)
    {
        DOMElement& parent = Parent();
        for (std::size_t i = 0; i < Standing; ++i)
            parent.AddNewChild(VString("standing"), nullptr);
        m_before = place == Place::Front ? parent.GetChildren().front()
            : place == Place::Back       ? nullptr
                                         : parent.GetChildren()[Standing / 2];
    }

    DOMElement* Insert(const VString& name) { return &Parent().AddNewChild(name, m_before); }
    void Remove(DOMElement& child) { Parent().RemoveChild(child); }
    std::size_t Count() { return Parent().GetChildren().size(); }
    std::size_t PositionOf(const DOMElement& child)
    {
        std::size_t i = 0;
        while (Parent().GetChildren()[i] != &child)
            ++i;
        return i;
    }

private:
    DOMElement& Parent() { return m_document.GetRoot(); }

    DOM m_document;
    const DOMElement* m_before;
};

class Vector {
public:
    explicit Vector(Place place)
        : m_position(place == Place::Front ? 0
                  : place == Place::Back   ? Standing
                                           : Standing / 2)
    {
        for (std::size_t i = 0; i < Standing; ++i)
            m_elements.push_back(std::make_unique<DOMElement>(VString("standing")));
    }

    DOMElement* Insert(const VString& name)
    {
        return m_elements.insert(At(), std::make_unique<DOMElement>(name))->get();
    }
    void Remove(DOMElement&) { m_elements.erase(At()); }
    std::size_t Count() { return m_elements.size(); }
    std::size_t PositionOf(const DOMElement& child)
    {
        std::size_t i = 0;
        while (m_elements[i].get() != &child)
            ++i;
        return i;
    }

private:
    std::vector<std::unique_ptr<DOMElement>>::iterator At()
    {
        return m_elements.begin() + static_cast<std::ptrdiff_t>(m_position);
    }

    std::vector<std::unique_ptr<DOMElement>> m_elements;
    std::size_t m_position;
};

template <typename Children>
void Register(const std::string& place, Place where, std::size_t position, const std::string& peer)
{
    const VString name("new");
    Children checked(where);
    DOMElement* const first = checked.Insert(name);
    Require(checked.Count() == Standing + 1 && checked.PositionOf(*first) == position, peer + " inserts at " + place);
    checked.Remove(*first);
    Require(checked.Count() == Standing, peer + " removes at " + place);
    benchmark::RegisterBenchmark(("children/" + place + "/" + peer).c_str(), [where, name](benchmark::State& state) {
        Children children(where);
        for (auto _ : state) {
            for (int i = 0; i < Operations; ++i)
                children.Remove(*children.Insert(name));
        }
    })->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterChildrenTasks()
{
    struct Row {
        const char* name;
        Place place;
        std::size_t position;
    };
    for (const Row& row : {Row{"front", Place::Front, 0},
             Row{"back", Place::Back, Standing},
             Row{"before-a-sibling", Place::BeforeSibling, Standing / 2}}) {
        Register<Elements>(row.name, row.place, row.position, "vancorexml");
        Register<Vector>(row.name, row.place, row.position, "std-vector");
    }
}
