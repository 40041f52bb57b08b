#include "vanxml/EncodedEdits.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/XMLComparison.h"
#include "vanxml/ToolError.h"

EncodedEdits::EncodedEdits(const VString& name, const std::string& bytes, const DocumentText& document)
    : m_name(name),
      m_bytes(bytes),
      m_document(document)
{
    if (!IsUtf8(document.Encoding()))
        m_encoder = std::make_unique<TextEncoder>(document.Encoding());
}

bool EncodedEdits::CanEncode(char32_t character)
{
    return !m_encoder || !m_encoder->EncodeCharacter(character).empty();
}

std::string EncodedEdits::Apply(EditedText&& edited)
{
    if (edited.edits.empty())
        return m_bytes;
    if (!m_encoder)
        return EncodeDocument(std::move(edited.text), m_document.Encoding());
    std::string result = Splice(edited);
    if (DecodeToUtf8(std::string(result), m_name, true).text != edited.text)
        throw XMLVerificationError("The bytes of the edited document would not be its text");
    return result;
}

std::string EncodedEdits::Splice(const EditedText& edited)
{
    std::vector<std::size_t> offsets;
    for (const TextEdit& edit : edited.edits)
        offsets.insert(offsets.end(), {edit.offset, edit.offset + edit.length});
    offsets = FindEncodedOffsets(offsets, m_document.Text(), m_bytes, m_document.Encoding(), m_name);
    const auto refuse = [this](char32_t) -> std::string {
        throw ToolError("The encoding of \"" + m_name.toStdString() + "\" lacks a character of the new text");
    };
    std::string result;
    std::size_t position = 0;
    for (std::size_t i = 0; i < edited.edits.size(); ++i) {
        result.append(m_bytes, position, offsets[2 * i] - position);
        result += m_encoder->Encode(edited.edits[i].replacement, refuse);
        position = offsets[2 * i + 1];
    }
    return result.append(m_bytes, position, std::string::npos);
}
