// From the driver's builder interface to the handler of a caller.
#pragma once

#include <memory>
#include <optional>

#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/TreeBuilder.h"

// Passes the events of a parse to a SAXInterface. Only a SAXInterfaceExtension finds schemas.
//
// Ownership: shares the handler. A null handler is allowed while no document is parsed.
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
    // Asks the handler after each tag.
    void UpdateDone();

    std::shared_ptr<SAXInterface> m_handler;
};
