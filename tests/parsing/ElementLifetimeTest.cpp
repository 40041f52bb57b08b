// The elements of one parse share memory pages, but each element can be destroyed independently.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"

namespace {

constexpr int Count = 5000;

std::unique_ptr<DOM> ParseMany()
{
    VString text = "<all>";
    for (int i = 0; i < Count; ++i) {
        const VString number = VString::number(std::int32_t{i});
        text += "<e n='" + number + "'>text of " + number + "</e>";
    }
    return DOMParser().ParseXmlString(text + "</all>", "many");
}

std::vector<std::unique_ptr<DOMElement>> RemoveAll(DOM& document)
{
    return document.GetDocumentRoot()->RemoveChildren();
}

void ExpectElement(const DOMElement& element, int i)
{
    EXPECT_EQ(element.GetAttribute("n"), VString::number(std::int32_t{i}));
    EXPECT_EQ(element.GetText(), VString("text of ") + VString::number(std::int32_t{i}));
}

TEST(ElementLifetimeTest, SomeElementsOutliveTheirDocument)
{
    std::unique_ptr<DOM> document = ParseMany();
    std::vector<std::unique_ptr<DOMElement>> elements = RemoveAll(*document);
    ASSERT_EQ(elements.size(), std::size_t{Count});
    for (int i = 0; i < Count; ++i) {
        if (i % 100 != 0)
            elements[static_cast<std::size_t>(i)].reset();
    }
    document.reset();
    for (int i = 0; i < Count; i += 100) {
        EXPECT_EQ(elements[static_cast<std::size_t>(i)]->GetDOMManager(), nullptr);
        ExpectElement(*elements[static_cast<std::size_t>(i)], i);
    }
}

TEST(ElementLifetimeTest, ElementsOfTwoParsesAndNewElementsCanBeMixed)
{
    const std::unique_ptr<DOM> first = ParseMany();
    std::unique_ptr<DOM> second = ParseMany();
    DOMElement& top = *first->GetDocumentRoot();
    for (std::unique_ptr<DOMElement>& element : RemoveAll(*second))
        top.AppendChild(std::move(element));
    second.reset();
    top.AddNewChild("new", nullptr).SetText("n");
    auto own = std::make_unique<DOMElement>("own");
    top.InsertChild(std::move(own), top.GetChildren().front());
    ASSERT_EQ(top.GetChildren().size(), std::size_t{2 * Count + 2});
    for (int i = 0; i < Count; ++i) {
        ExpectElement(*top.GetChildren()[static_cast<std::size_t>(i) + 1], i);
        ExpectElement(*top.GetChildren()[static_cast<std::size_t>(i) + 1 + Count], i);
    }
    for (std::size_t i = 0; i < Count; ++i)
        top.RemoveChild(*top.GetChildren()[i / 2]);
    EXPECT_EQ(top.GetChildren().size(), std::size_t{Count + 2});
}

TEST(ElementLifetimeTest, CopiesOutliveTheirSource)
{
    std::unique_ptr<DOM> document = ParseMany();
    const auto copy = std::make_unique<DOMElement>(*document->GetDocumentRoot());
    document.reset();
    for (int i = 0; i < Count; ++i)
        ExpectElement(*copy->GetChildren()[static_cast<std::size_t>(i)], i);
}

// Callers may derive from DOMElement and add members.
TEST(ElementLifetimeTest, DerivedElementsMayBeLarger)
{
    struct Marked : DOMElement {
        using DOMElement::DOMElement;
        char mark[1000] = {};
    };
    auto element = std::make_unique<Marked>(VString("e"));
    element->mark[999] = 'm';
    element->AddNewChild("child", nullptr);
    EXPECT_EQ(element->GetName(), VString("e"));
}

TEST(ElementLifetimeTest, DerivedElementsHaveTheirOwnAlignment)
{
    struct DefaultAligned : DOMElement {
        using DOMElement::DOMElement;
        alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) char mark = 'm';
    };
    struct OverAligned : DOMElement {
        using DOMElement::DOMElement;
        alignas(64) char mark = 'm';
    };
    for (int i = 0; i < 10; ++i) {
        const auto usual = std::make_unique<DefaultAligned>(VString("e"));
        const auto more = std::make_unique<OverAligned>(VString("e"));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(usual.get()) % alignof(DefaultAligned), 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(more.get()) % alignof(OverAligned), 0u);
    }
}

// Each thread owns one document. The elements of all documents share the pages of one parse.
TEST(ElementLifetimeThreadTest, ElementsOfOneParseDieOnSeveralThreads)
{
    constexpr std::size_t ThreadCount = 4;
    std::unique_ptr<DOM> document = ParseMany();
    std::vector<std::unique_ptr<DOM>> documents;
    for (std::size_t i = 0; i < ThreadCount; ++i)
        documents.push_back(std::make_unique<DOM>());
    std::vector<std::unique_ptr<DOMElement>> elements = RemoveAll(*document);
    for (std::size_t i = 0; i < elements.size(); ++i)
        documents[i % ThreadCount]->GetRoot().AppendChild(std::move(elements[i]));
    document.reset();
    std::vector<std::thread> threads;
    for (std::unique_ptr<DOM>& own : documents) {
        threads.emplace_back([&own] {
            while (own->GetRoot().HasChildren())
                own->GetRoot().RemoveChild(*own->GetRoot().GetChildren().back());
            own.reset();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const std::unique_ptr<DOM>& own : documents)
        EXPECT_EQ(own, nullptr);
}

}  // namespace
