#include "vancorexml/main/parser/NameRoles.h"

#include <string_view>
#include <utility>

#include "vancoreplatform/VFormatString.h"
#include "vancorexml/main/parser/StandaloneDOMElement.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"
#include "vansys/VantoraException.h"

namespace {

using Node = StandaloneDOMElement;

const char markSource[] = "http://vancorexml.invalid/xml/name-role";

struct RoleName {
    NameRole role;
    const char* name;
};

const RoleName roleNames[] = {
    {NameRole::DataSource, "data source"},
    {NameRole::DataConnection, "data connection"},
    {NameRole::MapSource, "map source"},
    {NameRole::Caption, "caption"},
    {NameRole::FieldName, "field name"},
    {NameRole::FilePath, "file path"},
    {NameRole::Formula, "formula"},
};

[[noreturn]] void Refuse(const VString& message)
{
    throw VantoraException(message,
        VError::ErrorInfo(VantoraError::MakeError(0x5C1E7A94, "VantoraException_UnreadableNameRoles_0x5C1E7A94")));
}

struct Mark {
    NameRole role = NameRole::None;
    VString attribute;  // empty if the mark has no condition
    VString value;
};

struct SimpleType {
    std::vector<Mark> marks;
    bool isCollapsed = false;
};

NameUse GetUse(const SimpleType& type, const AttributeMap& attributes)
{
    for (const Mark& mark : type.marks) {
        const auto attribute = attributes.find(mark.attribute);
        if (mark.attribute.IsEmpty() || (attribute != attributes.end() && attribute->second.trimmed() == mark.value))
            return {mark.role, type.isCollapsed};
    }
    return {};
}

NameRole ParseRole(const VString& name)
{
    for (const RoleName& each : roleNames) {
        if (name == each.name)
            return each.role;
    }
    Refuse(VFormatString("\"%1\" is not a role of a name").arg(name));
}

// Parses "ROLE" or "ROLE if ATTRIBUTE is VALUE".
Mark ParseMark(const VString& text)
{
    const int condition = text.indexOf(" if ");
    if (condition < 0)
        return {ParseRole(text), VString(), VString()};
    const int comparison = text.indexOf(" is ", condition + 4);
    if (comparison < 0)
        Refuse(VFormatString("\"%1\" is not a condition for the role of a name").arg(text));
    return {
        ParseRole(text.left(condition)), text.mid(condition + 4, comparison - condition - 4), text.mid(comparison + 4)};
}

VString Attribute(const Node& node, const char* name)
{
    VString value;
    node.TryGetAttribute(name, value);
    return value;
}

}  // namespace

struct NameRoles::ElementType {
    std::map<VString, SimpleType> attributes;  // without the attributes whose types have no role
    SimpleType text;
    std::map<VString, const ElementType*> children;
};

// Resolves the declarations of a schema.
class NameRoles::Reader {
public:
    Reader(NameRoles& roles, const Node& schema) : m_roles(roles)
    {
        m_prefix = schema.GetName().left(schema.GetName().indexOf(u':') + 1);
        if (m_prefix.IsEmpty() || schema.GetName() != m_prefix + "schema")
            Refuse("The schema has no prefix for the namespace of XML Schema");
        for (const Node& node : schema.GetChildren()) {
            const VString kind = Kind(node);
            if (kind == "redefine" || kind == "include" || kind == "group")
                RefuseNode(node);
            m_globals.emplace(std::pair(kind, Attribute(node, "name")), &node);
        }
        for (const auto& [key, node] : m_globals) {
            if (key.first == "element")
                m_roles.m_documentElements.emplace(key.second, ReadElement(*node));
        }
    }

private:
    [[noreturn]] static void RefuseNode(const Node& node)
    {
        Refuse(VFormatString("The roles of names cannot be read from the schema because of its element \"%1\"")
                   .arg(node.GetName()));
    }

    // Returns the name of an element of XML Schema without its prefix.
    VString Kind(const Node& node) const
    {
        if (!node.GetName().startsWith(m_prefix))
            RefuseNode(node);
        return node.GetName().mid(m_prefix.length());
    }

    const Node& FindGlobal(const char* kind, const VString& name) const
    {
        const auto found = m_globals.find(std::pair(VString(kind), name));
        if (found == m_globals.end())
            Refuse(VFormatString("The schema refers to \"%1\", which it does not declare").arg(name));
        return *found->second;
    }

    bool IsBuiltIn(const VString& type) const { return type.startsWith(m_prefix); }

    // Returns null if there is no such child.
    const Node* FindChildNode(const Node& node, const char* kind) const { return node.GetChild(m_prefix + kind); }

    ElementType& AddType()
    {
        m_roles.m_types.push_back(std::make_unique<ElementType>());
        return *m_roles.m_types.back();
    }

    const ElementType* ReadElement(const Node& node)
    {
        if (!Attribute(node, "substitutionGroup").IsEmpty())
            RefuseNode(node);
        if (const Node* complexType = FindChildNode(node, "complexType")) {
            ElementType& type = AddType();
            ReadComplexType(*complexType, type);
            return &type;
        }
        const VString name = Attribute(node, "type");
        if (m_globals.count(std::pair(VString("complexType"), name)) > 0)
            return ReadNamedComplexType(name);
        ElementType& type = AddType();
        type.text = ReadSimpleTypeOf(node, name);
        return &type;
    }

