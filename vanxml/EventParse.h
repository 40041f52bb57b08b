// Parses documents without a tree.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vanxml/SourceDocument.h"

// Parses the document and passes its elements and texts to the handler. Calls `begin` before that, with the position of
// the parser, which exists until the handler gets the last event. Returns the lines that describe the errors of the
// document; empty if it has none. Throws std::bad_alloc. Linear.
std::string ParseEvents(SourceDocument& source,
    const std::shared_ptr<SAXInterface>& handler,
    const std::function<void(SAXFileLocation& location)>& begin = {});

// True if the text is white space, which separates elements only. Linear.
bool IsBlankText(const VString& text) noexcept;

// Returns the number of bytes of the text in UTF-8. Linear.
std::uint64_t CountUtf8Bytes(const VString& text) noexcept;
