// Edits of a text, applied to the bytes of its file.
#pragma once

#include <memory>
#include <string>

#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"
#include "vanxml/DocumentText.h"

// Applies edits of the text of a document to the bytes of its file. All bytes outside of the edits stay.
//
// Ownership: refers to the document and its bytes, which must outlive this object.
//
// Threads: one at a time.
class EncodedEdits {
public:
    // `name` is for messages.
    EncodedEdits(const VString& name, const std::string& bytes, const DocumentText& document);

    // Returns whether the encoding of the file has the character.
    bool CanEncode(char32_t character);
    // Returns the bytes with the edits. Throws ToolError if the encoding lacks a character of a replacement, and
    // VIO::Exception if the file has other bytes for a character than the encoder writes. Throws XMLVerificationError
    // if the result would not be the edited text. Linear.
    std::string Apply(EditedText&& edited);

private:
    std::string Splice(const EditedText& edited);

    const VString m_name;
    const std::string& m_bytes;
    const DocumentText& m_document;
    std::unique_ptr<TextEncoder> m_encoder;  // null if the encoding has all characters
};
