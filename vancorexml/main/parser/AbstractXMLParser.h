// A parser of one input for one builder.
#pragma once

#include <memory>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/Parser.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/XMLExport.h"

// Binds a parser to the input it reads and the handler it calls, and loads the schemas it
// validates against.
//
// Ownership: shares the handler with the caller; the input must outlive the parser, or the
// next Reload.
//
// Threads: the parser, its handler and its input are used by one thread at a time.
class VANCOREXML_API AbstractXMLParser : public Parser, public SAXFileLocation {
public:
    ~AbstractXMLParser() override;

    // The operations below raise the LogicException of Parse() when a callback of this parser
    // calls them.

    // `id` names the schema in messages; raises a LogicException when it is empty.
    virtual void LoadXSDString(const VString& xsdText, const VString& id);
    // The file's name becomes the id. Throws VIO::Exception when the file cannot be read.
    virtual void LoadXSDFile(const VString& fileName);
    // Faults of the schema are errors of this parser until the next parse.
    virtual void LoadXSDSource(InputSource& xsdSource) = 0;
    // Another document for another handler; schemas that were loaded stay.
    virtual void Reload(InputSource& input, std::shared_ptr<SAXInterface> handler);

    // A parser that does not know its position leaves both as they are, and so does one that is
    // not parsing.
    void GetCurrentLocation(int& line, int& column) override;

protected:
    AbstractXMLParser(InputSource& input, std::shared_ptr<SAXInterface> handler);
    AbstractXMLParser(const AbstractXMLParser&) = default;
    AbstractXMLParser& operator=(const AbstractXMLParser&) = default;

    InputSource& GetInput() noexcept { return *m_input; }
    const std::shared_ptr<SAXInterface>& GetHandler() const noexcept { return m_handler; }

private:
    std::shared_ptr<SAXInterface> m_handler;
    InputSource* m_input;
};
