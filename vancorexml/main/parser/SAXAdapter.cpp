#include "vancorexml/main/parser/SAXAdapter.h"

#include <utility>

#include "vancoreplatform/VFile.h"

SAXAdapter::SAXAdapter(std::shared_ptr<SAXInterface> handler) noexcept
    : TreeBuilder(true),
      m_handler(std::move(handler))
{}

SAXAdapter::~SAXAdapter() = default;

void SAXAdapter::StartElement(const VString& name, const TagAttributes& attributes)
{
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): AddTo invalidates `name`.
    const VString ownName = name;
    AttributeMap map;
    attributes.AddTo(map);
    m_handler->StartElement(ownName, map);
    UpdateDone();
}

void SAXAdapter::EndElement()
{
    m_handler->EndElement();
    UpdateDone();
}

void SAXAdapter::Characters(VString&& text)
{
    m_handler->Characters(text);
}

void SAXAdapter::UpdateDone()
{
    if (m_handler->IsDone())
        SetDone();
}

std::optional<FoundSchema> SAXAdapter::FindSchema(const VString& baseUri, const VString& systemId)
{
    auto* const extension = dynamic_cast<SAXInterfaceExtension*>(m_handler.get());
    if (!extension)
        return std::nullopt;
    VString path;
    extension->ResolveSchemaPath(path, baseUri, systemId);
    if (path.IsEmpty())
        return std::nullopt;
    VString text = extension->PreprocessSchemaText(systemId, VFile::LoadTextFile(path, true), path);
    return FoundSchema{std::move(path), std::move(text)};
}
