// The tokens of a document, with their bytes.
#pragma once

#include <cstddef>
#include <string_view>

// A piece of a document as it is written.
struct XMLToken {
    enum class Kind {
        Declaration,            // the XML declaration
        DocumentType,           // <!DOCTYPE ...>, with its internal subset
        ProcessingInstruction,  // <?...?>
        Comment,                // <!--...-->
        CData,                  // <![CDATA[...]]>
        Text,                   // the characters and references up to the next "<"
        StartTag,               // <name ...> or <name ... />
        EndTag,                 // </name>
    };

    Kind kind = Kind::Text;
    std::string_view text;  // the whole token
    std::string_view name;  // of a tag; otherwise empty
    bool isEmpty = false;   // true for a start tag that ends with "/>"
};

// Splits a UTF-8 text into the tokens of an XML document. The tokens of a text are adjacent and cover it completely.
//
// The text should be a well-formed document without a byte order mark. White space before the XML declaration is
// allowed. The reader does not check this: for any other text, the tokens still cover the text, but their kinds mean
// nothing. A token that is not closed extends to the end of the text.
//
// Ownership: tokens and reader refer to the text, which must outlive them.
//
// Threads: one at a time.
//
// Cost: all calls together are linear in the text.
class XMLTokenReader {
public:
    explicit XMLTokenReader(std::string_view text) noexcept : m_text(text) {}

    // Reads the next token. Returns false at the end, without changing `token`.
    bool Next(XMLToken& token) noexcept;

    // Returns the offset of a part of the text, for example of a name in a token.
    std::size_t OffsetOf(std::string_view part) const noexcept
    {
        return static_cast<std::size_t>(part.data() - m_text.data());
    }

private:
    std::size_t FindEnd(std::string_view terminator, std::size_t from) const noexcept;
    std::size_t FindTagEnd(std::size_t from) const noexcept;
    std::size_t FindDocumentTypeEnd(std::size_t from) const noexcept;
    std::size_t FindDeclarationEnd(std::size_t start) const noexcept;

    std::string_view m_text;
    std::size_t m_position = 0;
    bool m_hasReadMarkup = false;  // only the first markup can be the XML declaration
};

// An attribute as it is written.
struct XMLAttributeToken {
    std::string_view text;   // from the first character of the name to the closing quote
    std::string_view name;   // may begin with a colon
    std::string_view value;  // between the quotes, with references
    char quote = '"';
};

// Reads the attributes of a start tag in the order in which they are written. Also reads the parts of an XML
// declaration, which are written like attributes. Ends at the first text that is not an attribute.
//
// Ownership, threads and cost: see XMLTokenReader.
class XMLAttributeReader {
public:
    // `token` must be a start tag or the XML declaration.
    explicit XMLAttributeReader(const XMLToken& token) noexcept;

    // Reads the next attribute. Returns false at the end, without changing `attribute`.
    bool Next(XMLAttributeToken& attribute) noexcept;

private:
    std::string_view m_rest;
};

// Returns the value of an attribute as it is written between its quotes; empty if the tag or XML declaration does not
// have the attribute. Linear in the token.
std::string_view FindAttributeValue(const XMLToken& token, std::string_view name) noexcept;
