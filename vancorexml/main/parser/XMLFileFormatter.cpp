#include "vancorexml/main/parser/XMLFileFormatter.h"

#include <string_view>

#include "vancorexml/main/parser/XMLEscaping.h"

namespace {

// The number of code units that are converted at once. A code unit becomes at most three bytes.
constexpr std::size_t PieceUnits = 0x4000;
constexpr std::size_t BufferBytes = 0x20000;
static_assert(BufferBytes >= 4 * PieceUnits);

// Returns the end of the piece of `text` that begins at `begin`. Does not divide surrogate pairs or "]]>".
std::size_t FindPieceEnd(std::u16string_view text, std::size_t begin)
{
    if (text.size() - begin <= PieceUnits)
        return text.size();
    std::size_t end = begin + PieceUnits;
    if ((text[end - 1] & 0xFC00) == 0xD800)
        --end;
    for (int brackets = 0; brackets < 2 && text[end - 1] == u']'; ++brackets)
        --end;
    return end;
}

// Calls `write` with the pieces of `text`, in order.
template <typename Write>
void ForEachPiece(std::u16string_view text, const Write& write)
{
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = FindPieceEnd(text, begin);
        write(VString(text.data() + begin, end - begin));
        begin = end;
    }
}

bool IsShort(const VString& text) noexcept
{
    return static_cast<std::size_t>(text.length()) <= PieceUnits;
}

}  // namespace

XMLFileFormatter::XMLFileFormatter(const VPath& path) : m_file(path)
{
    m_buffer.reserve(BufferBytes);
    SetFormatMode(FormatModeContent);
}

XMLFileFormatter::~XMLFileFormatter() = default;

void XMLFileFormatter::Undent()
{
    Run([this] { XMLFormatter::Undent(); });
}

void XMLFileFormatter::OutputCloseTag(const VString& tag)
{
    Run([&] { XMLFormatter::OutputCloseTag(tag); });
}

// A long text is written as XMLFormatter::EncodeContentString would escape it, but in pieces.
void XMLFileFormatter::OutputContent(const VString& text, bool verbatim)
{
    if (verbatim || IsShort(text)) {
        XMLFormatter::OutputContent(text, verbatim);
    } else if (text.contains(u'<')) {
        OutputCData(text);
    } else {
        ForEachPiece(text.View(), [this](const VString& piece) {
            OutputString(XMLEscaping::EncodeWithTable(piece, XMLEscaping::ContentTable()));
        });
    }
}

void XMLFileFormatter::OutputCData(const VString& text)
{
    const bool quoted = XMLEscaping::IsQuoted(text);
    std::u16string_view inside = text.View();
    if (quoted) {
        inside.remove_prefix(1);
        inside.remove_suffix(1);
    }
    OutputString(quoted ? u"&quot;<![CDATA[" : u"<![CDATA[");
    ForEachPiece(inside, [this](const VString& piece) { OutputString(XMLEscaping::EncodeInsideCData(piece)); });
    OutputString(quoted ? u"]]>&quot;" : u"]]>");
}

void XMLFileFormatter::OutputString(const VString& text)
{
    const auto write = [this](const VString& piece) {
        if (BufferBytes - m_buffer.size() < 3 * static_cast<std::size_t>(piece.length())) {
            m_file.Write(m_buffer);
            m_buffer.clear();
        }
        piece.AppendTo(m_buffer);
    };
    Run([&] {
        if (IsShort(text))
            write(text);
        else
            ForEachPiece(text.View(), write);
    });
}

void XMLFileFormatter::Commit()
{
    Run([this] {
        m_file.Write(m_buffer);
        m_file.Commit();
    });
}

template <typename Step>
void XMLFileFormatter::Run(const Step& step)
{
    if (m_failure)
        std::rethrow_exception(m_failure);
    try {
        step();
    } catch (...) {
        m_failure = std::current_exception();
        throw;
    }
}
