#include "vanxml/DocumentEdits.h"

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "vancorexml/main/parser/XMLComparison.h"

DocumentEdits::DocumentEdits(const VString& name, const std::string& bytes, const DocumentText& document)
    : m_name(name),
      m_bytes(bytes),
      m_document(document)
{
    if (!IsUtf8(document.Encoding()))
        m_encoder = std::make_unique<TextEncoder>(document.Encoding());
}

DocumentEdits::~DocumentEdits() = default;

std::function<bool(char32_t)> DocumentEdits::CharacterTest()
{
    if (HasAllCharacters(m_document.Encoding()))
        return {};
    return [this](char32_t character) { return !m_encoder->EncodeCharacter(character).empty(); };
}

std::string DocumentEdits::Apply(EditedText&& edited)
{
    if (!m_encoder)
        return EncodeDocument(std::move(edited.text), m_document.Encoding());
    std::vector<std::size_t> offsets;
    for (const TextEdit& edit : edited.edits) {
        offsets.push_back(edit.offset);
        offsets.push_back(edit.offset + edit.length);
    }
    const std::vector<std::size_t> inFile =
        FindEncodedOffsets(offsets, m_document.Text(), m_bytes, m_document.Encoding(), m_name);
    // The editor has replaced all characters that the encoding lacks.
    const auto refuse = [](char32_t) -> std::string { throw std::logic_error("A character cannot be encoded"); };
    std::vector<TextEdit> edits;
    for (std::size_t i = 0; i < edited.edits.size(); ++i)
        edits.push_back(
            {inFile[2 * i], inFile[2 * i + 1] - inFile[2 * i], m_encoder->Encode(edited.edits[i].replacement, refuse)});
    std::string bytes = ApplyEdits(m_bytes, edits);
    if (!IsReadAs(bytes, edited.text))
        throw XMLVerificationError("the bytes of the edited document would differ from its text");
    return bytes;
}
