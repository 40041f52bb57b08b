// Parses documents, writes the trees, parses the output and compares the two trees of each document.
//
//     roundtrip_corpus FOLDER_OR_FILE...
//
// The writer puts the text of an element behind its children. So the program only counts documents with mixed content
// and does not compare them. Exits with 1 if two trees differ or if no document was compared.
#include <QDirIterator>
#include <QFileInfo>

#include <exception>
#include <iostream>
#include <memory>
#include <vector>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"

namespace {

struct Counts {
    std::size_t equal = 0;
    std::size_t different = 0;
    std::size_t mixed = 0;
    std::size_t faulty = 0;  // with errors or unreadable
};

bool HasMixedContent(const DOMElement& start)
{
    std::vector<const DOMElement*> waiting{&start};
    while (!waiting.empty()) {
        const DOMElement& element = *waiting.back();
        waiting.pop_back();
        if (element.HasText() && element.HasChildren())
            return true;
        for (const DOMElement* child : element.GetChildren())
            waiting.push_back(child);
    }
    return false;
}

void RoundTrip(DOMParser& parser, const VString& file, Counts& counts)
{
    const std::unique_ptr<DOM> first = parser.ParseXmlFile(file);
    if (first->HasErrors()) {
        std::cout << file << ": " << first->GetErrors().front() << "\n";
        ++counts.faulty;
        return;
    }
    if (HasMixedContent(first->GetRoot())) {
        ++counts.mixed;
        return;
    }
    const std::unique_ptr<DOM> second =
        parser.ParseXmlString(XMLDomFormatter::RenderAsXMLString(*first, nullptr, true), file);
    if (!second->HasErrors() && *first == *second) {
        ++counts.equal;
        return;
    }
    std::cout << file << ": the trees differ\n" << second->GetConcatenatedErrors() << "\n";
    ++counts.different;
}

void TryRoundTrip(DOMParser& parser, const QString& file, Counts& counts)
{
    try {
        RoundTrip(parser, VString(file), counts);
    } catch (const std::exception& exception) {
        std::cout << VString(file) << ": " << exception.what() << "\n";
        ++counts.faulty;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    DOMParser parser;
    Counts counts;
    for (int i = 1; i < argc; ++i) {
        const QString name = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(name).isFile())
            TryRoundTrip(parser, name, counts);
        QDirIterator files(name, {"*.xml", "*.kx?"}, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext())
            TryRoundTrip(parser, files.next(), counts);
    }
    std::cout << counts.equal << " equal, " << counts.different << " different, " << counts.mixed
              << " with mixed content (not compared), " << counts.faulty << " with errors\n";
    return counts.different == 0 && counts.equal > 0 ? 0 : 1;
}
