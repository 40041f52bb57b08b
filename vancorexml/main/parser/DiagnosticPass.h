// The second reading of a document with errors, which explains them.
#pragma once

#include <string_view>
#include <vector>

#include <xercesc/framework/XMLGrammarPool.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XercesInputSource.h"

// Xerces reports a number, a text and a position for each error. It does not report the faulty part of the document or
// the allowed alternatives. So this class reads a document with an error a second time. It matches the events of Xerces
// with the tags of the text. The events give the declarations of the schema, and the tags give
// the places. A document without errors is read only once.
//
// Ownership: refers to its arguments.
//
// Threads: one at a time.
//
// Cost: Run takes about twice the time of a parse, and is linear in the document and in its faults.
class DiagnosticPass {
public:
    struct Settings {
        bool validates = false;         // against the schemas of the pool
        bool checksReferences = false;  // see XercesXMLParser::SetEnableReferenceChecks
    };

    // A parse must have read `source` with the same schemas to its end, or to its fatal error. So the pass need not
    // limit the expansion of entities. `id` is the id of the source. `schemas` may be null.
    DiagnosticPass(const XercesInputSource& source,
        const VString& id,
        xercesc::XMLGrammarPool* schemas,
        xercesc::SecurityManager& limits,
        const Settings& settings) noexcept;

    // True if there is white space in front of the XML declaration, which is a doubt.
    static bool HasLateDeclaration(const XercesInputSource& source) noexcept;
    // Returns the diagnostics, sorted by place. Call it once.
    std::vector<ParseDiagnostic> Run();
    // Returns those of the diagnostics that are not about an error of Xerces, in document order. Valid after Run.
    const std::vector<ParseDiagnostic>& GetDoubts() const noexcept { return m_doubts; }

private:
    const XercesInputSource& m_source;
    const VString& m_id;
    xercesc::XMLGrammarPool* m_schemas;
    xercesc::SecurityManager& m_limits;
    Settings m_settings;
    std::vector<ParseDiagnostic> m_doubts;
};
