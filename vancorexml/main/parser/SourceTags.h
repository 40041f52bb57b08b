// The tags of a text with their positions.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "vancorexml/main/parser/PositionCounter.h"
#include "vancorexml/main/parser/SourcePosition.h"
#include "vancorexml/main/parser/XMLTokenReader.h"

// A part of a text.
struct SourceRange {
    SourcePosition start;
    SourcePosition end;  // behind the last character
};

// Reads the tags of a UTF-8 text one after the other, with the text in front of each.
//
// Ownership: refers to the text, which must outlive it.
//
// Threads: one at a time.
//
// Cost: all calls together are linear in the text.
class SourceTags {
public:
    using TextVisitor = std::function<void(std::string_view)>;

    // `visit`, if not empty, is called for each text that is not a CDATA section, when the tag in front of it is
    // passed by Advance.
    explicit SourceTags(std::string_view text, TextVisitor visit = {});

    // Returns the next tag, or null behind the last one. The tag is valid until Advance.
    const XMLToken* Next() const noexcept { return m_hasTag ? &m_tag : nullptr; }
    // Continues with the tag behind it.
    void Advance() { Read(); }

    // Returns the range of the next tag, or the end of the text.
    SourceRange GetRange() noexcept;
    // Returns the range of a part of the next tag. Linear in the tag, unless the parts of a tag are passed in their
    // order.
    SourceRange GetRange(std::string_view part) noexcept;
    // Returns the range of the first piece of text in front of the next tag that is not only white space, up to the
    // end of its first line. Returns no value if there is no such text.
    std::optional<SourceRange> GetTextRange() noexcept;
    // Returns this text; empty if there is none.
    std::string_view GetText() const noexcept { return m_firstText; }

private:
    void Read();

    std::string_view m_text;
    TextVisitor m_visit;
    XMLTokenReader m_reader;
    XMLToken m_tag;
    bool m_hasTag = false;
    std::string_view m_firstText;  // in front of the tag, without white space around it
    PositionCounter m_start;       // at the first of these texts, or at the tag
    PositionCounter m_part;        // at the last part whose range was asked for
};
