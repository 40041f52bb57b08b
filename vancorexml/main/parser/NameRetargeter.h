// Finds the names in a document and their new names.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <tuple>
#include <vector>

#include "vancoredata/FieldName.h"
#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/NameRoles.h"
#include "vancorexml/main/parser/SAXInterface.h"
#include "vancorexml/main/parser/XMLExport.h"

class DOM;

// The place of a name in a document.
struct NamePlace {
    std::size_t element = 0;  // the number of the element, from 0 in the order of the start tags
    VString attribute;        // empty if the name is in the text of the element
    // The place in the value, in UTF-16 code units. If the white space of the value is collapsed, the name is the whole
    // collapsed value.
    std::size_t offset = 0;
    std::size_t length = 0;
    bool isCollapsed = false;
};

// A name in a document that the rename tables change. A name in a formula has the role FieldName. `oldName` and
// `newName` of a field include the data source, as in "[orders].[Sales]".
struct NameChange {
    NamePlace place;
    NameRole role = NameRole::None;
    VString oldName;
    VString newName;
    VString oldText;  // the name as it is written in the value
    VString newText;  // replaces `oldText`; a local field name stays local
};

// Two different names that would both become `newName`. `place` is the first occurrence of `second` that clashes.
struct NameClash {
    NamePlace place;
    NameRole role = NameRole::None;
    VString first;
    VString second;
    VString newName;
};

// Finds the names in a document and asks the rename tables of a DOM for the new ones. Pass it as the handler to a
// parser; it does not change the document.
//
// A field name without a data source belongs to the data source that the nearest enclosing element names in an
// attribute. The tables decide as in DOMElement::GetFieldName, and for field names without a data source as in
// DOMElement::GetLocalFieldName: such a name stays in its data source, even if the tables give it another.
//
// Two names of the same kind clash if they differ in the document and would become equal. Data sources, data
// connections, map sources and fields clash anywhere in the document. Captions clash only in the same attribute of
// elements with the same parent and name. Paths never clash, because several files can share one new path.
//
// Ownership: refers to the roles and to the tables, which must outlive the parse.
//
// Threads: one at a time.
//
// Cost: for each name, logarithmic in the number of different names. Memory grows with the number of different names,
// of captions and of changes.
//
//     auto retargeter = std::make_shared<NameRetargeter>(roles, tables);
//     XercesXMLParser::Create(document, retargeter)->Parse();
//     for (const NameChange& change : retargeter->GetChanges()) Show(change.oldName, change.newName);
class VANCOREXML_API NameRetargeter : public SAXInterface {
public:
    NameRetargeter(const NameRoles& roles, const DOM& tables);
    ~NameRetargeter() override;

    void StartElement(const VString& name, const AttributeMap& attributes) override;
    void EndElement() override;
    void Characters(const VString& text) override;

    // In document order; the attributes of one element are in no particular order.
    const std::vector<NameChange>& GetChanges() const noexcept { return m_changes; }
    const std::vector<NameClash>& GetClashes() const noexcept { return m_clashes; }
    // Returns the number of elements that have started.
    std::size_t GetElementCount() const noexcept { return m_elementCount; }

private:
    struct OpenElement {
        const NameRoles::ElementType* type = nullptr;  // null if the schema does not declare the element
        std::size_t number = 0;
        VString name;
        VString dataSource;  // for field names without a data source
        NameUse textUse;
        VString text;
    };

    void OpenChild(const VString& name, const AttributeMap& attributes);
    void RenameValue(const NamePlace& place, const VString& value, NameRole role);
    void RenameFormula(NamePlace place, const VString& formula);
    // Renames the field name that is written as `text`.
    void RenameField(const NamePlace& place, const VString& text, const FieldName& name);
    void RenameText(const NamePlace& place, NameRole role, const VString& oldText, const VString& newText);
    VString RenameRoot(const VString& dataSource) const;

    // Records a clash and returns false if another name of the scope than `oldName` has become `newName`.
    bool RequireUnique(
        const NamePlace& place, NameRole role, const VString& scope, const VString& oldName, const VString& newName);

    const NameRoles& m_roles;
    const DOM& m_tables;
    std::vector<OpenElement> m_open;
    std::size_t m_elementCount = 0;
    std::vector<NameChange> m_changes;
    std::vector<NameClash> m_clashes;
    std::set<std::tuple<NameRole, VString, VString>> m_reported;        // role, old and new name of the clashes
    std::map<std::tuple<NameRole, VString, VString>, VString> m_names;  // from role, scope and new name to old name
};