    // Reads each type once, because an element of a type may contain elements of the same type.
    const ElementType* ReadNamedComplexType(const VString& name)
    {
        const auto known = m_complexTypes.find(name);
        if (known != m_complexTypes.end())
            return known->second;
        ElementType& type = AddType();
        m_complexTypes.emplace(name, &type);
        ReadComplexType(FindGlobal("complexType", name), type);
        return &type;
    }

    // Adds the declarations inside a complex type, or inside a part of one, to `type`.
    void ReadComplexType(const Node& node, ElementType& type)
    {
        for (const Node& child : node.GetChildren()) {
            const VString kind = Kind(child);
            if (kind == "sequence" || kind == "choice" || kind == "all" || kind == "simpleContent" ||
                kind == "complexContent") {
                ReadComplexType(child, type);
            } else if (kind == "extension" || kind == "restriction") {
                ReadBase(child, type);
                ReadComplexType(child, type);
            } else if (kind == "element") {
                ReadChildElement(child, type);
            } else if (kind == "attribute") {
                ReadAttribute(child, type);
            } else if (kind == "attributeGroup") {
                const VString name = Attribute(child, "ref");
                if (!name.contains(u':'))
                    ReadComplexType(FindGlobal("attributeGroup", name), type);
            } else if (kind != "annotation" && kind != "any" && kind != "anyAttribute") {
                RefuseNode(child);
            }
        }
    }

    void ReadBase(const Node& derivation, ElementType& type)
    {
        const VString name = Attribute(derivation, "base");
        const auto base = m_globals.find(std::pair(VString("complexType"), name));
        if (base != m_globals.end())
            ReadComplexType(*base->second, type);
        else
            type.text = ReadNamedSimpleType(name);
    }

    void ReadChildElement(const Node& node, ElementType& type)
    {
        const VString reference = Attribute(node, "ref");
        if (reference.IsEmpty())
            type.children.insert_or_assign(Attribute(node, "name"), ReadElement(node));
        else
            RefuseNode(node);
    }

    void ReadAttribute(const Node& node, ElementType& type)
    {
        if (!Attribute(node, "ref").IsEmpty())
            return;  // an attribute of another namespace
        SimpleType simple = ReadSimpleTypeOf(node, Attribute(node, "type"));
        if (!simple.marks.empty())
            type.attributes.insert_or_assign(Attribute(node, "name"), std::move(simple));
    }

    // Reads the type of an element or attribute: the simple type inside the declaration, or else the type `name`.
    SimpleType ReadSimpleTypeOf(const Node& declaration, const VString& name) const
    {
        const Node* inside = FindChildNode(declaration, "simpleType");
        return inside ? ReadSimpleType(*inside) : ReadNamedSimpleType(name);
    }

    SimpleType ReadNamedSimpleType(const VString& name) const
    {
        if (!name.IsEmpty() && !IsBuiltIn(name))
            return ReadSimpleType(FindGlobal("simpleType", name));
        SimpleType type;
        type.isCollapsed = !name.IsEmpty() && name != m_prefix + "string" && name != m_prefix + "normalizedString";
        return type;
    }

    // A list or union has the role in its own annotation. It does not inherit the roles of its item or member types.
    SimpleType ReadSimpleType(const Node& node) const
    {
        SimpleType type;
        type.isCollapsed = true;
        if (const Node* restriction = FindChildNode(node, "restriction")) {
            if (FindChildNode(*restriction, "whiteSpace"))
                RefuseNode(*restriction);
            type = ReadSimpleTypeOf(*restriction, Attribute(*restriction, "base"));
        }
        std::vector<Mark> marks = ReadMarks(node);
        if (!marks.empty())
            type.marks = std::move(marks);
        return type;
    }

    std::vector<Mark> ReadMarks(const Node& type) const
    {
        std::vector<Mark> marks;
        const Node* annotation = FindChildNode(type, "annotation");
        if (!annotation)
            return marks;
        for (const Node& node : annotation->GetChildren()) {
            if (node.GetName() == m_prefix + "appinfo" && Attribute(node, "source") == markSource)
                marks.push_back(ParseMark(node.GetAllText().trimmed()));
        }
        return marks;
    }

    NameRoles& m_roles;
    VString m_prefix;                                              // of the elements of XML Schema, with its colon
    std::map<std::pair<VString, VString>, const Node*> m_globals;  // by kind and name
    std::map<VString, const ElementType*> m_complexTypes;
};

NameRoles::NameRoles(InputSource& schema)
{
    const StandaloneDOMParser::Result result = StandaloneDOMParser().ParseXmlInputSource(schema, false);
    ThrowIfOutOfMemory(result.diagnostics);
    const auto& [document, errors] = result;
    const auto elements = document->GetChildren();
    if (!errors.empty() || elements.empty())
        Refuse(errors.empty() ? VString("The schema is empty") : errors.front());
    Reader(*this, elements.front());
}

NameRoles::~NameRoles() = default;

const NameRoles::ElementType* NameRoles::FindDocumentElement(const VString& name) const
{
    const auto found = m_documentElements.find(name);
    return found == m_documentElements.end() ? nullptr : found->second;
}

const NameRoles::ElementType* NameRoles::FindChild(const ElementType& type, const VString& name)
{
    const auto found = type.children.find(name);
    return found == type.children.end() ? nullptr : found->second;
}

NameUse NameRoles::GetAttributeUse(const ElementType& type, const VString& name, const AttributeMap& attributes)
{
    const auto found = type.attributes.find(name);
    return found == type.attributes.end() ? NameUse() : GetUse(found->second, attributes);
}

NameUse NameRoles::GetTextUse(const ElementType& type, const AttributeMap& attributes)
{
    return GetUse(type.text, attributes);
}
