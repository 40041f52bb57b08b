// A parser with an input and a handler.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/Parser.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/XMLExport.h"

// Binds a parser to its input and its handler, and loads the schemas against which it validates.
//
// Ownership: shares the handler with the caller. Refers to the input, which must stay alive until the
// parser is destroyed or Reload replaces the input.
//
// Threads: one thread at a time may use the parser, its handler and its input.
class VANCOREXML_API AbstractXMLParser : public ::Parser, public SAXFileLocation {
public:
    ~AbstractXMLParser() override;

    // If a callback of this parser calls one of the next four operations, the operation raises the same
    // LogicException as Parser::Parse does in a callback.

    // `id` names the schema in messages. Raises a LogicException if `id` is empty.
    virtual void LoadXSDString(const VString& xsdText, const VString& id);
    // The file name becomes the id. Throws VIO::Exception if the file cannot be read or decoded.
    virtual void LoadXSDFile(const VString& fileName);
    // Records faults in the schema as errors of this parser; the next parse clears them. Raises a
    // LogicException if the id of the source is empty, or if the source is no IXercesInputSourceProvider.
    virtual void LoadXSDSource(::InputSource& xsdSource) = 0;
    // Replaces the input and the handler. Loaded schemas stay loaded.
    virtual void Reload(::InputSource& input, std::shared_ptr<SAXInterface> handler);

    // Leaves both arguments unchanged if the parser does not know its position or is not parsing.
    void GetCurrentLocation(int& line, int& column) override;

protected:
    AbstractXMLParser(::InputSource& input, std::shared_ptr<SAXInterface> handler);
    AbstractXMLParser(const AbstractXMLParser&) = default;
    AbstractXMLParser& operator=(const AbstractXMLParser&) = default;

    ::InputSource& GetInput() noexcept { return *m_input; }
    const std::shared_ptr<SAXInterface>& GetHandler() const noexcept { return m_handler; }

private:
    std::shared_ptr<SAXInterface> m_handler;
    ::InputSource* m_input;
};
