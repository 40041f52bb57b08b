#include <iostream>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"
#include "vancorexml/main/parser/XSDResources.h"

int main()
{
    const std::string text = R"(<analysis version='18.1'>
  <data-sources>
    <data-source caption="sales" name="sales">  <!-- from sales -->
      <connection class='text-file' filename='sales.csv'/>
      <column name='Net' data-type='real'/>
      <column name='Share' data-type='real'>
        <calculation formula='[Net] / 100 // Net'/>
      </column>
    </data-source>
  </data-sources>
</analysis>
)";
    DOM tables;
    tables.AddDataSourceRename("sales", "orders");
    tables.AddFieldRename(FieldName("orders", "Net"), FieldName("orders", "Gross"));

    // The schema says which attributes and texts are names.
    const auto schema = XSDResources::GetVersionedXsdInputSource(XmlFileTypeKXA, XSDResources::GetCurrentVersion());
    const NameRoles roles(*schema);
    XMLSourceRetargeter retargeter(roles, tables);
    const std::optional<EditedText> renamed = retargeter.Retarget(text, "sales.kxa");
    for (const RenamedName& name : retargeter.GetRenamedNames())
        std::cout << name.line << ":" << name.column << ": " << name.oldName << " -> " << name.newName << "\n";
    for (const ClashingName& name : retargeter.GetClashes())
        std::cout << name.oldName << " and " << name.other << " would both become " << name.newName << "\n";
    if (renamed)
        std::cout << renamed->text;
}
