#include "vancoredata/FieldName.h"

namespace {

const QualifiedName& ParseOnce(const VString& text, QualifiedNameCache& cache)
{
    const auto found = cache.find(text);
    return found != cache.end() ? found->second : cache.emplace(text, QualifiedName::Parse(text)).first->second;
}

}  // namespace

FieldName FieldName::ParseGlobal(const VString& text)
{
    return FieldName(QualifiedName::Parse(text));
}

FieldName FieldName::ParseGlobal(const VString& text, QualifiedNameCache& cache)
{
    return FieldName(ParseOnce(text, cache));
}

FieldName FieldName::ParseLocal(const VString& text)
{
    return MakeLocalName(ParseGlobal(text));
}

FieldName FieldName::ParseLocal(const VString& text, QualifiedNameCache& cache)
{
    return MakeLocalName(ParseGlobal(text, cache));
}

FieldName MakeGlobalName(const VString& dataSourceName, const FieldName& name)
{
    return FieldName(dataSourceName, name.GetLocalValue());
}

FieldName MakeLocalName(const FieldName& name)
{
    return FieldName(VString(), name.GetLocalValue());
}
