#include <atomic>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"

int main()
{
    std::vector<std::string> documents;
    for (int i = 0; i < 100; ++i)
        documents.push_back("<shop><item price='" + std::to_string(i) + "'/></shop>");
    documents[7] = "<shop><item></shop>";

    // Each thread has a parser. The threads take the next document until none is left.
    std::vector<std::string> results(documents.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        DOMParser parser;
        for (std::size_t i = next++; i < documents.size(); i = next++) {
            const auto shop = parser.ParseXmlString(documents[i], VString::fromStdString("shop " + std::to_string(i)));
            results[i] = shop->HasErrors() ? "error" : shop->GetElement("item")->GetAttribute("price").toStdString();
        }
    };
    {
        const std::jthread first(work);
        const std::jthread second(work);
    }
    std::cout << results[6] << ", " << results[7] << ", " << results[8] << "\n";

    // Many threads may read one tree at the same time, as long as none changes it.
    DOMParser parser;
    const auto shared = parser.ParseXmlString("<shop><item>Tea</item><item>Jam</item></shop>", "shop");
    const DOMElement& shop = *shared->GetDocumentRoot();
    std::atomic<int> found = 0;
    const auto count = [&] {
        for ([[maybe_unused]] const DOMElement& item : DOMPath::Walk(shop, "shop/item"))
            ++found;
    };
    {
        const std::jthread first(count);
        const std::jthread second(count);
    }
    std::cout << "two threads found " << found << " items\n";
}
