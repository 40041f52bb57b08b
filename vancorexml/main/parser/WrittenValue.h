// The bytes of a value in a document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "vancorexml/main/parser/XMLCharacters.h"

// The value of an attribute or the text of an element, with the bytes of the document in which each of its UTF-16 code
// units is written. The value is the one that a parser reports without a schema, if the document type does not declare
// the type of the attribute.
//
// Ownership: refers to the document, which must outlive this object. Threads: one at a time.
class WrittenValue {
public:
    enum class Form { Attribute, Text, CData };

    // A run of bytes of the document in which a part of the value is written.
    struct Run {
        std::size_t offset = 0;
        std::size_t length = 0;
        Form form = Form::Text;
        char quote = '\'';             // of an attribute
        bool isBeforeGreater = false;  // a ">" follows

        std::size_t End() const noexcept { return offset + length; }
    };

    // XML 1.1 has more line ends than XML 1.0.
    WrittenValue(std::string_view document, bool isVersion11) noexcept
        : m_document(document),
          m_isVersion11(isVersion11)
    {}

    // Appends a piece, which is a part of the document: the characters between the quotes of an attribute, a piece of
    // text, or the content of a CDATA section. Linear.
    void Append(std::string_view piece, Form form, char quote);

    // True if a piece has a reference to an entity. The value then contains the reference and not the text of
    // the entity.
    bool HasEntity() const noexcept { return m_hasEntity; }
    std::u16string_view GetUnits() const noexcept { return m_units; }
    // Returns the bytes of `length` code units, which must not be 0, as runs in the order of the document. There are
    // several runs if the document has other markup between the pieces.
    std::vector<Run> FindRuns(std::size_t offset, std::size_t length) const;

    // Returns `text` in UTF-8, escaped for the place of the run that it replaces. XML must allow all its characters.
    static std::string Escape(std::u16string_view text, const Run& run, const XMLCharacters& characters);

private:
    // The bytes of a code unit. Both units of a surrogate pair have the bytes of their character.
    struct Source {
        std::size_t offset;
        std::size_t length;
        std::size_t piece;
    };
    struct Piece {
        Form form;
        char quote;
    };

    void AppendCharacter(std::string_view written, std::string_view character);

    std::string_view m_document;
    const bool m_isVersion11;
    std::u16string m_units;
    std::vector<Source> m_sources;  // one for each unit
    std::vector<Piece> m_pieces;
    bool m_hasEntity = false;
};
