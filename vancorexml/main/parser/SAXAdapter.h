// The builder that calls a caller's handler.
#pragma once

#include <memory>
#include <optional>

#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/TreeBuilder.h"

// Passes the events of a parse to a SAXInterface. FindSchema returns a schema only if the handler is a
// SAXInterfaceExtension.
//
// Ownership: shares the handler, which may be null while no document is parsed.
//
// Threads: called on the thread that parses.
class SAXAdapter final : public TreeBuilder {
public:
    explicit SAXAdapter(std::shared_ptr<SAXInterface> handler) noexcept;
    ~SAXAdapter() override;

    void StartElement(const VString& name, const TagAttributes& attributes) override;
    void EndElement() override;
    void Characters(VString&& text) override;
    std::optional<FoundSchema> FindSchema(const VString& baseUri, const VString& systemId) override;

private:
    // Calls SetDone if the handler is done.
    void UpdateDone();

    std::shared_ptr<SAXInterface> m_handler;
};
