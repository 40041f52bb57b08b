#include "vancorexml/main/parser/XMLFragment.h"

#include "vancorexml/main/parser/BorrowedInputSource.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/XMLReferences.h"
#include "vancorexml/main/parser/XMLTokenReader.h"
#include "vancorexml/main/parser/XMLUtils.h"

using Kind = XMLToken::Kind;

namespace {

std::string NormalizeLineEnds(std::string_view text)
{
    std::string normalized;
    normalized.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            normalized += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            normalized += '\n';
    }
    return normalized;
}

// Rewrites the values of a start tag with references for characters that the encoding lacks.
std::string EscapeTag(const XMLToken& tag, const XMLCharacters& characters)
{
    std::string escaped;
    std::string_view rest = tag.text;
    XMLAttributeReader reader(tag);
    XMLAttributeToken attribute;
    while (reader.Next(attribute)) {
        const auto before = static_cast<std::size_t>(attribute.value.data() - rest.data());
        escaped += rest.substr(0, before);
        escaped += characters.EscapeUnencodable(attribute.value);
        rest.remove_prefix(before + attribute.value.size());
    }
    return escaped += rest;
}

// Finds the elements of a fragment whose white space is not a part of their content.
class SpacingFinder {
public:
    // Returns for each start tag whether lines between the nodes of its element may be indented.
    std::vector<bool> Find(std::string_view xml)
    {
        XMLTokenReader reader(xml);
        XMLToken token;
        while (reader.Next(token))
            Read(token);
        return std::move(m_mayIndent);
    }

private:
    struct Element {
        std::size_t number;
        bool isPreserved = false;
        bool hasNodes = false;
        bool hasText = false;
    };

    void Read(const XMLToken& token)
    {
        if (!m_open.empty() && token.kind != Kind::EndTag) {
            const bool isText =
                token.kind == Kind::CData || (token.kind == Kind::Text && !XmlUtils::IsBlank(token.text));
            m_open.back().hasText |= isText;
            m_open.back().hasNodes |= token.kind != Kind::CData && token.kind != Kind::Text;
        }
        if (token.kind == Kind::StartTag) {
            Element element{m_mayIndent.size()};
            // Never indent the content of an element with xml:space, for any value.
            element.isPreserved = (!m_open.empty() && m_open.back().isPreserved) ||
                token.text.find("xml:space") != std::string_view::npos;
            m_mayIndent.push_back(false);
            if (!token.isEmpty)
                m_open.push_back(element);
        } else if (token.kind == Kind::EndTag && !m_open.empty()) {
            const Element& element = m_open.back();
            m_mayIndent[element.number] = element.hasNodes && !element.hasText && !element.isPreserved;
            m_open.pop_back();
        }
    }

    std::vector<bool> m_mayIndent;
    std::vector<Element> m_open;
};

}  // namespace

XMLFragment::XMLFragment(const VString& xml, std::string_view documentType, const XMLCharacters& characters)
{
    const std::string text = NormalizeLineEnds(xml.toStdString());
    ReadNodes(text, characters);
    Parse(text, documentType, characters.isVersion11);
}

void XMLFragment::Parse(std::string_view xml, std::string_view documentType, bool isVersion11)
{
    std::string document;
    if (isVersion11)
        document += "<?xml version='1.1'?>";
    ((document += documentType) += "<fragment>") += xml;
    document += "</fragment>";
    BorrowedInputSource source(document, VString(), false, TextEncoding::Utf8);
    DOMParser parser;
    m_tree = parser.ParseXmlInputSource(source, true);
    ThrowIfOutOfMemory(parser.GetDiagnostics());
    if (m_tree->HasErrors())
        throw XMLFragmentError("is not well-formed: " + parser.GetDiagnostics().front().message);
}

void XMLFragment::ReadNodes(const std::string& xml, const XMLCharacters& characters)
{
    const std::vector<bool> mayIndent = SpacingFinder().Find(xml);
    std::vector<std::size_t> open;  // the numbers of the open elements
    std::size_t elements = 0;
    XMLTokenReader reader(xml);
    XMLToken token;
    while (reader.Next(token)) {
        const bool isText = token.kind == Kind::Text || token.kind == Kind::CData;
        if (open.empty() && isText) {
            if (token.kind == Kind::CData || !XmlUtils::IsBlank(token.text))
                throw XMLFragmentError("contains text outside of an element");
            continue;
        }
        if (open.empty() && token.kind == Kind::EndTag)
            throw XMLFragmentError("is not well-formed: it begins with an end tag");
        if (token.kind == Kind::Declaration || token.kind == Kind::DocumentType)
            throw XMLFragmentError("contains an XML declaration or a document type");
        if (open.empty())
            m_nodes.emplace_back();
        Node& node = m_nodes.back();
        std::string written(token.text);
        if (token.kind == Kind::Text)
            written = characters.EscapeUnencodable(token.text);
        else if (token.kind == Kind::StartTag)
            written = EscapeTag(token, characters);
        if (const auto character = characters.FindUnencodable(written))
            throw XMLFragmentError("contains " + DescribeCharacter(*character) +
                ", which the encoding of the document lacks, outside of texts and values");
        if (token.kind == Kind::Text && XmlUtils::IsBlank(token.text) && mayIndent[open.back()]) {
            for (std::size_t at = written.find('\n'); at != std::string::npos; at = written.find('\n', at + 1))
                node.lineOffsets.push_back(node.text.size() + at + 1);
        }
        node.text += written;
        if (token.kind == Kind::StartTag) {
            if (!token.isEmpty)
                open.push_back(elements);
            ++elements;
        } else if (token.kind == Kind::EndTag) {
            open.pop_back();
        }
    }
}

void XMLFragment::AppendNode(
    std::string& out, std::size_t node, std::string_view lineEnd, std::string_view indentation) const
{
    const Node& written = m_nodes[node];
    std::size_t from = 0;
    auto line = written.lineOffsets.begin();
    for (std::size_t at = written.text.find('\n'); at != std::string::npos; at = written.text.find('\n', from)) {
        out.append(written.text, from, at - from);
        out += lineEnd;
        from = at + 1;
        if (line != written.lineOffsets.end() && *line == from) {
            out += indentation;
            ++line;
        }
    }
    out.append(written.text, from, std::string::npos);
}
