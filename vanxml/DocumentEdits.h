// Edits of a document in the encoding of its file.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vanxml/DocumentText.h"

// Applies edits of the text of a document to the bytes of its file. All other bytes stay.
//
// Ownership: refers to the document and the bytes.
//
// Threads: one at a time.
class DocumentEdits {
public:
    // `bytes` are those of the document `name`.
    DocumentEdits(const VString& name, const std::string& bytes, const DocumentText& document);
    ~DocumentEdits();
    DocumentEdits(const DocumentEdits&) = delete;
    DocumentEdits& operator=(const DocumentEdits&) = delete;

    // Returns a function that returns true if the encoding of the file has a character; an empty function if it has
    // all. The function refers to this object, which must outlive it.
    std::function<bool(char32_t)> CharacterTest();
    // Returns the bytes of the edited file. Throws VIO::Exception if a character of the file has other bytes than
    // TextEncoder writes, and XMLVerificationError if the bytes do not have the edited text.
    std::string Apply(EditedText&& edited);

private:
    const VString& m_name;
    const std::string& m_bytes;
    const DocumentText& m_document;
    std::unique_ptr<TextEncoder> m_encoder;  // null for UTF-8
};
