#include "IndependentReading.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <QXmlStreamReader>

namespace {

// An open element. Its blank texts stay apart until its end tag shows whether they are ignorable.
struct OpenElement {
    struct Part {
        std::string text;
        bool isBlank = false;
    };

    std::vector<Part> parts;
    bool isPreserved = false;
    bool hasElements = false;
    bool hasText = false;
};

bool IsBlank(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return character == ' ' || character == '\t' || character == '\n' || character == '\r';
    });
}

// Encloses a part of a document, so that its end is certain.
std::string Enclose(char kind, const QString& text)
{
    const std::string bytes = text.toStdString();
    return kind + std::to_string(bytes.size()) + ':' + bytes;
}

// Escapes a text, so that it cannot look like another part.
std::string Escape(const QString& text)
{
    std::string escaped;
    for (const char byte : text.toStdString()) {
        if (std::string_view("\\()#?!&@=").find(byte) != std::string_view::npos)
            escaped += '\\';
        escaped += byte;
    }
    return escaped;
}

class Collector {
public:
    IndependentReading Run(const std::string& text)
    {
        m_reader.setNamespaceProcessing(false);
        // A string, because the declared encoding does not count. Without the white space before the declaration, which
        // the library allows.
        m_reader.addData(QString::fromStdString(text).trimmed());
        m_open.emplace_back();
        while (!m_reader.atEnd())
            Read(m_reader.readNext());
        if (m_reader.hasError()) {
            m_reading.error = m_reader.errorString().toStdString();
            return m_reading;
        }
        for (const OpenElement::Part& part : m_open.front().parts)
            m_reading.content += part.text;
        return m_reading;
    }

private:
    void Read(QXmlStreamReader::TokenType type)
    {
        switch (type) {
        case QXmlStreamReader::StartDocument: m_reading.isPlain &= !m_reader.isStandaloneDocument(); break;
        case QXmlStreamReader::StartElement: StartElement(); break;
        case QXmlStreamReader::EndElement: EndElement(); break;
        case QXmlStreamReader::Characters: ReadCharacters(); break;
        case QXmlStreamReader::Comment: AddMarkup(Enclose('#', m_reader.text().toString())); break;
        case QXmlStreamReader::ProcessingInstruction:
            AddMarkup(Enclose('?', m_reader.processingInstructionTarget().toString()) +
                Enclose('?', m_reader.processingInstructionData().toString()));
            break;
        case QXmlStreamReader::DTD: AddMarkup(Enclose('!', m_reader.text().toString().trimmed())); break;
        case QXmlStreamReader::EntityReference:
            m_open.back().hasText = true;
            AddMarkup(Enclose('&', m_reader.name().toString()));
            break;
        default: break;
        }
    }

    void AddMarkup(std::string part)
    {
        m_reading.isPlain = false;
        m_open.back().parts.push_back({std::move(part)});
    }

    void StartElement()
    {
        m_open.back().hasElements = true;
        OpenElement element;
        element.isPreserved = m_open.back().isPreserved;
        std::string start = Enclose('(', m_reader.qualifiedName().toString());
        std::vector<std::pair<QString, QString>> attributes;
        for (const QXmlStreamAttribute& attribute : m_reader.attributes()) {
            attributes.emplace_back(attribute.qualifiedName().toString(), attribute.value().toString());
            if (attribute.qualifiedName() == "xml:space") {
                m_reading.isPlain = false;
                element.isPreserved |= attribute.value().trimmed() == "preserve";
            }
        }
        std::sort(attributes.begin(), attributes.end());
        for (const auto& [name, value] : attributes)
            start += Enclose('@', name) + Enclose('=', value);
        element.parts.push_back({std::move(start)});
        m_open.push_back(std::move(element));
    }

    void EndElement()
    {
        const OpenElement element = std::move(m_open.back());
        m_open.pop_back();
        const bool hasBlank = std::any_of(
            element.parts.begin(), element.parts.end(), [](const OpenElement::Part& part) { return part.isBlank; });
        if (element.hasText ? element.hasElements : hasBlank && !element.hasElements)
            m_reading.isPlain = false;
        const bool isIgnorable = element.hasElements && !element.hasText && !element.isPreserved;
        std::string content;
        for (const OpenElement::Part& part : element.parts) {
            if (!part.isBlank || !isIgnorable)
                content += part.text;
        }
        m_open.back().parts.push_back({content + ')'});
    }

    void ReadCharacters()
    {
        OpenElement& element = m_open.back();
        const QString text = m_reader.text().toString();
        if (m_open.size() == 1)
            return;  // white space outside of the document element
        if (m_reader.isCDATA())
            m_reading.isPlain = false;
        const bool isBlank = !m_reader.isCDATA() && IsBlank(text);
        element.hasText |= !isBlank;
        // The reader may deliver a text in pieces.
        element.parts.push_back({Escape(text), isBlank});
    }

    QXmlStreamReader m_reader;
    std::vector<OpenElement> m_open;  // the first is the document
    IndependentReading m_reading;
};

}  // namespace

IndependentReading ReadIndependently(const std::string& text)
{
    return Collector().Run(text);
}
