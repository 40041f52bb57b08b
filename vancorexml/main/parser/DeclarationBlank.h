// The blank that Xerces expects in an XML declaration.
#pragma once

#include <cstddef>
#include <string_view>

// Xerces expects a blank behind "<?xml". It takes a line end there for a blank, so all its later positions are one line
// too small. And behind a line end or a tab it decodes the document before it has read the encoding. This class tells
// how to change the start of the document, so that there is a blank.
//
// A blank goes in front of a line end and replaces a tab. So the positions behind it stay the same, except that a
// position at the line end is one column too large.
class DeclarationBlank {
public:
    // The number of bytes at the start of a document that matter.
    static constexpr std::size_t StartLength = 32;
    static constexpr std::size_t LongestBlank = 4;

    // Looks at the start of a document in UTF-8 or another encoding that contains ASCII, in UTF-16, or in UTF-32 with a
    // byte order mark.
    explicit DeclarationBlank(std::string_view start) noexcept;

    bool IsMissing() const noexcept { return !m_blank.empty(); }
    // In bytes of the document.
    std::size_t Offset() const noexcept { return m_offset; }
    // The number of bytes that the blank replaces.
    std::size_t ReplacedLength() const noexcept { return m_replacedLength; }
    // The blank in the encoding of the document. Empty if none is missing.
    std::string_view Blank() const noexcept { return m_blank; }

private:
    std::size_t m_offset = 0;
    std::size_t m_replacedLength = 0;
    std::string_view m_blank;
};
